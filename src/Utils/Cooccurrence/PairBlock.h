// Writes sixteen successive pairs of gray levels of two rows as indices a * 256 + b into a matrix
// of counts. Two types of one interface: StPairBlockPlain for every machine and stride,
// StPairBlockSse2 for rows without gaps on x86-64 (SSE2 belongs to every such processor: nothing to
// ask at run time). Example:
//   std::array<std::uint16_t, c_nBlockPairs> indices;
//   StPairBlockPlain::Write<1>(rowA, rowB, 1, indices.data());
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

/// What `Bytes` says of 16-bit levels from 1 to 256, which count as 0 to 255; otherwise it is the
/// size of a voxel.
constexpr int c_levelsFromOne = 3;
template <int Bytes>
constexpr int c_voxelBytes = Bytes == c_levelsFromOne ? 2 : Bytes;

/// The gray level of the voxel at `voxel`: the highest byte of its value, in the machine's own byte
/// order. The address need not be aligned.
template <int Bytes>
[[nodiscard]] inline unsigned Level(std::byte const* voxel) noexcept {
  if constexpr (Bytes == 1) {
    return std::to_integer<unsigned>(*voxel);
  } else if constexpr (c_voxelBytes<Bytes> == 2) {
    std::uint16_t value;
    std::memcpy(&value, voxel, sizeof value);
    return Bytes == 2 ? value >> 8U : (value - 1U) & 255U;
  } else {
    static_assert(Bytes == 4);
    std::uint32_t value;
    std::memcpy(&value, voxel, sizeof value);
    return value >> 24U;
  }
}

template <int Bytes>
[[nodiscard]] inline std::uint16_t PairIndex(std::byte const* a, std::byte const* b) noexcept {
  return static_cast<std::uint16_t>(Level<Bytes>(a) << 8U | Level<Bytes>(b));
}

struct StPairBlockPlain {
  /// Bytes from a voxel to the next of its row.
  template <int Bytes>
  [[nodiscard]] static std::int64_t Stride(std::int64_t stride) noexcept {
    return stride;
  }

  template <int Bytes>
  static void Write(std::byte const* a, std::byte const* b, std::int64_t stride,
                    std::uint16_t* to) noexcept {
    std::array<std::uint16_t, c_nBlockPairs> indices; // which nothing else can point to
    if (stride ==
        c_voxelBytes<Bytes>) { // a stride known to the compiler, which then may use vectors
      for (std::size_t i = 0; i < c_nBlockPairs; ++i)
        indices[i] = PairIndex<Bytes>(a + i * c_voxelBytes<Bytes>, b + i * c_voxelBytes<Bytes>);
    } else {
      for (std::size_t i = 0; i < c_nBlockPairs; ++i)
        indices[i] = PairIndex<Bytes>(a + static_cast<std::int64_t>(i) * stride,
                                      b + static_cast<std::int64_t>(i) * stride);
    }
    std::memcpy(to, indices.data(), sizeof indices);
  }
};

#ifdef __SSE2__

struct StPairBlockSse2 {
  /// `stride` is the size of a voxel; it is a parameter here and below so that both types are used
  /// alike.
  template <int Bytes>
  [[nodiscard]] static std::int64_t Stride(std::int64_t /*stride*/) noexcept {
    return c_voxelBytes<Bytes>;
  }

  template <int Bytes>
  static void Write(std::byte const* a, std::byte const* b, std::int64_t /*stride*/,
                    std::uint16_t* to) noexcept {
    __m128i const levelsA = Levels<Bytes>(a);
    __m128i const levelsB = Levels<Bytes>(b);
    auto* const vectors = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(vectors, _mm_unpacklo_epi8(levelsB, levelsA));
    _mm_storeu_si128(vectors + 1, _mm_unpackhi_epi8(levelsB, levelsA));
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
    } else if constexpr (Bytes == c_levelsFromOne) {
      __m128i const one = _mm_set1_epi16(1);
      return _mm_packus_epi16(_mm_subs_epu16(Quad(voxel, 0), one),
                              _mm_subs_epu16(Quad(voxel, 1), one));
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
