#include "Utils/Exact.h"

#include <SeluUtils/Impl/PlaneColumns.h>

#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <limits>

using namespace ORVA;
using Impl::int128;
using namespace test;

TEST(Exact, DivisionRoundsDown) {
  struct StCase {
    int64 a, b, quotient;
  };
  for (auto const& [a, b, quotient] : {StCase{7, 2, 3}, StCase{-7, 2, -4}, StCase{-8, 2, -4},
                                       StCase{0, 5, 0}, StCase{-1, 5, -1}}) {
    EXPECT_EQ(Impl::FloorDivided(a, b), quotient) << a << '/' << b;
    EXPECT_TRUE(Impl::FloorDivided(int128{a} << 70, int128{b} << 70) == quotient) << a << '/' << b;
  }
}

TEST(Exact, GreatestCommonDivisorTakesAnySign) {
  EXPECT_TRUE(Impl::GreatestCommonDivisor(12, -18) == 6);
  EXPECT_TRUE(Impl::GreatestCommonDivisor(0, -5) == 5);
  EXPECT_TRUE(Impl::GreatestCommonDivisor(0, 0) == 0);
  EXPECT_TRUE(Impl::GreatestCommonDivisor(int128{6} << 100, int128{15} << 100) == int128{3} << 100);
}

TEST(Exact, RoundingSaturates) {
  constexpr auto lowest = std::numeric_limits<int64>::min(),
                 highest = std::numeric_limits<int64>::max();
  struct StCase {
    double value;
    int64 rounded;
  };
  for (auto const& [value, rounded] :
       {StCase{2.5, 3}, StCase{-2.5, -3}, StCase{2.4, 2}, StCase{1e19, highest},
        StCase{-1e19, lowest}, StCase{std::numeric_limits<double>::quiet_NaN(), lowest},
        StCase{0x1p63, highest}, StCase{-0x1p63, lowest}})
    EXPECT_EQ(Impl::RoundedSaturated(value), rounded) << value;
}

TEST(Exact, DominantAxisOfEqualComponentsIsTheLastOne) {
  EXPECT_EQ(Impl::DominantAxis({3, -3, 3}), 2);
  EXPECT_EQ(Impl::DominantAxis({3, -3, 2}), 1);
  EXPECT_EQ(Impl::DominantAxis({-4, 3, 2}), 0);
  EXPECT_EQ(Impl::DominantAxis({std::numeric_limits<int64>::min(), 3, 2}), 0);
}

TEST(Exact, SeenPointsLeadBackIntoSpace) {
  Point const p(1, 2, 3);
  for (int axis = 0; axis < 3; ++axis) {
    Point const seen = Impl::SeenAlong(axis, p);
    EXPECT_EQ(seen.z, axis + 1);
    EXPECT_EQ(Impl::InSpace(axis, seen.x, seen.y, seen.z), p);
  }
}
