#include "ImageFile.h"

#include "FileFormat.h"
#include "Memory.h"
#include "Quiet.h"
#include "Texts.h"

#include <algorithm>
#include <array>
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

ORVA::IImage::CType GreyType(EnPixel pixel) {
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

// Runs calls of the image library in silence and turns whatever it throws into the sentence.
template <class Calls>
void Guarded(Calls calls, std::string const& sentence) {
  try {
    CQuiet quiet;
    calls();
  } catch (std::bad_alloc const&) {
    throw CAppError(sentence + " (out of memory)");
  } catch (std::exception const&) {
    throw CAppError(sentence);
  } catch (...) { // some readers throw plain texts
    throw CAppError(sentence);
  }
}

// The extents without trailing ones beyond the second.
std::vector<int64> Extents(itk::ImageIOBase const& io, fs::path const& path) {
  std::vector<int64> extents;
  for (unsigned axis = 0; axis < io.GetNumberOfDimensions(); ++axis) {
    auto const extent = io.GetDimensions(axis);
    if (extent > static_cast<itk::SizeValueType>(INT64_MAX)) RefuseRead(path, "its size is absurd");
    extents.push_back(static_cast<int64>(extent));
  }
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

// What a file claims must be possible for its size; the bytes of its pixels, where it is.
void CheckClaim(fs::path const& path, EnFormat format, std::vector<int64> const& extents,
                EnPixel pixel) {
  double bytes = static_cast<double>(PixelBytes(pixel));
  for (int64 const extent : extents) bytes *= static_cast<double>(extent);
  auto const store = PixelStoreOf(path, format);
  if (bytes > static_cast<double>(store.bytes) * static_cast<double>(store.ratio))
    RefuseRead(path, "its header claims " + Joined(extents, " x ") + " pixels of " +
                         std::to_string(PixelBytes(pixel) * 8) + " bits, but the file has only " +
                         BytesText(static_cast<double>(store.bytes)));
  RefuseBeyondMemory(bytes, "the image " + Quoted(path));
}

struct StOpened {
  itk::ImageIOBase::Pointer io;
  StHeader header;
};

char const* FormatText(EnFormat format) {
  constexpr std::array<char const*, 6> texts = {"PNG",       "TIFF",  "NRRD",
                                                "MetaImage", "NIfTI", "DICOM"};
  return texts[static_cast<std::size_t>(format)];
}

StOpened Open(fs::path const& path) {
  EnFormat const format = FormatOfFile(path);
  (void)PixelStoreOf(path, format); // before a reader could wait for a pipe
  auto const io = MakeIo(format);
  Guarded(
      [&] {
        io->SetFileName(path.string());
        io->ReadImageInformation();
      },
      "cannot read " + Quoted(path) + ": it is damaged or no " + FormatText(format) + " image");
  auto const extents = Extents(*io, path);
  auto const pixel = PixelOf(io->GetComponentType());
  if (!pixel) RefuseRead(path, "its pixel type is unknown");
  if (io->GetNumberOfComponents() != 1)
    RefuseRead(path, "it has " + std::to_string(io->GetNumberOfComponents()) +
                         " components per pixel, but selu needs grey values: one");
  CheckClaim(path, format, extents, *pixel);
  return {io,
          {extents.size() == 2 ? ORVA::CSize(extents[0], extents[1])
                               : ORVA::CSize(extents[0], extents[1], extents[2]),
           *pixel}};
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

bool HasOwnGreyLevels(EnPixel pixel) noexcept {
  return pixel == EnPixel::UInt8 || pixel == EnPixel::UInt16 || pixel == EnPixel::UInt32;
}

CRawImage::CRawImage(StHeader const& header) : m_header(header) {
  if (HasOwnGreyLevels(header.pixel)) {
    m_grey = ORVA::CImage(GreyType(header.pixel), header.size);
  } else {
    auto const pixels = static_cast<std::size_t>(header.size.x) *
                        static_cast<std::size_t>(header.size.y) *
                        static_cast<std::size_t>(header.size.z);
    m_other.resize(pixels * PixelBytes(header.pixel));
  }
}

std::span<std::byte> CRawImage::Bytes() {
  if (HasOwnGreyLevels(m_header.pixel))
    return {m_grey.CreateAccess(true).WritableBase(), m_grey.Bytes()};
  return m_other;
}

std::span<std::byte const> CRawImage::Bytes() const {
  if (HasOwnGreyLevels(m_header.pixel)) return {m_grey.CreateAccess(false).Base(), m_grey.Bytes()};
  return m_other;
}

StHeader ReadHeader(fs::path const& path) { return Open(path).header; }

CRawImage ReadImage(fs::path const& path) {
  StOpened const opened = Open(path);
  CRawImage image(opened.header);
  Guarded(
      [&] {
        opened.io->SetIORegion(WholeRegion(*opened.io));
        opened.io->Read(image.Bytes().data());
      },
      "cannot read " + Quoted(path) + ": the file is damaged or cut off");
  return image;
}

namespace {

EnPixel PixelOfImage(ORVA::IImage::CType type) {
  if (type == ORVA::IMAGE_GREY_16) return EnPixel::UInt16;
  if (type == ORVA::IMAGE_GREY_32) return EnPixel::UInt32;
  if (type == ORVA::IMAGE_GREY_F) return EnPixel::Float;
  return EnPixel::UInt8;
}

void WritePixels(itk::ImageIOBase& io, fs::path const& path, ORVA::CImage const& image) {
  ORVA::CSize const size = image.Size();
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
  io.SetComponentType(Traits(PixelOfImage(image.Type())).component);
  io.SetIORegion(WholeRegion(io));
  io.SetUseCompression(false);
  io.SetFileName(path.string());
  io.Write(image.CreateAccess(false).Base());
}

bool HoldsTheSame(fs::path const& path, ORVA::CImage const& image) {
  CRawImage const back = ReadImage(path);
  return back.Pixel() == PixelOfImage(image.Type()) && back.Bytes().size() == image.Bytes() &&
         std::memcmp(back.Bytes().data(), image.CreateAccess(false).Base(), image.Bytes()) == 0;
}

} // namespace

void CheckImageOutput(fs::path const& path, ORVA::IImage::CType type, int dimension) {
  EnFormat const format = FormatForOutput(path);
  auto const refuse = [&](std::string const& why) {
    throw CAppError("cannot write " + Quoted(path) + ": " + why + "; use .nrrd, .mha or .nii.gz");
  };
  if (format == EnFormat::Png && dimension != 2) refuse("PNG holds no volumes");
  if (format == EnFormat::Png && type.Bytes() > 2) refuse("PNG holds no more than 16 bits a pixel");
  // ITK's writer has no TIFF of 32-bit integers.
  if (format == EnFormat::Tiff && type == ORVA::IMAGE_GREY_32)
    refuse("selu writes no TIFF of 32-bit counts");
}

void WriteImage(CAtomicFile& file, ORVA::CImage const& image) {
  CheckImageOutput(file.Target(), image.Type(), image.Size().Dim());
  std::string const sentence = "cannot write " + Quoted(file.Target()) + ": the disk may be full";
  auto const io = MakeIo(FormatForOutput(file.Target()));
  Guarded([&] { WritePixels(*io, file.Temporary(), image); }, sentence);
  // Some writers overlook a full disk.
  bool same = false;
  Guarded([&] { same = HoldsTheSame(file.Temporary(), image); }, sentence);
  if (!same) throw CAppError(sentence);
}

} // namespace selu
