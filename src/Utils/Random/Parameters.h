// The checks that generators make of their parameters.
#pragma once

#include <cmath>
#include <limits>

namespace ORVA::Impl {

/// Finite and not below the smallest normal number.
inline bool IsPositiveNormal(double x) {
  return std::isfinite(x) && x >= std::numeric_limits<double>::min();
}

} // namespace ORVA::Impl
