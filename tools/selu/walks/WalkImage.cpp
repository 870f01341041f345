#include "walks/WalkImage.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace selu {
namespace {

// The axes of a plane's columns and rows.
struct StPlaneAxes {
  ORVA::int64 Point::*column, Point::*row;
};

StPlaneAxes AxesOf(StWalk const& walk) {
  if (walk.dominantAxis == 0) return {&Point::y, &Point::z};
  if (walk.dominantAxis == 1) return {&Point::x, &Point::z};
  return {&Point::x, &Point::y};
}

template <class Function>
void ForEachIndex(StWalk const& walk, ORVA::CSize const& size, Function const& visit) {
  StPlaneAxes const axes = AxesOf(walk);
  ORVA::int64 const columns = PlaneSize(walk, size).x;
  ForEachBlock(walk, size, "", [&](std::span<Point const> points) {
    for (auto const& p : points)
      visit(IndexOf(p, size), static_cast<std::size_t>(p.*axes.row * columns + p.*axes.column));
  });
}

template <class T>
void CopyPlane(std::span<T const> pixels, ORVA::CSize const& size, StWalk const& walk,
               ORVA::CImage& plane) {
  auto const access = plane.CreateAccess(true);
  auto* const to = reinterpret_cast<T*>(access.WritableBase());
  ForEachIndex(walk, size, [&](std::size_t from, std::size_t at) { to[at] = pixels[from]; });
}

// Least and greatest finite value under the walk.
template <class T>
StRange FiniteRange(std::span<T const> pixels, ORVA::CSize const& size, StWalk const& walk) {
  StRange range = {std::numeric_limits<double>::infinity(),
                   -std::numeric_limits<double>::infinity()};
  ForEachIndex(walk, size, [&](std::size_t from, std::size_t) {
    auto const value = static_cast<double>(pixels[from]);
    if (!std::isfinite(value)) return;
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
  });
  return range;
}

std::uint8_t Level(double value, StRange const& range) {
  if (!(value > range.low)) return 0; // and NaN
  if (value >= range.high) return 255;
  // In halves, as the difference of two doubles may be infinite.
  double const share = (value / 2 - range.low / 2) / (range.high / 2 - range.low / 2);
  return static_cast<std::uint8_t>(std::lround(share * 255));
}

template <class T>
void MapPlane(std::span<T const> pixels, ORVA::CSize const& size, StWalk const& walk,
              std::optional<StRange> const& given, ORVA::CImage& plane) {
  StRange const range = given ? *given : FiniteRange(pixels, size, walk);
  auto const access = plane.CreateAccess(true);
  auto* const to = reinterpret_cast<std::uint8_t*>(access.WritableBase());
  ForEachIndex(walk, size, [&](std::size_t from, std::size_t at) {
    to[at] = Level(static_cast<double>(pixels[from]), range);
  });
}

} // namespace

void Paint(CRawImage& image, std::span<Point const> points, PixelValue const& value) {
  std::size_t const bytes = PixelBytes(image.Pixel());
  auto const pixels = image.Bytes();
  for (auto const& p : points)
    std::memcpy(pixels.data() + IndexOf(p, image.Size()) * bytes, value.data(), bytes);
}

ORVA::CSize PlaneSize(StWalk const& walk, ORVA::CSize const& size) {
  auto const [column, row] = AxesOf(walk);
  Point const extents(size.x, size.y, size.z);
  return {extents.*column, extents.*row};
}

StGrid PlaneGrid(StWalk const& walk, StGrid const& grid) {
  auto const across = static_cast<std::size_t>(walk.dominantAxis);
  std::size_t const column = across == 0 ? 1 : 0, row = across == 2 ? 1 : 2;
  StGrid plane;
  plane.spacing[0] = grid.spacing[column];
  plane.spacing[1] = grid.spacing[row];
  if (!walk.place) return plane;
  plane.direction = {grid.direction[column], grid.direction[row], grid.direction[across]};
  double const way = grid.spacing[across] * static_cast<double>(*walk.place);
  for (std::size_t axis = 0; axis < plane.origin.size(); ++axis)
    plane.origin[axis] = grid.origin[axis] + grid.direction[across][axis] * way;
  return plane;
}

ORVA::CImage ResamplePlane(CRawImage const& image, StWalk const& walk,
                           std::optional<StRange> const& range) {
  bool const isWide = image.Pixel() == EnPixel::UInt16 && !range;
  ORVA::CImage plane(isWide ? ORVA::IMAGE_GREY_16 : ORVA::IMAGE_GREY_8,
                     PlaneSize(walk, image.Size()));
  VisitPixels(image, [&]<class T>(std::span<T const> pixels) {
    if constexpr (std::is_same_v<T, std::uint8_t> || std::is_same_v<T, std::uint16_t>)
      if (!range) return CopyPlane(pixels, image.Size(), walk, plane);
    MapPlane(pixels, image.Size(), walk, range, plane);
  });
  return plane;
}

} // namespace selu
