// Filling polygons: a convex one of 10^5 pixels, built and walked, beside a hand-written scan
// conversion; and building one of 10^6 border points. The hand-written fill knows that its polygon
// is convex; it yields the same coordinates in the same order.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PolygonVisitor.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace {

using ORVA::CTriple;
using ORVA::int64;
using Corners = std::vector<CTriple<int64>>;

Corners Disc(int64 radius, int count) {
  Corners corners;
  for (int k = 0; k < count; ++k) {
    double const angle = 2 * std::numbers::pi * k / count;
    corners.emplace_back(std::lround(static_cast<double>(radius) * std::cos(angle)),
                         std::lround(static_cast<double>(radius) * std::sin(angle)), 0);
  }
  return corners;
}

template <class Walker>
int64 SumPoints(Walker& walker) {
  int64 sum = 0;
  while (walker.MorePoints()) {
    CTriple<int64> const p = walker.NextPoint();
    sum += p.x ^ p.y;
  }
  return sum;
}

int64 FloorDivide(int64 a, int64 b) { return a / b - (a % b < 0 ? 1 : 0); }

// Least and greatest y of each column from the exact edges, then two loops.
int64 ScanConvert(Corners const& corners) {
  auto const [left, right] = std::ranges::minmax(corners, {}, &CTriple<int64>::x);
  int64 const first = left.x;
  auto const columns = static_cast<std::size_t>(right.x - first + 1);
  std::vector<int64> low(columns, INT64_MAX), high(columns, INT64_MIN);
  for (std::size_t i = 0; i < corners.size(); ++i) {
    CTriple<int64> a = corners[i], b = corners[(i + 1) % corners.size()];
    if (a.x > b.x) std::swap(a, b);
    for (int64 x = a.x; x <= b.x; ++x) {
      auto const column = static_cast<std::size_t>(x - first);
      int64 const dx = std::max<int64>(b.x - a.x, 1), rise = (b.y - a.y) * (x - a.x);
      int64 const down = a.y + FloorDivide(rise, dx), up = a.y - FloorDivide(-rise, dx);
      low[column] = std::min(low[column], a.x == b.x ? std::min(a.y, b.y) : up);
      high[column] = std::max(high[column], a.x == b.x ? std::max(a.y, b.y) : down);
    }
  }
  int64 sum = 0;
  for (std::size_t column = 0; column < columns; ++column)
    for (int64 y = low[column]; y <= high[column]; ++y)
      sum += (first + static_cast<int64>(column)) ^ y;
  return sum;
}

void Add(std::string const& name, std::int64_t items, std::function<int64()> const& run) {
  benchmark::RegisterBenchmark(name.c_str(), [run, items](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(run());
    state.SetItemsProcessed(state.iterations() * items);
  })->Unit(benchmark::kMicrosecond);
}

void AddFills(std::string const& size, int64 radius, int count) {
  Corners const disc = Disc(radius, count);
  auto const area = [disc] {
    return ORVA::CBresenhamAreaVisitor(Corners(disc), 2, ORVA::NEIGHBORHOOD_8, true);
  };
  auto const polygon = [disc] {
    return ORVA::CPolygonVisitor(disc, 2, ORVA::NEIGHBORHOOD_8, true);
  };
  auto const points = static_cast<std::int64_t>(polygon().Steps());
  auto const scan = [disc] { return ScanConvert(disc); };
  Add("convex area, " + size + "/SeluUtils", points, [area] {
    auto walker = area();
    return SumPoints(walker);
  });
  Add("convex area, " + size + "/scan conversion by hand", points, scan);
  Add("polygon, " + size + "/SeluUtils", points, [polygon] {
    auto walker = polygon();
    return SumPoints(walker);
  });
  Add("polygon, " + size + "/scan conversion by hand", points, scan);
}

[[maybe_unused]] bool const c_isRegistered = [] {
  AddFills("10^5 px", 178, 24);
  AddFills("10^7 px", 1784, 24);
  Corners const large = Disc(177'000, 1000);
  Add("building 10^6 border points, area/SeluUtils", 1'000'000, [large] {
    ORVA::CBresenhamAreaVisitor const area(Corners(large), 2, ORVA::NEIGHBORHOOD_8, true);
    return static_cast<int64>(area.Steps());
  });
  Add("building 10^6 border points, polygon/SeluUtils", 1'000'000, [large] {
    ORVA::CPolygonVisitor const polygon(large, 2, ORVA::NEIGHBORHOOD_8, true);
    return static_cast<int64>(polygon.Steps());
  });
  return true;
}();

} // namespace
