// The grid in the description of a PNG file, as PngBytes() writes it.
//
//   ReadPngGrid("plane.png", grid);
#pragma once

#include "images/RawImage.h"

#include <filesystem>

namespace selu {

/// The keyword of the text chunk with it.
inline constexpr char c_pngGridKeyword[] = "Description";

/// Takes the grid where the file has such a text before its pixels. Other chunks are skipped: O(1)
/// for each.
void ReadPngGrid(std::filesystem::path const& path, StGrid& grid);

} // namespace selu
