// Gamma deviates draw by draw beside a second writing of the published step lists, whose tables are
// computed here from what their figures mean.
#include <SeluUtils/Random/RandomGamma.h>

#include "support/Random.h"
#include "support/Replay.h"

#include <boost/math/distributions/normal.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

using namespace ORVA;

namespace {

constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

// Published tables have seven significant digits.
double Rounded(double x) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6e", x);
  return std::atof(text);
}

// Indices from 1, as published.
struct StTables {
  StTables() {
    boost::math::normal const normal;
    auto const upper = [&](double p) { return quantile(complement(normal, p / 2)); };
    std::array<double, 33> exact{};
    for (int i = 1; i <= 32; ++i) exact[at(i)] = i == 1 ? 0 : upper(1 - (i - 1) / 32.0);
    for (int i = 1; i <= 32; ++i) a[at(i)] = Rounded(exact[at(i)]);
    for (int i = 6; i <= 31; ++i)
      d[at(i)] = Rounded(upper(std::ldexp(1, -i)) - upper(std::ldexp(1, 1 - i)));
    for (int i = 1; i <= 31; ++i) {
      double const low = exact[at(i)], high = exact[at(i + 1)];
      double const bound = (high * high - low * low) / 2;
      t[at(i)] = Rounded(bound);
      h[at(i)] = Rounded((high - low) / (1 - bound));
    }
    double term = 1, sum = 0;
    for (int k = 1; k <= 7; ++k)
      q[at(k)] = std::round((sum += term *= std::log(2.0) / k) * 1e7) / 1e7;
    q[8] = 1;
  }
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  std::array<double, 33> a{}, d{}, t{}, h{};
  std::array<double, 9> q{};
};

StTables const& Tables() {
  static StTables const tables;
  return tables;
}

// The step lists, step by step; one letter names are theirs.
class CStepLists {
public:
  explicit CStepLists(test::CWords& words) : m_Words(words) {}

  double Exponential() {
    auto const& q = Tables().q;
    double acc = 0, u = 2 * Positive();
    while (u <= 1) acc += q[1], u = 2 * u;
    u = u - 1;
    if (u <= q[1]) return acc + u;
    double m = U();
    for (std::size_t k = 2;; ++k) {
      m = std::min(m, U());
      if (u <= q[k]) return acc + m * q[1];
    }
  }

  double Normal() {
    auto const& [a, d, t, h, q] = Tables();
    double u = Positive(), w = 0, base = 0;
    int const s = u > 0.5 ? 1 : 0;
    u = 32 * (u + u - s);
    std::size_t i = static_cast<std::size_t>(u);
    if (i == 32) i = 31;
    if (i > 0) {
      double v = u - static_cast<double>(i);
      base = a[i];
      for (;;) {
        if (v > t[i]) {
          w = (v - t[i]) * h[i];
          goto done;
        }
        w = U() * (a[i + 1] - base);
        double tt = (w / 2 + base) * w;
      step6:
        if (v > tt) goto done;
        u = U();
        if (v >= u) {
          tt = u;
          v = U();
          goto step6;
        }
        v = U();
      }
    }
    i = 6;
    base = a[32];
    for (u = 2 * u; u < 1; u = 2 * u) base += d[i], i = i + 1;
    u = u - 1;
    for (;;) {
      w = u * d[i];
      double tt = (w / 2 + base) * w;
      for (;;) {
        double const v = U();
        if (v > tt) goto done;
        u = U();
        if (v < u) break;
        tt = u;
      }
      u = U();
    }
  done:
    return s == 1 ? -(base + w) : base + w;
  }

  double Gamma(double a) {
    if (a < 1) return GammaBelowOne(a);
    double const s2 = a - 0.5, s = std::sqrt(s2), d = 5.656854 - 12 * s;
    double t = Normal(), x = s + t / 2;
    double const g = x * x;
    if (t >= 0) return g;
    double u = U();
    if (d * u <= t * t * t) return g;
    double const r = 1 / a;
    double const q0 =
        ((((((0.0002424 * r + 0.00024511) * r - 7.388e-05) * r + 0.00144121) * r + 0.00801191) * r +
          0.02083148) *
             r +
         0.04166669) *
        r;
    double b = 1.77, si = 0.75, c = 0.1515 / s;
    if (a <= 13.022) b = 1.654 + 0.0076 * s2, si = 1.68 / s + 0.275, c = 0.062 / s + 0.024;
    if (a <= 3.686) b = 0.463 + s + 0.178 * s2, si = 1.235, c = 0.195 / s - 0.079 + 0.16 * s;
    auto const Q = [&](double at) {
      double const v = at / (s + s);
      if (std::fabs(v) > 0.25) return q0 - s * at + 0.25 * at * at + (s2 + s2) * std::log(1 + v);
      double const p =
          ((((((0.1233795 * v - 0.1367177) * v + 0.1423657) * v - 0.1662921) * v + 0.2000062) * v -
            0.250003) *
               v +
           0.3333333) *
          v;
      return q0 + 0.5 * at * at * p;
    };
    if (x > 0 && std::log(1 - u) <= Q(t)) return g;
    for (;;) {
      double const e = Exponential();
      u = 2 * U() - 1;
      t = u < 0 ? b - si * e : b + si * e;
      if (t < -0.7187449) continue;
      double const q = Q(t);
      if (q <= 0) continue;
      double const w =
          q > 0.5 ? std::exp(q) - 1
                  : ((((0.010293 * q + 0.0407753) * q + 0.166829) * q + 0.4999897) * q + 1.0) * q;
      if (c * std::fabs(u) > w * std::exp(e - 0.5 * t * t)) continue;
      x = s + t / 2;
      return x * x;
    }
  }

private:
  double U() { return m_Words.U(); }
  double Positive() {
    double const u = U();
    return u == 0 ? 0x1p-32 : u;
  }
  double GammaBelowOne(double a) {
    double const b = 1 + 0.3678794 * a;
    for (;;) {
      double const p = b * U();
      double const x = p >= 1 ? -std::log((b - p) / a) : std::exp(std::log(p) / a);
      double const e = Exponential();
      if (p >= 1 ? e >= (1 - a) * std::log(x) : e >= x) return x;
    }
  }

  test::CWords& m_Words;
};

double NormalWordToU(uint64 numerator) { return static_cast<double>(numerator) * 0x1p-32; }

} // namespace

TEST(RandomGamma, FollowsTheStepLists) {
  // Every branch of the shape, its seams, and shapes where the last rejection step is frequent.
  for (double const shape : {1e-300, 1e-5, 0.1, 0.5, 0.999, 1.0, 1.0001, 1.5, 2.5, 3.686, 3.687,
                             7.0, 13.022, 13.023, 100.0, 1e6, 1e300}) {
    test::CReplay words(test::Seed(), 200000);
    CStepLists reference(words);
    CRandomGamma const generator(shape, 4);
    for (int i = 0; i < 5000; ++i) {
      ASSERT_DOUBLE_EQ(generator(), reference.Gamma(shape) / 4) << shape << ", draw " << i;
    }
    words.ExpectInStep();
  }
}

TEST(RandomGamma, EveryFirstWordOfTheNormalDeviates) {
  // The first draw chooses interval and sign: all intervals, their edges, and down to the smallest
  // numbers, where the tail reaches the end of its table.
  std::vector<uint64> numerators = {0, 1, 2, 3, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF};
  for (uint64 i = 0; i < 64; ++i)
    for (uint64 const offset : {0u, 1u, 0x01234567u, 0x03FFFFFFu})
      numerators.push_back((i << 26) + offset);
  for (int bit = 0; bit < 32; ++bit) numerators.push_back(uint64{1} << bit);
  for (uint64 const numerator : numerators) {
    auto source = test::WordsAfter(numerator << 32);
    test::CWords words(source);
    CStepLists reference(words);
    ASSERT_DOUBLE_EQ(CRandomGamma(50, 1)(source), reference.Gamma(50)) << NormalWordToU(numerator);
    ASSERT_EQ(source.Drawn(), words.Drawn()) << NormalWordToU(numerator);
  }
}

TEST(RandomGamma, ZeroCountsAsTheSmallestNumber) {
  // Small shapes: the first word is the uniform number, the second opens the exponential deviate.
  auto source = test::WordsAfter(uint64{1} << 62, uint64{0});
  test::CWords words(source);
  EXPECT_DOUBLE_EQ(CRandomGamma(0.5, 1)(source), CStepLists(words).Gamma(0.5));
  EXPECT_EQ(source.Drawn(), words.Drawn());
  auto zero = test::WordsAfter(uint64{0});
  EXPECT_EQ(CRandomGamma(0.5, 1)(zero), 0);
}

TEST(RandomGamma, NoDrawForAShapeThatIsNone) {
  for (double const shape : {c_nan, -1e-300, -1.0, -c_infinity}) {
    test::CReplay words(test::Seed(), 10);
    EXPECT_TRUE(std::isnan(CRandomGamma(shape, 1)()));
    EXPECT_TRUE(std::isnan(CRandomGamma()()));
    words.ExpectInStep();
  }
}

TEST(RandomGamma, ExtremeShapesEnd) {
  CRandom::Obj().Seed(test::Seed());
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(CRandomGamma(0.0, 1)(), 0);
    EXPECT_EQ(CRandomGamma(-0.0, 1)(), 0);
    EXPECT_EQ(CRandomGamma(std::numeric_limits<double>::denorm_min(), 1)(), 0);
    EXPECT_EQ(CRandomGamma(c_infinity, 1)(), c_infinity);
    EXPECT_NEAR(CRandomGamma(1e300, 1)() / 1e300, 1, 1e-9);
    EXPECT_NEAR(CRandomGamma(std::numeric_limits<double>::max(), 1)() /
                    std::numeric_limits<double>::max(),
                1, 1e-9);
  }
}

TEST(RandomGamma, Validity) {
  EXPECT_TRUE(CRandomGamma(2, 3).IsValid());
  EXPECT_TRUE(CRandomGamma(-2, 0).IsValid()); // only finiteness is asked for
  EXPECT_FALSE(CRandomGamma().IsValid());
  for (double const bad : {c_nan, c_infinity, -c_infinity}) {
    EXPECT_FALSE(CRandomGamma(bad, 1).IsValid());
    EXPECT_FALSE(CRandomGamma(1, bad).IsValid());
  }
}
