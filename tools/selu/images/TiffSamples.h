// The samples of a TIFF file, of whatever width, as pixels.
//
//   StTiffSamples const how = {.bits = 12, .kind = SAMPLEFORMAT_UINT};
//   auto const pixel = PixelOf(how);                  // EnPixel::UInt16
//   UnpackSamples(how, packed, out);                  // out.size() / 2 samples
#pragma once

#include "images/RawImage.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace selu {

struct StTiffSamples {
  unsigned bits = 8;
  std::uint16_t kind = 1; ///< TIFF's number of the sample format: 1 unsigned, 2 signed, 3 float
  /// Of widths of whole bytes: the order in which the bytes of a sample stand.
  bool bigEndian = false;
  bool operator==(StTiffSamples const&) const = default;
};

/// The narrowest pixel type that holds all their values: integers of 1 to 64 bits, floating-point
/// numbers of 16, 24, 32 or 64; nothing for others.
[[nodiscard]] std::optional<EnPixel> PixelOf(StTiffSamples const& how) noexcept;

/// The first samples of a row, as many as fit into `out`. Those whose width is not a whole number
/// of bytes follow one another from each byte's highest bit on. The row must hold as many.
void UnpackSamples(StTiffSamples const& how, std::span<std::byte const> row,
                   std::span<std::byte> out);

} // namespace selu
