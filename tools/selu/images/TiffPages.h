// Whether the pages of a TIFF file are all there, and of a kind that can be read.
//
//   CheckTiffPages("stack.tif");     // throws for a page or a strip beyond the file's end
#pragma once

#include <filesystem>

namespace selu {

/// Follows the directories of all pages: each, and the pixels that it points to, must lie inside
/// the file, and all pages but small previews must have the same size and pixel type: for gray
/// values integers of 8 or 16 bits or floating-point numbers of 32 bits. Throws CAppError. Readers
/// would hand out the pages before the damage as if they were all, and zeros for other types.
void CheckTiffPages(std::filesystem::path const& path);

} // namespace selu
