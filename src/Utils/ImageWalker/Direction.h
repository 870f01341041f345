// What the walks along parallel lines ask of a real direction.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <cmath>

namespace ORVA::Impl {

inline bool IsFinite(CTriple<double> const& a) {
  return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

/// Axis of the largest component, the earlier one on a tie.
inline int64 LargestAxis(CTriple<double> const& a) {
  double const x = std::abs(a.x), y = std::abs(a.y), z = std::abs(a.z);
  if (x >= y && x >= z) return 0;
  return y >= z ? 1 : 2;
}

template <class T>
CTriple<T> MainAxisFirst(int64 axis, CTriple<T> const& a) {
  if (axis == 1) return {a.y, a.x, a.z};
  if (axis == 2) return {a.z, a.x, a.y};
  return a;
}

} // namespace ORVA::Impl
