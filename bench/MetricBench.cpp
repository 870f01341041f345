// Distances beside the loop that a caller would write, and neighbor tables beside one that tests
// every neighbor of every cell.
#include <SeluUtils/Metric.h>

#include <SeluBase/Neighborhood.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace ORVA;
using Point = std::vector<double>;
using Table = std::vector<std::vector<int64>>;

std::vector<Point> Points() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> coordinate(0, 10);
  std::vector<Point> points(1000);
  for (Point& point : points) point = {coordinate(random), coordinate(random), coordinate(random)};
  return points;
}

// Each point's distance to the one before it.
template <class Distance>
void MeasureDistances(benchmark::State& state, Distance distance) {
  auto const points = Points();
  Point const window{10, 10, 10};
  for (auto _ : state) {
    double sum = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
      sum += distance(points[i - 1], points[i], window);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64>(points.size() - 1));
}

double Ours(Point const& a, Point const& b, Point const& window,
            EEdgeTreatment::EnEdgeTreatmentId edge) {
  return CMetric::SquaredEuclideanDistance(a, b, window, edge);
}

double PlainLoop(Point const& a, Point const& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return sum;
}

double PeriodicLoop(Point const& a, Point const& b, Point const& window) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    double const direct = std::abs(a[i] - b[i]);
    double const nearest = std::min(direct, window[i] - direct);
    sum += nearest * nearest;
  }
  return sum;
}

Table TestedTable(int64 n, bool wrap) {
  Table table;
  for (int64 z = 0; z < n; ++z)
    for (int64 y = 0; y < n; ++y)
      for (int64 x = 0; x < n; ++x) {
        std::vector<int64> entry(27);
        for (std::size_t k = 0; k < 26; ++k) {
          int64 u = x + CNeighborhood3dDiffN26::dx[k];
          int64 v = y + CNeighborhood3dDiffN26::dy[k];
          int64 w = z + CNeighborhood3dDiffN26::dz[k];
          if (wrap) u = (u + n) % n, v = (v + n) % n, w = (w + n) % n;
          bool const inside = u >= 0 && u < n && v >= 0 && v < n && w >= 0 && w < n;
          entry[k] = inside ? u + n * (v + n * w) : -1;
        }
        entry[26] = static_cast<int64>(table.size());
        table.push_back(std::move(entry));
      }
  return table;
}

template <class Make>
void MeasureTable(benchmark::State& state, int64 n, Make make) {
  for (auto _ : state) {
    Table table = make();
    benchmark::DoNotOptimize(table.data());
  }
  state.SetItemsProcessed(state.iterations() * n * n * n);
}

void RegisterTables(int64 n, EEdgeTreatment::EnEdgeTreatmentId edge, std::string const& row) {
  benchmark::RegisterBenchmark((row + "/SeluUtils").c_str(), [=](benchmark::State& state) {
    MeasureTable(state, n, [=] {
      Table table;
      CMetric::CalculateNeighbourTable(&table, 3, n, edge);
      return table;
    });
  });
  benchmark::RegisterBenchmark((row + "/loop with tests").c_str(), [=](benchmark::State& state) {
    MeasureTable(state, n, [=] { return TestedTable(n, edge == EEdgeTreatment::Periodic); });
  });
}

[[maybe_unused]] bool const c_registered = [] {
  using Edge = EEdgeTreatment;
  auto const distances = [](char const* name, auto distance) {
    benchmark::RegisterBenchmark(
        name, [=](benchmark::State& state) { MeasureDistances(state, distance); });
  };
  distances("distance, 3D/SeluUtils", [](auto const& a, auto const& b, auto const& window) {
    return Ours(a, b, window, Edge::NoEdgeTreatment);
  });
  distances("distance, 3D/hand-written loop",
            [](auto const& a, auto const& b, auto const&) { return PlainLoop(a, b); });
  distances("distance, 3D periodic/SeluUtils",
            [](auto const& a, auto const& b, auto const& window) {
              return Ours(a, b, window, Edge::Periodic);
            });
  distances("distance, 3D periodic/hand-written loop", PeriodicLoop);
  RegisterTables(64, Edge::NoEdgeTreatment, "neighbor table, 64^3");
  RegisterTables(64, Edge::Periodic, "neighbor table, 64^3 periodic");
  return true;
}();

} // namespace
