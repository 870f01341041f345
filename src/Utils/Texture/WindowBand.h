// The maps of a band of an image, line by line: columns of pairs, histograms, features, means.
//
//   Impl::StWindowBand band{...};
//   Impl::ComputeBand(band, units, maps, [&] { progress.Advance(); });
#pragma once

#include "Utils/Texture/WindowColumns.h"
#include "Utils/Texture/WindowSums.h"

#include <SeluUtils/Texture/Features.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// What is to be computed. All vectors have the axes in one order, whose first is that along which
/// windows move.
struct StWindowBand {
  StLevelPixels pixels;
  std::vector<StPairBox> boxes; // one for each displacement
  Vector step{};                // from window to window, in voxels
  Vector first{}, count{};      // center of the first window, and how many there are
  bool isSymmetric = false;
  std::span<EnTextureFeature const> features;
};

/// Where the values go: that of window (i, j, k) and feature f stands at i * stride[0] + j *
/// stride[1] + k * stride[2] + f * featureStride. One of the addresses is null.
struct StWindowMaps {
  double* doubles = nullptr;
  float* floats = nullptr;
  Vector stride{};
  int64 featureStride = 0;
};

/// The longest side of the displacements' boxes along an axis.
[[nodiscard]] int64 LargestSide(StWindowBand const& band, std::size_t axis) noexcept;
/// How many lines of windows ComputeBand works through; it calls `advance` after each.
[[nodiscard]] int64 LinesOf(StWindowBand const& band) noexcept;
void ComputeBand(StWindowBand const& band, StWindowUnits const& units, StWindowMaps const& maps,
                 std::function<void()> const& advance);

/// The sums of one window, counted pair by pair into a matrix of its own: the definition that the
/// moving window has to meet to the last bit.
[[nodiscard]] StWindowSums CountAfresh(StLevelPixels const& pixels, StPairBox const& box,
                                       Vector const& center, bool isSymmetric,
                                       StWindowUnits const& units);

} // namespace ORVA::Impl
