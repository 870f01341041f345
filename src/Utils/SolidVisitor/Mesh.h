// The faces of a solid, checked, as the scan and the walk of its surface need them.
#pragma once

#include "Utils/Exact.h"
#include "Utils/RunVisitor/Rows.h"

#include <SeluUtils/SolidVisitor.h>
#include <pxlib2core/Exception.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA::Impl {

inline constexpr char c_solidModule[] = "src/Utils/SolidVisitor";
inline constexpr char c_solidConstructor[] = "ORVA::CSolidVisitor::CSolidVisitor";

/// The plane normal·(p - anchor) = 0; the normal is 0 for a face without area. Its x is not
/// negative, and its components are less than 2^63.
struct StFacePlane {
  CTriple<int64> normal, anchor;
};

/// An edge between two places, by the numbers of corners that lie there.
struct StMeshEdge {
  std::uint32_t from, to;
};

/// Corners in units seen from the origin, which is in voxels: 0 ... 2^31 + 2^20, so that a product
/// of two differences, and a coordinate times a difference, have less than 63 bits.
struct StMesh {
  CTriple<int64> origin;
  int64 unit = 1;
  std::vector<CTriple<int64>> corners;
  std::vector<std::uint32_t> faceCorners; // numbers in `corners`, face by face
  std::vector<std::size_t> faceBegins;    // and the end of the last one

  [[nodiscard]] std::size_t Faces() const noexcept { return faceBegins.size() - 1; }
  [[nodiscard]] std::span<std::uint32_t const> Face(std::size_t face) const noexcept {
    return std::span(faceCorners)
        .subspan(faceBegins[face], faceBegins[face + 1] - faceBegins[face]);
  }
  /// The corner as it was given.
  [[nodiscard]] CTriple<int64> Given(CTriple<int64> const& corner) const noexcept {
    return corner + origin * unit;
  }
};

/// Calls visit(from, to), corners of the mesh, for each edge of a face.
template <class Visit>
void ForEachEdge(StMesh const& mesh, std::size_t face, Visit visit) {
  auto const ring = mesh.Face(face);
  for (std::size_t i = 0; i < ring.size(); ++i)
    visit(ring[i], ring[i + 1 < ring.size() ? i + 1 : 0]);
}

/// Room that digital faces have around the corners, in voxels.
inline constexpr int64 c_slack = 8;

template <class Face>
[[nodiscard]] StMesh MakeMesh(std::span<CTriple<int64> const> corners, std::span<Face const> faces,
                              int64 unit);

/// The plane of each face; CExBadParam for one that is not flat.
[[nodiscard]] std::vector<StFacePlane> FacePlanes(StMesh const& mesh);
/// Each edge of the faces once; CExBadParam where the surface is not closed.
[[nodiscard]] std::vector<StMeshEdge> ClosedEdges(StMesh const& mesh, EnWinding winding);

/// The rows of a solid by the half-open rule; if asked for, adds the lattice points on the faces,
/// but not all of those on edges, to `surface`.
[[nodiscard]] Rows ScanSolid(StMesh const& mesh, std::span<StFacePlane const> planes,
                             EnWinding winding, Rows* surface);
/// Adds the lattice points on the edges, and on the faces of constant z.
void AddEdgePoints(StMesh const& mesh, std::span<StMeshEdge const> edges, Rows& surface);
void AddFlatFaces(StMesh const& mesh, std::span<StFacePlane const> planes, EnWinding winding,
                  Rows& surface);

} // namespace ORVA::Impl
