// Pixels that lie in a file one after the other, as in memory but perhaps in the other byte order:
// any part of them can be read by itself.
//
//   auto const plain = FindPlainPixels(path, EnFormat::Nrrd, beginning, store, EnPixel::Int16);
//   if (plain) ReadPlainPixels(*plain, firstByte, bytes);
#pragma once

#include "images/FileFormat.h"
#include "images/PixelStore.h"
#include "images/RawImage.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace selu {

struct StPlainPixels {
  std::filesystem::path file;
  std::uint64_t offset = 0; ///< of the first pixel in it
  std::size_t bytes = 1;    ///< of a pixel
  bool isSwapped = false;   ///< in the other byte order than the machine's
};

/// Of NRRD, MetaImage and NIfTI-1. Nothing where the pixels are packed or scaled, of another type
/// than `pixel`, or where the header says anything that is not known to leave them as they are: to
/// read such a file is its reader's business.
[[nodiscard]] std::optional<StPlainPixels>
FindPlainPixels(std::filesystem::path const& path, EnFormat format, std::string_view beginning,
                StPixelStore const& store, EnPixel pixel);

/// Reads as many bytes as there is room for, from byte `first` of the pixels on, and puts them into
/// the machine's order. Throws CAppError where the file ends before.
void ReadPlainPixels(StPlainPixels const& pixels, std::uint64_t first, std::span<std::byte> out);

/// Reads bytes of a file from a place on; throws CAppError where it ends before.
void ReadAt(std::filesystem::path const& file, std::uint64_t offset, std::span<std::byte> out);

/// Turns the bytes of each number of so many bytes round.
void SwapBytes(std::span<std::byte> numbers, std::size_t bytes) noexcept;

} // namespace selu
