// Walks of polygons with real corners and of solids, as the command line describes them.
//
//   StWalkOptions given;
//   given.mesh = "part.stl";
//   StWalk walk = MakeSolid(given, std::nullopt);
#pragma once

#include "walks/Walk.h"

#include <optional>

namespace selu {

/// Whether the corners of a polygon or of a hole are not all whole, or a rule for them is given.
[[nodiscard]] bool AsksForRealPolygon(StWalkOptions const& given);
/// Both throw CUsageError and CAppError, and what the walkers throw.
[[nodiscard]] StWalk MakeRealPolygon(StWalkOptions const& given,
                                     std::optional<ORVA::CSize> const& size);
[[nodiscard]] StWalk MakeSolid(StWalkOptions const& given, std::optional<ORVA::CSize> const& size);

} // namespace selu
