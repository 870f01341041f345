// Where edges and planes cross lattice lines, divided without rounding.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// The quotient rounded down and what that leaves over, for a divisor > 0.
template <class Integer>
struct StQuotient {
  Integer floor, rest;
  [[nodiscard]] constexpr Integer Ceil() const noexcept { return floor + (rest != 0 ? 1 : 0); }
};

template <class Integer>
[[nodiscard]] constexpr StQuotient<Integer> Divide(Integer a, Integer b) noexcept {
  Integer const quotient = a / b, rest = a % b;
  return rest < 0 ? StQuotient<Integer>{quotient - 1, rest + b}
                  : StQuotient<Integer>{quotient, rest};
}

/// The least whole number of voxels from `units` on.
[[nodiscard]] constexpr int64 CeilVoxel(int64 units, int64 unit) noexcept {
  return Divide(units, unit).Ceil();
}

/// Where the line from a to b, a.*along < b.*along, is at `place` along that axis: the other
/// coordinate in voxels.
[[nodiscard]] constexpr StQuotient<int64>
CrossLine(CTriple<int64> const& a, CTriple<int64> const& b, int64 CTriple<int64>::*along,
          int64 CTriple<int64>::*across, int64 place, int64 unit) noexcept {
  int64 const length = b.*along - a.*along;
  return Divide(a.*across * length + (b.*across - a.*across) * (place - a.*along), length * unit);
}

} // namespace ORVA::Impl
