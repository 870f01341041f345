// Names the axes of a digital plane: one voxel at height w over each column (u, v).
//
//   int const axis = 1;                                            // columns along y
//   CTriple<int64> const p = Impl::InSpace(axis, 4, 7, -2);        // (4, -2, 7)
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// The point at height w along the dominant axis (0 x, 1 y, 2 z); u and v are along the other two
/// in their order.
[[nodiscard]] constexpr CTriple<int64> InSpace(int dominantAxis, int64 u, int64 v,
                                               int64 w) noexcept {
  if (dominantAxis == 2) return {u, v, w};
  if (dominantAxis == 1) return {u, w, v};
  return {w, u, v};
}

} // namespace ORVA::Impl
