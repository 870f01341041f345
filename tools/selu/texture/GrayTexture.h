// Texture of the 256 gray levels of an image file, slab by slab.
//
//   CVolumeSource image(OpenImage("scan.nrrd"));
//   ComputeGray(texture, image, {range, directions, keepsMatrices, threads});
#pragma once

#include "images/Directions.h"
#include "images/Quantize.h"
#include "images/VolumeSource.h"
#include "texture/Texture.h"

#include <optional>
#include <vector>

namespace selu {

struct StGrayCounting {
  std::optional<StRange> range;
  std::vector<Direction> directions;
  bool keepsMatrices = false;
  int threads = 1;
};

/// Fills in the features and pairs of each direction and, where they are kept, the matrices. Notes
/// it on standard error where few of the image's values are left. Throws CAppError for pixels that
/// need a range, CException for counts that the matrices do not hold.
void ComputeGray(StTexture& texture, CVolumeSource& image, StGrayCounting const& counting);

} // namespace selu
