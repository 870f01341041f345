#include "objects/RegionSlabs.h"

#include "base/Memory.h"

#include <algorithm>
#include <cmath>

namespace selu {

using ORVA::int64;

std::vector<StSlab> SlabsOfRegions(std::span<StRegion const> regions, ORVA::CSize const& size,
                                   double bytesPerSlice, StHalo halo) {
  int64 longest = 0;
  for (StRegion const& region : regions)
    longest = std::max(longest, HighSlice(region, size.Dim()) - LowSlice(region, size.Dim()));
  double const room = std::floor(SlabBytes() / bytesPerSlice / 2);
  auto const slices = static_cast<double>(SlicesOf(size));
  // No object has a pair that is longer than itself.
  halo.below = std::min(halo.below, longest);
  halo.above = std::min(halo.above, longest);
  halo.above = std::max(halo.above,
                        static_cast<int64>(std::min({static_cast<double>(longest), room, slices})));
  return SlabsOf(size, bytesPerSlice, halo);
}

} // namespace selu
