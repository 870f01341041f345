// What the walks over areas, sections and solids hold wherever they are left, and where memory
// ends.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/FailingAllocation.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace ORVA;
using test::FailEveryAllocation;
using namespace test;

namespace {

PointList const c_point{{4, -2, 7}};
PointList const c_line{{0, 0, 0}, {5, 2, -3}};
PointList const c_flat{{0, 0, 2}, {6, 1, 2}, {7, 5, 2}, {2, 6, 2}};
PointList const c_upright{{3, 0, 0}, {3, 5, 1}, {3, 2, 6}};
PointList const c_oblique{{0, 0, 0}, {6, 0, 6}, {6, 6, 6}, {0, 6, 0}};
PointList const c_hole{{2, 2, 2}, {4, 2, 4}, {4, 4, 4}};
// Along the edges of a box, all four along x among them.
PointList const c_boxPath{{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {0, 3, 0}, {0, 3, 4},
                          {4, 3, 4}, {4, 0, 4}, {0, 0, 4}, {0, 0, 0}};
PointList const c_tipFrom{{0, 0, 0}, {0, 6, 0}, {0, 0, 6}};
PointList const c_tipTo(3, Point(6, 0, 0));

CBresenhamAreaVisitor Area(PointList corners, bool border) {
  return {corners, 3, NEIGHBORHOOD_26, border};
}

template <class Section>
Section Sized(Section section) {
  section.SetImageSize(Point(6, 5, 7));
  return section;
}

// Calls check(walker) with one of each kind at its start.
template <class Check>
void ForEachWalk(Check check) {
  auto const walk = [&check](char const* name, auto const& walker) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(walker.MorePoints());
    check(walker);
  };
  walk("area, a point", Area(c_point, true));
  walk("area, a line", Area(c_line, true));
  walk("area, flat", Area(c_flat, true));
  walk("area, upright, inside", Area(c_upright, false));
  walk("area, oblique", Area(c_oblique, true));
  walk("area, oblique, inside", Area(c_oblique, false));
  walk("polygon, flat", CPolygonVisitor(c_flat, 2, NEIGHBORHOOD_4, true));
  walk("polygon, upright, inside", CPolygonVisitor(c_upright, 3, NEIGHBORHOOD_26, false));
  walk("polygon with a hole", CPolygonVisitor(c_oblique, {c_hole}, 3, NEIGHBORHOOD_14_1, true));
  walk("plane section", Sized(CPlaneSection({2, 3, 5}, 20)));
  walk("plane section through points", Sized(CPlaneSection({0, 0, 6}, {5, 0, 0}, {0, 4, 3})));
  walk("slice", Sized(CCutSlice({2, 3, 5}, 20, NEIGHBORHOOD_26)));
  walk("slice in another neighborhood", Sized(CCutSlice({1, -1, 1}, 2, NEIGHBORHOOD_14_2)));
  walk("solid around a path", CBresenhamVolumeVisitor(PointList(c_boxPath), NEIGHBORHOOD_26, true));
  walk("solid between points, inside",
       CBresenhamVolumeVisitor(PointList(c_tipFrom), PointList(c_tipTo), NEIGHBORHOOD_6, false));
}

} // namespace

TEST(AreaWalkers, ResetAndCopiesAtEveryStep) {
  ForEachWalk([](auto const& walker) { test::ExpectRewindsAndCopiesAnywhere(walker); });
}

TEST(AreaWalkers, AnExceptionInTheLoopLeavesTheRestOfTheWalk) {
  ForEachWalk([]<class W>(W const& walker) {
    PointList const all = Walk(W(walker));
    for (std::size_t last = 0; last < all.size(); ++last) {
      W interrupted = walker;
      std::size_t seen = 0;
      try {
        for (Point const& p : ORVA::Points(interrupted)) {
          ASSERT_EQ(p, all[seen]);
          if (seen++ == last) throw std::runtime_error("enough");
        }
        FAIL() << "no point " << last;
      } catch (std::runtime_error const&) {
        ASSERT_EQ(Walk(W(interrupted)), From(all, last + 1));
        interrupted.Reset();
        ASSERT_EQ(Walk(interrupted), all);
      }
    }
  });
}

TEST(AreaWalkers, AFailedAllocationLeavesTheWalkWhereItWas) {
  long allocations = 0;
  ForEachWalk([&allocations]<class W>(W const& fresh) {
    PointList const all = Walk(W(fresh));
    W walker = fresh;
    for (std::size_t taken = 0; taken < all.size(); ++taken) {
      auto const isWhereItWas = [&] { ASSERT_EQ(Walk(W(walker)), From(all, taken)); };
      W rewound = walker;
      FailEveryAllocation([&] { rewound.Reset(); },
                          [&] { ASSERT_EQ(Walk(W(rewound)), From(all, taken)); });
      ASSERT_EQ(Walk(rewound), all);
      Point point;
      allocations += FailEveryAllocation([&] { point = walker.NextPoint(); }, isWhereItWas);
      ASSERT_EQ(point, all[taken]);
    }
    ASSERT_FALSE(walker.MorePoints());
  });
  EXPECT_GT(allocations, 10); // oblique areas build a line a run, solids an area a slice
}

TEST(AreaAllocationFailure, AreasLeaveTheCornersWithTheCaller) {
  for (PointList const& given : {c_line, c_flat, c_upright, c_oblique})
    for (bool const border : {true, false}) {
      PointList corners = given;
      EXPECT_GT(
          FailEveryAllocation([&] { CBresenhamAreaVisitor(corners, 3, NEIGHBORHOOD_26, border); },
                              [&] { EXPECT_EQ(corners, given); }),
          0);
      EXPECT_TRUE(corners.empty());
    }
}

TEST(AreaAllocationFailure, PolygonsAreBuiltWholeOrNotAtAll) {
  PointList const outline = c_oblique;
  CPolygonVisitor polygon(c_flat, 2, NEIGHBORHOOD_8, true);
  PointList const before = Walk(CPolygonVisitor(polygon));
  EXPECT_GT(FailEveryAllocation(
                [&] { polygon = CPolygonVisitor(outline, {c_hole}, 3, NEIGHBORHOOD_26, false); },
                [&] { EXPECT_EQ(Walk(CPolygonVisitor(polygon)), before); }),
            5);
  EXPECT_EQ(Walk(polygon), Walk(CPolygonVisitor(outline, {c_hole}, 3, NEIGHBORHOOD_26, false)));
}

TEST(AreaAllocationFailure, SlicesLeaveThePointsWithTheCaller) {
  PointList const given{{0, 0, 6}, {5, 0, 0}, {0, 4, 3}};
  PointList points = given;
  FailEveryAllocation([&] { CCutSlice(points, NEIGHBORHOOD_26); },
                      [&] { EXPECT_EQ(points, given); });
  EXPECT_TRUE(points.empty());
}

TEST(AreaAllocationFailure, SlicesKeepTheirWalkWhereAnotherImageSizeFails) {
  auto slice = Sized(CCutSlice({2, 3, 5}, 20, NEIGHBORHOOD_26));
  slice.NextPoint();
  PointList const rest = Walk(CCutSlice(slice));
  auto const isUnchanged = [&] {
    EXPECT_EQ(slice.Steps(), rest.size() + 1);
    EXPECT_EQ(Walk(CCutSlice(slice)), rest);
  };
  EXPECT_GT(FailEveryAllocation([&] { slice.SetImageSize(Point(9, 9, 9)); }, isUnchanged), 1);
  CCutSlice other({2, 3, 5}, 20, NEIGHBORHOOD_26);
  other.SetImageSize(Point(9, 9, 9));
  EXPECT_EQ(Walk(slice), Walk(other));
}

TEST(AreaAllocationFailure, PlaneSectionsAllocateNothing) {
  EXPECT_EQ(FailEveryAllocation(
                [] {
                  auto section = Sized(CPlaneSection({0, 0, 6}, {5, 0, 0}, {0, 4, 3}));
                  while (section.MorePoints()) section.NextPoint();
                  section.Reset();
                },
                [] {}),
            0);
}

TEST(AreaAllocationFailure, SolidsLeaveTheirPointsWithTheCaller) {
  PointList path = c_boxPath;
  EXPECT_GT(FailEveryAllocation([&] { CBresenhamVolumeVisitor(path, NEIGHBORHOOD_26, false); },
                                [&] { EXPECT_EQ(path, c_boxPath); }),
            10);
  EXPECT_TRUE(path.empty());
  PointList from = c_tipFrom, to = c_tipTo;
  EXPECT_GT(FailEveryAllocation([&] { CBresenhamVolumeVisitor(from, to, NEIGHBORHOOD_6, true); },
                                [&] {
                                  EXPECT_EQ(from, c_tipFrom);
                                  EXPECT_EQ(to, c_tipTo);
                                }),
            10);
  EXPECT_TRUE(from.empty());
  EXPECT_TRUE(to.empty());
}

TEST(AreaAllocationFailure, SolidsKeepTheirWalkWhereTheirBorderCannotBeBuiltAnew) {
  CBresenhamVolumeVisitor solid(PointList(c_boxPath), NEIGHBORHOOD_26, true);
  solid.NextPoint();
  PointList const rest = Walk(CBresenhamVolumeVisitor(solid));
  auto const isUnchanged = [&] { EXPECT_EQ(Walk(CBresenhamVolumeVisitor(solid)), rest); };
  EXPECT_GT(FailEveryAllocation([&] { solid.ComputeBorder(); }, isUnchanged), 5);
  EXPECT_FALSE(solid.MorePoints()); // until it is reset
  EXPECT_GT(FailEveryAllocation([&] { solid.CountSteps(); }, [] {}), 5);
  solid.Reset();
  EXPECT_EQ(From(Walk(solid), 1), rest);
}
