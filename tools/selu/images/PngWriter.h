// Writing a PNG file.
//
//   file.Write(PngBytes({{size, EnPixel::UInt16}, grid, bytes}));
#pragma once

#include "images/TiffWriter.h"

#include <string>

namespace selu {

/// The file: grayscale of 8 or 16 bits, packed, the spacing as its physical scale, and what else
/// the grid has as the text that ReadPngGrid() takes. Throws std::bad_alloc.
[[nodiscard]] std::string PngBytes(StPixels const& image);

} // namespace selu
