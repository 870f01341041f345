// Lattice points on those parts of a surface that the scan does not meet.
#include "Utils/SolidVisitor/Division.h"
#include "Utils/SolidVisitor/Mesh.h"

#include <utility>

namespace ORVA::Impl {

namespace {

using Axis = int64 CTriple<int64>::*;

StRow PointRow(int64 z, int64 y, int64 x) {
  return {static_cast<std::uint32_t>(z), static_cast<std::uint32_t>(y),
          static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(x)};
}

// Of an edge that rises along z.
void AddRisingEdge(CTriple<int64> const& a, CTriple<int64> const& b, int64 unit, Rows& surface) {
  constexpr Axis c_z = &CTriple<int64>::z;
  int64 const last = b.z / unit;
  for (int64 z = CeilVoxel(a.z, unit); z <= last; ++z) {
    auto const y = CrossLine(a, b, c_z, &CTriple<int64>::y, z * unit, unit);
    auto const x = CrossLine(a, b, c_z, &CTriple<int64>::x, z * unit, unit);
    if (y.rest == 0 && x.rest == 0) surface.push_back(PointRow(z, y.floor, x.floor));
  }
}

// Of an edge in a slice that rises along y.
void AddEdgeInSlice(CTriple<int64> const& a, CTriple<int64> const& b, int64 unit, Rows& surface) {
  int64 const last = b.y / unit;
  for (int64 y = CeilVoxel(a.y, unit); y <= last; ++y) {
    auto const x = CrossLine(a, b, &CTriple<int64>::y, &CTriple<int64>::x, y * unit, unit);
    if (x.rest == 0) surface.push_back(PointRow(a.z / unit, y, x.floor));
  }
}

void AddEdgeAlongX(CTriple<int64> const& a, CTriple<int64> const& b, int64 unit, Rows& surface) {
  StRow row = PointRow(a.z / unit, a.y / unit, CeilVoxel(a.x, unit));
  row.high = static_cast<std::uint32_t>(b.x / unit);
  if (row.low <= row.high) surface.push_back(row);
}

} // namespace

// From each edge's lower place to its upper one, in raster order.
void AddEdgePoints(StMesh const& mesh, std::span<StMeshEdge const> edges, Rows& surface) {
  int64 const unit = mesh.unit;
  for (StMeshEdge const& edge : edges) {
    CTriple<int64> const &a = mesh.corners[edge.from], &b = mesh.corners[edge.to];
    if (a.z != b.z) {
      AddRisingEdge(a, b, unit, surface);
    } else if (a.z % unit != 0) {
      continue;
    } else if (a.y != b.y) {
      AddEdgeInSlice(a, b, unit, surface);
    } else if (a.y % unit == 0) {
      AddEdgeAlongX(a, b, unit, surface);
    }
  }
}

void AddFlatFaces(StMesh const& mesh, std::span<StFacePlane const> planes, EnWinding winding,
                  Rows& surface) {
  Rows crossings;
  for (std::size_t face = 0; face < planes.size(); ++face) {
    CTriple<int64> const& normal = planes[face].normal;
    int64 const z = planes[face].anchor.z;
    if (normal.x != 0 || normal.y != 0 || normal.z == 0 || z % mesh.unit != 0) continue;
    crossings.clear();
    ForEachEdge(mesh, face, [&](std::uint32_t from, std::uint32_t to) {
      CTriple<int64> a = mesh.corners[from], b = mesh.corners[to];
      int const up = a.y < b.y ? 1 : -1;
      if (up < 0) std::swap(a, b);
      int64 const end = CeilVoxel(b.y, mesh.unit);
      for (int64 y = CeilVoxel(a.y, mesh.unit); y < end; ++y) {
        auto const x =
            CrossLine(a, b, &CTriple<int64>::y, &CTriple<int64>::x, y * mesh.unit, mesh.unit);
        crossings.push_back(Crossing(static_cast<std::uint32_t>(z / mesh.unit),
                                     static_cast<std::uint32_t>(y),
                                     static_cast<std::uint32_t>(x.Ceil()), up));
      }
    });
    AppendInside(crossings, winding, surface);
  }
}

} // namespace ORVA::Impl
