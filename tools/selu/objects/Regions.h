// What the objects of a label image measure: extent, place, intensity.
//
//   for (StRegion const& region : MeasureRegions(labels, &intensity))
//     std::cout << region.label << ' ' << region.voxels << ' ' << region.Centroid(0) << '\n';
#pragma once

#include "images/VolumeSource.h"

#include <array>
#include <vector>

namespace selu {

/// Greatest label that an object may have.
inline constexpr ORVA::int64 c_greatestLabel = 0xffff'ffff;

/// All voxels of one label. Coordinates are in voxels from 0.
struct StRegion {
  ORVA::int64 label = 0;
  ORVA::int64 voxels = 0;
  std::array<ORVA::int64, 3> low{}, high{}; ///< bounding box, both corners inside
  std::array<double, 3> sum{};              ///< of the coordinates; exact up to 2^53
  double mean = 0;                          ///< of the intensity
  double squares = 0;                       ///< sum of the squared distances from the mean

  [[nodiscard]] double Centroid(std::size_t axis) const {
    return sum[axis] / static_cast<double>(voxels);
  }
  /// Standard deviation of the intensity over all voxels (divided by their number).
  [[nodiscard]] double Deviation() const;
};

/// The regions in ascending order of their labels, 0 being the background, in one pass over the
/// voxels: O(voxels + regions * log(regions)), with memory for the regions and a slab. The
/// intensity image, of the same size, may be null. Throws CAppError for a label that is negative,
/// above c_greatestLabel or no whole number, and for an image without objects.
[[nodiscard]] std::vector<StRegion> MeasureRegions(CVolumeSource& labels, CVolumeSource* intensity);

} // namespace selu
