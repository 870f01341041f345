#include "images/ImageReader.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Texts.h"
#include "images/DicomElements.h"
#include "images/PixelStore.h"
#include "images/PlainPixels.h"
#include "images/PngGrid.h"
#include "images/SliceFolder.h"
#include "images/TextPixels.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace selu {
namespace fs = std::filesystem;
namespace {

using ORVA::int64;

std::string ImageText(fs::path const& path) { return "the image " + Quoted(path); }

[[noreturn]] void RefuseRead(fs::path const& path, std::string const& why) {
  throw CAppError("cannot read " + Quoted(path) + ": " + why);
}

// The extents without trailing ones beyond the second.
std::vector<int64> UsedExtents(std::vector<int64> extents, fs::path const& path) {
  while (extents.size() > 2 && extents.back() == 1) extents.pop_back();
  std::string text = Joined(extents, " x ");
  if (text.size() > 80) text = text.substr(0, 77) + "...";
  if (extents.size() < 2) RefuseRead(path, "it has 1 dimension, but selu needs 2 or 3");
  if (extents.size() > 3)
    RefuseRead(path, "it has " + std::to_string(extents.size()) + " dimensions (" + text +
                         "), but selu needs 2 or 3");
  if (std::any_of(extents.begin(), extents.end(), [](int64 extent) { return extent <= 0; }))
    RefuseRead(path, "it has no pixels (" + text + ")");
  return extents;
}

EnPixel GrayPixel(StClaim const& claim, fs::path const& path) {
  if (!claim.pixel) RefuseRead(path, "its pixel type is unknown");
  if (claim.components != 1)
    RefuseRead(path, "it has " + std::to_string(claim.components) +
                         " components per pixel, but selu needs gray values: one");
  return *claim.pixel;
}

StHeader HeaderOf(std::vector<int64> const& extents, EnPixel pixel) {
  return {extents.size() == 2 ? ORVA::CSize(extents[0], extents[1])
                              : ORVA::CSize(extents[0], extents[1], extents[2]),
          pixel};
}

bool IsRotation(std::array<std::array<double, 3>, 3> const& d) {
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      double const product = d[i][0] * d[j][0] + d[i][1] * d[j][1] + d[i][2] * d[j][2];
      if (!(std::abs(product - (i == j ? 1 : 0)) < 1e-3)) return false;
    }
  return true;
}

// What makes no sense becomes what stands where nothing is said.
StGrid SoundGrid(StGrid grid) {
  StGrid const plain;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (!(grid.spacing[axis] > 0) || !std::isfinite(grid.spacing[axis])) grid.spacing[axis] = 1;
    if (!std::isfinite(grid.origin[axis])) grid.origin[axis] = 0;
  }
  if (!IsRotation(grid.direction)) grid.direction = plain.direction;
  return grid;
}

} // namespace

namespace {

// Text is read as such; all else about the file says another reader.
class CTextReader : public IImageReader {
public:
  CTextReader(std::unique_ptr<IImageReader> header, StPixelStore store)
      : m_Header(std::move(header)), m_Store(std::move(store)) {}
  StClaim Claim() override {
    StClaim claim = m_Header->Claim();
    m_Pixel = claim.pixel.value_or(EnPixel::UInt8);
    return claim;
  }
  void Read(std::span<std::byte> pixels) override {
    ReadTextPixels(m_Store.file, m_Store.offset, m_Pixel, pixels);
  }

private:
  std::unique_ptr<IImageReader> m_Header;
  StPixelStore m_Store;
  EnPixel m_Pixel = EnPixel::UInt8;
};

// Of pixels that lie one after the other any slices can be read by themselves.
class CPlainReader : public IImageReader {
public:
  CPlainReader(std::unique_ptr<IImageReader> header, StPlainPixels pixels, double sliceBytes)
      : m_Header(std::move(header)), m_Pixels(std::move(pixels)),
        m_SliceBytes(static_cast<std::uint64_t>(sliceBytes)) {}
  StClaim Claim() override { return m_Header->Claim(); }
  void Read(std::span<std::byte> pixels) override { m_Header->Read(pixels); }
  [[nodiscard]] bool ReadsSlabs() const override { return true; }
  void ReadSlab(int64 first, std::span<std::byte> pixels) override {
    ReadPlainPixels(m_Pixels, static_cast<std::uint64_t>(first) * m_SliceBytes, pixels);
  }

private:
  std::unique_ptr<IImageReader> m_Header;
  StPlainPixels m_Pixels;
  std::uint64_t m_SliceBytes;
};

std::unique_ptr<IImageReader> MakeReader(fs::path const& path, EnFormat format,
                                         StPixelStore const& store) {
  if (format == EnFormat::Tiff) return MakeTiffReader(path);
  auto reader = MakeItkReader(path, format);
  if (!store.isText) return reader;
  return std::make_unique<CTextReader>(std::move(reader), store);
}

} // namespace

void IImageReader::ReadSlab(int64, std::span<std::byte>) {
  throw CAppError("this reader reads whole images only");
}

StOpened OpenReader(fs::path const& path) {
  StOpened opened;
  std::string const beginning = BeginningOf(path, c_headerBytes);
  opened.format = FormatOf(path, beginning);
  auto store = StoreOf(path, opened.format, beginning);
  opened.files = {path};
  if (store.file != path) opened.files.push_back(store.file);
  double const plainPixels = opened.format == EnFormat::Dicom ? WalkDicomElements(path) : INFINITY;
  opened.reader = MakeReader(path, opened.format, store);
  StClaim const claim = opened.reader->Claim();
  auto const extents = UsedExtents(claim.extents, path);
  EnPixel const pixel = GrayPixel(claim, path);
  if (claim.ratio > 0) store.ratio = claim.ratio;
  opened.header = HeaderOf(extents, pixel);
  if (auto plain = FindPlainPixels(path, opened.format, beginning, store, pixel))
    opened.reader = std::make_unique<CPlainReader>(
        std::move(opened.reader), std::move(*plain),
        ImageBytes(opened.header) / static_cast<double>(SlicesOf(opened.header.size)));
  CheckClaim(path, store, extents, PixelBytes(pixel));
  if (!opened.reader->ReadsSlabs()) RefuseBeyondMemory(ImageBytes(opened.header), ImageText(path));
  if (store.isDeflated) CheckDeflated(path, store, extents, PixelBytes(pixel));
  double pixels = 1;
  for (auto const extent : extents) pixels *= static_cast<double>(extent);
  if (plainPixels < pixels) RefuseRead(path, "the file is damaged or cut off");
  opened.grid = claim.grid;
  if (opened.format == EnFormat::Png) ReadPngGrid(path, opened.grid);
  opened.grid = SoundGrid(opened.grid);
  opened.series = claim.series;
  return opened;
}

StOpened OpenFolder(fs::path const& folder, std::string const& series) {
  StOpened opened;
  opened.reader = MakeFolderReader(folder, series);
  StClaim const claim = opened.reader->Claim();
  auto const extents = UsedExtents(claim.extents, folder);
  opened.header = HeaderOf(extents, *claim.pixel);
  RefuseBeyondMemory(ImageBytes(opened.header), ImageText(folder));
  opened.grid = SoundGrid(claim.grid);
  opened.files = {folder};
  for (auto const& entry : fs::directory_iterator(folder)) opened.files.push_back(entry.path());
  return opened;
}

} // namespace selu
