// Pairs of gray levels with both voxels in one object, run by run.
//
//   Impl::CObjectPairs pairs(n, true);                // n levels, both orders of a pair
//   auto const countRun = Impl::RunCounterOf(labels.Type(), levels.BytesPerVoxel());
//   countRun(image, run, {1, 0, 0}, pairs);
//   pairs.MoveTo(sums, false);                        // and is empty again
#pragma once

#include <SeluUtils/Impl/PairSums.h>
#include <SeluUtils/Impl/SparsePairs.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

/// Labels and levels of the same extents.
struct StLabeledLevels {
  std::byte const* labels;
  std::byte const* levels;
  std::array<int64, 3> extents;
  std::array<int64, 3> labelStrides;
  std::array<int64, 3> levelStrides;
};

/// Voxels of one label along axis 0, and where the first one is.
struct StPlacedRun {
  std::uint32_t label;
  std::uint32_t length;
  std::array<int64, 3> at;
};

/// The matrix of one object: a table and a list of the cells in use, so that it costs no more than
/// the object has pairs; above 1023 levels a sorted list.
class CObjectPairs {
public:
  CObjectPairs(int levels, bool isSymmetric);

  /// Counts a pair of levels above 0.
  void Add(std::uint32_t i, std::uint32_t j) {
    if (m_IsSymmetric && i > j) std::swap(i, j); // cell (j, i) follows from (i, j)
    if (m_Table.empty()) {
      m_Sparse.Push(CSparsePairs::Key(i, j));
      m_HasSparse = true;
    } else {
      std::uint64_t const count = ++m_Table[i * m_Side + j];
      if (count == 1) m_Used.push_back(CSparsePairs::Key(i, j));
      m_HasLarge |= count == c_nLarge;
    }
  }
  [[nodiscard]] bool IsEmpty() const noexcept { return m_Used.empty() && !m_HasSparse; }
  /// Adds the cells to sums and clears them. The order of the cells is that of the matrix where it
  /// matters: for large counts, and where the sums keep them.
  void MoveTo(CPairSums& sums, bool inOrder);

private:
  /// Twice this is no small count of the sums.
  static constexpr std::uint64_t c_nLarge = CPairSums::c_nSmallCounts / 2;
  struct StCell {
    std::uint32_t key;
    std::uint64_t count;
  };
  void MoveSmall(CPairSums& sums);
  void TakeCells();
  void Append(std::uint32_t key, std::uint64_t count);

  std::size_t m_Side;
  bool m_IsSymmetric;
  bool m_HasSparse = false, m_HasLarge = false;
  std::vector<std::uint64_t> m_Table;
  std::vector<std::uint32_t> m_Used;
  CSparsePairs m_Sparse;
  std::vector<StCell> m_Cells;
};

/// Counts the pairs whose first voxel is in the run.
using RunCounter = void (*)(StLabeledLevels const&, StPlacedRun const&, std::array<int64, 3> const&,
                            CObjectPairs&);

/// The counter for labels of an integer type and levels of one or two bytes.
[[nodiscard]] RunCounter RunCounterOf(IImage::CType labels, int bytesPerLevel);

} // namespace ORVA::Impl
