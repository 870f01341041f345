// What a walk along a digital line knows and never changes: its moves, from a cursor or a list.
//
//   Impl::StLine const line = Impl::LineBetween({0, 0, 0}, {9, 4, 2}, 3, NEIGHBORHOOD_26, true);
//   Impl::StLineCursor cursor = line.start;
//   for (int64 i = 0; i < line.steps; ++i) line.Advance(cursor, i);   // to (9, 4, 2)
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/AxisMove.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <utility>

namespace ORVA::Impl {

class CBresenhamVisitor3D;
struct StWalkAccess;

/// The moves of a line whose axes do not step evenly, in one list that all copies share; none by
/// default and once moved from. A copy takes no memory. Threads may hold copies of one list.
class SELUUTILS_EXPORT CSharedMoves {
public:
  CSharedMoves() noexcept = default;
  explicit CSharedMoves(CBresenhamVisitor3D const& line);
  CSharedMoves(CSharedMoves const& other) noexcept
      : m_Shared(other.m_Shared), m_Moves(other.m_Moves) {
    if (m_Shared != nullptr) Acquire(*m_Shared);
  }
  CSharedMoves(CSharedMoves&& other) noexcept
      : m_Shared(std::exchange(other.m_Shared, nullptr)),
        m_Moves(std::exchange(other.m_Moves, nullptr)) {}
  CSharedMoves& operator=(CSharedMoves other) noexcept {
    std::swap(m_Shared, other.m_Shared);
    std::swap(m_Moves, other.m_Moves);
    return *this;
  }
  ~CSharedMoves() {
    if (m_Shared != nullptr) Release(*m_Shared);
  }

  [[nodiscard]] bool IsEmpty() const noexcept { return m_Moves == nullptr; }
  /// Move i, 0 <= i < their number.
  [[nodiscard]] CTriple<int64> const& operator[](int64 i) const noexcept { return m_Moves[i]; }

private:
  struct StShared;
  // They see the list alone and never the walker that holds it, which can so stay in registers.
  static void Acquire(StShared& shared) noexcept;
  static void Release(StShared& shared) noexcept;

  StShared* m_Shared = nullptr;
  CTriple<int64> const* m_Moves = nullptr;
};

/// A line and the state at its start.
struct StLine {
  CTriple<int64> difference;
  int64 dimension = 0;
  int64 neighborhood = 0;
  int64 diagonal = -1; // the mask of diagonal moves where it was given in place of a neighborhood
  int64 firstStep = 0; // 0 with end points, 1 without
  CSharedMoves list;   // of a line whose axes do not step evenly; those of the cursor are at rest
  CUntilMoved<int64, -1> steps{0};
  StLineCursor start;

  /// Move i, 0 <= i < steps.
  [[nodiscard]] CTriple<int64> Move(int64 i) const noexcept {
    return list.IsEmpty() ? start.Move(i) : list[i];
  }
  /// Takes a cursor that stands before move i >= 0 behind it. Past the last move a line of even
  /// steps goes on, another one stays. Always inline: a call would keep the cursor out of
  /// registers.
  [[gnu::always_inline]] void Advance(StLineCursor& cursor, int64 i) const noexcept {
    if (list.IsEmpty()) {
      cursor.Advance();
    } else if (i < steps) {
      cursor.MoveBy(list[i]);
    }
  }
  /// Takes a cursor that stands before move i along as long as the moves go by +1 along one axis,
  /// at most `most` >= 0 of them, and lengthens the run that begins there.
  void ExtendRun(StRun& run, StLineCursor& cursor, int64 i, int64 most) const noexcept {
    if (most == 0) return;
    CTriple<int64> const move = list.IsEmpty() ? cursor.Move(0) : list[i];
    int64 const axis = AxisOfMove(move);
    if (axis < 0) return;
    int64 moves = 1;
    if (list.IsEmpty()) {
      uint64 const along = cursor.MovesAlong(axis);
      moves = along < static_cast<uint64>(most) ? static_cast<int64>(along) : most;
    } else {
      while (moves < most && list[i + moves] == move) ++moves;
    }
    cursor.AdvanceEvenly(moves, move);
    run.axis = axis;
    run.length += moves;
  }
};

/// What the constructors of CBresenhamVisitor of the same parameters build.
SELUUTILS_EXPORT StLine LineBetween(CTriple<int64> from, CTriple<int64> to, int64 dimension,
                                    int64 neighborhood, bool withEndPoints);
SELUUTILS_EXPORT StLine LineAlong(CTriple<int64> start, CTriple<double> direction, double length,
                                  int64 dimension, int64 neighborhood, bool withEndPoints);
SELUUTILS_EXPORT StLine LineUnderMask(CTriple<int64> difference, int64 diagonal);

} // namespace ORVA::Impl
