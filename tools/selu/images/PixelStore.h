// Whether a file can hold the pixels that its header claims.
//
//   CheckPixelStore(path, format);                          // its files can be opened
//   CheckClaim(path, format, {64, 64, 32}, 2);              // 2 bytes a pixel, 64 x 64 x 32 of
//   them
#pragma once

#include "images/FileFormat.h"

#include <pxlib2core/Types.h>

#include <vector>

namespace selu {

/// The file that holds the pixels: the image itself or one that its header names. Throws CAppError.
[[nodiscard]] std::filesystem::path PixelFile(std::filesystem::path const& path, EnFormat format);

/// Looks at the file that a header names for its pixels: it must be a regular file with something
/// in it, so that no reader waits for a pipe. The pages of a TIFF must lie inside the file and be
/// of one size and of a pixel type that is read. Throws CAppError.
void CheckPixelStore(std::filesystem::path const& path, EnFormat format);

/// Throws CAppError when the file is too small for the claimed pixels, of so many bytes in memory,
/// or they for the memory. Exact for pixels stored plainly; deflated ones (NIfTI, NRRD, MetaImage)
/// are unpacked once to see that they are whole; files packed otherwise may unpack to what their
/// method can make of them at most. O(file).
void CheckClaim(std::filesystem::path const& path, EnFormat format,
                std::vector<ORVA::int64> const& extents, std::size_t bytesAPixel);

} // namespace selu
