// The voxels below walks: lines, boxes and polygons beside the loops that one would write by hand,
// and beside OpenCV and ITK where they do the same. All contestants of a row add up the same
// voxels; where the row says so all make use of the coordinates. OpenCV fills a mask and reads the
// image below it. Contestants: ForEachVoxel is "SeluUtils"; rows that say "range" or "runs" walk by
// those.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Voxels.h>
#include <SeluUtils/WindowVisitor.h>

#include <benchmark/benchmark.h>
#include <itkImage.h>
#include <itkImageRegionConstIterator.h>
#include <itkImageRegionConstIteratorWithIndex.h>
#include <itkLineConstIterator.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;
using Point = CTriple<int64>;

namespace {

using Run = std::function<std::uint64_t()>;

void Add(std::string const& name, int64 items, Run const& run) {
  benchmark::RegisterBenchmark(name.c_str(), [run, items](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(run());
    state.SetItemsProcessed(static_cast<int64>(state.iterations()) * items);
  })->Unit(benchmark::kMicrosecond);
}

std::shared_ptr<CImage const> Image(CSize const& size) {
  CImage image(IMAGE_GREY_8, size);
  auto const access = image.CreateAccess(true);
  auto* const pixels = reinterpret_cast<std::uint8_t*>(access.WritableBase());
  for (std::size_t k = 0; k < image.Bytes(); ++k)
    pixels[k] = static_cast<std::uint8_t>(k * 37 + k / 251);
  return std::make_shared<CImage const>(image);
}

std::uint8_t const* Pixels(CImage const& image) {
  return reinterpret_cast<std::uint8_t const*>(image.CreateAccess(false).Base());
}

template <unsigned dimension>
auto ItkImage(CImage const& image) {
  using Itk = itk::Image<std::uint8_t, dimension>;
  auto copy = Itk::New();
  std::array<int64, 3> const extents = {image.Size().x, image.Size().y, image.Size().z};
  typename Itk::SizeType size;
  for (unsigned axis = 0; axis < dimension; ++axis)
    size[axis] = static_cast<itk::SizeValueType>(extents[axis]);
  copy->SetRegions(size);
  copy->Allocate();
  std::memcpy(copy->GetBufferPointer(), Pixels(image), image.Bytes());
  return copy;
}

cv::Mat OpenCvImage(CImage const& image) {
  cv::Mat copy(static_cast<int>(image.Size().y), static_cast<int>(image.Size().x), CV_8UC1);
  std::memcpy(copy.ptr(), Pixels(image), image.Bytes());
  return copy;
}

template <class W>
std::uint64_t Sum(CImage const& image, W&& walker) {
  std::uint64_t sum = 0;
  ForEachVoxel<std::uint8_t>(image, std::forward<W>(walker), [&](auto value) { sum += value; });
  return sum;
}

template <class W>
std::uint64_t SumOfRange(CImage const& image, W&& walker) {
  std::uint64_t sum = 0;
  for (std::uint8_t const& value : Voxels<std::uint8_t>(image, std::forward<W>(walker)))
    sum += value;
  return sum;
}

// Ends of lines of one length in a few slopes, so that no branch predictor learns one by heart.
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

// All eight lines, one after the other.
template <class SumAlong>
Run Along(std::array<Point, 8> const& ends, SumAlong sumAlong) {
  return [ends, sumAlong] {
    std::uint64_t sum = 0;
    for (Point const& end : ends) sum += sumAlong(end);
    return sum;
  };
}

std::uint64_t PlaneLineByHand(std::uint8_t const* pixels, Point const& end) {
  bool const xMajor = end.x >= end.y;
  int64 const a = xMajor ? end.x : end.y, b = xMajor ? end.y : end.x;
  int64 x = 0, y = 0, e = 2 * b - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[x + 1000 * y];
    if (e >= 0) {
      ++(xMajor ? y : x);
      e -= 2 * a;
    }
    ++(xMajor ? x : y);
    e += 2 * b;
  }
  return sum;
}

std::uint64_t SpaceLineByHand(std::uint8_t const* pixels, Point const& d) {
  std::array<int64, 3> const length = {d.x, d.y, d.z};
  std::size_t const main = d.x >= d.y && d.x >= d.z ? 0 : d.y >= d.z ? 1 : 2;
  std::size_t const second = main == 0 ? 1 : 0, third = main == 2 ? 1 : 2;
  int64 const a = length[main], b = length[second], c = length[third];
  std::array<int64, 3> p{};
  int64 e = 2 * b - a, f = 2 * c - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[p[0] + 500 * (p[1] + 500 * p[2])];
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

template <class Itk>
std::uint64_t LineOfItk(itk::SmartPointer<Itk> const& image, Point const& end) {
  typename Itk::IndexType first, last;
  std::array<int64, 3> const ends = {end.x, end.y, end.z};
  for (unsigned axis = 0; axis < Itk::ImageDimension; ++axis) {
    first[axis] = 0;
    last[axis] = ends[axis];
  }
  std::uint64_t sum = 0;
  for (itk::LineConstIterator<Itk> line(image, first, last); !line.IsAtEnd(); ++line)
    sum += line.Get();
  return sum;
}

void AddPlaneLines() {
  auto const image = Image(CSize(1000, 1000));
  std::string const row = "1000 px line";
  auto const make = [](Point const& end) {
    return CBresenhamVisitor(Point(), end, 2, NEIGHBORHOOD_8, true);
  };
  auto const byHand = Along(c_planeEnds, [image, pixels = Pixels(*image)](Point const& end) {
    return PlaneLineByHand(pixels, end);
  });
  Add(row + "/SeluUtils", 8000,
      Along(c_planeEnds, [image, make](Point const& end) { return Sum(*image, make(end)); }));
  Add(row + "/integer loop", 8000, byHand);
  Add(row + "/OpenCV", 8000, Along(c_planeEnds, [mat = OpenCvImage(*image)](Point const& end) {
        cv::LineIterator line(mat, cv::Point(0, 0),
                              cv::Point(static_cast<int>(end.x), static_cast<int>(end.y)));
        std::uint64_t sum = 0;
        for (int i = 0; i < line.count; ++i, ++line) sum += **line;
        return sum;
      }));
  Add(row + "/ITK", 8000, Along(c_planeEnds, [itk = ItkImage<2>(*image)](Point const& end) {
        return LineOfItk(itk, end);
      }));
  Add(row + ", range/SeluUtils", 8000, Along(c_planeEnds, [image, make](Point const& end) {
        return SumOfRange(*image, make(end));
      }));
  Add(row + ", range/integer loop", 8000, byHand);
}

void AddSpaceLines() {
  auto const image = Image(CSize(500, 500, 500));
  std::string const row = "500 voxel line";
  Add(row + "/SeluUtils", 4000, Along(c_spaceEnds, [image](Point const& end) {
        return Sum(*image, CBresenhamVisitor(Point(), end, 3, NEIGHBORHOOD_26, true));
      }));
  Add(row + "/integer loop", 4000,
      Along(c_spaceEnds, [image, pixels = Pixels(*image)](Point const& end) {
        return SpaceLineByHand(pixels, end);
      }));
  Add(row + "/ITK", 4000, Along(c_spaceEnds, [itk = ItkImage<3>(*image)](Point const& end) {
        return LineOfItk(itk, end);
      }));
}

constexpr int64 c_edge = 256;
constexpr int64 c_voxels = c_edge * c_edge * c_edge;
CWindowVisitor Cube() { return {{0, 0, 0}, {c_edge - 1, c_edge - 1, c_edge - 1}}; }

template <class Visit>
std::uint64_t ThreeLoops(std::uint8_t const* pixels, Visit visit) {
  std::uint64_t sum = 0;
  for (int64 z = 0; z < c_edge; ++z)
    for (int64 y = 0; y < c_edge; ++y)
      for (int64 x = 0; x < c_edge; ++x)
        sum = visit(sum, pixels[x + c_edge * (y + c_edge * z)], Point(x, y, z));
  return sum;
}

// What a caller does with coordinates and voxel: it cannot be folded into a closed form.
std::uint64_t Mix(std::uint64_t sum, std::uint8_t voxel, Point const& p) {
  return sum + voxel * static_cast<std::uint64_t>(p.x ^ (p.y + p.z));
}

template <class W>
std::uint64_t Mixed(CImage const& image, W&& walker) {
  std::uint64_t sum = 0;
  ForEachVoxel<std::uint8_t>(image, std::forward<W>(walker),
                             [&](auto value, Point const& p) { sum = Mix(sum, value, p); });
  return sum;
}

std::uint64_t MixedRuns(std::uint8_t const* pixels, CWindowVisitor& window) {
  std::uint64_t sum = 0;
  window.Rewind();
  for (auto const& [first, axis, length] : Runs(window)) {
    std::uint8_t const* const row = pixels + first.x + c_edge * (first.y + c_edge * first.z);
    for (int64 k = 0; k < length; ++k) sum = Mix(sum, row[k], {first.x + k, first.y, first.z});
  }
  return sum;
}

// A walker that is part of something larger.
struct StOwner {
  CWindowVisitor window = Cube();
  std::uint64_t SumPoints(std::uint8_t const* pixels) {
    std::uint64_t sum = 0;
    window.Rewind();
    while (window.MorePoints()) {
      Point const p = window.NextPoint();
      sum = Mix(sum, pixels[p.x + c_edge * (p.y + c_edge * p.z)], p);
    }
    return sum;
  }
};

void AddWindows() {
  auto const image = Image(CSize(c_edge, c_edge, c_edge));
  auto const* const pixels = Pixels(*image);
  auto const add = [](std::uint64_t sum, std::uint8_t voxel, Point const&) { return sum + voxel; };
  auto const itkImage = ItkImage<3>(*image);
  using Itk = itk::Image<std::uint8_t, 3>;
  Run const loops = [image, pixels, add] { return ThreeLoops(pixels, add); };
  Run const mixing = [image, pixels] { return ThreeLoops(pixels, Mix); };
  std::string const row = "256^3 window";
  Add(row + "/SeluUtils", c_voxels, [image] { return Sum(*image, Cube()); });
  Add(row + "/three loops", c_voxels, loops);
  Add(row + "/ITK", c_voxels, [itkImage] {
    std::uint64_t sum = 0;
    itk::ImageRegionConstIterator<Itk> voxel(itkImage, itkImage->GetLargestPossibleRegion());
    for (; !voxel.IsAtEnd(); ++voxel) sum += voxel.Get();
    return sum;
  });
  Add(row + ", range/SeluUtils", c_voxels, [image] { return SumOfRange(*image, Cube()); });
  Add(row + ", range/three loops", c_voxels, loops);
  Add(row + " with coordinates/SeluUtils", c_voxels, [image] { return Mixed(*image, Cube()); });
  Add(row + " with coordinates/three loops", c_voxels, mixing);
  Add(row + " with coordinates/ITK", c_voxels, [itkImage] {
    std::uint64_t sum = 0;
    itk::ImageRegionConstIteratorWithIndex<Itk> voxel(itkImage,
                                                      itkImage->GetLargestPossibleRegion());
    for (; !voxel.IsAtEnd(); ++voxel) {
      auto const& p = voxel.GetIndex();
      sum = Mix(sum, voxel.Get(), Point(p[0], p[1], p[2]));
    }
    return sum;
  });
  auto const owner = std::make_shared<StOwner>();
  Add(row + " with coordinates, runs of a member/SeluUtils", c_voxels,
      [image, pixels, owner] { return MixedRuns(pixels, owner->window); });
  Add(row + " with coordinates, runs of a member/three loops", c_voxels, mixing);
  Add(row + " with coordinates, points of a member/SeluUtils", c_voxels,
      [image, pixels, owner] { return owner->SumPoints(pixels); });
  Add(row + " with coordinates, points of a member/three loops", c_voxels, mixing);
}

// A million voxels in rows of one length.
void AddRows(int64 length) {
  int64 const rows = 1'000'000 / length;
  auto const image = Image(CSize(length + 3, rows)); // wider, so that rows do not follow on
  auto const* const pixels = Pixels(*image);
  std::string const row = "10^6 px window, rows of " + std::to_string(length);
  Add(row + "/SeluUtils", rows * length, [image, rows, length] {
    return Sum(*image, CWindowVisitor({0, 0, 0}, {length - 1, rows - 1, 0}));
  });
  Add(row + "/two loops", rows * length, [image, pixels, rows, length] {
    std::uint64_t sum = 0;
    for (int64 y = 0; y < rows; ++y)
      for (int64 x = 0; x < length; ++x) sum += pixels[x + (length + 3) * y];
    return sum;
  });
}

std::vector<Point> Disc(int64 radius) {
  std::vector<Point> corners;
  for (int k = 0; k < 24; ++k) {
    double const angle = 2 * std::numbers::pi * k / 24;
    corners.emplace_back(radius + std::lround(static_cast<double>(radius) * std::cos(angle)),
                         radius + std::lround(static_cast<double>(radius) * std::sin(angle)), 0);
  }
  return corners;
}

cv::Mat FilledMask(std::vector<Point> const& corners, int64 side) {
  std::vector<cv::Point> points;
  for (Point const& p : corners) points.emplace_back(static_cast<int>(p.x), static_cast<int>(p.y));
  cv::Mat mask = cv::Mat::zeros(static_cast<int>(side), static_cast<int>(side), CV_8UC1);
  cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(1));
  return mask;
}

std::uint64_t SumBelow(cv::Mat const& mask, cv::Mat const& image) {
  std::uint64_t sum = 0;
  for (int y = 0; y < mask.rows; ++y) {
    auto const* const row = mask.ptr<unsigned char>(y);
    auto const* const pixels = image.ptr<unsigned char>(y);
    for (int x = 0; x < mask.cols; ++x)
      if (row[x] != 0) sum += pixels[x];
  }
  return sum;
}

// First and last row of each column of a convex polygon, which the hand-written loop goes along.
std::uint64_t SumColumns(std::vector<StRun> const& columns, std::uint8_t const* pixels,
                         int64 side) {
  std::uint64_t sum = 0;
  for (StRun const& column : columns)
    for (int64 k = 0; k < column.length; ++k)
      sum += pixels[column.first.x + side * (column.first.y + k)];
  return sum;
}

void AddPolygon(std::string const& size, int64 radius) {
  int64 const side = 2 * radius + 1;
  auto const image = Image(CSize(side, side));
  auto const corners = Disc(radius);
  CPolygonVisitor const polygon(corners, 2, NEIGHBORHOOD_8, true);
  auto const points = static_cast<int64>(polygon.Steps());
  std::vector<StRun> columns;
  for (StRun const& run : Runs(CPolygonVisitor(polygon))) columns.push_back(run);
  std::string const row = "polygon of " + size;
  auto const mat = OpenCvImage(*image);
  Add(row + ", built and read/SeluUtils", points,
      [image, corners] { return Sum(*image, CPolygonVisitor(corners, 2, NEIGHBORHOOD_8, true)); });
  Add(row + ", built and read/OpenCV fillPoly, image read below the mask", points,
      [mat, corners, side] { return SumBelow(FilledMask(corners, side), mat); });
  Add(row + ", read/SeluUtils", points, [image, walker = polygon]() mutable {
    walker.Rewind();
    return Sum(*image, walker);
  });
  Add(row + ", read/nested loops", points, [image, columns, side, pixels = Pixels(*image)] {
    return SumColumns(columns, pixels, side);
  });
  Add(row + ", read/OpenCV, image read below the mask", points,
      [mat, mask = FilledMask(corners, side)] { return SumBelow(mask, mat); });
}

[[maybe_unused]] bool const c_isRegistered = [] {
  AddPlaneLines();
  AddSpaceLines();
  AddWindows();
  for (int64 length = 1; length <= 1'000'000; length *= 10) AddRows(length);
  AddPolygon("10^5 px", 178);
  AddPolygon("10^7 px", 1784);
  return true;
}();

} // namespace
