// The area walk on random polygons: exact where it can be, and well-behaved everywhere.
#include "support/Polygons.h"
#include "support/WalkTest.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <pxlib2core/Exception.h>

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace {

using namespace ORVA;
using test::c_flat;
using test::Int;
using namespace test;
using test::PointSet;
using test::Polygon;

// Upper edges are drawn from left to right, lower ones from right to left.
PointSet BorderLine(Polygon polygon, int64 neighborhood) {
  Int area = 0;
  for (std::size_t i = 0; i < polygon.size(); ++i)
    area += test::Turn({}, polygon[i], polygon[(i + 1) % polygon.size()]);
  if (area > 0) std::ranges::reverse(polygon);
  PointSet points;
  for (std::size_t i = 0; i < polygon.size(); ++i)
    test::AddLine(points, polygon[i], polygon[(i + 1) % polygon.size()], neighborhood);
  return points;
}

CBresenhamAreaVisitor Area(Polygon polygon, int64 dimension, int64 neighborhood, bool border) {
  return CBresenhamAreaVisitor(std::move(polygon), dimension, neighborhood, border);
}

PointSet ExpectDistinctPoints(CBresenhamAreaVisitor area) {
  PointList const points = Walk(area, 100'000);
  PointSet const distinct(points.begin(), points.end());
  EXPECT_EQ(area.Steps(), points.size());
  EXPECT_EQ(area.empty(), points.empty());
  EXPECT_EQ(distinct.size(), points.size());
  area.Reset();
  EXPECT_EQ(Walk(area, 100'000), points);
  return distinct;
}

bool Includes(PointSet const& all, PointSet const& some) {
  return std::ranges::includes(all, some, test::StPointLess());
}

TEST(AreaVisitorProperty, ConvexOutlinesAreFilled) {
  test::CRandomNumbers random;
  for (int k = 0; k < 2000; ++k) {
    Polygon const polygon =
        test::Turned(random, test::ConvexPolygon(random, random.Between<Int>(2, 14)));
    SCOPED_TRACE(test::Text(polygon));
    PointSet const closed = test::LatticePoints({polygon}, true);
    for (int64 const neighborhood : c_flat) {
      SCOPED_TRACE(neighborhood);
      PointSet const line = BorderLine(polygon, neighborhood);
      PointSet all = closed;
      all.insert(line.begin(), line.end());
      PointSet const with = ExpectDistinctPoints(Area(polygon, 2, neighborhood, true));
      EXPECT_TRUE(Includes(with, closed));
      EXPECT_TRUE(Includes(all, with));

      PointSet inner = test::LatticePoints({polygon}, false);
      for (Point const& p : line) inner.erase(p);
      PointSet const without = ExpectDistinctPoints(Area(polygon, 2, neighborhood, false));
      EXPECT_TRUE(Includes(without, inner));
    }
    if (HasFailure()) return;
  }
}

TEST(AreaVisitorProperty, OutlinesWithoutSteepEdgesAreExact) {
  test::CRandomNumbers random;
  int tested = 0;
  for (int k = 0; k < 4000; ++k) {
    Polygon const polygon = test::Turned(random, k % 2 == 0 ? test::ConvexPolygon(random, 10)
                                                            : test::MonotonePolygon(random, 5));
    bool isFlat = true;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      Point const d = polygon[(i + 1) % polygon.size()] - polygon[i];
      isFlat = isFlat && std::abs(d.y) <= std::abs(d.x);
    }
    if (!isFlat) continue;
    ++tested;
    SCOPED_TRACE(test::Text(polygon));
    PointSet const line = BorderLine(polygon, NEIGHBORHOOD_8);
    PointSet all = test::LatticePoints({polygon}, true);
    all.insert(line.begin(), line.end());
    EXPECT_EQ(ExpectDistinctPoints(Area(polygon, 2, NEIGHBORHOOD_8, true)), all);
    PointSet inner = test::LatticePoints({polygon}, false);
    for (Point const& p : line) inner.erase(p);
    EXPECT_EQ(ExpectDistinctPoints(Area(polygon, 2, NEIGHBORHOOD_8, false)), inner);
    if (HasFailure()) return;
  }
  EXPECT_GT(tested, 20);
}

TEST(AreaVisitorProperty, AnyOutlineIsWalkedWithoutRepetitionOrRefused) {
  test::CRandomNumbers random;
  int walked = 0;
  for (test::StKind const& kind : test::c_kinds)
    for (int k = 0; k < 500; ++k) {
      Polygon const polygon = test::Turned(
          random, test::Decorated(random, kind.make(random, random.Between<Int>(2, 14))));
      SCOPED_TRACE(kind.name + (": " + test::Text(polygon)));
      for (int64 const neighborhood : c_flat)
        for (bool const border : {true, false}) {
          std::optional<CBresenhamAreaVisitor> area;
          try {
            area = Area(polygon, 2, neighborhood, border);
          } catch (CException const& error) {
            EXPECT_STREQ(error.what(),
                         border
                             ? "intern failure in Border Calculation in CBresenhamAreaVisitor2D"
                             : "intern failure in Border Calculation in CBresenhamAreaVisitor3D");
            continue;
          }
          ++walked;
          ExpectDistinctPoints(*area);
        }
      if (HasFailure()) return;
    }
  EXPECT_GT(walked, 1000);
}

TEST(AreaVisitorProperty, TrianglesAndRectanglesDoNotDependOnTheirOrientation) {
  test::CRandomNumbers random;
  for (int k = 0; k < 2000; ++k) {
    Point const a = test::RandomPoint(random, 9), c = test::RandomPoint(random, 9);
    Polygon polygon = k % 2 == 0 ? Polygon{a, {c.x, a.y, 0}, c, {a.x, c.y, 0}}
                                 : Polygon{a, test::RandomPoint(random, 9), c};
    if (test::Turn(polygon[0], polygon[1], polygon[2]) == 0) continue;
    SCOPED_TRACE(test::Text(polygon));
    for (bool const border : {true, false}) {
      PointSet const forward = ExpectDistinctPoints(Area(polygon, 2, NEIGHBORHOOD_8, border));
      for (int turn = 0; turn < 2; ++turn) {
        std::ranges::reverse(polygon);
        std::rotate(polygon.begin(), polygon.begin() + 1, polygon.end());
        EXPECT_EQ(ExpectDistinctPoints(Area(polygon, 2, NEIGHBORHOOD_8, border)), forward);
      }
    }
    if (HasFailure()) return;
  }
}

struct StOblique {
  Polygon corners;
  Point normal;
};

// In a plane that is not parallel to z and that no coordinate is constant in.
StOblique ObliqueConvexPolygon(test::CRandomNumbers& random) {
  auto const number = [&] { return random.Between<Int>(-3, 3); };
  for (;;) {
    Point const a(number(), number(), number()), b(number(), number(), number());
    Point const normal(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
    if ((normal.x != 0) + (normal.y != 0) + (normal.z != 0) < 2 || normal.z == 0) continue;
    Polygon corners = test::Turned(random, test::ConvexPolygon(random, 6));
    for (Point& p : corners) p = a * p.x + b * p.y;
    return {corners, normal};
  }
}

TEST(AreaVisitorProperty, ObliqueConvexOutlinesAreWalkedOnceWithinTheirColumns) {
  test::CRandomNumbers random;
  int walks = 0, refused = 0;
  for (int k = 0; k < 2000; ++k) {
    Polygon const polygon = ObliqueConvexPolygon(random).corners;
    SCOPED_TRACE(test::Text(polygon));
    Int const lowX = std::ranges::min(polygon, {}, &Point::x).x;
    Int const highX = std::ranges::max(polygon, {}, &Point::x).x;
    for (bool const border : {true, false}) {
      ++walks;
      CBresenhamAreaVisitor area;
      try {
        area = Area(polygon, 3, NEIGHBORHOOD_26, border);
      } catch (CException const& error) { // the sides' digital lines cross
        EXPECT_STREQ(error.what(), "Failure in Start- and Endpoints");
        ++refused;
        continue;
      }
      PointSet columns;
      for (Point const& p : ExpectDistinctPoints(area)) {
        columns.insert({p.x, 0, 0});
      }
      if (columns.empty()) continue;
      Int const margin = border ? 0 : 1;
      EXPECT_GE(columns.begin()->x, lowX + margin);
      EXPECT_LE(columns.rbegin()->x, highX - margin);
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(walks, 1000);
  EXPECT_LT(refused, walks / 5) << "of " << walks;
}

Int Dot(Point const& a, Point const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Int Length(Point const& d) { return std::abs(d.x) + std::abs(d.y) + std::abs(d.z); }

// Whether p, seen along z, lies within `halves` half voxels (along x and y) of a convex polygon.
bool IsNear(Polygon const& polygon, Point const& p, Int halves) {
  Int const side = test::Turn(polygon[0], polygon[1], polygon[2]) > 0 ? 1 : -1;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    Point const &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
    Int const reach = std::abs(b.x - a.x) + std::abs(b.y - a.y);
    if (2 * side * test::Turn(a, b, p) + halves * reach < 0) return false;
  }
  return true;
}

// The points with which a walk enters and leaves each column.
PointSet ColumnEnds(PointList const& points) {
  PointSet ends;
  for (std::size_t i = 0; i < points.size(); ++i)
    if (i == 0 || i + 1 == points.size() || points[i - 1].x != points[i].x ||
        points[i + 1].x != points[i].x)
      ends.insert(points[i]);
  return ends;
}

// What the walk with border leaves when its outermost columns and the two ends of each run are off.
PointSet InnerPoints(test::PointList const& withBorder) {
  PointSet inner;
  if (withBorder.empty()) return inner;
  Int const first = withBorder.front().x, last = withBorder.back().x;
  for (std::size_t i = 1; i + 1 < withBorder.size(); ++i) {
    Point const& p = withBorder[i];
    bool const isEnd = withBorder[i - 1].x != p.x || withBorder[i + 1].x != p.x;
    if (!isEnd && p.x != first && p.x != last) inner.insert(p);
  }
  return inner;
}

TEST(AreaVisitorProperty, ObliqueConvexOutlinesStayByTheirPlaneInBothNeighborhoods) {
  struct {
    int64 neighborhood;
    Int halves; // how far a point can lie outside the outline, seen along z
  } constexpr c_codes[] = {{NEIGHBORHOOD_14_1, 2}, {NEIGHBORHOOD_26, 1}};
  test::CRandomNumbers random;
  int walks = 0, crossed = 0, different = 0;
  for (int k = 0; k < 2000; ++k) {
    auto const [polygon, normal] = ObliqueConvexPolygon(random);
    SCOPED_TRACE(test::Text(polygon));
    for (auto const& [neighborhood, halves] : c_codes) {
      SCOPED_TRACE(neighborhood);
      PointList with;
      PointSet inside;
      try {
        with = Walk(Area(polygon, 3, neighborhood, true));
        ExpectDistinctPoints(Area(polygon, 3, neighborhood, true));
        inside = ExpectDistinctPoints(Area(polygon, 3, neighborhood, false));
      } catch (CException const& error) { // the sides' digital lines cross
        EXPECT_STREQ(error.what(), "Failure in Start- and Endpoints");
        continue;
      }
      ++walks;
      for (Point const& p : with) {
        EXPECT_TRUE(IsNear(polygon, p, halves)) << testing::PrintToString(p);
        EXPECT_LE(2 * std::abs(Dot(normal, p - polygon.front())), 3 * Length(normal))
            << testing::PrintToString(p) << " lies more than one and a half voxels off the plane";
      }
      // The digital lines of a sliver's sides can cross; the two walks can then take its path in
      // different orientations.
      bool isOffBorder = Includes(PointSet(with.begin(), with.end()), inside);
      for (Point const& p : ColumnEnds(with)) isOffBorder = isOffBorder && !inside.contains(p);
      crossed += isOffBorder ? 0 : 1;
      different += isOffBorder && inside != InnerPoints(with) ? 1 : 0;
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(walks, 1000);
  EXPECT_LT(crossed, walks / 100) << "of " << walks;
  EXPECT_EQ(different, 0) << "of " << walks;
}

TEST(AreaVisitorProperty, PlanesAcrossAnAxisAreWalkedAsInTwoDimensions) {
  test::CRandomNumbers random;
  for (int k = 0; k < 500; ++k) {
    Polygon const flat = test::Turned(random, test::ConvexPolygon(random, 9));
    SCOPED_TRACE(test::Text(flat));
    Int const level = random.Between<Int>(-50, 50);
    for (int axis = 0; axis < 3; ++axis) {
      auto const lift = [&](Point const& p) {
        return axis == 0   ? Point(level, p.x, p.y)
               : axis == 1 ? Point(p.x, level, p.y)
                           : Point(p.x, p.y, level);
      };
      Polygon lifted;
      for (Point const& p : flat) lifted.push_back(lift(p));
      for (auto const& [space, plane] :
           {std::pair(NEIGHBORHOOD_6, NEIGHBORHOOD_4), std::pair(NEIGHBORHOOD_26, NEIGHBORHOOD_8)})
        for (bool const border : {true, false}) {
          PointList expected = Walk(Area(flat, 2, plane, border));
          for (Point& p : expected) p = lift(p);
          CBresenhamAreaVisitor area = Area(lifted, 3, space, border);
          EXPECT_EQ(area.Steps(), expected.size());
          EXPECT_EQ(Walk(area), expected);
        }
      for (int64 const space : {NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2})
        EXPECT_THROW(Area(lifted, 3, space, true), CException);
    }
    if (HasFailure()) return;
  }
}

} // namespace
