// Goodness of fit with a stated false-alarm rate: at a random seed a right sampler fails one in a
// million of these checks.
#pragma once

#include <boost/math/distributions/chi_squared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace test {

inline constexpr double c_falseAlarm = 1e-6;
inline constexpr double c_deviations = 4.8916; // two-sided normal quantile of it

/// Kolmogorov's distance of the values from a distribution function, times the root of their
/// number.
template <class Cdf>
double KolmogorovDistance(std::vector<double> values, Cdf cdf) {
  std::ranges::sort(values);
  auto const n = static_cast<double>(values.size());
  double distance = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    double const p = cdf(values[i]);
    distance =
        std::max({distance, p - static_cast<double>(i) / n, static_cast<double>(i + 1) / n - p});
  }
  return distance * std::sqrt(n);
}

template <class Cdf>
void ExpectDistribution(std::vector<double> const& values, Cdf cdf, std::string const& what) {
  double const critical = std::sqrt(std::log(2 / c_falseAlarm) / 2); // 2.69, n large
  EXPECT_LT(KolmogorovDistance(values, cdf), critical) << what;
}

/// Mean and variance, the latter with the sampling error that the fourth central moment gives.
inline void ExpectMoments(std::vector<double> const& values, double mean, double variance,
                          double fourthCentralMoment, std::string const& what) {
  auto const n = static_cast<double>(values.size());
  double sum = 0, squares = 0;
  for (double const value : values) sum += value;
  for (double const value : values) squares += (value - mean) * (value - mean);
  EXPECT_NEAR(sum / n, mean, c_deviations * std::sqrt(variance / n)) << what;
  EXPECT_NEAR(squares / n, variance,
              c_deviations * std::sqrt((fourthCentralMoment - variance * variance) / n))
      << what;
}

/// Probability of a chi-square at least as large for these counts; cells are joined until each
/// expects ten.
inline double ChiSquarePValue(std::vector<double> const& counts,
                              std::vector<double> const& expected) {
  double sum = 0, count = 0, expectation = 0;
  int cells = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    count += counts[i];
    expectation += expected[i];
    bool const isLast = i + 1 == counts.size();
    if (expectation < 10 && !isLast) continue;
    if (expectation > 0) {
      sum += (count - expectation) * (count - expectation) / expectation;
      ++cells;
    } else if (count > 0) {
      return 0;
    }
    count = expectation = 0;
  }
  return cdf(complement(boost::math::chi_squared(cells - 1), sum));
}

} // namespace test
