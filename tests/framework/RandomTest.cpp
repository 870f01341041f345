#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>

#include "support/Errors.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <latch>
#include <set>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using ORVA::CExBadParam;
using ORVA::CRandom;
using ORVA::uint64;

namespace {

CRandom& Source() { return CRandom::Obj(); }

// SplitMix64: the golden-ratio counter and Stafford's 13th mixer, as published.
uint64 SplitMix(uint64& state) {
  state += 0x9E3779B97F4A7C15u;
  uint64 z = state;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

// xoshiro256++ as published, its state filled from SplitMix64.
class CReference {
public:
  explicit CReference(uint64 seed) {
    for (uint64& word : m_State) word = SplitMix(seed);
    m_Counter = SplitMix(seed);
  }
  uint64 Next() {
    auto const rotate = [](uint64 x, int k) { return (x << k) | (x >> (64 - k)); };
    auto& s = m_State;
    uint64 const result = rotate(s[0] + s[3], 23) + s[0];
    uint64 const t = s[1] << 17;
    s[2] ^= s[0];
    s[3] ^= s[1];
    s[1] ^= s[2];
    s[0] ^= s[3];
    s[2] ^= t;
    s[3] = rotate(s[3], 45);
    return result;
  }
  int Next15() { return static_cast<int>(SplitMix(m_Counter) >> 49); }

private:
  std::array<uint64, 4> m_State;
  uint64 m_Counter = 0;
};

// The next word of this process and of a child, drawn before any test could seed the source.
std::vector<uint64> NextWordsOfTwoProcesses() {
  int ends[2];
  if (pipe(ends) != 0) return {};
  pid_t const child = fork();
  if (child == 0) {
    uint64 const word = Source().Rand64();
    _exit(write(ends[1], &word, sizeof word) == sizeof word ? 0 : 1);
  }
  close(ends[1]);
  uint64 word = 0;
  bool const complete = child > 0 && read(ends[0], &word, sizeof word) == sizeof word;
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  return complete ? std::vector{word, Source().Rand64()} : std::vector<uint64>{};
}

std::vector<uint64> const c_unseeded = NextWordsOfTwoProcesses(); // the first ones
std::vector<uint64> const c_unseededLater = NextWordsOfTwoProcesses();

// What a forked child draws, or a child of that child.
std::vector<uint64> WordsOfAChild(bool isGrandchild = false) {
  std::vector<uint64> words(8);
  std::size_t const bytes = words.size() * sizeof words[0];
  int ends[2];
  if (pipe(ends) != 0) return {};
  pid_t const child = fork();
  if (child == 0) {
    words = isGrandchild ? WordsOfAChild() : words;
    if (!isGrandchild)
      for (uint64& word : words) word = Source().Rand64();
    _exit(write(ends[1], words.data(), bytes) == static_cast<ssize_t>(bytes) ? 0 : 1);
  }
  close(ends[1]);
  bool const complete =
      child > 0 && read(ends[0], words.data(), bytes) == static_cast<ssize_t>(bytes);
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  return complete ? words : std::vector<uint64>{};
}

std::vector<uint64> Words(std::size_t count) {
  std::vector<uint64> words(count);
  for (uint64& word : words) word = Source().Rand64();
  return words;
}

std::vector<uint64> WordsOfAnotherThread(std::size_t count) {
  std::vector<uint64> words;
  std::thread([&] { words = Words(count); }).join();
  return words;
}

} // namespace

TEST(Random, UnseededProcessesDrawDifferentWords) {
  for (auto const& words : {c_unseeded, c_unseededLater}) {
    ASSERT_EQ(words.size(), 2u) << "the second process could not be started";
    EXPECT_NE(words[0], words[1]);
  }
}

TEST(Random, AForkedChildDrawsNumbersOfItsOwn) {
  Source().Seed(42);
  (void)Words(3);
  auto const first = WordsOfAChild(), second = WordsOfAChild(), grandchild = WordsOfAChild(true);
  auto const own = Words(8);
  ASSERT_EQ(first.size(), 8u);
  std::set<std::vector<uint64>> const all = {first, second, grandchild, own};
  EXPECT_EQ(all.size(), 4u);
  Source().Seed(42); // not even the numbers at the start
  EXPECT_NE(Words(8), first);
  EXPECT_NE(Words(8), grandchild);
}

TEST(Random, ASeedGivesForkedChildrenTheSameNumbersAgain) {
  Source().Seed(42);
  auto const first = WordsOfAChild(), second = WordsOfAChild(), grandchild = WordsOfAChild(true);
  Source().Seed(42);
  EXPECT_EQ(WordsOfAChild(), first);
  EXPECT_EQ(WordsOfAChild(), second);
  EXPECT_EQ(WordsOfAChild(true), grandchild);
  Source().Seed(43);
  EXPECT_NE(WordsOfAChild(), first);
}

TEST(Random, FollowsThePublishedAlgorithm) {
  for (uint64 const seed : {uint64{0}, uint64{1}, uint64{42}, ~uint64{0}, test::Seed()}) {
    CReference reference(seed);
    Source().Seed(seed);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(Source().Rand64(), reference.Next()) << seed;
  }
}

TEST(Random, ReferenceReproducesPublishedWords) {
  // First words of SplitMix64 from the states 0 and 1234567, as its users publish them.
  uint64 zero = 0, other = 1234567;
  EXPECT_EQ(SplitMix(zero), 0xE220A8397B1DCDAFu);
  EXPECT_EQ(SplitMix(zero), 0x6E789E6AA1B965F4u);
  EXPECT_EQ(SplitMix(zero), 0x06C45D188009454Fu);
  EXPECT_EQ(SplitMix(other), 6457827717110365317u);
  EXPECT_EQ(SplitMix(other), 3203168211198807973u);
}

TEST(Random, SameSeedSameSequence) {
  Source().Seed(42);
  auto const first = Words(50);
  Source().Seed(42);
  EXPECT_EQ(Words(50), first);
  Source().Seed(43);
  EXPECT_NE(Words(50), first);
}

TEST(Random, SmallerDrawsAreTheHighBitsOfOneWord) {
  Source().Seed(7);
  auto const words = Words(3);
  Source().Seed(7);
  EXPECT_EQ(Source().Rand8(), words[0] >> 56);
  EXPECT_EQ(Source().Rand32(), words[1] >> 32);
  EXPECT_EQ(Source().Rand64(), words[2]);
}

TEST(Random, BufferHoldsSuccessiveWordsLowestByteFirst) {
  for (std::size_t const bytes : {0u, 1u, 7u, 8u, 9u, 15u, 16u, 17u, 1000u, 1003u}) {
    Source().Seed(11);
    std::vector<std::uint8_t> expected;
    for (std::size_t at = 0; at < bytes; at += 8) {
      uint64 const word = Source().Rand64();
      for (std::size_t i = 0; i < 8 && at + i < bytes; ++i)
        expected.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
    uint64 const after = Source().Rand64();
    Source().Seed(11);
    constexpr std::uint8_t c_guard = 0xA5;
    std::vector<std::uint8_t> buffer(bytes + 2, c_guard);
    Source().Rand(buffer.data() + 1, bytes); // an odd address, guarded on both sides
    EXPECT_EQ(buffer.front(), c_guard);
    EXPECT_EQ(buffer.back(), c_guard);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin() + 1)) << bytes;
    EXPECT_EQ(Source().Rand64(), after) << bytes;
  }
}

TEST(Random, NullBufferIsRefusedUnlessItIsEmpty) {
  EXPECT_NO_THROW(Source().Rand(nullptr, 0));
  Source().Seed(3);
  uint64 const next = Source().Rand64();
  Source().Seed(3);
  test::ExpectError<CExBadParam>([] { Source().Rand(nullptr, 1); }, "buffer is null",
                                 "ORVA::CRandom::Rand", "framework/pxlib2core/Random");
  EXPECT_EQ(Source().Rand64(), next);
}

TEST(Random, ObjIsOneObject) { EXPECT_EQ(&CRandom::Obj(), &CRandom::Obj()); }

TEST(Random, EveryBitIsSetHalfOfTheTime) {
  Source().Seed(test::Seed());
  SCOPED_TRACE("SELU_TEST_SEED=" + std::to_string(test::Seed()));
  constexpr int c_draws = 100000;
  std::array<int, 64> set{}, together{};
  uint64 previous = Source().Rand64();
  for (int i = 0; i < c_draws; ++i) {
    uint64 const word = Source().Rand64();
    for (std::size_t bit = 0; bit < 64; ++bit) {
      set[bit] += static_cast<int>(word >> bit & 1);
      together[bit] += static_cast<int>((word ^ previous) >> bit & 1);
    }
    previous = word;
  }
  // Six standard deviations of a fair coin.
  double const tolerance = 6 * std::sqrt(c_draws / 4.0);
  for (std::size_t bit = 0; bit < 64; ++bit) {
    EXPECT_NEAR(set[bit], c_draws / 2.0, tolerance) << "bit " << bit;
    EXPECT_NEAR(together[bit], c_draws / 2.0, tolerance) << "bit " << bit << " and the one before";
  }
}

TEST(Random, Bytes8AreUniform) {
  Source().Seed(test::Seed());
  SCOPED_TRACE("SELU_TEST_SEED=" + std::to_string(test::Seed()));
  constexpr int c_draws = 256000;
  std::array<int, 256> count{};
  for (int i = 0; i < c_draws; ++i) ++count[Source().Rand8()];
  double chiSquare = 0;
  for (int const n : count) chiSquare += (n - 1000.0) * (n - 1000.0) / 1000.0;
  EXPECT_NEAR(chiSquare, 255, 6 * std::sqrt(2 * 255.0)); // mean 255, variance 510
}

TEST(Rand15, FollowsTheMixerSeededWithTheSource) {
  for (uint64 const seed : {uint64{0}, uint64{42}, ~uint64{0}}) {
    CReference reference(seed);
    Source().Seed(seed);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(Source().Rand15(), reference.Next15()) << seed;
  }
}

TEST(Rand15, LeavesTheWordsAlone) {
  Source().Seed(5);
  auto const words = Words(2);
  Source().Seed(5);
  (void)Source().Rand15();
  EXPECT_EQ(Source().Rand64(), words[0]);
  (void)Source().Rand15();
  EXPECT_EQ(Source().Rand64(), words[1]);
}

TEST(Rand15, ReachesBothEndsAndNothingBeyond) {
  Source().Seed(test::Seed());
  SCOPED_TRACE("SELU_TEST_SEED=" + std::to_string(test::Seed()));
  EXPECT_EQ(CRandom::c_rand15Max, 32767);
  constexpr int c_draws = 1000000; // each end is missed with a probability of e^-30
  int smallest = CRandom::c_rand15Max, largest = 0;
  double sum = 0;
  for (int i = 0; i < c_draws; ++i) {
    int const number = Source().Rand15();
    smallest = std::min(smallest, number);
    largest = std::max(largest, number);
    sum += number;
  }
  EXPECT_EQ(smallest, 0);
  EXPECT_EQ(largest, 32767);
  EXPECT_NEAR(sum / c_draws, 16383.5, 6 * 32768 / std::sqrt(12.0 * c_draws));
}

TEST(RandomThreads, DrawFromDifferentStreams) {
  Source().Seed(42);
  std::vector<std::vector<uint64>> streams{Words(100)};
  for (int i = 0; i < 8; ++i) streams.push_back(WordsOfAnotherThread(100));
  std::set<uint64> all;
  for (auto const& words : streams) all.insert(words.begin(), words.end());
  EXPECT_EQ(all.size(), streams.size() * 100);
}

TEST(RandomThreads, StreamsOfNeighboringSeedsDiffer) {
  std::set<uint64> all;
  for (uint64 seed = 0; seed < 20; ++seed) {
    Source().Seed(seed);
    all.insert(Source().Rand64());
    for (int thread = 0; thread < 3; ++thread) all.insert(WordsOfAnotherThread(1)[0]);
  }
  EXPECT_EQ(all.size(), 20u * 4u);
}

TEST(RandomThreads, ThreadsInTurnGetTheSameStreamsAgain) {
  auto const run = [] {
    Source().Seed(42);
    return std::vector{WordsOfAnotherThread(10), WordsOfAnotherThread(10)};
  };
  auto const first = run();
  EXPECT_EQ(run(), first);
  EXPECT_NE(first[0], first[1]);
}

TEST(RandomThreads, TheSeedingThreadGetsTheSameDrawsWhereverItRuns) {
  Source().Seed(42);
  auto const here = Words(10);
  std::vector<uint64> there;
  std::thread([&] {
    Source().Seed(42);
    there = Words(10);
  }).join();
  EXPECT_EQ(there, here);
}

TEST(RandomThreads, SeedRestartsAllThreads) {
  std::vector<uint64> before, after;
  std::latch drawn(1), seeded(1);
  Source().Seed(42);
  std::thread worker([&] {
    before = Words(10);
    drawn.count_down();
    seeded.wait();
    after = Words(10);
  });
  drawn.wait();
  Source().Seed(42);
  seeded.count_down();
  worker.join();
  EXPECT_EQ(after, before); // the first other thread after either Seed
}

TEST(RandomThreads, DrawingWhileSeedingIsSafe) {
  constexpr int c_threads = 4, c_seeds = 300;
  std::atomic<bool> stop = false;
  std::atomic<int> ready = 0;
  std::vector<std::thread> threads;
  std::vector<uint64> sums(c_threads);
  for (std::size_t t = 0; t < c_threads; ++t)
    threads.emplace_back([&, t] {
      std::array<std::uint8_t, 33> buffer{};
      ++ready;
      do {
        Source().Rand(buffer.data(), buffer.size());
        sums[t] += Source().Rand64() + Source().Rand32() + Source().Rand8() + buffer[32];
        sums[t] += static_cast<uint64>(Source().Rand15());
      } while (!stop);
    });
  while (ready < c_threads) std::this_thread::yield();
  for (uint64 seed = 0; seed < c_seeds; ++seed) {
    Source().Seed(seed);
    EXPECT_EQ(Source().Rand64(), CReference(seed).Next());
  }
  stop = true;
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::set<uint64>(sums.begin(), sums.end()).size(), sums.size());
}

TEST(RandomThreads, SeedingFromManyThreadsIsSafe) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (uint64 t = 0; t < 4; ++t)
    threads.emplace_back([&wrong, t] {
      for (int i = 0; i < 200; ++i) {
        Source().Seed(t);
        (void)Source().Rand64(); // of this seed or of one that another thread set meanwhile
        if (Source().Rand15() > CRandom::c_rand15Max) ++wrong;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  Source().Seed(9);
  EXPECT_EQ(Source().Rand64(), CReference(9).Next());
}
