#include <SeluUtils/ImageWalker.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace ORVA;
using namespace test;

namespace {

char const c_message[] = "Invalid Direction given to CDirectionalIterator";

CDirectionalVisitor Lines(Point const& high, Point const& direction) {
  CDirectionalVisitor lines(Point(0, 0, 0), high, direction);
  lines.SetImageSize(CSize(100, 100, 100));
  return lines;
}

} // namespace

TEST(DirectionalLines, RunThroughTheBoxOneAfterTheOther) {
  auto lines = Lines({2, 2, 0}, {1, 0, 0});
  EXPECT_EQ(lines.Steps(), 9U);
  EXPECT_FALSE(lines.empty());
  EXPECT_EQ(Walk(lines), BoxPoints({0, 0, 0}, {2, 2, 0}));
  EXPECT_FALSE(lines.MorePoints());
}

TEST(DirectionalLines, DiagonalOnesStartOnTwoFaces) {
  EXPECT_EQ(Walk(Lines({2, 2, 0}, {1, 1, 0})), (PointList{{0, 0, 0},
                                                          {1, 1, 0},
                                                          {2, 2, 0},
                                                          {0, 1, 0},
                                                          {1, 2, 0},
                                                          {0, 2, 0},
                                                          {1, 0, 0},
                                                          {2, 1, 0},
                                                          {2, 0, 0}}));
}

TEST(DirectionalLines, NegativeDirectionsStartAtTheFarFaces) {
  EXPECT_EQ(Walk(Lines({2, 1, 0}, {-1, 0, 0})),
            (PointList{{2, 0, 0}, {1, 0, 0}, {0, 0, 0}, {2, 1, 0}, {1, 1, 0}, {0, 1, 0}}));
  // The low y face goes first, then the high x face without the voxel that both share.
  EXPECT_EQ(Walk(Lines({1, 1, 0}, {-1, 1, 0})),
            (PointList{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}));
}

TEST(DirectionalLines, AreClippedToTheImage) {
  CDirectionalVisitor lines(Point(-3, -3, -3), Point(50, 50, 50), Point(0, 1, 0));
  lines.SetImageSize(CSize(2, 2));
  EXPECT_EQ(lines.Steps(), 4U);
  EXPECT_EQ(Walk(lines), (PointList{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}}));
  lines.SetImageSize(Point(1, 2, 1));
  EXPECT_EQ(Walk(lines), (PointList{{0, 0, 0}, {0, 1, 0}}));
}

TEST(DirectionalLines, NewDirectionStartsAnew) {
  auto lines = Lines({1, 1, 0}, {1, 0, 0});
  (void)lines.NextPoint();
  lines.SetDirection(Point(0, -1, 0));
  EXPECT_EQ(Walk(lines), (PointList{{0, 1, 0}, {0, 0, 0}, {1, 1, 0}, {1, 0, 0}}));
}

TEST(DirectionalLines, DirectionAloneAlsoPreparesTheWalk) {
  CDirectionalVisitor lines(Point(5, 5, 5), Point(6, 5, 5), Point(0, 0, 1));
  lines.SetDirection(Point(1, 0, 0));
  EXPECT_EQ(Walk(lines), (PointList{{5, 5, 5}, {6, 5, 5}}));
}

TEST(DirectionalLines, UnpreparedWalkIsALineFromTheOrigin) {
  EXPECT_EQ(Walk(CDirectionalVisitor(Point(5, 5, 5), Point(6, 5, 5), Point(1, 0, 0))),
            (PointList{{0, 0, 0}}));
  EXPECT_EQ(Walk(CDirectionalVisitor(Point(0, 0, 0), Point(1, 1, 0), Point(1, 1, 0))),
            (PointList{{0, 0, 0}, {1, 1, 0}}));
}

TEST(DirectionalLines, InvalidDirectionIsRefusedAndChangesNothing) {
  auto lines = Lines({1, 0, 0}, {1, 0, 0});
  for (Point const& direction :
       {Point(2, 0, 0), Point(0, -2, 0), Point(1, 1, 5), Point(c_min, 0, 0), Point(0, 0, c_max)}) {
    ExpectError([&] { CDirectionalVisitor(Point(0, 0, 0), Point(1, 1, 1), direction); }, c_message,
                "ORVA::CDirectionalVisitor::CDirectionalVisitor", "src/utils/ImageWalker");
    ExpectError([&] { lines.SetDirection(direction); }, c_message,
                "ORVA::CDirectionalVisitor::SetDirection", "src/Utils/ImageWalker");
  }
  EXPECT_EQ(Walk(lines), (PointList{{0, 0, 0}, {1, 0, 0}}));
}

TEST(DirectionalLines, NullDirectionHasNoFaces) {
  CDirectionalVisitor lines(Point(0, 0, 0), Point(1, 1, 1), Point(0, 0, 0));
  EXPECT_THROW(lines.SetImageSize(CSize(2, 2, 2)), std::out_of_range);
  EXPECT_FALSE(lines.MorePoints());
  lines.SetDirection(Point(1, 0, 0));
  EXPECT_EQ(Walk(lines).size(), 8U);
  EXPECT_THROW(lines.SetDirection(Point(0, 0, 0)), std::out_of_range);
  EXPECT_FALSE(lines.MorePoints());
}

TEST(DirectionalLines, FirstFaceOfOneVoxelEndsTheWalkAfterItsLine) {
  EXPECT_EQ(Walk(Lines({2, 0, 0}, {1, 1, 0})), (PointList{{0, 0, 0}}));
  EXPECT_EQ(Walk(Lines({2, 0, 0}, {1, 0, 0})), (PointList{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
}

TEST(DirectionalLines, FaceThatAThinBoxLeavesEmptyIsSkipped) {
  EXPECT_EQ(Walk(Lines({0, 2, 0}, {1, 1, 0})), (PointList{{0, 0, 0}, {0, 1, 0}, {0, 2, 0}}));
}

TEST(DirectionalLines, BoxOutsideTheImageHasNoPoints) {
  struct StCase {
    Point low, high;
  };
  for (StCase const& c : {StCase{{5, 0, 0}, {7, 1, 0}},
                          {{-5, 0, 0}, {-1, 1, 0}},
                          {{3, 0, 0}, {1, 1, 0}},
                          {{c_max, 0, 0}, {c_max, 0, 0}}}) {
    CDirectionalVisitor lines(c.low, c.high, Point(1, 1, 0));
    lines.SetImageSize(CSize(4, 4));
    EXPECT_FALSE(lines.MorePoints());
  }
}

TEST(DirectionalLines, ImageWithoutExtentHasNoPoints) {
  for (Point const& extents : {Point(0, 4, 4), Point(4, -3, 4), Point(c_min, c_min, c_min)}) {
    CDirectionalVisitor lines(Point(0, 0, 0), Point(3, 3, 3), Point(1, 1, 0));
    lines.SetImageSize(extents);
    EXPECT_FALSE(lines.MorePoints());
  }
}

TEST(DirectionalLines, BoxAtTheEndOfTheRangeEndsThere) {
  CDirectionalVisitor lines(Point(c_max - 1, c_max, 0), Point(c_max, c_max, 1), Point(1, 0, 0));
  lines.SetDirection(Point(1, 1, 1));
  for (Point const& p : Walk(lines, 100)) {
    EXPECT_GE(p.x, c_max - 1);
    EXPECT_EQ(p.y, c_max);
  }
  EXPECT_FALSE(lines.MorePoints());
}

TEST(DirectionalLines, WithoutBoundsCoverTheWholeImage) {
  CDirectionalVisitor lines(Point(c_min, c_min, c_min), Point(c_max, c_max, c_max),
                            Point(-1, 1, -1));
  lines.SetImageSize(CSize(3, 4, 5));
  EXPECT_EQ(Sorted(Walk(lines, 1000)), BoxPoints({0, 0, 0}, {2, 3, 4}));
}
