// The random words that a generator is going to see, for the test's own formula.
//
//   test::CReplay words(42, 1000);           // seeds, reads 1000 words ahead, seeds again
//   EXPECT_EQ(generator(), words.U() * 5);   // the test's own formula, draw by draw
//   words.ExpectInStep();                    // the generator drew as many as the test
//
//   CReplaySource source = test::WordsAfter(0);   // begins with the word 0
//   test::CWords same(source);
//   EXPECT_EQ(generator(source), same.U() * 5);
#pragma once

#include <pxlib2core/Random.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/ReplaySource.h>
#include <pxlib2core/Types.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Words one after the other, as words and as uniform numbers.
class CWords {
public:
  explicit CWords(ORVA::CReplaySource words) : m_Words(std::move(words)) {}

  ORVA::uint64 Word() { return m_Words(); }
  /// One draw of the uniform generator on [0, 1).
  double U() { return static_cast<double>(Word() >> 32) * 2.3283064365386963e-10; }
  [[nodiscard]] std::size_t Drawn() const { return m_Words.Drawn(); }

private:
  ORVA::CReplaySource m_Words;
};

/// The words of the shared source after Seed.
class CReplay : public CWords {
public:
  CReplay(ORVA::uint64 seed, std::size_t words)
      : CWords(ReadAhead(seed, words)),
        m_Trace(__FILE__, __LINE__, "seed " + std::to_string(seed)) {}

  /// Checks that the source stands where this replay stands.
  void ExpectInStep() { EXPECT_EQ(ORVA::CRandom::Obj().Rand64(), Word()); }

private:
  static ORVA::CReplaySource ReadAhead(ORVA::uint64 seed, std::size_t count) {
    ORVA::CRandom::Obj().Seed(seed);
    std::vector<ORVA::uint64> words(count);
    for (auto& word : words) word = ORVA::CRandom::Obj().Rand64();
    ORVA::CRandom::Obj().Seed(seed);
    return ORVA::CReplaySource(std::move(words));
  }

  testing::ScopedTrace m_Trace;
};

/// The given words first, then a thousand of a fixed stream.
template <class... Words>
ORVA::CReplaySource WordsAfter(Words... first) {
  std::vector<ORVA::uint64> words = {first...};
  ORVA::CRandomSource rest(7);
  for (int i = 0; i < 1000; ++i) words.push_back(rest());
  return ORVA::CReplaySource(std::move(words));
}

} // namespace test
