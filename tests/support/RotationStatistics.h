// Directional distributions against their laws: the cosine to the mean, the azimuth about it and
// the spin, drawn by a generator.
#pragma once

#include "Random.h"
#include "Statistics.h"

#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Random/RotationGenerator.h>
#include <pxlib2core/Random.h>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <vector>

namespace test {

inline constexpr std::size_t c_samples = 100000;
inline constexpr double c_pi = std::numbers::pi;

inline Eigen::Vector3d ToEigen(ORVA::CTriple<double> const& v) { return {v.x, v.y, v.z}; }

struct StSample {
  std::vector<double> cosine;  // to the mean
  std::vector<double> azimuth; // about the mean, in [0, 1)
  std::vector<double> spin;    // in [0, 1)
  Eigen::Vector3d meanDirection = Eigen::Vector3d::Zero();
};

class RotationStatistics : public testing::Test {
protected:
  RotationStatistics() { ORVA::CRandom::Obj().Seed(Seed()); }

  static StSample Sample(ORVA::IRotationGenerator& generator, ORVA::CPolarCoordinates const& mean) {
    Eigen::Vector3d const m = ToEigen(mean);
    Eigen::Vector3d const across = m.unitOrthogonal(), third = m.cross(across);
    StSample sample;
    for (std::size_t i = 0; i < c_samples; ++i) {
      ORVA::CEulerRotation const rotation = generator();
      Eigen::Vector3d const d = ToEigen(rotation.getDirectionVector());
      sample.cosine.push_back(d.dot(m));
      sample.azimuth.push_back(std::atan2(d.dot(third), d.dot(across)) / (2 * c_pi) + 0.5);
      sample.spin.push_back(rotation.getEulerAngles().x / (2 * c_pi) + 0.5);
      sample.meanDirection += d / static_cast<double>(c_samples);
    }
    return sample;
  }

  template <class Cdf>
  static StSample ExpectDirections(ORVA::IRotationGenerator& generator,
                                   ORVA::CPolarCoordinates const& mean, Cdf cosine,
                                   std::string const& what) {
    auto const uniform = [](double x) { return x; };
    auto sample = Sample(generator, mean);
    ExpectDistribution(sample.cosine, cosine, what + ", cosine");
    ExpectDistribution(sample.azimuth, uniform, what + ", azimuth");
    ExpectDistribution(sample.spin, uniform, what + ", spin");
    return sample;
  }

private:
  testing::ScopedTrace m_Trace{__FILE__, __LINE__, "SELU_TEST_SEED=" + std::to_string(Seed())};
};

inline ORVA::CPolarCoordinates const c_means[] = {ORVA::CPolarCoordinates(0.0, 0.0),
                                                  ORVA::CPolarCoordinates(1.0, 2.5),
                                                  ORVA::CPolarCoordinates(c_pi, 0.0)};

inline double Sphere(double t) { return (t + 1) / 2; }

/// The law of von Mises and Fisher: the probability of a cosine to the mean of at most t.
inline double Fisher(double kappa, double t) {
  return std::expm1(kappa * (t - 1)) / -std::expm1(-2 * kappa) + 1;
}

} // namespace test
