// Rows of pairs of gray levels, counted into tables; any number of levels, one or two bytes each.
//
//   Impl::StLevelTables<std::uint32_t> tables{counts, side}; // cell (a, b) at a * side + b
//   Impl::CountLevelRow<std::uint8_t>(tables, rowA, rowB, n, stride);
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ORVA::Impl {

/// Four tables of counters in turn, which may be fewer than four different ones. Where neighboring
/// pairs are equal, as they often are in real images, an increment would otherwise wait for the
/// store of the one before it.
template <class Cell>
struct StLevelTables {
  std::array<Cell*, 4> table;
  std::size_t side;
};

/// Reads eight levels as words of a byte order that does not matter as long as it is the same for
/// both rows.
template <class Level>
struct StEightLevels {
  static constexpr std::size_t c_nWords = sizeof(Level);
  static constexpr unsigned c_nBits = 8 * sizeof(Level);
  std::array<std::uint64_t, c_nWords> words;

  explicit StEightLevels(std::byte const* first) noexcept {
    std::memcpy(words.data(), first, sizeof words);
  }
  template <std::size_t I>
  [[nodiscard]] std::size_t At() const noexcept {
    constexpr std::size_t perWord = 8 / sizeof(Level);
    return words[I / perWord] >> (I % perWord * c_nBits) & ((std::uint64_t{1} << c_nBits) - 1);
  }
  /// 0 where all eight levels are equal.
  [[nodiscard]] std::uint64_t Differences() const noexcept {
    std::uint64_t differences = words[0] ^ std::rotl(words[0], static_cast<int>(c_nBits));
    if constexpr (c_nWords == 2) differences |= words[0] ^ words[1];
    return differences;
  }
};

template <class Level, class Cell>
void CountLevelRow(StLevelTables<Cell> const& tables, std::byte const* a, std::byte const* b,
                   std::int64_t n, std::int64_t stride) noexcept {
  auto const [t0, t1, t2, t3] = tables.table;
  std::size_t const side = tables.side;
  std::int64_t i = 0;
  if (stride == static_cast<std::int64_t>(sizeof(Level))) {
    constexpr auto block = static_cast<std::int64_t>(8 * sizeof(Level));
    for (; i + 8 <= n; i += 8, a += block, b += block) {
      StEightLevels<Level> const x(a), y(b);
      std::size_t const first = x.template At<0>() * side + y.template At<0>();
      if ((x.Differences() | y.Differences()) == 0) {
        t0[first] += 8;
        continue;
      }
      ++t0[first];
      ++t1[x.template At<1>() * side + y.template At<1>()];
      ++t2[x.template At<2>() * side + y.template At<2>()];
      ++t3[x.template At<3>() * side + y.template At<3>()];
      ++t0[x.template At<4>() * side + y.template At<4>()];
      ++t1[x.template At<5>() * side + y.template At<5>()];
      ++t2[x.template At<6>() * side + y.template At<6>()];
      ++t3[x.template At<7>() * side + y.template At<7>()];
    }
  }
  for (; i < n; ++i, a += stride, b += stride) {
    Level x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    ++tables.table[static_cast<std::size_t>(i & 3)][x * side + y];
  }
}

} // namespace ORVA::Impl
