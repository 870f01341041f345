#include <SeluUtils/StraightLineVisitor.h>

#include <SeluUtils/ParallelLineVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/Errors.h"
#include "support/FailingAllocation.h"
#include "support/Random.h"
#include "support/Runs.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <utility>

using namespace ORVA;
using test::Point;
using test::PointList;
using test::Sorted;
using test::Walk;

namespace {

static_assert(RewindableWalker<CStraightLineVisitor> && RunWalker<CStraightLineVisitor>);
static_assert(RewindableWalker<CParallelLineVisitor>);

using Direction = CTriple<double>;

CStraightLineVisitor In(Direction const& direction, Point const& size) {
  CStraightLineVisitor lines(direction);
  lines.SetImageSize(size);
  return lines;
}

Direction RandomDirection(test::CRandomNumbers& numbers) {
  auto const component = [&] {
    return numbers.Between(0, 5) == 0 ? static_cast<double>(numbers.Between(-1, 1))
                                      : numbers.Real(-1, 1);
  };
  Direction direction(component(), component(), component());
  if (direction == Direction()) direction.y = -1;
  return direction;
}

// The farthest that a first line lies from floor(i * slope + 1/2), in doubles, which is exact for
// slopes of few digits.
int64 Aside(double slope, int64 i) {
  return static_cast<int64>(std::floor(std::abs(slope) * static_cast<double>(i) + 0.5));
}

} // namespace

TEST(StraightLines, VisitEveryVoxelOnceInEveryDirection) {
  test::CRandomNumbers numbers;
  for (int k = 0; k < 400; ++k) {
    Point const size(numbers.Between(1, 9), numbers.Between(1, 9), numbers.Between(1, 6));
    CStraightLineVisitor const lines = In(RandomDirection(numbers), size);
    PointList const points = Walk(CStraightLineVisitor(lines));
    ASSERT_EQ(Sorted(points), test::BoxPoints({0, 0, 0}, size - Point(1, 1, 1)));
    ASSERT_EQ(lines.Steps(), points.size());
    if (k < 100) test::ExpectRunsArePoints(lines, numbers.Generator());
  }
}

TEST(StraightLines, LieWithinHalfAVoxelOfTheirDirection) {
  for (double const slope : {0.25, 0.5, 0.375, 1.0, 0.0078125}) {
    int64 const length = 1000;
    auto lines = In({1, slope, -slope}, {length, 4000, 4000});
    for (int64 i = 0; i < length; ++i)
      ASSERT_EQ(lines.NextPoint(), Point(i, Aside(slope, i), 3999 - Aside(slope, i))) << slope;
  }
}

TEST(StraightLines, HaveExactSlopes) {
  // A third as a double is a little less than one: three steps take it to just below 1 1/2 ...
  auto below = In({3, std::nextafter(1.5, 0), 0}, {2, 3, 1});
  (void)below.NextPoint();
  EXPECT_EQ(below.NextPoint(), Point(1, 0, 0)); // just under half a voxel
  auto at = In({3, 1.5, 0}, {2, 3, 1});
  (void)at.NextPoint();
  EXPECT_EQ(at.NextPoint(), Point(1, 1, 0)); // half a voxel goes up
  // Numbers of any size: the smallest beside the largest take no step at all.
  auto flat = In({1e308, 1e-308, 5e-324}, {50, 2, 2});
  EXPECT_EQ(flat.NextRun(), (StRun{{0, 0, 0}, 0, 50}));
  auto tiny = In({1e-320, 5e-321, 0}, {3, 3, 1});
  EXPECT_EQ((PointList{tiny.NextPoint(), tiny.NextPoint(), tiny.NextPoint()}),
            (PointList{{0, 0, 0}, {1, 1, 0}, {2, 1, 0}}));
}

TEST(StraightLines, WrapAroundAndSaySo) {
  auto lines = In({1, 1, 0}, {4, 2, 1});
  std::array<bool, 8> const isBorder = {true, false, true, false, true, true, false, true};
  PointList const points{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 1, 0},
                         {0, 1, 0}, {1, 0, 0}, {2, 1, 0}, {3, 0, 0}};
  for (std::size_t k = 0; k < points.size(); ++k) {
    EXPECT_EQ(lines.NextPoint(), points[k]);
    EXPECT_EQ(lines.BorderPoint(), isBorder[k]) << k;
  }
  EXPECT_FALSE(lines.MorePoints());
  EXPECT_EQ(lines.NextPoint(), Point());
}

TEST(StraightLines, RunTheWayOfTheirDirection) {
  EXPECT_EQ(Walk(In({-1, 0.2, 0}, {3, 1, 1})), (PointList{{2, 0, 0}, {1, 0, 0}, {0, 0, 0}}));
  EXPECT_EQ(Walk(In({0.1, 0.2, 3}, {1, 1, 3})), (PointList{{0, 0, 0}, {0, 0, 1}, {0, 0, 2}}));
  EXPECT_EQ(In({0.1, 5, 0}, {2, 9, 1}).NextRun(), (StRun{{0, 0, 0}, 1, 9}));
}

TEST(StraightLines, StayAsTheyWereWithoutMemory) {
  CStraightLineVisitor lines = In({1, 0.5, 0.25}, {5, 4, 3});
  (void)lines.NextPoint();
  PointList const rest = Walk(CStraightLineVisitor(lines));
  CStraightLineVisitor const other = In({0.2, 1, 0.25}, {9, 40, 3});
  auto const expectRest = [&] { EXPECT_EQ(Walk(CStraightLineVisitor(lines)), rest); };
  EXPECT_EQ(test::FailEveryAllocation([&] { lines = other; }, expectRest), 1);
  lines = In({1, 0.5, 0.25}, {5, 4, 3});
  (void)lines.NextPoint();
  EXPECT_EQ(test::FailEveryAllocation([&] { lines.SetImageSize({90, 2, 2}); }, expectRest), 1);
  EXPECT_EQ(lines.Remaining(), 360U);
  CStraightLineVisitor const moved = std::move(lines);
  EXPECT_FALSE(lines.MorePoints()); // NOLINT(bugprone-use-after-move)
  lines.Rewind();
  EXPECT_FALSE(lines.MorePoints());
}

TEST(StraightLines, OfEmptyImagesHaveNoPoints) {
  for (Point const size : {Point(0, 4, 4), Point(4, 0, 4), Point(4, 4, -1)}) {
    auto lines = In({1, 0.5, 0}, size);
    EXPECT_FALSE(lines.MorePoints());
    EXPECT_TRUE(lines.empty());
  }
}

TEST(StraightLines, RefuseDirectionsThatPointNowhere) {
  test::ExpectError<CExBadParam>(
      [] {
        CStraightLineVisitor({0, 0, 0});
      },
      "direction (0, 0, 0) points nowhere", "ORVA::CStraightLineVisitor::SetDirection",
      "src/Utils/ImageWalker");
  test::ExpectError<CExBadParam>(
      [] {
        CStraightLineVisitor({1, INFINITY, 0});
      },
      "direction (1, inf, 0) points nowhere");
}
