// Walks the pixels in polygons whose corners lie between the pixels, decided exactly.
//
//   #include <iostream>
//   CRealPolygonVisitor::Outline const outline{{0.5, 0.25, 0}, {3.1, 0.5, 0}, {1.75, 3.25, 0}};
//   CRealPolygonVisitor polygon(outline);                                   // inside or on it
//   while (polygon.MorePoints()) {
//     auto const p = polygon.NextPoint();
//     std::cout << p.x << ',' << p.y << ' ';                                // prints 1,1 2,1 2,2
//   }
#pragma once

#include <SeluUtils/Boundary.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/RunVisitor.h>
#include <SeluUtils/Triple.h>

#include <vector>

namespace ORVA {

/// Any number of outlines in one slice, each closed by an edge from its last corner to its first:
/// polygons, holes, parts. They may be concave, cross themselves and each other, and repeat
/// corners; the winding rule then says what is inside. By the even-odd rule a hole is an outline
/// within another, whatever its orientation.
///
/// The walk visits the lattice points inside the outlines, and of those exactly on an edge all,
/// none or the ones of a half-open polygon: a point on the outline belongs to the polygon that lies
/// just beyond it toward greater x, or for edges along x toward greater y. Polygons that tile an
/// area then cover each of its points once, also where they share edges and corners. Raster order,
/// each point once.
///
/// Corners are taken as the exact numbers that they are; nothing is rounded. The z of all corners
/// is the same whole number, that of the slice. CExBadParam for x and y that are not finite or
/// beyond ±2^30, for a z that is not whole or beyond ±2^53 and for corners of different slices.
/// Building takes O(1) time for each corner and each row of pixels that an edge crosses, a point
/// O(1).
class SELUUTILS_EXPORT CRealPolygonVisitor : public CRunVisitor {
public:
  /// The corners of one outline, in their order.
  using Outline = std::vector<CTriple<double>>;

  /// A walk without points.
  CRealPolygonVisitor() = default;
  explicit CRealPolygonVisitor(Outline const& outline, EnBoundary boundary = EnBoundary::Closed,
                               EnWinding winding = EnWinding::EvenOdd);
  explicit CRealPolygonVisitor(std::vector<Outline> const& outlines,
                               EnBoundary boundary = EnBoundary::Closed,
                               EnWinding winding = EnWinding::EvenOdd);
};

} // namespace ORVA
