// Moves that runs are made of: one voxel up along one axis.
//
//   int64 const axis = Impl::AxisOfMove(CTriple<int64>(0, 1, 0));      // 1
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// 0, 1 or 2 for the move by +1 along x, y or z; -1 for another one.
[[nodiscard]] constexpr int64 AxisOfMove(CTriple<int64> const& move) noexcept {
  if (move == CTriple<int64>(1, 0, 0)) return 0;
  if (move == CTriple<int64>(0, 1, 0)) return 1;
  return move == CTriple<int64>(0, 0, 1) ? 2 : -1;
}

} // namespace ORVA::Impl
