// Walks the voxels of a ball or an ellipsoid along the axes, decided exactly by its inequality.
//
//   #include <iostream>
//   CEllipsoidVisitor const ball(CTriple<double>(10, 10, 10), 5.0);
//   CEllipsoidVisitor const egg(CTriple<double>(10, 10.5, 10), CTriple<double>(8.2, 5, 5));
//   std::cout << ball.Steps() << " and " << egg.Steps(); // prints 515 and 862
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/RunVisitor.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// The lattice points p with (dx / a)^2 + (dy / b)^2 + (dz / c)^2 <= 1, where (dx, dy, dz) is p
/// less the center and (a, b, c) are the semi-axes; without border those with less than 1. In
/// raster order, each once.
///
/// Center and semi-axes are taken as the exact numbers that they are; nothing is rounded.
/// CExBadParam for a center that is not finite or beyond ±2^30, and for semi-axes that are not from
/// 2^-30 to 2^30. Building takes O(1) time and 16 bytes for each row, a point O(1).
class SELUUTILS_EXPORT CEllipsoidVisitor : public CRunVisitor {
public:
  /// A walk without points.
  CEllipsoidVisitor() = default;
  CEllipsoidVisitor(CTriple<double> center, CTriple<double> semiAxes, bool border = true);
  /// A ball.
  CEllipsoidVisitor(CTriple<double> center, double radius, bool border = true)
      : CEllipsoidVisitor(center, CTriple<double>(radius, radius, radius), border) {}
};

} // namespace ORVA
