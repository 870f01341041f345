// The law of von Mises and Fisher: the cosine to the mean, the azimuth about it and the spin
// against their closed forms, and the mean direction against the concentration.
#include <SeluUtils/Random/VonMisesFisher.h>

#include "support/RotationStatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;

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
      EXPECT_LT(error.cwiseAbs().maxCoeff(), c_deviations * std::sqrt(variance / c_samples));
    }
}

TEST_F(RotationStatistics, AnglesOfVonMisesAndFisherByThemselves) {
  CVonMisesFisher const generator(1, CVonMisesFisher::zaxis);
  std::vector<double> cosines, azimuths;
  for (std::size_t i = 0; i < c_samples; ++i) {
    cosines.push_back(std::cos(generator.GenerateTheta(3)));
    azimuths.push_back(generator.GeneratePhi());
  }
  ExpectDistribution(
      cosines, [](double t) { return Fisher(3, t); }, "theta");
  ExpectDistribution(
      azimuths, [](double phi) { return phi / (2 * c_pi); }, "phi");
}
