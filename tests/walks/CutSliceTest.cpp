#include <SeluUtils/BresenhamVisitor.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Walker.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;
using Real = CTriple<double>;

static_assert(RewindableWalker<CCutSlice>);

namespace {

char const c_source[] = "src/Utils/BresenhamVisitor";
char const c_constructor[] = "ORVA::CCutSlice::CCutSlice";
char const c_computeMoves[] = "ORVA::CCutSlice::ComputeMoves";

CCutSlice Slice(Real const& normal, double distance, Point const& size,
                int64 neighborhood = NEIGHBORHOOD_26) {
  CCutSlice slice(normal, distance, neighborhood);
  slice.SetImageSize(size);
  return slice;
}

CCutSlice Slice(PointList points, Point const& size, int64 neighborhood = NEIGHBORHOOD_26) {
  CCutSlice slice(points, neighborhood);
  slice.SetImageSize(size);
  return slice;
}

struct StLattice {
  Point origin, first, second;
};

StLattice Initialization(CCutSlice const& slice, std::vector<Real>& corners) {
  StLattice lattice;
  slice.GetInitialization(lattice.origin, lattice.first, lattice.second, corners);
  return lattice;
}

} // namespace

TEST(CutSlice, ThroughThreeCornersOfAFaceIsTheFace) {
  Point const size(4, 3, 5);
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
    auto slice = Slice({{0, 0, 0}, {3, 0, 0}, {0, 2, 0}}, size, code);
    EXPECT_EQ(slice.Steps(), 12u);
    EXPECT_EQ(Sorted(Walk(slice)), BoxPoints({0, 0, 0}, {3, 2, 0}));
    EXPECT_FALSE(slice.MorePoints());
  }
}

TEST(CutSlice, PlanesAlongTwoAxesHaveEachPointOnce) {
  for (int64 x = 1; x <= 4; ++x)
    for (int64 y = 1; y <= 4; ++y)
      for (int64 z = 1; z <= 4; ++z)
        for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_26}) {
          Point const size(x, y, z), last = size + Point(-1, -1, -1);
          SCOPED_TRACE(testing::PrintToString(size));
          for (int64 k = 0; k < x; ++k)
            ASSERT_EQ(Sorted(Walk(Slice(Real(2, 0, 0), 2.0 * static_cast<double>(k), size, code))),
                      BoxPoints({k, 0, 0}, {k, last.y, last.z}));
          for (int64 k = 0; k < y; ++k)
            ASSERT_EQ(Sorted(Walk(Slice(Real(0, -1, 0), -static_cast<double>(k), size, code))),
                      BoxPoints({0, k, 0}, {last.x, k, last.z}));
          for (int64 k = 0; k < z; ++k)
            ASSERT_EQ(Sorted(Walk(Slice(Real(0, 0, 3), 3.0 * static_cast<double>(k), size, code))),
                      BoxPoints({0, 0, k}, {last.x, last.y, k}));
        }
}

TEST(CutSlice, DiagonalPlaneIsExact) {
  // x = y: every voxel with equal coordinates.
  PointList expected;
  for (int64 z = 0; z < 3; ++z)
    for (int64 k = 0; k < 4; ++k) expected.emplace_back(k, k, z);
  EXPECT_EQ(Sorted(Walk(Slice(Real(1, -1, 0), 0, {4, 4, 3}))), expected);
}

TEST(CutSlice, PointsAndNormalWithDistanceWalkTheSame) {
  struct StCase {
    PointList points;
    Real normal;
    double distance;
  };
  StCase const cases[] = {
      {{{0, 0, 4}, {1, 0, 4}, {0, 1, 4}}, {0, 0, 1}, 4},
      {{{6, 0, 0}, {0, 6, 0}, {0, 0, 6}}, {36, 36, 36}, 216},
      {{{15, 0, 0}, {0, 10, 0}, {0, 0, 5}}, {2, 3, 6}, 30},
      {{{3, 1, 2}, {7, 2, 0}, {1, 5, 3}}, {9, 0, 18}, 63},
  };
  Point const size(8, 8, 8);
  for (auto const& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.normal));
    auto const points = Walk(Slice(c.points, size));
    EXPECT_FALSE(points.empty());
    EXPECT_EQ(points, Walk(Slice(c.normal, c.distance, size)));
    EXPECT_EQ(points, Walk(Slice(c.normal * -1, -c.distance, size)));
  }
}

TEST(CutSlice, NormalIsTheCrossProductOfTheDifferences) {
  CCutSlice const slice({{1, 2, 3}, {2, 4, 9}, {-3, 5, 1}}, NEIGHBORHOOD_26);
  EXPECT_EQ(slice.Normal(), Real(-22, -22, 11)); // (1, 2, 6) x (-4, 3, -2)
  EXPECT_EQ(slice.Distance(), -33);
}

TEST(CutSlice, TouchingPlanesGiveTheCornerOrTheEdge) {
  EXPECT_EQ(Walk(Slice(Real(1, 1, 1), 0, {4, 4, 4})), (PointList{{0, 0, 0}}));
  EXPECT_EQ(Walk(Slice(Real(0.1, 0.2, 0.3), 0.1 * 3 + 0.2 * 3 + 0.3 * 3, {4, 4, 4})),
            (PointList{{3, 3, 3}}));
  EXPECT_EQ(Sorted(Walk(Slice(Real(1, 1, 0), 0, {3, 3, 3}))),
            (PointList{{0, 0, 0}, {0, 0, 1}, {0, 0, 2}}));
  EXPECT_EQ(Sorted(Walk(Slice(Real(0, 0.1, 0.7), 0.1 * 4 + 0.7 * 4, {3, 5, 5}))),
            (PointList{{0, 4, 4}, {1, 4, 4}, {2, 4, 4}}));
}

TEST(CutSlice, CutsThatNearlyPassThroughACornerAreSnappedOntoIt) {
  // The plane z = x / 3 * 3 / 7 * 7 leaves the faces by some units in the last place.
  Real const normal(0.1 * 3, 0, -0.3);
  EXPECT_EQ(Sorted(Walk(Slice(normal, 0, {4, 2, 4}))),
            Sorted(Walk(Slice(Real(1, 0, -1), 0, {4, 2, 4}))));
}

TEST(CutSlice, OriginIsTheFirstCornerWithAnAngleOfAtMost90DegreesElseTheSharpest) {
  struct StCase {
    char const* what;
    Real normal;
    double distance;
    std::vector<Real> corners; // counter-clockwise seen along the largest normal component
    StLattice lattice;
  };
  // The angle judged first is that of the second corner.
  StCase const cases[] = {
      {"face",
       {0, 0, 1},
       0,
       {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}},
       {{4, 0, 0}, {0, 4, 0}, {-4, 0, 0}}},
      {"60 degrees everywhere",
       {1, 1, 1},
       2,
       {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}},
       {{0, 2, 0}, {0, -2, 2}, {2, -2, 0}}},
      {"six times 120 degrees: the first of equals, edges lengthened from 2 voxels to 4",
       {1, 1, 1},
       6,
       {{4, 2, 0}, {2, 4, 0}, {0, 4, 2}, {0, 2, 4}, {2, 0, 4}, {4, 0, 2}},
       {{2, 4, 0}, {-4, 0, 4}, {4, -4, 0}}},
      {"corner", {1, 1, 1}, 0, {{0, 0, 0}}, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}},
      {"edge", {1, 0, 1}, 0, {{0, 4, 0}, {0, 0, 0}}, {{0, 4, 0}, {0, -4, 0}, {0, 0, 0}}},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.what);
    auto corners = c.corners;
    auto const lattice = Initialization(Slice(c.normal, c.distance, {5, 5, 5}), corners);
    EXPECT_EQ(lattice.origin, c.lattice.origin);
    EXPECT_EQ(lattice.first, c.lattice.first);
    EXPECT_EQ(lattice.second, c.lattice.second);
    EXPECT_EQ(corners, c.corners);
  }
}

TEST(CutSlice, InitializationOrdersAndMergesTheCorners) {
  auto const slice = Slice(Real(0, 0, 1), 2, {5, 5, 5});
  std::vector<Real> corners = {{0, 0, 2}, {4, 4, 2}, {1e-10, 0, 2},
                               {0, 4, 2}, {4, 0, 2}, {4, 4 - 1e-10, 2}};
  Initialization(slice, corners);
  EXPECT_EQ(corners, (std::vector<Real>{{0, 0, 2}, {4, 0, 2}, {4, 4, 2}, {0, 4, 2}}));
}

TEST(CutSlice, CornersThatShareNoFaceAreRefused) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  auto const slice = Slice(Real(0, 0, 1), 2, {5, 5, 5});
  std::vector<Real> const cases[] = {
      {},
      {{1, 1, 2}, {3, 1, 2}, {3, 3, 2}},
      {{0, 0, 2}, {4, 4, 2}},
      {{0, 0, 2}, {4, 0, nan}, {4, 4, 2}},
      {{0, 0, 2}, {infinity, 0, 2}, {infinity, 4, 2}},
  };
  for (auto corners : cases)
    ExpectError([&] { Initialization(slice, corners); }, "no valid configuration possible",
                "ORVA::CCutSlice::GetInitialization", c_source);
}

TEST(CutSlice, LineIsValidOnACommonFace) {
  auto const slice = Slice(Real(0, 0, 1), 0, {5, 6, 7});
  struct StCase {
    Real a, b;
    bool isValid;
  };
  StCase const cases[] = {
      {{0, 1, 2}, {0, 3, 5}, true},  {{4, 1, 2}, {4, 3, 5}, true},  {{1, 0, 2}, {3, 0, 5}, true},
      {{1, 5, 2}, {3, 5, 4}, true},  {{1, 1, 0}, {3, 2, 0}, true},  {{1, 1, 6}, {3, 2, 6}, true},
      {{2, 1, 2}, {2, 3, 5}, false}, {{0, 1, 2}, {4, 3, 5}, false}, {{5, 1, 2}, {5, 3, 4}, false},
  };
  for (auto const& c : cases)
    EXPECT_EQ(slice.lineValid(c.a, c.b), c.isValid)
        << testing::PrintToString(c.a) << testing::PrintToString(c.b);
}

TEST(CutSlice, TakesThePointsOverUnlessItThrows) {
  PointList points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  CCutSlice const slice(points, NEIGHBORHOOD_26);
  EXPECT_TRUE(points.empty());
  EXPECT_EQ(points.capacity(), 0u);
  PointList line = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}};
  ExpectError([&] { CCutSlice(line, NEIGHBORHOOD_26); }, "the three points are lying in a line");
  EXPECT_EQ(line.size(), 3u);
}

TEST(CutSlice, NeedsThreePoints) {
  for (std::size_t const count : {0u, 1u, 2u, 4u})
    ExpectError([&] { CCutSlice(PointList(count), NEIGHBORHOOD_26); },
                "The Slice has to be defined by exactly 3 points.", c_constructor, c_source);
}

TEST(CutSlice, EqualRatiosAreALine) {
  PointList const lines[] = {
      {{0, 0, 0}, {1, 2, 3}, {2, 4, 6}},
      {{5, 5, 5}, {4, 4, 4}, {9, 9, 9}},
      {{1, 1, 1}, {1, 1, 1}, {2, 3, 4}}, // 0 / 1 on every axis
      {{1, 1, 1}, {2, 3, 4}, {1, 1, 1}}, // 1 / 0 on every axis
  };
  for (auto const& line : lines)
    ExpectError([&] { CCutSlice(PointList(line), NEIGHBORHOOD_26); },
                "the three points are lying in a line", c_constructor, c_source);
}

TEST(CutSlice, LinesWithZeroComponentsPassAndMeetNoImage) {
  PointList const lines[] = {
      {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}},
      {{0, 0, 3}, {0, 0, 4}, {0, 0, 9}},
      {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}},
  };
  for (auto const& line : lines) {
    CCutSlice slice(PointList(line), NEIGHBORHOOD_26);
    ExpectError([&] { slice.SetImageSize(CSize(10, 10, 10)); }, "plane not in image",
                c_computeMoves, c_source);
  }
}

TEST(CutSlice, PointsThatOverflowAreRefused) {
  ExpectError<CExBadParam>(
      [] {
        CCutSlice({{c_min, 0, 0}, {c_max, 0, 0}, {0, 1, 0}}, NEIGHBORHOOD_26);
      },
      "difference from -9223372036854775808 to 9223372036854775807 does not fit 64 bits",
      c_constructor, c_source);
  // The largest differences there are have a cross product beyond 128 bits; nothing overflows.
  CCutSlice const largest({{0, 0, 0}, {c_min, c_min, 0}, {c_min, c_max, 0}}, NEIGHBORHOOD_26);
  EXPECT_EQ(largest.Normal(), Real(0, 0, -0x1p127));
}

TEST(CutSlice, ImageMustHaveThreeDimensions) {
  CCutSlice slice(Real(0, 0, 1), 0, NEIGHBORHOOD_26);
  for (auto const& size : {CSize(), CSize(5), CSize(5, 5)})
    ExpectError([&] { slice.SetImageSize(size); }, "invalid dimension",
                "ORVA::CCutSlice::SetImageSize", c_source);
  slice.SetImageSize(Point(5, 5, 1)); // extents alone are taken as they are
  EXPECT_EQ(slice.Steps(), 25u);
}

TEST(CutSlice, PlaneOutsideTheBoxIsAnError) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  struct StCase {
    Real normal;
    double distance;
    Point size;
  };
  StCase const cases[] = {
      {{1, 1, 1}, -1, {5, 5, 5}}, {{1, 1, 1}, 12.5, {5, 5, 5}}, {{0, 0, 1}, 4.5, {5, 5, 5}},
      {{0, 0, 0}, 0, {5, 5, 5}},  {{nan, 1, 1}, 2, {5, 5, 5}},  {{1, 1, 1}, nan, {5, 5, 5}},
      {{1, 1, 1}, 0, {0, 5, 5}},  {{1, 1, 1}, 0, {5, 5, 0}},    {{1, 1, 1}, 0, {5, c_min, 5}},
  };
  for (auto const& c : cases)
    ExpectError([&] { Slice(c.normal, c.distance, c.size); }, "plane not in image", c_computeMoves,
                c_source);
}

TEST(CutSlice, BeforeAnImageSizeThereIsNothingToWalk) {
  CCutSlice slice(Real(0, 0, 1), 0, NEIGHBORHOOD_26);
  EXPECT_EQ(slice.Steps(), 0u);
  EXPECT_TRUE(slice.empty());
  EXPECT_FALSE(slice.MorePoints());
  slice.Reset();
  ExpectError([&] { slice.NextPoint(); }, "No more points available", "ORVA::CCutSlice::NextPoint",
              c_source);
  ExpectError([&] { slice.ComputeMoves(); }, "plane not in image", c_computeMoves, c_source);
}

TEST(CutSlice, PastTheEndIsAnErrorAndResetStartsAgain) {
  auto slice = Slice(Real(1, 2, 3), 14, {6, 6, 6});
  PointList const points = Walk(slice);
  EXPECT_EQ(points.size(), slice.Steps());
  for (int k = 0; k < 2; ++k)
    ExpectError([&] { slice.NextPoint(); }, "No more points available",
                "ORVA::CCutSlice::NextPoint", c_source);
  EXPECT_FALSE(slice.MorePoints());
  slice.Reset();
  EXPECT_EQ(Walk(slice), points);
}

TEST(CutSlice, AFailedImageSizeLeavesTheWalk) {
  auto slice = Slice(Real(0, 0, 1), 3, {2, 2, 5});
  slice.NextPoint();
  ExpectError([&] { slice.SetImageSize(Point(2, 2, 3)); }, "plane not in image");
  ExpectError<CExBadParam>([&] { slice.SetImageSize(Point(2, 2, c_max)); },
                           "extent 9223372036854775807 of the image is larger than 1073741824",
                           c_computeMoves, c_source);
  EXPECT_EQ(slice.Steps(), 4u);
  EXPECT_EQ(Walk(slice).size(), 3u);
  slice.SetImageSize(Point(3, 1, 4)); // another one restarts it
  EXPECT_EQ(Sorted(Walk(slice)), BoxPoints({0, 0, 3}, {2, 0, 3}));
}

TEST(CutSlice, NeighborhoodIsThatOfSpatialLines) {
  ExpectError(
      [] {
        Slice(Real(0, 0, 1), 0, {5, 5, 5}, NEIGHBORHOOD_8);
      },
      "invalid neighborhood behavior, only 6, 14.1, 14.2 and 26 valid",
      "ORVA::Impl::CBresenhamVisitor3D::Init");
}

TEST(CutSlice, ResetAndCopiesAtEveryStep) {
  auto slice = Slice(Real(2, 3, 5), 20, {5, 5, 5});
  PointList const all = Walk(slice);
  for (std::size_t k = 0; k <= all.size(); ++k) {
    slice.Reset();
    for (std::size_t i = 0; i < k; ++i) ASSERT_EQ(slice.NextPoint(), all[i]);
    CCutSlice copy = slice;
    ASSERT_EQ(Walk(copy), PointList(all.begin() + static_cast<std::ptrdiff_t>(k), all.end()));
    ASSERT_EQ(slice.MorePoints(), k < all.size());
  }
}
