// Colors of the pictures.
//
//   Color c = SequentialRamp(0.5);       // for quantities: light is little, dark is much
//   Color c = SoftRamp(0.5);             // pale, for cells that carry text
//   picture.Fill({0, 0, 10, 10}, c_ink);
#pragma once

namespace selu {

/// Components from 0 to 1.
struct Color {
  double red, green, blue;
};

inline constexpr Color c_ink = {0.13, 0.15, 0.19};
inline constexpr Color c_faint = {0.45, 0.48, 0.53};
inline constexpr Color c_hairline = {0.82, 0.84, 0.87};
inline constexpr Color c_paper = {1, 1, 1};
inline constexpr Color c_empty = {0.965, 0.97, 0.975};

/// Both take a share from 0 to 1, and clamp.
[[nodiscard]] Color SequentialRamp(double share) noexcept;
[[nodiscard]] Color SoftRamp(double share) noexcept;

} // namespace selu
