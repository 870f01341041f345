// Whether a file can hold the pixels that its header claims.
//
//   StPixelStore const store = StoreOf(path, format, BeginningOf(path, c_headerBytes));
//   CheckClaim(path, store, {64, 64, 32}, 2);             // 64 x 64 x 32 pixels of 2 bytes each
//   if (store.isDeflated) CheckDeflated(path, store, {64, 64, 32}, 2);
#pragma once

#include "images/FileFormat.h"

#include <pxlib2core/Types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace selu {

/// Where the pixels are, and the most that a byte there can unpack to.
struct StPixelStore {
  std::filesystem::path file; ///< the image itself or one that its header names
  std::uint64_t offset = 0;   ///< where they begin in the file
  double ratio = 1;
  std::uint64_t before = 0;      ///< unpacked bytes before them
  std::size_t bytesPerPixel = 0; ///< where that may differ from the pixels in memory
  bool isDeflated = false;       ///< as one gzip or zlib stream
  bool isText = false;           ///< numbers with blanks between them
};

/// So many of a file's first bytes tell where its pixels are, unless they are packed, too.
inline constexpr std::size_t c_headerBytes = 1 << 16;
/// The longest value of a key of one's own that the library of MetaImage reads and writes.
inline constexpr std::size_t c_mostMetaNote = 32767;

/// From the file's beginning, c_headerBytes of it. The file with the pixels must be a regular one
/// with something in it, so that no reader waits for a pipe. Throws CAppError.
[[nodiscard]] StPixelStore StoreOf(std::filesystem::path const& path, EnFormat format,
                                   std::string_view beginning);

/// Throws CAppError when the file is too small for the claimed pixels, of so many bytes in memory.
/// Exact for pixels stored plainly; files packed may unpack to what their method can make of them
/// at most.
void CheckClaim(std::filesystem::path const& path, StPixelStore const& store,
                std::vector<ORVA::int64> const& extents, std::size_t bytesPerPixel);
/// Unpacks deflated pixels (of NIfTI, NRRD, MetaImage) once to see that they are whole. O(file).
void CheckDeflated(std::filesystem::path const& path, StPixelStore const& store,
                   std::vector<ORVA::int64> const& extents, std::size_t bytesPerPixel);

} // namespace selu
