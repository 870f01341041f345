// The grid and the notes of a TIFF file: in its resolution, and exactly in its description.
//
//   StGrid const grid = ReadTiffGrid(file);
//   WriteTiffGrid(file, grid, {{"y-keys", "[\"object\"]"}});
//   ImageJNumber("ImageJ=1.53\nimages=12\n", "images")        -> 12
#pragma once

#include "images/ImageFile.h"
#include "images/TiffFile.h"

#include <optional>
#include <string_view>

namespace selu {

/// Of the current page: from a description that WriteTiffGrid wrote or ImageJ, and the resolution,
/// in millimeters where its unit is inches or centimeters.
[[nodiscard]] StGrid ReadTiffGrid(CTiffFile const& file);
/// The description is a JSON object of the notes and, where it is not the plain one, the grid.
void WriteTiffGrid(CTiffFile const& file, StGrid const& grid, ImageNotes const& notes);
/// A number of ImageJ's description, whose lines are key=value.
[[nodiscard]] std::optional<double> ImageJNumber(std::string_view description,
                                                 std::string_view key);

} // namespace selu
