// The pairs of voxels that windows along a line hold, column by column: what enters and leaves.
//
//   Impl::CPairColumns columns(pixels, shape, tables);
//   columns.Start({x, y, z}, 512);                // windows from there on, 512 columns of pairs
//   for (std::uint32_t key : columns.Keys(0)) ... // the pairs of the first column
//   columns.MoveDown(1);                          // the same a row further down
#pragma once

#include "Utils/Texture/WindowSums.h"

#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace ORVA::Impl {

using Vector = std::array<int64, 3>;

/// Levels in memory: the voxels from `low` up to `low` + `held` of an image of `extent`, at their
/// byte strides. `base` is the address of voxel `low`.
struct StLevelPixels {
  std::byte const* base = nullptr;
  int bytes = 1; // per voxel, 1 or 2
  int levels = 1;
  Vector extent{}, low{}, held{}, stride{};
};

/// One displacement in one window: `low` is that of the window's first voxel of a pair, relative to
/// the window's center, `side` how many there are along each axis, at least one.
struct StPairBox {
  Vector displacement{}, low{}, side{};
};

/// A pair of levels as one number: those of its first and its second voxel, each less one, in
/// `bits` bits. In the symmetric form the lesser level comes first.
struct StPairKey {
  static constexpr std::uint32_t c_none = ~std::uint32_t{0}; // off the image or the mask
  int bits = 1;
  bool isSymmetric = false;

  [[nodiscard]] std::uint32_t First(std::uint32_t key) const noexcept { return key >> bits; }
  [[nodiscard]] std::uint32_t Second(std::uint32_t key) const noexcept {
    return key & ((std::uint32_t{1} << bits) - 1);
  }
};

/// |i - j| without a jump, which nobody could predict.
inline std::uint32_t Distance(std::uint32_t i, std::uint32_t j) noexcept {
  return static_cast<std::uint32_t>(std::abs(static_cast<int>(i) - static_cast<int>(j)));
}

/// Sums over pairs that are linear in the pairs: over each column, and over each window.
struct alignas(64) StLinearSums {
  // 1, d, d^2 and the five weights of the difference d
  std::array<int64, 8> difference{};
  // s, s^2, s^3, s^4 of s = i + j - (levels + 1)
  std::array<int64, 4> sum{};
  // i, i^2 of the first level
  std::array<int64, 4> first{};

  StLinearSums& operator+=(StLinearSums const& other) noexcept;
  StLinearSums& operator-=(StLinearSums const& other) noexcept;
};

/// What a pair adds to them.
struct StLinearTables {
  explicit StLinearTables(StWindowUnits const& units);

  std::vector<std::array<int64, 8>> difference; // by d
  std::vector<std::array<int64, 4>> sum;        // by i + j - 2
  std::vector<std::array<int64, 2>> first;      // by i - 1
};

/// The greatest number of levels whose fourth powers are summed.
inline constexpr int c_mostProminenceLevels = 2048;

/// Keys of all pairs of a row of windows, those of one column side by side, and the linear sums
/// over each column. The order of keys within a column is that of a ring, which one more row
/// overwrites where the oldest one was. Sums follow what enters and leaves, so that their cost does
/// not depend on the window's sides: those over a row's depth are kept for all rows of a block from
/// slice to slice, those over a column from row to row.
class CPairColumns {
public:
  /// Without `needsKeys` there may be sums alone.
  CPairColumns(StLevelPixels const& pixels, StPairBox const& box, StPairKey const& key,
               StLinearTables const& tables, bool needsKeys);

  /// Begins a block of slices: puts the center of the first window at a voxel, for `columns`
  /// columns and windows that will be moved down by up to `down` rows.
  void Start(Vector const& center, int64 columns, int64 down);
  /// Moves all windows `slices` voxels along z, and back up to the first row.
  void MoveOn(int64 slices);
  /// Moves all windows `rows` voxels along y.
  void MoveDown(int64 rows);

  /// Columns of one window, and keys of one column, 0 where there are none.
  [[nodiscard]] int64 PerWindow() const noexcept { return m_Box.side[0]; }
  [[nodiscard]] std::size_t PerColumn() const noexcept { return m_PerColumn; }
  /// Keys from a column on.
  [[nodiscard]] std::uint32_t const* Keys(int64 column) const noexcept {
    return m_Keys.data() + static_cast<std::size_t>(column) * m_PerColumn;
  }
  [[nodiscard]] StLinearSums const& Linear(int64 column) const noexcept {
    return m_Linear[static_cast<std::size_t>(column)];
  }

private:
  [[nodiscard]] bool KeepsRows() const noexcept { return m_Box.side[2] > 1; }
  void StartSlice();
  void WriteRow(int64 y);
  void AddRow(int64 y);
  void SubtractRow(int64 y);
  void AddPlane(int64 z);
  void SubtractPlane(int64 z);
  [[nodiscard]] StLinearSums* Row(int64 y) noexcept;
  template <class Visit>
  void ForEachPair(int64 y, int64 z, Visit visit) const;
  template <class Level, class Visit>
  void ForEachPairOf(int64 y, int64 z, Visit visit) const;
  void Add(StLinearSums& sums, std::uint32_t key) const noexcept;
  void Subtract(StLinearSums& sums, std::uint32_t key) const noexcept;

  StLevelPixels const& m_Pixels;
  StLinearTables const& m_Tables;
  StPairBox m_Box;
  StPairKey m_Key;
  std::size_t m_PerColumn;
  Vector m_First{}; // first voxel of the first pair of the first window
  int64 m_Top = 0;  // its y at the start of a slice
  int64 m_Rows = 0; // of the block
  std::size_t m_Columns = 0;
  std::vector<std::uint32_t> m_Keys;
  std::vector<StLinearSums> m_Linear;  // of each column
  std::vector<StLinearSums> m_RowSums; // of each row of the block and column, over the depth
};

} // namespace ORVA::Impl
