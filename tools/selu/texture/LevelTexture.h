// Texture of an image's levels: its matrices and features by direction, or of all directions.
//
//   StCounting const counting = {.features = ParseFeatures("ibsi"), .directions = directions};
//   CountDirections(texture, gray, counting);
//   Aggregate(texture, gray, counting, ORVA::EnAggregation::Average3D);
#pragma once

#include "texture/LevelOptions.h"
#include "texture/Texture.h"

#include <SeluUtils/Texture/Aggregation.h>

#include <vector>

namespace selu {

struct StCounting {
  std::vector<ORVA::EnTextureFeature> features;
  std::vector<Direction> directions; ///< of Aggregate: none for those of its way
  bool isSymmetric = false;
  bool keepsMatrices = false;
  int threads = 1;
};

/// The most levels whose matrices are written to a file, and drawn.
inline constexpr int c_mostMatrixLevels = 1023, c_mostPictureLevels = 256;

/// Fills in the features and pairs of each direction and, where they are kept, the matrices; throws
/// CAppError for counts that these do not hold.
void CountDirections(StTexture& texture, StGrayLevels const& gray, StCounting const& counting);
/// Fills in the features of all directions.
void Aggregate(StTexture& texture, StGrayLevels const& gray, StCounting const& counting,
               ORVA::EnAggregation way);

} // namespace selu
