// Pixels that a file holds as text: numbers with blanks between them.
//
//   ReadTextPixels("scan.mha", 180, EnPixel::Int16, pixels);
#pragma once

#include "images/RawImage.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace selu {

/// From this place of the file on, as many numbers as the pixels are; what follows is left alone.
/// Throws CAppError where there are fewer, or one that such a pixel does not hold.
void ReadTextPixels(std::filesystem::path const& path, std::uint64_t offset, EnPixel pixel,
                    std::span<std::byte> pixels);

} // namespace selu
