#include <SeluUtils/PlaneSection.h>

#include <SeluUtils/Walker.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <string>

using namespace ORVA;
using namespace test;
using Normal = CTriple<double>;

static_assert(RewindableWalker<CPlaneSection>);

namespace {

char const c_source[] = "src/Utils/BresenhamVisitor";
char const c_constructor[] = "ORVA::CPlaneSection::CPlaneSection";

CPlaneSection Section(CPlaneSection section, Point const& size) {
  section.SetImageSize(size);
  return section;
}
CPlaneSection Section(Normal const& normal, double distance, Point const& size) {
  return Section(CPlaneSection(normal, distance), size);
}

} // namespace

TEST(PlaneSection, HandsOutOneVoxelAColumnInRasterOrder) {
  struct StCase {
    char const* what;
    Normal normal;
    double distance;
    Point size;
    PointList points;
  };
  StCase const cases[] = {
      {"z = 1", {0, 0, 1}, 1, {2, 2, 3}, {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}}},
      {"y = 2", {0, -2, 0}, -4, {2, 3, 2}, {{0, 2, 0}, {1, 2, 0}, {0, 2, 1}, {1, 2, 1}}},
      {"x = 0", {5, 0, 0}, 0, {2, 2, 2}, {{0, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}}},
      {"slope of one third",
       {1, 0, -3},
       0,
       {5, 1, 3},
       {{0, 0, 0}, {1, 0, 0}, {2, 0, 1}, {3, 0, 1}, {4, 0, 1}}},
      {"space diagonal",
       {1, 1, 1},
       2,
       {3, 3, 3},
       {{0, 0, 2}, {1, 0, 1}, {2, 0, 0}, {0, 1, 1}, {1, 1, 0}, {0, 2, 0}}},
      {"rows that enter the box later",
       {1, 1, -1},
       3,
       {4, 3, 2},
       {{3, 0, 0}, {2, 1, 0}, {3, 1, 1}, {1, 2, 0}, {2, 2, 1}}},
      {"between two voxels", {0, 0, 1}, 0.25, {2, 1, 3}, {{0, 0, 0}, {1, 0, 0}}},
      {"flat image", {1, 1, 0}, 1, {2, 2, 1}, {{0, 1, 0}, {1, 0, 0}}},
      {"one voxel", {3, 2, 1}, 0, {1, 1, 1}, {{0, 0, 0}}},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.what);
    auto section = Section(c.normal, c.distance, c.size);
    EXPECT_EQ(section.Steps(), c.points.size());
    EXPECT_EQ(Walk(section), c.points);
    EXPECT_FALSE(section.MorePoints());
  }
}

TEST(PlaneSection, HalfwayTakesTheUpperVoxelForEitherSignOfTheNormal) {
  for (double const sign : {1.0, -1.0}) {
    EXPECT_EQ(Walk(Section({0, 0, sign}, sign * 0.5, {1, 1, 3})), (PointList{{0, 0, 1}}));
    // Height x / 2: 0, 1/2, 1, 3/2.
    EXPECT_EQ(Walk(Section({sign, 0, -2 * sign}, 0, {4, 1, 3})),
              (PointList{{0, 0, 0}, {1, 0, 1}, {2, 0, 1}, {3, 0, 2}}));
  }
}

TEST(PlaneSection, DominantAxisIsTheLargestOfTheNormalAndTheLaterOfEquals) {
  struct StCase {
    Normal normal;
    int axis;
  };
  StCase const cases[] = {{{3, 2, 1}, 0},  {{-3, 2, 2}, 0}, {{1, -3, 2}, 1}, {{1, 2, 3}, 2},
                          {{1, 1, 0}, 1},  {{1, 0, -1}, 2}, {{0, 1, 1}, 2},  {{1, 1, 1}, 2},
                          {{-2, 2, 1}, 1}, {{1, 0, 0}, 0},  {{0, 1, 0}, 1},  {{0, 0, 1}, 2}};
  for (auto const& c : cases)
    EXPECT_EQ(CPlaneSection(c.normal, 0).DominantAxis(), c.axis)
        << testing::PrintToString(c.normal);
}

TEST(PlaneSection, IsTheSameHoweverThePlaneIsGiven) {
  Point const size(9, 8, 7);
  PointList const expected = Walk(Section({2, 3, 6}, 30, size));
  ASSERT_EQ(expected.size(), 69u); // of 72 columns; 2x + 3y > 33 in three
  EXPECT_EQ(Walk(Section({-2, -3, -6}, -30, size)), expected);
  EXPECT_EQ(Walk(Section({4, 6, 12}, 60, size)), expected);
  EXPECT_EQ(Walk(Section({0.5, 0.75, 1.5}, 7.5, size)), expected);
  EXPECT_EQ(Walk(Section({0x2p900, 0x3p900, 0x6p900}, 0x1ep900, size)), expected);
  EXPECT_EQ(Walk(Section({0x2p-1040, 0x3p-1040, 0x6p-1040}, 0x1ep-1040, size)), expected);
  Point const a(15, 0, 0), b(0, 10, 0), c(0, 0, 5);
  EXPECT_EQ(Walk(Section(CPlaneSection(a, b, c), size)), expected);
  EXPECT_EQ(Walk(Section(CPlaneSection(c, b, a), size)), expected);
}

TEST(PlaneSection, TouchingPlanesGiveTheCornerOrTheEdge) {
  EXPECT_EQ(Walk(Section({1, 1, 1}, 0, {4, 4, 4})), (PointList{{0, 0, 0}}));
  EXPECT_EQ(Walk(Section({2, 2, 3}, 21, {4, 4, 4})), (PointList{{3, 3, 3}}));
  EXPECT_EQ(Walk(Section({1, 1, 0}, 0, {3, 3, 3})), (PointList{{0, 0, 0}, {0, 0, 1}, {0, 0, 2}}));
}

TEST(PlaneSection, APlaneWithinHalfAVoxelOfTheBoxStillHasVoxels) {
  EXPECT_EQ(Section({0, 0, 1}, -0.5, {2, 2, 2}).Steps(), 4u); // halfway: the upper one
  EXPECT_EQ(Section({0, 0, 1}, -0.51, {2, 2, 2}).Steps(), 0u);
  EXPECT_EQ(Section({0, 0, 1}, 1.49, {2, 2, 2}).Steps(), 4u);
  EXPECT_EQ(Section({0, 0, 1}, 1.5, {2, 2, 2}).Steps(), 0u);
}

TEST(PlaneSection, MissingTheBoxIsAnEmptyWalk) {
  struct StCase {
    char const* what;
    CPlaneSection section;
    Point size;
  };
  StCase const cases[] = {
      {"no plane", CPlaneSection(), {4, 4, 4}},
      {"outside", CPlaneSection({1, 1, 1}, -4), {4, 4, 4}},
      {"far outside", CPlaneSection({1, 1, 1}, 1e300), {c_max, c_max, c_max}},
      {"as far as doubles go", CPlaneSection({0, 1e-300, 0}, -1e300), {c_max, c_max, c_max}},
      {"no extent", CPlaneSection({1, 1, 1}, 0), {4, 0, 4}},
      {"negative extent", CPlaneSection({1, 1, 1}, 0), {4, 4, c_min}},
  };
  for (auto c : cases) {
    SCOPED_TRACE(c.what);
    c.section.SetImageSize(c.size);
    EXPECT_TRUE(c.section.empty());
    EXPECT_EQ(c.section.Steps(), 0u);
    EXPECT_FALSE(c.section.MorePoints());
    ExpectError([&] { c.section.NextPoint(); }, "No more points available",
                "ORVA::CPlaneSection::NextPoint", c_source);
  }
}

TEST(PlaneSection, BeforeTheImageSizeThereAreNoPoints) {
  CPlaneSection section({0, 0, 1}, 0);
  EXPECT_TRUE(section.empty());
  EXPECT_FALSE(section.MorePoints());
  section.Reset();
  EXPECT_FALSE(section.MorePoints());
}

TEST(PlaneSection, AnotherImageSizeStartsAnew) {
  auto section = Section({0, 0, 1}, 0, {2, 1, 1});
  section.NextPoint();
  section.SetImageSize(CSize(1, 2, 1));
  EXPECT_EQ(Walk(section), (PointList{{0, 0, 0}, {0, 1, 0}}));
  section.SetImageSize(CSize(3, 1)); // two-dimensional: one layer
  EXPECT_EQ(section.Steps(), 3u);
}

TEST(PlaneSection, RefusesWhatIsNoPlane) {
  struct StCase {
    Normal normal;
    double distance;
    char const* message;
  };
  StCase const cases[] = {
      {{0, 0, 0}, 1, "plane with normal (0, 0, 0)"},
      {{c_nan, 0, 1}, 1, "plane with the number nan"},
      {{0, c_infinity, 1}, 1, "plane with the number inf"},
      {{0, 0, -c_infinity}, 1, "plane with the number -inf"},
      {{0, 0, 1}, c_nan, "plane with the number nan"},
  };
  for (auto const& c : cases)
    ExpectError<CExBadParam>([&] { CPlaneSection(c.normal, c.distance); }, c.message, c_constructor,
                             c_source);
}

TEST(PlaneSection, RefusesPointsInALine) {
  ExpectError<CExBadParam>(
      [] {
        CPlaneSection({0, 0, 0}, {1, 2, 3}, {-2, -4, -6});
      },
      "points (0, 0, 0), (1, 2, 3), (-2, -4, -6) lie in a line", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] {
        CPlaneSection({1, 0, 5}, {1, 0, 6}, {1, 0, 9});
      },
      "points (1, 0, 5), (1, 0, 6), (1, 0, 9) lie in a line", c_constructor, c_source);
  ExpectError<CExBadParam>(
      [] {
        CPlaneSection({1, 1, 1}, {1, 1, 1}, {2, 1, 1});
      },
      "points (1, 1, 1), (1, 1, 1), (2, 1, 1) lie in a line", c_constructor, c_source);
}

TEST(PlaneSection, RefusesPointsTooFarApart) {
  auto const text = [](std::string const& a, std::string const& b, std::string const& c) {
    return "points " + a + ", " + b + ", " + c + " are too far apart for an exact plane";
  };
  ExpectError<CExBadParam>(
      [] {
        CPlaneSection({c_min, 0, 0}, {c_max, 0, 0}, {0, 1, 0});
      },
      text("(-9223372036854775808, 0, 0)", "(9223372036854775807, 0, 0)", "(0, 1, 0)"),
      c_constructor, c_source);
  // Differences with co-prime cross products of about 2^62.
  ExpectError<CExBadParam>(
      [] {
        CPlaneSection({0, 0, 0}, {2147483647, 1, 3}, {5, 2147483629, 7});
      },
      text("(0, 0, 0)", "(2147483647, 1, 3)", "(5, 2147483629, 7)"), c_constructor, c_source);
}

TEST(PlaneSection, FarPointsWithASmallNormalAreWalkedExactly) {
  constexpr int64 far = int64{1} << 62;
  auto section = Section(CPlaneSection({far, 0, 0}, {far, far, 0}, {far, 0, far}), {c_max, 1, 2});
  EXPECT_EQ(Walk(section), (PointList{{far, 0, 0}, {far, 0, 1}}));
}

TEST(PlaneSection, HugeImagesAreCountedAtOnce) {
  auto section = Section({0, 0, 1}, 3, {c_max, 2, c_max});
  EXPECT_EQ(section.Steps(), 2 * static_cast<uint64>(c_max));
  EXPECT_EQ(section.NextPoint(), Point(0, 0, 3));
  EXPECT_EQ(section.NextPoint(), Point(1, 0, 3));

  constexpr int64 half = int64{1} << 40;
  auto falling = Section({1, 0, 1}, static_cast<double>(half), {2 * half, 3, 2 * half});
  EXPECT_EQ(falling.Steps(), 3 * static_cast<uint64>(half + 1));
  EXPECT_EQ(falling.NextPoint(), Point(0, 0, half));

  // z = x - 2^62 in the last columns of the widest box.
  constexpr int64 far = int64{1} << 62;
  auto last = Section({1, 0, -1}, 0x1p62, {c_max, 1, c_max});
  EXPECT_EQ(last.Steps(), static_cast<uint64>(c_max - far));
  EXPECT_EQ(last.NextPoint(), Point(far, 0, 0));
}

TEST(PlaneSection, MorePointsThan64BitsCountAreRefusedAndChangeNothing) {
  auto section = Section({0, 0, 1}, 0, {3, 1, 1});
  section.NextPoint();
  ExpectError<CExBadParam>(
      [&] { section.SetImageSize(Point(c_max, c_max, 1)); },
      "section of an image of size (9223372036854775807, 9223372036854775807, 1) has more points "
      "than 64 bits count",
      "ORVA::CPlaneSection::SetImageSize", c_source);
  EXPECT_EQ(section.Steps(), 3u);
  EXPECT_EQ(Walk(section), (PointList{{1, 0, 0}, {2, 0, 0}}));
}

TEST(PlaneSection, PastTheEndIsAnErrorAndResetStartsAgain) {
  auto section = Section({0, 0, 1}, 0, {2, 1, 1});
  PointList const points = Walk(section);
  for (int k = 0; k < 2; ++k)
    ExpectError([&] { section.NextPoint(); }, "No more points available",
                "ORVA::CPlaneSection::NextPoint", c_source);
  section.Reset();
  EXPECT_EQ(Walk(section), points);
}

TEST(PlaneSection, ResetAndCopiesAtEveryStep) {
  test::ExpectRewindsAndCopiesAnywhere(Section({2, 3, 5}, 20, {5, 5, 5}));
}

TEST(PlaneSection, AllocatesNothing) {
  test::CFailingAllocations const none(0);
  auto section = Section(CPlaneSection({0, 0, 7}, {9, 2, 5}, {3, 8, 1}), {12, 12, 12});
  uint64 count = 0;
  for (auto const& p : ORVA::Points(section)) count += p.x >= 0;
  EXPECT_EQ(count, section.Steps());
  EXPECT_GT(count, 0u);
}
