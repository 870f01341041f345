// The texture inside the bounding boxes of objects, without regard to which of the voxels are the
// object's, slab by slab.
//
//   auto const regions = MeasureRegions(labels, &intensity);
//   std::vector<double> const values = MeasureBoxTextures(intensity, regions, {range, directions});
#pragma once

#include "images/Directions.h"
#include "images/Quantize.h"
#include "images/VolumeSource.h"
#include "objects/Regions.h"

#include <optional>
#include <span>
#include <vector>

namespace selu {

struct StBoxTextures {
  std::optional<StRange> range;
  std::vector<Direction> directions;
};

/// The 13 features of 256 gray levels of all boxes, those of region k from k * 13 on: their mean
/// over the directions that have a pair in the box, NaN where none has. Takes time in proportion to
/// the boxes together. Boxes that no slab holds are counted in parts, as many at a time as their
/// matrices fit into SlabBytes(); the slabs that the others reach are read once more for each such
/// group. Notes it on standard error where few of the image's values are left. Throws CAppError for
/// pixels that need a range.
[[nodiscard]] std::vector<double> MeasureBoxTextures(CVolumeSource& intensity,
                                                     std::span<StRegion const> regions,
                                                     StBoxTextures const& wanted);

} // namespace selu
