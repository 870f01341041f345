// The texture of the objects of a label image, slab by slab.
//
//   auto const regions = MeasureRegions(labels, &intensity);
//   std::vector<double> const values = MeasureTextures(labels, intensity, regions, wanted);
#pragma once

#include "images/VolumeSource.h"
#include "objects/Regions.h"
#include "texture/LevelOptions.h"

#include <SeluUtils/Texture/ObjectTexture.h>

#include <span>
#include <vector>

namespace selu {

struct StObjectTextures {
  StLevelRecipe recipe;
  ORVA::StObjectTextureOptions options; ///< with its displacements
  int threads = 1;
};

/// The features of all objects, those of region k from k * features on: NaN for one without pairs.
/// An object that fits into a slab is counted with all others in it, a larger one by itself in each
/// slab that it reaches: what it is takes time in proportion to its bounding box then.
[[nodiscard]] std::vector<double> MeasureTextures(CVolumeSource& labels, CVolumeSource& intensity,
                                                  std::span<StRegion const> regions,
                                                  StObjectTextures const& wanted);

} // namespace selu
