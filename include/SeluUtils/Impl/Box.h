// Boxes of voxels, both corners included: clipping, and steps that may leave the 64-bit range.
//
//   CTriple<int64> low(-3, 0, 0), high(9, 9, 9);
//   Impl::Clip(low, high, {5, 5, 5});                              // (0, 0, 0) to (4, 4, 4)
//   bool const hasPoints = Impl::HasPoints(low, high);
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <limits>

namespace ORVA::Impl {

/// Clips the range from low to high to 0 .. extent - 1, which leaves low > high where they are
/// apart.
constexpr void Clip(int64& low, int64& high, int64 extent) noexcept {
  int64 const last = extent == std::numeric_limits<int64>::min() ? extent : extent - 1;
  if (low < 0) low = 0;
  if (high > last) high = last;
}
constexpr void Clip(CTriple<int64>& low, CTriple<int64>& high,
                    CTriple<int64> const& extents) noexcept {
  Clip(low.x, high.x, extents.x);
  Clip(low.y, high.y, extents.y);
  Clip(low.z, high.z, extents.z);
}

/// Whether a box from low to high, both included, has a point.
constexpr bool HasPoints(CTriple<int64> const& low, CTriple<int64> const& high) noexcept {
  return low.x <= high.x && low.y <= high.y && low.z <= high.z;
}

/// Sum modulo 2^64.
constexpr int64 WrappedSum(int64 a, int64 b) noexcept {
  return static_cast<int64>(static_cast<uint64>(a) + static_cast<uint64>(b));
}
constexpr CTriple<int64> WrappedSum(CTriple<int64> const& a, CTriple<int64> const& b) noexcept {
  return {WrappedSum(a.x, b.x), WrappedSum(a.y, b.y), WrappedSum(a.z, b.z)};
}
} // namespace ORVA::Impl
