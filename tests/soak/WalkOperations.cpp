// Walks, of own walkers and of copies of shared ones.
#include "soak/Operations.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/DirectionalVisitor.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/ParallelLineVisitor.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/StraightLineVisitor.h>
#include <SeluUtils/UnitLineVisitor.h>
#include <SeluUtils/Voxels.h>
#include <SeluUtils/WindowVisitor.h>

#include <array>
#include <cstddef>
#include <utility>

namespace soak {

namespace {

using namespace ORVA;

constexpr std::array c_inSpace{NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2,
                               NEIGHBORHOOD_26};
constexpr std::array c_inPlane{NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8};

int64 Any(CRandomSource& source, std::array<int64, 4> const& neighborhoods) {
  return neighborhoods[static_cast<std::size_t>(Between(source, 0, 3))];
}

std::array<int64, 4> Codes(auto const& constants) {
  return {int64{constants[0]}, int64{constants[1]}, int64{constants[2]}, int64{constants[3]}};
}

template <class W>
void AddWalk(W&& walker, CDigest& digest) {
  digest.Add(static_cast<uint64>(walker.Steps()));
  while (walker.MorePoints()) digest.Add(walker.NextPoint());
}

CTriple<double> RealWay(CRandomSource& source) {
  Point const way = Way(source, 100);
  return {static_cast<double>(way.x) / 7, static_cast<double>(way.y) / 7,
          static_cast<double>(way.z) / 7};
}

Point const c_image(24, 20, 16);

void Line(StShared const&, CRandomSource& source, CDigest& digest) {
  Point const from = Within(source, 40), to = Within(source, 40);
  CBresenhamVisitor line(from, to, 3, Any(source, Codes(c_inSpace)), source() % 2 == 0);
  CBresenhamVisitor const again = line;
  AddWalk(line, digest);
  AddWalk(CBresenhamVisitor(again), digest);
}

void Polygon(StShared const& shared, CRandomSource& source, CDigest& digest) {
  std::vector<Point> corners;
  for (int64 n = Between(source, 1, 8); n > 0; --n) {
    Point const p = Within(source, 12);
    corners.emplace_back(p.x, p.y, 0);
  }
  AddWalk(CPolygonVisitor(corners, 2, Any(source, Codes(c_inPlane)), source() % 2 == 0), digest);
  AddWalk(CPolygonVisitor(shared.polygon), digest);
}

void RealPolygon(StShared const&, CRandomSource& source, CDigest& digest) {
  CRealPolygonVisitor::Outline outline;
  for (int64 n = Between(source, 1, 8); n > 0; --n) {
    Point const p = Within(source, 90);
    outline.emplace_back(static_cast<double>(p.x) / 8, static_cast<double>(p.y) / 8, 0.0);
  }
  AddWalk(CRealPolygonVisitor(outline, EnBoundary::HalfOpen), digest);
}

void Solid(StShared const& shared, CRandomSource& source, CDigest& digest) {
  std::array<Point, 4> const corners{Within(source, 8), Within(source, 8), Within(source, 8),
                                     Within(source, 8)};
  std::array<CSolidVisitor::Triangle, 4> const faces{{{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}}};
  AddWalk(CSolidVisitor(corners, faces, Any(source, Codes(c_inSpace)), true), digest);
  CSolidVisitor copy = shared.solid;
  copy.SetImageSize(c_image);
  AddWalk(copy, digest);
  AddWalk(CEllipsoidVisitor(shared.ellipsoid), digest);
}

void Area(StShared const&, CRandomSource& source, CDigest& digest) {
  Point const a = Within(source, 12), d = Way(source, 9);
  std::vector<Point> corners{{a.x, a.y, 0}, {a.x + d.x, a.y + d.y, 0}, {a.x - d.y, a.y + d.x, 0}};
  AddWalk(CBresenhamAreaVisitor(corners, 2, Any(source, Codes(c_inPlane)), source() % 2 == 0),
          digest);
}

void Planes(StShared const&, CRandomSource& source, CDigest& digest) {
  CTriple<double> const normal = RealWay(source);
  auto const distance = static_cast<double>(Between(source, -50, 200));
  CPlaneSection section(normal, distance);
  section.SetImageSize(c_image);
  AddWalk(section, digest);
  CCutSlice slice(normal, distance, NEIGHBORHOOD_26);
  slice.SetImageSize(c_image);
  AddWalk(slice, digest);
}

void Sweeps(StShared const&, CRandomSource& source, CDigest& digest) {
  CStraightLineVisitor straight(RealWay(source));
  straight.SetImageSize(c_image);
  AddWalk(straight, digest);
  CParallelLineVisitor parallel(RealWay(source));
  parallel.SetImageSize(c_image);
  AddWalk(parallel, digest);
  Point const way = Way(source, 1);
  AddWalk(CUnitLineVisitor({0, 0, 0}, {7, 6, 5}, way), digest);
  CDirectionalVisitor lines({0, 0, 0}, {7, 6, 5}, way);
  lines.SetImageSize(c_image);
  AddWalk(lines, digest);
}

void Voxels(StShared const& shared, CRandomSource& source, CDigest& digest) {
  Point const low = Within(source, 10), high = low + Point(8, 8, 8);
  uint64 sum = 0;
  CWindowVisitor window(low, high);
  ForEachVoxel(shared.gray, window,
               [&](auto value) { sum = sum * 3 + static_cast<uint64>(value); });
  CSolidVisitor solid = shared.solid;
  ForEachVoxel<std::uint32_t>(shared.labels, solid, [&](auto value) { sum = sum * 5 + value; });
  digest.Add(sum);
}

} // namespace

std::vector<StOperation> WalkOperations() {
  return {{"lines", Line},    {"polygons", Polygon}, {"real polygons", RealPolygon},
          {"solids", Solid},  {"areas", Area},       {"planes", Planes},
          {"sweeps", Sweeps}, {"voxels", Voxels}};
}

} // namespace soak
