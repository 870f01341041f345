// What belongs to a shape: which points of its outline or surface, and what counts as inside.
//
//   CRealPolygonVisitor left(outline, EnBoundary::HalfOpen), right(neighbor, EnBoundary::HalfOpen);
//   // no point belongs to both, and none between them to neither
//   CSolidVisitor parts(corners, triangles, EnBoundary::Closed, EnWinding::NonZero);
#pragma once

namespace ORVA {

/// Which lattice points on the outline of a polygon or the surface of a solid belong to it.
enum class EnBoundary {
  /// None: only points strictly inside.
  Open,
  /// Those with the inside just beyond them, as seen toward a point a little farther along x, very
  /// much less farther along y, and less still along z. A rectangle keeps its sides of least x and
  /// y. Shapes that tile a part of the plane or space cover each of its points once.
  HalfOpen,
  /// All.
  Closed
};

/// What counts as inside where outlines or surfaces cross themselves or each other.
enum class EnWinding {
  EvenOdd, ///< an odd number of crossings on the way out; the orientation makes no difference
  NonZero  ///< outlines that wind around the point, on balance, at least once
};

} // namespace ORVA
