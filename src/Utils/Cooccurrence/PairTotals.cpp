#include "Utils/Cooccurrence/PairTotals.h"

#include "Utils/Cooccurrence/Strides.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <span>
#include <vector>

namespace ORVA::Impl {

namespace {

using std::int64_t;

// Along one axis: the first voxel v in [low, high) with v and v + d inside, and how many there are.
struct StRange {
  int64_t first = 0, count = 0;
};

StRange PairRange(int64_t extent, int64_t d, int64_t low, int64_t high) noexcept {
  if (extent <= 0 || d >= extent || d <= -extent) return {};
  int64_t const first = std::max({low, int64_t{0}, -d});
  int64_t const end = std::min({high, extent, extent - d});
  return {first, std::max(int64_t{0}, end - first)};
}

class CBlockCounter {
public:
  explicit CBlockCounter(StPairTotals const& totals) : m_Totals(totals) {}

  void Count(StGrayBlock const& block, std::array<int64_t, 3> const& d) {
    // One table of 32-bit counts holds as many.
    if (PairsOf(block, d) > std::numeric_limits<std::uint32_t>::max()) return CountHalves(block, d);
    std::span<std::uint32_t, c_nCells> const counts(m_Counts);
    (void)CountPairs(block, d, counts, m_Scratch);
    for (std::size_t a = 0; a < m_Totals.levels; ++a) {
      std::uint64_t* const row = m_Totals.cell + a * m_Totals.pitch;
      for (std::size_t b = 0; b < m_Totals.levels; ++b) row[b] += counts[a * c_nLevels + b];
    }
  }

private:
  // The halves of the first voxels of the pairs, along the axis on which there are most of them.
  void CountHalves(StGrayBlock const& block, std::array<int64_t, 3> const& d) {
    auto const pairs = [&](std::size_t axis) { return block.extent[axis] - std::abs(d[axis]); };
    std::size_t axis = 0;
    for (std::size_t const other : {1U, 2U})
      if (pairs(other) > pairs(axis)) axis = other;
    int64_t const half = pairs(axis) / 2;
    StGrayBlock part = block;
    part.extent[axis] = half + std::abs(d[axis]);
    Count(part, d);
    part.base += half * block.stride[axis];
    part.extent[axis] = block.extent[axis] - half;
    Count(part, d);
  }

  StPairTotals m_Totals;
  std::vector<std::uint32_t> m_Counts = std::vector<std::uint32_t>(c_nCells);
  StPairScratch m_Scratch;
};

} // namespace

StGrayBlock BlockOfPairs(StGrayBlock const& image, std::array<int64_t, 3> const& d,
                         std::array<int64_t, 3> const& low,
                         std::array<int64_t, 3> const& high) noexcept {
  StGrayBlock block = image;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    auto const [first, count] = PairRange(image.extent[axis], d[axis], low[axis], high[axis]);
    block.extent[axis] = 0;
    if (count == 0) return block;
    block.base += std::min(first, first + d[axis]) * image.stride[axis];
    block.extent[axis] = count + std::abs(d[axis]);
  }
  return block;
}

double PairsOf(StGrayBlock const& block, std::array<int64_t, 3> const& d) noexcept {
  double pairs = 1;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (block.extent[axis] == 0) return 0;
    pairs *= static_cast<double>(block.extent[axis] - std::abs(d[axis]));
  }
  return pairs;
}

void AddPairs(StGrayBlock block, std::array<int64_t, 3> d, StPairTotals const& totals) {
  SortAxes(block, d);
  CBlockCounter(totals).Count(block, d);
}

} // namespace ORVA::Impl
