#include "Utils/SolidVisitor/Mesh.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/PolygonVisitor.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>

namespace ORVA {

namespace {

using Impl::Rows;
using Impl::StMesh;
using Corners = std::span<CTriple<int64> const>;

void CheckNeighborhood(int64 neighborhood) {
  constexpr std::array known{NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26};
  if (std::ranges::find(known, neighborhood) == known.end())
    Impl::RaiseBadParam(ORVA_LOCATION(Impl::c_solidModule, Impl::c_solidConstructor),
                        CString("neighborhood %1 is none of 6, 14.1, 14.2 and 26 (12, 15, 18, 21)")
                            .Arg(neighborhood));
}

void AddDigitalFace(StMesh const& mesh, std::size_t face, int64 neighborhood, Rows& surface) {
  std::vector<CTriple<int64>> corners;
  for (std::uint32_t const corner : mesh.Face(face))
    corners.push_back(mesh.Given(mesh.corners[corner]));
  CPolygonVisitor polygon(corners, 3, neighborhood, true);
  while (polygon.MorePoints()) {
    CTriple<int64> const p = polygon.NextPoint() - mesh.origin;
    auto const x = static_cast<std::uint32_t>(p.x);
    surface.push_back({static_cast<std::uint32_t>(p.z), static_cast<std::uint32_t>(p.y), x, x});
  }
}

Rows WithDigitalFaces(StMesh const& mesh, int64 neighborhood, EnWinding winding) {
  static_cast<void>(Impl::ClosedEdges(mesh, winding));
  Rows surface;
  Rows rows = Impl::ScanSolid(mesh, Impl::FacePlanes(mesh), winding, nullptr);
  for (std::size_t face = 0; face < mesh.Faces(); ++face)
    AddDigitalFace(mesh, face, neighborhood, surface);
  // Among their points are all lattice points on the surface.
  return Impl::WithBoundary(std::move(rows), std::move(surface), EnBoundary::Closed);
}

Rows Exact(StMesh const& mesh, EnBoundary boundary, EnWinding winding) {
  auto const edges = Impl::ClosedEdges(mesh, winding);
  auto const planes = Impl::FacePlanes(mesh);
  if (boundary == EnBoundary::HalfOpen) return Impl::ScanSolid(mesh, planes, winding, nullptr);
  Rows surface;
  Rows rows = Impl::ScanSolid(mesh, planes, winding, &surface);
  Impl::AddEdgePoints(mesh, edges, surface);
  Impl::AddFlatFaces(mesh, planes, winding, surface);
  return Impl::WithBoundary(std::move(rows), std::move(surface), boundary);
}

template <class Face>
Impl::StRegion Solid(Corners corners, std::span<Face const> faces, int64 neighborhood, bool border,
                     EnWinding winding) {
  CheckNeighborhood(neighborhood);
  StMesh const mesh = Impl::MakeMesh(corners, faces, 1);
  return {mesh.origin, border ? WithDigitalFaces(mesh, neighborhood, winding)
                              : Exact(mesh, EnBoundary::Open, winding)};
}

template <class Face>
Impl::StRegion Solid(Corners corners, std::span<Face const> faces, EnBoundary boundary,
                     EnWinding winding, int64 unit) {
  StMesh const mesh = Impl::MakeMesh(corners, faces, unit);
  return {mesh.origin, Exact(mesh, boundary, winding)};
}

} // namespace

CSolidVisitor::CSolidVisitor(Corners corners, std::span<Triangle const> triangles,
                             int64 neighborhood, bool border, EnWinding winding)
    : CRunVisitor(Solid(corners, triangles, neighborhood, border, winding)) {}

CSolidVisitor::CSolidVisitor(Corners corners, std::span<Face const> faces, int64 neighborhood,
                             bool border, EnWinding winding)
    : CRunVisitor(Solid(corners, faces, neighborhood, border, winding)) {}

CSolidVisitor::CSolidVisitor(Corners corners, std::span<Triangle const> triangles,
                             EnBoundary boundary, EnWinding winding, int64 unit)
    : CRunVisitor(Solid(corners, triangles, boundary, winding, unit)) {}

CSolidVisitor::CSolidVisitor(Corners corners, std::span<Face const> faces, EnBoundary boundary,
                             EnWinding winding, int64 unit)
    : CRunVisitor(Solid(corners, faces, boundary, winding, unit)) {}

} // namespace ORVA
