// The voxels of an image under a walk: painting them, and a plane of them as a picture.
//
//   auto const value = ParsePixelValue("255", EnPixel::UInt8, "--paint");
//   Paint(image, points, value);
//   ORVA::CImage plane = ResamplePlane(image, walk, std::nullopt);
#pragma once

#include "images/PixelValue.h"
#include "images/Quantize.h"
#include "images/RawImage.h"
#include "walks/Walk.h"

#include <cstddef>
#include <optional>
#include <span>

namespace selu {

/// Position of a point inside the image in its pixels.
[[nodiscard]] inline std::size_t IndexOf(Point const& p, ORVA::CSize const& size) noexcept {
  return static_cast<std::size_t>((p.z * size.y + p.y) * size.x + p.x);
}

/// The points must lie inside.
void Paint(CRawImage& image, std::span<Point const> points, PixelValue const& value);

/// Extents of a slice as an image: the two axes other than the walk's dominant one, in their order.
[[nodiscard]] ORVA::CSize PlaneSize(StWalk const& walk, ORVA::CSize const& size);
/// The grid of that image: the spacing of its axes and, of a slice across an axis, where it lies in
/// space. (The pixels of an oblique slice lie on no grid.)
[[nodiscard]] StGrid PlaneGrid(StWalk const& walk, StGrid const& grid);
/// The voxels of a slice as seen along its dominant axis, 0 where the plane has none. Unsigned 8
/// and 16-bit pixels stay as they are; with a range, and for other types, the values become 8 bits:
/// the range (without one, the plane's least and greatest finite value) 0 to 255, NaN 0.
[[nodiscard]] ORVA::CImage ResamplePlane(CRawImage const& image, StWalk const& walk,
                                         std::optional<StRange> const& range);

} // namespace selu
