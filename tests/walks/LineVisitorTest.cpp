#include <SeluUtils/BresenhamVisitor.h>

#include <SeluBase/Neighborhood.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

using namespace ORVA;
using namespace test;

namespace {

char const c_source[] = "src/Utils/BresenhamVisitor";
char const c_constructor[] = "ORVA::CBresenhamVisitor::CBresenhamVisitor";

CBresenhamVisitor Plane(Point const& from, Point const& to, bool withEndPoints = true) {
  return {from, to, 2, NEIGHBORHOOD_8, withEndPoints};
}

// The end of a walk with end points along direction * length.
Point EndOf(CTriple<double> const& direction, double length, Point const& start = {}) {
  return Walk(CBresenhamVisitor(start, direction, length, 3, NEIGHBORHOOD_26, true)).back();
}

} // namespace

TEST(LineVisitor, HandsOutTheLineFromStartToEnd) {
  auto line = Plane({0, 0, 0}, {3, 1, 0});
  EXPECT_EQ(line.LastStep(), 3);
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {3, 1, 0}}));
  EXPECT_FALSE(line.MorePoints());
}

TEST(LineVisitor, WithoutEndPointsSkipsBothEnds) {
  auto line = Plane({0, 0, 0}, {3, 1, 0}, false);
  EXPECT_EQ(line.LastStep(), 1);
  EXPECT_EQ(Walk(line), (PointList{{1, 0, 0}, {2, 1, 0}}));
}

TEST(LineVisitor, StepsCountMovesAndGoBelowZeroWithoutEndPoints) {
  struct StCase {
    int64 length;
    bool withEndPoints;
    int64 steps;
    bool isEmpty;
    std::size_t points;
  };
  for (StCase const& c : {StCase{3, true, 3, false, 4},
                          {0, true, 0, true, 1},
                          {3, false, 1, false, 2},
                          {2, false, 0, true, 1},
                          {1, false, -1, false, 0},
                          {0, false, -2, false, 0}})
    for (int64 const dimension : {1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << c.length << ' ' << c.withEndPoints << ' ' << dimension);
      int64 const code = dimension == 3 ? NEIGHBORHOOD_26 : NEIGHBORHOOD_8;
      CBresenhamVisitor line(Point(2, 1, 5), Point(2 + c.length, 1, 5), dimension, code,
                             c.withEndPoints);
      EXPECT_EQ(line.LastStep(), c.steps);
      EXPECT_EQ(line.Steps(), c.steps);
      EXPECT_EQ(line.FirstStep(), 0);
      EXPECT_EQ(line.empty(), c.isEmpty);
      EXPECT_EQ(line.Dim(), dimension);
      EXPECT_EQ(Walk(line).size(), c.points);
    }
}

TEST(LineVisitor, OneDimensionWalksAlongXAlone) {
  CBresenhamVisitor line(Point(5, 7, 8), Point(2, 100, -3), 1, 77, true);
  EXPECT_EQ(Walk(line), (PointList{{5, 7, 8}, {4, 7, 8}, {3, 7, 8}, {2, 7, 8}}));
}

TEST(LineVisitor, PlaneWalkStaysInItsSlice) {
  EXPECT_EQ(Walk(Plane({1, 1, 4}, {2, 2, 9})), (PointList{{1, 1, 4}, {2, 2, 4}}));
}

TEST(LineVisitor, SizesServeAsPoints) {
  CBresenhamVisitor line(CSize(1, 2, 3), CSize(3, 2, 3), 3, NEIGHBORHOOD_6, true);
  EXPECT_EQ(Walk(line), (PointList{{1, 2, 3}, {2, 2, 3}, {3, 2, 3}}));
}

TEST(LineVisitor, FurtherCallsStayAtTheEnd) {
  auto line = Plane({0, 0, 0}, {1, 0, 0});
  (void)Walk(line);
  EXPECT_EQ(line.NextPoint(), Point(1, 0, 0));
  EXPECT_EQ(line.NextPoint(), Point(1, 0, 0));
  EXPECT_FALSE(line.MorePoints());
}

TEST(LineVisitor, NextPointCanBeLookedAtBeforehand) {
  auto line = Plane({0, 0, 0}, {3, 1, 0});
  while (line.MorePoints()) {
    Point const expected = line.TestNextPoint();
    EXPECT_EQ(line.TestNextPoint(), expected);
    EXPECT_EQ(line.NextPoint(), expected);
  }
}

TEST(LineVisitor, DirectionTimesLengthIsRoundedHalfAwayFromZero) {
  EXPECT_EQ(EndOf({0.5, -0.5, 0}, 3), Point(2, -2, 0));
  EXPECT_EQ(EndOf({0.49, -0.49, 0.51}, 1), Point(0, 0, 1));
  EXPECT_EQ(EndOf({2.5, -2.5, 3.5}, 1), Point(3, -3, 4));
  EXPECT_EQ(EndOf({1, 0, 0}, -4, {1, 1, 1}), Point(-3, 1, 1));
  EXPECT_EQ(EndOf({0, 0, 0}, 1e300), Point(0, 0, 0));
}

TEST(LineVisitor, DirectionSaturatesAtTheEndsOfTheRange) {
  auto const steps = [](double component) {
    return CBresenhamVisitor(Point(), CTriple<double>(component, 0, 0), 1, 1, 0, true).Steps();
  };
  // One-dimensional lines clamp the difference to 32 bits and take no memory.
  EXPECT_EQ(steps(1e19), 2147483647);
  EXPECT_EQ(steps(c_infinity), 2147483647);
  EXPECT_EQ(steps(-1e19), 2147483648);
  EXPECT_EQ(steps(-c_infinity), 2147483648);
  EXPECT_EQ(steps(c_nan), 2147483648);
  EXPECT_EQ(steps(0x1p63), 2147483647);
  EXPECT_EQ(steps(-0x1p63), 2147483648);
  EXPECT_EQ(CBresenhamVisitor(Point(), CTriple<double>(c_nan, 0, 0), 1, 1, 0, true).Step(0),
            Point(-1, 0, 0));
}

TEST(LineVisitor, NotANumberInSpaceLeavesTheStartPoint) {
  // The low 32 bits of the lower end of the range are 0.
  EXPECT_EQ(EndOf({c_nan, c_nan, c_nan}, 1, {4, 5, 6}), Point(4, 5, 6));
}

TEST(LineVisitor, MaskWalkStartsAtTheOriginWithEndPoints) {
  CBresenhamVisitor line(Point(2, 2, -2), 2);
  EXPECT_EQ(line.Neighborhood(), 0);
  EXPECT_EQ(line.Dim(), 3);
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 1, -1}, {2, 2, -2}}));
}

TEST(LineVisitor, StepIsTheMoveOfTheWalk) {
  auto const whole = Plane({0, 0, 0}, {3, 1, 0});
  auto const inner = Plane({0, 0, 0}, {3, 1, 0}, false);
  EXPECT_EQ(whole.Step(0), Point(1, 0, 0));
  EXPECT_EQ(whole.Step(1), Point(1, 1, 0));
  EXPECT_EQ(inner.Step(0), Point(1, 1, 0));
  EXPECT_EQ(inner.Step(-1), Point(1, 0, 0)); // the move before the walk's first point
  EXPECT_EQ(whole.Step(3), Point());
  EXPECT_EQ(inner.Step(2), Point());
  EXPECT_EQ(whole.Step(c_max), Point());
  EXPECT_EQ(inner.Step(c_max), Point());
}

TEST(LineVisitor, NegativeStepIsAnError) {
  ExpectError(
      [] {
        (void)Plane({}, {3, 1, 0}).Step(-1);
      },
      "Step i out of range", "ORVA::Impl::CBresenhamVisitor2D::Step",
      "src/Utils/BresenhamVisitorImpl");
  ExpectError(
      [] {
        (void)Plane({}, {3, 1, 0}, false).Step(-2);
      },
      "Step i out of range", "ORVA::Impl::CBresenhamVisitor2D::Step",
      "src/Utils/BresenhamVisitorImpl");
}

TEST(LineVisitor, StepMovesAPointAndALinearIndex) {
  auto const line = Plane({0, 0, 0}, {-3, 1, 0});
  Point point(10, 20, 30);
  EXPECT_EQ(line.Step(0, 1, 100, point), -1);
  EXPECT_EQ(point, Point(9, 20, 30));
  EXPECT_EQ(line.Step(1, 1, 100, point), 99);
  EXPECT_EQ(point, Point(8, 21, 30));
}

TEST(LineVisitor, MoveAlongZReachesThePointAndNotTheIndex) {
  CBresenhamVisitor const line(Point(), Point(0, 0, 2), 3, NEIGHBORHOOD_26, true);
  Point point(1, 2, 3);
  EXPECT_EQ(line.Step(0, 1, 512, point), 0);
  EXPECT_EQ(point, Point(1, 2, 4));
}

TEST(LineVisitor, ResetStartsAnewFromEveryStep) {
  auto const points = Walk(Plane({1, 2, 0}, {6, 4, 0}));
  for (std::size_t steps = 0; steps <= points.size() + 2; ++steps) {
    auto line = Plane({1, 2, 0}, {6, 4, 0});
    for (std::size_t k = 0; k < steps; ++k) (void)line.NextPoint();
    line.Reset();
    EXPECT_EQ(Walk(line), points) << steps;
  }
}

TEST(LineVisitor, EachResetWithoutEndPointsTakesTwoFurtherPointsOff) {
  auto line = Plane({0, 0, 0}, {7, 0, 0}, false);
  auto const all = Walk(line);
  ASSERT_EQ(all.size(), 6U);
  for (std::size_t const left : {4U, 2U, 0U, 0U}) {
    line.Reset();
    auto const points = Walk(line);
    EXPECT_EQ(points, PointList(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(left)));
    EXPECT_EQ(line.LastStep(), 5); // the line itself is as long as ever
  }
}

TEST(LineVisitor, ImageSizeDoesNotClip) {
  auto line = Plane({-2, 0, 0}, {2, 0, 0});
  line.SetImageSize(CSize(1, 1));
  line.SetImageSize(Point(1, 1, 1));
  EXPECT_EQ(Walk(line).size(), 5U);
}

TEST(LineVisitor, DefaultWalkHasNoPointsAndNoDimension) {
  CBresenhamVisitor line;
  EXPECT_FALSE(line.MorePoints());
  EXPECT_EQ(line.Dim(), 0);
  EXPECT_EQ(line.FirstStep(), 0);
  ExpectError([&] { (void)line.Step(0); }, "invalid dimension", "ORVA::CBresenhamVisitor::Step",
              c_source);
  ExpectError([&] { (void)line.NextPoint(); }, "invalid dimension", "ORVA::CBresenhamVisitor::Step",
              c_source);
  for (auto const& operation : {+[](CBresenhamVisitor& l) { (void)l.LastStep(); },
                                +[](CBresenhamVisitor& l) { (void)l.Steps(); },
                                +[](CBresenhamVisitor& l) { (void)l.empty(); }})
    ExpectError([&] { operation(line); }, "invalid dimension", "ORVA::CBresenhamVisitor::LastStep",
                c_source);
  ExpectError([&] { line.Reset(); }, "invalid dimension\n", "ORVA::CBresenhamVisitor::Reset",
              c_source);
}

TEST(LineVisitor, UnknownDimensionIsRefused) {
  for (int64 const dimension : {int64{0}, int64{4}, int64{-1}, c_min, c_max})
    for (Point const& to : {Point(1, 1, 1), Point(c_max, c_max, c_max)}) {
      SCOPED_TRACE(dimension);
      ExpectError([&] { CBresenhamVisitor(Point(), to, dimension, NEIGHBORHOOD_26, true); },
                  "invalid dimension\n", c_constructor, c_source);
    }
  ExpectError(
      [] { CBresenhamVisitor(Point(), CTriple<double>(1, 0, 0), 3, 5, NEIGHBORHOOD_26, true); },
      "invalid dimension\n", c_constructor, c_source);
}

TEST(LineVisitor, ErrorsOfTheLineItselfPassThrough) {
  ExpectError([] { CBresenhamVisitor(Point(), Point(1, 1, 1), 3, NEIGHBORHOOD_8, true); },
              "invalid neighborhood behavior, only 6, 14.1, 14.2 and 26 valid",
              "ORVA::Impl::CBresenhamVisitor3D::Init", "src/Utils/BresenhamVisitorImpl");
  ExpectError([] { CBresenhamVisitor(Point(), Point(1, 1, 1), 2, NEIGHBORHOOD_26, true); },
              "invalid neighborhood behavior, only 4, 6.1, 6.2 and 8 valid",
              "ORVA::Impl::CBresenhamVisitor2D::Init", "src/Utils/BresenhamVisitorImpl");
  ExpectError([] { CBresenhamVisitor(Point(1, 1, 1), 8); }, "invalid diagonal, only 0 till 7 valid",
              "ORVA::Impl::CBresenhamVisitor3D::Init");
}

TEST(LineVisitor, WalksUpToTheEndsOfTheRange) {
  PointList const top{{c_max - 2, 0, 0}, {c_max - 1, 0, 0}, {c_max, 0, 0}};
  CBresenhamVisitor up(top.front(), top.back(), 3, NEIGHBORHOOD_26, true);
  EXPECT_EQ(Walk(up), top);
  EXPECT_EQ(up.NextPoint(), top.back());
  PointList const bottom{{0, c_min + 1, 0}, {0, c_min, 0}};
  EXPECT_EQ(Walk(Plane(bottom.front(), bottom.back())), bottom);
}

TEST(LineVisitor, LineThatLeavesTheRangeIsRefused) {
  ExpectError<CExBadParam>(
      [] { CBresenhamVisitor(Point(c_min, 0, 0), Point(1, 0, 0), 1, 0, true); },
      "difference from -9223372036854775808 to 1 does not fit 64 bits", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] {
        Plane({0, c_max, 0}, {0, -2, 0});
      },
      "difference from 9223372036854775807 to -2 does not fit 64 bits", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] {
        CBresenhamVisitor(Point(c_max - 5, 0, 0), CTriple<double>(1, 0, 0), 9, 3, NEIGHBORHOOD_26,
                          true);
      },
      "line of 9 voxels from 9223372036854775802 leaves the 64-bit range", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] { CBresenhamVisitor(Point(c_max - 5, 0, 0), CTriple<double>(1, 0, 0), 9, 1, 0, true); },
      "line of 9 voxels from 9223372036854775802 leaves the 64-bit range", c_constructor, c_source);
}

TEST(LineVisitor, AxesThatAreNotWalkedMayDifferByAnything) {
  EXPECT_EQ(Walk(CBresenhamVisitor(Point(0, c_min, c_max), Point(1, c_max, c_min), 1, 0, true)),
            (PointList{{0, c_min, c_max}, {1, c_min, c_max}}));
}

TEST(LineVisitor, CopiesWalkIndependently) {
  auto line = Plane({0, 0, 0}, {5, 2, 0});
  auto const points = Walk(Plane({0, 0, 0}, {5, 2, 0}));
  for (std::size_t k = 0; k < points.size(); ++k) {
    auto copy = line;
    EXPECT_EQ(Walk(copy), PointList(points.begin() + static_cast<std::ptrdiff_t>(k), points.end()));
    EXPECT_EQ(line.NextPoint(), points[k]);
  }
}

TEST(LineVisitor, LineLongerThanMemoryIsWalkedWhereNothingIsStoredAndElseFails) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  CTriple<int64> const far(2147483647, 1, 0);
  EXPECT_EQ(CBresenhamVisitor(Point(), far, 1, 0, true).Steps(), 2147483647);
  EXPECT_EQ(CBresenhamVisitor(Point(), far, 2, NEIGHBORHOOD_8, true).Steps(), 2147483647);
  EXPECT_EQ(CBresenhamVisitor(Point(), far, 2, NEIGHBORHOOD_4, true).Steps(), 2147483648);
  EXPECT_EQ(CBresenhamVisitor(Point(), far, 3, NEIGHBORHOOD_26, true).Steps(), 2147483647);
  EXPECT_THROW(CBresenhamVisitor(Point(), far, 3, NEIGHBORHOOD_6, true), std::bad_alloc);
}

TEST(LineVisitor, DirectionThatIsNoNumberGoesToTheLowerEnd) {
  CBresenhamVisitor line(Point(), CTriple<double>(c_nan, 0, 0), 1, 2, NEIGHBORHOOD_8, true);
  EXPECT_EQ(line.Steps(), 2147483648);
  (void)line.NextPoint();
  EXPECT_EQ(line.NextPoint(), Point(-1, 0, 0));
}

TEST(LineVisitor, PrintsTheMovesOfASpaceLine) {
  CBresenhamVisitor const line(Point(4, 4, 4), Point(5, 4, 4), 3, NEIGHBORHOOD_26, true);
  testing::internal::CaptureStdout();
  line.PrintMoves();
  line.PrintProjMoves();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Moves:\n(1, 0, 0)\n"
            "Moves in XY-plane:\n(1, 0, 0)\nMoves in XZ-plane:\n(1, 0, 0)\nMoves in YZ-plane:\n");
}

TEST(SelectedLine, IsThePartInsideTheImage) {
  CBresenhamVisitorSelect line(Point(-2, 0, 0), Point(5, 0, 0), 2, NEIGHBORHOOD_8, true);
  line.SetImageSize(CSize(4, 1));
  EXPECT_EQ(line.Steps(), 3);
  EXPECT_EQ(line.LastStep(), 3);
  EXPECT_EQ(line.FirstStep(), 0);
  EXPECT_FALSE(line.empty());
  EXPECT_EQ(line.Step(2), Point(1, 0, 0));
  EXPECT_EQ(line.Step(3), Point());
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
}

TEST(SelectedLine, LooksOnlyAtTheAxesOfItsDimension) {
  struct StCase {
    int64 dimension, code;
    Point image;
    std::size_t points;
  };
  // From (-1, 1, 1) to (4, 1, 1).
  for (StCase const& c : {StCase{1, 0, {3, 0, 0}, 3},
                          {2, NEIGHBORHOOD_8, {3, 2, 0}, 3},
                          {3, NEIGHBORHOOD_26, {3, 2, 2}, 3},
                          {2, NEIGHBORHOOD_8, {3, 1, 9}, 1},
                          {3, NEIGHBORHOOD_26, {3, 2, 1}, 1}}) {
    SCOPED_TRACE(testing::Message() << c.dimension << testing::PrintToString(c.image));
    CBresenhamVisitorSelect line(Point(-1, 1, 1), Point(4, 1, 1), c.dimension, c.code, true);
    line.SetImageSize(c.image);
    EXPECT_EQ(Walk(line).size(), c.points);
  }
}

TEST(SelectedLine, ThatNeverEntersHandsOutTheLastPointTried) {
  CBresenhamVisitorSelect line(Point(-3, 5, 0), Point(3, 5, 0), 2, NEIGHBORHOOD_8, true);
  line.SetImageSize(CSize(4, 4));
  EXPECT_TRUE(line.empty());
  EXPECT_EQ(Walk(line), (PointList{{3, 5, 0}}));
}

TEST(SelectedLine, ImageWithoutExtentSelectsNothing) {
  for (Point const& size : {Point(0, 0, 0), Point(-1, 4, 4), Point(c_min, c_min, c_min)}) {
    CBresenhamVisitorSelect line(Point(0, 0, 0), Point(3, 0, 0), 2, NEIGHBORHOOD_8, true);
    line.SetImageSize(size);
    EXPECT_TRUE(line.empty());
  }
}

TEST(SelectedLine, WithoutEndPointsSearchesFromTheFromPoint) {
  CBresenhamVisitorSelect line(Point(0, 0, 0), Point(4, 2, 0), 2, NEIGHBORHOOD_8, false);
  line.SetImageSize(CSize(10, 10));
  // The from point, then the moves after the line's first.
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 1, 0}}));
}

TEST(SelectedLine, WithoutEndPointsGoesOnWithTheSecondMove) {
  CBresenhamVisitorSelect line(Point(0, 0, 0), Point(5, 2, 0), 2, NEIGHBORHOOD_8, false);
  line.SetImageSize(CSize(10, 10));
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 1, 0}, {2, 1, 0}, {3, 2, 0}}));
}

TEST(SelectedLine, IsSelectedOnceAndOnlyRewoundAfterwards) {
  CBresenhamVisitorSelect line(Point(-2, 0, 0), Point(5, 0, 0), 2, NEIGHBORHOOD_8, true);
  line.SetImageSize(CSize(4, 1));
  (void)line.NextPoint();
  line.SetImageSize(CSize(2, 1));
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
}

TEST(SelectedLine, BeforeAnImageIsSetItIsTheStartPointAlone) {
  CBresenhamVisitorSelect line(Point(2, 3, 0), Point(5, 3, 0), 2, NEIGHBORHOOD_8, true);
  EXPECT_TRUE(line.empty());
  EXPECT_EQ(line.TestNextPoint(), Point(2, 3, 0));
  EXPECT_EQ(Walk(line), (PointList{{2, 3, 0}}));
  line.Reset();
  EXPECT_EQ(Walk(line), (PointList{{2, 3, 0}}));
}

TEST(SelectedLine, OtherConstructors) {
  CBresenhamVisitorSelect sizes(CSize(1, 1, 0), CSize(3, 1, 0), 2, NEIGHBORHOOD_8, true);
  sizes.SetImageSize(CSize(3, 3));
  EXPECT_EQ(Walk(sizes), (PointList{{1, 1, 0}, {2, 1, 0}}));
  CBresenhamVisitorSelect mask(Point(3, 3, 3), 7);
  mask.SetImageSize(CSize(3, 2, 3));
  EXPECT_EQ(Walk(mask), (PointList{{0, 0, 0}, {1, 1, 1}}));
}

TEST(SelectedLine, ErrorsNameTheirPlace) {
  CBresenhamVisitorSelect const line(Point(), Point(3, 0, 0), 2, NEIGHBORHOOD_8, true);
  ExpectError([&] { (void)line.Step(-1); }, "Step i out of range",
              "ORVA::CBresenhamVisitorSelect::Step", c_source);
  CBresenhamVisitorSelect none;
  ExpectError([&] { none.SetImageSize(CSize(4, 4)); }, "invalid dimension",
              "ORVA::CBresenhamVisitor::LastStep", c_source);
}

TEST(SelectedLine, IsSelectedWithoutMemory) {
  CBresenhamVisitorSelect line(Point(-2, 0, 0), Point(5, 0, 0), 2, NEIGHBORHOOD_8, true);
  {
    test::CFailingAllocations const failing(0);
    line.SetImageSize(CSize(4, 1));
  }
  EXPECT_EQ(Walk(line), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
}

TEST(SelectedLine, CopiesCarryTheSelectionAndWalkIndependently) {
  CBresenhamVisitorSelect line(Point(-2, 0, 0), Point(5, 0, 0), 2, NEIGHBORHOOD_8, true);
  line.SetImageSize(CSize(4, 1));
  (void)line.NextPoint();
  auto copy = line;
  EXPECT_EQ(Walk(copy), (PointList{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
  EXPECT_EQ(Walk(line), (PointList{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
  copy.SetImageSize(CSize(1, 1));
  EXPECT_EQ(Walk(copy).size(), 4U);
}

TEST(VisitPoint, HandsOutItsPointOnce) {
  Impl::CVisitPoint visit(Point(1, 2, 3));
  EXPECT_EQ(visit.Steps(), 1);
  EXPECT_FALSE(visit.empty());
  visit.SetImageSize(CSize(1, 1));
  visit.SetImageSize(Point(0, 0, 0));
  EXPECT_TRUE(visit.MorePoints());
  EXPECT_EQ(visit.NextPoint(), Point(1, 2, 3));
  EXPECT_FALSE(visit.MorePoints());
  EXPECT_EQ(visit.NextPoint(), Point());
  EXPECT_EQ(visit.Steps(), 1);
  visit.Reset();
  EXPECT_EQ(Walk(visit), (PointList{{1, 2, 3}}));
}
