// What the benchmarks of lines and of the voxels below walks share: images, the lines, and how they
// are walked by hand, by OpenCV and by ITK.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <itkImage.h>
#include <itkLineConstIterator.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace bench {

using ORVA::int64;
using Point = ORVA::CTriple<int64>;

/// Values without a pattern that a cache or a predictor could learn.
[[nodiscard]] constexpr std::uint8_t PixelAt(std::size_t k) {
  return static_cast<std::uint8_t>(k * 37 + k / 251);
}

/// The pixels as ITK has them, x fastest.
template <unsigned dimension>
auto ItkImage(std::span<std::uint8_t const> pixels, std::array<int64, dimension> const& extents) {
  using Image = itk::Image<std::uint8_t, dimension>;
  auto image = Image::New();
  typename Image::SizeType size;
  for (unsigned axis = 0; axis < dimension; ++axis)
    size[axis] = static_cast<itk::SizeValueType>(extents[axis]);
  image->SetRegions(size);
  image->Allocate();
  std::ranges::copy(pixels, image->GetBufferPointer());
  return image;
}

/// The pixels as OpenCV has them.
inline cv::Mat OpenCvImage(std::span<std::uint8_t const> pixels, int64 width, int64 height) {
  cv::Mat image(static_cast<int>(height), static_cast<int>(width), CV_8UC1);
  std::ranges::copy(pixels, image.ptr());
  return image;
}

constexpr int64 c_width = 1000; // of the plane's square
constexpr int64 c_side = 500;   // of the cube

/// Ends of lines of one length in a few slopes, so that no branch predictor learns one by heart.
constexpr std::array<Point, 8> c_planeEnds = {{{999, 613, 0},
                                               {999, 71, 0},
                                               {999, 998, 0},
                                               {311, 999, 0},
                                               {999, 500, 0},
                                               {777, 999, 0},
                                               {999, 0, 0},
                                               {38, 999, 0}}};
constexpr std::array<Point, 8> c_spaceEnds = {{{499, 211, 87},
                                               {211, 499, 310},
                                               {100, 200, 499},
                                               {499, 498, 497},
                                               {499, 3, 250},
                                               {7, 499, 499},
                                               {250, 125, 499},
                                               {499, 0, 333}}};

/// Sums of the pixels along a line from the origin.
inline std::uint64_t PlaneLineByHand(std::uint8_t const* pixels, Point const& end) {
  bool const xMajor = end.x >= end.y;
  int64 const a = xMajor ? end.x : end.y, b = xMajor ? end.y : end.x;
  int64 x = 0, y = 0, e = 2 * b - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[x + c_width * y];
    if (e >= 0) {
      ++(xMajor ? y : x);
      e -= 2 * a;
    }
    ++(xMajor ? x : y);
    e += 2 * b;
  }
  return sum;
}

inline std::uint64_t SpaceLineByHand(std::uint8_t const* pixels, Point const& d) {
  std::array<int64, 3> const length = {d.x, d.y, d.z};
  std::size_t const main = d.x >= d.y && d.x >= d.z ? 0 : d.y >= d.z ? 1 : 2;
  std::size_t const second = main == 0 ? 1 : 0, third = main == 2 ? 1 : 2;
  int64 const a = length[main], b = length[second], c = length[third];
  std::array<int64, 3> p{};
  int64 e = 2 * b - a, f = 2 * c - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[p[0] + c_side * (p[1] + c_side * p[2])];
    if (e >= 0) {
      ++p[second];
      e -= 2 * a;
    }
    if (f >= 0) {
      ++p[third];
      f -= 2 * a;
    }
    ++p[main];
    e += 2 * b;
    f += 2 * c;
  }
  return sum;
}

inline std::uint64_t LineOfOpenCv(cv::Mat const& image, Point const& end) {
  cv::LineIterator line(image, cv::Point(0, 0),
                        cv::Point(static_cast<int>(end.x), static_cast<int>(end.y)));
  std::uint64_t sum = 0;
  for (int i = 0; i < line.count; ++i, ++line) sum += **line;
  return sum;
}

template <class Image>
std::uint64_t LineOfItk(itk::SmartPointer<Image> const& image, Point const& end) {
  typename Image::IndexType first, last;
  std::array<int64, 3> const ends = {end.x, end.y, end.z};
  for (unsigned axis = 0; axis < Image::ImageDimension; ++axis) {
    first[axis] = 0;
    last[axis] = ends[axis];
  }
  std::uint64_t sum = 0;
  for (itk::LineConstIterator<Image> line(image, first, last); !line.IsAtEnd(); ++line)
    sum += line.Get();
  return sum;
}

/// What a caller does with coordinates and voxel: it cannot be folded into a closed form.
inline std::uint64_t Mix(std::uint64_t sum, std::uint8_t voxel, Point const& p) {
  return sum + voxel * static_cast<std::uint64_t>(p.x ^ (p.y + p.z));
}

constexpr int64 c_edge = 256; // of a window that is a cube

} // namespace bench
