// The random words that a generator is going to see, read ahead from the seeded source.
//
//   test::CReplay words(42, 1000);           // seeds, reads 1000 words, seeds again
//   EXPECT_EQ(generator(), words.U() * 5);    // the test's own formula, draw by draw
//   words.ExpectInStep();                     // the generator drew as many as the test
#pragma once

#include <pxlib2core/Random.h>
#include <pxlib2core/Types.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <string>
#include <vector>

namespace test {

class CReplay {
public:
  CReplay(ORVA::uint64 seed, std::size_t words)
      : m_Trace(__FILE__, __LINE__, "seed " + std::to_string(seed)) {
    ORVA::CRandom::Obj().Seed(seed);
    Read(words);
    ORVA::CRandom::Obj().Seed(seed);
  }
  /// A source whose first word is the given one and, on demand, whose second is 0.
  static CReplay BeginningWith(ORVA::uint64 first, bool secondIsZero = false) {
    return CReplay(StBeginning{first, secondIsZero});
  }

  ORVA::uint64 Word() { return m_Words.at(m_Next++); }
  /// One draw of the uniform generator on [0, 1).
  double U() { return static_cast<double>(Word() >> 32) * 2.3283064365386963e-10; }

  /// Checks that the source stands where this replay stands.
  void ExpectInStep() { EXPECT_EQ(ORVA::CRandom::Obj().Rand64(), Word()); }
  [[nodiscard]] std::size_t Drawn() const { return m_Next; }

private:
  struct StBeginning {
    ORVA::uint64 first;
    bool secondIsZero;
  };
  explicit CReplay(StBeginning beginning)
      : m_Trace(__FILE__, __LINE__, "first word " + std::to_string(beginning.first)) {
    ORVA::CRandom::Obj().Seed(7);
    Force(beginning);
    Read(1000);
    Force(beginning);
    EXPECT_EQ(m_Words[0], beginning.first);
    EXPECT_EQ(m_Words[1] == 0, beginning.secondIsZero);
  }

  // The first word is rotl(s0 + s3, 23) + s0 and so depends on s3 alone where s0 is 0; then the
  // second is 0 exactly where s1 equals s3.
  static void Force(StBeginning beginning) {
    auto& state = ORVA::Impl::t_randomStream.state;
    state[0] = 0;
    state[3] = std::rotr(beginning.first, 23);
    state[1] = beginning.secondIsZero ? state[3] : 0x123456789ABCDEF1u;
    state[2] = 0xFEDCBA9876543211u;
  }
  void Read(std::size_t words) {
    m_Words.resize(words);
    for (auto& word : m_Words) word = ORVA::CRandom::Obj().Rand64();
  }

  std::vector<ORVA::uint64> m_Words;
  std::size_t m_Next = 0;
  testing::ScopedTrace m_Trace;
};

} // namespace test
