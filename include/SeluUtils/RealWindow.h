// The window of the voxels in a box whose sides lie between the voxels.
//
//   #include <iostream>
//   CWindowVisitor box = RealWindow({0.5, 0.5, 0}, {9.25, 4, 2});
//   std::cout << "x from " << box.Low().x << " to " << box.High().x;        // prints x from 1 to 9
#pragma once

#include <SeluUtils/Boundary.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/WindowVisitor.h>

namespace ORVA {

/// The lattice points p with low <= p <= high along each axis; with an open boundary low < p <
/// high, with a half-open one low <= p < high, so that boxes that share a side share no point. A
/// box without points, such as one with a low above its high, gives a window without points.
/// CExBadParam for a number that is not finite or beyond ±2^62.
[[nodiscard]] SELUUTILS_EXPORT CWindowVisitor RealWindow(CTriple<double> low, CTriple<double> high,
                                                         EnBoundary boundary = EnBoundary::Closed);

} // namespace ORVA
