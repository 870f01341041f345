
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using namespace ORVA;
using Impl::CBresenhamAreaVisitor2D;
using Impl::CBresenhamAreaVisitor3D;
using namespace test;

static_assert(RewindableWalker<CBresenhamAreaVisitor>);

constexpr char c_implModule[] = "src/Utils/BresenhamVisitorImpl";
constexpr char c_module[] = "src/Utils/BresenhamVisitor";

PointList WalkArea(PointList corners, int64 dimension, int64 neighborhood, bool border) {
  CBresenhamAreaVisitor area(corners, dimension, neighborhood, border);
  PointList const points = Walk(area);
  EXPECT_EQ(area.Steps(), points.size());
  EXPECT_EQ(area.empty(), points.empty());
  return points;
}

TEST(AreaVisitor, KnownWalks) {
  StAreaCase const cases[] = {
      {"a point", {{4, -2, 7}}, 3, NEIGHBORHOOD_26, true, {{4, -2, 7}}},
      {"a point in the plane", {{4, -2, 0}}, 2, NEIGHBORHOOD_8, true, {{4, -2, 0}}},
      {"a point without border", {{4, -2, 7}}, 3, NEIGHBORHOOD_26, false, {}},
      {"a line",
       {{0, 0, 0}, {3, 1, 0}},
       2,
       NEIGHBORHOOD_8,
       true,
       {{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {3, 1, 0}}},
      {"a line in a plane x = const",
       {{5, 0, 0}, {5, 0, 2}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{5, 0, 0}, {5, 0, 1}, {5, 0, 2}}},
      {"a line without border", {{0, 0, 0}, {3, 1, 0}}, 2, NEIGHBORHOOD_8, false, {}},
      {"three corners in one dimension: along x from the least one to the next",
       {{2, 1, 0}, {5, 0, 0}, {0, 7, 0}},
       1,
       0,
       true,
       {{0, 7, 0}, {1, 7, 0}, {2, 7, 0}}},
      {"no corner without border", {}, 2, NEIGHBORHOOD_8, false, {}},
      {"a triangle",
       {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}},
       2,
       NEIGHBORHOOD_8,
       true,
       {{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {1, 0, 0}, {1, 1, 0}, {2, 0, 0}}},
      {"a thin triangle has no interior",
       {{0, 0, 0}, {9, 1, 0}, {9, 0, 0}},
       2,
       NEIGHBORHOOD_8,
       false,
       {}},
      {"the inside of a square",
       {{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {0, 3, 0}},
       2,
       NEIGHBORHOOD_8,
       false,
       {{1, 1, 0}, {1, 2, 0}, {2, 1, 0}, {2, 2, 0}}},
      {"a corner repeated in a column of its own edge cuts the column short",
       {{1, 0, 0}, {1, 1, 0}, {0, 0, 0}, {1, 0, 0}},
       2,
       NEIGHBORHOOD_8,
       true,
       {{0, 0, 0}, {1, 0, 0}}},
      {"a plane x = const",
       {{7, 0, 0}, {7, 1, 0}, {7, 0, 1}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{7, 0, 0}, {7, 0, 1}, {7, 1, 0}}},
      {"a plane y = const",
       {{0, 7, 0}, {1, 7, 0}, {0, 7, 1}},
       3,
       NEIGHBORHOOD_6,
       true,
       {{0, 7, 0}, {0, 7, 1}, {1, 7, 0}}},
      {"a plane z = const",
       {{0, 0, -7}, {1, 0, -7}, {0, 1, -7}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{0, 0, -7}, {0, 1, -7}, {1, 0, -7}}},
      {"an oblique triangle",
       {{0, 0, 0}, {2, 0, 2}, {0, 2, 2}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{0, 0, 0}, {0, 1, 1}, {0, 2, 2}, {1, 0, 1}, {1, 1, 2}, {2, 0, 2}}},
      {"its inside is border only",
       {{0, 0, 0}, {2, 0, 2}, {0, 2, 2}},
       3,
       NEIGHBORHOOD_26,
       false,
       {}},
      {"the inside of an oblique square",
       {{0, 0, 0}, {3, 0, 3}, {3, 3, 3}, {0, 3, 0}},
       3,
       NEIGHBORHOOD_26,
       false,
       {{1, 1, 1}, {1, 2, 1}, {2, 1, 2}, {2, 2, 2}}}};
  for (StAreaCase const& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(WalkArea(c.corners, c.dimension, c.neighborhood, c.border), c.expected);
  }
}

// Of such an edge and what lies beyond it in its column the lower part is walked.
TEST(AreaVisitor, AVerticalEdgeInsideAChainLosesPoints) {
  PointList const step{{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {2, 2, 0}, {2, 4, 0}, {0, 4, 0}};
  EXPECT_EQ(WalkArea(step, 2, NEIGHBORHOOD_8, true), (PointList{{0, 0, 0},
                                                                {0, 1, 0},
                                                                {0, 2, 0},
                                                                {0, 3, 0},
                                                                {0, 4, 0},
                                                                {1, 0, 0},
                                                                {1, 1, 0},
                                                                {1, 2, 0},
                                                                {1, 3, 0},
                                                                {1, 4, 0},
                                                                {2, 0, 0},
                                                                {2, 1, 0},
                                                                {2, 2, 0},
                                                                {3, 0, 0},
                                                                {3, 1, 0},
                                                                {3, 2, 0},
                                                                {4, 0, 0},
                                                                {4, 1, 0},
                                                                {4, 2, 0}}));
  PointList const leftSide{{0, 0, 0}, {1, 0, 0}, {1, 3, 0}, {0, 3, 0}, {0, 1, 0}};
  EXPECT_EQ(WalkArea(leftSide, 2, NEIGHBORHOOD_8, true),
            (PointList{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}, {1, 2, 0}, {1, 3, 0}}));
  PointList const split{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {2, 2, 0}, {0, 2, 0}};
  EXPECT_EQ(WalkArea(split, 2, NEIGHBORHOOD_8, true).size(), 9u - 1u);
}

TEST(AreaVisitor, AFoldedLineWhoseWaysOutAndBackDifferIsRefused) {
  ExpectError(
      [] {
        WalkArea({{0, -8, 0}, {-4, -7, 0}, {-4, -7, 0}}, 2, NEIGHBORHOOD_8, true);
      },
      "intern failure in Border Calculation in CBresenhamAreaVisitor2D",
      "ORVA::Impl::CBresenhamAreaVisitor2D::EraseUselessBorders", c_implModule);
  ExpectError(
      [] {
        WalkArea({{0, -8, 0}, {-4, -7, 0}, {-4, -7, 0}}, 2, NEIGHBORHOOD_8, false);
      },
      "intern failure in Border Calculation in CBresenhamAreaVisitor3D",
      "ORVA::Impl::CBresenhamAreaVisitor2D::EraseUselessBorders", c_implModule);
}

// Only one of the border line's points in a column is taken off each of its ends.
TEST(AreaVisitor, WithoutBorderAStaircaseLeavesPointsOfTheOutline) {
  PointList const corners{{0, 0, 0}, {4, 1, 0}, {4, 4, 0}};
  EXPECT_EQ(WalkArea(corners, 2, NEIGHBORHOOD_8, false), (PointList{{2, 1, 0}, {3, 2, 0}}));
  EXPECT_EQ(WalkArea(corners, 2, NEIGHBORHOOD_4, false),
            (PointList{{1, 1, 0}, {2, 1, 0}, {2, 2, 0}, {3, 2, 0}, {3, 3, 0}}));
}

TEST(AreaVisitor, TwoCornersOfDimensionOneAreALineAlongX) {
  EXPECT_EQ(WalkArea({{0, 0, 0}, {3, 1, 0}}, 1, NEIGHBORHOOD_8, true),
            (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
}

TEST(AreaVisitor, TheCallersCornersAreTakenOver) {
  PointList corners{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
  CBresenhamAreaVisitor const area(corners, 2, NEIGHBORHOOD_8, true);
  EXPECT_TRUE(corners.empty());
  EXPECT_EQ(corners.capacity(), 0u);
}

TEST(AreaVisitor, CornersThatAreRefusedStayWithTheCaller) {
  PointList const triangle{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
  PointList corners = triangle;
  EXPECT_THROW(CBresenhamAreaVisitor(corners, 2, 77, true), CException);
  EXPECT_EQ(corners, triangle);
}

TEST(AreaVisitor, ADefaultWalkIsEmpty) {
  CBresenhamAreaVisitor area;
  EXPECT_FALSE(area.MorePoints());
  EXPECT_EQ(area.Steps(), 0u);
  EXPECT_TRUE(area.empty());
  area.Reset();
  EXPECT_FALSE(area.MorePoints());
}

TEST(AreaVisitor, ResetRewindsEveryModeAnywhere) {
  PointList const lists[] = {{{1, 2, 3}},
                             {{0, 0, 0}, {3, 1, 2}},
                             {{0, 0, 4}, {5, 1, 4}, {2, 6, 4}},
                             {{0, 0, 0}, {6, 0, 6}, {6, 6, 6}, {0, 6, 0}}};
  for (PointList const& corners : lists) {
    CBresenhamAreaVisitor const area(PointList(corners), 3, NEIGHBORHOOD_26, true);
    ASSERT_FALSE(area.empty());
    test::ExpectRewindsAndCopiesAnywhere(area);
  }
}

TEST(AreaVisitor, PathsBeginAtTheSmallestCornerAndLeaveUpward) {
  PointList const expected{{0, 1, 0}, {2, 4, 0}, {5, 0, 0}, {0, 1, 0}};
  CBresenhamAreaVisitor const flat(PointList{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 2, NEIGHBORHOOD_8,
                                   true);
  EXPECT_EQ(flat.MakePathFitting({{5, 0, 0}, {0, 1, 0}, {2, 4, 0}}), expected);
  EXPECT_EQ(flat.MakePathFitting({{2, 4, 0}, {0, 1, 0}, {5, 0, 0}}), expected);
  EXPECT_TRUE(flat.MakePathFitting({}).empty());
  // Only a 2D walk turns a path.
  PointList const asGiven{{0, 1, 0}, {5, 0, 0}, {2, 4, 0}, {0, 1, 0}};
  EXPECT_EQ(CBresenhamAreaVisitor().MakePathFitting({{2, 4, 0}, {0, 1, 0}, {5, 0, 0}}), asGiven);
}

TEST(AreaVisitor, PathsWithANeighborStraightAboveOrOnOneRayAreTurnedAsWell) {
  CBresenhamAreaVisitor const flat(PointList{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 2, NEIGHBORHOOD_8,
                                   true);
  PointList const up{{0, 0, 0}, {0, 3, 0}, {3, 0, 0}, {0, 0, 0}};
  EXPECT_EQ(flat.MakePathFitting({{0, 0, 0}, {0, 3, 0}, {3, 0, 0}}), up);
  EXPECT_EQ(flat.MakePathFitting({{0, 0, 0}, {3, 0, 0}, {0, 3, 0}}), up);
  PointList const repeated{{0, 0, 0}, {0, 0, 0}, {0, 3, 0}, {3, 0, 0}, {0, 0, 0}};
  EXPECT_EQ(flat.MakePathFitting({{0, 0, 0}, {0, 0, 0}, {0, 3, 0}, {3, 0, 0}}), repeated);
  // Both neighbors of the first corner lie on the ray through (4, 4): the area decides.
  PointList const ray{{0, 0, 0}, {4, 4, 0}, {4, 2, 0}, {2, 2, 0}, {0, 0, 0}};
  EXPECT_EQ(flat.MakePathFitting({{0, 0, 0}, {4, 4, 0}, {4, 2, 0}, {2, 2, 0}}), ray);
  EXPECT_EQ(flat.MakePathFitting({{0, 0, 0}, {2, 2, 0}, {4, 2, 0}, {4, 4, 0}}), ray);
}

TEST(AreaVisitor, NeighborhoodsOfSpaceBecomeThoseOfThePlane) {
  CBresenhamAreaVisitor const area;
  EXPECT_EQ(area.ConvertNeighborhood(NEIGHBORHOOD_26), NEIGHBORHOOD_8);
  EXPECT_EQ(area.ConvertNeighborhood(NEIGHBORHOOD_6), NEIGHBORHOOD_4);
  for (int64 const other : {NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_8, int64{-1}})
    ExpectError([&] { static_cast<void>(area.ConvertNeighborhood(other)); },
                "no supported neighborhood", "ORVA::CBresenhamAreaVisitor::ConvertNeighborhood",
                c_module);
}

TEST(AreaVisitor, ConvertFillsInTheSharedCoordinate) {
  Point const p(1, 2, 0);
  auto const area = [](PointList corners) {
    return CBresenhamAreaVisitor(corners, 3, NEIGHBORHOOD_26, true);
  };
  EXPECT_EQ(area({{9, 0, 0}, {9, 1, 0}, {9, 0, 1}}).Convert(p), Point(9, 1, 2));
  EXPECT_EQ(area({{0, 9, 0}, {1, 9, 0}, {0, 9, 1}}).Convert(p), Point(1, 9, 2));
  EXPECT_EQ(area({{0, 0, 9}, {1, 0, 9}, {0, 1, 9}}).Convert(p), Point(1, 2, 9));
  EXPECT_EQ(area({{0, 0, 0}, {1, 0, 1}, {0, 1, 1}}).Convert({1, 2, 3}), Point(1, 2, 3));
}

TEST(AreaVisitor, WhatCannotBeBuiltIsRefused) {
  PointList const triangle{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
  auto const build = [](PointList corners, int64 dimension, int64 neighborhood) {
    return [=] { CBresenhamAreaVisitor(PointList(corners), dimension, neighborhood, true); };
  };
  for (int64 const dimension : {int64{-1}, int64{0}, int64{4}})
    ExpectError(build(triangle, dimension, NEIGHBORHOOD_8), "No valid dimension!",
                "ORVA::CBresenhamAreaVisitor::CBresenhamAreaVisitor", c_module);
  ExpectError(build({}, 1, NEIGHBORHOOD_8), "No valid dimension!");
  ExpectError(build({}, 2, NEIGHBORHOOD_8),
              "The area has to have at least three surrounding points!",
              "ORVA::Impl::CBresenhamAreaVisitor2D::CBresenhamAreaVisitor2D", c_implModule);
  ExpectError(build({}, 3, NEIGHBORHOOD_26),
              "The area has to have at least three surrounding points, notice that it is necessary "
              "to sign the start point also as endpoint!",
              "ORVA::Impl::CBresenhamAreaVisitor3D::CBresenhamAreaVisitor3D", c_implModule);
  PointList const oblique{{0, 0, 0}, {2, 0, 2}, {0, 2, 2}};
  for (int64 const neighborhood : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_2, NEIGHBORHOOD_8})
    ExpectError(build(oblique, 3, neighborhood),
                "Only 14_1 and 26 are valid neighborhoods for this application.",
                "ORVA::Impl::CBresenhamAreaVisitor3D::CBresenhamAreaVisitor3D", c_implModule);
  ExpectError(build(triangle, 3, NEIGHBORHOOD_14_1), "no supported neighborhood");
  ExpectError(build(triangle, 2, NEIGHBORHOOD_26),
              "invalid neighborhood behavior, only 4, 6.1, 6.2 and 8 valid");
  for (PointList const& bent :
       {PointList{{0, 0, 0}, {2, 0, 0}, {0, 2, 1}}, PointList{{0, 0, 0}, {0, 2, 1}, {0, 4, 1}},
        PointList{{0, 0, 1}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}})
    ExpectError(build(bent, 2, NEIGHBORHOOD_8), "invalid Dimension",
                "ORVA::Impl::CBresenhamVisitor2D::CBresenhamVisitor2D", c_implModule,
                test::LineOfError([] {
                  (void)Impl::CBresenhamVisitor2D(CTriple<int64>(1, 1, 1), NEIGHBORHOOD_8);
                }));
}

TEST(AreaVisitor, CornersTooFarApartAreRefused) {
  constexpr int64 low = std::numeric_limits<int64>::min(), high = std::numeric_limits<int64>::max();
  ExpectError<CExBadParam>(
      [] {
        WalkArea({{low, 0, 0}, {high, 0, 0}, {0, 1, 0}}, 2, NEIGHBORHOOD_8, true);
      },
      "corner coordinates from -9223372036854775808 to 9223372036854775807 lie more than "
      "2147483647 apart",
      "ORVA::CBresenhamAreaVisitor::MakePathFitting", c_module);
  EXPECT_EQ(
      WalkArea({{high, high, 0}, {high - 1, high, 0}, {high, high - 1, 0}}, 2, NEIGHBORHOOD_8, true)
          .size(),
      3u);
  EXPECT_EQ(WalkArea({{low, low, low}, {low + 2, low, low + 2}, {low, low + 2, low + 2}}, 3,
                     NEIGHBORHOOD_26, true)
                .size(),
            6u);
}

TEST(AreaVisitor, TwoCornersTooFarApartAreRefused) {
  for (int64 const dimension : {1, 2, 3}) // lengths of 2^32 + 5, which would be cut to 2^31 or to 5
    ExpectError<CExBadParam>(
        [=] {
          WalkArea({{0, 0, 0}, {4294967301, 1, 0}}, dimension,
                   dimension == 3 ? NEIGHBORHOOD_26 : NEIGHBORHOOD_8, true);
        },
        "corner coordinates from 0 to 4294967301 lie more than 2147483647 apart",
        "ORVA::CBresenhamAreaVisitor::CBresenhamAreaVisitor", c_module);
}

TEST(AreaVisitor2D, WalksAClosedPathAndThenStaysAtNothing) {
  PointList path{{0, 0, 0}, {0, 2, 0}, {2, 0, 0}, {0, 0, 0}};
  CBresenhamAreaVisitor2D area(path, NEIGHBORHOOD_8, true);
  EXPECT_EQ(area.GetCurrentStartPoint(), Point(0, 0, 0));
  EXPECT_EQ(area.GetCurrentEndPoint(), Point(0, 2, 0));
  EXPECT_EQ(Walk(area).size(), 6u);
  EXPECT_EQ(area.NextPoint(), Point());
  ExpectError([&] { static_cast<void>(area.GetCurrentStartPoint()); }, "index not valid",
              "ORVA::Impl::CBresenhamAreaVisitor2D::GetCurrentStartPoint", c_implModule);
  ExpectError([&] { static_cast<void>(area.GetCurrentEndPoint()); }, "index not valid",
              "ORVA::Impl::CBresenhamAreaVisitor2D::GetCurrentEndPoint", c_implModule);
  area.SignBorder();
  EXPECT_EQ(Walk(area).size(), 6u);
}

TEST(AreaVisitor2D, APathTheWrongWayRoundDoesNotPair) {
  ExpectError(
      [] {
        CBresenhamAreaVisitor2D(PointList{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}},
                                NEIGHBORHOOD_8, true);
      },
      "intern failure in Border Calculation in CBresenhamAreaVisitor2D",
      "ORVA::Impl::CBresenhamAreaVisitor2D::EraseUselessBorders", c_implModule);
}

TEST(AreaVisitor3D, OneOrientationPairsAndTheOtherDoesNot) {
  PointList const path{{0, 0, 0}, {0, 4, 4}, {4, 0, 4}, {0, 0, 0}};
  CBresenhamAreaVisitor3D area(PointList(path), NEIGHBORHOOD_26, true);
  EXPECT_TRUE(area.IsPairedByColumn());
  EXPECT_EQ(Walk(area).size(), 15u);
  EXPECT_EQ(area.NextPoint(), Point());
  ExpectError([&] { static_cast<void>(area.GetCurrentStartPoint()); }, "index not valid",
              "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentStartPoint", c_implModule);
  ExpectError([&] { static_cast<void>(area.GetCurrentEndPoint()); }, "index not valid",
              "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentEndPoint", c_implModule);
  ExpectError(
      [&] {
        CBresenhamAreaVisitor3D(PointList(path.rbegin(), path.rend()), NEIGHBORHOOD_26, true);
      },
      "Failure in Start- and Endpoints", "ORVA::Impl::CBresenhamAreaVisitor3D::EraseUselessBorders",
      c_implModule);
}

// Marking more of the border by hand, without pairing it anew.
TEST(AreaVisitor2D, LimitsWithoutAPartnerAreNoRuns) {
  Impl::CBresenhamVisitor2D const edge(9, 2, NEIGHBORHOOD_8);
  CBresenhamAreaVisitor2D area(PointList{{0, 0, 0}, {0, 4, 0}, {4, 0, 0}, {0, 0, 0}},
                               NEIGHBORHOOD_8, true);
  area.SignStartPoints({20, 0, 0}, edge);
  area.CountSteps();
  EXPECT_EQ(area.Steps(), 15u);
  EXPECT_EQ(Walk(area).size(), 15u);
  area.EraseBorderPoints();
  area.CountSteps();
  EXPECT_EQ(area.Steps(), 3u); // two of the second column and one of the third
  CBresenhamAreaVisitor2D unpaired;
  unpaired.SignStartPoints({0, 0, 0}, edge);
  unpaired.EraseBorderPoints();
  unpaired.SignEndPoints({0, 0, 0}, edge);
  unpaired.CountSteps();
  EXPECT_EQ(unpaired.Steps(), 0u);
}

TEST(AreaVisitor3D, LimitsWithoutAPartnerAreNoRuns) {
  Impl::CBresenhamVisitor3D const edge(Point(9, 2, 1), NEIGHBORHOOD_26);
  CBresenhamAreaVisitor3D area(PointList{{0, 0, 0}, {0, 4, 4}, {4, 0, 4}, {0, 0, 0}},
                               NEIGHBORHOOD_26, true);
  PointList const all = Walk(CBresenhamAreaVisitor3D(area));
  area.SignStartPoints({20, 0, 0}, edge);
  area.CountSteps();
  EXPECT_EQ(area.Steps(), all.size());
  EXPECT_EQ(Walk(area), all);
  CBresenhamAreaVisitor3D unpaired;
  unpaired.SignStartPoints({0, 0, 0}, edge);
  unpaired.CountSteps();
  unpaired.Reset();
  EXPECT_EQ(unpaired.Steps(), 0u);
  EXPECT_FALSE(unpaired.MorePoints());
}

TEST(AreaVisitor, DiagnosticsNameWhatTheyPrint) {
  PointList const path{{0, 0, 0}, {0, 1, 1}, {1, 0, 1}, {0, 0, 0}};
  CBresenhamAreaVisitor3D const area(PointList(path), NEIGHBORHOOD_26, true);
  testing::internal::CaptureStdout();
  area.PrintBorder();
  area.PrintStatus();
  std::string const text = testing::internal::GetCapturedStdout();
  EXPECT_EQ(text, "Startpoints:\n(0, 0, 0)\n(1, 0, 1)\nEndpoints:\n(0, 1, 1)\n(1, 0, 1)\n"
                  "Status = 0\nm_Actual = (0, 0, 0)\nGetCurrentStartPoint = (0, 0, 0)\n"
                  "GetCurrentEndPoint = (0, 1, 1)\n");
}

} // namespace
