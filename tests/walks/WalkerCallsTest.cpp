// Points and sizes written in braces: every walker takes them.
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/StraightLineVisitor.h>
#include <SeluUtils/UnitLineVisitor.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <concepts>

using namespace ORVA;
using namespace test;

namespace {

// Three extents in braces, two of them, a size and a point: the walks in the same image.
template <class W>
void ExpectTakesSizesInBraces(W const& walker) {
  W inBraces = walker, ofSize = walker, ofPoint = walker;
  inBraces.SetImageSize({5, 4, 1});
  ofSize.SetImageSize(CSize(5, 4, 1));
  ofPoint.SetImageSize(Point(5, 4, 1));
  PointList const points = Walk(inBraces);
  EXPECT_FALSE(points.empty());
  EXPECT_EQ(Walk(ofSize), points);
  EXPECT_EQ(Walk(ofPoint), points);
  if constexpr (!std::same_as<W, CCutSlice>) { // its images have three dimensions
    W ofTwo = walker;
    ofTwo.SetImageSize({5, 4});
    EXPECT_EQ(Walk(ofTwo), points);
  }
}

} // namespace

TEST(WalkerCalls, LinesTakePointsInBraces) {
  Point const from(0, 0, 0), to(5, 5, 5);
  CBresenhamVisitor const line({0, 0, 0}, {5, 5, 5}, 3, NEIGHBORHOOD_26, true);
  PointList const points = Walk(CBresenhamVisitor(from, to, 3, NEIGHBORHOOD_26, true));
  EXPECT_EQ(Walk(CBresenhamVisitor(line)), points);
  EXPECT_EQ(Walk(CBresenhamVisitor(from, {5, 5, 5}, 3, NEIGHBORHOOD_26, true)), points);
  EXPECT_EQ(Walk(CBresenhamVisitor({0, 0, 0}, to, 3, NEIGHBORHOOD_26, true)), points);
  EXPECT_EQ(Walk(CBresenhamVisitor(CSize(0, 0, 0), {5, 5, 5}, 3, NEIGHBORHOOD_26, true)), points);
  EXPECT_EQ(Walk(CBresenhamVisitor({0, 0}, {5, 5}, 2, NEIGHBORHOOD_8, true)).back(),
            Point(5, 5, 1)); // two numbers are a size, whose z is 1
  EXPECT_EQ(
      Walk(CBresenhamVisitor({1, 1, 1}, {1.0, 0.0, 0.0}, 4.0, 3, NEIGHBORHOOD_26, true)).size(),
      5U);
  CBresenhamVisitorSelect part({-2, 0, 0}, {5, 0, 0}, 3, NEIGHBORHOOD_26, true);
  part.SetImageSize({3, 3, 3});
  EXPECT_EQ(Walk(part), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
}

TEST(WalkerCalls, BoxesAndPlanesTakePointsInBraces) {
  EXPECT_EQ(Walk(CWindowVisitor({0, 0, 0}, {1, 1, 1})).size(), 8U);
  EXPECT_EQ(CDirectionalVisitor({0, 0, 0}, {1, 1, 1}, {1, 0, 0}).Steps(), 8U);
  EXPECT_TRUE(CPlaneSection({0, 0, 0}, {9, 4, 0}, {0, 2, 7}).empty());
  EXPECT_TRUE(CPlaneSection({1, 2, 2}, 3.0).empty());
  EXPECT_TRUE(CCutSlice({1, 2, 2}, 3.0, NEIGHBORHOOD_26).empty());
  EXPECT_TRUE(CCutSlice({{0, 0, 0}, {9, 4, 0}, {0, 2, 7}}, NEIGHBORHOOD_26).empty());
}

TEST(WalkerCalls, OutlinesAndSolidsTakePointsInBraces) {
  EXPECT_EQ(
      CBresenhamAreaVisitor({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, 2, NEIGHBORHOOD_8, true).Steps(),
      6U);
  EXPECT_EQ(CPolygonVisitor({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, 2, NEIGHBORHOOD_8, true).Steps(),
            6U);
  EXPECT_EQ(
      CBresenhamVolumeVisitor({{0, 0, 0}, {2, 0, 0}, {0, 0, 0}}, NEIGHBORHOOD_26, true).Steps(),
      3U);
}

TEST(WalkerCalls, ImageSizesMayStandInBraces) {
  ExpectTakesSizesInBraces(CBresenhamVisitor({0, 0, 0}, {9, 3, 0}, 3, NEIGHBORHOOD_26, true));
  ExpectTakesSizesInBraces(CBresenhamVisitorSelect({0, 0, 0}, {9, 3, 0}, 3, NEIGHBORHOOD_26, true));
  ExpectTakesSizesInBraces(Impl::CVisitPoint({1, 2, 3}));
  ExpectTakesSizesInBraces(
      CBresenhamAreaVisitor({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, 2, NEIGHBORHOOD_8, true));
  ExpectTakesSizesInBraces(
      CPolygonVisitor({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, 2, NEIGHBORHOOD_8, true));
  ExpectTakesSizesInBraces(
      CBresenhamVolumeVisitor({{0, 0, 0}, {2, 0, 0}, {0, 0, 0}}, NEIGHBORHOOD_26, true));
  ExpectTakesSizesInBraces(CPlaneSection({1, 2, 2}, 3.0));
  ExpectTakesSizesInBraces(CCutSlice({0, 0, 1}, 0.0, NEIGHBORHOOD_26));
  ExpectTakesSizesInBraces(CWindowVisitor({0, 0, 0}, {9, 9, 9}));
  ExpectTakesSizesInBraces(CDirectionalVisitor({0, 0, 0}, {9, 9, 9}, {1, 0, 0}));
  ExpectTakesSizesInBraces(CDeltaVisitor({1, 0.5, 0.25}));
  ExpectTakesSizesInBraces(CParallelLineVisitor({1, 0.5, 0.25}));
  ExpectTakesSizesInBraces(CStraightLineVisitor({1, 0.5, 0.25}));
  ExpectTakesSizesInBraces(CUnitLineVisitor({0, 0, 0}, {9, 9, 9}, {1, 0, 0}));
  ExpectTakesSizesInBraces(CEllipsoidVisitor(CTriple<double>(1, 1, 0), 1.0));
}
