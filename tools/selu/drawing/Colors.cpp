#include "drawing/Colors.h"

#include <algorithm>
#include <array>

namespace selu {
namespace {

// Lightness falls evenly from stop to stop, so that the ramp reads in gray, too.
constexpr std::array<Color, 7> c_sequential = {{{0.99, 0.91, 0.62},
                                                {0.98, 0.75, 0.42},
                                                {0.94, 0.55, 0.34},
                                                {0.83, 0.36, 0.37},
                                                {0.63, 0.22, 0.43},
                                                {0.38, 0.14, 0.43},
                                                {0.13, 0.07, 0.30}}};
constexpr std::array<Color, 3> c_soft = {
    {{0.97, 0.98, 0.99}, {0.76, 0.87, 0.93}, {0.45, 0.71, 0.83}}};

template <std::size_t Stops>
Color Ramp(std::array<Color, Stops> const& stops, double share) {
  double const place = std::clamp(share, 0.0, 1.0) * static_cast<double>(Stops - 1);
  auto const first = std::min(static_cast<std::size_t>(place), Stops - 2);
  double const t = place - static_cast<double>(first);
  Color const a = stops[first], b = stops[first + 1];
  return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t,
          a.blue + (b.blue - a.blue) * t};
}

} // namespace

Color SequentialRamp(double share) noexcept { return Ramp(c_sequential, share); }
Color SoftRamp(double share) noexcept { return Ramp(c_soft, share); }

} // namespace selu
