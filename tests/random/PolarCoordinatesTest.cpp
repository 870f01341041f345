#include <SeluUtils/PolarCoordinates.h>

#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <type_traits>

using namespace ORVA;

namespace {

constexpr double c_pi = std::numbers::pi;
constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

void ExpectRefused(double theta, double phi, std::string const& message, int line) {
  test::ExpectError([&] { (void)CPolarCoordinates(theta, phi); }, message,
                    "ORVA::CPolarCoordinates::CPolarCoordinates", "src/Utils/PolarCoordinates",
                    line);
}

// A constant of static storage needs no code to run at load.
constexpr CPolarCoordinates c_up(0.0, 0.0);

} // namespace

TEST(PolarCoordinates, KeepTheirAngles) {
  CPolarCoordinates const d(1.25, 6.0);
  EXPECT_EQ(d.m_fTheta, 1.25);
  EXPECT_EQ(d.m_fPhi, 6.0);
  static_assert(c_up.m_fTheta == 0 && c_up.m_fPhi == 0);
  static_assert(!std::is_polymorphic_v<CPolarCoordinates>);
}

TEST(PolarCoordinates, RangeIncludesPiButNotTwoPi) {
  EXPECT_NO_THROW(CPolarCoordinates(c_pi, 0));
  EXPECT_NO_THROW(CPolarCoordinates(0, std::nextafter(2 * c_pi, 0)));
  EXPECT_NO_THROW(CPolarCoordinates(-0.0, -0.0));
  ExpectRefused(0, 2 * c_pi, "Parameter not in valid range! 0 or 6.", 42);
  ExpectRefused(std::nextafter(c_pi, 4), 0, "Parameter not in valid range! 3 or 0.", 42);
  ExpectRefused(-1e-300, 0, "Parameter not in valid range! -1e-300 or 0.", 42);
  ExpectRefused(0, -1, "Parameter not in valid range! 0 or -1.", 42);
}

TEST(PolarCoordinates, AnglesMustBeFinite) {
  ExpectRefused(c_infinity, 0, "Invalid Parameter! inf or 0.", 39);
  ExpectRefused(-c_infinity, 0, "Invalid Parameter! -inf or 0.", 39);
  ExpectRefused(0, c_infinity, "Invalid Parameter! 0 or inf.", 39);
  ExpectRefused(c_nan, -1, "Invalid Parameter! nan or -1.", 39);
  ExpectRefused(-1, c_nan, "Invalid Parameter! -1 or nan.", 39);
}

TEST(PolarCoordinates, ComeFromAVectorOfAnyLength) {
  struct StCase {
    double x, y, z, theta, phi;
  };
  for (auto const& [x, y, z, theta, phi] : {
           StCase{0, 0, 1, 0, 0},
           StCase{0, 0, -7, c_pi, 0},
           StCase{1, 0, 0, c_pi / 2, 0},
           StCase{0, 3, 0, c_pi / 2, c_pi / 2},
           StCase{-2, 0, 0, c_pi / 2, c_pi},
           StCase{-2, -0.0, 0, c_pi / 2, -c_pi},
           StCase{0, -1, 0, c_pi / 2, -c_pi / 2}, // an azimuth that two angles may not have
           StCase{1, 1, std::numbers::sqrt2, c_pi / 4, c_pi / 4},
       }) {
    CPolarCoordinates const d(x, y, z);
    EXPECT_DOUBLE_EQ(d.m_fTheta, theta) << x << ' ' << y << ' ' << z;
    EXPECT_DOUBLE_EQ(d.m_fPhi, phi) << x << ' ' << y << ' ' << z;
  }
}

TEST(PolarCoordinates, ComeFromVectorsTooLongOrShortToBeSquared) {
  struct StCase {
    double x, y, z;
  };
  for (auto const& [x, y, z] :
       {StCase{1, 0, 1}, StCase{1, 2, 2}, StCase{-3, 0.25, 7}, StCase{0, -1, -5}, StCase{1, -1, 0},
        StCase{0, 0, 1}, StCase{0, 0, -1}, StCase{0x1p-60, 1, 0x1p-60}}) {
    CPolarCoordinates const d(x, y, z);
    for (int const exponent : {-960, -700, -511, -502, -490, 490, 502, 511, 512, 700, 1020}) {
      auto const scaled = [&](double c) { return std::scalbn(c, exponent); };
      CPolarCoordinates const e(scaled(x), scaled(y), scaled(z));
      EXPECT_EQ(e.m_fTheta, d.m_fTheta) << x << ' ' << y << ' ' << z << " * 2^" << exponent;
      EXPECT_EQ(e.m_fPhi, d.m_fPhi) << x << ' ' << y << ' ' << z << " * 2^" << exponent;
    }
  }
  for (double const size : {1e200, 1e-200, std::numeric_limits<double>::max(),
                            std::numeric_limits<double>::min(), 5e-324}) {
    EXPECT_DOUBLE_EQ(CPolarCoordinates(size, 0, size).m_fTheta, c_pi / 4) << size;
    EXPECT_EQ(CPolarCoordinates(size, 0, size).m_fPhi, 0) << size;
    EXPECT_DOUBLE_EQ(CPolarCoordinates(0, -size, 0).m_fPhi, -c_pi / 2) << size;
  }
  EXPECT_EQ(CPolarCoordinates(1e-300, 0, 1e300).m_fTheta, 0);
  EXPECT_EQ(CPolarCoordinates(1e300, 1e-300, 0).m_fPhi, 0);
}

// The plain formula, and not the slightest other rounding, wherever it works.
TEST(PolarCoordinates, OrdinaryVectorsTakeThePlainFormula) {
  test::CRandomNumbers random;
  for (int i = 0; i < 100000; ++i) {
    auto const component = [&] {
      return std::scalbn(random.Real(-1, 1), random.Between(-30, 30) + 400 * (i % 3 - 1));
    };
    double const x = component(), y = component(), z = component();
    double const r = std::sqrt(x * x + y * y + z * z);
    CPolarCoordinates const d(x, y, z);
    ASSERT_EQ(d.m_fTheta, std::acos(z / r)) << x << ' ' << y << ' ' << z;
    ASSERT_EQ(d.m_fPhi, std::atan2(y / r, x / r)) << x << ' ' << y << ' ' << z;
  }
}

TEST(PolarCoordinates, ZeroVectorHasNoDirection) {
  CPolarCoordinates const none(0, 0, 0);
  EXPECT_TRUE(std::isnan(none.m_fTheta));
  EXPECT_TRUE(std::isnan(none.m_fPhi));
  EXPECT_FALSE(none == none);
}

TEST(PolarCoordinates, EqualWithinAMicroradian) {
  CPolarCoordinates const d(1.0, 2.0);
  EXPECT_TRUE(d == CPolarCoordinates(1.0 + 1e-7, 2.0));
  EXPECT_TRUE(d == CPolarCoordinates(1.0, 2.0 - 1e-7));
  EXPECT_FALSE(d == CPolarCoordinates(1.0 + 2e-6, 2.0));
  EXPECT_FALSE(d == CPolarCoordinates(1.0, 2.0 + 3e-6));
  // At the pole the azimuth means nothing; over the seam it is the same.
  EXPECT_TRUE(c_up == CPolarCoordinates(0, 3));
  EXPECT_TRUE(CPolarCoordinates(1, 0) == CPolarCoordinates(1, 2 * c_pi - 1e-7));
}

TEST(PolarCoordinates, RoundingAboveOneMakesADirectionDifferFromItself) {
  auto const dotWithItself = [](double t, double p) {
    return std::sin(t) * std::sin(t) * std::cos(p) * std::cos(p) +
           std::sin(p) * std::sin(t) * std::sin(t) * std::sin(p) + std::cos(t) * std::cos(t);
  };
  int above = 0;
  for (double theta = 0.01; theta < 3; theta += 0.05)
    for (double phi = 0; phi < 6; phi += 0.05) {
      CPolarCoordinates const d(theta, phi);
      bool const isAbove = dotWithItself(theta, phi) > 1;
      above += isAbove;
      EXPECT_EQ(d == d, !isAbove) << theta << ' ' << phi;
    }
  EXPECT_GT(above, 0);
}

TEST(PolarCoordinates, UnitVectorComesBack) {
  test::CRandomNumbers random;
  for (int i = 0; i < 1000; ++i) {
    double const theta = random.Real(0.001, c_pi - 0.001);
    double const phi = random.Real(-c_pi, c_pi);
    CPolarCoordinates const d(std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi),
                              std::cos(theta));
    CTriple<double> const unit = d;
    EXPECT_EQ(unit, d.ConvertToCartesianRepresentation());
    EXPECT_NEAR(d.m_fTheta, theta, 1e-11);
    EXPECT_NEAR(d.m_fPhi, phi, 1e-11);
    EXPECT_NEAR(unit.x, std::sin(theta) * std::cos(phi), 1e-14);
    EXPECT_NEAR(unit.y, std::sin(theta) * std::sin(phi), 1e-14);
    EXPECT_NEAR(unit.z, std::cos(theta), 1e-14);
  }
}
