// How often the exact draws lie far out, among 10^8 of each: a run of a minute, for scripts/check.
// Counts beyond bounds down to a chance of 10^-8 beside those of the laws. A right sampler fails
// one of these counts in 10^8. The first argument is a seed.
#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>

#include "support/LargeGamma.h"

#include <boost/math/distributions/poisson.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <span>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr double c_draws = 1e8;
constexpr double c_falseAlarm = 1e-8;

CRandomSource g_source(0);
bool g_fits = true;

struct StBound {
  double chance; // of lying beyond
  double bound;
  double found = 0;
};

// Bounds in ascending order and the chance to lie above each.
std::vector<StBound> Above(std::vector<double> const& bounds,
                           std::function<double(double)> const& chance) {
  std::vector<StBound> out;
  for (double const bound : bounds) out.push_back({chance(bound), bound});
  return out;
}

void Judge(std::string const& what, std::vector<StBound> const& bounds) {
  for (auto const& [chance, bound, found] : bounds) {
    double const expected = chance * c_draws;
    boost::math::poisson const law(expected);
    double const p = found < expected ? cdf(law, found) : cdf(complement(law, found - 1));
    bool const fits = p > c_falseAlarm / 2;
    g_fits &= fits;
    std::printf("%-28s beyond %-12g %12.0f of %14.1f  p %.2g%s\n", what.c_str(), bound, found,
                expected, p, fits ? "" : "  FAILS");
  }
  std::fflush(stdout);
}

// Counts of values above the bounds, and below those of the second list.
template <class T, class Distribution>
void Check(std::string const& what, Distribution const& distribution, double center,
           std::vector<StBound> above, std::vector<StBound> below) {
  std::vector<T> values(10'000);
  for (double done = 0; done < c_draws; done += static_cast<double>(values.size())) {
    distribution.Fill(values, g_source);
    for (T const value : values) {
      double const off = static_cast<double>(value) - center;
      if (!above.empty() && off > above[0].bound)
        for (StBound& one : above) one.found += off > one.bound ? 1 : 0;
      if (!below.empty() && off < below[0].bound)
        for (StBound& one : below) one.found += off < one.bound ? 1 : 0;
    }
  }
  Judge(what + ", above", above);
  Judge(what + ", below", below);
}

double NormalTail(double z) { return std::erfc(z / std::sqrt(2)) / 2; }

void CheckNormal() {
  std::vector<StBound> above, below;
  for (double const z : {3.0, 3.6541528853610088, 4.0, 4.5, 5.0, 5.3, 5.6}) {
    above.push_back({NormalTail(z), z});
    below.push_back({NormalTail(z), -z});
  }
  Check<double>("normal", CExactNormal(), 0, above, below);
}

void CheckExponential() {
  Check<double>("exponential", CExactExponential(), 0,
                Above({6, 7.69711747013105, 10, 13, 15.394234940262098, 17, 18},
                      [](double x) { return std::exp(-x); }),
                {{1e-3, -std::log1p(-1e-3)}, {1e-6, -std::log1p(-1e-6)}});
}

void CheckGamma(double shape) {
  std::vector<StBound> above, below;
  double const sigma = std::sqrt(shape);
  double const center = shape < 1e5 ? 0 : shape; // differences keep the digits of huge numbers
  for (double const z : {3.0, 4.0, 5.0, 5.5, 6.0, 8.0, 10.0}) {
    double const x = shape + z * sigma;
    double const chance =
        shape < 1e5 ? boost::math::gamma_q(shape, x) : 1 - test::GammaShare(shape, x);
    if (chance * c_draws > 0.5) above.push_back({chance, x - center});
  }
  for (double const p : {1e-3, 1e-5, 1e-7})
    if (shape < 1e5) below.push_back({p, boost::math::gamma_p_inv(shape, p)});
  Check<double>("gamma " + std::to_string(shape), CExactGamma(shape, 1), center, above, below);
}

void CheckPoisson(double mean) {
  std::vector<StBound> above, below;
  double const sigma = std::sqrt(mean), whole = std::floor(mean);
  for (double const z : {3.0, 4.0, 5.0, 5.5, 6.0, 7.0}) {
    double const high = std::floor(z * sigma), low = -std::floor(z * sigma);
    // P(N > k) = P(k + 1, mean), P(N < k) = 1 - P(k, mean).
    double const over = test::GammaShare(whole + high + 1, mean);
    if (over * c_draws > 0.5) above.push_back({over, high});
    double const under = whole + low > 0 ? 1 - test::GammaShare(whole + low, mean) : 0;
    if (under * c_draws > 0.5) below.push_back({under, low});
  }
  Check<int64>("Poisson " + std::to_string(mean), CExactPoisson(mean), whole, above, below);
}

// Cosines near the wrong end, where nearly no direction lies.
void CheckFisher() {
  double const kappa = 5;
  CExactVonMisesFisher const bundle(kappa, CPolarCoordinates(0.0, 0.0));
  std::vector<StBound> below;
  for (double const t : {-0.2, -0.5, -0.8, -0.95})
    below.push_back(
        {(std::exp(kappa * (t - 1)) - std::exp(-2 * kappa)) / (1 - std::exp(-2 * kappa)), t});
  struct StCosines {
    CExactVonMisesFisher const& draw;
    void Fill(std::span<double> out, CRandomSource& source) const {
      for (double& t : out) t = draw.Direction(source).z;
    }
  };
  Check<double>("von Mises-Fisher 5", StCosines{bundle}, 0, {}, below);
}

} // namespace

int main(int argc, char** argv) {
  ORVA::uint64 const seed = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 20240229;
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  g_source.Seed(seed);
  CheckNormal();
  CheckExponential();
  for (double const shape : {0.3, 1.0, 2.5, 100.0, 1e12}) CheckGamma(shape);
  for (double const mean : {5.0, 10.0, 30.0, 1000.0, 1e6, 0x1p53}) CheckPoisson(mean);
  CheckFisher();
  std::printf(g_fits ? "All tails fit.\n" : "Tails do not fit.\n");
  return g_fits ? 0 : 1;
}
