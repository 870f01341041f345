// Displacements of the pairs of voxels, as the command line gives them.
//
//   StGivenDirection const given = ParseDirection("1,0,0");      // before the image is known
//   Direction const direction = FitDirection(given, image.Size());
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2image/Size.h>

#include <string>
#include <vector>

namespace selu {

using Direction = ORVA::CTriple<long>;

/// A direction as written.
struct StGivenDirection {
  std::string text;
  std::vector<ORVA::int64> components; ///< two or three
};

/// "dx,dy" or "dx,dy,dz"; throws CUsageError for anything else and for numbers of more than 32
/// bits.
[[nodiscard]] StGivenDirection ParseDirection(std::string const& text);

/// Throws CAppError for a direction of another dimension than the image.
[[nodiscard]] Direction ToDirection(StGivenDirection const& given, int dimension);
/// The same, and for one that leads beyond the image from every voxel.
[[nodiscard]] Direction FitDirection(StGivenDirection const& given, ORVA::CSize const& size);

/// Pairs of voxels of an image with this displacement; 0 where it is too long.
[[nodiscard]] ORVA::int64 PairsOf(ORVA::CSize const& size, Direction const& direction) noexcept;

} // namespace selu
