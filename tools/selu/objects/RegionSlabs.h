// Which objects a slab of a label image holds.
//
//   for (StSlab const& slab : SlabsOfRegions(regions, size, bytesPerSlice, {1, 1}))
//     if (IsHere(regions[0], slab, size.Dim())) ...      // as a whole, in one slab at most
#pragma once

#include "images/VolumeSource.h"
#include "objects/Regions.h"

#include <span>
#include <vector>

namespace selu {

/// First and last slice of an object: along z, in 2D along y.
[[nodiscard]] inline ORVA::int64 LowSlice(StRegion const& region, int dimension) noexcept {
  return region.low[dimension == 3 ? 2 : 1];
}
[[nodiscard]] inline ORVA::int64 HighSlice(StRegion const& region, int dimension) noexcept {
  return region.high[dimension == 3 ? 2 : 1];
}

/// Whether an object begins in the slab's own slices and ends in those that were read.
[[nodiscard]] inline bool IsHere(StRegion const& region, StSlab const& slab,
                                 int dimension) noexcept {
  ORVA::int64 const low = LowSlice(region, dimension), high = HighSlice(region, dimension);
  return low >= slab.first && low < slab.last && high < slab.to;
}

/// The slabs of an image with these objects, with a halo above that holds the longest of them, but
/// of half a slab at most. The halo given is what displacements need; it is cut down to the longest
/// object, beyond which there are no pairs.
[[nodiscard]] std::vector<StSlab> SlabsOfRegions(std::span<StRegion const> regions,
                                                 ORVA::CSize const& size, double bytesPerSlice,
                                                 StHalo halo);

} // namespace selu
