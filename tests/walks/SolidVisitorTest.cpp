#include "support/FailingAllocation.h"
#include "support/WalkTest.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/SolidVisitor.h>
#include <SeluUtils/Voxels.h>
#include <SeluUtils/Walker.h>
#include <SeluUtils/WindowVisitor.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>

#include <sys/mman.h>

namespace {

using namespace ORVA;
using namespace test;
using Face = CSolidVisitor::Face;
using Faces = std::vector<Face>;
using Triangles = std::vector<CSolidVisitor::Triangle>;

static_assert(RewindableWalker<CSolidVisitor> && RunWalker<CSolidVisitor> &&
              SizedWalker<CSolidVisitor>);

// The corner numbers of a box have bit 0 for high x, bit 1 for high y, bit 2 for high z.
PointList BoxCorners(Point const& low, Point const& high) {
  PointList corners;
  for (int k = 0; k < 8; ++k)
    corners.emplace_back((k & 1) != 0 ? high.x : low.x, (k & 2) != 0 ? high.y : low.y,
                         (k & 4) != 0 ? high.z : low.z);
  return corners;
}
Faces const c_boxFaces{{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                       {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
Triangles const c_tetrahedron{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};

// Corner 0 and, at some distance from it along each axis, the three others.
PointList SimplexCorners(Point const& origin, int64 x, int64 y, int64 z) {
  return {origin, origin + Point(x, 0, 0), origin + Point(0, y, 0), origin + Point(0, 0, z)};
}

uint64 Binomial3(uint64 n) { return n * (n - 1) / 2 * (n - 2) / 3; }

TEST(SolidVisitor, ABoxHasItsPointsWithAndWithoutBorder) {
  PointList const corners = BoxCorners({-2, 5, 0}, {1, 7, 2});
  EXPECT_EQ(Walk(CSolidVisitor(corners, c_boxFaces, NEIGHBORHOOD_26, true)),
            BoxPoints({-2, 5, 0}, {1, 7, 2}));
  EXPECT_EQ(Walk(CSolidVisitor(corners, c_boxFaces, NEIGHBORHOOD_26, false)),
            BoxPoints({-1, 6, 1}, {0, 6, 1}));
  EXPECT_EQ(Walk(CSolidVisitor(corners, c_boxFaces, EnBoundary::HalfOpen)),
            BoxPoints({-2, 5, 0}, {0, 6, 1}));
}

TEST(SolidVisitor, WithoutFacesThereIsNothing) {
  EXPECT_TRUE(CSolidVisitor().empty());
  CSolidVisitor none(PointList{}, Faces{}, NEIGHBORHOOD_6, true);
  EXPECT_FALSE(none.MorePoints());
  EXPECT_EQ(none.NextPoint(), Point());
  EXPECT_EQ(none.NextRun(), StRun());
  EXPECT_TRUE(CSolidVisitor(PointList{{1, 2, 3}}, Faces{{}}, EnBoundary::Closed).empty());
}

TEST(SolidVisitor, ThinSolidsHaveTheirSurface) {
  // Two faces on each other, a face folded to a line, one to a point.
  PointList const corners{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
  auto const count = [&](Triangles const& triangles, EnBoundary boundary) {
    return CSolidVisitor(corners, triangles, boundary).Steps();
  };
  EXPECT_EQ(count({{0, 1, 2}, {0, 1, 2}}, EnBoundary::Closed), 6U);
  EXPECT_EQ(count({{0, 1, 2}, {0, 1, 2}}, EnBoundary::Open), 0U);
  EXPECT_EQ(count({{0, 1, 1}}, EnBoundary::Closed), 3U);
  EXPECT_EQ(count({{2, 2, 2}}, EnBoundary::HalfOpen), 0U);
  EXPECT_EQ(CSolidVisitor(corners, Triangles{{2, 2, 2}}, NEIGHBORHOOD_6, true).Steps(), 1U);
}

TEST(SolidVisitor, ACavityIsLeftOutWhateverItsOrientation) {
  PointList corners = BoxCorners({0, 0, 0}, {6, 6, 6});
  for (Point const& p : BoxCorners({2, 2, 2}, {4, 4, 4})) corners.push_back(p);
  Faces faces = c_boxFaces, turned = c_boxFaces;
  for (Face const& face : c_boxFaces) {
    faces.push_back({face[0] + 8, face[1] + 8, face[2] + 8, face[3] + 8});
    turned.push_back({face[3] + 8, face[2] + 8, face[1] + 8, face[0] + 8});
  }
  auto const count = [&](Faces const& given, EnBoundary boundary, EnWinding winding) {
    return CSolidVisitor(corners, given, boundary, winding).Steps();
  };
  EXPECT_EQ(count(faces, EnBoundary::Closed, EnWinding::EvenOdd), 343U - 1U);
  EXPECT_EQ(count(faces, EnBoundary::Open, EnWinding::EvenOdd), 125U - 27U);
  EXPECT_EQ(count(turned, EnBoundary::Open, EnWinding::EvenOdd), 125U - 27U);
  EXPECT_EQ(count(turned, EnBoundary::Closed, EnWinding::NonZero), 343U - 1U);
  EXPECT_EQ(count(faces, EnBoundary::Closed, EnWinding::NonZero), 343U);
}

TEST(SolidVisitor, ConcaveFacesMayMeetEdgesAtCornersOfTheirOwn) {
  // An L-shaped prism whose outer walls are cut at corners that its L-shaped faces do not have.
  PointList corners;
  for (int64 const z : {0, 3})
    for (Point const& p :
         PointList{{0, 0, z}, {4, 0, z}, {4, 2, z}, {2, 2, z}, {2, 4, z}, {0, 4, z}})
      corners.push_back(p);
  corners.insert(corners.end(), {{1, 0, 0}, {1, 0, 3}});
  Faces const faces{{5, 4, 3, 2, 1, 0}, {6, 7, 8, 9, 10, 11}, {0, 12, 13, 6},
                    {12, 1, 7, 13},     {1, 2, 8, 7},         {2, 3, 9, 8},
                    {3, 4, 10, 9},      {4, 5, 11, 10},       {5, 0, 6, 11}};
  EXPECT_EQ(CSolidVisitor(corners, faces, EnBoundary::Closed).Steps(), 21U * 4U);
  EXPECT_EQ(CSolidVisitor(corners, faces, EnBoundary::Open, EnWinding::NonZero).Steps(), 5U * 2U);
}

TEST(SolidVisitor, PointsOfASimplexAreCounted) {
  constexpr int64 c_side = 1000;
  PointList const corners = SimplexCorners({-7, 9, 400}, c_side, c_side, c_side);
  EXPECT_EQ(CSolidVisitor(corners, c_tetrahedron, EnBoundary::Closed).Steps(),
            Binomial3(c_side + 3));
  EXPECT_EQ(CSolidVisitor(corners, c_tetrahedron, EnBoundary::Open).Steps(), Binomial3(c_side - 1));
}

TEST(SolidVisitor, TheLargestDistancesAreExact) {
  constexpr int64 far = int64{1} << 62, longest = std::numeric_limits<std::int32_t>::max();
  for (Point const& origin : {Point(far - longest, -far, far - 2), Point(-far, far - 2, -far)}) {
    PointList const corners = SimplexCorners(origin, longest, 2, 2);
    // Rows of longest + 1, twice half as many, and three ends.
    constexpr uint64 c_points = uint64{longest} + 1 + 2 * (uint64{1} << 30) + 3;
    EXPECT_EQ(CSolidVisitor(corners, c_tetrahedron, EnBoundary::Closed).Steps(), c_points);
    EXPECT_EQ(CSolidVisitor(corners, c_tetrahedron, NEIGHBORHOOD_26, false).Steps(), 0U);
  }
  constexpr int64 c_unit = 1 << 20, c_side = 2047;
  for (int64 const shift : {int64{1} - c_unit, far / c_unit / 2 * c_unit}) {
    PointList const corners =
        SimplexCorners({shift, shift, shift}, c_side * c_unit, c_side * c_unit, c_side * c_unit);
    CSolidVisitor const simplex(corners, c_tetrahedron, EnBoundary::Closed, EnWinding::NonZero,
                                c_unit);
    // Moved by next to a voxel it has the points of a simplex of which three layers are missing.
    EXPECT_EQ(simplex.Steps(), Binomial3(shift % c_unit == 0 ? c_side + 3 : c_side));
  }
}

TEST(SolidVisitor, CornersMayLieBetweenTheVoxels) {
  PointList const corners = BoxCorners({-5, 5, 15}, {15, 24, 20}); // in tenths
  CSolidVisitor const box(corners, c_boxFaces, EnBoundary::Closed, EnWinding::EvenOdd, 10);
  EXPECT_EQ(Walk(CSolidVisitor(box)), BoxPoints({0, 1, 2}, {1, 2, 2}));
}

TEST(SolidVisitor, RunsCanBeTakenInTurnsWithPoints) {
  CSolidVisitor box(BoxCorners({0, 0, 5}, {3, 1, 5 + 1}), c_boxFaces, EnBoundary::Closed);
  EXPECT_EQ(box.Remaining(), 16U);
  EXPECT_EQ(box.NextPoint(), Point(0, 0, 5));
  EXPECT_EQ(box.NextRun(), (StRun{{1, 0, 5}, 0, 3}));
  EXPECT_EQ(box.NextRun(), (StRun{{0, 1, 5}, 0, 4}));
  EXPECT_EQ(box.Remaining(), 8U);
  box.Rewind();
  EXPECT_EQ(box.Remaining(), 16U);
}

TEST(SolidVisitor, PaintsAnImageByItsRuns) {
  CImage image(IMAGE_GREY_8, CSize(4, 4, 4));
  CSolidVisitor box(BoxCorners({1, 1, 1}, {9, 2, 2}), c_boxFaces, EnBoundary::Closed);
  for (auto const& p : box) EXPECT_GE(p.x, 1);
  box.Rewind();
  for (std::uint8_t& value : Voxels<std::uint8_t>(image, box)) value = 7;
  uint64 sum = 0;
  ForEachVoxel(image, CWindowVisitor({0, 0, 0}, {3, 3, 3}),
               [&](auto value) { sum += static_cast<uint64>(value); });
  EXPECT_EQ(sum, 7U * 3 * 2 * 2);
}

TEST(SolidVisitor, BadArgumentsAreRefusedByName) {
  constexpr int64 high = std::numeric_limits<int64>::max();
  PointList const simplex = SimplexCorners({}, 1, 1, 1);
  PointList const bent{{0, 0, 0}, {1, 0, 0}, {1, 1, 1}, {0, 1, 0}};
  struct {
    PointList corners;
    Faces faces;
    int64 unit;
    EnWinding winding;
    char const* message;
  } const cases[] = {
      {simplex, {{0, 1, 2}, {0, 4, 1}}, 1, EnWinding::EvenOdd, "face 1 names corner 4 of 4"},
      {simplex, {}, 0, EnWinding::EvenOdd, "unit 0 is not from 1 to 1048576"},
      {simplex, {}, 1048577, EnWinding::EvenOdd, "unit 1048577 is not from 1 to 1048576"},
      {SimplexCorners({}, high, 1, 1),
       {{0, 1, 2}},
       1,
       EnWinding::EvenOdd,
       "corner coordinate 9223372036854775807 lies beyond 2^62"},
      {SimplexCorners({0, 0, -1}, 1, 1, 2147483648),
       {{0, 1, 3}},
       1,
       EnWinding::EvenOdd,
       "corner coordinates from -1 to 2147483647 lie more than 2147483647 apart"},
      {bent,
       {{0, 1, 2, 3}, {0, 1, 2, 3}},
       1,
       EnWinding::EvenOdd,
       "face 0 is not flat: corner (0, 1, 0) lies off its plane"},
      {simplex,
       {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}},
       1,
       EnWinding::EvenOdd,
       "the surface is not closed: its edge from (0, 1, 0) to (0, 0, 1) has an odd number of "
       "faces"},
      {simplex,
       {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 2, 3}},
       1,
       EnWinding::NonZero,
       "the surface is not closed or not oriented: its faces pass the edge from (0, 1, 0) to "
       "(0, 0, 1) more often in one direction than in the other"}};
  for (auto const& c : cases)
    ExpectError<CExBadParam>(
        [&] { CSolidVisitor solid(c.corners, c.faces, EnBoundary::Open, c.winding, c.unit); },
        c.message, "ORVA::CSolidVisitor::CSolidVisitor", "src/Utils/SolidVisitor");
  ExpectError<CExBadParam>(
      [&] { CSolidVisitor solid(simplex, c_tetrahedron, NEIGHBORHOOD_8, false); },
      "neighborhood 9 is none of 6, 14.1, 14.2 and 26 (12, 15, 18, 21)",
      "ORVA::CSolidVisitor::CSolidVisitor", "src/Utils/SolidVisitor");
}

TEST(SolidVisitor, CornersThatNoFaceNamesMayLieAnywhere) {
  PointList corners = SimplexCorners({}, 2, 2, 2);
  corners.emplace_back(std::numeric_limits<int64>::min(), 0, 0);
  EXPECT_EQ(CSolidVisitor(corners, c_tetrahedron, EnBoundary::Closed).Steps(), 10U);
}

// Addresses without memory behind them: corners that no face names are not read.
TEST(SolidVisitor, MoreCornersThan32BitsCountAreRefused) {
  constexpr std::size_t count = std::size_t{INT32_MAX} + 1, bytes = count * sizeof(CTriple<int64>);
  void* const addresses =
      ::mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (addresses == MAP_FAILED) GTEST_SKIP() << "no room for 48 GiB of addresses";
  std::span const corners(static_cast<CTriple<int64> const*>(addresses), count);
  ExpectError<CExBadParam>([&] { CSolidVisitor solid(corners, Faces(), EnBoundary::Open); },
                           "2147483648 corners of faces are more than 2147483647",
                           "ORVA::CSolidVisitor::CSolidVisitor");
  ::munmap(addresses, bytes);
}

TEST(SolidVisitor, AssignmentIsWholeOrNotAtAll) {
  CSolidVisitor const other(SimplexCorners({}, 9, 9, 9), c_tetrahedron, NEIGHBORHOOD_26, true);
  CSolidVisitor walk(SimplexCorners({}, 4, 4, 4), c_tetrahedron, NEIGHBORHOOD_26, true);
  walk.NextPoint();
  PointList const rest = Walk(CSolidVisitor(walk));
  EXPECT_GT(test::FailEveryAllocation([&] { walk = other; },
                                      [&] { ASSERT_EQ(Walk(CSolidVisitor(walk)), rest); }),
            0);
  EXPECT_EQ(Walk(walk), Walk(CSolidVisitor(other)));
}

TEST(SolidVisitor, ThatWasMovedFromHasNoPoints) {
  CSolidVisitor walk(SimplexCorners({}, 4, 4, 4), c_tetrahedron, NEIGHBORHOOD_26, true);
  PointList const all = Walk(CSolidVisitor(walk));
  CSolidVisitor moved = std::move(walk);
  EXPECT_EQ(Walk(moved), all);
  // NOLINTBEGIN(bugprone-use-after-move): what it does then is what is tested
  EXPECT_FALSE(walk.MorePoints());
  EXPECT_EQ(walk.Remaining(), 0U);
  EXPECT_TRUE(walk.empty());
  walk.Rewind();
  EXPECT_EQ(walk.NextRun().length, 0);
  // NOLINTEND(bugprone-use-after-move)
}

TEST(SolidVisitor, MemoryThatRunsOutLeavesNothingBehind) {
  PointList const corners = SimplexCorners({}, 30, 30, 30);
  EXPECT_GT(test::FailEveryAllocation(
                [&] { CSolidVisitor solid(corners, c_tetrahedron, NEIGHBORHOOD_26, true); }, [] {}),
            10);
}

} // namespace
