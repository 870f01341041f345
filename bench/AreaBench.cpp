// Filling polygons: a convex one of 10^5 and of 10^7 pixels, built and walked and walked alone,
// beside a hand-written scan conversion and OpenCV, which fills a mask that is then read for its
// coordinates by two loops, which compilers do for many points at once, or listed by findNonZero;
// building one of 10^6 border points; and what a point costs at other sizes. The hand-written fill
// knows that its polygon is convex; it yields the same coordinates in the same order.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PolygonVisitor.h>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <utility>
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

// Least and greatest y of each column from the exact edges.
struct StColumns {
  int64 first;
  std::vector<int64> low, high;
};

StColumns ScanConvert(Corners const& corners) {
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
  return {first, low, high};
}

int64 SumColumns(StColumns const& columns) {
  int64 sum = 0;
  for (std::size_t column = 0; column < columns.low.size(); ++column)
    for (int64 y = columns.low[column]; y <= columns.high[column]; ++y)
      sum += (columns.first + static_cast<int64>(column)) ^ y;
  return sum;
}

enum class EnFill { Convex, Any };

// A mask over the corners' box, which begins at (0, 0), as every caller of such a fill makes one.
cv::Mat FilledMask(Corners const& corners, EnFill fill) {
  std::vector<cv::Point> points;
  for (CTriple<int64> const& p : corners)
    points.emplace_back(static_cast<int>(p.x), static_cast<int>(p.y));
  cv::Mat mask = cv::Mat::zeros(std::ranges::max(points, {}, &cv::Point::y).y + 1,
                                std::ranges::max(points, {}, &cv::Point::x).x + 1, CV_8UC1);
  if (fill == EnFill::Convex) {
    cv::fillConvexPoly(mask, points, cv::Scalar(1));
  } else {
    cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(1));
  }
  return mask;
}

int64 SumMask(cv::Mat const& mask) {
  int64 sum = 0;
  for (int y = 0; y < mask.rows; ++y) {
    auto const* const row = mask.ptr<unsigned char>(y);
    for (int x = 0; x < mask.cols; ++x)
      if (row[x] != 0) sum += x ^ y;
  }
  return sum;
}

void Add(std::string const& name, std::int64_t items, std::function<int64()> const& run) {
  benchmark::RegisterBenchmark(name.c_str(), [run, items](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(run());
    state.SetItemsProcessed(state.iterations() * items);
  })->Unit(benchmark::kMicrosecond);
}

int64 SumList(cv::Mat const& mask) {
  std::vector<cv::Point> points;
  cv::findNonZero(mask, points);
  int64 sum = 0;
  for (cv::Point const& p : points) sum += p.x ^ p.y;
  return sum;
}

struct StPeer {
  char const* name;
  EnFill fill;
  int64 (*sum)(cv::Mat const&);
};
constexpr StPeer c_peers[] = {
    {"OpenCV fillConvexPoly, mask read", EnFill::Convex, SumMask},
    {"OpenCV fillPoly, mask read", EnFill::Any, SumMask},
    {"OpenCV fillConvexPoly, findNonZero", EnFill::Convex, SumList},
};

// Corners from (0, 0) on.
Corners Shifted(Corners corners, int64 radius) {
  for (CTriple<int64>& p : corners) p += CTriple<int64>(radius, radius, 0);
  return corners;
}

void AddPeers(std::string const& row, std::int64_t points, Corners const& disc) {
  Add(row + ", built and walked/scan conversion by hand", points,
      [disc] { return SumColumns(ScanConvert(disc)); });
  Add(row + ", walked/scan conversion by hand", points,
      [columns = ScanConvert(disc)] { return SumColumns(columns); });
  for (StPeer const& peer : c_peers) {
    Add(row + ", built and walked/" + peer.name, points,
        [disc, peer] { return peer.sum(FilledMask(disc, peer.fill)); });
    Add(row + ", walked/" + peer.name, points,
        [mask = FilledMask(disc, peer.fill), peer] { return peer.sum(mask); });
  }
}

template <class Make>
void AddWalker(std::string const& row, Corners const& disc, Make make) {
  auto const points = static_cast<std::int64_t>(make().Steps());
  Add(row + ", built and walked/SeluUtils", points, [make] {
    auto walker = make();
    return SumPoints(walker);
  });
  Add(row + ", walked/SeluUtils", points, [walker = make()]() mutable {
    walker.Reset();
    return SumPoints(walker);
  });
  AddPeers(row, points, disc);
}

void AddFills(std::string const& size, int64 radius) {
  Corners const disc = Shifted(Disc(radius, 24), radius);
  AddWalker("polygon, " + size, disc,
            [disc] { return ORVA::CPolygonVisitor(disc, 2, ORVA::NEIGHBORHOOD_8, true); });
  AddWalker("convex area, " + size, disc, [disc] {
    return ORVA::CBresenhamAreaVisitor(Corners(disc), 2, ORVA::NEIGHBORHOOD_8, true);
  });
}

// Built and walked, in a coordinate plane and in an oblique one, where a unit of the disc's square
// has six columns.
void AddSize(int exponent) {
  std::string const points = "10^" + std::to_string(exponent) + " points/SeluUtils";
  double const area = std::pow(10, exponent) / std::numbers::pi;
  auto const add = [](std::string const& name, Corners const& corners, int64 dimension,
                      int64 neighborhood) {
    auto const build = [=] {
      return ORVA::CPolygonVisitor(corners, dimension, neighborhood, true);
    };
    Add(name, static_cast<std::int64_t>(build().Steps()), [build] {
      auto walker = build();
      return SumPoints(walker);
    });
  };
  add("polygon of " + points, Disc(std::lround(std::sqrt(area)), 24), 2, ORVA::NEIGHBORHOOD_8);
  Corners oblique = Disc(std::lround(std::sqrt(area / 6)), 24);
  for (CTriple<int64>& p : oblique) p = {2 * p.x, 3 * p.y, p.x + p.y};
  add("oblique polygon of " + points, oblique, 3, ORVA::NEIGHBORHOOD_26);
}

[[maybe_unused]] bool const c_isRegistered = [] {
  AddFills("10^5 px", 178);
  AddFills("10^7 px", 1784);
  Corners const large = Disc(177'000, 1000);
  Add("building 10^6 border points, area/SeluUtils", 1'000'000, [large] {
    ORVA::CBresenhamAreaVisitor const area(Corners(large), 2, ORVA::NEIGHBORHOOD_8, true);
    return static_cast<int64>(area.Steps());
  });
  Add("building 10^6 border points, polygon/SeluUtils", 1'000'000, [large] {
    ORVA::CPolygonVisitor const polygon(large, 2, ORVA::NEIGHBORHOOD_8, true);
    return static_cast<int64>(polygon.Steps());
  });
  for (int exponent = 3; exponent <= 8; ++exponent) AddSize(exponent);
  return true;
}();

} // namespace
