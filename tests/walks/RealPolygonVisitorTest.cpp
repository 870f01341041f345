
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace ORVA;
using namespace test;
using Outline = CRealPolygonVisitor::Outline;

static_assert(RewindableWalker<CRealPolygonVisitor>);

TEST(RealPolygonVisitor, HandsOutPointsInRasterOrder) {
  struct {
    char const* name;
    Outline outline;
    EnBoundary boundary;
    PointList expected;
  } const cases[] = {
      {"nothing", {}, EnBoundary::Closed, {}},
      {"a corner on a pixel", {{2, 3, 5}}, EnBoundary::Closed, {{2, 3, 5}}},
      {"a corner beside it", {{2, 3.5, 5}}, EnBoundary::Closed, {}},
      {"a line", {{-1, -1, 0}, {2, 0.5, 0}}, EnBoundary::Closed, {{-1, -1, 0}, {1, 0, 0}}},
      {"a line has no inside", {{-1, -1, 0}, {2, 0.5, 0}}, EnBoundary::HalfOpen, {}},
      {"between the pixels",
       {{0.5, 0.5, 0}, {2.5, 0.5, 0}, {2.5, 2.5, 0}, {0.5, 2.5, 0}},
       EnBoundary::Closed,
       {{1, 1, 0}, {2, 1, 0}, {1, 2, 0}, {2, 2, 0}}},
      {"a square keeps its sides of least x and y",
       {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}},
       EnBoundary::HalfOpen,
       {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}},
      {"the inside of a square",
       {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}},
       EnBoundary::Open,
       {{1, 1, 0}}}};
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    CRealPolygonVisitor polygon(c.outline, c.boundary);
    EXPECT_EQ(polygon.Steps(), c.expected.size());
    EXPECT_EQ(polygon.empty(), c.expected.empty());
    EXPECT_EQ(Walk(polygon), c.expected);
    EXPECT_EQ(polygon.NextPoint(), Point());
  }
}

TEST(RealPolygonVisitor, TheWindingRuleSaysWhatOverlapsMean) {
  Outline const square{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
  Outline const hole{{1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}}; // the other way round
  Outline const same(hole.rbegin(), hole.rend());
  auto const count = [&](Outline const& inner, EnWinding winding) {
    return CRealPolygonVisitor({square, inner}, EnBoundary::HalfOpen, winding).Steps();
  };
  EXPECT_EQ(count(hole, EnWinding::EvenOdd), 12U);
  EXPECT_EQ(count(same, EnWinding::EvenOdd), 12U);
  EXPECT_EQ(count(hole, EnWinding::NonZero), 12U);
  EXPECT_EQ(count(same, EnWinding::NonZero), 16U);
}

// An edge from the origin passes through (1, 1), or beside it by one bit of its other end.
TEST(RealPolygonVisitor, OneBitOfACornerDecides) {
  auto const has = [](double y) {
    CRealPolygonVisitor polygon(Outline{{0, 0, 0}, {1.5, y, 0}, {2, 0, 0}});
    return std::ranges::count(Walk(polygon), Point(1, 1, 0)) == 1;
  };
  EXPECT_TRUE(has(1.5));
  EXPECT_TRUE(has(std::nextafter(1.5, 2)));
  EXPECT_FALSE(has(std::nextafter(1.5, 1)));
}

TEST(RealPolygonVisitor, FarCornersAreExact) {
  constexpr double far = 0x1p30;
  constexpr auto last = static_cast<int64>(far);
  Outline const sliver{{-far, -1, 0}, {far, 1, 0}, {far, std::nextafter(1.0, 2.0), 0}};
  EXPECT_EQ(Walk(CRealPolygonVisitor(sliver)),
            (PointList{{-last, -1, 0}, {0, 0, 0}, {last, 1, 0}}));
  Outline const row{{-far, 0, 0}, {far, 0, 0}};
  EXPECT_EQ(CRealPolygonVisitor(row).Steps(), (uint64{1} << 31) + 1);
}

TEST(RealPolygonVisitor, BadCornersAreRefusedByName) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  struct {
    Outline outline;
    char const* message;
  } const cases[] = {
      {{{0, 0, 0}, {inf, 0, 0}}, "corner coordinate inf is not from -1073741824 to 1073741824"},
      {{{0, 0, 0}, {0, std::nan(""), 0}},
       "corner coordinate nan is not from -1073741824 to 1073741824"},
      {{{-1073741825., 0, 0}},
       "corner coordinate -1073741825 is not from -1073741824 to 1073741824"},
      {{{0, 0, 0.5}}, "corner coordinate z 0.5 is no slice"},
      {{{0, 0, inf}}, "corner coordinate z inf is no slice"},
      {{{0, 0, 3}, {1, 0, 4}}, "corners lie in slices 3 and 4 at once"}};
  for (auto const& c : cases)
    ExpectError<CExBadParam>([&] { CRealPolygonVisitor polygon(c.outline); }, c.message,
                             "ORVA::CRealPolygonVisitor::CRealPolygonVisitor",
                             "src/Utils/RealPolygonVisitor");
}

TEST(RealPolygonVisitor, CopiesWalkIndependentlyAndResetRewindsAnywhere) {
  test::ExpectRewindsAndCopiesAnywhere(
      CRealPolygonVisitor(Outline{{0.5, 0.5, 7}, {6.5, 1, 7}, {3, 5.25, 7}}));
}

} // namespace
