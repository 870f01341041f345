// A folder of slices as a volume: PNG or TIFF files by the numbers in their names, or a DICOM
// series by the positions of its slices.
//
//   auto const reader = MakeFolderReader("scan", "");            // the only series
//   ComesBeforeByNumbers("slice9.png", "slice10.png")            -> true
#pragma once

#include "images/ImageReader.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace selu {

/// Looks at every slice, and reads them one by one, so that memory holds one volume. Files that are
/// no image of these formats, and hidden ones, are left out. Throws CAppError for a folder without
/// slices, slices of different sizes, types or formats, missing numbers, uneven distances, and
/// several series of which none was chosen.
[[nodiscard]] std::unique_ptr<IImageReader> MakeFolderReader(std::filesystem::path const& folder,
                                                             std::string const& series);

/// Runs of digits compare by their value, all else by bytes.
[[nodiscard]] bool ComesBeforeByNumbers(std::string_view a, std::string_view b);

} // namespace selu
