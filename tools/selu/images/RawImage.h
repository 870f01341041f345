// An image with the pixels of its file: every pixel type, 2D or 3D, one component.
//
//   CRawImage image = ReadImage("scan.nii.gz");
//   VisitPixels(image, [](auto pixels) { ... std::span<T const> ... });
//   ORVA::CImage gray = image.ToGray();
//   image.Grid().spacing[2]
//   CRawImage slab = image.Slab(4, 8);                   // slices 4 .. 7 of the same pixels
#pragma once

#include "base/Errors.h"
#include "base/SharedBuffer.h"

#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

namespace selu {

enum class EnPixel { UInt8, Int8, UInt16, Int16, UInt32, Int32, UInt64, Int64, Float, Double };

/// Such as "unsigned 16-bit integer".
[[nodiscard]] char const* PixelText(EnPixel pixel) noexcept;
/// Such as "uint16".
[[nodiscard]] char const* PixelName(EnPixel pixel) noexcept;
[[nodiscard]] std::size_t PixelBytes(EnPixel pixel) noexcept;
/// Unsigned with 8, 16 or 32 bits: the types that have gray levels without a range.
[[nodiscard]] bool HasOwnGrayLevels(EnPixel pixel) noexcept;
/// Of a framework image.
[[nodiscard]] EnPixel PixelOf(ORVA::IImage::CType type) noexcept;

struct StHeader {
  ORVA::CSize size;
  EnPixel pixel = EnPixel::UInt8;
};

/// Where the voxels are in space, in the unit of the file.
struct StGrid {
  std::array<double, 3> spacing = {1, 1, 1}; ///< distance of neighbors along x, y and z
  std::array<double, 3> origin = {0, 0, 0};  ///< place of the voxel (0, 0, 0)
  /// Unit vector in which x, y and z grow.
  std::array<std::array<double, 3>, 3> direction = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  bool operator==(StGrid const&) const = default;
};

/// Slices of a 3D image along z, rows of a 2D image along y: what follows each other in memory.
[[nodiscard]] inline ORVA::int64 SlicesOf(ORVA::CSize const& size) noexcept {
  return size.Dim() == 3 ? size.z : size.y;
}
/// The same extents with another number of slices.
[[nodiscard]] ORVA::CSize WithSlices(ORVA::CSize const& size, ORVA::int64 slices);
/// Bytes of pixels of this type.
[[nodiscard]] double ImageBytes(StHeader const& header) noexcept;

/// x fastest.
class CRawImage {
public:
  explicit CRawImage(StHeader const& header, StGrid const& grid = {});
  /// Over memory that is there, of which the first bytes are the pixels.
  CRawImage(StHeader const& header, StGrid const& grid, std::shared_ptr<CSharedBuffer> pixels);
  CRawImage(CRawImage&&) = default;
  CRawImage& operator=(CRawImage&&) = default;
  ~CRawImage() = default;
  [[nodiscard]] ORVA::CSize Size() const noexcept { return m_Header.size; }
  [[nodiscard]] EnPixel Pixel() const noexcept { return m_Header.pixel; }
  [[nodiscard]] StGrid const& Grid() const noexcept { return m_Grid; }
  [[nodiscard]] std::span<std::byte> Bytes() noexcept { return {m_Begin, m_Bytes}; }
  [[nodiscard]] std::span<std::byte const> Bytes() const noexcept { return {m_Begin, m_Bytes}; }
  [[nodiscard]] CSharedBuffer const& Buffer() const noexcept { return *m_Pixels; }
  /// The slices from `first` up to but not including `last`, which must lie inside: the same
  /// pixels, which live as long as either image, with the grid of the whole.
  [[nodiscard]] CRawImage Slab(ORVA::int64 first, ORVA::int64 last) const;
  /// A copy as framework image; for types with gray levels of their own and 32-bit floating-point.
  [[nodiscard]] ORVA::CImage ToGray() const;

private:
  StHeader m_Header;
  StGrid m_Grid;
  std::shared_ptr<CSharedBuffer> m_Pixels;
  std::byte* m_Begin; // in them
  std::size_t m_Bytes;
};

/// Calls the function with a zero of the type that such pixels have.
template <class Function>
decltype(auto) VisitType(EnPixel pixel, Function&& function) {
  switch (pixel) {
  case EnPixel::UInt8:
    return function(std::uint8_t{});
  case EnPixel::Int8:
    return function(std::int8_t{});
  case EnPixel::UInt16:
    return function(std::uint16_t{});
  case EnPixel::Int16:
    return function(std::int16_t{});
  case EnPixel::UInt32:
    return function(std::uint32_t{});
  case EnPixel::Int32:
    return function(std::int32_t{});
  case EnPixel::UInt64:
    return function(std::uint64_t{});
  case EnPixel::Int64:
    return function(std::int64_t{});
  case EnPixel::Float:
    return function(float{});
  case EnPixel::Double:
    return function(double{});
  }
  throw CAppError("unknown pixel type");
}

/// Calls the function with the pixels as a span of their type.
template <class Function>
decltype(auto) VisitPixels(CRawImage const& image, Function&& function) {
  return VisitType(image.Pixel(), [&]<class T>(T) -> decltype(auto) {
    auto const bytes = image.Bytes();
    return function(
        std::span<T const>(reinterpret_cast<T const*>(bytes.data()), bytes.size() / sizeof(T)));
  });
}

} // namespace selu
