// The window of the voxels in a box whose sides lie between the voxels.
//
//   CWindowVisitor box = RealWindow({0.5, 0.5, 0}, {9.25, 4, 2});       // from (1, 1, 0) to (9, 4,
//   2) box.SetImageSize(image.Size()); while (box.MorePoints()) Visit(box.NextPoint());
#pragma once

#include <SeluUtils/Boundary.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// The lattice points p with low <= p <= high along each axis; with an open boundary low < p <
/// high, with a half-open one low <= p < high, so that boxes that share a side share no point. A
/// box without points, such as one with a low above its high, gives a window without points.
/// CExBadParam for a number that is not finite or beyond ±2^62.
[[nodiscard]] SELUUTILS_EXPORT CWindowVisitor RealWindow(CTriple<double> low, CTriple<double> high,
                                                         EnBoundary boundary = EnBoundary::Closed);

} // namespace ORVA
