// The exact distributions beside the closed forms of Boost.Math: 10^6 draws over 1000 equally
// likely cells, pairs of successive draws, mean and variance.
#include <SeluUtils/Random/AliasTable.h>
#include <SeluUtils/Random/ExactDiscrete.h>
#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactLogNormal.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactPressedDirections.h>
#include <SeluUtils/Random/ExactRayleigh.h>
#include <SeluUtils/Random/ExactUniform.h>

#include "support/EqualCells.h"
#include "support/LargeGamma.h"
#include "support/Random.h"
#include "support/Statistics.h"

#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/distributions/rayleigh.hpp>
#include <boost/math/distributions/uniform.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr std::size_t c_draws = 1'000'000;

class ExactDraws : public testing::Test {
protected:
  template <class T, class Distribution>
  std::vector<T> Sample(Distribution const& distribution) {
    std::vector<T> values(c_draws);
    distribution.Fill(values, m_Source);
    return values;
  }

  // Cells, pairs and moments.
  template <class Distribution, class Theory>
  void ExpectLaw(Distribution const& distribution, Theory const& theory, std::string const& what) {
    auto const values = Sample<double>(distribution);
    test::CEqualCells cells(what);
    for (double const value : values) cells.Add(cdf(theory, value));
    cells.ExpectEven();
    double const v = variance(theory);
    test::ExpectMoments(values, mean(theory), v, kurtosis(theory) * v * v, what);
  }

  CRandomSource m_Source{test::Seed(), 13};

private:
  testing::ScopedTrace m_Trace{__FILE__, __LINE__,
                               "SELU_TEST_SEED=" + std::to_string(test::Seed())};
};

// The distribution function before a count, and of it: a number drawn between them is uniform.
double ShareOfCount(double mean, int64 count, CRandomSource& source) {
  auto const k = static_cast<double>(count);
  double const below = 1 - test::GammaShare(k, mean);
  double const upTo = 1 - test::GammaShare(k + 1, mean);
  return below + (upTo - below) * (static_cast<double>(source() >> 11) * 0x1p-53);
}

} // namespace

TEST_F(ExactDraws, Uniform) {
  ExpectLaw(CExactUniform(), boost::math::uniform(0, 1), "standard");
  ExpectLaw(CExactUniform(-2, 3), boost::math::uniform(-2, 3), "-2, 3");
}

TEST_F(ExactDraws, Normal) {
  ExpectLaw(CExactNormal(), boost::math::normal(), "standard");
  ExpectLaw(CExactNormal(5, 0.25), boost::math::normal(5, 0.25), "5, 0.25");
}

TEST_F(ExactDraws, Exponential) {
  ExpectLaw(CExactExponential(), boost::math::exponential(), "standard");
  ExpectLaw(CExactExponential(7), boost::math::exponential(7), "7");
}

TEST_F(ExactDraws, Rayleigh) { ExpectLaw(CExactRayleigh(2.5), boost::math::rayleigh(2.5), "2.5"); }

TEST_F(ExactDraws, LogNormal) {
  ExpectLaw(CExactLogNormal(0.5, 0.25), boost::math::lognormal(0.5, 0.25), "0.5, 0.25");
}

TEST_F(ExactDraws, LogNormalHasTheMeanAndDeviationItIsGiven) {
  auto const given = CExactLogNormal::FromMeanAndDeviation(3, 1);
  boost::math::lognormal const theory(given.Mu(), given.Sigma());
  EXPECT_NEAR(mean(theory), 3, 1e-14);
  EXPECT_NEAR(standard_deviation(theory), 1, 1e-14);
  ExpectLaw(given, theory, "mean 3, deviation 1");
}

TEST_F(ExactDraws, Gamma) {
  for (double const shape : {0.02, 0.3, 0.999, 1.0, 1.5, 5.0, 100.0, 1e4}) {
    std::string const what = "shape " + std::to_string(shape);
    auto const values = Sample<double>(CExactGamma(shape, 2));
    test::CEqualCells cells(what);
    for (double const value : values) cells.Add(test::GammaShare(shape, 2 * value));
    cells.ExpectEven();
    boost::math::gamma_distribution<> const theory(shape, 0.5);
    double const v = variance(theory);
    test::ExpectMoments(values, mean(theory), v, kurtosis(theory) * v * v, what);
  }
}

TEST_F(ExactDraws, GammaOfALargeShape) {
  for (double const shape : {1e5, 1e7, 1e10, 1e13, 1e15}) {
    std::string const what = "shape " + std::to_string(shape);
    auto values = Sample<double>(CExactGamma(shape, 1));
    test::CEqualCells cells(what);
    for (double& value : values) {
      cells.Add(test::GammaShare(shape, value));
      value -= shape;
    }
    cells.ExpectEven();
    test::ExpectMoments(values, 0, shape, 3 * shape * (shape + 2), what);
  }
}

// Where nearly half of the numbers are too small for a double.
TEST_F(ExactDraws, GammaOfATinyShape) {
  double const shape = 0.001;
  double const atSmallest = boost::math::gamma_p(shape, 1e-300);
  std::size_t below = 0;
  test::CEqualCells cells("above 1e-300");
  for (double const value : Sample<double>(CExactGamma(shape, 1))) {
    if (value < 1e-300)
      ++below;
    else
      cells.Add((boost::math::gamma_p(shape, value) - atSmallest) / (1 - atSmallest));
  }
  cells.ExpectEven();
  double const deviation = std::sqrt(c_draws * atSmallest * (1 - atSmallest));
  EXPECT_NEAR(static_cast<double>(below), c_draws * atSmallest, test::c_deviations * deviation);
}

TEST_F(ExactDraws, Poisson) {
  for (double const mean : {0.01, 0.7, 3.0, 9.99, 10.0, 10.5, 31.4, 100.0, 127.9, 128.0, 1000.0,
                            12345.678, 1e6, 1e9 + 0.5, 1e12, 1e15, 0x1p53}) {
    auto const counts = Sample<int64>(CExactPoisson(mean));
    test::CEqualCells cells("mean " + std::to_string(mean));
    std::vector<double> values;
    values.reserve(counts.size());
    for (int64 const count : counts) {
      cells.Add(ShareOfCount(mean, count, m_Source));
      values.push_back(static_cast<double>(count) - std::floor(mean));
    }
    cells.ExpectEven();
    test::ExpectMoments(values, mean - std::floor(mean), mean, mean * (1 + 3 * mean),
                        "mean " + std::to_string(mean));
  }
}

// Every count on its own, where there are few.
TEST_F(ExactDraws, PoissonCountsOneByOne) {
  for (double const mean : {0.5, 4.0, 9.0, 10.0, 20.0, 60.0, 150.0}) {
    boost::math::poisson const theory(mean);
    std::vector<double> counts(400), expected(400);
    for (std::size_t k = 0; k < expected.size(); ++k)
      expected[k] = c_draws * pdf(theory, static_cast<double>(k));
    for (int64 const count : Sample<int64>(CExactPoisson(mean)))
      ++counts.at(static_cast<std::size_t>(count));
    EXPECT_GT(test::ChiSquarePValue(counts, expected), test::c_falseAlarm) << mean;
  }
}

TEST_F(ExactDraws, PoissonOfZeroIsZero) {
  for (int64 const count : Sample<int64>(CExactPoisson(0))) ASSERT_EQ(count, 0);
}

TEST_F(ExactDraws, ChoiceByWeights) {
  std::vector<double> thousand;
  for (int i = 0; i < 1000; ++i) thousand.push_back(1 + i % 7);
  std::vector<std::vector<double>> const tables = {{1},
                                                   {0, 5},
                                                   {1, 1, 1, 1, 1, 1},
                                                   {0.2, 0.3, 0.1, 0.4},
                                                   {1e-300, 3e-300},
                                                   {1e308, 1e308, 1.5e308},
                                                   {1e-5, 1, 0, 1e3, 0, 17, 1e-3},
                                                   thousand};
  for (auto const& weights : tables) {
    std::vector<double> counts(weights.size()), expected;
    double const greatest = *std::ranges::max_element(weights);
    double sum = 0;
    for (double const weight : weights) sum += weight / greatest;
    for (double const weight : weights) expected.push_back(c_draws * (weight / greatest / sum));
    for (std::size_t const index : Sample<std::size_t>(CAliasTable(weights))) ++counts.at(index);
    for (std::size_t i = 0; i < weights.size(); ++i)
      EXPECT_TRUE(weights[i] > 0 || counts[i] == 0) << "a weight of 0 is never drawn";
    for (std::size_t i = 0; i < weights.size(); ++i) {
      double const variance = expected[i] * (1 - expected[i] / c_draws);
      EXPECT_NEAR(counts[i], expected[i], test::c_deviations * std::sqrt(variance) + 1) << i;
    }
    if (weights.size() > 2) {
      EXPECT_GT(test::ChiSquarePValue(counts, expected), test::c_falseAlarm) << weights.size();
    }
  }
}

TEST_F(ExactDraws, PressedDirections) {
  double const pi = std::numbers::pi;
  for (double const factor : {0.2, 1.0, 3.0}) {
    test::CEqualCells cells("factor " + std::to_string(factor));
    for (double const angle : Sample<double>(CExactPressedDirections(factor)))
      cells.Add(std::atan2(factor * std::sin(angle), std::cos(angle)) / pi);
    cells.ExpectEven();
  }
}

// Draws of two streams side by side are as independent as those of one.
TEST_F(ExactDraws, StreamsAreIndependentOfOneAnother) {
  boost::math::normal const theory;
  test::CEqualCells cells("first draws of a million streams");
  for (ORVA::uint64 stream = 0; stream < c_draws; ++stream) {
    CRandomSource source(test::Seed(), stream);
    cells.Add(cdf(theory, CExactNormal()(source)));
  }
  cells.ExpectEven();
}
