#include "images/ImageFile.h"

#include "base/Quiet.h"
#include "base/Texts.h"
#include "images/FileFormat.h"
#include "images/PixelStore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include <itkGDCMImageIO.h>
#include <itkImageIOBase.h>
#include <itkMetaImageIO.h>
#include <itkNiftiImageIO.h>
#include <itkNrrdImageIO.h>
#include <itkPNGImageIO.h>
#include <itkTIFFImageIO.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

using Component = itk::IOComponentEnum;
using ORVA::int64;

struct StPixelTraits {
  EnPixel pixel;
  Component component;
  std::size_t bytes;
  char const* name;
  char const* text;
};
// Row p describes pixel type p.
constexpr std::array<StPixelTraits, 10> c_pixels = {{
    {EnPixel::UInt8, Component::UCHAR, 1, "uint8", "unsigned 8-bit integer"},
    {EnPixel::Int8, Component::CHAR, 1, "int8", "signed 8-bit integer"},
    {EnPixel::UInt16, Component::USHORT, 2, "uint16", "unsigned 16-bit integer"},
    {EnPixel::Int16, Component::SHORT, 2, "int16", "signed 16-bit integer"},
    {EnPixel::UInt32, Component::UINT, 4, "uint32", "unsigned 32-bit integer"},
    {EnPixel::Int32, Component::INT, 4, "int32", "signed 32-bit integer"},
    {EnPixel::UInt64, Component::ULONGLONG, 8, "uint64", "unsigned 64-bit integer"},
    {EnPixel::Int64, Component::LONGLONG, 8, "int64", "signed 64-bit integer"},
    {EnPixel::Float, Component::FLOAT, 4, "float32", "32-bit floating-point"},
    {EnPixel::Double, Component::DOUBLE, 8, "float64", "64-bit floating-point"},
}};

StPixelTraits const& Traits(EnPixel pixel) { return c_pixels[static_cast<std::size_t>(pixel)]; }

std::optional<EnPixel> PixelOf(Component component) {
  if (component == Component::ULONG)
    component = sizeof(unsigned long) == 8 ? Component::ULONGLONG : Component::UINT;
  if (component == Component::LONG)
    component = sizeof(long) == 8 ? Component::LONGLONG : Component::INT;
  for (auto const& traits : c_pixels)
    if (traits.component == component) return traits.pixel;
  return std::nullopt;
}

ORVA::IImage::CType GrayType(EnPixel pixel) {
  if (pixel == EnPixel::Float) return ORVA::IMAGE_GREY_F;
  switch (PixelBytes(pixel)) {
  case 1:
    return ORVA::IMAGE_GREY_8;
  case 2:
    return ORVA::IMAGE_GREY_16;
  default:
    return ORVA::IMAGE_GREY_32;
  }
}

itk::ImageIOBase::Pointer MakeIo(EnFormat format) {
  itk::Object::GlobalWarningDisplayOff();
  switch (format) {
  case EnFormat::Png:
    return itk::PNGImageIO::New().GetPointer();
  case EnFormat::Tiff:
    return itk::TIFFImageIO::New().GetPointer();
  case EnFormat::Nrrd:
    return itk::NrrdImageIO::New().GetPointer();
  case EnFormat::Meta:
    return itk::MetaImageIO::New().GetPointer();
  case EnFormat::Nifti:
    return itk::NiftiImageIO::New().GetPointer();
  case EnFormat::Dicom:
    return itk::GDCMImageIO::New().GetPointer();
  }
  throw CAppError("unknown image format");
}

[[noreturn]] void RefuseRead(fs::path const& path, std::string const& why) {
  throw CAppError("cannot read " + Quoted(path) + ": " + why);
}

// Bytes a second that any reader manages; some spin for ever on damaged headers.
constexpr double c_slowest = 4e6;

// What a file's header says, before anyone has judged it.
struct StClaim {
  std::vector<int64> extents; // as many as the file has
  int64 components = 0;
  int64 pixel = -1; // EnPixel, or -1
};

itk::ImageIOBase::Pointer OpenReader(fs::path const& path, EnFormat format) {
  auto const io = MakeIo(format);
  io->SetFileName(path.string());
  io->ReadImageInformation();
  return io;
}

// In a process of its own: extents, components and pixel type as numbers between commas.
std::string ReadClaim(fs::path const& path, EnFormat format) {
  auto const io = OpenReader(path, format);
  auto const pixel = PixelOf(io->GetComponentType());
  std::vector<int64> numbers = {pixel ? static_cast<int64>(*pixel) : -1,
                                static_cast<int64>(io->GetNumberOfComponents())};
  for (unsigned axis = 0; axis < io->GetNumberOfDimensions(); ++axis)
    numbers.push_back(static_cast<int64>(io->GetDimensions(axis)));
  return Joined(numbers, ",");
}

StClaim ClaimOf(fs::path const& path, EnFormat format) {
  auto const answer = RunIsolated([&] { return ReadClaim(path, format); },
                                  5 + static_cast<double>(SizeOfReadable(path)) / c_slowest);
  auto numbers = answer ? ParseIntegers(*answer) : std::nullopt;
  if (!numbers || numbers->size() < 3)
    RefuseRead(path, std::string("it is damaged, no ") + FormatText(format) +
                         " image, or of a kind that selu does not read");
  return {{numbers->begin() + 2, numbers->end()}, (*numbers)[1], (*numbers)[0]};
}

// The extents without trailing ones beyond the second.
std::vector<int64> UsedExtents(std::vector<int64> extents, fs::path const& path) {
  while (extents.size() > 2 && extents.back() == 1) extents.pop_back();
  std::string const text = Joined(extents, " x ");
  if (extents.size() < 2) RefuseRead(path, "it has 1 dimension, but selu needs 2 or 3");
  if (extents.size() > 3)
    RefuseRead(path, "it has " + std::to_string(extents.size()) + " dimensions (" + text +
                         "), but selu needs 2 or 3");
  if (std::any_of(extents.begin(), extents.end(), [](int64 extent) { return extent <= 0; }))
    RefuseRead(path, "it has no pixels (" + text + ")");
  return extents;
}

StHeader Judge(StClaim const& claim, fs::path const& path, EnFormat format) {
  auto const extents = UsedExtents(claim.extents, path);
  if (claim.pixel < 0) RefuseRead(path, "its pixel type is unknown");
  if (claim.components != 1)
    RefuseRead(path, "it has " + std::to_string(claim.components) +
                         " components per pixel, but selu needs gray values: one");
  auto const pixel = static_cast<EnPixel>(claim.pixel);
  CheckClaim(path, format, extents, PixelBytes(pixel));
  return {extents.size() == 2 ? ORVA::CSize(extents[0], extents[1])
                              : ORVA::CSize(extents[0], extents[1], extents[2]),
          pixel};
}

StHeader OpenHeader(fs::path const& path, EnFormat format) {
  CheckPixelStore(path, format);
  return Judge(ClaimOf(path, format), path, format);
}

itk::ImageIORegion WholeRegion(itk::ImageIOBase const& io) {
  itk::ImageIORegion region(io.GetNumberOfDimensions());
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    region.SetIndex(axis, 0);
    region.SetSize(axis, io.GetDimensions(axis));
  }
  return region;
}

} // namespace

char const* PixelText(EnPixel pixel) noexcept { return Traits(pixel).text; }
char const* PixelName(EnPixel pixel) noexcept { return Traits(pixel).name; }
std::size_t PixelBytes(EnPixel pixel) noexcept { return Traits(pixel).bytes; }

bool HasOwnGrayLevels(EnPixel pixel) noexcept {
  return pixel == EnPixel::UInt8 || pixel == EnPixel::UInt16 || pixel == EnPixel::UInt32;
}

CRawImage::CRawImage(StHeader const& header)
    : m_Header(header),
      m_Pixels(static_cast<std::size_t>(header.size.x) * static_cast<std::size_t>(header.size.y) *
               static_cast<std::size_t>(header.size.z) * PixelBytes(header.pixel)) {}

ORVA::CImage CRawImage::ToGray() const {
  ORVA::CImage image(GrayType(m_Header.pixel), m_Header.size);
  std::memcpy(image.CreateAccess(true).WritableBase(), m_Pixels.Bytes().data(), image.Bytes());
  return image;
}

StHeader ReadHeader(fs::path const& path) { return OpenHeader(path, FormatOfFile(path)); }

CRawImage ReadImage(fs::path const& path) {
  EnFormat const format = FormatOfFile(path);
  StHeader const header = OpenHeader(path, format);
  CRawImage image(header);
  auto const answer = RunIsolated(
      [&] {
        auto const io = OpenReader(path, format);
        // The file may have changed since its header was judged.
        if (static_cast<std::size_t>(io->GetImageSizeInBytes()) != image.Bytes().size())
          throw CAppError("another size");
        io->SetIORegion(WholeRegion(*io));
        io->Read(image.Bytes().data());
        return std::string("whole");
      },
      30 + static_cast<double>(image.Bytes().size()) / c_slowest);
  if (!answer) RefuseRead(path, "the file is damaged or cut off");
  return image;
}

std::array<double, 3> ReadSpacing(fs::path const& path) {
  EnFormat const format = FormatOfFile(path);
  (void)OpenHeader(path, format);
  auto const answer = RunIsolated(
      [&] {
        auto const io = OpenReader(path, format);
        std::string text;
        for (unsigned axis = 0; axis < 3; ++axis)
          text += (axis == 0 ? "" : ",") +
                  Shortest(axis < io->GetNumberOfDimensions() ? io->GetSpacing(axis) : 1.0);
        return text;
      },
      5 + static_cast<double>(SizeOfReadable(path)) / c_slowest);
  auto const numbers = answer ? ParseNumbers(*answer) : std::nullopt;
  if (!numbers || numbers->size() != 3) RefuseRead(path, "the file is damaged or cut off");
  std::array<double, 3> spacing = {1, 1, 1};
  for (std::size_t axis = 0; axis < 3; ++axis)
    if ((*numbers)[axis] > 0 && std::isfinite((*numbers)[axis])) spacing[axis] = (*numbers)[axis];
  return spacing;
}

namespace {

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

EnPixel PixelOfImage(ORVA::IImage::CType type) {
  if (type == ORVA::IMAGE_GREY_16) return EnPixel::UInt16;
  if (type == ORVA::IMAGE_GREY_32) return EnPixel::UInt32;
  if (type == ORVA::IMAGE_GREY_F) return EnPixel::Float;
  return EnPixel::UInt8;
}

// What both kinds of images have in common.
struct StPixels {
  StHeader header;
  std::span<std::byte const> bytes;
};

void WritePixels(itk::ImageIOBase& io, fs::path const& path, StPixels const& image) {
  ORVA::CSize const size = image.header.size;
  std::array<int64, 3> const extents = {size.x, size.y, size.z};
  io.SetNumberOfDimensions(static_cast<unsigned>(size.Dim()));
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    io.SetDimensions(axis, static_cast<itk::SizeValueType>(extents[axis]));
    io.SetSpacing(axis, 1);
    io.SetOrigin(axis, 0);
    std::vector<double> direction(io.GetNumberOfDimensions(), 0.0);
    direction[axis] = 1;
    io.SetDirection(axis, direction);
  }
  io.SetPixelType(itk::IOPixelEnum::SCALAR);
  io.SetNumberOfComponents(1);
  io.SetComponentType(Traits(image.header.pixel).component);
  io.SetIORegion(WholeRegion(io));
  io.SetUseCompression(false);
  io.SetFileName(path.string());
  io.Write(image.bytes.data());
}

bool HoldsTheSame(fs::path const& path, StPixels const& image) {
  CRawImage const back = ReadImage(path);
  return back.Pixel() == image.header.pixel && back.Bytes().size() == image.bytes.size() &&
         std::memcmp(back.Bytes().data(), image.bytes.data(), image.bytes.size()) == 0;
}

void WriteChecked(CAtomicFile& file, StPixels const& image) {
  CheckImageOutput(file.Target(), image.header.pixel, image.header.size.Dim());
  std::string const sentence = "cannot write " + Quoted(file.Target()) + ": the disk may be full";
  auto const io = MakeIo(FormatForOutput(file.Target()));
  Guarded([&] { WritePixels(*io, file.Temporary(), image); }, sentence);
  // Some writers overlook a full disk.
  bool same = false;
  try {
    same = HoldsTheSame(file.Temporary(), image);
  } catch (CAppError const&) { // the sentence about reading would name the temporary
  }
  if (!same) throw CAppError(sentence);
}

} // namespace

void RefuseOverwriting(fs::path const& output, fs::path const& image) {
  RefuseSameFile(output, image);
  RefuseSameFile(output, PixelFile(image, FormatOfFile(image)));
}

void CheckImageOutput(fs::path const& path, ORVA::IImage::CType type, int dimension) {
  CheckImageOutput(path, PixelOfImage(type), dimension);
}

void CheckImageOutput(fs::path const& path, EnPixel pixel, int dimension) {
  EnFormat const format = FormatForOutput(path);
  auto const refuse = [&](std::string const& why) {
    throw CAppError("cannot write " + Quoted(path) + ": " + why + "; use .nrrd, .mha or .nii.gz");
  };
  if (format == EnFormat::Png && dimension != 2) refuse("PNG holds no volumes");
  if (format == EnFormat::Png && PixelBytes(pixel) > 2)
    refuse("PNG holds no more than 16 bits a pixel");
  if (format == EnFormat::Png && !HasOwnGrayLevels(pixel)) refuse("PNG holds no signed pixels");
  // ITK's writer has no TIFF of these.
  if (format == EnFormat::Tiff && pixel == EnPixel::UInt32)
    refuse("selu writes no TIFF of 32-bit counts");
  if (format == EnFormat::Tiff && PixelBytes(pixel) > 2 && pixel != EnPixel::Float)
    refuse(std::string("selu writes no TIFF of ") + PixelText(pixel) + " pixels");
}

void WriteImage(CAtomicFile& file, ORVA::CImage const& image) {
  auto const access = image.CreateAccess(false);
  WriteChecked(file, {{image.Size(), PixelOfImage(image.Type())}, {access.Base(), image.Bytes()}});
}

void WriteImage(CAtomicFile& file, CRawImage const& image) {
  WriteChecked(file, {{image.Size(), image.Pixel()}, image.Bytes()});
}

} // namespace selu
