#include <SeluUtils/Walker.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;

namespace {

CBresenhamVisitor Line() { return {Point(1, 2, 0), Point(5, 4, 0), 2, NEIGHBORHOOD_8, true}; }
CBresenhamVisitorSelect Selected() {
  CBresenhamVisitorSelect line(Point(-3, 2, 0), Point(9, 4, 0), 2, NEIGHBORHOOD_8, true);
  line.SetImageSize(CSize(6, 6));
  return line;
}
CWindowVisitor Window() { return {Point(1, 1, 1), Point(3, 2, 2)}; }
CDirectionalVisitor Directional() {
  CDirectionalVisitor lines(Point(0, 0, 0), Point(2, 3, 1), Point(1, -1, 0));
  lines.SetImageSize(CSize(3, 4, 2));
  return lines;
}
template <class Visitor>
Visitor Periodic() {
  Visitor lines(CTriple<double>(1, 0.6, 0.3));
  lines.SetImageSize(CSize(4, 3, 2));
  return lines;
}

template <class W>
struct StMake;
template <>
struct StMake<CBresenhamVisitor> {
  static auto Make() { return Line(); }
};
template <>
struct StMake<CBresenhamVisitorSelect> {
  static auto Make() { return Selected(); }
};
template <>
struct StMake<Impl::CVisitPoint> {
  static auto Make() { return Impl::CVisitPoint(Point(1, 2, 3)); }
};
template <>
struct StMake<CWindowVisitor> {
  static auto Make() { return Window(); }
};
template <>
struct StMake<CDirectionalVisitor> {
  static auto Make() { return Directional(); }
};
template <>
struct StMake<CDeltaVisitor> {
  static auto Make() { return Periodic<CDeltaVisitor>(); }
};
template <>
struct StMake<CParallelLineVisitor> {
  static auto Make() { return Periodic<CParallelLineVisitor>(); }
};

template <class W>
class WalkerProtocol : public testing::Test {};
using Walkers =
    testing::Types<CBresenhamVisitor, CBresenhamVisitorSelect, Impl::CVisitPoint, CWindowVisitor,
                   CDirectionalVisitor, CDeltaVisitor, CParallelLineVisitor>;
TYPED_TEST_SUITE(WalkerProtocol, Walkers);

struct StNoWalker {
  [[nodiscard]] bool MorePoints() const { return false; }
};

static_assert(RewindableWalker<CBresenhamVisitor>);
static_assert(RewindableWalker<CBresenhamVisitorSelect>);
static_assert(RewindableWalker<Impl::CVisitPoint>);
static_assert(!RewindableWalker<CWindowVisitor>);
static_assert(!Walker<StNoWalker> && !Walker<int>);

} // namespace

TYPED_TEST(WalkerProtocol, IsAWalkerWhosePointsAreAnInputRange) {
  static_assert(Walker<TypeParam>);
  static_assert(std::ranges::input_range<CPointRange<TypeParam>>);
  static_assert(!std::ranges::forward_range<CPointRange<TypeParam>>);
  static_assert(std::ranges::view<CPointRange<TypeParam>>);
  static_assert(std::ranges::input_range<COwningPointRange<TypeParam>>);
  static_assert(std::ranges::view<COwningPointRange<TypeParam>>);
}

TYPED_TEST(WalkerProtocol, RangeForVisitsThePointsOfTheWalk) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  ASSERT_FALSE(expected.empty());
  auto walker = StMake<TypeParam>::Make();
  PointList points;
  for (auto p : ORVA::Points(walker)) points.push_back(p);
  EXPECT_EQ(points, expected);
  EXPECT_FALSE(walker.MorePoints());
  points.clear();
  for (Point const& p : ORVA::Points(StMake<TypeParam>::Make())) points.push_back(p);
  EXPECT_EQ(points, expected);
}

TYPED_TEST(WalkerProtocol, CopiesWalkOnIndependentlyFromEveryStep) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  auto walker = StMake<TypeParam>::Make();
  auto assigned = StMake<TypeParam>::Make();
  for (std::size_t k = 0; k < expected.size(); ++k) {
    PointList const rest(expected.begin() + static_cast<std::ptrdiff_t>(k), expected.end());
    TypeParam copy = walker;
    assigned = walker;
    EXPECT_EQ(Walk(copy), rest) << k;
    EXPECT_EQ(Walk(assigned), rest) << k;
    EXPECT_EQ(walker.NextPoint(), expected[k]);
  }
}

TYPED_TEST(WalkerProtocol, MovedWalkerWalksOn) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  auto walker = StMake<TypeParam>::Make();
  (void)walker.NextPoint();
  TypeParam moved = std::move(walker);
  EXPECT_EQ(Walk(moved), PointList(expected.begin() + 1, expected.end()));
}

TYPED_TEST(WalkerProtocol, LoopLeftEarlyLeavesTheRestOfTheWalk) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    auto walker = StMake<TypeParam>::Make();
    std::size_t seen = 0;
    for (auto p : ORVA::Points(walker)) {
      EXPECT_EQ(p, expected[seen]);
      if (seen++ == k) break;
    }
    EXPECT_EQ(Walk(walker),
              PointList(expected.begin() + static_cast<std::ptrdiff_t>(k) + 1, expected.end()));
  }
}

TYPED_TEST(WalkerProtocol, WalkInterruptedByAnExceptionGoesOn) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  auto walker = StMake<TypeParam>::Make();
  try {
    for (auto p : ORVA::Points(walker)) throw std::runtime_error(std::to_string(p.x));
    FAIL() << "no points";
  } catch (std::runtime_error const&) {
    EXPECT_EQ(Walk(walker), PointList(expected.begin() + 1, expected.end()));
  }
}

TYPED_TEST(WalkerProtocol, WalkingAllocatesNothing) {
  auto const expected = Walk(StMake<TypeParam>::Make());
  auto walker = StMake<TypeParam>::Make();
  std::size_t count = 0;
  {
    test::CFailingAllocations const failing(0);
    for (auto p : ORVA::Points(walker)) count += p == expected[count];
  }
  EXPECT_EQ(count, expected.size());
}

TYPED_TEST(WalkerProtocol, FinishedWalkIsAnEmptyRange) {
  auto walker = StMake<TypeParam>::Make();
  (void)Walk(walker);
  auto range = ORVA::Points(walker);
  EXPECT_TRUE(range.begin() == range.end());
}

TEST(WalkerPoints, SecondLoopGoesOnWhereTheFirstLeftOff) {
  auto line = Line();
  auto points = ORVA::Points(line);
  PointList first, second;
  for (auto p : points) {
    first.push_back(p);
    if (first.size() == 2) break;
  }
  for (auto p : points) second.push_back(p);
  EXPECT_EQ(first, (PointList{{1, 2, 0}, {2, 3, 0}}));
  EXPECT_EQ(second, (PointList{{3, 3, 0}, {4, 4, 0}, {5, 4, 0}}));
}

TEST(WalkerPoints, WorkWithTheAlgorithmsOfRanges) {
  auto line = Line();
  EXPECT_EQ(std::ranges::count_if(ORVA::Points(line), [](Point const& p) { return p.y == 3; }), 2);
  PointList copied;
  std::ranges::copy(ORVA::Points(Line()), std::back_inserter(copied));
  EXPECT_EQ(copied.size(), 5U);
  EXPECT_EQ(std::ranges::max(ORVA::Points(Window()), {}, &Point::x).x, 3);
  auto window = Window();
  auto found = std::ranges::find(ORVA::Points(window), Point(1, 2, 1));
  EXPECT_EQ(*found, Point(1, 2, 1));
  EXPECT_EQ(found->y, 2);
}

// The adaptors of GCC's library need a compiler that knows their concepts.
#if !defined(__clang__) || __clang_major__ >= 16
TEST(WalkerPoints, PassThroughTheAdaptorsOfRanges) {
  std::vector<int64> columns;
  for (int64 const x : ORVA::Points(Window()) |
                           std::views::filter([](Point const& p) { return p.z == 2; }) |
                           std::views::transform(&Point::x) | std::views::take(4))
    columns.push_back(x);
  EXPECT_EQ(columns, (std::vector<int64>{1, 2, 3, 1}));
  auto line = Line();
  auto steps = ORVA::Points(line) | std::views::drop(3);
  EXPECT_EQ(std::ranges::distance(steps.begin(), steps.end()), 2);
}
#endif
