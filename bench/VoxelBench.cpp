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

#include "support/Lines.h"

#include <benchmark/benchmark.h>
#include <itkImageRegionConstIterator.h>
#include <itkImageRegionConstIteratorWithIndex.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numbers>
#include <span>
#include <string>
#include <vector>

using namespace ORVA;
using namespace bench;

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
  for (std::size_t k = 0; k < image.Bytes(); ++k) pixels[k] = PixelAt(k);
  return std::make_shared<CImage const>(image);
}

std::uint8_t const* Pixels(CImage const& image) {
  return reinterpret_cast<std::uint8_t const*>(image.CreateAccess(false).Base());
}

std::span<std::uint8_t const> AllPixels(CImage const& image) {
  return {Pixels(image), image.Bytes()};
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

// All eight lines, one after the other.
template <class SumAlong>
Run Along(std::array<Point, 8> const& ends, SumAlong sumAlong) {
  return [ends, sumAlong] {
    std::uint64_t sum = 0;
    for (Point const& end : ends) sum += sumAlong(end);
    return sum;
  };
}

void AddPlaneLines() {
  auto const image = Image(CSize(c_width, c_width));
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
  Add(row + "/OpenCV", 8000,
      Along(c_planeEnds, [mat = OpenCvImage(AllPixels(*image), c_width, c_width)](
                             Point const& end) { return LineOfOpenCv(mat, end); }));
  Add(row + "/ITK", 8000,
      Along(c_planeEnds, [itk = ItkImage<2>(AllPixels(*image), {c_width, c_width})](
                             Point const& end) { return LineOfItk(itk, end); }));
  Add(row + ", range/SeluUtils", 8000, Along(c_planeEnds, [image, make](Point const& end) {
        return SumOfRange(*image, make(end));
      }));
  Add(row + ", range/integer loop", 8000, byHand);
}

void AddSpaceLines() {
  auto const image = Image(CSize(c_side, c_side, c_side));
  std::string const row = "500 voxel line";
  Add(row + "/SeluUtils", 4000, Along(c_spaceEnds, [image](Point const& end) {
        return Sum(*image, CBresenhamVisitor(Point(), end, 3, NEIGHBORHOOD_26, true));
      }));
  Add(row + "/integer loop", 4000,
      Along(c_spaceEnds, [image, pixels = Pixels(*image)](Point const& end) {
        return SpaceLineByHand(pixels, end);
      }));
  Add(row + "/ITK", 4000,
      Along(c_spaceEnds, [itk = ItkImage<3>(AllPixels(*image), {c_side, c_side, c_side})](
                             Point const& end) { return LineOfItk(itk, end); }));
}

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
  auto const itkImage = ItkImage<3>(AllPixels(*image), {c_edge, c_edge, c_edge});
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

// The rows of a convex polygon, which the hand-written loop goes along.
std::vector<StRun> RowsOf(CPolygonVisitor polygon, int64 side) {
  std::vector<StRun> rows(static_cast<std::size_t>(side));
  for (Point const& p : polygon) { // by ascending x
    StRun& row = rows[static_cast<std::size_t>(p.y)];
    if (row.length == 0) row.first = p;
    ++row.length;
  }
  return rows;
}

// In the order of the walk.
std::vector<StRun> ColumnsOf(CPolygonVisitor polygon) {
  std::vector<StRun> columns;
  for (StRun const& run : Runs(polygon)) columns.push_back(run);
  return columns;
}

std::uint64_t SumColumns(std::vector<StRun> const& columns, std::uint8_t const* pixels,
                         int64 side) {
  std::uint64_t sum = 0;
  for (StRun const& column : columns)
    for (int64 k = 0; k < column.length; ++k)
      sum += pixels[column.first.x + side * (column.first.y + k)];
  return sum;
}

std::uint64_t SumRows(std::vector<StRun> const& rows, std::uint8_t const* pixels, int64 side) {
  std::uint64_t sum = 0;
  for (StRun const& row : rows) {
    std::uint8_t const* const first = pixels + row.first.x + side * row.first.y;
    for (int64 k = 0; k < row.length; ++k) sum += first[k];
  }
  return sum;
}

void AddPolygon(std::string const& size, int64 radius) {
  int64 const side = 2 * radius + 1;
  auto const image = Image(CSize(side, side));
  auto const corners = Disc(radius);
  CPolygonVisitor const polygon(corners, 2, NEIGHBORHOOD_8, true);
  auto const points = static_cast<int64>(polygon.Steps());
  std::string const row = "polygon of " + size;
  auto const mat = OpenCvImage(AllPixels(*image), side, side);
  Add(row + ", built and read/SeluUtils", points,
      [image, corners] { return Sum(*image, CPolygonVisitor(corners, 2, NEIGHBORHOOD_8, true)); });
  Add(row + ", built and read/OpenCV fillPoly, image read below the mask", points,
      [mat, corners, side] { return SumBelow(FilledMask(corners, side), mat); });
  Add(row + ", read/SeluUtils", points, [image, walker = polygon]() mutable {
    walker.Rewind();
    return Sum(*image, walker);
  });
  Add(row + ", read/loops over rows listed before", points,
      [image, rows = RowsOf(polygon, side), side, pixels = Pixels(*image)] {
        return SumRows(rows, pixels, side);
      });
  Add(row + ", read/loops over columns listed before", points,
      [image, columns = ColumnsOf(polygon), side, pixels = Pixels(*image)] {
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
