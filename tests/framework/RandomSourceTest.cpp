// Sources of random bits: their words beside a second writing, their streams apart, their state as
// text.
#include <pxlib2core/Random.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Errors.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

using namespace ORVA;

namespace {

using State = std::array<uint64, 4>;

State StateOf(CRandomSource const& source) {
  State state{};
  unsigned long long words[4];
  std::string const saved = source.Save();
  EXPECT_EQ(std::sscanf(saved.c_str(), "xoshiro256++ %llx %llx %llx %llx", &words[0], &words[1],
                        &words[2], &words[3]),
            4)
      << saved;
  std::ranges::copy(words, state.begin());
  return state;
}

std::string TextOf(State const& state) {
  char text[100];
  std::snprintf(
      text, sizeof text, "xoshiro256++ %016llx %016llx %016llx %016llx",
      static_cast<unsigned long long>(state[0]), static_cast<unsigned long long>(state[1]),
      static_cast<unsigned long long>(state[2]), static_cast<unsigned long long>(state[3]));
  return text;
}

// The generator as published.
uint64 Next(State& s) {
  auto const rotate = [](uint64 x, int k) { return (x << k) | (x >> (64 - k)); };
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

// A linear map of states: the images of the 256 states with a single bit.
using Map = std::vector<State>;

State Image(Map const& map, State const& state) {
  State sum{};
  for (std::size_t bit = 0; bit < 256; ++bit)
    if ((state[bit / 64] >> (bit % 64) & 1) != 0)
      for (std::size_t i = 0; i < 4; ++i) sum[i] ^= map[bit][i];
  return sum;
}

// 2^128 steps, by squaring the step 128 times.
Map JumpMap() {
  Map map(256);
  for (std::size_t bit = 0; bit < 256; ++bit) {
    map[bit][bit / 64] = uint64{1} << (bit % 64);
    Next(map[bit]);
  }
  for (int power = 0; power < 128; ++power) {
    Map squared(256);
    for (std::size_t bit = 0; bit < 256; ++bit) squared[bit] = Image(map, map[bit]);
    map = squared;
  }
  return map;
}

} // namespace

static_assert(RandomSource<CRandomSource>);
static_assert(RandomSource<CReplaySource>);
static_assert(RandomSource<std::mt19937_64>);
static_assert(!RandomSource<std::mt19937>, "has words of 32 bits");
static_assert(!RandomSource<int> && !RandomSource<std::vector<double>>);
static_assert(std::uniform_random_bit_generator<CRandomSource>);
static_assert(std::is_trivially_copyable_v<CRandomSource> && sizeof(CRandomSource) == 32);

TEST(RandomSource, GivesTheWordsOfThePublishedGenerator) {
  test::CRandomNumbers random;
  for (int round = 0; round < 100; ++round) {
    CRandomSource source(random.Generator()(), random.Generator()());
    State state = StateOf(source);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(source.Rand64(), Next(state));
  }
}

TEST(RandomSource, StreamZeroIsThatOfTheSharedSource) {
  for (uint64 const seed : {uint64{0}, uint64{1}, uint64{42}, ~uint64{0}}) {
    CRandom::Obj().Seed(seed);
    CRandomSource source(seed);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(source.Rand64(), CRandom::Obj().Rand64()) << seed;
  }
}

TEST(RandomSource, KeepsItsStreamsFromReleaseToRelease) {
  struct StCase {
    uint64 seed, stream;
    char const* saved;
  };
  // Written down when the class was made.
  StCase const cases[] = {
      {0, 0, "xoshiro256++ e220a8397b1dcdaf 6e789e6aa1b965f4 06c45d188009454f f88bb8a8724c81ec"},
      {42, 7, "xoshiro256++ ab99d1411fb83b36 9d9a6288b93a2263 95272742db0e8f88 c9e78366b8bc4cf6"},
      {~uint64{0}, ~uint64{0},
       "xoshiro256++ 66d390c2fdd6265b 70e50e3d6282f30f b330bdeb464ed891 830db6e1131d875a"},
  };
  for (auto const& [seed, stream, saved] : cases)
    EXPECT_EQ(CRandomSource(seed, stream).Save(), saved) << seed << ", " << stream;
}

TEST(RandomSource, SeedBeginsAnewInTheFirstStreamUnlessItNamesAnother) {
  CRandomSource source(5, 6);
  source.Seed(42);
  EXPECT_EQ(source, CRandomSource(42));
  EXPECT_EQ(source, CRandomSource(42, 0));
  source.Seed(42, 7);
  EXPECT_EQ(source, CRandomSource(42, 7));
}

TEST(RandomSource, ShortFormsTakeTheHighestBitsOfAWord) {
  CRandomSource words(5), source(5);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(source.Rand8(), words.Rand64() >> 56);
    EXPECT_EQ(source.Rand32(), words.Rand64() >> 32);
    EXPECT_EQ(source(), words.Rand64());
  }
}

TEST(RandomSource, FillsBuffersLikeTheSharedSource) {
  for (std::size_t const bytes : {0u, 1u, 7u, 8u, 9u, 64u, 1001u}) {
    std::vector<std::uint8_t> own(bytes + 1, 1), shared(bytes + 1, 1);
    CRandom::Obj().Seed(3);
    CRandomSource source(3);
    source.Rand(own.data(), bytes);
    CRandom::Obj().Rand(shared.data(), bytes);
    EXPECT_EQ(own, shared) << bytes;
    EXPECT_EQ(own.back(), 1) << "beyond the end";
    EXPECT_EQ(source.Rand64(), CRandom::Obj().Rand64()) << bytes;
  }
}

TEST(RandomSource, RefusesANullBuffer) {
  CRandomSource source(1);
  source.Rand(nullptr, 0);
  EXPECT_EQ(source, CRandomSource(1));
  test::ExpectError<CExBadParam>([&] { source.Rand(nullptr, 1); }, "buffer is null",
                                 "ORVA::CRandomSource::Rand", "framework/pxlib2core/RandomSource");
  EXPECT_EQ(source, CRandomSource(1));
}

TEST(RandomSource, JumpIsTwoToThe128Steps) {
  Map const jump = JumpMap();
  test::CRandomNumbers random;
  for (int round = 0; round < 20; ++round) {
    CRandomSource source(random.Generator()());
    State const before = StateOf(source);
    source.Jump();
    ASSERT_EQ(StateOf(source), Image(jump, before));
  }
}

TEST(RandomSource, StreamsOfNeighboringSeedsAndNumbersDiffer) {
  std::set<State> states;
  std::set<uint64> words;
  constexpr uint64 sides = 60;
  uint64 const corners[] = {0, ~uint64{0} - sides / 2, uint64{1} << 63};
  for (uint64 const seed : corners)
    for (uint64 const stream : corners)
      for (uint64 i = 0; i < sides; ++i)
        for (uint64 j = 0; j < sides; ++j) {
          CRandomSource source(seed + i, stream + j);
          states.insert(StateOf(source));
          words.insert(source());
        }
  std::set<uint64> numbers;
  for (uint64 const corner : corners)
    for (uint64 i = 0; i < sides; ++i) numbers.insert(corner + i);
  EXPECT_EQ(states.size(), numbers.size() * numbers.size());
  EXPECT_EQ(words.size(), numbers.size() * numbers.size());
}

// Each bit of the first words of many streams is set in half of them, and two successive streams
// differ in half of the bits.
TEST(RandomSource, FirstWordsOfStreamsAreIndependent) {
  constexpr int streams = 100'000;
  std::array<int, 64> set{};
  double differing = 0;
  uint64 previous = CRandomSource(test::Seed(), 0)();
  for (uint64 stream = 1; stream <= streams; ++stream) {
    uint64 const word = CRandomSource(test::Seed(), stream)();
    for (std::size_t bit = 0; bit < 64; ++bit) set[bit] += static_cast<int>(word >> bit & 1);
    differing += std::popcount(word ^ previous);
    previous = word;
  }
  for (int const count : set) EXPECT_NEAR(count, streams / 2, 5.5 * std::sqrt(streams) / 2);
  EXPECT_NEAR(differing / streams, 32, 5.5 * 4 / std::sqrt(streams));
}

TEST(RandomSource, UnseededOnesDiffer) {
  CRandomSource first, second;
  EXPECT_NE(first, second);
  EXPECT_NE(first(), second());
}

TEST(RandomSource, CopiesGoOnAlike) {
  CRandomSource source(9, 9);
  static_cast<void>(source());
  CRandomSource copy = source;
  EXPECT_EQ(copy, source);
  EXPECT_EQ(copy(), source());
  static_cast<void>(copy());
  EXPECT_NE(copy, source);
}

TEST(RandomSource, GoesOnFromItsSavedState) {
  test::CRandomNumbers random;
  for (int round = 0; round < 1000; ++round) {
    CRandomSource source(random.Generator()(), random.Generator()());
    for (int i = random.Between(0, 5); i > 0; --i) static_cast<void>(source());
    std::string const saved = source.Save();
    EXPECT_EQ(saved, TextOf(StateOf(source)));
    CRandomSource other(1);
    other.Restore(saved);
    ASSERT_EQ(other, source);
    ASSERT_EQ(other.Save(), saved);
  }
}

TEST(RandomSource, RefusesWhatIsNoSavedState) {
  std::string const good = CRandomSource(1).Save();
  auto const with = [&](std::size_t at, char letter) {
    std::string text = good;
    text[at] = letter;
    return text;
  };
  std::string const zeros = TextOf(State{});
  std::string const bad[] = {"",
                             "xoshiro256++",
                             good + " ",
                             " " + good,
                             good + "\n",
                             good.substr(0, good.size() - 1),
                             with(0, 'X'),
                             with(12, '\t'),
                             with(29, '0'),
                             with(13, 'g'),
                             with(13, 'A'),
                             with(20, '-'),
                             with(79, ' '),
                             with(40, '\0'),
                             zeros};
  for (std::string const& text : bad) {
    CRandomSource source(2);
    EXPECT_THROW(source.Restore(text), CExBadParam) << text;
    EXPECT_EQ(source, CRandomSource(2)) << "unchanged after " << text;
  }
  test::ExpectError<CExBadParam>(
      [] { CRandomSource(2).Restore("nonsense"); },
      "\"nonsense\" is no saved state: that is \"xoshiro256++\" and four words of 16 lower-case "
      "hexadecimal digits, not all 0, with a blank before each.",
      "ORVA::CRandomSource::Restore", "framework/pxlib2core/RandomSource");
  try {
    CRandomSource(2).Restore(std::string(1'000'000, 'x'));
    FAIL();
  } catch (CExBadParam const& error) {
    EXPECT_LT(std::string(error.what()).size(), 400u) << "shows the beginning of a long text";
  }
}

TEST(RandomSource, ServesTheStandardLibrary) {
  CRandomSource source(4);
  std::uniform_int_distribution<int> die(1, 6);
  std::array<int, 7> counts{};
  for (int i = 0; i < 60'000; ++i) ++counts.at(static_cast<std::size_t>(die(source)));
  for (std::size_t face = 1; face <= 6; ++face) EXPECT_NEAR(counts[face], 10'000, 500);
}

TEST(SourceReference, GivesTheWordsOfAnySource) {
  CRandomSource own(6), ownAgain(6);
  std::mt19937_64 twister(6), twisterAgain(6);
  CReplaySource replay({1, 2, 3});
  CSourceReference const references[] = {own, twister};
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(CSourceReference(references[0])(), ownAgain());
    EXPECT_EQ(CSourceReference(references[1])(), twisterAgain());
  }
  EXPECT_EQ(CSourceReference(replay)(), 1u);
  EXPECT_EQ(replay(), 2u);
}

TEST(ReplaySource, HandsOutItsWordsAndThenRefuses) {
  CReplaySource source({7, 8, 9});
  EXPECT_EQ(source(), 7u);
  CReplaySource copy = source;
  EXPECT_EQ(source(), 8u);
  EXPECT_EQ(source.Drawn(), 2u);
  EXPECT_EQ(source.Remaining(), 1u);
  EXPECT_EQ(source(), 9u);
  test::ExpectError([&] { source(); }, "All 3 words have been drawn.",
                    "ORVA::CReplaySource::operator ()");
  EXPECT_EQ(source.Drawn(), 3u);
  EXPECT_EQ(copy(), 8u) << "a copy goes on from where it was made";
}

TEST(BorrowedStream, ReplacesTheThreadsStreamAndGivesItBack) {
  CRandom::Obj().Seed(11);
  CRandomSource expected(11), source(12), sameSource(12);
  {
    Impl::CBorrowedStream const stream(source);
    EXPECT_NE(CRandom::Obj().Rand64(), CRandomSource(11)());
    static_cast<void>(CRandom::Obj().Rand15());
  }
  for (int i = 0; i < 5; ++i) static_cast<void>(sameSource());
  EXPECT_EQ(source, sameSource) << "takes five words";
  for (int i = 0; i < 10; ++i) EXPECT_EQ(CRandom::Obj().Rand64(), expected.Rand64());
}

TEST(BorrowedStream, LeavesAStreamThatWasRestartedMeanwhile) {
  CRandomSource source(12);
  {
    Impl::CBorrowedStream const stream(source);
    CRandom::Obj().Seed(13);
  }
  EXPECT_EQ(CRandom::Obj().Rand64(), CRandomSource(13)());
}
