// Samplers beside the closed-form distributions of Boost.Math.
#include <SeluUtils/Random/PressedDirections.h>
#include <SeluUtils/Random/RandomChordlength.h>
#include <SeluUtils/Random/RandomCircleDiameter.h>
#include <SeluUtils/Random/RandomDiscrete.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomLogNormal.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomRayleigh.h>
#include <SeluUtils/Random/RandomUniform.h>

#include "support/Random.h"
#include "support/Statistics.h"

#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/distributions/rayleigh.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr std::size_t c_samples = 100000;

class RandomStatistics : public testing::Test {
protected:
  RandomStatistics() { CRandom::Obj().Seed(test::Seed()); }

  template <class Generator>
  static std::vector<double> Sample(Generator const& generator) {
    std::vector<double> values(c_samples);
    for (double& value : values) value = static_cast<double>(generator());
    return values;
  }

  // Distribution function, mean and variance of a sampler that is meant to be exact.
  template <class Generator, class Distribution>
  static void ExpectExact(Generator const& generator, Distribution const& distribution,
                          std::string const& what) {
    auto const values = Sample(generator);
    test::ExpectDistribution(
        values, [&](double x) { return cdf(distribution, x); }, what);
    double const deviation = variance(distribution);
    test::ExpectMoments(values, mean(distribution), deviation,
                        kurtosis(distribution) * deviation * deviation, what);
  }

private:
  testing::ScopedTrace m_Trace{__FILE__, __LINE__,
                               "SELU_TEST_SEED=" + std::to_string(test::Seed())};
};

} // namespace

TEST_F(RandomStatistics, Uniform) {
  auto const cdf = [](double x) { return (x + 2) / 5; };
  CRandomUniform const generator(-2, 3);
  auto values = Sample(generator);
  test::ExpectDistribution(values, cdf, "single draws");
  test::ExpectMoments(values, 0.5, 25 / 12.0, 625 / 80.0, "single draws");
  generator(values);
  test::ExpectDistribution(values, cdf, "doubles in bulk");
  std::vector<float> floats(c_samples);
  generator(floats);
  test::ExpectDistribution({floats.begin(), floats.end()}, cdf, "floats in bulk");
}

TEST_F(RandomStatistics, Normal) {
  ExpectExact(CRandomNormal(), boost::math::normal(), "standard");
  ExpectExact(CRandomNormal(5, 0.25), boost::math::normal(5, 0.25), "5, 0.25");
}

TEST_F(RandomStatistics, NormalPairsAreIndependent) {
  CRandomNormal const generator;
  double sum = 0;
  for (std::size_t i = 0; i < c_samples; ++i) {
    double const first = generator();
    sum += first * generator();
  }
  auto const n = static_cast<double>(c_samples);
  EXPECT_NEAR(sum / n, 0, test::c_deviations / std::sqrt(n));
}

TEST_F(RandomStatistics, LogNormal) {
  CRandomLogNormal const generator(0.5, 0.25);
  ExpectExact(generator, boost::math::lognormal(0.5, 0.25), "0.5, 0.25");
}

TEST_F(RandomStatistics, LogNormalOfExpectationMissesTheDeviation) {
  CRandomLogNormal generator;
  generator.SetLogNormalExpectationAndStDeviation(3, 1);
  double const logVariance = std::log(1 + 1 / 9.0);
  boost::math::lognormal const narrow(std::log(3.0) - logVariance * logVariance / 2, logVariance);
  EXPECT_NEAR(mean(narrow), 3, 1e-12);
  EXPECT_NEAR(standard_deviation(narrow), 0.317, 1e-3); // not 1
  ExpectExact(generator, narrow, "3, 1");
}

TEST_F(RandomStatistics, Exponential) {
  ExpectExact(CRandomExponential(), boost::math::exponential(), "1");
  ExpectExact(CRandomExponential(7), boost::math::exponential(7), "7");
}

TEST_F(RandomStatistics, Rayleigh) {
  ExpectExact(CRandomRayleigh(2.5), boost::math::rayleigh(2.5), "2.5");
}

TEST_F(RandomStatistics, Gamma) {
  for (double const shape : {0.05, 0.5, 0.99, 1.0, 1.3, 2.5, 3.686, 5.0, 13.0, 14.0, 100.0, 1e5})
    ExpectExact(CRandomGamma(shape, 2), boost::math::gamma_distribution<>(shape, 0.5),
                "shape " + std::to_string(shape));
}

TEST_F(RandomStatistics, ChordLengthAndCircleDiameter) {
  auto const chords = Sample(CRandomChordlength());
  test::ExpectDistribution(
      chords, [](double x) { return x * x; }, "chord");
  test::ExpectMoments(chords, 2 / 3.0, 1 / 18.0, 1 / 135.0, "chord");
  auto const circles = Sample(CRandomCircleDiameter());
  test::ExpectDistribution(
      circles, [](double x) { return 1 - std::sqrt(1 - x * x); }, "circle");
  double const mean = std::numbers::pi / 4, variance = 2 / 3.0 - mean * mean;
  // Moments about zero: pi / 4, 2 / 3, 3 pi / 16, 8 / 15.
  double const fourth = 8 / 15.0 - 3 * mean * mean + 4 * mean * mean - 3 * std::pow(mean, 4);
  test::ExpectMoments(circles, mean, variance, fourth, "circle");
}

TEST_F(RandomStatistics, PressedDirections) {
  double const pi = std::numbers::pi;
  for (double const factor : {0.2, 1.0, 3.0})
    test::ExpectDistribution(
        Sample(CPressedDirections(factor, 1)),
        [&](double angle) { return std::atan2(factor * std::sin(angle), std::cos(angle)) / pi; },
        "factor " + std::to_string(factor));
}

TEST_F(RandomStatistics, Discrete) {
  std::map<double, double> const table{{0.1, 0.2}, {0.2, 0.3}, {0.3, 0.1}, {0.4, 0.4}};
  CRandomDiscrete const generator(table);
  std::vector<double> counts(4), expected;
  for (auto const& entry : table) expected.push_back(entry.second * c_samples);
  for (std::size_t i = 0; i < c_samples; ++i)
    ++counts[static_cast<std::size_t>(std::lround(generator() * 10)) - 1];
  EXPECT_GT(test::ChiSquarePValue(counts, expected), test::c_falseAlarm);
}

TEST_F(RandomStatistics, PoissonBelow512) {
  for (double const lambda : {0.3, 10.0, 100.0, 511.0}) {
    boost::math::poisson const poisson(lambda);
    std::vector<double> counts(1000), expected(1000);
    for (std::size_t k = 0; k < 1000; ++k)
      expected[k] = c_samples * pdf(poisson, static_cast<double>(k));
    auto const values = Sample(CRandomPoisson(lambda));
    for (double const value : values) ++counts.at(static_cast<std::size_t>(value));
    EXPECT_GT(test::ChiSquarePValue(counts, expected), test::c_falseAlarm) << lambda;
    test::ExpectMoments(values, lambda, lambda, lambda * (1 + 3 * lambda),
                        "Poisson " + std::to_string(lambda));
  }
}

TEST_F(RandomStatistics, PoissonFrom512OnIsLogistic) {
  double const lambda = 600;
  double const scale = std::sqrt(3 * lambda) / std::numbers::pi;
  std::vector<double> counts(2000), logistic(2000), poisson(2000);
  // 32766 numbers j / 32767 stand for the uniform.
  for (int j = 1; j <= 32766; ++j) {
    double const x = lambda + scale * std::log(j / (32767.0 - j));
    logistic.at(static_cast<std::size_t>(x + 0.5)) += c_samples / 32766.0;
  }
  for (std::size_t k = 0; k < 2000; ++k)
    poisson[k] = c_samples * pdf(boost::math::poisson(lambda), static_cast<double>(k));
  CRandomPoisson const generator(lambda);
  for (std::size_t i = 0; i < c_samples; ++i) ++counts.at(static_cast<std::size_t>(generator()));
  EXPECT_GT(test::ChiSquarePValue(counts, logistic), test::c_falseAlarm);
  EXPECT_LT(test::ChiSquarePValue(counts, poisson), test::c_falseAlarm);
}
