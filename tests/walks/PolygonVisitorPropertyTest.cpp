// The polygon walk against an exact point-in-polygon test, on random polygons of many kinds.
#include "support/Polygons.h"
#include "support/WalkTest.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/PolygonVisitor.h>

#include <gtest/gtest.h>

namespace {

using namespace ORVA;
using test::c_flat;
using test::Int;
using namespace test;
using test::PointSet;
using test::Polygon;

PointList Expected(std::vector<Polygon> const& rings, int64 neighborhood, bool border) {
  PointSet points = test::LatticePoints(rings, border);
  for (Point const& p : test::BorderLine(rings, neighborhood)) {
    if (border) {
      points.insert(p);
    } else {
      points.erase(p);
    }
  }
  return {points.begin(), points.end()};
}

void ExpectWalk(CPolygonVisitor polygon, PointList const& expected) {
  EXPECT_EQ(polygon.Steps(), expected.size());
  EXPECT_EQ(polygon.empty(), expected.empty());
  EXPECT_EQ(Walk(polygon), expected);
  polygon.Reset();
  EXPECT_EQ(Walk(polygon), expected);
}

TEST(PolygonVisitorProperty, EveryKindIsFilledExactly) {
  test::CRandomNumbers random;
  for (test::StKind const& kind : test::c_kinds)
    for (int k = 0; k < 400; ++k) {
      Polygon polygon = kind.make(random, random.Between<Int>(2, 14));
      if (k % 2 == 1) polygon = test::Decorated(random, polygon);
      polygon = test::Turned(random, polygon);
      SCOPED_TRACE(kind.name + (": " + test::Text(polygon)));
      for (int64 const neighborhood : c_flat)
        for (bool const border : {true, false})
          ExpectWalk(CPolygonVisitor(polygon, 2, neighborhood, border),
                     Expected({polygon}, neighborhood, border));
      if (HasFailure()) return;
    }
}

TEST(PolygonVisitorProperty, HolesAreLeftOut) {
  test::CRandomNumbers random;
  int tested = 0;
  for (int k = 0; k < 400; ++k) {
    Polygon const outline = test::RectilinearPolygon(random, 12, 5);
    Int const right = std::ranges::max(outline, {}, &Point::x).x;
    Polygon hole = test::Turned(random, test::StarPolygon(random, 4));
    for (Point& p : hole) p.x -= 8;
    if (std::ranges::max(hole, {}, &Point::x).x > right) continue;
    ++tested;
    SCOPED_TRACE(test::Text(outline) + "less " + test::Text(hole));
    for (int64 const neighborhood : c_flat)
      for (bool const border : {true, false})
        ExpectWalk(CPolygonVisitor(outline, {hole}, 2, neighborhood, border),
                   Expected({outline, hole}, neighborhood, border));
    if (HasFailure()) return;
  }
  EXPECT_GT(tested, 100);
}

struct StFrame {
  Point origin, a, b;
  [[nodiscard]] Point Lift(Point const& p) const { return origin + a * p.x + b * p.y; }
};

Int Component(Point const& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

Point WithComponent(Point p, int axis, Int value) {
  (axis == 0 ? p.x : axis == 1 ? p.y : p.z) = value;
  return p;
}

Int Dot(Point const& a, Point const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Point Cross(Point const& a, Point const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

int DominantAxis(Point const& normal) {
  int axis = 2;
  for (int k = 1; k >= 0; --k)
    if (std::abs(Component(normal, k)) > std::abs(Component(normal, axis))) axis = k;
  return axis;
}

// Of all voxels of the column the nearest to the plane, found by looking at them.
Point OnPlane(Point column, int axis, Point const& normal, Point const& origin) {
  Int const reach = 400;
  Point best = WithComponent(column, axis, Component(origin, axis) - reach);
  Int bestDistance = std::abs(Dot(normal, best - origin));
  for (Int w = -reach; w <= reach; ++w) {
    Point const p = WithComponent(column, axis, Component(origin, axis) + w);
    Int const distance = std::abs(Dot(normal, p - origin));
    if (distance <= bestDistance) {
      best = p;
      bestDistance = distance;
    }
  }
  return best;
}

TEST(PolygonVisitorProperty, ObliquePolygonsHoldOneVoxelAColumn) {
  struct {
    int64 space, xy, xz, yz;
  } constexpr c_neighborhoods[] = {
      {NEIGHBORHOOD_6, NEIGHBORHOOD_4, NEIGHBORHOOD_4, NEIGHBORHOOD_4},
      {NEIGHBORHOOD_14_1, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_1},
      {NEIGHBORHOOD_14_2, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2},
      {NEIGHBORHOOD_26, NEIGHBORHOOD_8, NEIGHBORHOOD_8, NEIGHBORHOOD_8}};
  test::CRandomNumbers random;
  auto const number = [&] { return random.Between<Int>(-3, 3); };
  for (std::size_t k = 0; k < 600; ++k) {
    StFrame const frame{{number() * 50, number() * 50, number() * 50},
                        {number(), number(), number()},
                        {number(), number(), number()}};
    Point const normal = Cross(frame.a, frame.b);
    if (normal == Point()) continue;
    test::StKind const& kind = test::c_kinds[k % std::size(test::c_kinds)];
    Polygon polygon = test::Turned(random, test::Decorated(random, kind.make(random, 5)));
    for (Point& p : polygon) p = frame.Lift(p);
    SCOPED_TRACE(kind.name + (": " + test::Text(polygon)));

    int const axis = DominantAxis(normal), u = axis == 0 ? 1 : 0, v = axis == 2 ? 1 : 2;
    Polygon seen;
    for (Point const& p : polygon) seen.push_back({Component(p, u), Component(p, v), 0});
    for (auto const& [space, xy, xz, yz] : c_neighborhoods) {
      int64 const flat = axis == 2 ? xy : axis == 1 ? xz : yz;
      for (bool const border : {true, false}) {
        PointList expected = Expected({seen}, flat, border);
        for (Point& p : expected)
          p = OnPlane(WithComponent(WithComponent({}, u, p.x), v, p.y), axis, normal,
                      polygon.front());
        ExpectWalk(CPolygonVisitor(polygon, 3, space, border), expected);
      }
    }
    if (HasFailure()) return;
  }
}

TEST(PolygonVisitorProperty, CopiesWalkIndependentlyAndResetRewindsAnywhere) {
  test::CRandomNumbers random;
  for (int k = 0; k < 50; ++k) {
    test::ExpectRewindsAndCopiesAnywhere(
        CPolygonVisitor(test::StarPolygon(random, 6), 2, NEIGHBORHOOD_8, true));
    if (HasFailure()) return;
  }
}

} // namespace
