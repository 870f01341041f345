#include <SeluUtils/ImageWalker.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

using namespace ORVA;
using namespace test;
using Direction = CTriple<double>;

namespace {

char const c_source[] = "src/Utils/ImageWalker";
char const c_initialize[] = "ORVA::CDeltaVisitor::Initialize";
char const c_invalidDirection[] = "Invalid Direction given to CDeltaVisitor";
char const c_invalidLine[] = "Invalid Calculation of Line in CDeltaVisitor";

template <class Visitor = CDeltaVisitor>
Visitor Lines(Direction const& direction, Point const& extents) {
  Visitor lines(direction);
  lines.SetImageSize(extents);
  return lines;
}

template <class Visitor>
std::vector<bool> Borders(Visitor lines) {
  std::vector<bool> borders;
  while (lines.MorePoints()) {
    (void)lines.NextPoint();
    borders.push_back(lines.BorderPoint());
  }
  return borders;
}

// After a failure there are no points, and every way of asking says so.
template <class Visitor>
void ExpectNothingLeft(Visitor lines) {
  EXPECT_FALSE(lines.MorePoints());
  EXPECT_EQ(lines.Steps(), 0U);
  EXPECT_TRUE(lines.empty());
  EXPECT_THROW((void)lines.NextPoint(), CException);
}

} // namespace

TEST(DeltaLines, AlongXAreTheRowsOfTheImage) {
  auto lines = Lines({1, 0, 0}, {4, 3, 1});
  EXPECT_EQ(lines.Steps(), 12U);
  EXPECT_FALSE(lines.empty());
  EXPECT_EQ(Walk(lines), BoxPoints({0, 0, 0}, {3, 2, 0}));
  EXPECT_EQ(Borders(Lines({1, 0, 0}, {4, 3, 1})),
            (std::vector<bool>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(DeltaLines, AlongYAreTheColumns) {
  EXPECT_EQ(Walk(Lines({0, 1, 0}, {2, 3, 1})),
            (PointList{{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {1, 0, 0}, {1, 1, 0}, {1, 2, 0}}));
}

TEST(DeltaLines, AlongZAreHandedOutWithTheirAxesRotated) {
  // A line runs through the image's z and is handed out along y.
  EXPECT_EQ(Walk(Lines({0, 0, 1}, {1, 2, 3})),
            (PointList{{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {1, 0, 0}, {1, 1, 0}, {1, 2, 0}}));
}

TEST(DeltaLines, RunAgainstTheMainAxisWhereItIsNegative) {
  EXPECT_EQ(Walk(Lines({-1, 0, 0}, {3, 2, 1})),
            (PointList{{2, 0, 0}, {1, 0, 0}, {0, 0, 0}, {2, 1, 0}, {1, 1, 0}, {0, 1, 0}}));
}

TEST(DeltaLines, WrapAroundAtTheImageBorder) {
  auto const lines = Lines({1, 1, 0}, {3, 2, 1});
  EXPECT_EQ(Walk(CDeltaVisitor(lines)),
            (PointList{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {0, 1, 0}, {1, 0, 0}, {2, 1, 0}}));
  EXPECT_EQ(Borders(lines), (std::vector<bool>{1, 0, 1, 1, 1, 0}));
}

TEST(DeltaLines, OfANegativeMinorComponentEndEarly) {
  // The first line starts in the last row, and the rows before it are never reached.
  EXPECT_EQ(Walk(Lines({1, -1, 0}, {3, 3, 1})), (PointList{{0, 2, 0}, {1, 1, 0}, {2, 0, 0}}));
}

TEST(DeltaLines, HaveNoPointsBeforeAnImageIsSet) {
  CDeltaVisitor lines(Direction(1, 0, 0));
  EXPECT_FALSE(lines.MorePoints());
  EXPECT_EQ(lines.Steps(), 0U);
  EXPECT_TRUE(lines.empty());
  EXPECT_TRUE(lines.BorderPoint());
  lines.SetDirection(Direction(0, 1, 0));
  EXPECT_FALSE(lines.MorePoints());
}

TEST(DeltaLines, NoMorePointsIsAnError) {
  auto lines = Lines({1, 0, 0}, {2, 1, 1});
  (void)Walk(lines);
  ExpectError([&] { (void)lines.NextPoint(); }, "No more Points", "ORVA::CDeltaVisitor::NextPoint",
              c_source);
  CDeltaVisitor unset(Direction(1, 0, 0));
  ExpectError([&] { (void)unset.NextPoint(); }, "No more Points", "ORVA::CDeltaVisitor::NextPoint",
              c_source);
}

TEST(DeltaLines, ImageWithoutExtentHasNoPoints) {
  for (Direction const& direction : {Direction(1, 0, 0), Direction(0, 1, 0), Direction(1, 1, 1)})
    for (Point const& extents : {Point(5, 0, 0), Point(0, 3, 3), Point(3, 3, 0), Point(0, 0, 0),
                                 Point(-4, 3, 3), Point(3, c_min, 3)}) {
      auto lines = Lines(direction, extents);
      EXPECT_FALSE(lines.MorePoints());
      EXPECT_EQ(lines.Steps(), 0U);
      EXPECT_TRUE(lines.empty());
    }
}

TEST(DeltaLines, StepsAreTheProductOfTheExtents) {
  EXPECT_EQ(Lines({1, 0, 0}, {5, 0, 0}).Steps(), 0U);
  EXPECT_EQ(Lines({1, 0, 0}, {2, 3, 4}).Steps(), 24U);
}

TEST(DeltaLines, DirectionThatIsNotFiniteIsRefused) {
  for (Direction const& direction : {Direction(c_nan, 0, 0), Direction(1, c_nan, 0),
                                     Direction(1, 0, c_nan), Direction(c_nan, c_nan, c_nan),
                                     Direction(c_infinity, 0, 0), Direction(1, 0, -c_infinity)}) {
    CDeltaVisitor lines(direction);
    ExpectError([&] { lines.SetImageSize(Point(4, 4, 4)); }, c_invalidDirection, c_initialize,
                c_source);
    EXPECT_FALSE(lines.MorePoints());
    lines.SetDirection(Direction(1, 0, 0));
    EXPECT_EQ(Walk(lines).size(), 64U);
    ExpectError([&] { lines.SetDirection(direction); }, c_invalidDirection, c_initialize, c_source);
    EXPECT_FALSE(lines.MorePoints());
  }
}

TEST(DeltaLines, LineShorterThanTheMainAxisIsRefused) {
  struct StCase {
    Direction direction;
    Point extents;
    bool isRefused;
  };
  double const diagonal = 0.5773502691896258; // of a unit cube
  for (StCase const& c : {StCase{{0, 0, 0}, {4, 4, 4}, true},
                          {{0, 0, 0}, {1, 4, 4}, false},
                          {{0.1, 0, 0}, {10, 1, 1}, true},
                          {{0.9, 0, 0}, {10, 1, 1}, false},
                          {{diagonal, diagonal, diagonal}, {8, 8, 8}, false},
                          {{diagonal, diagonal, diagonal}, {40, 8, 8}, true},
                          {{1e19, 0, 0}, {4, 4, 4}, true}, // 32 bits of it are too short
                          {{1e19, 2, 0}, {4, 4, 4}, true}, // and those of y drive the line
                          {{1e19, 2, 0}, {1, 4, 4}, false}}) {
    SCOPED_TRACE(testing::PrintToString(c.direction));
    CDeltaVisitor lines(c.direction);
    if (c.isRefused) {
      ExpectError([&] { lines.SetImageSize(c.extents); }, c_invalidLine, c_initialize, c_source);
      ExpectNothingLeft(lines);
    } else {
      lines.SetImageSize(c.extents);
      EXPECT_EQ(Walk(lines).size(), lines.Steps());
    }
  }
}

TEST(DeltaLines, LineLongerThanMemoryFailsAndLeavesNoPoints) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  auto lines = Lines({1, 0, 0}, {4, 3, 1});
  EXPECT_THROW(lines.SetImageSize(CSize(2147483647, 1)), std::bad_alloc);
  ExpectNothingLeft(lines);
}

TEST(DeltaLines, AnErrorLeavesTheExtentsForTheNextDirection) {
  auto lines = Lines({0.5, 0, 0}, {4, 3, 1});
  EXPECT_EQ(lines.Steps(), 12U);
  EXPECT_THROW(lines.SetImageSize(CSize(9, 9)), CException);
  ExpectNothingLeft(lines);
  EXPECT_THROW(lines.SetDirection({c_nan, 0, 0}), CException);
  ExpectNothingLeft(lines);
  lines.SetDirection({1, 0, 0});
  EXPECT_EQ(Walk(lines).size(), 81U);
}

TEST(DeltaLines, EachErrorHasALineOfItsOwn) {
  test::ExpectLinesOfTheirOwn({[] {
                                 (void)Lines({c_nan, 0, 0}, {4, 4, 4});
                               },
                               [] {
                                 (void)Lines({0.1, 0, 0}, {10, 1, 1});
                               },
                               [] {
                                 (void)Lines({1e19, 2, 0}, {4, 4, 4});
                               }});
}

TEST(DeltaLines, LineBeyond32BitsIsCutToThem) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  EXPECT_EQ(Walk(Lines({1e300, 0, 0}, {4, 3, 1})), Walk(Lines({1, 0, 0}, {4, 3, 1})));
  ExpectError(
      [] {
        (void)Lines({1, 0, 0}, {int64{1} << 40, 1, 1});
      },
      "Invalid Calculation of Line in CDeltaVisitor", "ORVA::CDeltaVisitor::Initialize",
      "src/Utils/ImageWalker");
}

TEST(DeltaLines, NewImageOrDirectionStartsAnew) {
  auto lines = Lines({1, 0, 0}, {3, 2, 1});
  (void)lines.NextPoint();
  lines.SetImageSize(CSize(2, 2));
  EXPECT_EQ(Walk(lines), BoxPoints({0, 0, 0}, {1, 1, 0}));
  lines.SetDirection(Direction(0, 1, 0));
  EXPECT_EQ(Walk(lines), (PointList{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}}));
}

TEST(ParallelLines, LinesLongerThanMemoryFailAndLeaveNoPoints) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  auto lines = Lines<CParallelLineVisitor>({1, 0.5, 0}, {4, 3, 1});
  EXPECT_THROW(lines.SetImageSize(CSize(2147483647, 3)), std::bad_alloc);
  ExpectNothingLeft(lines);
  EXPECT_THROW(lines.SetDirection({2, 1, 0}), std::bad_alloc); // in the same image
  ExpectNothingLeft(lines);
  lines.SetDirection({0, 1, 0});
  EXPECT_EQ(lines.Steps(), uint64{3} * 2147483647);
  lines.SetImageSize(CSize(4, 3));
  EXPECT_EQ(Walk(lines).size(), 12U);
}

TEST(ParallelLines, RunTheWayTheDirectionPoints) {
  EXPECT_EQ(Walk(Lines<CParallelLineVisitor>({1, -1, 0}, {3, 3, 1})), (PointList{{0, 2, 0},
                                                                                 {1, 1, 0},
                                                                                 {2, 0, 0},
                                                                                 {0, 1, 0},
                                                                                 {1, 0, 0},
                                                                                 {2, 2, 0},
                                                                                 {0, 0, 0},
                                                                                 {1, 2, 0},
                                                                                 {2, 1, 0}}));
  EXPECT_EQ(Walk(Lines<CParallelLineVisitor>({0, 0, -1}, {1, 2, 2})),
            (PointList{{0, 0, 1}, {0, 0, 0}, {0, 1, 1}, {0, 1, 0}}));
}

TEST(ParallelLines, AreThoseOfTheDeltaWalkWhereThatCovers) {
  for (Direction const& direction :
       {Direction(1, 0, 0), Direction(1, 0.25, 0.5), Direction(0.5, 1, 0)}) {
    Point const extents(7, 6, 5);
    auto const delta = Lines(direction, extents);
    auto const lines = Lines<CParallelLineVisitor>(direction, extents);
    EXPECT_EQ(Borders(lines), Borders(delta));
    EXPECT_EQ(Walk(CParallelLineVisitor(lines)), Walk(CDeltaVisitor(delta)));
  }
}

TEST(ParallelLines, LengthOfTheDirectionDoesNotCount) {
  auto const points = Walk(Lines<CParallelLineVisitor>({2, 1, -0.5}, {40, 4, 4}));
  for (double const factor : {1e-300, 0.125, 1e300})
    EXPECT_EQ(Walk(Lines<CParallelLineVisitor>(Direction(2, 1, -0.5) * factor, {40, 4, 4})),
              points);
}

TEST(ParallelLines, DirectionWithoutADirectionIsRefused) {
  char const function[] = "ORVA::CParallelLineVisitor::SetDirection";
  ExpectError<CExBadParam>([] { CParallelLineVisitor(Direction(0, 0, 0)); },
                           "direction (0, 0, 0) points nowhere", function, c_source);
  auto lines = Lines<CParallelLineVisitor>({1, 0, 0}, {2, 2, 1});
  for (double const component : {c_nan, c_infinity})
    EXPECT_THROW(lines.SetDirection(Direction(1, component, 0)), CExBadParam);
  EXPECT_EQ(Walk(lines).size(), 4U); // as it was
}

TEST(ParallelLines, HaveNoPointsWithoutAnImage) {
  CParallelLineVisitor lines(Direction(1, -1, 1));
  EXPECT_FALSE(lines.MorePoints());
  EXPECT_TRUE(lines.empty());
  for (Point const& extents : {Point(5, 0, 0), Point(0, 3, 3), Point(c_min, c_min, c_min)}) {
    lines.SetImageSize(extents);
    EXPECT_FALSE(lines.MorePoints());
  }
  lines.SetImageSize(CSize(2, 2));
  EXPECT_EQ(Walk(lines).size(), 4U);
}
