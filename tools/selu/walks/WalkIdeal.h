// The ideal lines that a digital walk follows, as chains of straight lines.
//
//   Chain({{0, 0, 0}, {10, 4, 2}}, false)                 // a line
//   BoxOutline(low, high)                                 // twelve edges
//   PlaneOutline({1, 2, 2}, 300, CSize(64, 64, 64))       // where a plane cuts the box's faces
#pragma once

#include "walks/Walk.h"

#include <vector>

namespace selu {

[[nodiscard]] inline RealPoint Real(Point const& p) noexcept {
  return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
}

/// From point to point, and back to the first where it is closed.
[[nodiscard]] std::vector<RealPoint> Chain(std::vector<Point> const& points, bool isClosed);
/// The edges of a box.
[[nodiscard]] std::vector<std::vector<RealPoint>> BoxOutline(Point const& low, Point const& high);
/// The line of a direction through the middle of a box, as far as it lies inside.
[[nodiscard]] std::vector<RealPoint> LineThrough(Point const& low, Point const& high,
                                                 RealPoint const& direction);
/// The lines in which the plane normal·p = distance cuts the faces of the box from the first to the
/// last voxel's center; none where it misses the box or a number is not finite.
[[nodiscard]] std::vector<std::vector<RealPoint>>
PlaneOutline(RealPoint const& normal, double distance, ORVA::CSize const& size);

} // namespace selu
