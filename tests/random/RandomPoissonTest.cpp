#include <SeluUtils/Random/RandomPoisson.h>

#include "support/Random.h"
#include "support/Replay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace ORVA;

namespace {

constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double c_pi = 3.141592653589793;

// The numbers of the small generator that the source is going to give after Seed.
std::vector<int> SmallNumbers(uint64 seed, int count) {
  CRandom::Obj().Seed(seed);
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(CRandom::Obj().Rand15());
  CRandom::Obj().Seed(seed);
  return numbers;
}

int64 KnuthCount(test::CReplay& words, double lambda) {
  double const limit = std::exp(-lambda);
  double product = words.U();
  if (product <= limit) return 0;
  int64 k = 0;
  while (limit < product) {
    product *= words.U();
    ++k;
  }
  return k;
}

} // namespace

TEST(RandomPoisson, MultipliesUniformNumbersBelow512) {
  for (double const lambda : {0.01, 1.0, 10.0, 300.0, 511.9}) {
    test::CReplay words(test::Seed(), 100000);
    CRandomPoisson const generator(lambda);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(generator(), KnuthCount(words, lambda)) << lambda;
    words.ExpectInStep();
  }
}

TEST(RandomPoisson, MeanOfOneDraw) {
  test::CReplay words(test::Seed(), 1000);
  CRandomPoisson const generator(1000);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(generator(7), KnuthCount(words, 7));
  EXPECT_EQ(CRandomPoisson()(), KnuthCount(words, 1));
  words.ExpectInStep();
}

TEST(RandomPoisson, NoMeanNoCount) {
  for (double const lambda : {0.0, -0.0, 1e-16, 1e-300, -1.0, -1e300, -c_infinity}) {
    test::CReplay words(test::Seed(), 10);
    EXPECT_EQ(CRandomPoisson(lambda)(), 0) << lambda;
    (void)words.Word();
    words.ExpectInStep();
  }
  EXPECT_EQ(CRandomPoisson(c_nan)(), 0);
  EXPECT_EQ(CRandomPoisson(c_infinity)(), 0);
}

TEST(RandomPoisson, RoundsALogisticVariableFrom512On) {
  for (double const lambda : {512.0, 1000.0, 12345.6, 1e9}) {
    auto const numbers = SmallNumbers(test::Seed(), 2000);
    test::CReplay words(test::Seed(), 2000);
    CRandomPoisson const generator(lambda);
    double const beta = c_pi / std::sqrt(3 * lambda), alpha = beta * lambda;
    std::size_t next = 0;
    for (int i = 0; i < 1000; ++i) {
      double u = 0, x = 0;
      do {
        u = (numbers.at(next++) + 1) / 32767.0;
        x = u < 1 ? (alpha - std::log((1 - u) / u)) / beta : -1;
      } while (x <= -0.5);
      (void)words.Word(); // drawn for a test that every positive count passes
      ASSERT_EQ(generator(), static_cast<int64>(x + 0.5)) << lambda;
    }
    words.ExpectInStep();
    EXPECT_EQ(CRandom::Obj().Rand15(), numbers.at(next));
  }
}

TEST(RandomPoisson, NumbersOfOneAndAboveAreDrawnAgain) {
  // Look for a seed whose small generator opens with 32766 or 32767, which stand for 1 and more.
  uint64 seed = 0;
  for (auto first = SmallNumbers(seed, 1); first[0] < 32766; first = SmallNumbers(seed, 1)) ++seed;
  auto const numbers = SmallNumbers(seed, 2);
  double const u = (numbers[1] + 1) / 32767.0;
  double const beta = c_pi / std::sqrt(3000.0);
  ASSERT_LT(u, 1);
  EXPECT_EQ(CRandomPoisson(1000)(),
            static_cast<int64>((beta * 1000 - std::log((1 - u) / u)) / beta + 0.5));
}

TEST(RandomPoisson, CountsSaturateAt31Bits) {
  CRandom::Obj().Seed(test::Seed());
  for (double const lambda : {1e10, 1e100, 1e300, std::numeric_limits<double>::max()})
    for (int i = 0; i < 100; ++i) EXPECT_EQ(CRandomPoisson(lambda)(), 2147483647) << lambda;
}

TEST(RandomPoisson, Validity) {
  EXPECT_TRUE(CRandomPoisson().IsValid());
  EXPECT_TRUE(CRandomPoisson(2.2250738585072014e-308).IsValid());
  for (double const lambda : {2.2250738585072011e-308, 0.0, -1.0, c_infinity, c_nan})
    EXPECT_FALSE(CRandomPoisson(lambda).IsValid()) << lambda;
}
