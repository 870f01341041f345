// Pictures of samples.
//
//   std::string png = DrawScalars(statistics, "normal, mean = 3", 42, ".png");
//   std::string svg = DrawDirections(statistics, "vmf, kappa = 20", 42, ".svg");
#pragma once

#include "samples/SampleStatistics.h"

#include <string>

namespace selu {

/// A histogram with the theoretical density, or for discrete values with the expected shares.
[[nodiscard]] std::string DrawScalars(CScalarStatistics const& statistics, std::string const& title,
                                      ORVA::uint64 seed, std::string const& ending);
/// Both hemispheres in equal-area projection, colored by density, with the mean direction.
[[nodiscard]] std::string DrawDirections(CDirectionStatistics const& statistics,
                                         std::string const& title, ORVA::uint64 seed,
                                         std::string const& ending);

} // namespace selu
