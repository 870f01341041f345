// Colours of the pictures.
//
//   Colour c = SequentialRamp(0.5);       // for quantities: light is little, dark is much
//   Colour c = SoftRamp(0.5);             // pale, for cells that carry text
//   picture.SetColour(c_ink);
#pragma once

namespace selu {

/// Components from 0 to 1.
struct Colour {
  double red, green, blue;
};

inline constexpr Colour c_ink = {0.13, 0.15, 0.19};
inline constexpr Colour c_faint = {0.45, 0.48, 0.53};
inline constexpr Colour c_hairline = {0.82, 0.84, 0.87};
inline constexpr Colour c_paper = {1, 1, 1};
inline constexpr Colour c_empty = {0.965, 0.97, 0.975};

/// Both take a share from 0 to 1, and clamp.
[[nodiscard]] Colour SequentialRamp(double share) noexcept;
[[nodiscard]] Colour SoftRamp(double share) noexcept;

} // namespace selu
