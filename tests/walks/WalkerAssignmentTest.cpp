// What is left of walkers and lines where memory runs out in an assignment, or that were moved
// from.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/FailingAllocation.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

using namespace ORVA;
using test::FailEveryAllocation;
using namespace test;

namespace {

CBresenhamVisitorSelect Selected(Point const& to) {
  CBresenhamVisitorSelect line({-3, 1, 0}, to, 3, NEIGHBORHOOD_14_1, true);
  line.SetImageSize(Point(9, 9, 9));
  return line;
}

CBresenhamVisitor Line(Point const& to, int64 neighborhood) {
  return {Point(1, 2, 3), to, 3, neighborhood, true};
}

CBresenhamAreaVisitor Area(PointList corners) {
  return {std::move(corners), 3, NEIGHBORHOOD_26, true};
}

CPolygonVisitor Polygon(PointList const& corners) { return {corners, 3, NEIGHBORHOOD_26, true}; }

CBresenhamVolumeVisitor Tip(Point const& tip) {
  PointList const base{{0, 0, 0}, {0, 6, 0}, {0, 0, 6}};
  return {PointList(base), PointList(3, tip), NEIGHBORHOOD_26, true};
}

template <class W>
W InImage(W walker, Point const& size) {
  walker.SetImageSize(size);
  return walker;
}

PointList const c_flat{{0, 0, 2}, {6, 1, 2}, {7, 5, 2}, {2, 6, 2}};
PointList const c_flatter{{0, 0, 4}, {90, 0, 4}, {90, 80, 4}};
PointList const c_oblique{{0, 0, 0}, {6, 0, 6}, {6, 6, 6}, {0, 6, 0}};
PointList const c_larger{{0, 0, 0}, {60, 0, 60}, {60, 60, 60}, {0, 60, 0}};

// Calls check(walker, other) with two of each kind that has lists, at their starts; the other one's
// are the longer.
template <class Check>
void ForEachPair(Check check) {
  auto const pair = [&check](char const* name, auto const& walker, auto const& other) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(walker.MorePoints());
    ASSERT_TRUE(other.MorePoints());
    check(walker, other);
  };
  pair("area", Area(c_flat), Area(c_flatter));
  pair("oblique area", Area(c_oblique), Area(c_larger));
  pair("flat and oblique area", Area(c_flat), Area(c_oblique));
  pair("polygon", Polygon(c_flat), Polygon(c_larger));
  pair("solid", Tip({6, 0, 0}), Tip({20, 3, 3}));
  pair("slice", InImage(CCutSlice({2, 3, 5}, 20, NEIGHBORHOOD_26), Point(6, 5, 7)),
       InImage(CCutSlice({1, 2, 1}, 30, NEIGHBORHOOD_6), Point(40, 30, 20)));
  pair("directional lines",
       InImage(CDirectionalVisitor({0, 0, 0}, {3, 3, 3}, {1, 0, 0}), Point(4, 4, 4)),
       InImage(CDirectionalVisitor({1, 1, 1}, {8, 9, 7}, {1, -1, 1}), Point(9, 9, 9)));
  pair("delta lines", InImage(CDeltaVisitor({1, 0.4, 0.3}), Point(4, 3, 2)),
       InImage(CDeltaVisitor({0.2, 1, 0.3}), Point(9, 20, 7)));
  pair("parallel lines", InImage(CParallelLineVisitor({1, -0.4, 0.3}), Point(4, 3, 2)),
       InImage(CParallelLineVisitor({0.2, 1, -0.3}), Point(9, 20, 7)));
}

} // namespace

TEST(WalkerAssignment, IsWholeOrNotAtAll) {
  ForEachPair([]<class W>(W const& fresh, W const& other) {
    W walker = fresh;
    walker.NextPoint();
    PointList const rest = Walk(W(walker));
    auto const steps = walker.Steps();
    EXPECT_GT(FailEveryAllocation([&] { walker = other; },
                                  [&] {
                                    ASSERT_EQ(walker.Steps(), steps);
                                    ASSERT_EQ(Walk(W(walker)), rest);
                                    W rewound = walker;
                                    if constexpr (RewindableWalker<W>) {
                                      rewound.Reset();
                                      ASSERT_EQ(Walk(rewound), Walk(W(fresh)));
                                    }
                                  }),
              0);
    EXPECT_EQ(Walk(walker), Walk(W(other)));
  });
}

TEST(WalkerAssignment, OfALineTakesNoMemory) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
    CBresenhamVisitor line = Line({6, -4, 9}, code);
    CBresenhamVisitor const other = Line({40, 7, -3}, code);
    EXPECT_EQ(FailEveryAllocation([&] { line = other; }, [] {}), 0);
    EXPECT_EQ(Walk(line), Walk(CBresenhamVisitor(other)));
  }
  CBresenhamVisitorSelect selected = Selected({9, 3, 2});
  CBresenhamVisitorSelect const other = Selected({7, 9, 7});
  EXPECT_EQ(FailEveryAllocation([&] { selected = other; }, [] {}), 0);
  EXPECT_EQ(Walk(selected), Walk(CBresenhamVisitorSelect(other)));
}

TEST(WalkerAssignment, OfALineLeavesTheListToTheLastThatHoldsIt) {
  auto line = Line({6, -4, 9}, NEIGHBORHOOD_6);
  PointList const all = Walk(CBresenhamVisitor(line));
  auto copy = line;
  line = Line({1, 1, 1}, NEIGHBORHOOD_6);
  EXPECT_EQ(Walk(copy), all);
}

TEST(WalkerAssignment, FromItselfAsATemporaryChangesNothing) {
  auto const expectSame = []<class W>(W walker) {
    walker.NextPoint();
    PointList const rest = Walk(W(walker));
    W& itself = walker;
    walker = std::move(itself);
    EXPECT_EQ(Walk(walker), rest);
  };
  ForEachPair([&](auto const& walker, auto const&) { expectSame(walker); });
  expectSame(Line({6, -4, 9}, NEIGHBORHOOD_14_1));
  expectSame(Selected({9, 3, 2}));
}

TEST(WalkerAssignment, ToItselfChangesNothing) {
  ForEachPair([]<class W>(W walker, W const&) {
    walker.NextPoint();
    PointList const rest = Walk(W(walker));
    W const& itself = walker;
    walker = itself;
    EXPECT_EQ(Walk(walker), rest);
  });
}

TEST(MovedWalker, LeavesAtMostARestOfTheWalkBehind) {
  ForEachPair([]<class W>(W const& fresh, W const& other) {
    PointList const all = Walk(W(fresh));
    for (std::size_t taken = 0; taken < all.size(); ++taken) {
      W from = fresh;
      for (std::size_t i = 0; i < taken; ++i) from.NextPoint();
      W const moved = std::move(from);
      ASSERT_EQ(Walk(W(moved)),
                PointList(all.begin() + static_cast<std::ptrdiff_t>(taken), all.end()));
      // NOLINTBEGIN(bugprone-use-after-move): what it does then is what is tested
      ASSERT_LE(Walk(W(from)).size(), all.size() - taken);
      if constexpr (RewindableWalker<W>) {
        W rewound = from;
        rewound.Reset();
        ASSERT_LE(Walk(rewound).size(), 1U);
      }
      from = other;
      // NOLINTEND(bugprone-use-after-move)
      ASSERT_EQ(Walk(from), Walk(W(other)));
    }
  });
}

TEST(MovedWalker, ThatCountedPointsOfItsListsHasNoneLeft) {
  auto const expectNone = [](auto walker) {
    walker.NextPoint();
    auto const moved = std::move(walker);
    EXPECT_FALSE(walker.MorePoints()); // NOLINT(bugprone-use-after-move)
  };
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26})
    expectNone(Line({9, -5, 2}, code));
  expectNone(CBresenhamVisitor({1, 2, 0}, {9, -5, 0}, 2, NEIGHBORHOOD_8, false));
  expectNone(Selected({9, 3, 2}));
  expectNone(Area({{1, 2, 3}, {4, 9, 3}})); // a line
  expectNone(Area(c_flat));
  expectNone(Area(c_oblique));
  expectNone(Polygon(c_larger));
  expectNone(Tip({6, 0, 0}));
  expectNone(InImage(CCutSlice({2, 3, 5}, 20, NEIGHBORHOOD_26), Point(6, 5, 7)));
  expectNone(InImage(CDeltaVisitor({1, 0.4, 0.3}), Point(4, 3, 2)));
}

TEST(MovedWalker, OfOnePointHasNone) {
  auto point = Area({{1, 2, 3}});
  auto const moved = std::move(point);
  EXPECT_EQ(Walk(CBresenhamAreaVisitor(moved)), (PointList{{1, 2, 3}}));
  // NOLINTBEGIN(bugprone-use-after-move): what it does then is what is tested
  EXPECT_FALSE(point.MorePoints());
  EXPECT_TRUE(point.empty());
  point.Reset();
  EXPECT_FALSE(point.MorePoints());
  // NOLINTEND(bugprone-use-after-move)
}

TEST(LineAssignment, IsWholeOrNotAtAll) {
  Impl::CBresenhamVisitor2D flat(3, 1, NEIGHBORHOOD_8);
  Impl::CBresenhamVisitor2D const longer(-30, 45, NEIGHBORHOOD_4);
  EXPECT_EQ(FailEveryAllocation([&] { flat = longer; }, [] {}), 0) << "keeps no list";
  EXPECT_EQ(flat.LastStep(), 75);
  EXPECT_EQ(flat.Step(0), longer.Step(0));
  for (int64 const code : {NEIGHBORHOOD_26, NEIGHBORHOOD_14_2}) {
    Impl::CBresenhamVisitor3D line(Point(5, 3, 2), NEIGHBORHOOD_6);
    Impl::CBresenhamVisitor3D const other(Point(40, 50, 60), code);
    PointList const moves(line.Moves().begin(), line.Moves().end());
    EXPECT_EQ(FailEveryAllocation([&] { line = other; },
                                  [&] {
                                    EXPECT_TRUE(std::ranges::equal(line.Moves(), moves));
                                    line.ComputeMoves(); // from its projections
                                    EXPECT_TRUE(std::ranges::equal(line.Moves(), moves));
                                  }),
              1);
    EXPECT_TRUE(std::ranges::equal(line.Moves(), other.Moves()));
  }
}

TEST(MovedLine, IsEmptyAlsoWhenItIsComputedAnew) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
    Impl::CBresenhamVisitor3D line(Point(9, -5, 2), code);
    Impl::CBresenhamVisitor3D const moved = std::move(line);
    EXPECT_GT(moved.LastStep(), 0);
    line.ComputeMoves(); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(line.LastStep(), 0);
    line.Init(9, -5, 2);
    EXPECT_TRUE(std::ranges::equal(line.Moves(), moved.Moves()));
  }
}
