#include "base/Errors.h"
#include "base/Quiet.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "images/ImageReader.h"
#include "images/ItkWriter.h"
#include "images/PngWriter.h"
#include "images/TiffWriter.h"

#include <cstring>
#include <vector>

namespace selu {
namespace fs = std::filesystem;
namespace {

using ORVA::int64;

// Runs calls of the image library in silence and turns whatever it throws into the sentence.
template <class Calls>
void Guarded(Calls calls, std::string const& sentence) {
  try {
    CQuiet quiet;
    calls();
  } catch (std::bad_alloc const&) {
    throw CAppError(sentence + " (out of memory)");
  } catch (...) {
    throw CAppError(sentence);
  }
}

// In a process of its own, as readers of what a full disk has cut off may crash.
bool HoldsTheSame(fs::path const& path, StPixels const& image) {
  CIsolated reader([&](std::string const&, std::span<std::byte>) {
    StOpened const opened = OpenReader(path);
    std::vector<std::byte> back(image.bytes.size());
    opened.reader->Read(back);
    bool const same = opened.header.pixel == image.header.pixel &&
                      std::memcmp(back.data(), image.bytes.data(), back.size()) == 0;
    return std::string(same ? "same" : "other");
  });
  auto const bytes = static_cast<double>(image.bytes.size());
  return reader.Ask("compare", {30 + bytes / 2e6, 1e9 + 8 * bytes}) == "same";
}

void WritePixels(fs::path const& path, EnFormat format, StPixels const& image,
                 ImageNotes const& notes) {
  if (format == EnFormat::Tiff) return WriteTiff(path, image, notes);
  WriteByItk(path, format, image, notes);
}

void WriteChecked(CAtomicFile& file, StPixels const& image, ImageNotes const& notes) {
  CheckImageOutput(file.Target(), image.header.pixel, image.header.size.Dim());
  CheckNotes(file.Target(), notes);
  std::string const sentence = "cannot write " + Quoted(file.Target()) + ": the disk may be full";
  EnFormat const format = FormatForOutput(file.Target());
  if (format == EnFormat::Png)
    file.Write(PngBytes(image)); // the image library breaks down on a full disk
  else
    Guarded([&] { WritePixels(file.Temporary(), format, image, notes); }, sentence);
  // Some writers overlook a full disk.
  bool same = false;
  try {
    same = HoldsTheSame(file.Temporary(), image);
  } catch (std::runtime_error const&) { // a sentence about reading would name the temporary
  }
  if (!same) throw CAppError(sentence);
}

} // namespace

void CheckImageOutput(fs::path const& path, ORVA::IImage::CType type, int dimension) {
  CheckImageOutput(path, PixelOf(type), dimension);
}

void CheckImageOutput(fs::path const& path, EnPixel pixel, int dimension) {
  EnFormat const format = FormatForOutput(path);
  auto const refuse = [&](std::string const& why) {
    throw CAppError("cannot write " + Quoted(path) + ": " + why + "; use .nrrd, .mha or .nii.gz");
  };
  if (format == EnFormat::Png && dimension != 2) refuse("PNG holds no volumes");
  if (format == EnFormat::Png && PixelBytes(pixel) > 2)
    refuse("PNG holds no more than 16 bits per pixel");
  if (format == EnFormat::Png && !HasOwnGrayLevels(pixel)) refuse("PNG holds no signed pixels");
}

void WriteImage(CAtomicFile& file, ORVA::CImage const& image, StGrid const& grid,
                ImageNotes const& notes) {
  auto const access = image.CreateAccess(false);
  WriteChecked(file, {{image.Size(), PixelOf(image.Type())}, grid, {access.Base(), image.Bytes()}},
               notes);
}

void WriteImage(CAtomicFile& file, CRawImage const& image, ImageNotes const& notes) {
  WriteChecked(file, {{image.Size(), image.Pixel()}, image.Grid(), image.Bytes()}, notes);
}

} // namespace selu
