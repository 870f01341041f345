// What the shared source of random bits and those of one's own are made from.
#pragma once

#include <pxlib2core/RandomSource.h>
#include <pxlib2core/Types.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace ORVA::Impl {

/// The step and the mixing function of SplitMix64 (Steele, Lea and Flood, OOPSLA 2014): the latter
/// is a bijection and takes 0 to 0.
inline constexpr uint64 c_mixerStep = 0x9E3779B97F4A7C15u;
[[nodiscard]] constexpr uint64 Mix(uint64 z) noexcept {
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

/// Turns a counter into well-mixed words.
class CMixer {
public:
  explicit CMixer(uint64 start) noexcept : m_State(start) {}
  uint64 Next() noexcept { return Mix(m_State += c_mixerStep); }

private:
  uint64 m_State;
};

inline void StoreLittleEndian(std::byte* target, uint64 word, std::size_t bytes) noexcept {
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(target, &word, bytes);
  } else {
    for (std::size_t i = 0; i < bytes; ++i) target[i] = static_cast<std::byte>(word >> (8 * i));
  }
}

/// Fills a buffer with the bytes of successive words; the state is in registers meanwhile.
inline void FillBytes(void* buffer, std::size_t bytes, uint64 (&state)[4]) noexcept {
  uint64 copy[4];
  std::ranges::copy(state, copy);
  auto* target = static_cast<std::byte*>(buffer);
  for (; bytes >= 8; bytes -= 8, target += 8) StoreLittleEndian(target, NextWord(copy), 8);
  if (bytes > 0) StoreLittleEndian(target, NextWord(copy), bytes);
  std::ranges::copy(copy, state);
}

} // namespace ORVA::Impl
