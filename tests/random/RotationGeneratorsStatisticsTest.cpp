// Directional distributions: the cosine to the mean, the azimuth about it and the spin against
// their closed forms, and the mean direction against the concentration.
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>

#include "support/RotationStatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;

namespace {

double Girdle(double beta, double t) {
  return (1 + beta * t / std::sqrt(1 - t * t + beta * beta * t * t)) / 2;
}

// Integral of exp(kappa x^2) from 0 to t; a series of positive terms for kappa > 0.
double WatsonIntegral(double kappa, double t) {
  if (kappa < 0) return std::erf(std::sqrt(-kappa) * t) * std::sqrt(c_pi / -kappa) / 2;
  double term = t, sum = t;
  for (int n = 1; n < 500; ++n) {
    term *= kappa * t * t / n;
    sum += term / (2 * n + 1);
  }
  return sum;
}

} // namespace

TEST_F(RotationStatistics, Isotropic) {
  CIsotropicRotation generator;
  for (auto const& mean : c_means) {
    auto const sample = ExpectDirections(generator, mean, Sphere, "isotropic");
    // Each component of a direction has variance 1/3.
    for (int i = 0; i < 3; ++i)
      EXPECT_NEAR(sample.meanDirection[i], 0, c_deviations / std::sqrt(3.0 * c_samples));
  }
}

TEST_F(RotationStatistics, RandomRotationsMoveEveryVectorEverywhere) {
  CIsotropicRotation generator;
  CTriple<double> const v(0.6, 0, 0.8);
  std::vector<double> heights;
  for (std::size_t i = 0; i < c_samples; ++i) heights.push_back(generator().rotateVector(v).x);
  ExpectDistribution(heights, Sphere, "rotated vector");
}

TEST_F(RotationStatistics, Girdle) {
  for (double const beta : {0.1, 0.5, 1.0, 2.0, 10.0})
    for (auto const& axis : c_means) {
      CGirdleRotation generator(beta, axis);
      ExpectDirections(
          generator, axis, [&](double t) { return Girdle(beta, t); },
          "girdle " + std::to_string(beta));
    }
}

TEST_F(RotationStatistics, WatsonOnItsHemisphere) {
  for (double const kappa : {1e-8, 0.5, 5.0, 50.0, -1e-8, -0.5, -5.0, -500.0})
    for (auto const& mean : c_means) {
      CWatsonRotation generator(kappa, mean);
      ExpectDirections(
          generator, mean,
          [&](double t) { return WatsonIntegral(kappa, t) / WatsonIntegral(kappa, 1); },
          "Watson " + std::to_string(kappa));
    }
}

TEST_F(RotationStatistics, WatsonOfZeroOnTheWholeSphere) {
  CWatsonRotation generator(0, CWatsonRotation::xaxis);
  ExpectDirections(generator, CWatsonRotation::xaxis, Sphere, "Watson 0");
}

TEST_F(RotationStatistics, Mixture) {
  CPolarCoordinates const mean(1.0, 2.5);
  CMixtureRotation generator(2);
  generator.Add(new CVonMisesFisher(10, mean), 0.25);
  generator.Add(new CIsotropicRotation, 0.75);
  ExpectDirections(
      generator, mean, [](double t) { return 0.25 * Fisher(10, t) + 0.75 * Sphere(t); }, "mixture");
}
