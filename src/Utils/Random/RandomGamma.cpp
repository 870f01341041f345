#include <SeluUtils/Random/RandomGamma.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace ORVA {

namespace {

constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

// Sums of (ln 2)^i / i! over i = 1..k; the last entry ends the search.
constexpr double c_expSums[] = {0.6931472, 0.9333737, 0.9888778, 0.9984959,
                                0.9998293, 0.9999833, 0.9999986, 1.0};

// Normal deviates: 32 intervals of equal probability of the half-normal distribution. Entry i - 1
// belongs to interval i; the widths go on beyond the last interval, halving what is left.
constexpr int c_intervals = 32;
constexpr double c_quantiles[c_intervals] = {
    0.0,       0.03917609, 0.07841241, 0.1177699, 0.1573107, 0.1970991, 0.2372021, 0.2776904,
    0.3186394, 0.3601299,  0.4022501,  0.4450965, 0.4887764, 0.5334097, 0.5791322, 0.6260990,
    0.6744898, 0.7245144,  0.7764218,  0.8305109, 0.8871466, 0.9467818, 1.009990,  1.077516,
    1.150349,  1.229859,   1.318011,   1.417797,  1.534121,  1.675940,  1.862732,  2.153875};
constexpr double c_tailWidths[c_intervals - 1] = {
    0.0,       0.0,       0.0,       0.0,       0.0,       0.2636843, 0.2425085, 0.2255674,
    0.2116342, 0.1999243, 0.1899108, 0.1812252, 0.1736014, 0.1668419, 0.1607967, 0.1553497,
    0.1504094, 0.1459026, 0.1417700, 0.1379632, 0.1344418, 0.1311722, 0.1281260, 0.1252791,
    0.1226109, 0.1201036, 0.1177417, 0.1155119, 0.1134023, 0.1114027, 0.1095039};
// (q[i]^2 - q[i-1]^2) / 2 of the quantiles q, and (q[i] - q[i-1]) / (1 - that).
constexpr double c_thresholds[c_intervals - 1] = {
    0.0007673828, 0.002306870, 0.003860618, 0.005438454, 0.007050699, 0.008708396, 0.01042357,
    0.01220953,   0.01408125,  0.01605579,  0.01815290,  0.02039573,  0.02281177,  0.02543407,
    0.02830296,   0.03146822,  0.03499233,  0.03895483,  0.04345878,  0.04864035,  0.05468334,
    0.06184222,   0.07047983,  0.08113195,  0.09462444,  0.1123001,   0.1364980,   0.1716886,
    0.2276241,    0.3304980,   0.5847031};
constexpr double c_slopes[c_intervals - 1] = {
    0.03920617, 0.03932705, 0.03950999, 0.03975703, 0.04007093, 0.04045533, 0.04091481, 0.04145507,
    0.04208311, 0.04280748, 0.04363863, 0.04458932, 0.04567523, 0.04691571, 0.04833487, 0.04996298,
    0.05183859, 0.05401138, 0.05654656, 0.05953130, 0.06308489, 0.06737503, 0.07264544, 0.07926471,
    0.08781922, 0.09930398, 0.1155599,  0.1404344,  0.1836142,  0.2790016,  0.7010474};
constexpr int c_firstTailInterval = 6;

// Ascending coefficients of polynomials without constant term: q0 in 1 / shape, the logarithm of
// the quotient of the densities in t / (2 s), and exp(q) - 1.
constexpr double c_q[] = {0.04166669,  0.02083148, 0.00801191, 0.00144121,
                          -0.00007388, 0.00024511, 0.00024240};
constexpr double c_a[] = {0.3333333, -0.2500030, 0.2000062, -0.1662921,
                          0.1423657, -0.1367177, 0.1233795};
constexpr double c_e[] = {1.0, 0.4999897, 0.1668290, 0.0407753, 0.0102930};
constexpr double c_sqrt32 = 5.656854;
constexpr double c_tau = -0.7187449; // where the double exponential hat begins
constexpr double c_invE = 0.3678794;

template <std::size_t n>
double Horner(double const (&coefficients)[n], double x) {
  double sum = coefficients[n - 1];
  for (std::size_t i = n - 1; i-- > 0;) sum = sum * x + coefficients[i];
  return sum;
}

// The hat of the last step: its center b, scale si and factor c, for three ranges of the shape.
struct StHat {
  double b, si, c;
};

StHat HatOfShape(double a, double s, double s2) {
  if (a <= 3.686) return {0.463 + s + 0.178 * s2, 1.235, 0.195 / s - 0.079 + 0.16 * s};
  if (a <= 13.022) return {1.654 + 0.0076 * s2, 1.68 / s + 0.275, 0.062 / s + 0.024};
  return {1.77, 0.75, 0.1515 / s};
}

} // namespace

// With 0 the doublings below would never end.
template <class Source>
double CRandomGamma::PositiveUniform(Source& source) const {
  double const u = m_Uniform(source);
  return u == 0 ? 0x1p-32 : u;
}

template <class Source>
double CRandomGamma::sexpo(Source& source) const {
  double const ln2 = c_expSums[0];
  double sum = 0;
  double u = 2 * PositiveUniform(source);
  while (u <= 1) {
    sum += ln2;
    u += u;
  }
  u -= 1;
  if (u <= ln2) return sum + u;
  double least = m_Uniform(source);
  std::size_t k = 0;
  do {
    least = std::min(least, m_Uniform(source));
    ++k;
  } while (u > c_expSums[k]);
  return sum + least * ln2;
}

template <class Source>
double CRandomGamma::snorm(Source& source) const {
  double u = PositiveUniform(source);
  bool const isNegative = u > 0.5;
  u = c_intervals * (u + u - (isNegative ? 1 : 0));
  int const interval = std::min(static_cast<int>(u), c_intervals - 1);
  double const y = interval == 0 ? NormalTail(u, source) : NormalCenter(u, interval, source);
  return isNegative ? -y : y;
}

template <class Source>
double CRandomGamma::NormalCenter(double u, int interval, Source& source) const {
  auto const i = static_cast<std::size_t>(interval);
  double const base = c_quantiles[i - 1];
  for (double v = u - interval;; v = m_Uniform(source)) {
    if (v > c_thresholds[i - 1]) return base + (v - c_thresholds[i - 1]) * c_slopes[i - 1];
    double const w = m_Uniform(source) * (c_quantiles[i] - base);
    double bound = (w / 2 + base) * w;
    for (;;) {
      if (v > bound) return base + w;
      double const next = m_Uniform(source);
      if (v < next) break;
      bound = next;
      v = m_Uniform(source);
    }
  }
}

template <class Source>
double CRandomGamma::NormalTail(double u, Source& source) const {
  std::size_t i = c_firstTailInterval;
  double base = c_quantiles[c_intervals - 1];
  // The smallest u is 2^-26, so i ends at 31 at most, the end of the table.
  u += u;
  while (u < 1) {
    base += c_tailWidths[i - 1];
    ++i;
    u += u;
  }
  u -= 1;
  for (;; u = m_Uniform(source)) {
    double const w = u * c_tailWidths[i - 1];
    double bound = (w / 2 + base) * w;
    for (;;) {
      double const v = m_Uniform(source);
      if (v > bound) return base + w;
      double const next = m_Uniform(source);
      if (v < next) break;
      bound = next;
    }
  }
}

template <class Source>
double CRandomGamma::sgamma(double a, Source& source) const {
  if (!(a >= 0)) return c_nan;
  return a >= 1 ? GammaFromOne(a, source)
                : GammaBelowOne(std::fabs(a), source); // -0 would flip signs without end
}

// Conditions are written as "reject if", so that a NaN ends the loop.
template <class Source>
double CRandomGamma::GammaFromOne(double a, Source& source) const {
  double const s2 = a - 0.5;
  double const s = std::sqrt(s2);
  double const d = c_sqrt32 - 12 * s;
  double t = snorm(source);
  double x = s + t / 2;
  double const squeezed = x * x;
  if (t >= 0) return squeezed;
  double u = m_Uniform(source);
  if (d * u <= t * t * t) return squeezed;

  double const r = 1 / a;
  double const q0 = Horner(c_q, r) * r;
  auto const logQuotient = [&](double at) {
    double const v = at / (s + s);
    return std::fabs(v) <= 0.25 ? q0 + 0.5 * at * at * Horner(c_a, v) * v
                                : q0 - s * at + 0.25 * at * at + (s2 + s2) * std::log(1 + v);
  };
  if (x > 0 && std::log(1 - u) <= logQuotient(t)) return squeezed;

  StHat const hat = HatOfShape(a, s, s2);
  for (;;) {
    double const e = sexpo(source);
    u = m_Uniform(source);
    u = u + u - 1;
    t = hat.b + fsign(hat.si * e, u);
    if (t < c_tau) continue;
    double const q = logQuotient(t);
    if (q <= 0) continue;
    double const w = q > 0.5 ? std::exp(q) - 1 : Horner(c_e, q) * q;
    if (hat.c * std::fabs(u) > w * std::exp(e - 0.5 * t * t)) continue;
    x = s + t / 2;
    return x * x;
  }
}

template <class Source>
double CRandomGamma::GammaBelowOne(double a, Source& source) const {
  double const b = 1 + c_invE * a;
  for (;;) {
    double const p = b * m_Uniform(source);
    if (p >= 1) {
      double const x = -std::log((b - p) / a);
      if (sexpo(source) < (1 - a) * std::log(x)) continue;
      return x;
    }
    double const x = std::exp(std::log(p) / a);
    if (sexpo(source) < x) continue;
    return x;
  }
}

double CRandomGamma::fsign(double x, double y) const {
  return (y > 0 && x < 0) || (y < 0 && x > 0) ? -x : x;
}

double CRandomGamma::operator()() const {
  Impl::CSharedSource shared;
  return sgamma(m_Shape, shared) / m_Rate;
}

double CRandomGamma::DrawFrom(CSourceReference source) const {
  return sgamma(m_Shape, source) / m_Rate;
}

bool CRandomGamma::IsValid() const { return std::isfinite(m_Rate) && std::isfinite(m_Shape); }

} // namespace ORVA
