#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include "support/Printers.h"

#include <gtest/gtest.h>

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
