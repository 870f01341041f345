// Areas filled between marked borders: any list of corners, and exactly for convex outlines.
#include "Fuzzing.h"

#include <SeluUtils/AreaVisitor.h>

using namespace ORVA;
using namespace fuzz;

namespace {

// Borders take memory for each of their points: the library allows 2^31 of them, this target few.
constexpr uint64 c_mostSpread = 500;

int64 Side(Point const& a, Point const& b, Point const& p) {
  return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

void AddHullSide(PointList& hull, std::size_t from, Point const& p) {
  while (hull.size() >= from + 2 && Side(hull[hull.size() - 2], hull.back(), p) <= 0)
    hull.pop_back();
  hull.push_back(p);
}

// Counter-clockwise from the smallest point, corners only (Andrew's monotone chain).
PointList Hull(PointList points) {
  points = Sorted(std::move(points));
  points.erase(std::unique(points.begin(), points.end()), points.end());
  if (points.size() < 3) return points;
  PointList hull;
  for (auto const& p : points) AddHullSide(hull, 0, p);
  std::size_t const lower = hull.size() - 1;
  for (std::size_t k = points.size() - 1; k-- > 0;) AddHullSide(hull, lower, points[k]);
  hull.pop_back();
  return hull;
}

// Inside or on the outline.
bool IsInside(PointList const& hull, Point const& p) {
  for (std::size_t k = 0; k < hull.size(); ++k)
    if (Side(hull[k], hull[(k + 1) % hull.size()], p) < 0) return false;
  return true;
}

// A point of the plane in space, so that the area becomes one in a plane x, y or z = const.
Point Laid(Point const& p, int64 axis, int64 height) {
  if (axis == 0) return {height, p.x, p.y};
  if (axis == 1) return {p.x, height, p.y};
  return {p.x, p.y, height};
}

// Whether neither the border's digital lines nor the outermost columns can take the point in.
bool IsDeepInside(PointList const& hull, Point const& p) {
  static constexpr std::array<Point, 4> around = {{{-1, 0, 0}, {1, 0, 0}, {0, -2, 0}, {0, 2, 0}}};
  return std::ranges::all_of(around, [&](Point const& step) { return IsInside(hull, p + step); });
}

// The walk with border takes in every lattice point of the outline, the one without at least those
// well inside; no point comes twice. (Both may go beyond the outline, along its digital lines.)
void CheckConvex(CInput& input) {
  int64 const reach = input.Flag() ? 12 : 60;
  PointList hull = Hull(input.List(12, [&] {
    Point const p = input.SmallPoint(reach);
    return Point(p.x, p.y, 0);
  }));
  if (hull.size() < 3) return;
  auto const box = BoxOf(hull);
  int64 const axis = input.Between(0, 2), height = input.Integer();
  bool const isSpatial = input.Flag(), isWithBorder = input.Flag();
  static constexpr std::array<int64, 4> flat = {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2,
                                                NEIGHBORHOOD_8};
  static constexpr std::array<int64, 2> spatial = {NEIGHBORHOOD_6, NEIGHBORHOOD_26};
  int64 const neighborhood = isSpatial ? input.OneOf(spatial) : input.OneOf(flat);
  int64 const plane = isSpatial ? axis : 2;
  PointList corners;
  for (auto const& p : hull) corners.push_back(Laid(p, plane, height));
  auto const first = corners.begin() + static_cast<std::ptrdiff_t>(input.Count(2));
  std::rotate(corners.begin(), first, corners.end());
  if (input.Flag()) std::ranges::reverse(corners);

  CBresenhamAreaVisitor const area(corners, isSpatial ? 3 : 2, neighborhood, isWithBorder);
  Require(corners.empty(), "the corners were taken over");
  PointList const points = Sorted(CheckWalk(area));
  Require(std::ranges::adjacent_find(points) == points.end(), "an area has each point once");
  for (int64 x = box.low.x; x <= box.high.x; ++x)
    for (int64 y = box.low.y; y <= box.high.y; ++y) {
      bool const isVisited =
          std::ranges::binary_search(points, Laid({x, y, 0}, plane, height), InOrder);
      bool const isDue = isWithBorder ? IsInside(hull, {x, y, 0}) : IsDeepInside(hull, {x, y, 0});
      Require(isVisited || !isDue, "an area is filled");
    }
}

void CheckAny(CInput& input) {
  bool const isFar = input.Flag(), isFlat = input.Flag();
  int64 const reach = input.Flag() ? 6 : 200;
  PointList corners =
      input.List(10, [&] { return isFar ? input.AnyPoint() : input.SmallPoint(reach); });
  if (isFlat)
    for (auto& p : corners) p.z = corners.front().z;
  auto const spread = Spread(corners);
  bool const isTooFar = spread > std::numeric_limits<std::int32_t>::max();
  if (spread > c_mostSpread && !isTooFar) return;
  int64 const dimension = input.Between(0, 4), neighborhood = input.Neighborhood();
  bool const isWithBorder = input.Flag();
  PointList const kept = corners;
  auto const area =
      Try([&] { return CBresenhamAreaVisitor(corners, dimension, neighborhood, isWithBorder); });
  if (!area) return Require(corners == kept, "an area that is refused leaves its corners alone");
  Require(corners.empty(), "the corners were taken over");
  Require(kept.size() < 2 || !isTooFar || (kept.size() == 2 && !isWithBorder),
          "corners too far apart are refused");
  PointList const points = CheckWalk(*area);
  if (!kept.empty()) RequireInside(points, BoxOf(kept), "an area lies in the box of its corners");
}

// The areas by themselves, along paths that the facade would turn and close.
template <class Area>
void CheckPath(CInput& input) {
  int64 const reach = input.Flag() ? 6 : 60;
  PointList path = input.List(10, [&] { return input.SmallPoint(reach); });
  if (std::is_same_v<Area, Impl::CBresenhamAreaVisitor2D>)
    for (auto& p : path) p.z = path.front().z;
  if (input.Flag() && !path.empty()) path.push_back(path.front());
  int64 const neighborhood = input.Neighborhood();
  bool const isWithBorder = input.Flag();
  auto area = Try([&] { return Area(path, neighborhood, isWithBorder); });
  if (!area) return;
  auto const expected = static_cast<std::size_t>(std::min<uint64>(area->Steps(), c_longest));
  Area copy = *area;
  PointList const points = Walk(*area, expected + 1);
  Require(points.size() == expected || expected == c_longest,
          "an area hands out as many points as it counts");
  Require(Walk(copy, expected + 1) == points, "a copy walks like its original");
  area->Reset();
  Require(Walk(*area, expected + 1) == points, "an area that is reset repeats itself");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 3)) {
  case 0:
    CheckConvex(input);
    break;
  case 1:
    CheckPath<Impl::CBresenhamAreaVisitor2D>(input);
    break;
  case 2:
    CheckPath<Impl::CBresenhamAreaVisitor3D>(input);
    break;
  default:
    CheckAny(input);
  }
  return 0;
}
