// Exact Poisson numbers beside the paper's rejection, word by word (W. Hoermann, "The Transformed
// Rejection Method for Generating Poisson Random Variables", Insurance: Mathematics and Economics
// 12 (1993) 39-45).
#include <SeluUtils/Random/ExactPoisson.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Random.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace ORVA;

namespace {

constexpr uint64 c_ones = ~uint64{0};

// A proposal of PTRS in the paper's own letters, and whether it is taken.
struct StPoissonPlace {
  StPoissonPlace(double theMean, double theEdge, bool isBelow) : mean(theMean) {
    b = 0.931 + 2.53 * std::sqrt(mean);
    a = -0.059 + 0.02483 * b;
    inverseAlpha = 1.1239 + 1.1328 / (b - 3.4);
    steps = std::llround((isBelow ? theEdge - 0.5 : 0.5 - theEdge) * 0x1p52 - 0.5);
    double const u = (static_cast<double>(steps) + 0.5) * 0x1p-52;
    edge = 0.5 - std::fabs(u);
    place = (2 * a / edge + b) * u + mean + 0.43;
  }
  [[nodiscard]] uint64 Word() const { return static_cast<uint64>(steps + (int64{1} << 51)) << 12; }
  [[nodiscard]] static uint64 WordOf(double v) {
    return static_cast<uint64>(std::llround((1 - v) * 0x1p53)) << 11;
  }
  [[nodiscard]] double QuickAcceptance() const { return 0.9277 - 3.6224 / (b - 2); }
  // The greatest v that the count's probability lets pass.
  [[nodiscard]] double Bound() const {
    long double const k = std::floor(place), m = mean;
    if (k < 0) return 0.5;
    long double const logP = k * std::log(m) - m - std::lgamma(k + 1);
    return static_cast<double>(std::exp(logP) * (a / (edge * edge) + b) / inverseAlpha);
  }
  [[nodiscard]] bool IsAccepted(double v) const {
    if (edge >= 0.07 && v <= QuickAcceptance()) return true;
    if (place < 0 || (edge < 0.013 && v > edge)) return false;
    return v <= Bound();
  }

  double mean, b, a, inverseAlpha, edge, place;
  int64 steps;
};

} // namespace

// Places all over the hat, and heights just below and just above the bound that the probability of
// the count sets. Far in the tails, where no sample comes, too.
TEST(ExactPoisson, RejectsWhereThePaperDoes) {
  test::CRandomNumbers random;
  for (double const mean : {10.0, 11.5, 50.25, 127.9, 128.0, 1000.7, 1e6})
    for (int trial = 0; trial < 2000; ++trial) {
      StPoissonPlace const place(mean, std::exp(random.Real(std::log(1e-4), std::log(0.5))),
                                 random.Between(0, 1) == 0);
      double const bound = place.Bound();
      for (double const v : {bound * (1 - 1e-9), bound * (1 + 1e-9), 0.5 * place.edge,
                             2 * place.edge, place.QuickAcceptance()}) {
        if (!(v > 1e-6 && v <= 1)) continue;
        // Behind these words two that are taken at once: the middle of the hat.
        CReplaySource words({place.Word(), StPoissonPlace::WordOf(v), uint64{1} << 63, c_ones});
        bool const isAccepted = place.IsAccepted(v);
        double const middle = mean + 0.43;
        EXPECT_EQ(CExactPoisson(mean)(words),
                  static_cast<int64>(std::floor(isAccepted ? place.place : middle)))
            << mean << ", edge " << place.edge << ", v " << v;
        EXPECT_EQ(words.Drawn(), isAccepted ? 2u : 4u) << mean << ", " << place.edge << ", " << v;
      }
    }
}

TEST(ExactPoisson, PlacesWhereNoCountIsAreRejected) {
  // The lowest and the highest place lie 2^49 standard deviations away.
  for (uint64 const end : {uint64{0}, c_ones}) {
    CReplaySource beyond({end, c_ones, uint64{1} << 63, c_ones});
    EXPECT_EQ(CExactPoisson(1e4)(beyond), 10000);
    EXPECT_EQ(beyond.Drawn(), 4u);
  }
}
