// Whether the pages of a TIFF file are all there.
//
//   CheckTiffPages("stack.tif");     // throws for a page or a strip beyond the file's end
#pragma once

#include <filesystem>

namespace selu {

/// Follows the directories of all pages: each, and the pixels that it points to, must lie inside
/// the file, and all pages but small previews must have the same size. Throws CAppError. Readers
/// would hand out the pages before the damage as if they were all.
void CheckTiffPages(std::filesystem::path const& path);

} // namespace selu
