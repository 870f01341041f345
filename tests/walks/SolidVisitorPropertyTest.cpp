// The solid walk against an exact winding test of every point, on random solids of many kinds.
#include "support/Solids.h"
#include "support/WalkTest.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>

#include <gtest/gtest.h>

namespace {

using namespace ORVA;
using test::Int;
using namespace test;
using test::StSolid;

// What of the points around a solid belongs to it, in raster order.
struct StExpected {
  PointList open, halfOpen, closed;
};

bool IsInside(int winding, EnWinding rule) {
  return rule == EnWinding::EvenOdd ? winding % 2 != 0 : winding != 0;
}

StExpected Expect(StSolid const& solid, EnWinding rule, Int unit, test::CRandomNumbers& random) {
  test::CSolidPlaces const places(solid);
  Point low = solid.corners.front(), high = low;
  for (auto const axis : {&Point::x, &Point::y, &Point::z})
    for (Point const& p : solid.corners) {
      low.*axis = std::min(low.*axis, p.*axis);
      high.*axis = std::max(high.*axis, p.*axis);
    }
  StExpected expected;
  auto const toward = [unit](Point const& p) {
    return Point(p.x / unit, p.y / unit, p.z / unit); // toward 0: none are lost
  };
  for (Point const& p : BoxPoints(toward(low), toward(high))) {
    bool const isIn = IsInside(places.Winding(p * unit, random), rule);
    bool const isOn = places.IsOnSurface(p * unit);
    if (isIn) expected.halfOpen.push_back(p);
    if (isIn && !isOn) expected.open.push_back(p);
    if (isIn || isOn) expected.closed.push_back(p);
  }
  return expected;
}

void ExpectWalk(CSolidVisitor solid, PointList const& expected) {
  EXPECT_EQ(solid.Steps(), expected.size());
  EXPECT_EQ(solid.Remaining(), expected.size());
  EXPECT_EQ(solid.empty(), expected.empty());
  EXPECT_EQ(Walk(solid), expected);
  EXPECT_EQ(solid.Remaining(), 0U);
}

void ExpectExactWalks(StSolid const& solid, EnWinding rule, Int unit,
                      test::CRandomNumbers& random) {
  StExpected const expected = Expect(solid, rule, unit, random);
  struct {
    char const* name;
    EnBoundary boundary;
    PointList const& points;
  } const cases[] = {{"open", EnBoundary::Open, expected.open},
                     {"half-open", EnBoundary::HalfOpen, expected.halfOpen},
                     {"closed", EnBoundary::Closed, expected.closed}};
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectWalk(CSolidVisitor(solid.corners, solid.faces, c.boundary, rule, unit), c.points);
  }
}

constexpr int c_perKind = 200;
constexpr Int c_mostReach = 6;

template <class Check>
void ForEachSolid(Check check) {
  test::CRandomNumbers random;
  for (test::StSolidKind const& kind : test::c_solidKinds)
    for (int k = 0; k < c_perKind && !testing::Test::HasFailure(); ++k) {
      StSolid const solid = kind.make(random, random.Between<Int>(2, c_mostReach));
      SCOPED_TRACE(kind.name + (": " + test::Text(solid)));
      check(solid, random);
    }
}

TEST(SolidVisitorProperty, EveryKindIsFilledExactlyWhateverItsOrientation) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    ExpectExactWalks(test::Shuffled(random, solid, false), EnWinding::EvenOdd, 1, random);
  });
}

TEST(SolidVisitorProperty, ByTheNonZeroRulePartsAreUnited) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    StSolid const both = test::Together(solid, test::Tetrahedron(random, 4));
    ExpectExactWalks(test::Shuffled(random, both, true), EnWinding::NonZero, 1, random);
  });
}

TEST(SolidVisitorProperty, CornersBetweenTheVoxelsAreExactToo) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    StSolid fine = solid; // some corners on voxels, some between them
    for (Point& p : fine.corners) p = p * Int{2};
    ExpectExactWalks(fine, EnWinding::EvenOdd, random.Between<Int>(2, 5), random);
  });
}

TEST(SolidVisitorProperty, DigitalFacesAreThePolygonWalksOfTheFaces) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    auto const inner = Walk(CSolidVisitor(solid.corners, solid.faces, EnBoundary::Open));
    for (int64 const neighborhood :
         {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
      test::PointSet points(inner.begin(), inner.end());
      for (auto const& face : solid.faces)
        for (Point const& p : Walk(CPolygonVisitor(solid.Corners(face), 3, neighborhood, true)))
          points.insert(p);
      StSolid const shuffled = test::Shuffled(random, solid, true);
      ExpectWalk(CSolidVisitor(solid.corners, solid.faces, neighborhood, true),
                 Sorted({points.begin(), points.end()}));
      ExpectWalk(CSolidVisitor(shuffled.corners, shuffled.faces, neighborhood, false), inner);
    }
  });
}

TEST(SolidVisitorProperty, TetrahedraThatTileABoxCoverEachPointOnce) {
  test::CRandomNumbers random;
  for (int k = 0; k < 100 && !HasFailure(); ++k) {
    // A box of which one corner is moved inward, cut into twelve from a point within.
    Point const high = test::RandomCorner(random, 4) + Point(9, 9, 9);
    Point const middle(random.Between<Int>(1, high.x - 1), random.Between<Int>(1, high.y - 1),
                       random.Between<Int>(1, high.z - 1));
    auto const at = [&](int corner) {
      return Point((corner & 1) != 0 ? high.x : 0, (corner & 2) != 0 ? high.y : 0,
                   (corner & 4) != 0 ? high.z : 0);
    };
    constexpr int c_squares[6][4] = {{0, 1, 3, 2}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                     {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 3, 7, 5}};
    PointList all;
    for (auto const& square : c_squares)
      for (int half = 0; half < 2; ++half) {
        StSolid part = test::Tetrahedron(random, 1);
        part.corners = {at(square[0]), at(square[half + 1]), at(square[half + 2]), middle};
        auto const points = Walk(CSolidVisitor(part.corners, part.faces, EnBoundary::HalfOpen));
        all.insert(all.end(), points.begin(), points.end());
      }
    EXPECT_EQ(Sorted(all), BoxPoints({}, high - Point(1, 1, 1)));
  }
}

TEST(SolidVisitorProperty, RunsAndPointsInTurnsAreTheWalk) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    CSolidVisitor walk(solid.corners, solid.faces, NEIGHBORHOOD_26, true);
    PointList const all = Walk(CSolidVisitor(walk));
    PointList taken;
    while (walk.MorePoints()) {
      EXPECT_EQ(walk.Remaining(), all.size() - taken.size());
      if (random.Between(0, 2) > 0) {
        taken.push_back(walk.NextPoint());
        continue;
      }
      auto const [first, axis, length] = walk.NextRun();
      ASSERT_EQ(axis, 0);
      ASSERT_GT(length, 0);
      for (int64 i = 0; i < length; ++i) taken.push_back(first + Point(i, 0, 0));
    }
    EXPECT_EQ(taken, all);
    EXPECT_EQ(walk.NextRun().length, 0);
    EXPECT_EQ(walk.NextPoint(), Point());
  });
}

TEST(SolidVisitorProperty, AnImageCutsOffWhatLiesOutside) {
  ForEachSolid([](StSolid const& solid, test::CRandomNumbers& random) {
    CSolidVisitor walk(solid.corners, solid.faces, EnBoundary::Closed);
    Point const size = test::RandomCorner(random, c_mostReach);
    PointList expected;
    for (Point const& p : Walk(CSolidVisitor(walk)))
      if (p.x >= 0 && p.y >= 0 && p.z >= 0 && p.x < size.x && p.y < size.y && p.z < size.z)
        expected.push_back(p);
    if (walk.MorePoints()) walk.NextPoint();
    walk.SetImageSize(size);
    ExpectWalk(walk, expected);
  });
}

TEST(SolidVisitorProperty, CopiesWalkIndependentlyAndResetRewindsAnywhere) {
  test::CRandomNumbers random;
  for (int k = 0; k < 20; ++k) {
    StSolid const solid = test::StarSolid(random, 4);
    test::ExpectRewindsAndCopiesAnywhere(
        CSolidVisitor(solid.corners, solid.faces, NEIGHBORHOOD_26, true));
    if (HasFailure()) return;
  }
}

} // namespace
