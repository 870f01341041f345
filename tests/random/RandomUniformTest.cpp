#include <SeluUtils/Random/RandomUniform.h>

#include <SeluUtils/Random/UniformPoint.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"
#include "support/Replay.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

using namespace ORVA;

namespace {

constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(RandomUniform, TakesTheHighHalfOfAWord) {
  test::CReplay words(test::Seed(), 300);
  CRandomUniform const unit;
  for (int i = 0; i < 100; ++i) EXPECT_EQ(unit(), words.U());
  CRandomUniform const other(-3, 7);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(other(), 10 * words.U() - 3);
  words.ExpectInStep();
}

TEST(RandomUniform, ReachesItsStartButNotItsEnd) {
  CRandomUniform const unit;
  CReplaySource ends({0x00000000FFFFFFFFu, 0xFFFFFFFF00000000u});
  EXPECT_EQ(unit(ends), 0);
  EXPECT_EQ(unit(ends), 1 - 0x1p-32);
}

TEST(RandomUniform, DoublesInBulkTakeTheLowHalfOfEachWord) {
  // 5000 elements need more than one piece of the cache.
  for (std::size_t const n : {0u, 1u, 7u, 2048u, 2049u, 5000u}) {
    test::CReplay words(test::Seed(), n + 1);
    std::vector<double> values(n + 1, -1);
    CRandomUniform(2, 5)(values.data(), n);
    for (std::size_t i = 0; i < n; ++i)
      ASSERT_EQ(values[i], 3 * (static_cast<double>(words.Word() & 0xFFFFFFFFu) * 0x1p-32) + 2)
          << i;
    EXPECT_EQ(values[n], -1);
    words.ExpectInStep();
  }
}

TEST(RandomUniform, FloatsInBulkTakeHalfAWordEach) {
  for (std::size_t const n : {0u, 1u, 2u, 7u, 4096u, 4097u, 10001u}) {
    test::CReplay words(test::Seed(), n / 2 + 2);
    std::vector<float> values(n + 1, -1);
    CRandomUniform(2, 5)(values.data(), n);
    uint64 word = 0;
    for (std::size_t i = 0; i < n; ++i) {
      word = i % 2 == 0 ? words.Word() : word >> 32;
      ASSERT_EQ(values[i],
                static_cast<float>(3 * (static_cast<double>(word & 0xFFFFFFFFu) * 0x1p-32) + 2))
          << i;
    }
    EXPECT_EQ(values[n], -1);
    words.ExpectInStep();
  }
}

TEST(RandomUniform, BulkDrawsTakeSpans) {
  std::vector<double> pointer(10), span(10);
  CRandom::Obj().Seed(1);
  CRandomUniform()(pointer.data(), pointer.size());
  CRandom::Obj().Seed(1);
  CRandomUniform()(span);
  EXPECT_EQ(pointer, span);
}

TEST(RandomUniform, NullArrayIsRefusedUnlessItIsEmpty) {
  EXPECT_NO_THROW(CRandomUniform()(static_cast<double*>(nullptr), 0));
  EXPECT_THROW(CRandomUniform()(static_cast<double*>(nullptr), 1), CExBadParam);
  EXPECT_THROW(CRandomUniform()(static_cast<float*>(nullptr), 1), CExBadParam);
}

TEST(RandomUniform, EndMustNotBeBelowStart) {
  test::ExpectError([] { (void)CRandomUniform(3, 2); }, "m_fEnd=2 is smaller than m_fStart=3.",
                    "ORVA::CRandomUniform::CRandomUniform", "src/Utils/Random/RandomUniform", 47);
  test::ExpectError([] { (void)CRandomUniform(0.5, -c_infinity); },
                    "m_fEnd=-inf is smaller than m_fStart=0.5.");
  CRandomUniform const point(2, 2);
  EXPECT_TRUE(point.IsValid());
  EXPECT_EQ(point(), 2);
  EXPECT_FALSE(CRandomUniform(c_nan, 1).IsValid());
  EXPECT_FALSE(CRandomUniform(0, c_nan).IsValid());
}

TEST(RandomGenerator, RawBitsComeFromTheSharedSource) {
  test::CReplay words(3, 8);
  CRandomUniform const generator;
  EXPECT_EQ(generator.Rand8(), words.Word() >> 56);
  EXPECT_EQ(generator.Rand32(), words.Word() >> 32);
  EXPECT_EQ(generator.Rand64(), words.Word());
  std::uint8_t bytes[12];
  generator.RandBuffer(bytes, sizeof bytes);
  uint64 const low = words.Word(), high = words.Word();
  for (std::size_t i = 0; i < sizeof bytes; ++i)
    EXPECT_EQ(bytes[i], static_cast<std::uint8_t>((i < 8 ? low : high) >> (8 * (i % 8))));
  generator.ReSeedThePseudoRandomGenerator(42); // moves nothing
  words.ExpectInStep();
}

TEST(RandomGenerator, ThreadsDrawAtOnce) {
  CRandom::Obj().Seed(test::Seed());
  std::vector<double> sums(4);
  std::vector<std::thread> threads;
  for (double& sum : sums)
    threads.emplace_back([&sum] {
      CRandomUniform const unit;
      for (int i = 0; i < 100000; ++i) sum += unit();
    });
  for (auto& thread : threads) thread.join();
  for (double const sum : sums) EXPECT_NEAR(sum / 100000, 0.5, 0.005); // 5.5 standard errors
  EXPECT_NE(sums[0], sums[1]);
}

TEST(UniformPoint, DrawsZThenYThenX) {
  test::CReplay words(test::Seed(), 100);
  CUniformPoint const box({1, 2, 3}, {2, 4, 7});
  for (int i = 0; i < 20; ++i) {
    CTriple<double> const p = box();
    EXPECT_EQ(p.z, words.U() * 4 + 3);
    EXPECT_EQ(p.y, words.U() * 2 + 2);
    EXPECT_EQ(p.x, words.U() * 1 + 1);
  }
  words.ExpectInStep();
}

TEST(UniformPoint, KnowsItsBox) {
  EXPECT_EQ(CUniformPoint({0, 0, 0}, {2, 3, 4}).volume(), 24);
  EXPECT_EQ(CUniformPoint(CTriple<double>(2, 3, 4)).volume(), 24);
  EXPECT_EQ(CUniformPoint({1, 2, 3}, {2, 4, 6}).volume(), 6);
  EXPECT_EQ(CUniformPoint().volume(), 1);
  EXPECT_TRUE(CUniformPoint().IsValid());
  EXPECT_TRUE(CUniformPoint({1, 1, 1}, {1, 1, 1}).IsValid());
  EXPECT_FALSE(CUniformPoint({2, 1, 1}, {1, 1, 1}).IsValid());
  EXPECT_FALSE(CUniformPoint({1, 2, 1}, {1, 1, 1}).IsValid());
  EXPECT_FALSE(CUniformPoint({1, 1, 2}, {1, 1, 1}).IsValid());
  EXPECT_FALSE(CUniformPoint({1, 1, c_nan}, {1, 1, 1}).IsValid());
}
