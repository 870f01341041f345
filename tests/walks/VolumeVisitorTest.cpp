#include <SeluUtils/BresenhamVisitor.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Walker.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;

static_assert(RewindableWalker<CBresenhamVolumeVisitor>);

namespace {

char const c_source[] = "src/Utils/BresenhamVisitor";
char const c_constructor[] = "ORVA::CBresenhamVolumeVisitor::CBresenhamVolumeVisitor";
char const c_convert[] = "ORVA::CBresenhamVolumeVisitor::ConvertListToPath";

CBresenhamVolumeVisitor Solid(PointList path, bool border, int64 neighborhood = NEIGHBORHOOD_26) {
  return {path, neighborhood, border};
}
CBresenhamVolumeVisitor Solid(PointList from, PointList to, bool border,
                              int64 neighborhood = NEIGHBORHOOD_26) {
  return {from, to, neighborhood, border};
}

// A path along edges of the box, all four along x among them.
PointList BoxPath(Point const& low, Point const& high) {
  auto const [a, b, c] = low;
  auto const [d, e, f] = high;
  return {{a, b, c}, {d, b, c}, {d, e, c}, {a, e, c}, {a, e, f},
          {d, e, f}, {d, b, f}, {a, b, f}, {a, b, c}};
}

} // namespace

TEST(VolumeVisitor, PathAroundABoxFillsIt) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_26}) {
    auto solid = Solid(BoxPath({2, -1, 5}, {5, 3, 8}), true, code);
    EXPECT_EQ(solid.Steps(), 80u);
    EXPECT_EQ(Sorted(Walk(solid)), BoxPoints({2, -1, 5}, {5, 3, 8}));
    EXPECT_FALSE(solid.MorePoints());
  }
}

TEST(VolumeVisitor, WithoutBorderOnlyTheInside) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_26}) {
    auto solid = Solid(BoxPath({2, -1, 5}, {5, 3, 8}), false, code);
    EXPECT_EQ(solid.Steps(), 12u);
    EXPECT_EQ(Sorted(Walk(solid)), BoxPoints({3, 0, 6}, {4, 2, 7}));
  }
}

TEST(VolumeVisitor, PairsOfPointsAreEdges) {
  PointList const expected = BoxPoints({0, 0, 0}, {4, 2, 1});
  EXPECT_EQ(Sorted(Walk(Solid({{0, 0, 0}, {4, 2, 0}, {0, 0, 1}, {4, 2, 1}},
                              {{4, 0, 0}, {0, 2, 0}, {4, 0, 1}, {0, 2, 1}}, true))),
            expected);
}

TEST(VolumeVisitor, SlicesAscendAndAreWalkedColumnByColumn) {
  EXPECT_EQ(
      Walk(Solid(BoxPath({0, 0, 0}, {1, 1, 1}), true)),
      (PointList{
          {0, 0, 0}, {0, 0, 1}, {0, 1, 0}, {0, 1, 1}, {1, 0, 0}, {1, 0, 1}, {1, 1, 0}, {1, 1, 1}}));
}

TEST(VolumeVisitor, PathInOnePlaneIsOneSlice) {
  PointList const square = {{7, 0, 0}, {7, 3, 0}, {7, 3, 2}, {7, 0, 2}, {7, 0, 0}};
  EXPECT_EQ(Sorted(Walk(Solid(square, true))), BoxPoints({7, 0, 0}, {7, 3, 2}));
  EXPECT_TRUE(Solid(square, false).empty()); // its only slice is border
}

TEST(VolumeVisitor, SlicesOfOneOrTwoCorners) {
  // A pyramid's top, a lone line, and a single point.
  EXPECT_EQ(Walk(Solid({{2, 1, 1}, {0, 1, 1}}, true)),
            (PointList{{0, 1, 1}, {1, 1, 1}, {2, 1, 1}}));
  EXPECT_EQ(Walk(Solid({{3, 0, 0}, {3, 2, 2}}, true)),
            (PointList{{3, 0, 0}, {3, 1, 1}, {3, 2, 2}}));
  EXPECT_EQ(Walk(Solid({{3, 4, 5}}, {{3, 4, 5}}, true)), (PointList{{3, 4, 5}}));
  EXPECT_TRUE(Solid({{3, 4, 5}}, {{3, 4, 5}}, false).empty());
}

TEST(VolumeVisitor, SlicesTooThinForPointsArePassedOver) {
  // A wedge with its edge at x = 0: slice 1 is one voxel thick, all border.
  auto wedge = Solid({{0, 0, 0}, {0, 6, 0}, {0, 0, 0}, {0, 6, 0}},
                     {{6, 0, 0}, {6, 6, 0}, {6, 0, 3}, {6, 6, 3}}, false);
  auto const points = Walk(wedge);
  ASSERT_FALSE(points.empty());
  EXPECT_GT(points.front().x, 1);
  EXPECT_EQ(points.size(), wedge.Steps());
}

TEST(VolumeVisitor, APyramidWithoutItsBorder) {
  PointList expected = {{1, 4, 4}};
  for (auto const& p : BoxPoints({2, 3, 3}, {2, 5, 5})) expected.push_back(p);
  for (auto const& p : BoxPoints({3, 2, 2}, {3, 6, 6})) expected.push_back(p);
  EXPECT_EQ(Sorted(Walk(Solid(PointList(4, {0, 4, 4}), {{4, 0, 0}, {4, 8, 0}, {4, 8, 8}, {4, 0, 8}},
                              false))),
            Sorted(expected));
}

TEST(VolumeVisitor, ASliceWithoutBorderEndsTheWalk) {
  auto solid = Solid({{0, 0, 0}, {5, 0, 0}}, {{1, 0, 0}, {9, 0, 0}}, true);
  EXPECT_EQ(solid.Steps(), 2u);
  EXPECT_EQ(Walk(solid), (PointList{{0, 0, 0}, {1, 0, 0}}));
}

TEST(VolumeVisitor, EmptyInputsHaveNoPoints) {
  for (bool const border : {true, false}) {
    CBresenhamVolumeVisitor const walkers[] = {
        CBresenhamVolumeVisitor(), Solid({}, border), Solid({{1, 2, 3}}, border),
        Solid(PointList(5, {1, 2, 3}), border), Solid(PointList(), PointList(), border)};
    for (auto solid : walkers) {
      EXPECT_TRUE(solid.empty());
      EXPECT_EQ(solid.Steps(), 0u);
      EXPECT_FALSE(solid.MorePoints());
      EXPECT_EQ(solid.NextPoint(), Point());
      solid.Reset();
      EXPECT_FALSE(solid.MorePoints());
    }
  }
}

TEST(VolumeVisitor, ConcaveSlicesAreFilledUpToTheirHull) {
  // An L in slice x = 0.
  auto const points = Walk(
      Solid({{0, 0, 0}, {0, 4, 0}, {0, 4, 1}, {0, 1, 1}, {0, 1, 4}, {0, 0, 4}, {0, 0, 0}}, true));
  EXPECT_NE(std::ranges::find(points, Point(0, 2, 2)), points.end());
  EXPECT_EQ(std::ranges::find(points, Point(0, 3, 3)), points.end());
}

TEST(VolumeVisitor, TakesThePointsOverUnlessItThrows) {
  PointList path = BoxPath({0, 0, 0}, {2, 2, 2});
  CBresenhamVolumeVisitor const solid(path, NEIGHBORHOOD_26, true);
  EXPECT_TRUE(path.empty());
  EXPECT_EQ(path.capacity(), 0u);
  PointList from = {{0, 0, 0}}, to = {{3, 0, 0}};
  CBresenhamVolumeVisitor const line(from, to, NEIGHBORHOOD_26, true);
  EXPECT_TRUE(from.empty() && to.empty());
  path = {{0, 0, 0}, {-1, 0, 0}};
  EXPECT_THROW(CBresenhamVolumeVisitor(path, NEIGHBORHOOD_26, true), CExBadParam);
  EXPECT_EQ(path.size(), 2u);
}

TEST(VolumeVisitor, OtherNeighborhoodsAreRefused) {
  for (int64 const code : {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8,
                           NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, int64{-1}, c_max}) {
    ExpectError(
        [&] {
          Solid({{0, 0, 0}}, true, code);
        },
        "Neighborhood not supported", c_constructor, c_source);
    ExpectError([&] { Solid(PointList(1), PointList(1), true, code); },
                "Neighborhood not supported", c_constructor, c_source);
  }
}

TEST(VolumeVisitor, PairsMustBeComplete) {
  ExpectError([] { Solid(PointList(2), PointList(3), true); },
              "not same account of start- and endpoints", c_constructor, c_source);
}

TEST(VolumeVisitor, SlicesOutsideTheTableAreRefused) {
  struct StCase {
    int64 x;
    char const* message;
  };
  StCase const cases[] = {{-1, "slice x = -1 is not within 0 and 2147483647"},
                          {c_min, "slice x = -9223372036854775808 is not within 0 and 2147483647"},
                          {int64{1} << 31, "slice x = 2147483648 is not within 0 and 2147483647"},
                          {c_max, "slice x = 9223372036854775807 is not within 0 and 2147483647"}};
  for (auto const& c : cases) {
    ExpectError<CExBadParam>(
        [&] {
          Solid({{0, 0, 0}, {c.x, 0, 0}}, true);
        },
        c.message, c_constructor, c_source);
    ExpectError<CExBadParam>(
        [&] {
          Solid({{c.x, 0, 0}}, true);
        },
        c.message, c_constructor, c_source);
    ExpectError<CExBadParam>(
        [&] {
          Solid({{c.x, 0, 0}}, {{1, 0, 0}}, true);
        },
        c.message, c_constructor, c_source);
    ExpectError<CExBadParam>(
        [&] {
          Solid({{1, 0, 0}}, {{c.x, 0, 0}}, true);
        },
        c.message, c_constructor, c_source);
  }
}

TEST(VolumeVisitor, FarSlicesTakeNoMemoryForThoseBefore) {
  EXPECT_EQ(Walk(Solid({{INT32_MAX, 0, 0}, {INT32_MAX, 0, 2}}, true)),
            (PointList{{INT32_MAX, 0, 0}, {INT32_MAX, 0, 1}, {INT32_MAX, 0, 2}}));
}

TEST(VolumeVisitor, EdgesLongerThanLinesAreRefused) {
  ExpectError<CExBadParam>(
      [] {
        Solid({{0, 0, 0}, {0, int64{1} << 31, 0}}, true);
      },
      "edge from 0 to 2147483648 is longer than 2147483647 voxels", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] {
        Solid({{0, 0, c_min}, {0, 0, c_max}}, true);
      },
      "edge from -9223372036854775808 to 9223372036854775807 is longer than 2147483647 voxels",
      c_constructor, c_source);
}

// Of 2^31 - 1 voxels in either direction they are taken, and then want memory; one more is too
// many.
TEST(VolumeVisitor, TheLongestEdgesAreTaken) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  constexpr int64 c_longest = INT32_MAX;
  for (int64 const far : {c_longest, -c_longest}) {
    EXPECT_THROW(Solid({{0, 0, 0}, {0, far, 0}}, true), std::bad_alloc);
    EXPECT_THROW(Solid({{0, 0, far}, {0, 0, 0}}, true), std::bad_alloc);
    int64 const farther = far < 0 ? far - 1 : far + 1;
    ExpectError<CExBadParam>(
        [&] {
          Solid({{0, 0, 0}, {0, farther, 0}}, true);
        },
        "edge from 0 to " + std::to_string(farther) + " is longer than 2147483647 voxels");
    ExpectError<CExBadParam>(
        [&] {
          Solid({{0, 0, farther}, {0, 0, 0}}, true);
        },
        "edge from " + std::to_string(farther) + " to 0 is longer than 2147483647 voxels");
  }
}

TEST(VolumeVisitor, CoordinatesNearTheEndsOfTheRange) {
  EXPECT_EQ(Sorted(Walk(Solid(BoxPath({0, c_max - 1, c_min}, {1, c_max, c_min + 1}), true))).size(),
            8u);
  ExpectError(
      [] {
        Solid({{0, c_min, 0}, {0, c_max, 0}}, {{0, c_min, 1}, {0, c_max, 1}}, true);
      },
      "not possible to determine", c_convert, c_source);
}

TEST(VolumeVisitor, ResetAndCopiesAtEveryStep) {
  for (bool const border : {true, false})
    test::ExpectRewindsAndCopiesAnywhere(Solid(BoxPath({0, 0, 0}, {4, 3, 4}), border));
}

TEST(VolumeVisitor, TheBorderCanBeBuiltAnew) {
  auto solid = Solid(BoxPath({0, 0, 0}, {4, 3, 4}), false);
  auto const all = Walk(solid);
  solid.ComputeBorder();
  EXPECT_FALSE(solid.MorePoints()); // until it is reset
  solid.CountSteps();
  solid.Reset();
  EXPECT_EQ(solid.Steps(), all.size());
  EXPECT_EQ(Walk(solid), all);
  // Each further tidying takes the end slices off again.
  solid.EraseUselessBorderPoints();
  solid.CountSteps();
  solid.Reset();
  EXPECT_EQ(Sorted(Walk(solid)), BoxPoints({2, 1, 1}, {2, 2, 3}));
  solid.ComputeBorderFromPairs(); // there are none
  solid.CountSteps();
  EXPECT_TRUE(solid.empty());
}

TEST(VolumeVisitor, SliceImageSizeHasNoEffect) {
  auto solid = Solid(BoxPath({0, 0, 0}, {2, 2, 2}), true);
  solid.NextPoint();
  solid.SetImageSize(CSize(1, 1, 1));
  solid.SetImageSize(Point(1, 1, 1));
  EXPECT_EQ(Walk(solid).size(), 26u);
}

TEST(VolumeVisitor, PrintBorderListsTheSlices) {
  auto const solid = Solid({{1, 0, 0}, {2, 0, 5}}, {{1, 0, 1}, {2, 0, 5}}, true);
  testing::internal::CaptureStdout();
  solid.PrintBorder();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Slice 1:\n(0, 0)\n(0, 1)\nSlice 2:\n(0, 5)\n");
}

TEST(SlicePath, WrapsTheHullFromTheSmallestPointAlongTheUpperSide) {
  struct StCase {
    char const* what;
    PointList border, path;
  };
  StCase const cases[] = {
      {"one point", {{3, 4, 0}}, {{3, 4, 0}}},
      {"two points", {{5, 1, 0}, {3, 4, 0}}, {{3, 4, 0}, {5, 1, 0}}},
      {"repeated", {{3, 4, 0}, {3, 4, 0}}, {{3, 4, 0}}},
      {"a line", {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}}, {{0, 0, 0}, {3, 3, 0}}},
      {"a column", {{0, 2, 0}, {0, 0, 0}, {0, 1, 0}}, {{0, 0, 0}, {0, 2, 0}}},
      {"a square, its sides and inside",
       {{0, 0, 0},
        {0, 1, 0},
        {0, 2, 0},
        {1, 0, 0},
        {1, 1, 0},
        {1, 2, 0},
        {2, 0, 0},
        {2, 1, 0},
        {2, 2, 0}},
       {{0, 0, 0}, {0, 2, 0}, {2, 2, 0}, {2, 0, 0}}},
      {"a diamond",
       {{0, 2, 0}, {1, 1, 0}, {1, 3, 0}, {2, 0, 0}, {2, 4, 0}, {3, 1, 0}, {3, 3, 0}, {4, 2, 0}},
       {{0, 2, 0}, {2, 4, 0}, {4, 2, 0}, {2, 0, 0}}},
      {"a dent is dropped",
       {{0, 0, 0}, {0, 4, 0}, {2, 2, 0}, {4, 4, 0}, {4, 0, 0}},
       {{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {4, 0, 0}}},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(CBresenhamVolumeVisitor::ConvertListToPath(c.border), c.path);
  }
}

TEST(SlicePath, WithoutPointsThereIsNone) {
  ExpectError([] { (void)CBresenhamVolumeVisitor::ConvertListToPath({}); }, "failure in program",
              c_convert, c_source);
}

TEST(SlicePath, DirectionsTooFarApartCannotBeCompared) {
  PointList const far = {{0, 0, 0}, {1, (int64{1} << 62) + 1, 0}};
  ExpectError([&] { (void)CBresenhamVolumeVisitor::ConvertListToPath(far); },
              "not possible to determine", c_convert, c_source);
  PointList const near = {{0, 0, 0}, {1, int64{1} << 62, 0}, {2, 0, 0}, {int64{1} << 62, 0, 0}};
  EXPECT_EQ(CBresenhamVolumeVisitor::ConvertListToPath(near),
            (PointList{near[0], near[1], near[3]}));
}
