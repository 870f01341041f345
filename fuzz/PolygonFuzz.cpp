// Polygons in any plane, with holes: counted, distinct, and exact against every lattice point.
#include "Fuzzing.h"

#include <SeluUtils/PolygonVisitor.h>

using namespace ORVA;
using namespace fuzz;

namespace {

// Border points take memory: the library allows 2^31 of them, this target few.
constexpr uint64 c_mostSpread = 500;

using Rings = std::vector<PointList>; // the outline and the holes

PointList AllCorners(Rings const& rings) {
  PointList all;
  for (auto const& ring : rings) all.insert(all.end(), ring.begin(), ring.end());
  return all;
}

CPolygonVisitor Polygon(Rings const& rings, int64 dimension, int64 neighborhood, bool border) {
  return CPolygonVisitor(rings.front(), {rings.begin() + 1, rings.end()}, dimension, neighborhood,
                         border);
}

int64 Side(Point const& a, Point const& b, Point const& p) {
  return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

bool IsOnEdge(Point const& a, Point const& b, Point const& p) {
  return Side(a, b, p) == 0 && std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) &&
         std::min(a.y, b.y) <= p.y && p.y <= std::max(a.y, b.y);
}

struct StPlace {
  bool isOnOutline = false, isInside = false;
};

// An odd number of crossings on the way upwards, or on an edge.
StPlace Place(Rings const& rings, Point const& p) {
  StPlace place;
  for (auto const& ring : rings)
    for (std::size_t k = 0; k < ring.size(); ++k) {
      Point const &a = ring[k], &b = ring[(k + 1) % ring.size()];
      place.isOnOutline |= IsOnEdge(a, b, p);
      if ((a.x <= p.x) == (b.x <= p.x)) continue;
      bool const isAbove = a.x < b.x ? Side(a, b, p) < 0 : Side(a, b, p) > 0;
      place.isInside ^= isAbove;
    }
  return place;
}

// With border every point inside or on the outline; without, only points strictly inside.
void CheckFlat(CInput& input) {
  Rings rings(1);
  int64 const reach = input.Flag() ? 6 : 15, height = input.Integer() / 2;
  auto const next = [&] {
    Point const p = input.SmallPoint(reach);
    return Point(p.x, p.y, 0);
  };
  rings.front() = input.List(10, next);
  if (rings.front().size() < 3) return;
  auto const box = BoxOf(rings.front());
  for (std::size_t holes = input.Count(2); holes > 0; --holes) {
    PointList hole = input.List(6, next);
    if (hole.size() > 2 && std::ranges::all_of(hole, [&](auto const& p) { return box.Has(p); }))
      rings.push_back(hole);
  }
  static constexpr std::array<int64, 4> codes = {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2,
                                                 NEIGHBORHOOD_8};
  int64 const neighborhood = input.OneOf(codes);
  bool const isWithBorder = input.Flag();
  Rings raised = rings;
  for (auto& ring : raised)
    for (auto& p : ring) p.z = height;
  PointList const points = Sorted(CheckWalk(Polygon(raised, 2, neighborhood, isWithBorder)));
  Require(std::ranges::adjacent_find(points) == points.end(), "a polygon has each point once");
  for (int64 x = box.low.x; x <= box.high.x; ++x)
    for (int64 y = box.low.y; y <= box.high.y; ++y) {
      StPlace const place = Place(rings, {x, y, 0});
      bool const isVisited = std::ranges::binary_search(points, Point(x, y, height), InOrder);
      Require(!isWithBorder || isVisited || !(place.isInside || place.isOnOutline),
              "a polygon with border is filled");
      Require(isWithBorder || !isVisited || (place.isInside && !place.isOnOutline),
              "a polygon without border is inside");
    }
}

PointList TakeRing(CInput& input, Point const& origin, Point const& first, Point const& second) {
  return input.List(
      8, [&] { return origin + first * input.Between(-9, 9) + second * input.Between(-9, 9); });
}

// In a plane of its own, as it was given and the other way round.
void CheckSpatial(CInput& input) {
  Point const origin = input.SmallPoint(50), first = input.SmallPoint(6),
              second = input.SmallPoint(6);
  Rings rings(1 + input.Count(2));
  for (auto& ring : rings) ring = TakeRing(input, origin, first, second);
  int64 const neighborhood = input.Neighborhood();
  bool const isWithBorder = input.Flag();
  auto const polygon = Try([&] { return Polygon(rings, 3, neighborhood, isWithBorder); });
  if (rings.size() == 1)
    Require(polygon.has_value() == Is3D(neighborhood), "any polygon in a plane is walked");
  if (!polygon) return;
  PointList const points = CheckWalk(*polygon);
  if (!points.empty()) {
    StBox box = BoxOf(rings.front());
    int64 const slack = isWithBorder ? 1 : 0; // digital lines stray from the edges by less
    box.low += Point(-slack, -slack, -slack);
    box.high += Point(slack, slack, slack);
    RequireInside(points, box, "a polygon lies in its box");
  }
  RequireDistinct(points, "a polygon has each voxel once");
  for (auto& ring : rings) std::ranges::reverse(ring);
  auto const reversed = Polygon(rings, 3, neighborhood, isWithBorder);
  Require(CheckWalk(reversed) == points, "the orientation makes no difference");
}

void CheckAny(CInput& input) {
  bool const isFar = input.Flag(), isFlat = input.Flag();
  auto const next = [&] { return isFar ? input.AnyPoint() : input.SmallPoint(30); };
  Rings rings(1 + input.Count(2));
  for (auto& ring : rings) ring = input.List(6, next);
  auto const all = AllCorners(rings);
  for (auto& ring : rings)
    for (auto& p : ring)
      if (isFlat) p.z = all.front().z;
  bool const isTooFar = Spread(rings.front()) > std::numeric_limits<std::int32_t>::max();
  if (Spread(rings.front()) > c_mostSpread && !isTooFar) return;
  int64 const dimension = input.Between(0, 4), neighborhood = input.Neighborhood();
  bool const isWithBorder = input.Flag();
  auto const polygon = Try([&] { return Polygon(rings, dimension, neighborhood, isWithBorder); });
  if (!polygon) return;
  Require(!isTooFar, "corners too far apart are refused");
  Require((dimension == 2 && Is2D(neighborhood)) || (dimension == 3 && Is3D(neighborhood)),
          "what is no neighborhood is refused");
  RequireDistinct(CheckWalk(*polygon), "a polygon has each point once");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 2)) {
  case 0:
    CheckFlat(input);
    break;
  case 1:
    CheckSpatial(input);
    break;
  default:
    CheckAny(input);
  }
  return 0;
}
