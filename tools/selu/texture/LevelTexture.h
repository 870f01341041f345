// Texture of an image's levels: its matrices and features by direction, or of all directions.
//
//   StCounting const counting = {.features = ParseFeatures("ibsi"), .directions = directions};
//   CountDirections(texture, source, counting);
//   Aggregate(texture, source, counting, ORVA::EnAggregation::Average3D);
#pragma once

#include "texture/LevelSource.h"
#include "texture/Texture.h"

#include <SeluUtils/Texture/Aggregation.h>

#include <span>
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

/// How far the slices reach that displacements lead to.
[[nodiscard]] StHalo HaloOf(std::span<ORVA::CTriple<ORVA::int64> const> displacements,
                            int dimension);

/// Fills in the features and pairs of each direction and, where they are kept, the matrices; throws
/// CAppError for counts that these do not hold.
void CountDirections(StTexture& texture, CLevelSource& source, StCounting const& counting);
/// Fills in the features of all directions and, where matrices are kept, those of each direction
/// over all slices, or the sum of all where the aggregation adds them.
void Aggregate(StTexture& texture, CLevelSource& source, StCounting const& counting,
               ORVA::EnAggregation way);

} // namespace selu
