// Lines and walkers beside the loops that one would write by hand, and beside those of ITK and
// OpenCV. All contestants of a row add up the same voxels, and where the row says so all make use
// of the coordinates.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/Walker.h>

#include <benchmark/benchmark.h>
#include <itkImage.h>
#include <itkImageRegionConstIteratorWithIndex.h>
#include <itkLineConstIterator.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using Point = CTriple<int64>;

namespace {

std::vector<std::uint8_t> Pixels(std::size_t count) {
  std::vector<std::uint8_t> pixels(count);
  for (std::size_t k = 0; k < count; ++k) pixels[k] = static_cast<std::uint8_t>(k * 37 + k / 251);
  return pixels;
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

constexpr int64 c_width = 1000;
constexpr int64 c_side = 500;

void CountPoints(benchmark::State& state, std::size_t points) {
  state.SetItemsProcessed(static_cast<int64>(points) * static_cast<int64>(state.iterations()));
}

// The pixels as ITK has them.
template <unsigned dimension>
auto ItkImage(std::vector<std::uint8_t> const& pixels, unsigned side) {
  using Image = itk::Image<std::uint8_t, dimension>;
  auto image = Image::New();
  typename Image::SizeType size;
  size.Fill(side);
  image->SetRegions(size);
  image->Allocate();
  std::ranges::copy(pixels, image->GetBufferPointer());
  return image;
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

std::uint64_t PlaneLineByHand(std::vector<std::uint8_t> const& pixels, std::size_t k) {
  Point const end = c_planeEnds[k];
  bool const xMajor = end.x >= end.y;
  int64 const a = xMajor ? end.x : end.y, b = xMajor ? end.y : end.x;
  int64 x = 0, y = 0, e = 2 * b - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[static_cast<std::size_t>(x + c_width * y)];
    if (e >= 0) {
      ++(xMajor ? y : x);
      e -= 2 * a;
    }
    ++(xMajor ? x : y);
    e += 2 * b;
  }
  return sum;
}

std::uint64_t PlaneLineOfOpenCv(cv::Mat const& image, std::size_t k) {
  Point const end = c_planeEnds[k];
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
  itk::LineConstIterator<Image> line(image, first, last);
  for (; !line.IsAtEnd(); ++line) sum += line.Get();
  return sum;
}

std::uint64_t SpaceLineByHand(std::vector<std::uint8_t> const& pixels, std::size_t k) {
  Point const d = c_spaceEnds[k];
  std::array<int64, 3> const length = {d.x, d.y, d.z};
  std::size_t const main = d.x >= d.y && d.x >= d.z ? 0 : d.y >= d.z ? 1 : 2;
  std::size_t const second = main == 0 ? 1 : 0, third = main == 2 ? 1 : 2;
  int64 const a = length[main], b = length[second], c = length[third];
  std::array<int64, 3> p{};
  int64 e = 2 * b - a, f = 2 * c - a;
  std::uint64_t sum = 0;
  for (int64 i = 0; i <= a; ++i) {
    sum += pixels[static_cast<std::size_t>(p[0] + c_side * (p[1] + c_side * p[2]))];
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

constexpr int64 c_edge = 256;

// What a caller does with coordinates and voxel: it cannot be folded into a closed form.
std::uint64_t Mix(std::uint64_t sum, Point const& p, std::uint8_t voxel) {
  return sum + voxel * static_cast<std::uint64_t>(p.x ^ (p.y + p.z));
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
    sum = Mix(sum, p, pixels[static_cast<std::size_t>(p.x + c_edge * (p.y + c_edge * p.z))]);
  }
  return sum;
}

std::uint64_t WalkWindowRange(std::vector<std::uint8_t> const& pixels) {
  std::uint64_t sum = 0;
  for (Point const& p :
       Points(CWindowVisitor(Point(0, 0, 0), Point(c_edge - 1, c_edge - 1, c_edge - 1))))
    sum = Mix(sum, p, pixels[static_cast<std::size_t>(p.x + c_edge * (p.y + c_edge * p.z))]);
  return sum;
}

std::uint64_t ThreeLoops(std::vector<std::uint8_t> const& pixels) {
  std::uint64_t sum = 0;
  for (int64 z = 0; z < c_edge; ++z)
    for (int64 y = 0; y < c_edge; ++y)
      for (int64 x = 0; x < c_edge; ++x)
        sum = Mix(sum, Point(x, y, z),
                  pixels[static_cast<std::size_t>(x + c_edge * (y + c_edge * z))]);
  return sum;
}

std::uint64_t WindowOfItk(itk::SmartPointer<itk::Image<std::uint8_t, 3>> const& image) {
  itk::ImageRegionConstIteratorWithIndex<itk::Image<std::uint8_t, 3>> voxel(
      image, image->GetLargestPossibleRegion());
  std::uint64_t sum = 0;
  for (; !voxel.IsAtEnd(); ++voxel) {
    auto const& p = voxel.GetIndex();
    sum = Mix(sum, Point(p[0], p[1], p[2]), voxel.Get());
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
  RegisterLines(row + "/integer loop", PlanePixels, PlaneLineByHand, c_width);
  RegisterLines(
      row + "/OpenCV",
      [] {
        auto const pixels = PlanePixels();
        cv::Mat image(c_width, c_width, CV_8UC1);
        std::ranges::copy(pixels, image.ptr());
        return image;
      },
      PlaneLineOfOpenCv, c_width);
  RegisterLines(
      row + "/ITK", [] { return ItkImage<2>(PlanePixels(), c_width); },
      [](auto const& image, std::size_t k) { return LineOfItk(image, c_planeEnds[k]); }, c_width);
  RegisterPrebuilt<2>(row, PlanePixels, PlaneLine, c_width, PlaneLineByHand);
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
  RegisterLines(row + "/integer loop", SpacePixels, SpaceLineByHand, c_side);
  RegisterLines(
      row + "/ITK", [] { return ItkImage<3>(SpacePixels(), c_side); },
      [](auto const& image, std::size_t k) { return LineOfItk(image, c_spaceEnds[k]); }, c_side);
  RegisterPrebuilt<3>(row, SpacePixels, SpaceLine, c_side, SpaceLineByHand);
}

void RegisterWindows() {
  auto const add = [](std::string const& name, auto makePixels, auto walk) {
    Register(name, WindowOf<decltype(makePixels), decltype(walk)>, makePixels, walk);
  };
  auto const itkImage = [] { return ItkImage<3>(WindowPixels(), c_edge); };
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
