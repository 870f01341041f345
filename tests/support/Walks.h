// Collects and checks the points that a walker hands out.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <vector>

namespace test {

using Point = ORVA::CTriple<ORVA::int64>;
using PointList = std::vector<Point>;

/// The remaining points of the walker; at most `limit`, so that a walk that never ends shows up.
template <class Walker>
PointList Walk(Walker&& walker, std::size_t limit = 10'000'000) {
  PointList points;
  while (walker.MorePoints() && points.size() < limit) points.push_back(walker.NextPoint());
  return points;
}

/// The points of a box in raster order, both corners included.
inline PointList BoxPoints(Point const& low, Point const& high) {
  PointList points;
  for (ORVA::int64 z = low.z; z <= high.z; ++z)
    for (ORVA::int64 y = low.y; y <= high.y; ++y)
      for (ORVA::int64 x = low.x; x <= high.x; ++x) points.emplace_back(x, y, z);
  return points;
}

/// In raster order, so that sets of points can be compared.
inline PointList Sorted(PointList points) {
  std::ranges::sort(points, {}, [](Point const& p) { return std::tuple(p.z, p.y, p.x); });
  return points;
}

} // namespace test
