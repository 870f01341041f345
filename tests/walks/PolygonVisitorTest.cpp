#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Walker.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

using namespace ORVA;
using namespace test;

static_assert(RewindableWalker<CPolygonVisitor>);

TEST(PolygonVisitor, KnownWalks) {
  StAreaCase const cases[] = {
      {"nothing", {}, 2, NEIGHBORHOOD_8, true, {}},
      {"a point", {{4, -2, 7}}, 3, NEIGHBORHOOD_26, true, {{4, -2, 7}}},
      {"a point without border", {{4, -2, 7}}, 3, NEIGHBORHOOD_26, false, {}},
      {"a point three times", {{1, 1, 0}, {1, 1, 0}, {1, 1, 0}}, 2, 0, true, {{1, 1, 0}}},
      {"a line in the plane",
       {{3, 1, 5}, {0, 0, 5}},
       2,
       NEIGHBORHOOD_8,
       true,
       {{0, 0, 5}, {1, 0, 5}, {2, 1, 5}, {3, 1, 5}}},
      {"a line in space",
       {{0, 0, 0}, {1, 2, 4}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{0, 0, 0}, {0, 1, 1}, {1, 1, 2}, {1, 2, 3}, {1, 2, 4}}},
      {"a line in space whose plane holds the y axis, as x is as long as y",
       {{0, 0, 0}, {2, 2, 1}},
       3,
       NEIGHBORHOOD_6,
       true,
       {{0, 0, 0}, {0, 1, 0}, {1, 1, 1}, {1, 2, 1}, {2, 2, 1}}},
      {"the inside of a square",
       {{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {0, 3, 0}},
       2,
       NEIGHBORHOOD_8,
       false,
       {{1, 1, 0}, {1, 2, 0}, {2, 1, 0}, {2, 2, 0}}},
      {"a concave outline keeps its notch open",
       {{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {2, 1, 0}, {0, 3, 0}},
       2,
       NEIGHBORHOOD_8,
       true,
       {{0, 0, 0},
        {0, 1, 0},
        {0, 2, 0},
        {0, 3, 0},
        {1, 0, 0},
        {1, 1, 0},
        {1, 2, 0},
        {2, 0, 0},
        {2, 1, 0},
        {3, 0, 0},
        {3, 1, 0},
        {3, 2, 0},
        {4, 0, 0},
        {4, 1, 0},
        {4, 2, 0},
        {4, 3, 0}}},
      {"a plane y = const",
       {{0, 7, 0}, {1, 7, 0}, {0, 7, 1}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{0, 7, 0}, {0, 7, 1}, {1, 7, 0}}},
      {"an oblique triangle: of two voxels equally near the upper",
       {{0, 0, 0}, {2, 0, 1}, {0, 1, 0}},
       3,
       NEIGHBORHOOD_26,
       true,
       {{0, 0, 0}, {0, 1, 0}, {1, 0, 1}, {2, 0, 1}}}};
  for (StAreaCase const& c : cases) {
    SCOPED_TRACE(c.name);
    CPolygonVisitor polygon(c.corners, c.dimension, c.neighborhood, c.border);
    EXPECT_EQ(polygon.Steps(), c.expected.size());
    EXPECT_EQ(Walk(polygon), c.expected);
    EXPECT_EQ(polygon.NextPoint(), Point());
  }
}

TEST(PolygonVisitor, AHoleKeepsItsBorderAndOnlyThat) {
  PointList const outline{{0, 0, 0}, {6, 0, 0}, {6, 6, 0}, {0, 6, 0}};
  PointList const hole{{2, 2, 0}, {2, 4, 0}, {4, 4, 0}, {4, 2, 0}};
  EXPECT_EQ(CPolygonVisitor(outline, {hole}, 2, NEIGHBORHOOD_8, true).Steps(), 49u - 1u);
  EXPECT_EQ(CPolygonVisitor(outline, {hole}, 2, NEIGHBORHOOD_8, false).Steps(), 25u - 9u);
}

TEST(PolygonVisitor, RunsInARangeLoop) {
  std::size_t count = 0;
  for (auto const& p : ORVA::Points(
           CPolygonVisitor({{0, 0, 0}, {9, 0, 3}, {9, 9, 6}, {0, 9, 3}}, 3, NEIGHBORHOOD_26, true)))
    count += p.x >= 0;
  EXPECT_EQ(count, 100u);
}

TEST(PolygonVisitor, BadArgumentsAreRefusedByName) {
  constexpr int64 low = std::numeric_limits<int64>::min(), high = std::numeric_limits<int64>::max();
  struct {
    PointList corners;
    int64 dimension, neighborhood;
    char const* message;
  } const cases[] = {
      {{{0, 0, 0}}, 1, NEIGHBORHOOD_8, "dimension 1 is neither 2 nor 3"},
      {{{0, 0, 0}}, 2, 21, "neighborhood 21 is none of 4, 6.1, 6.2 and 8 (0, 3, 6, 9)"},
      {{{0, 0, 0}}, 3, 9, "neighborhood 9 is none of 6, 14.1, 14.2 and 26 (12, 15, 18, 21)"},
      {{{0, 0, 0}, {high, 0, 0}}, 2, 9, "corner coordinate 9223372036854775807 lies beyond 2^62"},
      {{{0, 0, low}, {0, 1, 0}}, 3, 21, "corner coordinate -9223372036854775808 lies beyond 2^62"},
      {{{0, -1, 0}, {0, 2147483647, 0}},
       2,
       9,
       "corner coordinates from -1 to 2147483647 lie more than 2147483647 apart"},
      {{{0, 0, 0}, {1, 0, 0}, {0, 1, 2}},
       2,
       9,
       "corner (0, 1, 2) lies off the plane of the other corners"},
      {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 1}},
       3,
       21,
       "corner (1, 1, 1) lies off the plane of the other corners"}};
  for (auto const& c : cases)
    ExpectError<CExBadParam>([&] { CPolygonVisitor(c.corners, c.dimension, c.neighborhood, true); },
                             c.message, "ORVA::CPolygonVisitor::CPolygonVisitor",
                             "src/Utils/PolygonVisitor");
  ExpectError<CExBadParam>(
      [] {
        CPolygonVisitor({{0, 0, 0}, {9, 0, 0}, {0, 9, 0}}, {{{1, 1, 0}, {10, 1, 0}, {1, 2, 0}}}, 2,
                        NEIGHBORHOOD_8, true);
      },
      "hole corner coordinate 10 lies outside the outline's 0 to 9");
}

// Against the moves of the line itself, for every small edge.
TEST(PolygonVisitor, TwoCornersAreTheDigitalLine) {
  constexpr int64 c_most = 13;
  for (int64 const neighborhood :
       {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8})
    for (int64 dx = 0; dx <= c_most; ++dx)
      for (int64 dy = dx == 0 ? 0 : -c_most; dy <= c_most; ++dy) {
        CBresenhamVisitor line({3, -2, 5}, {3 + dx, dy - 2, 5}, 2, neighborhood, true);
        PointList expected = Walk(line);
        std::ranges::sort(expected, Impl::LexicographicLess);
        CPolygonVisitor polygon({{3, -2, 5}, {3 + dx, dy - 2, 5}}, 2, neighborhood, true);
        ASSERT_EQ(Walk(polygon), expected) << dx << ", " << dy << " in " << neighborhood;
      }
}

TEST(PolygonVisitor, HighEdgesTakeNoMemory) {
  constexpr int64 c_high = 2147483647;
  test::CAllocationLimit const limit(4096);
  for (int64 const neighborhood :
       {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8}) {
    CPolygonVisitor const box({{0, 0, 0}, {9, 0, 0}, {9, c_high, 0}, {0, c_high, 0}}, 2,
                              neighborhood, true);
    EXPECT_EQ(box.Steps(), uint64{10} << 31);
    CPolygonVisitor const inner({{0, 0, 0}, {9, 0, 0}, {9, c_high, 0}, {0, c_high, 0}}, 2,
                                neighborhood, false);
    EXPECT_EQ(inner.Steps(), uint64{8} * (c_high - 1));
    CPolygonVisitor steep({{0, 0, 0}, {2, c_high, 0}}, 2, neighborhood, true);
    bool const isDiagonal = neighborhood == NEIGHBORHOOD_8 || neighborhood == NEIGHBORHOOD_6_1;
    EXPECT_EQ(steep.Steps(), uint64{c_high} + (isDiagonal ? 1 : 3));
  }
}

TEST(PolygonVisitor, EachErrorHasALineOfItsOwn) {
  using Corners = PointList;
  auto const make = [](Corners const& outline, Corners const& hole, int64 dimension, int64 code) {
    return [=] { CPolygonVisitor(outline, {hole}, dimension, code, true); };
  };
  Corners const corners{{0, 0, 0}, {9, 0, 0}, {0, 9, 0}};
  constexpr int64 c_far = std::numeric_limits<int64>::max();
  test::ExpectLinesOfTheirOwn(
      {make(corners, {}, 4, NEIGHBORHOOD_8), make(corners, {}, 2, NEIGHBORHOOD_26),
       make(corners, {}, 3, NEIGHBORHOOD_8), make({{c_far, 0, 0}}, {}, 2, NEIGHBORHOOD_8),
       make({{0, 0, 0}, {int64{1} << 32, 0, 0}}, {}, 2, NEIGHBORHOOD_8),
       make(corners, {{-1, 0, 0}}, 2, NEIGHBORHOOD_8),
       make({{0, 0, 0}, {9, 0, 0}, {0, 9, 1}}, {}, 2, NEIGHBORHOOD_8)});
}

TEST(PolygonVisitor, FarCoordinatesAreExact) {
  constexpr int64 far = int64{1} << 62;
  CPolygonVisitor const polygon(
      {{far, -far, far}, {far - 2, -far, far - 2}, {far - 2, 2 - far, far - 2}}, 3, NEIGHBORHOOD_26,
      true);
  EXPECT_EQ(polygon.Steps(), 6u);
}

TEST(PolygonVisitor, LargeNormalsAreExact) {
  Point const a(20000, 1, 19999), b(1, 20000, 10001);
  Point const normal(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
  CPolygonVisitor polygon({{0, 0, 0}, a, b}, 3, NEIGHBORHOOD_26, false);
  EXPECT_GT(polygon.Steps(), 199'000'000u);
  for (int i = 0; i < 100'000; ++i) {
    Point const p = polygon.NextPoint();
    int64 const distance = normal.x * p.x + normal.y * p.y + normal.z * p.z;
    ASSERT_LE(2 * std::abs(distance), std::abs(normal.z));
  }
}

} // namespace
