// Counts pairs of gray levels a displacement apart: co-occurrence matrices of any number of levels.
//
//   #include <iostream>
//   CImage const image(IMAGE_GREY_8, CSize(64, 64, 32)); // all of level 0, outside
//   CLevelImage const levels(image, 8);
//   CPairCounter pairs(levels.Levels());
//   for (auto const& displacement : NeighborDisplacements(3)) pairs.Count(levels, displacement);
//   pairs.Add(1, 2);                                  // one more pair
//   pairs.Symmetrize();                               // and the same in the other order
//   std::cout << pairs(2, 1) << " of " << pairs.Pairs();   // prints 1 of 2
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/SparsePairs.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA {

/// The displacements to half of the neighbors at a Chebyshev distance of 1, times `distance`: 1 for
/// a row of pixels, 4 in a plane, 13 in space; those to the other half give transposed matrices.
/// The order is that of CCooccurrence::m_cDirections. CExBadParam for another dimension or a
/// distance outside 1 .. 2^31 - 1.
[[nodiscard]] SELUUTILS_EXPORT std::vector<CTriple<int64>>
NeighborDisplacements(int dimension, int64 distance = 1);
/// The displacements to half of all voxels at exactly that Chebyshev distance, a full shell: ((2 d
/// + 1)^dimension - (2 d - 1)^dimension) / 2 of them, 49 at distance 2 in space. At distance 1 the
/// same as above. CExBadParam as above, and for a distance above 1000.
[[nodiscard]] SELUUTILS_EXPORT std::vector<CTriple<int64>> ShellDisplacements(int dimension,
                                                                              int64 distance);

/// A co-occurrence matrix: cell (i, j) counts the pairs of a voxel of level i and the voxel one
/// displacement (dx, dy, dz) further on, of level j. Pairs with a voxel of level 0 do not count.
///
/// Counts have 64 bits. Up to 1023 levels the matrix is a table of 8 n^2 bytes, with as much again
/// while many pairs are counted; beyond, it is a sorted list of the cells that occur, 12 bytes
/// each, and takes up to three times that and 32 MiB while pairs are counted. Either form has the
/// same values.
///
/// A value. Where memory runs out in an operation, the matrix is as it was. One object serves one
/// thread at a time; parts counted apart add up exactly. A slab of
/// an image that is read from `low` + min(0, d) up to `high` + max(0, d), clipped to the image, has
/// all that Count(slab, d, low, high) needs.
class SELUUTILS_EXPORT CPairCounter {
public:
  /// The most levels that are counted in a table.
  static constexpr int c_mostDenseLevels = 1023;

  /// How the counts are kept: as a table of all cells, as a list of those that occur, or as the
  /// number of levels suggests.
  enum class EnForm { Automatic, Dense, Sparse };

  /// An empty matrix of `levels` x `levels`. The form may be chosen, for a test, say. CExBadParam
  /// unless levels are from 1 to 65535, and for a dense one of more than 16383.
  explicit CPairCounter(int levels, EnForm form = EnForm::Automatic);

  /// Adds all pairs of an image whose levels are at most Levels(). Any displacement is allowed; one
  /// that leads out of the image adds nothing. O(pairs), on tables 0.3 to 1 ns each, in
  /// lists 15 to 25 ns. The layout of the image does not matter.
  void Count(CLevelImage const& levels, CTriple<int64> const& displacement);
  /// Adds the pairs whose first voxel lies in the box from `low` up to but not including `high`
  /// (clipped to the image); the second one may be anywhere in the image.
  void Count(CLevelImage const& levels, CTriple<int64> const& displacement, CPos const& low,
             CPos const& high);
  /// Adds another matrix of as many levels; CExBadParam for one of another number, and where the
  /// sum of all counts would exceed 2^64 - 1.
  CPairCounter& operator+=(CPairCounter const& other);
  /// Adds one cell's count.
  void Add(int i, int j, uint64 count = 1);
  /// Adds the transposed matrix: each pair counts in both orders.
  void Symmetrize();
  /// Sets all counts to 0.
  void Clear() noexcept;

  /// The number of levels: the matrix has that many rows and columns.
  [[nodiscard]] int Levels() const noexcept { return m_Levels; }
  /// Whether the counts are kept as a table of all cells.
  [[nodiscard]] bool IsDense() const noexcept { return m_IsDense; }
  /// The sum of all counts.
  [[nodiscard]] uint64 Pairs() const noexcept { return m_Pairs; }
  /// The count of levels i and j, from 1; CExBadParam for others. O(1), in a list O(log cells).
  [[nodiscard]] uint64 operator()(int i, int j) const;
  /// Calls visit(i, j, count) for each cell that holds something, in ascending order of (i, j).
  template <class Visit>
  void ForEach(Visit visit) const;
  /// The same cells as a list.
  [[nodiscard]] std::vector<StPairCount> Cells() const;
  /// Levels 1 .. n of both rows and columns at (i - 1) * n + j - 1; CExBadParam above 16383 levels.
  [[nodiscard]] std::vector<uint64> ToDense() const;

  /// The same levels and the same counts, in whatever form.
  friend SELUUTILS_EXPORT bool operator==(CPairCounter const& a, CPairCounter const& b);

private:
  [[nodiscard]] std::size_t Side() const noexcept { return static_cast<std::size_t>(m_Levels) + 1; }
  [[nodiscard]] uint64 TotalWith(uint64 pairs) const;
  void CheckCell(int i, int j, char const* function) const;

  int m_Levels = 1;
  bool m_IsDense = true;
  uint64 m_Pairs = 0;
  std::vector<uint64> m_Table; // row i, column j at i * (n + 1) + j; row and column 0 hold 0
  Impl::CSparsePairs m_Cells;
};

template <class Visit>
void CPairCounter::ForEach(Visit visit) const {
  if (!m_IsDense) return m_Cells.ForEach(visit);
  std::size_t const side = Side();
  for (std::size_t i = 1; i < side; ++i)
    for (std::size_t j = 1; j < side; ++j)
      if (uint64 const count = m_Table[i * side + j]; count != 0)
        visit(static_cast<int>(i), static_cast<int>(j), count);
}

} // namespace ORVA
