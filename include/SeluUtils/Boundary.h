// What belongs to a shape: which points of its outline or surface, and what counts as inside.
//
//   #include <SeluUtils/RealPolygonVisitor.h>
//   #include <iostream>
//   CRealPolygonVisitor::Outline const square{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
//   for (auto const boundary : {EnBoundary::Open, EnBoundary::HalfOpen, EnBoundary::Closed})
//     std::cout << CRealPolygonVisitor(square, boundary).Steps() << ' '; // prints 1 4 9
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
