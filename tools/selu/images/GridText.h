// A grid as text, for formats with room for one but none for a grid.
//
//   std::string const text = GridText(grid, {});   // {"spacing":[0.5,0.5,2],"origin":...}
//   StGrid read;
//   bool const isGrid = TakeGrid(text, read);
#pragma once

#include "images/ImageFile.h"

#include <string>
#include <string_view>

namespace selu {

/// A JSON object of the notes and, where it is not the plain one, the grid; empty for neither.
[[nodiscard]] std::string GridText(StGrid const& grid, ImageNotes const& notes);
/// What such a text says; false, with the grid as it was or in parts, for another text.
bool TakeGrid(std::string_view text, StGrid& grid);

} // namespace selu
