// Counts the pairs of gray levels (a, b) = (level at v, level at v + d) of a block of voxels.
// Example:
//   std::vector<std::uint32_t> counts(65536);
//   Impl::StPairScratch scratch; // reused from call to call
//   Impl::StGrayBlock block{.base = first, .extent = {nx, ny, nz}, .stride = {1, nx, nx * ny}};
//   if (!Impl::CountPairs(block, {1, 0, 0}, std::span<std::uint32_t, 65536>(counts), scratch))
//     ...; // some cell is too large for 32 bits
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// Gray levels of a matrix of counts; the level of a voxel is the highest byte of its value.
constexpr int c_nLevels = 256;
constexpr std::size_t c_nCells = std::size_t{c_nLevels} * c_nLevels;

/// A box of unsigned gray values in memory. Any stride is allowed, negative and zero ones too; rows
/// whose values follow each other without gaps are counted fastest. Rows need no alignment.
struct StGrayBlock {
  std::byte const* base = nullptr;
  std::array<std::int64_t, 3> extent{}; // voxels; zero or less is an empty block
  std::array<std::int64_t, 3> stride{}; // bytes from a voxel to its neighbor along x, y, z
  int bytesPerVoxel = 1;                // 1, 2 or 4
  bool hasLevelsFromOne = false;        // of 2 bytes: levels 1 .. 256, not a highest byte
};

/// Which of the two implementations counts. Both give the same counts.
enum class EPairPath {
  Fastest, ///< 16 pairs at a time in vector registers, where the machine and the strides allow it
  Plain    ///< standard C++ only
};

/// Memory that is kept from one call to the next: none at first, 260 KiB once an image has had many
/// equal pairs side by side, and 512 KiB more once one has had more than 2^32 - 1 pairs.
struct StPairScratch {
  std::vector<std::uint32_t> odd;
  std::vector<std::uint64_t> totals;
};

/// How to count; the defaults are right, the other values serve tests and benchmarks.
struct StPairOptions {
  EPairPath path = EPairPath::Fastest;
  /// Pairs after which the 32-bit counters are emptied into 64-bit ones: at least 1.
  std::uint32_t batch = std::numeric_limits<std::uint32_t>::max();
  /// Equal neighbors among the pairs, seen so far, from which on a second table of counters is
  /// worth the time to clear and to merge it.
  std::int64_t twoTablesFrom = 30000;
};

/// Clears `counts`, then adds 1 to counts[a * 256 + b] for each voxel v of the block for which
/// v + direction lies in the block too; a is the level at v and b the level at v + direction.
/// Any direction is allowed; one that leads out of the block counts nothing.
/// Returns false when a cell exceeds 2^32 - 1; the counts are then unspecified.
/// Cost: linear in the number of pairs, plus the time to clear the tables.
[[nodiscard]] bool CountPairs(StGrayBlock const& block,
                              std::array<std::int64_t, 3> const& direction,
                              std::span<std::uint32_t, c_nCells> counts, StPairScratch& scratch,
                              StPairOptions const& options = {});

/// The same with scratch memory of its own.
[[nodiscard]] bool CountPairs(StGrayBlock const& block,
                              std::array<std::int64_t, 3> const& direction,
                              std::span<std::uint32_t, c_nCells> counts);

} // namespace ORVA::Impl
