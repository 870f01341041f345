// A source of random bits with a stream of its own: one for each thread, process or block of work.
//
//   #include <random>
//   CRandomSource source(42, 7);                // stream 7 of seed 42, the same on every platform
//   uint64 const word = source.Rand64();
//   std::string const saved = source.Save();
//   int const die = std::uniform_int_distribution<int>(1, 6)(source);
//   source.Restore(saved);                      // draws go on from before the die
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/Types.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace ORVA {

namespace Impl {

/// One step of xoshiro256++ (Blackman and Vigna, "Scrambled linear pseudorandom number generators",
/// ACM TOMS 47, 2021), period 2^256 - 1. The state must not be all zeros.
inline uint64 NextWord(uint64 (&state)[4]) noexcept {
  uint64 const result = std::rotl(state[0] + state[3], 23) + state[0];
  uint64 const shifted = state[1] << 17;
  state[2] ^= state[0];
  state[3] ^= state[1];
  state[1] ^= state[2];
  state[0] ^= state[3];
  state[2] ^= shifted;
  state[3] = std::rotl(state[3], 45);
  return result;
}

} // namespace Impl

/// What draws can be made from: a uniform random bit generator of the standard library whose words
/// have all 64 bits, such as CRandomSource or std::mt19937_64.
template <class Source>
concept RandomSource = std::invocable<Source&> &&
    std::unsigned_integral<std::invoke_result_t<Source&>> && Source::min()
== 0 && Source::max() == std::numeric_limits<uint64>::max();

/// A value of 32 bytes: a copy draws what its original draws. A word costs less than a nanosecond
/// and no call. One source is not for two threads at once; two sources share nothing.
class PXLIB2CORE_EXPORT CRandomSource {
public:
  /// The type of one draw of bits.
  using result_type = uint64;

  /// From the operating system's entropy, all 256 bits of the state: different in every run.
  CRandomSource();
  /// Stream 0 draws the words that CRandom::Obj() gives the thread that calls Seed(seed).
  explicit CRandomSource(uint64 seed, uint64 stream = 0) noexcept { Seed(seed, stream); }

  /// Begins a stream. Different pairs of seed and stream give different states, scattered over the
  /// period: that two of a million streams meet within 2^64 words each has a chance below 2^-150.
  /// Costs some nanoseconds, whatever the numbers.
  void Seed(uint64 seed, uint64 stream = 0) noexcept;
  /// Goes on by 2^128 words: streams made by successive jumps never meet before that many.
  void Jump() noexcept;

  /// 8, 32 or 64 random bits; each takes one word and its highest bits.
  [[nodiscard]] std::uint8_t Rand8() noexcept { return static_cast<std::uint8_t>(Rand64() >> 56); }
  /// The highest 32 bits of a word.
  [[nodiscard]] std::uint32_t Rand32() noexcept {
    return static_cast<std::uint32_t>(Rand64() >> 32);
  }
  /// A whole word.
  [[nodiscard]] uint64 Rand64() noexcept { return Impl::NextWord(m_State); }
  /// Fills a buffer: the bytes of successive words, lowest byte first; a last part of fewer than 8
  /// bytes takes the lowest bytes of one more word. A null buffer is refused with CExBadParam
  /// unless `bytes` is 0.
  void Rand(void* buffer, std::size_t bytes);

  /// The state as one line of text, "xoshiro256++" and four words of 16 hexadecimal digits.
  [[nodiscard]] std::string Save() const;
  /// Goes on where the source stood whose Save gave this text; another text is refused with
  /// CExBadParam and changes nothing.
  void Restore(std::string_view saved);

  // What std::uniform_random_bit_generator asks for.
  /// The least value of a draw of bits, 0.
  [[nodiscard]] static constexpr uint64 min() noexcept { return 0; }
  /// The greatest value of a draw of bits, 2^64 - 1.
  [[nodiscard]] static constexpr uint64 max() noexcept {
    return std::numeric_limits<uint64>::max();
  }
  uint64 operator()() noexcept { return Rand64(); }

  /// Whether both draw the same words from here on.
  friend bool operator==(CRandomSource const&, CRandomSource const&) = default;

private:
  uint64 m_State[4];
};

/// Any source by reference, for what is called through a virtual function or compiled once. It must
/// not outlive the source. Words of a CRandomSource cost as much as from itself, those of another
/// source a call.
class CSourceReference {
public:
  /// The type of one draw of bits.
  using result_type = uint64;

  template <RandomSource Source>
  requires(!std::is_same_v<Source, CSourceReference>) CSourceReference(Source& source)
  noexcept : m_Source(&source) {
    if constexpr (!std::is_same_v<Source, CRandomSource>)
      m_Next = [](void* any) -> uint64 { return (*static_cast<Source*>(any))(); };
  }

  uint64 operator()() {
    return m_Next == nullptr ? static_cast<CRandomSource*>(m_Source)->Rand64() : m_Next(m_Source);
  }
  /// The least value of a draw of bits, 0.
  [[nodiscard]] static constexpr uint64 min() noexcept { return 0; }
  /// The greatest value of a draw of bits, 2^64 - 1.
  [[nodiscard]] static constexpr uint64 max() noexcept {
    return std::numeric_limits<uint64>::max();
  }

private:
  void* m_Source;
  uint64 (*m_Next)(void*) = nullptr; // null: a CRandomSource, which is called inline
};

} // namespace ORVA
