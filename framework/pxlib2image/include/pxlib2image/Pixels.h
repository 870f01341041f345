// The pixels of an image access as numbers, checked for their type and their place.
//
//   #include <pxlib2image/Image.h>
//   #include <iostream>
//   CImage image(IMAGE_GREY_16, CSize(8, 8, 4));
//   auto const pixels = image.CreateAccess(true).As<std::uint16_t>();
//   pixels(3, 2, 1) = 1000;                                        // x, y, z
//   for (std::uint16_t& pixel : pixels.Row(0, 0)) pixel = 7;
//   auto const same = image.CreateAccess(false).As<std::uint16_t const>();
//   std::cout << same(3, 2, 1) << ' ' << same(5, 0, 0);            // prints 1000 7
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2image/Export.h>

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

namespace ORVA {

class CImageAccess;

namespace Impl {

[[noreturn]] PXLIB2IMAGE_EXPORT void RaisePixel(int64 x, int64 y, int64 z,
                                                std::array<int64, 3> const& extents);
[[noreturn]] PXLIB2IMAGE_EXPORT void RaiseRow(int64 y, int64 z,
                                              std::array<int64, 3> const& extents);
[[noreturn]] PXLIB2IMAGE_EXPORT void RaiseRowStride(int64 stride);

} // namespace Impl

/// The pixels of a box, of the C++ type T: std::uint8_t for IMAGE_BOOL, IMAGE_BINARY_FG and
/// IMAGE_GREY_8, what its name says for each other type; const for reading only. Got from
/// CImageAccess::As. It shares the pixel block as the access does, so that its references and
/// rows stay good while it lives. A pixel costs three compares; a row costs two for all its pixels.
template <class T>
class CPixels {
public:
  /// Pixels of the box along axis 0, 1 or 2.
  [[nodiscard]] std::array<int64, 3> const& Extents() const noexcept { return m_Extent; }

  /// The pixel, counted from the box's first one; throws CExBadParam outside the box.
  [[nodiscard]] T& operator()(int64 x, int64 y, int64 z = 0) const {
    bool const isInside =
        IsBelow(x, m_Extent[0]) && IsBelow(y, m_Extent[1]) && IsBelow(z, m_Extent[2]);
    if (!isInside) [[unlikely]]
      Impl::RaisePixel(x, y, z, m_Extent);
    return At(x * m_Stride[0] + y * m_Stride[1] + z * m_Stride[2]);
  }

  /// The same for a point of any type with x, y and z.
  template <class TPoint>
  requires requires(TPoint const& p) { p.x + p.y + p.z; }
  [[nodiscard]] T& operator()(TPoint const& p) const { return (*this)(p.x, p.y, p.z); }

  /// The pixels along x; throws CExBadParam outside the box, and where the pixels of a row do not
  /// stand side by side, as in some views of foreign pixels.
  [[nodiscard]] std::span<T> Row(int64 y, int64 z = 0) const {
    if (!IsBelow(y, m_Extent[1]) || !IsBelow(z, m_Extent[2])) [[unlikely]]
      Impl::RaiseRow(y, z, m_Extent);
    if (m_Extent[0] == 0) return {};
    if (m_Stride[0] != int64{sizeof(T)} && m_Extent[0] > 1) [[unlikely]]
      Impl::RaiseRowStride(m_Stride[0]);
    return {&At(y * m_Stride[1] + z * m_Stride[2]), static_cast<std::size_t>(m_Extent[0])};
  }

private:
  friend CImageAccess;
  using Byte = std::conditional_t<std::is_const_v<T>, std::byte const, std::byte>;

  CPixels(std::shared_ptr<void const> owner, Byte* base, std::array<int64, 3> const& extent,
          std::array<int64, 3> const& stride)
      : m_Owner(std::move(owner)), m_Base(base), m_Extent(extent), m_Stride(stride) {}

  static bool IsBelow(int64 index, int64 extent) {
    return static_cast<uint64>(index) < static_cast<uint64>(extent);
  }
  [[nodiscard]] T& At(int64 bytes) const { return *reinterpret_cast<T*>(m_Base + bytes); }

  std::shared_ptr<void const> m_Owner;
  Byte* m_Base;
  std::array<int64, 3> m_Extent;
  std::array<int64, 3> m_Stride; // bytes
};

} // namespace ORVA
