// The merge of three plane projections into one 3D line of permitted moves.
#pragma once

#include <SeluUtils/Impl/LineMoves.h>

#include <array>
#include <optional>
#include <vector>

namespace ORVA::Impl {

/// Moves that a line of the internal lengths needs under a mask; none for a mask outside 0 to 7.
/// It is the least number with the mask's moves.
[[nodiscard]] std::optional<int64> MoveCount(int64 mask, CTriple<int64> lengths);

/// The eight moves of an octant, indexed by the internal axes that they step along: 1 first,
/// 2 second, 4 third.
using OctantMoves = std::array<CTriple<int64>, 8>;

/// Appends the moves of the line under one of the masks 0 to 6, which must have room for them.
void MergeProjections(int64 mask, CTriple<int64> lengths,
                      std::array<CBresenhamVisitor2D, 3> const& projections,
                      OctantMoves const& realMoves, std::vector<CTriple<int64>>& moves);

} // namespace ORVA::Impl
