#include <SeluUtils/UnitLineVisitor.h>

#include <SeluUtils/DirectionalVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/Errors.h"
#include "support/Random.h"
#include "support/Runs.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <limits>

using namespace ORVA;
using test::Point;
using test::PointList;
using test::Sorted;
using test::Walk;

namespace {

static_assert(RewindableWalker<CUnitLineVisitor> && RunWalker<CUnitLineVisitor>);

template <class Check>
void ForEachDirection(Check check) {
  for (int64 x = -1; x <= 1; ++x)
    for (int64 y = -1; y <= 1; ++y)
      for (int64 z = -1; z <= 1; ++z)
        if (x != 0 || y != 0 || z != 0) check(Point(x, y, z));
}

// Every point that follows the one before along the direction does so inside the box; each line
// begins where the direction enters and ends where it leaves.
void ExpectWholeLines(PointList const& points, Point const& low, Point const& high,
                      Point const& direction) {
  auto const isInside = [&](Point const& p) {
    return p.x >= low.x && p.x <= high.x && p.y >= low.y && p.y <= high.y && p.z >= low.z &&
           p.z <= high.z;
  };
  for (std::size_t k = 0; k < points.size(); ++k) {
    bool const begins = !isInside(points[k] - direction);
    bool const followsOn = k > 0 && points[k] == points[k - 1] + direction;
    EXPECT_EQ(begins, !followsOn) << testing::PrintToString(points[k]);
  }
}

} // namespace

TEST(UnitLines, CoverThinBoxesToo) {
  EXPECT_EQ(Walk(CUnitLineVisitor({0, 0, 0}, {3, 0, 0}, {1, 1, 0})),
            (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
  EXPECT_EQ(Walk(CUnitLineVisitor({2, 3, 4}, {3, 4, 4}, {-1, 1, 0})),
            (PointList{{3, 3, 4}, {2, 4, 4}, {3, 4, 4}, {2, 3, 4}}));
}

TEST(UnitLines, VisitEveryVoxelOfEverySmallBoxOnce) {
  test::CRandomNumbers numbers;
  for (int64 nx = 1; nx <= 4; ++nx)
    for (int64 ny = 1; ny <= 4; ++ny)
      for (int64 nz = 1; nz <= 4; ++nz)
        ForEachDirection([&](Point const& direction) {
          Point const low(-1, 2, 5), high(low + Point(nx - 1, ny - 1, nz - 1));
          CUnitLineVisitor const lines(low, high, direction);
          PointList const points = Walk(CUnitLineVisitor(lines));
          ASSERT_EQ(Sorted(points), test::BoxPoints(low, high));
          ASSERT_EQ(lines.Steps(), points.size());
          ExpectWholeLines(points, low, high, direction);
          if (nx + ny + nz < 9) test::ExpectRunsArePoints(lines, numbers.Generator());
        });
}

TEST(UnitLines, GoAsDirectionalLinesWhereThoseCover) {
  ForEachDirection([](Point const& direction) {
    CDirectionalVisitor given({0, 0, 0}, {4, 3, 2}, direction);
    given.SetImageSize({5, 4, 3});
    CUnitLineVisitor lines({0, 0, 0}, {9, 9, 9}, direction);
    lines.SetImageSize({5, 4, 3});
    EXPECT_EQ(Sorted(Walk(lines)), Sorted(Walk(given)));
    lines.Reset();
    if (direction.x >= 0 && direction.y >= 0 && direction.z >= 0) {
      given.SetDirection(direction);
      EXPECT_EQ(Walk(lines), Walk(given));
    }
  });
}

TEST(UnitLines, OfNothingHaveNoPoints) {
  EXPECT_FALSE(CUnitLineVisitor().MorePoints());
  CUnitLineVisitor lines({0, 0, 0}, {3, 3, 3}, {1, 1, 1});
  EXPECT_FALSE(lines.empty());
  lines.SetImageSize({4, 0, 4});
  EXPECT_TRUE(lines.empty());
  EXPECT_EQ(lines.Remaining(), 0U);
  EXPECT_EQ(lines.NextPoint(), Point());
  EXPECT_EQ(lines.NextRun().length, 0);
}

TEST(UnitLines, ReachTheEndsOfTheIntegers) {
  constexpr auto lowest = std::numeric_limits<int64>::min(),
                 highest = std::numeric_limits<int64>::max();
  EXPECT_EQ(Walk(CUnitLineVisitor({highest - 1, lowest, 0}, {highest, lowest + 1, 0}, {1, 1, 0})),
            (PointList{{highest - 1, lowest, 0},
                       {highest, lowest + 1, 0},
                       {highest - 1, lowest + 1, 0},
                       {highest, lowest, 0}}));
  CUnitLineVisitor all({lowest, 0, 0}, {highest, 0, 0}, {1, 0, 0});
  EXPECT_EQ(all.NextRun(), (StRun{{lowest, 0, 0}, 0, 1}));
  EXPECT_EQ(all.NextPoint(), Point(lowest + 1, 0, 0));
}

TEST(UnitLines, RefuseDirectionsThatAreNone) {
  for (Point const direction : {Point(0, 0, 0), Point(2, 0, 0), Point(0, -2, 1)})
    test::ExpectError<CExBadParam>(
        [&] {
          CUnitLineVisitor({0, 0, 0}, {3, 3, 3}, direction);
        },
        "direction (" + std::to_string(direction.x) + ", " + std::to_string(direction.y) + ", " +
            std::to_string(direction.z) + ") is none of the 26 unit directions",
        "ORVA::CUnitLineVisitor::SetDirection", "src/Utils/ImageWalker");
}
