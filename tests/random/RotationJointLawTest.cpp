// Joint laws of the rotation generators: direction and spin about it do not hang together, and the
// spin is uniform, whatever the direction's own law.
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <pxlib2core/Random.h>

#include "support/Random.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

using namespace ORVA;

namespace {

constexpr std::size_t c_heights = 4, c_azimuths = 6, c_spins = 8;

std::size_t Bin(double share, std::size_t bins) {
  return std::min(bins - 1, static_cast<std::size_t>(share * static_cast<double>(bins)));
}

double Share(double angle) {
  double const turns = angle / (2 * std::numbers::pi);
  return turns - std::floor(turns);
}

// The probability of a table as uneven as this one, if its rows have one law, the uniform one.
double PValueOfEqualRows(std::vector<std::array<double, c_spins>> const& rows) {
  double square = 0, freedom = 0;
  for (auto const& row : rows) {
    double total = 0;
    for (double const count : row) total += count;
    double const expected = total / c_spins;
    if (expected < 10) continue; // hardly a draw falls here
    for (double const count : row) square += (count - expected) * (count - expected) / expected;
    freedom += c_spins - 1;
  }
  boost::math::chi_squared const law(freedom);
  return boost::math::cdf(boost::math::complement(law, square));
}

// Spins (the first Euler angle) in cells of the direction's height and azimuth.
double PValueOfSpins(IRotationGenerator& generator) {
  std::vector<std::array<double, c_spins>> rows(c_heights * c_azimuths);
  for (int i = 0; i < 100000; ++i) {
    CEulerRotation const rotation = generator();
    CTriple<double> const d = rotation.getDirectionVector();
    std::size_t const cell =
        Bin((d.z + 1) / 2, c_heights) * c_azimuths + Bin(Share(std::atan2(d.y, d.x)), c_azimuths);
    ++rows[cell][Bin(Share(rotation.getEulerAngles().x), c_spins)];
  }
  return PValueOfEqualRows(rows);
}

} // namespace

TEST(RotationJointLaw, SpinIsUniformWhateverTheDirection) {
  CRandom::Obj().Seed(test::Seed());
  SCOPED_TRACE("SELU_TEST_SEED=" + std::to_string(test::Seed()));
  CPolarCoordinates const up(0.0, 0.0), mean(1.0, 0.5);
  CIsotropicRotation isotropic;
  EXPECT_GT(PValueOfSpins(isotropic), 1e-6);
  for (CPolarCoordinates const& axis : {up, mean}) {
    CVonMisesFisher fisher(2, axis);
    CWatsonRotation watson(1.5, axis);
    CGirdleRotation girdle(0.5, axis);
    EXPECT_GT(PValueOfSpins(fisher), 1e-6) << axis.m_fTheta;
    EXPECT_GT(PValueOfSpins(watson), 1e-6) << axis.m_fTheta;
    EXPECT_GT(PValueOfSpins(girdle), 1e-6) << axis.m_fTheta;
  }
}

// A spin that repeats the azimuth has the right laws one by one; together it does not pass.
TEST(RotationJointLaw, ASpinThatFollowsTheAzimuthIsFound) {
  struct CBound : IRotationGenerator {
    CRandomUniform uniform;
    CEulerRotation operator()() override {
      double const azimuth = 2 * std::numbers::pi * uniform();
      return {CPolarCoordinates(std::acos(2 * uniform() - 1), azimuth), azimuth};
    }
    bool IsValid() const override { return true; }
    IRotationGenerator* Clone() const override { return new CBound(*this); }
  } bound;
  EXPECT_LT(PValueOfSpins(bound), 1e-6);
}
