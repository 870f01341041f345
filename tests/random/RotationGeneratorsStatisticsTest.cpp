// Directional distributions: the cosine to the mean, the azimuth about it and the spin against
// their closed forms, and the mean direction against the concentration.
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>

#include "support/Random.h"
#include "support/Statistics.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr std::size_t c_samples = 100000;
constexpr double c_pi = std::numbers::pi;

Eigen::Vector3d ToEigen(CTriple<double> const& v) { return {v.x, v.y, v.z}; }

struct StSample {
  std::vector<double> cosine;  // to the mean
  std::vector<double> azimuth; // about the mean, in [0, 1)
  std::vector<double> spin;    // in [0, 1)
  Eigen::Vector3d meanDirection = Eigen::Vector3d::Zero();
};

class RotationStatistics : public testing::Test {
protected:
  RotationStatistics() { CRandom::Obj().Seed(test::Seed()); }

  static StSample Sample(IRotationGenerator& generator, CPolarCoordinates const& mean) {
    Eigen::Vector3d const m = ToEigen(mean);
    Eigen::Vector3d const across = m.unitOrthogonal(), third = m.cross(across);
    StSample sample;
    for (std::size_t i = 0; i < c_samples; ++i) {
      CEulerRotation const rotation = generator();
      Eigen::Vector3d const d = ToEigen(rotation.getDirectionVector());
      sample.cosine.push_back(d.dot(m));
      sample.azimuth.push_back(std::atan2(d.dot(third), d.dot(across)) / (2 * c_pi) + 0.5);
      sample.spin.push_back(rotation.getEulerAngles().x / (2 * c_pi) + 0.5);
      sample.meanDirection += d / static_cast<double>(c_samples);
    }
    return sample;
  }

  template <class Cdf>
  static StSample ExpectDirections(IRotationGenerator& generator, CPolarCoordinates const& mean,
                                   Cdf cosine, std::string const& what) {
    auto const uniform = [](double x) { return x; };
    auto sample = Sample(generator, mean);
    test::ExpectDistribution(sample.cosine, cosine, what + ", cosine");
    test::ExpectDistribution(sample.azimuth, uniform, what + ", azimuth");
    test::ExpectDistribution(sample.spin, uniform, what + ", spin");
    return sample;
  }

private:
  testing::ScopedTrace m_Trace{__FILE__, __LINE__,
                               "SELU_TEST_SEED=" + std::to_string(test::Seed())};
};

CPolarCoordinates const c_means[] = {CPolarCoordinates(0.0, 0.0), CPolarCoordinates(1.0, 2.5),
                                     CPolarCoordinates(c_pi, 0.0)};

double Sphere(double t) { return (t + 1) / 2; }

double Girdle(double beta, double t) {
  return (1 + beta * t / std::sqrt(1 - t * t + beta * beta * t * t)) / 2;
}

double Fisher(double kappa, double t) {
  return std::expm1(kappa * (t - 1)) / -std::expm1(-2 * kappa) + 1;
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
      EXPECT_NEAR(sample.meanDirection[i], 0, test::c_deviations / std::sqrt(3.0 * c_samples));
  }
}

TEST_F(RotationStatistics, RandomRotationsMoveEveryVectorEverywhere) {
  CIsotropicRotation generator;
  CTriple<double> const v(0.6, 0, 0.8);
  std::vector<double> heights;
  for (std::size_t i = 0; i < c_samples; ++i) heights.push_back(generator().rotateVector(v).x);
  test::ExpectDistribution(heights, Sphere, "rotated vector");
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

TEST_F(RotationStatistics, VonMisesFisher) {
  for (double const kappa : {0.01, 1.0, 20.0, 1000.0})
    for (auto const& mean : c_means) {
      CVonMisesFisher generator(kappa, mean);
      auto const sample = ExpectDirections(
          generator, mean, [&](double t) { return Fisher(kappa, t); },
          "von Mises-Fisher " + std::to_string(kappa));
      double const length = 1 / std::tanh(kappa) - 1 / kappa;
      double const variance = 1 - length * length; // bounds that of each component
      Eigen::Vector3d const error = sample.meanDirection - length * ToEigen(mean);
      EXPECT_LT(error.cwiseAbs().maxCoeff(), test::c_deviations * std::sqrt(variance / c_samples));
    }
}

TEST_F(RotationStatistics, VonMisesFisherHelpers) {
  CVonMisesFisher const generator(1, CVonMisesFisher::zaxis);
  std::vector<double> cosines, azimuths;
  for (std::size_t i = 0; i < c_samples; ++i) {
    cosines.push_back(std::cos(generator.GenerateTheta(3)));
    azimuths.push_back(generator.GeneratePhi());
  }
  test::ExpectDistribution(
      cosines, [](double t) { return Fisher(3, t); }, "theta");
  test::ExpectDistribution(
      azimuths, [](double phi) { return phi / (2 * c_pi); }, "phi");
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
