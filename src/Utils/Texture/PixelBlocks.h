// Pixels of any type and stride, a block of doubles at a time; which of them a mask lets pass.
//
//   auto const load = Impl::LoaderOf(image.Type());   // null for a type that has no numbers
//   std::array<double, Impl::c_nPixelBlock> values;
//   load(first, n, stride, values.data());
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace ORVA::Impl {

/// Small enough for the buffers of a block to stay in the first-level cache.
constexpr std::size_t c_nPixelBlock = 1024;

/// Calls visit(T()) with the number type of a pixel type; nothing for IMAGE types without one.
template <class Visit>
bool VisitPixelType(IImage::CType type, Visit visit) {
  using EnId = IImage::CType::EnId;
  switch (type.Id()) {
  case EnId::Bool:
  case EnId::BinaryFg:
  case EnId::Grey8:
    return visit(std::uint8_t()), true;
  case EnId::Grey16:
    return visit(std::uint16_t()), true;
  case EnId::Grey32:
    return visit(std::uint32_t()), true;
  case EnId::GreyF:
    return visit(float()), true;
  case EnId::Signed8:
    return visit(std::int8_t()), true;
  case EnId::Signed16:
    return visit(std::int16_t()), true;
  case EnId::Signed32:
    return visit(std::int32_t()), true;
  case EnId::Double:
    return visit(double()), true;
  default:
    return false;
  }
}

/// The number at an address that need not be aligned.
template <class T>
[[nodiscard]] inline T ReadPixel(std::byte const* pixel) noexcept {
  T value;
  std::memcpy(&value, pixel, sizeof value);
  return value;
}

/// Reads n pixels, `stride` bytes apart, as doubles.
template <class T>
void LoadPixels(std::byte const* first, std::size_t n, int64 stride, double* values) noexcept {
  if (stride == static_cast<int64>(sizeof(T))) { // known to the compiler: several at a time
    for (std::size_t i = 0; i < n; ++i)
      values[i] = static_cast<double>(ReadPixel<T>(first + i * sizeof(T)));
  } else {
    for (std::size_t i = 0; i < n; ++i)
      values[i] = static_cast<double>(ReadPixel<T>(first + static_cast<int64>(i) * stride));
  }
}

/// Whether n pixels equal a label, 1 or 0 each; without a label, whether they are other than 0.
template <class T>
void LoadMask(std::byte const* first, std::size_t n, int64 stride, bool hasLabel, int64 label,
              std::uint8_t* isWithin) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    auto const value = ReadPixel<T>(first + static_cast<int64>(i) * stride);
    isWithin[i] = hasLabel ? static_cast<int64>(value) == label : value != 0;
  }
}

using PixelLoader = void (*)(std::byte const*, std::size_t, int64, double*) noexcept;
using MaskLoader = void (*)(std::byte const*, std::size_t, int64, bool, int64,
                            std::uint8_t*) noexcept;

[[nodiscard]] inline PixelLoader LoaderOf(IImage::CType type) {
  PixelLoader loader = nullptr;
  VisitPixelType(type, [&]<class T>(T) { loader = LoadPixels<T>; });
  return loader;
}

/// Null for a type that is no integer.
[[nodiscard]] inline MaskLoader MaskLoaderOf(IImage::CType type) {
  MaskLoader loader = nullptr;
  VisitPixelType(type, [&]<class T>(T) {
    if constexpr (std::is_integral_v<T>) loader = LoadMask<T>;
  });
  return loader;
}

} // namespace ORVA::Impl
