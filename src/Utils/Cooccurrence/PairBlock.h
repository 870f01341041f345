// Sixteen successive pairs of gray levels of two rows, as indices a * 256 + b into a matrix of
// counts. Two types of one interface: StPairBlockPlain for every machine and stride,
// StPairBlockSse2 for rows without gaps on x86-64 (SSE2 belongs to every such processor: nothing to
// ask at run time). Example:
//   auto const pairs = StPairBlockPlain::Load<1>(rowA, rowB, 1);
//   if (pairs == pairs.Run()) counts[pairs.First()] += c_nBlockPairs; // a run of one pair
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ORVA::Impl {

constexpr int c_nBlockPairs = 16;

/// The gray level of the voxel at `voxel`: the highest byte of its value, in the machine's own byte
/// order. The address need not be aligned.
template <int Bytes>
[[nodiscard]] inline unsigned Level(std::byte const* voxel) noexcept {
  if constexpr (Bytes == 1) {
    return std::to_integer<unsigned>(*voxel);
  } else if constexpr (Bytes == 2) {
    std::uint16_t value;
    std::memcpy(&value, voxel, sizeof value);
    return value >> 8U;
  } else {
    static_assert(Bytes == 4);
    std::uint32_t value;
    std::memcpy(&value, voxel, sizeof value);
    return value >> 24U;
  }
}

template <int Bytes>
[[nodiscard]] inline unsigned PairIndex(std::byte const* a, std::byte const* b) noexcept {
  return Level<Bytes>(a) << 8U | Level<Bytes>(b);
}

struct StPairBlockPlain {
  using Levels = std::array<std::uint64_t, 2>; // one byte a level
  Levels a;
  Levels b;

  template <int Bytes>
  [[nodiscard]] static StPairBlockPlain Load(std::byte const* a, std::byte const* b,
                                             std::int64_t stride) noexcept {
    return {LoadLevels<Bytes>(a, stride), LoadLevels<Bytes>(b, stride)};
  }

  /// A block that repeats the first pair of this one.
  [[nodiscard]] StPairBlockPlain Run() const noexcept { return {Repeat(a[0]), Repeat(b[0])}; }

  [[nodiscard]] bool operator==(StPairBlockPlain const& other) const noexcept {
    return ((a[0] ^ other.a[0]) | (a[1] ^ other.a[1]) | (b[0] ^ other.b[0]) |
            (b[1] ^ other.b[1])) == 0;
  }

  [[nodiscard]] unsigned First() const noexcept { return Index<0>(); }

  template <std::size_t I>
  [[nodiscard]] unsigned Index() const noexcept {
    constexpr unsigned bits = I % 8 * 8;
    return static_cast<unsigned>((a[I / 8] >> bits & 255U) << 8U | (b[I / 8] >> bits & 255U));
  }

private:
  [[nodiscard]] static Levels Repeat(std::uint64_t level) noexcept {
    std::uint64_t const word = (level & 255U) * 0x0101010101010101U;
    return {word, word};
  }

  template <int Bytes>
  [[nodiscard]] static Levels LoadLevels(std::byte const* voxel, std::int64_t stride) noexcept {
    Levels levels{};
    // The order of the bytes is of no account as long as it is that of both rows.
    if (Bytes == 1 && stride == 1) {
      std::memcpy(levels.data(), voxel, sizeof levels);
      return levels;
    }
    for (std::size_t i = 0; i < c_nBlockPairs; ++i)
      levels[i / 8] |= std::uint64_t{Level<Bytes>(voxel + static_cast<std::int64_t>(i) * stride)}
                       << (i % 8 * 8);
    return levels;
  }
};

#ifdef __SSE2__

struct StPairBlockSse2 {
  __m128i low;  // indices of pairs 0 .. 7, 16 bits each
  __m128i high; // indices of pairs 8 .. 15

  /// `stride` is the size of a voxel; it is a parameter so that both types are used alike.
  template <int Bytes>
  [[nodiscard]] static StPairBlockSse2 Load(std::byte const* a, std::byte const* b,
                                            std::int64_t /*stride*/) noexcept {
    __m128i const levelsA = Levels<Bytes>(a);
    __m128i const levelsB = Levels<Bytes>(b);
    return {_mm_unpacklo_epi8(levelsB, levelsA), _mm_unpackhi_epi8(levelsB, levelsA)};
  }

  /// A block that repeats the first pair of this one.
  [[nodiscard]] StPairBlockSse2 Run() const noexcept {
    __m128i const run = _mm_shuffle_epi32(_mm_shufflelo_epi16(low, 0), 0);
    return {run, run};
  }

  [[nodiscard]] bool operator==(StPairBlockSse2 const& other) const noexcept {
    __m128i const equal =
        _mm_and_si128(_mm_cmpeq_epi16(low, other.low), _mm_cmpeq_epi16(high, other.high));
    return _mm_movemask_epi8(equal) == 0xFFFF;
  }

  [[nodiscard]] unsigned First() const noexcept { return Index<0>(); }

  template <std::size_t I>
  [[nodiscard]] unsigned Index() const noexcept {
    return static_cast<unsigned>(I < 8 ? _mm_extract_epi16(low, I % 8)
                                       : _mm_extract_epi16(high, I % 8));
  }

private:
  [[nodiscard]] static __m128i Quad(std::byte const* voxel, int part) noexcept {
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(voxel) + part);
  }

  /// The levels of sixteen voxels, one byte each.
  template <int Bytes>
  [[nodiscard]] static __m128i Levels(std::byte const* voxel) noexcept {
    if constexpr (Bytes == 1) {
      return Quad(voxel, 0);
    } else if constexpr (Bytes == 2) {
      return _mm_packus_epi16(_mm_srli_epi16(Quad(voxel, 0), 8), _mm_srli_epi16(Quad(voxel, 1), 8));
    } else {
      static_assert(Bytes == 4);
      __m128i const first =
          _mm_packs_epi32(_mm_srli_epi32(Quad(voxel, 0), 24), _mm_srli_epi32(Quad(voxel, 1), 24));
      __m128i const second =
          _mm_packs_epi32(_mm_srli_epi32(Quad(voxel, 2), 24), _mm_srli_epi32(Quad(voxel, 3), 24));
      return _mm_packus_epi16(first, second);
    }
  }
};

#endif

} // namespace ORVA::Impl
