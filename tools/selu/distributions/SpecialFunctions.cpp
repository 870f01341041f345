#include "distributions/SpecialFunctions.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace selu {
namespace {

constexpr double c_epsilon = std::numeric_limits<double>::epsilon();

// lgamma of the C library writes a global sign, which nobody needs here.
double LogGamma(double x) {
  int sign = 0;
  return ::lgamma_r(x, &sign);
}

// For x < shape + 1: the power series.
double GammaSeries(double shape, double x) {
  double term = 1 / shape, sum = term;
  for (double k = shape + 1; term > sum * c_epsilon; ++k) sum += term *= x / k;
  return sum * std::exp(shape * std::log(x) - x - LogGamma(shape));
}

// For greater x: the continued fraction of the upper function, from the front.
double UpperGammaFraction(double shape, double x) {
  constexpr double tiny = 1e-300;
  double b = x + 1 - shape, c = 1 / tiny, d = 1 / b, product = d;
  double change = 0;
  for (double i = 1; std::abs(change - 1) > c_epsilon && i < 1e6; ++i) {
    double const a = -i * (i - shape);
    b += 2;
    d = a * d + b;
    c = b + a / c;
    if (std::abs(d) < tiny) d = tiny;
    if (std::abs(c) < tiny) c = tiny;
    d = 1 / d;
    change = c * d;
    product *= change;
  }
  return product * std::exp(shape * std::log(x) - x - LogGamma(shape));
}

} // namespace

double GammaShare(double shape, double x) noexcept {
  if (std::isnan(x)) return x;
  if (x <= 0) return 0;
  if (std::isinf(x)) return 1;
  double const share = x < shape + 1 ? GammaSeries(shape, x) : 1 - UpperGammaFraction(shape, x);
  return std::clamp(share, 0.0, 1.0);
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
