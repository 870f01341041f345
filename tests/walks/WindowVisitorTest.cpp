#include <SeluUtils/ImageWalker.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

using namespace ORVA;
using namespace test;

namespace {

void ExpectOver(CWindowVisitor& window) {
  EXPECT_FALSE(window.MorePoints());
  ExpectError([&] { (void)window.NextPoint(); }, "Point outside Window in CWindowVisitor",
              "ORVA::CWindowVisitor::NextPoint", "src/Utils/ImageWalker");
}
} // namespace

TEST(Window, IsWalkedInRasterOrder) {
  CWindowVisitor window(Point(0, 0, 0), Point(1, 1, 0));
  EXPECT_EQ(window.Steps(), 4U);
  EXPECT_FALSE(window.empty());
  EXPECT_EQ(Walk(window), (PointList{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}));
  ExpectOver(window);
  EXPECT_EQ(window.Steps(), 4U);
}

TEST(Window, MayLieAnywhere) {
  CWindowVisitor window(Point(-2, 3, -5), Point(-1, 5, -4));
  EXPECT_EQ(window.Steps(), 12U);
  EXPECT_EQ(Walk(window), BoxPoints({-2, 3, -5}, {-1, 5, -4}));
}

TEST(Window, ByDefaultIsAnOriginAlreadyWalked) {
  CWindowVisitor window;
  EXPECT_EQ(window.Steps(), 1U);
  ExpectOver(window);
  window.SetImageSize(CSize(4, 4));
  EXPECT_EQ(Walk(window), (PointList{{0, 0, 0}}));
}

TEST(Window, IsClippedToTheImageAndStartsAnew) {
  CWindowVisitor window(Point(-1, 1, -7), Point(5, 9, 7));
  (void)window.NextPoint();
  window.SetImageSize(CSize(3, 3));
  EXPECT_EQ(window.Low(), Point(0, 1, 0));
  EXPECT_EQ(window.High(), Point(2, 2, 0));
  EXPECT_EQ(window.Steps(), 6U);
  EXPECT_EQ(Walk(window), BoxPoints({0, 1, 0}, {2, 2, 0}));
  window.SetImageSize(Point(2, 9, 9));
  EXPECT_EQ(Walk(window), BoxPoints({0, 1, 0}, {1, 2, 0}));
}

TEST(Window, LowAboveHighHasNoPoints) {
  for (Point const& high : {Point(1, 5, 5), Point(5, 1, 5), Point(5, 5, 1), Point(1, 1, 1)}) {
    CWindowVisitor window(Point(2, 2, 2), high);
    ExpectOver(window);
    window.SetImageSize(CSize(10, 10, 10));
    ExpectOver(window);
  }
}

TEST(Window, StepsAreTakenFromTheCornersAsTheyStand) {
  EXPECT_TRUE(CWindowVisitor(Point(2, 0, 0), Point(1, 5, 5)).empty());
  CWindowVisitor outside(Point(5, 0, 0), Point(7, 1, 0)); // clipped to x from 5 to 3
  outside.SetImageSize(CSize(4, 4));
  EXPECT_EQ(static_cast<int64>(outside.Steps()), -2);
  EXPECT_FALSE(outside.empty());
  ExpectOver(outside);
}

TEST(Window, ImageWithoutExtentLeavesNoPoints) {
  for (Point const& extents : {Point(0, 4, 4), Point(4, -3, 4), Point(c_min, c_min, c_min)}) {
    CWindowVisitor window(Point(0, 0, 0), Point(3, 3, 3));
    window.SetImageSize(extents);
    ExpectOver(window);
  }
}

TEST(Window, ReachesToTheEndsOfTheRange) {
  CWindowVisitor top(Point(c_max - 1, c_max, c_max), Point(c_max, c_max, c_max));
  EXPECT_EQ(top.Steps(), 2U);
  EXPECT_EQ(Walk(top), (PointList{{c_max - 1, c_max, c_max}, {c_max, c_max, c_max}}));
  ExpectOver(top);
  CWindowVisitor bottom(Point(c_min, c_min, c_min), Point(c_min + 1, c_min, c_min));
  EXPECT_EQ(Walk(bottom).size(), 2U);
}

TEST(Window, WithoutBoundsIsTheWholeImage) {
  CWindowVisitor window(Point(c_min, c_min, c_min), Point(c_max, c_max, c_max));
  window.SetImageSize(CSize(3, 2, 2));
  EXPECT_EQ(Walk(window), BoxPoints({0, 0, 0}, {2, 1, 1}));
}
