// Lines and walkers beside the loops that one would write by hand.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/Walker.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <new>
#include <string>
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

void PlaneLineOurs(benchmark::State& state, bool prebuilt) {
  auto const pixels = Pixels(c_width * c_width);
  std::vector<CBresenhamVisitor> lines;
  for (Point const& end : c_planeEnds) lines.emplace_back(Point(), end, 2, NEIGHBORHOOD_8, true);
  std::size_t k = 0;
  for (auto _ : state) {
    CBresenhamVisitor built;
    CBresenhamVisitor& line = lines[k];
    if (!prebuilt) built = CBresenhamVisitor(Point(), c_planeEnds[k], 2, NEIGHBORHOOD_8, true);
    CBresenhamVisitor& walked = prebuilt ? line : built;
    walked.Reset();
    std::uint64_t sum = 0;
    while (walked.MorePoints()) {
      Point const p = walked.NextPoint();
      sum += pixels[static_cast<std::size_t>(p.x + c_width * p.y)];
    }
    benchmark::DoNotOptimize(sum);
    k = (k + 1) % c_planeEnds.size();
  }
  CountPoints(state, c_width);
}

// The integer loop, with the coordinates that a walker yields.
void PlaneLineByHand(benchmark::State& state) {
  auto const pixels = Pixels(c_width * c_width);
  std::size_t k = 0;
  for (auto _ : state) {
    Point const end = c_planeEnds[k];
    bool const xMajor = end.x >= end.y;
    int64 const a = xMajor ? end.x : end.y, b = xMajor ? end.y : end.x;
    int64 x = 0, y = 0, e = 2 * b - a;
    std::uint64_t sum = 0;
    for (int64 i = 0; i <= a; ++i) {
      benchmark::DoNotOptimize(x);
      benchmark::DoNotOptimize(y);
      sum += pixels[static_cast<std::size_t>(x + c_width * y)];
      if (e >= 0) {
        ++(xMajor ? y : x);
        e -= 2 * a;
      }
      ++(xMajor ? x : y);
      e += 2 * b;
    }
    benchmark::DoNotOptimize(sum);
    k = (k + 1) % c_planeEnds.size();
  }
  CountPoints(state, c_width);
}

void SpaceLineOurs(benchmark::State& state, bool prebuilt) {
  auto const pixels = Pixels(c_side * c_side * c_side);
  std::vector<CBresenhamVisitor> lines;
  for (Point const& end : c_spaceEnds) lines.emplace_back(Point(), end, 3, NEIGHBORHOOD_26, true);
  std::size_t k = 0;
  for (auto _ : state) {
    CBresenhamVisitor built;
    CBresenhamVisitor& line = lines[k];
    if (!prebuilt) built = CBresenhamVisitor(Point(), c_spaceEnds[k], 3, NEIGHBORHOOD_26, true);
    CBresenhamVisitor& walked = prebuilt ? line : built;
    walked.Reset();
    std::uint64_t sum = 0;
    while (walked.MorePoints()) {
      Point const p = walked.NextPoint();
      sum += pixels[static_cast<std::size_t>(p.x + c_side * (p.y + c_side * p.z))];
    }
    benchmark::DoNotOptimize(sum);
    k = (k + 1) % c_spaceEnds.size();
  }
  CountPoints(state, c_side);
}

void SpaceLineByHand(benchmark::State& state) {
  auto const pixels = Pixels(c_side * c_side * c_side);
  std::size_t k = 0;
  for (auto _ : state) {
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
    benchmark::DoNotOptimize(sum);
    k = (k + 1) % c_spaceEnds.size();
  }
  CountPoints(state, c_side);
}

constexpr int64 c_edge = 256;

// What a caller does with coordinates and voxel: it cannot be folded into a closed form.
std::uint64_t Mix(std::uint64_t sum, Point const& p, std::uint8_t voxel) {
  return sum + voxel * static_cast<std::uint64_t>(p.x ^ (p.y + p.z));
}

template <class Walk>
void WindowOf(benchmark::State& state, Walk walk) {
  auto const pixels = Pixels(c_edge * c_edge * c_edge);
  for (auto _ : state) benchmark::DoNotOptimize(walk(pixels));
  CountPoints(state, pixels.size());
}

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
  benchmark::RegisterBenchmark(name.c_str(),
                               [=](benchmark::State& state) { function(state, arguments...); });
}

bool const g_registered = [] {
  Register("1000 px line summing pixels, walk alone/SeluUtils", PlaneLineOurs, true);
  Register("1000 px line summing pixels, walk alone/integer loop", PlaneLineByHand);
  Register("1000 px line summing pixels, built each time/SeluUtils", PlaneLineOurs, false);
  Register("1000 px line summing pixels, built each time/integer loop", PlaneLineByHand);
  Register("500 voxel line, walk alone/SeluUtils", SpaceLineOurs, true);
  Register("500 voxel line, walk alone/integer loop", SpaceLineByHand);
  Register("500 voxel line, built each time/SeluUtils", SpaceLineOurs, false);
  Register("500 voxel line, built each time/integer loop", SpaceLineByHand);
  auto const window = [](std::string const& name, auto walk) {
    Register(name, [walk](benchmark::State& state) { WindowOf(state, walk); });
  };
  window("256^3 window with coordinates/SeluUtils", WalkWindow);
  window("256^3 window with coordinates/three loops", ThreeLoops);
  window("256^3 window with coordinates, range-for/SeluUtils", WalkWindowRange);
  window("256^3 window with coordinates, range-for/three loops", ThreeLoops);
  for (int64 points = 1000; points <= 100'000'000; points *= 10) {
    std::string const n = std::to_string(points);
    Register("2D line of " + n + "/SeluUtils", LineOfLength, int64{2}, points, NEIGHBORHOOD_8);
    // About 50 bytes a voxel: the longest of these would need more than small machines have.
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
