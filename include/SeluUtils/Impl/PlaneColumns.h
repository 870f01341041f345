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

/// Points of one column from `low` to `high`, both included, in the polygon's plane.
struct StPolygonRun {
  int64 column, low, high;
};

/// The digital plane of a polygon: one voxel for each column (u, v) along the dominant axis, the
/// nearest to the plane, the upper one on a tie. Coordinates are taken from `origin`.
struct StPolygonPlane {
  CTriple<int64> origin;
  int dominantAxis = 2;         // of w: 0 x, 1 y, 2 z; u and v are the other two in their order
  int64 slopeU = 0, slopeV = 0; // the plane is w = (slopeU * u + slopeV * v) / norm
  int64 norm = 1;               // > 0, at least as large as both slopes
  int64 wholeV = 0;             // floor(slopeV / norm): what every step along v adds to w
  int64 remainderV = 0;         // and what that leaves over, in 1 / norm
  int64 carryV = -1;            // remainderV - norm, < 0
};

} // namespace ORVA::Impl
