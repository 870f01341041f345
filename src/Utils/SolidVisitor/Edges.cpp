#include "Utils/SolidVisitor/Mesh.h"

#include <pxlib2core/String.h>

#include <algorithm>
#include <numeric>
#include <tuple>

namespace ORVA::Impl {

namespace {

// An edge that faces do not pass evenly: how often more from its lower corner to its upper one than
// back, or by the even-odd rule 1.
struct StOpenEdge {
  StMeshEdge edge;
  int64 count;
};

// Numbers the places of the corners in raster order; `corners` names a corner at each place.
struct StPlaces {
  std::vector<std::uint32_t> place, corners;
};

StPlaces NumberPlaces(StMesh const& mesh) {
  Rows sorted;
  sorted.reserve(mesh.corners.size());
  for (std::uint32_t k = 0; k < mesh.corners.size(); ++k) {
    CTriple<int64> const& p = mesh.corners[k];
    sorted.push_back({static_cast<std::uint32_t>(p.z), static_cast<std::uint32_t>(p.y),
                      static_cast<std::uint32_t>(p.x), k});
  }
  SortRows(sorted);
  StPlaces places;
  places.place.resize(mesh.corners.size());
  for (StRow const& row : sorted) {
    if (places.corners.empty() || mesh.corners[places.corners.back()] != mesh.corners[row.high])
      places.corners.push_back(row.high);
    places.place[row.high] = static_cast<std::uint32_t>(places.corners.size() - 1);
  }
  return places;
}

// All edges of the faces as rows: lower place, upper place, whether it is passed upward.
Rows SortedEdges(StMesh const& mesh, StPlaces const& places) {
  Rows edges;
  edges.reserve(mesh.faceCorners.size());
  for (std::size_t face = 0; face < mesh.Faces(); ++face)
    ForEachEdge(mesh, face, [&](std::uint32_t from, std::uint32_t to) {
      std::uint32_t const a = places.place[from], b = places.place[to];
      if (a != b) edges.push_back({std::min(a, b), std::max(a, b), a < b ? 1U : 0U, 0});
    });
  SortRows(edges);
  return edges;
}

[[noreturn]] void RaiseOpen(StMesh const& mesh, StMeshEdge const& edge, EnWinding winding) {
  CTriple<int64> const a = mesh.Given(mesh.corners[edge.from]),
                       b = mesh.Given(mesh.corners[edge.to]);
  CString text(winding == EnWinding::EvenOdd
                   ? "the surface is not closed: its edge from (%1, %2, %3) to (%4, %5, %6) has an "
                     "odd number of faces"
                   : "the surface is not closed or not oriented: its faces pass the edge from (%1, "
                     "%2, %3) to (%4, %5, %6) more often in one direction than in the other");
  RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                text.Arg(a.x).Arg(a.y).Arg(a.z).Arg(b.x).Arg(b.y).Arg(b.z));
}

// The end of an edge on the line through it: which line, where on it, and what the edge adds there.
struct StLineEnd {
  CTriple<int64> direction, moment; // of the line
  int64 place, count;
  std::size_t edge;

  [[nodiscard]] auto Key() const {
    return std::tie(direction.x, direction.y, direction.z, moment.x, moment.y, moment.z, place);
  }
};

CTriple<int64> Direction(CTriple<int64> const& d) {
  int64 const divisor = std::gcd(std::gcd(d.x, d.y), d.z);
  return {d.x / divisor, d.y / divisor, d.z / divisor};
}

CTriple<int64> Moment(CTriple<int64> const& p, CTriple<int64> const& d) {
  return {p.y * d.z - p.z * d.y, p.z * d.x - p.x * d.z, p.x * d.y - p.y * d.x};
}

int64 Along(CTriple<int64> const& direction, CTriple<int64> const& p) {
  if (direction.z != 0) return p.z;
  return direction.y != 0 ? p.y : p.x;
}

std::vector<StLineEnd> LineEnds(StMesh const& mesh, std::vector<StOpenEdge> const& edges) {
  std::vector<StLineEnd> ends;
  for (std::size_t k = 0; k < edges.size(); ++k) {
    CTriple<int64> const &a = mesh.corners[edges[k].edge.from], &b = mesh.corners[edges[k].edge.to];
    CTriple<int64> const direction = Direction(b - a); // upward in raster order
    CTriple<int64> const moment = Moment(a, direction);
    ends.push_back({direction, moment, Along(direction, a), -edges[k].count, k});
    ends.push_back({direction, moment, Along(direction, b), edges[k].count, k});
  }
  std::ranges::sort(ends, [](StLineEnd const& a, StLineEnd const& b) {
    return std::tuple_cat(a.Key(), std::tie(a.edge)) < std::tuple_cat(b.Key(), std::tie(b.edge));
  });
  return ends;
}

// Faces that meet an edge at a corner of their own share parts of it. On a line such parts cancel
// if and only if their ends do.
void CheckLines(StMesh const& mesh, std::vector<StOpenEdge> const& edges, EnWinding winding) {
  auto const ends = LineEnds(mesh, edges);
  for (std::size_t begin = 0, end = 0; begin < ends.size(); begin = end) {
    int64 count = 0;
    for (; end < ends.size() && ends[end].Key() == ends[begin].Key(); ++end)
      count += ends[end].count;
    if (winding == EnWinding::EvenOdd ? count % 2 != 0 : count != 0)
      RaiseOpen(mesh, edges[ends[begin].edge].edge, winding);
  }
}

} // namespace

std::vector<StMeshEdge> ClosedEdges(StMesh const& mesh, EnWinding winding) {
  StPlaces const places = NumberPlaces(mesh);
  Rows const sorted = SortedEdges(mesh, places);
  std::vector<StMeshEdge> edges;
  std::vector<StOpenEdge> open;
  for (std::size_t begin = 0, end = 0; begin < sorted.size(); begin = end) {
    int64 up = 0;
    StRow const& first = sorted[begin];
    for (; end < sorted.size() && sorted[end].z == first.z && sorted[end].y == first.y; ++end)
      up += sorted[end].low;
    auto const passes = static_cast<int64>(end - begin);
    edges.push_back({places.corners[first.z], places.corners[first.y]});
    int64 const count = winding == EnWinding::EvenOdd ? passes % 2 : 2 * up - passes;
    if (count != 0) open.push_back({edges.back(), count});
  }
  CheckLines(mesh, open, winding);
  return edges;
}

} // namespace ORVA::Impl
