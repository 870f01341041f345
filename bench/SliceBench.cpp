// Plane sections of a volume beside nested loops over the dominant axis.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/PlaneSection.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

using namespace ORVA;
using Point = CTriple<int64>;
using Normal = CTriple<double>;

namespace {

constexpr int64 c_edge = 256;

std::vector<std::uint8_t> Voxels() {
  std::vector<std::uint8_t> voxels(c_edge * c_edge * c_edge);
  for (std::size_t k = 0; k < voxels.size(); ++k)
    voxels[k] = static_cast<std::uint8_t>(k * 37 + k / 251);
  return voxels;
}

std::size_t Index(int64 x, int64 y, int64 z) {
  return static_cast<std::size_t>((z * c_edge + y) * c_edge + x);
}

// Planes through about the center: along the axes, little inclined, oblique, of each dominant axis.
constexpr std::array<Normal, 8> c_normals = {{{0, 0, 1},
                                              {0.1, 0.2, 1},
                                              {0.6, -0.7, 1},
                                              {1, 1, 1},
                                              {0.3, 1, -0.2},
                                              {0.9, -1, 0.4},
                                              {1, 0.05, 0.3},
                                              {-1, 0.8, 0.9}}};

double Distance(Normal const& n) { return 128.3 * n.x + 126.9 * n.y + 127.6 * n.z; }

// What the walk is for: the voxel and where it lies.
struct StSums {
  uint64 voxels = 0;
  int64 coordinates = 0;
  void Add(std::vector<std::uint8_t> const& volume, int64 x, int64 y, int64 z) {
    voxels += volume[Index(x, y, z)];
    coordinates += x + 2 * y + 3 * z;
  }
};

StSums Walk(std::vector<std::uint8_t> const& volume, CPlaneSection section) {
  section.SetImageSize(Point(c_edge, c_edge, c_edge));
  StSums sums;
  while (section.MorePoints()) {
    Point const p = section.NextPoint();
    sums.Add(volume, p.x, p.y, p.z);
  }
  return sums;
}

// The loops that one would write by hand: for each column the rounded height, tested for the box.
template <class Visit>
void Columns(double a, double b, double c, double distance, Visit visit) {
  for (int64 v = 0; v < c_edge; ++v)
    for (int64 u = 0; u < c_edge; ++u) {
      double const height =
          (distance - a * static_cast<double>(u) - b * static_cast<double>(v)) / c;
      auto const w = static_cast<int64>(std::floor(height + 0.5));
      if (w >= 0 && w < c_edge) visit(u, v, w);
    }
}

template <class Visit>
void VisitPlane(Normal const& n, double distance, Visit visit) {
  double const x = std::abs(n.x), y = std::abs(n.y), z = std::abs(n.z);
  if (z >= x && z >= y)
    Columns(n.x, n.y, n.z, distance, [&](int64 u, int64 v, int64 w) { visit(u, v, w); });
  else if (y >= x)
    Columns(n.x, n.z, n.y, distance, [&](int64 u, int64 v, int64 w) { visit(u, w, v); });
  else
    Columns(n.y, n.z, n.x, distance, [&](int64 u, int64 v, int64 w) { visit(w, u, v); });
}

StSums NestedLoops(std::vector<std::uint8_t> const& volume, Normal const& n, double distance) {
  StSums sums;
  VisitPlane(n, distance, [&](int64 x, int64 y, int64 z) { sums.Add(volume, x, y, z); });
  return sums;
}

int64 PointsOfAll() {
  int64 points = 0;
  for (auto const& n : c_normals) {
    CPlaneSection section(n, Distance(n));
    section.SetImageSize(Point(c_edge, c_edge, c_edge));
    points += static_cast<int64>(section.Steps());
  }
  return points;
}

template <class Run>
void AllPlanes(benchmark::State& state, Run run) {
  auto const volume = Voxels();
  for (auto _ : state)
    for (auto const& n : c_normals) {
      StSums const sums = run(volume, n);
      benchmark::DoNotOptimize(sums);
    }
  state.SetItemsProcessed(static_cast<int64>(state.iterations()) * PointsOfAll());
}

void SectionOurs(benchmark::State& state) {
  AllPlanes(state, [](auto const& volume, Normal const& n) {
    return Walk(volume, CPlaneSection(n, Distance(n)));
  });
}

void SectionLoops(benchmark::State& state) {
  // Both must have met the same voxels, else the times say nothing.
  auto const volume = Voxels();
  for (auto const& n : c_normals) {
    auto const ours = Walk(volume, CPlaneSection(n, Distance(n)));
    auto const loops = NestedLoops(volume, n, Distance(n));
    if (ours.voxels != loops.voxels || ours.coordinates != loops.coordinates) {
      state.SkipWithError("the loops met other voxels");
      return;
    }
  }
  AllPlanes(state, [](auto const& voxels, Normal const& n) {
    return NestedLoops(voxels, n, Distance(n));
  });
}

// The lattice of two lines, which is built anew for each plane and can have other voxels.
void LatticeOurs(benchmark::State& state) {
  auto const volume = Voxels();
  int64 points = 0;
  for (auto _ : state)
    for (auto const& n : c_normals) {
      CCutSlice slice(n, Distance(n), NEIGHBORHOOD_26);
      slice.SetImageSize(Point(c_edge, c_edge, c_edge));
      StSums sums;
      while (slice.MorePoints()) {
        Point const p = slice.NextPoint();
        sums.Add(volume, p.x, p.y, p.z);
      }
      benchmark::DoNotOptimize(sums);
      points += static_cast<int64>(slice.Steps());
    }
  state.SetItemsProcessed(points);
}

// Coordinates alone, so that memory does not hide what a point costs.
void SectionOfSize(benchmark::State& state, int64 points) {
  auto const edge = static_cast<int64>(std::sqrt(static_cast<double>(points)));
  Normal const normal(0.37, 0.61, 1);
  int64 walked = 0;
  for (auto _ : state) {
    CPlaneSection section(normal, static_cast<double>(edge));
    section.SetImageSize(Point(edge, edge, 2 * edge));
    int64 sum = 0;
    while (section.MorePoints()) {
      Point const p = section.NextPoint();
      sum += p.x + 2 * p.y + 3 * p.z;
    }
    benchmark::DoNotOptimize(sum);
    walked += static_cast<int64>(section.Steps());
  }
  state.SetItemsProcessed(walked);
}

// All planes, coordinates alone: what the walk itself costs.
void CoordinatesOurs(benchmark::State& state) {
  for (auto _ : state)
    for (auto const& n : c_normals) {
      CPlaneSection section(n, Distance(n));
      section.SetImageSize(Point(c_edge, c_edge, c_edge));
      int64 sum = 0;
      while (section.MorePoints()) {
        Point const p = section.NextPoint();
        sum += p.x + 2 * p.y + 3 * p.z;
      }
      benchmark::DoNotOptimize(sum);
    }
  state.SetItemsProcessed(static_cast<int64>(state.iterations()) * PointsOfAll());
}

void CoordinatesLoops(benchmark::State& state) {
  for (auto _ : state)
    for (auto const& n : c_normals) {
      int64 sum = 0;
      VisitPlane(n, Distance(n), [&](int64 x, int64 y, int64 z) { sum += x + 2 * y + 3 * z; });
      benchmark::DoNotOptimize(sum);
    }
  state.SetItemsProcessed(static_cast<int64>(state.iterations()) * PointsOfAll());
}

[[maybe_unused]] bool const s_registered = [] {
  benchmark::RegisterBenchmark("plane sections of 256^3/SeluUtils", SectionOurs);
  benchmark::RegisterBenchmark("plane sections of 256^3/nested loops", SectionLoops);
  benchmark::RegisterBenchmark("plane sections of 256^3, coordinates/SeluUtils", CoordinatesOurs);
  benchmark::RegisterBenchmark("plane sections of 256^3, coordinates/nested loops",
                               CoordinatesLoops);
  benchmark::RegisterBenchmark("plane sections of 256^3, lattice of lines/SeluUtils", LatticeOurs);
  benchmark::RegisterBenchmark("plane sections of 256^3, lattice of lines/nested loops",
                               SectionLoops);
  for (int64 points = 1000; points <= 100'000'000; points *= 10) {
    std::string const name = "section of " + std::to_string(points) + " points/SeluUtils";
    benchmark::RegisterBenchmark(name.c_str(), SectionOfSize, points);
  }
  return true;
}();

} // namespace
