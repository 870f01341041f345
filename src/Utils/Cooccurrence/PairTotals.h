// Pairs of gray levels of a part of an image, added to 64-bit counts.
// Example:
//   auto const block = Impl::BlockOfPairs(image, d, low, high);
//   if (Impl::PairsOf(block, d) > 0) Impl::AddPairs(block, d, {totals.data(), 256, 256});
#pragma once

#include "Utils/Cooccurrence/PairCounting.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ORVA::Impl {

/// The smallest block that holds both voxels of all pairs (v, v + d) of an image whose first voxel
/// lies in [low, high). It holds no other pairs. Empty where there are none.
[[nodiscard]] StGrayBlock BlockOfPairs(StGrayBlock const& image,
                                       std::array<std::int64_t, 3> const& d,
                                       std::array<std::int64_t, 3> const& low,
                                       std::array<std::int64_t, 3> const& high) noexcept;

/// How many pairs such a block has.
[[nodiscard]] double PairsOf(StGrayBlock const& block,
                             std::array<std::int64_t, 3> const& d) noexcept;

/// Where counts go to: that of levels (a, b), both below `levels`, to cell[a * pitch + b].
struct StPairTotals {
  std::uint64_t* cell;
  std::size_t pitch;
  std::size_t levels;
};

/// Adds the pairs of such a block, of any number, as CountPairs counts them; no level may be
/// `totals.levels` or above.
void AddPairs(StGrayBlock block, std::array<std::int64_t, 3> d, StPairTotals const& totals);

} // namespace ORVA::Impl
