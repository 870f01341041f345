// A row of grid points along one axis: what walkers hand out whose points come in rows.
//
//   #include <iostream>
//   auto const [first, axis, length] = StRun{{4, 2, 7}, 0, 3}; // (4, 2, 7), (5, 2, 7), (6, 2, 7)
//   std::cout << "x from " << first.x << " to " << first.x + length - 1; // prints x from 4 to 6
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA {

/// The points first, first + e, ..., first + (length - 1) e in the order of a walk, where e is the
/// unit step along `axis`: 0 x, 1 y, 2 z. A run of length 0 has no points.
struct StRun {
  /// The first point.
  CTriple<int64> first;
  /// The axis along which the points lie one behind the other: 0 is x, 1 is y, 2 is z.
  int64 axis = 0;
  /// Number of points.
  int64 length = 0;

  /// Whether both have the same points in the same order.
  bool operator==(StRun const&) const = default;
};

} // namespace ORVA
