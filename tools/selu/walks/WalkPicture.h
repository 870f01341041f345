// Pictures of walks: the voxels as squares in the colors of their order, and gray-value profiles.
//
//   std::string png = DrawWalk(walk, std::nullopt, ".png");
//   std::string svg = DrawProfile({"line from ...", "distance in voxels", points}, ".svg");
#pragma once

#include "walks/Walk.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace selu {

/// A 2D walk as one panel, a 3D one as its three projections along the axes; over them the ideal
/// lines. Of voxels on one place the last of the walk is on top. Panels have bounded sizes: where
/// the walk has more voxels than they have pixels, a pixel stands for several of them. Goes along
/// the walk twice.
[[nodiscard]] std::string DrawWalk(StWalk const& walk, std::optional<ORVA::CSize> const& size,
                                   std::string const& ending);

struct StProfile {
  std::string title, distanceName;
  std::vector<std::pair<double, double>> points = {}; ///< distance and value
};

/// Values over the distance; NaN and infinite ones leave gaps.
[[nodiscard]] std::string DrawProfile(StProfile const& profile, std::string const& ending);

} // namespace selu
