#include <SeluUtils/EulerRotation.h>

#include "support/Errors.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <type_traits>
#include <utility>

using namespace ORVA;

namespace {

constexpr double c_pi = std::numbers::pi;
constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
std::string const c_constructor = "ORVA::CEulerRotation::CEulerRotation";
std::string const c_source = "src/Utils/EulerRotation";

CMatrix<double> Identity(uint64 rows = 3, uint64 cols = 3) {
  CMatrix<double> m(rows, cols);
  for (uint64 i = 0; i < std::min(rows, cols); ++i) m(i, i) = 1;
  return m;
}

} // namespace

TEST(EulerRotation, DefaultIsTheIdentity) {
  EXPECT_EQ(CEulerRotation().getRotationMatrix(), Identity());
  EXPECT_TRUE(CEulerRotation() == CEulerRotation(0, 0, 0));
  EXPECT_TRUE(CEulerRotation().IsValid());
  static_assert(!std::is_polymorphic_v<CEulerRotation>);
}

TEST(EulerRotation, MatrixIsTheZxzProductInPassiveForm) {
  double const phi = 0.3, theta = 1.1, psi = -2.0;
  double const s1 = std::sin(phi), c1 = std::cos(phi), s2 = std::sin(theta), c2 = std::cos(theta),
               s3 = std::sin(psi), c3 = std::cos(psi);
  double const expected[3][3] = {
      {c3 * c1 - s3 * c2 * s1, s3 * c2 * c1 + c3 * s1, s3 * s2},
      {-s3 * c1 - c3 * c2 * s1, c3 * c2 * c1 - s3 * s1, c3 * s2},
      {s2 * s1, -s2 * c1, c2},
  };
  auto const m = CEulerRotation(phi, theta, psi).getRotationMatrix();
  for (uint64 r = 0; r < 3; ++r)
    for (uint64 c = 0; c < 3; ++c) EXPECT_EQ(m(r, c), expected[r][c]) << r << ' ' << c;
}

TEST(EulerRotation, PassiveMeansTheFrameTurns) {
  // A quarter turn of the frame about z: the old x axis now lies along -y.
  auto const v = CEulerRotation(c_pi / 2, 0, 0).rotateVector({1, 0, 0});
  EXPECT_NEAR(v.x, 0, 1e-15);
  EXPECT_NEAR(v.y, -1, 1e-15);
  EXPECT_EQ(v.z, 0);
}

TEST(EulerRotation, AnglesMustBeFinite) {
  struct StCase {
    double phi, theta, psi;
    char const* message;
  };
  for (StCase const& angles : {
           StCase{c_infinity, 1, 2, "Invalid Parameter! inf or 1 or 2."},
           StCase{1, -c_infinity, 2, "Invalid Parameter! 1 or -inf or 2."},
           StCase{1, 2, c_nan, "Invalid Parameter! 1 or 2 or nan."},
       })
    test::ExpectError([&] { (void)CEulerRotation(angles.phi, angles.theta, angles.psi); },
                      angles.message, c_constructor, c_source, 58);
  test::ExpectError([] { (void)CEulerRotation(CPolarCoordinates(0, 0, 0), 1); },
                    "Invalid Parameter! 1 or nan or nan.", c_constructor, c_source, 58);
  EXPECT_TRUE(CEulerRotation(1e300, -1e300, 1e10).IsValid());
}

TEST(EulerRotation, DirectionAndSpinAreEulerAngles) {
  CPolarCoordinates const d(0.7, 2.5);
  EXPECT_EQ(CEulerRotation(d, 1.25).getRotationMatrix(),
            CEulerRotation(1.25, 0.7, 1.5707963267948966 - 2.5).getRotationMatrix());
}

TEST(EulerRotation, ReadersWorkOnConstants) {
  CEulerRotation const r(0.3, 1.1, -2.0);
  auto const m = r.getRotationMatrix();
  EXPECT_EQ(r.getDirectionVector(), CTriple<double>(m(0, 2), m(1, 2), m(2, 2)));
  auto transposed = m;
  transposed.Transpose();
  EXPECT_EQ(r.getInverseRotationMatrix(), transposed);
  CTriple<double> const v(1, -2, 3);
  EXPECT_EQ(r.rotateVector(v), CTriple<double>(m(0, 0) * 1 + m(0, 1) * -2 + m(0, 2) * 3,
                                               m(1, 0) * 1 + m(1, 1) * -2 + m(1, 2) * 3,
                                               m(2, 0) * 1 + m(2, 1) * -2 + m(2, 2) * 3));
  EXPECT_EQ(r.backRotateVector(v), CTriple<double>(m(0, 0) * 1 + m(1, 0) * -2 + m(2, 0) * 3,
                                                   m(0, 1) * 1 + m(1, 1) * -2 + m(2, 1) * 3,
                                                   m(0, 2) * 1 + m(1, 2) * -2 + m(2, 2) * 3));
}

TEST(EulerRotation, ThirdAngleReadsTheMatrixInItsOwnWay) {
  double const phi = 0.3, theta = 1.1, psi = 2.0;
  auto const angles = CEulerRotation(phi, theta, psi).getEulerAngles();
  EXPECT_NEAR(angles.x, phi, 1e-15);
  EXPECT_NEAR(angles.y, theta, 1e-15);
  EXPECT_DOUBLE_EQ(angles.z,
                   std::atan2(std::sin(psi) * std::sin(theta), -std::sin(theta) * std::cos(phi)));
  EXPECT_GT(std::fabs(angles.z - psi), 0.3);
}

TEST(EulerRotation, TextHasTabsAndSixDigits) {
  EXPECT_EQ(CEulerRotation().ToString(), "1\t0\t0\t0\t1\t0\t0\t0\t1");
  EXPECT_EQ(CEulerRotation(0, 0, 0).ToString(), "1\t0\t0\t0\t1\t0\t0\t0\t1"); // no negative zero
  EXPECT_EQ(CEulerRotation(0.5, 0, 0).ToString(),
            "0.877583\t0.479426\t0\t-0.479426\t0.877583\t0\t0\t0\t1");
  EXPECT_EQ(CEulerRotation(c_pi / 2, 0, 0).ToString(),
            "6.12323e-17\t1\t0\t-1\t6.12323e-17\t0\t0\t0\t1");
}

TEST(EulerRotation, NegativeZeroStaysInTheMatrix) {
  EXPECT_TRUE(std::signbit(CEulerRotation(0, 0, 0).getRotationMatrix()(2, 1)));
}

TEST(EulerRotation, EqualWithinTheTolerance) {
  CEulerRotation const r(0.3, 1.1, -2.0);
  EXPECT_TRUE(r == CEulerRotation(0.3 + 5e-11, 1.1, -2.0));
  EXPECT_FALSE(r == CEulerRotation(0.3 + 1e-9, 1.1, -2.0));
  EXPECT_TRUE(r == CEulerRotation(0.3 + 2 * c_pi, 1.1, -2.0));
}

TEST(EulerRotation, MatrixMustBeOrthonormal) {
  auto const expectRefused = [](CMatrix<double> const& m) {
    test::ExpectError([&] { (void)CEulerRotation(m); },
                      "Invalid CMatrix in CEulerRotation constructor.", c_constructor, c_source,
                      97);
  };
  auto const given = CEulerRotation(0.3, 1.1, -2.0).getRotationMatrix();
  EXPECT_EQ(CEulerRotation(given).getRotationMatrix(), given);
  for (uint64 i = 0; i < 3; ++i)
    for (uint64 k = 0; k < 3; ++k) {
      auto m = Identity();
      m(i, k) += 1e-9;
      expectRefused(m);
      m(i, k) = c_nan;
      expectRefused(m);
      m = Identity();
      m(i, k) += 4e-11;
      EXPECT_TRUE(CEulerRotation(m).IsValid());
    }
  auto mirrored = Identity();
  mirrored(2, 2) = -1; // orthonormal, and so accepted
  EXPECT_TRUE(CEulerRotation(mirrored).IsValid());
}

TEST(EulerRotation, MatrixMustHaveThreeColumns) {
  for (auto const& shape :
       {std::pair<uint64, uint64>{4, 4}, {3, 4}, {3, 2}, {2, 2}, {0, 0}, {100, 1}})
    test::ExpectError([&] { (void)CEulerRotation(Identity(shape.first, shape.second)); },
                      "Trying to multiply non-conform matrices.",
                      "ORVA::CMatrix<double>::operator *", "src/Numeric/Matrix", 124);
}

TEST(EulerRotation, MatrixMustHaveThreeRows) {
  for (uint64 const rows : {0u, 1u, 2u}) {
    // The transpose is read column by column, so the first missing row stops it.
    auto const index = std::to_string(rows) + ",0";
    test::ExpectError([&] { (void)CEulerRotation(Identity(rows, 3)); },
                      "Index exceeds matrix bounds. Tried to access index (" + index +
                          ") but Matrix size is " + std::to_string(rows) + "-by-3",
                      "ORVA::CMatrix<double>::operator ()", "src/Numeric/Matrix");
  }
}

TEST(EulerRotation, FurtherRowsAreKeptButNotJudged) {
  auto tall = Identity(5, 3);
  tall(4, 1) = 7;
  CEulerRotation const r(tall);
  EXPECT_EQ(r.getRotationMatrix(), tall);
  EXPECT_EQ(r.getInverseRotationMatrix(), Identity());
  EXPECT_EQ(r.rotateVector({1, 2, 3}), CTriple<double>(1, 2, 3));
  EXPECT_TRUE(r == CEulerRotation());
}

TEST(EulerRotation, CopiesAreWhole) {
  CEulerRotation original(0.3, 1.1, -2.0);
  CEulerRotation copy(original);
  CEulerRotation assigned;
  assigned = original;
  original = CEulerRotation();
  EXPECT_EQ(copy.getRotationMatrix(), assigned.getRotationMatrix());
  EXPECT_TRUE(copy == CEulerRotation(0.3, 1.1, -2.0));
  // Moving copies: what is left is still a rotation.
  CEulerRotation const moved(std::move(copy));
  EXPECT_TRUE(copy == moved); // NOLINT(bugprone-use-after-move)
  assigned = CEulerRotation(Identity(4, 3));
  assigned = original;
  EXPECT_EQ(assigned.getRotationMatrix(), Identity());
}
