// The checks that generators make of their parameters.
#pragma once

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>
#include <limits>

namespace ORVA::Impl {

/// Finite and not below the smallest normal number.
inline bool IsPositiveNormal(double x) {
  return std::isfinite(x) && x >= std::numeric_limits<double>::min();
}

/// Throws CExBadParam unless a condition on a parameter holds: "The rate has to be finite and
/// positive, not -1.".
inline void RequireParameter(bool holds, StExLocation const& location, char const* condition,
                             double value) {
  if (holds) return;
  RaiseBadParam(location, CString("The %1, not %2.").Arg(CString(condition)).Arg(value));
}

} // namespace ORVA::Impl
