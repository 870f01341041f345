// The value that a pixel is to have, as the command line writes it.
//
//   PixelValue const value = ParsePixelValue("255", EnPixel::UInt8, "--paint");
#pragma once

#include "images/RawImage.h"

#include <array>
#include <cstddef>
#include <string>

namespace selu {

/// The bytes of a pixel; those beyond its size are 0.
using PixelValue = std::array<std::byte, 8>;

/// Throws CUsageError, which names the option, for what is no number, and CAppError for one that no
/// such pixel holds: integers hold whole numbers of their range, floating-point pixels all but
/// finite numbers beyond theirs.
[[nodiscard]] PixelValue ParsePixelValue(std::string const& text, EnPixel pixel,
                                         std::string const& option);

} // namespace selu
