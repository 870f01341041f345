// Writing a TIFF file: every pixel type, a volume as pages, not packed.
//
//   WriteTiff("stack.tif", {{size, EnPixel::Int32}, grid, bytes}, {});
#pragma once

#include "images/ImageFile.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace selu {

/// The pixels of an image that is to be written, x fastest.
struct StPixels {
  StHeader header;
  StGrid grid;
  std::span<std::byte const> bytes;
};

/// A BigTIFF where 4 GB do not suffice. Throws where libtiff fails.
void WriteTiff(std::filesystem::path const& path, StPixels const& image, ImageNotes const& notes);

} // namespace selu
