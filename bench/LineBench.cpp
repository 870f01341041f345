// Lines and walkers beside the loops that one would write by hand, and beside those of ITK and
// OpenCV. All contestants of a row add up the same voxels, and where the row says so all make use
// of the coordinates.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/Walker.h>

#include "support/Lines.h"

#include <benchmark/benchmark.h>
#include <itkImageRegionConstIteratorWithIndex.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using namespace bench;

namespace {

std::vector<std::uint8_t> Pixels(std::size_t count) {
  std::vector<std::uint8_t> pixels(count);
  for (std::size_t k = 0; k < count; ++k) pixels[k] = PixelAt(k);
  return pixels;
}

void CountPoints(benchmark::State& state, std::size_t points) {
  state.SetItemsProcessed(static_cast<int64>(points) * static_cast<int64>(state.iterations()));
}

// One line after another; `sumAlong(pixels, k)` adds up the pixels along line k.
template <class MakePixels, class SumAlong>
void Lines(benchmark::State& state, MakePixels makePixels, SumAlong sumAlong, int64 points) {
  auto const pixels = makePixels();
  std::size_t k = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(sumAlong(pixels, k));
    k = (k + 1) % c_planeEnds.size();
  }
  CountPoints(state, static_cast<std::size_t>(points));
}

std::vector<std::uint8_t> PlanePixels() { return Pixels(c_width * c_width); }
std::vector<std::uint8_t> SpacePixels() { return Pixels(c_side * c_side * c_side); }

CBresenhamVisitor PlaneLine(std::size_t k) {
  return {Point(), c_planeEnds[k], 2, NEIGHBORHOOD_8, true};
}
CBresenhamVisitor SpaceLine(std::size_t k) {
  return {Point(), c_spaceEnds[k], 3, NEIGHBORHOOD_26, true};
}

template <class MakeLine>
std::vector<CBresenhamVisitor> Prebuilt(MakeLine makeLine) {
  std::vector<CBresenhamVisitor> lines;
  for (std::size_t k = 0; k < c_planeEnds.size(); ++k) lines.push_back(makeLine(k));
  return lines;
}

template <int dimension>
std::uint64_t At(std::vector<std::uint8_t> const& pixels, Point const& p) {
  if constexpr (dimension == 2) return pixels[static_cast<std::size_t>(p.x + c_width * p.y)];
  return pixels[static_cast<std::size_t>(p.x + c_side * (p.y + c_side * p.z))];
}

template <int dimension>
std::uint64_t SumOfWalk(std::vector<std::uint8_t> const& pixels,
                        CBresenhamVisitor const& original) {
  CBresenhamVisitor line = original;
  std::uint64_t sum = 0;
  while (line.MorePoints()) sum += At<dimension>(pixels, line.NextPoint());
  return sum;
}

template <int dimension>
std::uint64_t SumOfRange(std::vector<std::uint8_t> const& pixels,
                         CBresenhamVisitor const& original) {
  std::uint64_t sum = 0;
  for (Point const& p : Points(CBresenhamVisitor(original))) sum += At<dimension>(pixels, p);
  return sum;
}

// A walker that lives elsewhere.
template <int dimension>
std::uint64_t SumOfWalkInPlace(std::vector<std::uint8_t> const& pixels, CBresenhamVisitor& line) {
  line.Reset();
  std::uint64_t sum = 0;
  while (line.MorePoints()) sum += At<dimension>(pixels, line.NextPoint());
  return sum;
}

template <class MakePixels, class Walk>
void WindowOf(benchmark::State& state, MakePixels makePixels, Walk walk) {
  auto const pixels = makePixels();
  for (auto _ : state) benchmark::DoNotOptimize(walk(pixels));
  CountPoints(state, c_edge * c_edge * c_edge);
}

std::vector<std::uint8_t> WindowPixels() { return Pixels(c_edge * c_edge * c_edge); }

std::uint64_t WalkWindow(std::vector<std::uint8_t> const& pixels) {
  CWindowVisitor window(Point(0, 0, 0), Point(c_edge - 1, c_edge - 1, c_edge - 1));
  std::uint64_t sum = 0;
  while (window.MorePoints()) {
    Point const p = window.NextPoint();
    sum = Mix(sum, pixels[static_cast<std::size_t>(p.x + c_edge * (p.y + c_edge * p.z))], p);
  }
  return sum;
}

std::uint64_t WalkWindowRange(std::vector<std::uint8_t> const& pixels) {
  std::uint64_t sum = 0;
  for (Point const& p :
       Points(CWindowVisitor(Point(0, 0, 0), Point(c_edge - 1, c_edge - 1, c_edge - 1))))
    sum = Mix(sum, pixels[static_cast<std::size_t>(p.x + c_edge * (p.y + c_edge * p.z))], p);
  return sum;
}

std::uint64_t ThreeLoops(std::vector<std::uint8_t> const& pixels) {
  std::uint64_t sum = 0;
  for (int64 z = 0; z < c_edge; ++z)
    for (int64 y = 0; y < c_edge; ++y)
      for (int64 x = 0; x < c_edge; ++x)
        sum = Mix(sum, pixels[static_cast<std::size_t>(x + c_edge * (y + c_edge * z))],
                  Point(x, y, z));
  return sum;
}

std::uint64_t WindowOfItk(itk::SmartPointer<itk::Image<std::uint8_t, 3>> const& image) {
  itk::ImageRegionConstIteratorWithIndex<itk::Image<std::uint8_t, 3>> voxel(
      image, image->GetLargestPossibleRegion());
  std::uint64_t sum = 0;
  for (; !voxel.IsAtEnd(); ++voxel) {
    auto const& p = voxel.GetIndex();
    sum = Mix(sum, voxel.Get(), Point(p[0], p[1], p[2]));
  }
  return sum;
}

// Building a line and walking it, by its length.
void LineOfLength(benchmark::State& state, int64 dimension, int64 length, int64 code) {
  try {
    for (auto _ : state) {
      CBresenhamVisitor line(Point(), Point(length, length / 3, length / 7), dimension, code, true);
      int64 sum = 0;
      while (line.MorePoints()) sum += line.NextPoint().y;
      benchmark::DoNotOptimize(sum);
    }
  } catch (std::bad_alloc const&) {
    state.SkipWithError("more than memory holds");
  }
  CountPoints(state, static_cast<std::size_t>(length));
}

void WindowOfSize(benchmark::State& state, int64 points) {
  for (auto _ : state) {
    CWindowVisitor window(Point(0, 0, 0), Point(99, 9, points / 1000 - 1));
    int64 sum = 0;
    while (window.MorePoints()) sum ^= window.NextPoint().x;
    benchmark::DoNotOptimize(sum);
  }
  CountPoints(state, static_cast<std::size_t>(points));
}

std::uint64_t PlaneLoop(std::vector<std::uint8_t> const& pixels, std::size_t k) {
  return PlaneLineByHand(pixels.data(), c_planeEnds[k]);
}
std::uint64_t SpaceLoop(std::vector<std::uint8_t> const& pixels, std::size_t k) {
  return SpaceLineByHand(pixels.data(), c_spaceEnds[k]);
}

template <class Function, class... Arguments>
void Register(std::string const& name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(
      name.c_str(), [=](benchmark::State& state) mutable { function(state, arguments...); });
}

template <class MakePixels, class SumAlong>
void RegisterLines(std::string const& name, MakePixels makePixels, SumAlong sumAlong,
                   int64 points) {
  Register(name, Lines<MakePixels, SumAlong>, makePixels, sumAlong, points);
}

// A row of this library alone and the loop: lines built beforehand, walked from a copy or in place.
template <int dimension>
void RegisterPrebuilt(std::string const& row, std::vector<std::uint8_t> (*makePixels)(),
                      CBresenhamVisitor (*makeLine)(std::size_t), int64 side,
                      std::uint64_t (*byHand)(std::vector<std::uint8_t> const&, std::size_t)) {
  auto const add = [=](std::string const& way, auto sumOf) {
    RegisterLines(
        row + ", " + way + "/SeluUtils", makePixels,
        [=, lines = Prebuilt(makeLine)](auto const& pixels, std::size_t k) mutable {
          return sumOf(pixels, lines[k]);
        },
        side);
    RegisterLines(row + ", " + way + "/integer loop", makePixels, byHand, side);
  };
  add("built before", SumOfWalk<dimension>);
  add("built before, range-for", SumOfRange<dimension>);
  add("built before, in place", SumOfWalkInPlace<dimension>);
}

void RegisterPlaneLines() {
  std::string const row = "1000 px line summing pixels";
  RegisterLines(
      row + "/SeluUtils", PlanePixels,
      [](auto const& pixels, std::size_t k) {
        CBresenhamVisitor line(Point(), c_planeEnds[k], 2, NEIGHBORHOOD_8, true);
        std::uint64_t sum = 0;
        while (line.MorePoints()) sum += At<2>(pixels, line.NextPoint());
        return sum;
      },
      c_width);
  RegisterLines(row + "/integer loop", PlanePixels, PlaneLoop, c_width);
  RegisterLines(
      row + "/OpenCV", [] { return OpenCvImage(PlanePixels(), c_width, c_width); },
      [](auto const& image, std::size_t k) { return LineOfOpenCv(image, c_planeEnds[k]); },
      c_width);
  RegisterLines(
      row + "/ITK",
      [] {
        return ItkImage<2>(PlanePixels(), {c_width, c_width});
      },
      [](auto const& image, std::size_t k) { return LineOfItk(image, c_planeEnds[k]); }, c_width);
  RegisterPrebuilt<2>(row, PlanePixels, PlaneLine, c_width, PlaneLoop);
}

void RegisterSpaceLines() {
  std::string const row = "500 voxel line summing voxels";
  RegisterLines(
      row + "/SeluUtils", SpacePixels,
      [](auto const& pixels, std::size_t k) {
        CBresenhamVisitor line(Point(), c_spaceEnds[k], 3, NEIGHBORHOOD_26, true);
        std::uint64_t sum = 0;
        while (line.MorePoints()) sum += At<3>(pixels, line.NextPoint());
        return sum;
      },
      c_side);
  RegisterLines(row + "/integer loop", SpacePixels, SpaceLoop, c_side);
  RegisterLines(
      row + "/ITK",
      [] {
        return ItkImage<3>(SpacePixels(), {c_side, c_side, c_side});
      },
      [](auto const& image, std::size_t k) { return LineOfItk(image, c_spaceEnds[k]); }, c_side);
  RegisterPrebuilt<3>(row, SpacePixels, SpaceLine, c_side, SpaceLoop);
}

void RegisterWindows() {
  auto const add = [](std::string const& name, auto makePixels, auto walk) {
    Register(name, WindowOf<decltype(makePixels), decltype(walk)>, makePixels, walk);
  };
  auto const itkImage = [] { return ItkImage<3>(WindowPixels(), {c_edge, c_edge, c_edge}); };
  std::string const row = "256^3 window with coordinates";
  add(row + "/SeluUtils", WindowPixels, WalkWindow);
  add(row + "/three loops", WindowPixels, ThreeLoops);
  add(row + "/ITK", itkImage, WindowOfItk);
  add(row + ", range-for/SeluUtils", WindowPixels, WalkWindowRange);
  add(row + ", range-for/three loops", WindowPixels, ThreeLoops);
  add(row + ", range-for/ITK", itkImage, WindowOfItk);
}

bool const g_registered = [] {
  RegisterPlaneLines();
  RegisterSpaceLines();
  RegisterWindows();
  for (int64 points = 1000; points <= 100'000'000; points *= 10) {
    std::string const n = std::to_string(points);
    Register("2D line of " + n + "/SeluUtils", LineOfLength, int64{2}, points, NEIGHBORHOOD_8);
    // About 50 bytes per voxel: the longest of these would need more than small machines have.
    if (points <= 10'000'000) {
      Register("3D line of " + n + " in 26/SeluUtils", LineOfLength, int64{3}, points,
               NEIGHBORHOOD_26);
      Register("3D line of " + n + " in 14.2/SeluUtils", LineOfLength, int64{3}, points,
               NEIGHBORHOOD_14_2);
    }
    Register("window of " + n + "/SeluUtils", WindowOfSize, points);
  }
  return true;
}();

} // namespace
