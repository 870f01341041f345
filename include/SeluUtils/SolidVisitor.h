// Walks every lattice point of a solid given by its faces: concave, hollow or with holes, exactly.
//
//   #include <SeluBase/Neighborhood.h>
//   #include <SeluUtils/Walker.h>
//   #include <iostream>
//   std::vector<CTriple<int64>> const corners{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}, {0, 0, 3}};
//   std::vector<CSolidVisitor::Triangle> const faces{{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}};
//   CSolidVisitor solid(corners, faces, NEIGHBORHOOD_26, true);             // with digital faces
//   int64 sum = 0;
//   for (auto const& p : Points(solid)) sum += p.x;
//   std::cout << solid.Steps() << " points, " << sum;                       // prints 20 points, 15
#pragma once

#include <SeluUtils/Boundary.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/RunVisitor.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA {

/// A polyhedron, or several, given by corners and by faces that name them from 0 on: triangles, or
/// polygons in a plane that may be concave. Corners on the same place are the same corner. Any
/// genus, cavities and parts that touch or cross are allowed, and so are faces without area and
/// faces that meet other faces' edges at a corner of their own.
///
/// The surface must be closed. By the even-odd rule that means that every edge, cut at the corners
/// that lie on it, belongs to an even number of faces; their orientation makes no difference. By
/// the non-zero rule the faces pass it as often in one direction as in the other. Else CExBadParam
/// names an edge.
///
/// With border the walk visits the points strictly inside and the digital faces: all points of each
/// face's CPolygonVisitor. Without border it visits the points strictly inside. The constructors
/// with an EnBoundary visit no digital faces, but the points inside and those points exactly on the
/// surface that belong to the solid by that boundary. All walks are in raster order, each point
/// once.
///
/// Corners may lie between the voxels: `unit` is the number of their steps per voxel, so that with
/// unit 256 the corner (128, 0, 0) is the middle between the voxels (0, 0, 0) and (1, 0, 0).
///
/// The arithmetic is exact. CExBadParam for corners more than 2147483647 apart along an axis or
/// beyond ±2^62, for a face that names no corner or is not flat, for an open surface, an unknown
/// neighborhood, and a unit that is not from 1 to 2^20. Building takes O(1) time for each corner of
/// a face, each slice of constant z that an edge crosses and each row along x that a face crosses
/// or has points in, and 16 bytes for each row of the walk; a point takes O(1).
class SELUUTILS_EXPORT CSolidVisitor : public CRunVisitor {
public:
  /// The indices of three corners.
  using Triangle = std::array<std::uint32_t, 3>;
  /// The indices of the corners of a face, in their order along its outline.
  using Face = std::vector<std::uint32_t>;

  /// A walk without points.
  CSolidVisitor() = default;
  /// NEIGHBORHOOD_6, _14_1, _14_2 or _26: the moves of the digital faces' border lines.
  CSolidVisitor(std::span<CTriple<int64> const> corners, std::span<Triangle const> triangles,
                int64 neighborhood, bool border, EnWinding winding = EnWinding::EvenOdd);
  CSolidVisitor(std::span<CTriple<int64> const> corners, std::span<Face const> faces,
                int64 neighborhood, bool border, EnWinding winding = EnWinding::EvenOdd);
  CSolidVisitor(std::span<CTriple<int64> const> corners, std::span<Triangle const> triangles,
                EnBoundary boundary, EnWinding winding = EnWinding::EvenOdd, int64 unit = 1);
  CSolidVisitor(std::span<CTriple<int64> const> corners, std::span<Face const> faces,
                EnBoundary boundary, EnWinding winding = EnWinding::EvenOdd, int64 unit = 1);
};

} // namespace ORVA
