// A row of grid points along one axis: what walkers hand out whose points come in rows.
//
//   for (auto const& [first, axis, length] : ORVA::Runs(polygon))   // <SeluUtils/Walker.h>
//     Fill(first, axis, length);                                    // length points from first on
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA {

/// The points first, first + e, ..., first + (length - 1) e in the order of a walk, where e is the
/// unit step along `axis`: 0 x, 1 y, 2 z. A run of length 0 has no points.
struct StRun {
  CTriple<int64> first;
  int64 axis = 0;
  int64 length = 0;

  bool operator==(StRun const&) const = default;
};

} // namespace ORVA
