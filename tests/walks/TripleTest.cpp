#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <limits>
#include <set>
#include <sstream>
#include <unordered_set>
#include <vector>

using ORVA::CTriple;
using ORVA::int64;

TEST(Triple, DefaultIsZero) { EXPECT_EQ(CTriple<int64>(), CTriple<int64>(0, 0, 0)); }

TEST(Triple, ComponentsStandInTheirOrder) {
  CTriple<int64> const p(1, 2, 3);
  EXPECT_EQ(p.x, 1);
  EXPECT_EQ(p.y, 2);
  EXPECT_EQ(p.z, 3);
}

TEST(Triple, MovesAreAddedComponentByComponent) {
  CTriple<int64> p(1, 2, 3);
  p += CTriple<int64>(1, -1, 0);
  EXPECT_EQ(p, CTriple<int64>(2, 1, 3));
  EXPECT_EQ(p + CTriple<int64>(1, 1, 1), CTriple<int64>(3, 2, 4));
}

TEST(Triple, DeltaIsEndMinusStart) {
  EXPECT_EQ(CTriple<int64>(5, 2, 0) - CTriple<int64>(1, 4, 0), CTriple<int64>(4, -2, 0));
}

TEST(Triple, ScalesByAScalarAndByASignForEachAxis) {
  EXPECT_EQ(CTriple<double>(1, -2, 3) * 0.5, CTriple<double>(0.5, -1, 1.5));
  EXPECT_EQ(2.0 * CTriple<double>(1, -2, 3), CTriple<double>(2, -4, 6));
  EXPECT_EQ(CTriple<int64>(1, 2, 3) * CTriple<int64>(1, -1, -1), CTriple<int64>(1, -2, -3));
}

TEST(Triple, DiffersWhereOneComponentDiffers) {
  CTriple<int64> const p(1, 2, 3);
  EXPECT_NE(p, CTriple<int64>(0, 2, 3));
  EXPECT_NE(p, CTriple<int64>(1, 0, 3));
  EXPECT_NE(p, CTriple<int64>(1, 2, 0));
}

TEST(Triple, IsAConstantExpression) {
  constexpr CTriple<int64> sum = CTriple<int64>(1, 2, 3) + CTriple<int64>(1, 1, 1);
  static_assert(sum == CTriple<int64>(2, 3, 4));
}

TEST(Triple, IsOrderedByXThenYThenZ) {
  std::vector<CTriple<int64>> points{{1, 0, 0}, {0, 2, 0}, {0, 1, 9}, {0, 1, -9}, {-1, 5, 5}};
  std::ranges::sort(points);
  EXPECT_EQ(points,
            (std::vector<CTriple<int64>>{{-1, 5, 5}, {0, 1, -9}, {0, 1, 9}, {0, 2, 0}, {1, 0, 0}}));
  EXPECT_EQ(std::set<CTriple<int64>>(points.begin(), points.end()).size(), 5U);
  auto const none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE((CTriple<double>(1, none, 0) <=> CTriple<double>(1, 0, 0)) ==
              std::partial_ordering::unordered);
}

TEST(Triple, HashesApartWhatLiesTogether) {
  EXPECT_EQ(std::hash<CTriple<double>>()({0.0, 1, 2}), std::hash<CTriple<double>>()({-0.0, 1, 2}));
  std::unordered_set<CTriple<int64>> points;
  std::set<std::size_t> hashes, lowBits, highBits;
  for (int64 x = -8; x < 8; ++x)
    for (int64 y = -8; y < 8; ++y)
      for (int64 z = -8; z < 8; ++z) {
        points.insert({x, y, z});
        std::size_t const hash = std::hash<CTriple<int64>>()({x, y, z});
        hashes.insert(hash);
        lowBits.insert(hash % 4096);
        highBits.insert(hash >> (8 * sizeof(hash) - 12));
      }
  EXPECT_EQ(points.size(), 4096U);
  EXPECT_EQ(hashes.size(), 4096U);
  // By chance 63 of 100 buckets are hit.
  EXPECT_GT(lowBits.size(), 2000U);
  EXPECT_GT(highBits.size(), 2000U);
}

TEST(Triple, IsWrittenToAStream) {
  std::ostringstream out;
  out << CTriple<int64>(1, -2, 3) << ' ' << CTriple<double>(0.5, 0, 1e300);
  EXPECT_EQ(out.str(), "(1, -2, 3) (0.5, 0, 1e+300)");
}
