#include "distributions/SpecialFunctions.h"

#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace selu {
namespace {

namespace policies = boost::math::policies;
constexpr policies::policy<policies::promote_double<false>> c_inDouble;

// For shapes so large that series take as many terms: the uniform expansion of N. M. Temme, "The
// Asymptotic Expansion of the Incomplete Gamma Functions", SIAM Journal on Mathematical Analysis 10
// (1979) 757-766. Its first two terms are right to 1e-10 here.
double LargeGammaShare(double shape, double x) {
  double const off = (x - shape) / shape;
  double const root = std::sqrt(-2 * boost::math::log1pmx(off));
  double const eta = off < 0 ? -root : root;
  double const first = std::abs(eta) < 0.01
                           ? -1.0 / 3 + eta * (1.0 / 12 - eta * (2.0 / 135 - eta / 864))
                           : 1 / off - 1 / eta;
  double const share =
      std::erfc(-eta * std::sqrt(shape / 2)) / 2 -
      std::exp(-shape * eta * eta / 2) / std::sqrt(2 * std::numbers::pi * shape) * first;
  return std::clamp(share, 0.0, 1.0);
}

} // namespace

double GammaShare(double shape, double x) noexcept {
  constexpr double large = 1e6;
  if (std::isnan(x)) return x;
  if (x <= 0) return 0;
  if (std::isinf(x)) return 1;
  return shape < large ? boost::math::gamma_p(shape, x, c_inDouble) : LargeGammaShare(shape, x);
}

double ChiSquareProbability(double sum, double freedom) noexcept {
  return freedom > 0 ? 1 - GammaShare(freedom / 2, sum / 2) : 1;
}

double Dawson(double x) noexcept {
  double const size = std::abs(x);
  if (size > 1e3) return (1 + (1 + 1.5 / (x * x)) / (2 * x * x)) / (2 * x);
  if (size < 1e-3) return x * (1 - x * x * (2.0 / 3) * (1 - 0.4 * x * x));
  // Samples of a Gaussian at odd multiples of h about an even one near x.
  constexpr double h = 0.2;
  constexpr int terms = 31; // exp(-(31 h)^2) is below 1e-16
  double const center = 2 * std::round(size / (2 * h));
  double const rest = size - center * h;
  double sum = 0;
  for (int odd = -terms; odd <= terms; odd += 2)
    sum += std::exp(-(rest - odd * h) * (rest - odd * h)) / (center + odd);
  return std::copysign(sum / std::sqrt(std::numbers::pi), x);
}

double KolmogorovProbability(double distance, double n) noexcept {
  double const root = std::sqrt(n);
  double const x = distance * (root + 0.12 + 0.11 / root);
  if (std::isnan(x)) return x;
  if (x < 0.2) return 1; // all but 1e-13
  double sum = 0, sign = 1;
  for (int k = 1; k <= 100; ++k, sign = -sign) {
    double const term = std::exp(-2 * k * k * x * x);
    sum += sign * term;
    if (term < 1e-18) break;
  }
  return std::clamp(2 * sum, 0.0, 1.0);
}

} // namespace selu
