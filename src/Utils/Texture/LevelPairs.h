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

/// The cell of pair `k` of two rows.
template <class Level>
[[nodiscard]] inline std::size_t LevelCell(std::byte const* a, std::byte const* b, std::int64_t k,
                                           std::int64_t stride, std::size_t side) noexcept {
  Level x, y;
  std::memcpy(&x, a + k * stride, sizeof x);
  std::memcpy(&y, b + k * stride, sizeof y);
  return x * side + y;
}

/// Whether eight levels that follow each other are equal.
template <class Level>
[[nodiscard]] inline bool IsRunOfEight(std::byte const* first) noexcept {
  std::array<std::uint64_t, sizeof(Level)> words;
  std::memcpy(words.data(), first, sizeof words);
  std::uint64_t differences = words[0] ^ std::rotl(words[0], 8 * static_cast<int>(sizeof(Level)));
  if constexpr (sizeof(Level) == 2) differences |= words[0] ^ words[1];
  return differences == 0;
}

/// Counts n pairs of rows whose levels are `stride` bytes apart.
template <class Level, class Cell>
void CountLevelRow(StLevelTables<Cell> const& tables, std::byte const* a, std::byte const* b,
                   std::int64_t n, std::int64_t stride) noexcept {
  auto const [t0, t1, t2, t3] = tables.table;
  std::size_t const side = tables.side;
  bool const isDense = stride == static_cast<std::int64_t>(sizeof(Level));
  for (; n >= 8; n -= 8, a += 8 * stride, b += 8 * stride) {
    std::size_t const first = LevelCell<Level>(a, b, 0, stride, side);
    if (isDense && IsRunOfEight<Level>(a) && IsRunOfEight<Level>(b)) {
      t0[first] += 8;
      continue;
    }
    ++t0[first];
    ++t1[LevelCell<Level>(a, b, 1, stride, side)];
    ++t2[LevelCell<Level>(a, b, 2, stride, side)];
    ++t3[LevelCell<Level>(a, b, 3, stride, side)];
    ++t0[LevelCell<Level>(a, b, 4, stride, side)];
    ++t1[LevelCell<Level>(a, b, 5, stride, side)];
    ++t2[LevelCell<Level>(a, b, 6, stride, side)];
    ++t3[LevelCell<Level>(a, b, 7, stride, side)];
  }
  for (; n >= 2; n -= 2, a += 2 * stride, b += 2 * stride) {
    ++t0[LevelCell<Level>(a, b, 0, stride, side)];
    ++t1[LevelCell<Level>(a, b, 1, stride, side)];
  }
  if (n == 1) ++t0[LevelCell<Level>(a, b, 0, stride, side)];
}

} // namespace ORVA::Impl
