#include "images/RawImage.h"

#include <cstring>

namespace selu {
namespace {

struct StPixelTraits {
  EnPixel pixel;
  std::size_t bytes;
  char const* name;
  char const* text;
};
// Row p describes pixel type p.
constexpr std::array<StPixelTraits, 10> c_pixels = {{
    {EnPixel::UInt8, 1, "uint8", "unsigned 8-bit integer"},
    {EnPixel::Int8, 1, "int8", "signed 8-bit integer"},
    {EnPixel::UInt16, 2, "uint16", "unsigned 16-bit integer"},
    {EnPixel::Int16, 2, "int16", "signed 16-bit integer"},
    {EnPixel::UInt32, 4, "uint32", "unsigned 32-bit integer"},
    {EnPixel::Int32, 4, "int32", "signed 32-bit integer"},
    {EnPixel::UInt64, 8, "uint64", "unsigned 64-bit integer"},
    {EnPixel::Int64, 8, "int64", "signed 64-bit integer"},
    {EnPixel::Float, 4, "float32", "32-bit floating-point"},
    {EnPixel::Double, 8, "float64", "64-bit floating-point"},
}};

StPixelTraits const& Traits(EnPixel pixel) { return c_pixels[static_cast<std::size_t>(pixel)]; }

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

} // namespace

char const* PixelText(EnPixel pixel) noexcept { return Traits(pixel).text; }
char const* PixelName(EnPixel pixel) noexcept { return Traits(pixel).name; }
std::size_t PixelBytes(EnPixel pixel) noexcept { return Traits(pixel).bytes; }

bool HasOwnGrayLevels(EnPixel pixel) noexcept {
  return pixel == EnPixel::UInt8 || pixel == EnPixel::UInt16 || pixel == EnPixel::UInt32;
}

EnPixel PixelOf(ORVA::IImage::CType type) noexcept {
  if (type == ORVA::IMAGE_GREY_16) return EnPixel::UInt16;
  if (type == ORVA::IMAGE_GREY_32) return EnPixel::UInt32;
  if (type == ORVA::IMAGE_GREY_F) return EnPixel::Float;
  return EnPixel::UInt8;
}

ORVA::CSize WithSlices(ORVA::CSize const& size, ORVA::int64 slices) {
  return size.Dim() == 3 ? ORVA::CSize(size.x, size.y, slices) : ORVA::CSize(size.x, slices);
}

double ImageBytes(StHeader const& header) noexcept {
  return static_cast<double>(header.size.x) * static_cast<double>(header.size.y) *
         static_cast<double>(header.size.z) * static_cast<double>(PixelBytes(header.pixel));
}

CRawImage::CRawImage(StHeader const& header, StGrid const& grid)
    : CRawImage(header, grid,
                std::make_shared<CSharedBuffer>(static_cast<std::size_t>(header.size.x) *
                                                static_cast<std::size_t>(header.size.y) *
                                                static_cast<std::size_t>(header.size.z) *
                                                PixelBytes(header.pixel))) {}

CRawImage::CRawImage(StHeader const& header, StGrid const& grid,
                     std::shared_ptr<CSharedBuffer> pixels)
    : m_Header(header), m_Grid(grid), m_Pixels(std::move(pixels)),
      m_Begin(m_Pixels->Bytes().data()),
      m_Bytes(static_cast<std::size_t>(header.size.x) * static_cast<std::size_t>(header.size.y) *
              static_cast<std::size_t>(header.size.z) * PixelBytes(header.pixel)) {}

CRawImage CRawImage::Slab(ORVA::int64 first, ORVA::int64 last) const {
  std::size_t const perSlice = m_Bytes / static_cast<std::size_t>(SlicesOf(Size()));
  CRawImage slab({WithSlices(Size(), last - first), Pixel()}, m_Grid, m_Pixels);
  slab.m_Begin = m_Begin + static_cast<std::size_t>(first) * perSlice;
  return slab;
}

ORVA::CImage CRawImage::ToGray() const {
  ORVA::CImage image(GrayType(m_Header.pixel), m_Header.size);
  std::memcpy(image.CreateAccess(true).WritableBase(), Bytes().data(), image.Bytes());
  return image;
}

} // namespace selu
