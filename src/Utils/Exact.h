// Exact integers beyond 64 bits, division and rounding, and the axes as seen along one of them.
//
//   int128 const product = int128{a} * b;                           // never wraps
//   int64 const row = FloorDivided(product, int128{norm});
//   CTriple<int64> const seen = SeenAlong(2, point);                // (u, v, w) of (x, y, z)
#pragma once

#include <SeluUtils/Impl/Int128.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <cmath>
#include <limits>

namespace ORVA::Impl {

/// a / b rounded down, for b > 0.
template <class Integer>
[[nodiscard]] constexpr Integer FloorDivided(Integer a, Integer b) noexcept {
  return a / b - (a % b < 0 ? 1 : 0);
}

[[nodiscard]] constexpr int128 Magnitude(int128 value) noexcept {
  return value < 0 ? -value : value;
}

/// Of two numbers other than -2^127; 0 if both are 0.
[[nodiscard]] constexpr int128 GreatestCommonDivisor(int128 a, int128 b) noexcept {
  a = Magnitude(a);
  b = Magnitude(b);
  while (b != 0) {
    int128 const rest = a % b;
    a = b;
    b = rest;
  }
  return a;
}

/// Half away from zero; saturates at the ends of the 64-bit range, a NaN at the lower one.
[[nodiscard]] inline int64 RoundedSaturated(double value) noexcept {
  double const rounded = value >= 0 ? std::floor(value + 0.5) : std::ceil(value - 0.5);
  if (rounded >= 0x1p63) return std::numeric_limits<int64>::max();
  if (rounded >= -0x1p63) return static_cast<int64>(rounded);
  return std::numeric_limits<int64>::min(); // NaN as well
}

/// The axis (0 x, 1 y, 2 z) of the component of largest magnitude; of equal ones z before y before
/// x.
[[nodiscard]] constexpr int DominantAxis(CTriple<int64> const& normal) noexcept {
  int128 const x = Magnitude(normal.x), y = Magnitude(normal.y), z = Magnitude(normal.z);
  if (z >= x && z >= y) return 2;
  return y >= x ? 1 : 0;
}

/// (u, v, w) of a triple: w is the component along the dominant axis, u and v are the others in
/// their order. InSpace (SeluUtils/Impl/PlaneColumns.h) leads back.
[[nodiscard]] constexpr CTriple<int64> SeenAlong(int dominantAxis,
                                                 CTriple<int64> const& p) noexcept {
  if (dominantAxis == 2) return p;
  if (dominantAxis == 1) return {p.x, p.z, p.y};
  return {p.y, p.z, p.x};
}

} // namespace ORVA::Impl
