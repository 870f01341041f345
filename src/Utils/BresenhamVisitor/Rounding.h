// Rounding of real differences and positions to the grid.
#pragma once

#include <pxlib2core/Types.h>

#include <cmath>
#include <limits>

namespace ORVA::Impl {

/// Half away from zero; saturates at the ends of the 64-bit range, a NaN at the lower one.
inline int64 RoundedSaturated(double value) {
  double const rounded = value >= 0 ? std::floor(value + 0.5) : std::ceil(value - 0.5);
  if (rounded >= 0x1p63) return std::numeric_limits<int64>::max();
  if (rounded >= -0x1p63) return static_cast<int64>(rounded);
  return std::numeric_limits<int64>::min(); // NaN as well
}

} // namespace ORVA::Impl
