// Walks the voxels of a digital line, one point per call, in 1, 2 or 3 dimensions.
//
//   CBresenhamVisitor line({0, 0, 0}, {9, 4, 2}, 3, NEIGHBORHOOD_26, true);
//   int64 sum = 0;
//   while (line.MorePoints()) sum += line.NextPoint().x;    // 45
//   CBresenhamVisitorSelect inside({0, 0, 0}, {9, 4, 2}, 3, NEIGHBORHOOD_26, true);
//   inside.SetImageSize({5, 5, 5});                         // only the part within such an image
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/LineWalk.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <limits>
#include <utility>

namespace ORVA {

/// A digital line from a start point. With end points a line of n moves hands out its n + 1 points,
/// without them the n - 1 points between the two ends, none where n is 0 or 1.
///
/// Neighborhoods are NEIGHBORHOOD_4, _6_1, _6_2, _8 in dimension 2 and _6, _14_1, _14_2, _26 in
/// dimension 3; dimension 1 has none. Components beyond the dimension are not walked.
///
/// Lengths have 32 bits: in dimensions 1 and 2 a longer component is clamped, in dimension 3 its
/// low 32 bits count. Constructors throw CException for an unknown dimension or neighborhood,
/// and CExBadParam for a line that leaves the 64-bit range. They take O(1) time and no memory for
/// the moves; only in space without all diagonals O(moves) and 24 bytes per move, which copies
/// share, and std::bad_alloc for a line longer than memory can hold. A point takes O(1).
///
/// All of a walk is inline, and no function elsewhere sees the walker: one that lives in one
/// function walks in registers.
///
/// Two things surprise: `Steps` counts moves, not points; and every `Reset` of a walk without end
/// points takes two further points off its end.
class SELUUTILS_EXPORT CBresenhamVisitor {
public:
  /// A walk of dimension 0 without points; Step and what rests on it throw.
  CBresenhamVisitor() = default;
  CBresenhamVisitor(CTriple<int64> from, CTriple<int64> to, int64 dimension, int64 neighborhood,
                    bool withEndPoints)
      : CBresenhamVisitor(Impl::LineBetween(from, to, dimension, neighborhood, withEndPoints)) {}
  /// The extents are taken as coordinates. (Three numbers in braces are points.)
  template <class = void>
  CBresenhamVisitor(CSize from, CSize to, int64 dimension, int64 neighborhood, bool withEndPoints)
      : CBresenhamVisitor(CTriple<int64>(from.x, from.y, from.z), CTriple<int64>(to.x, to.y, to.z),
                          dimension, neighborhood, withEndPoints) {}
  /// To start + direction * length; the difference is rounded half away from zero and saturates at
  /// the ends of the 64-bit range, a NaN at the lower one.
  CBresenhamVisitor(CTriple<int64> start, CTriple<double> direction, double length, int64 dimension,
                    int64 neighborhood, bool withEndPoints)
      : CBresenhamVisitor(
            Impl::LineAlong(start, direction, length, dimension, neighborhood, withEndPoints)) {}
  /// A 3D walk from the origin with end points, under a mask of diagonal moves
  /// (Impl::CBresenhamVisitor3D) in place of a neighborhood.
  CBresenhamVisitor(CTriple<int64> difference, int64 diagonal)
      : CBresenhamVisitor(Impl::LineUnderMask(difference, diagonal)) {}

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_StepIndex <= m_LastStepBound; }
  /// The next point. Past the end of the line it stays the last one.
  [[gnu::always_inline]] CTriple<int64> NextPoint() {
    if (!MorePoints()) [[unlikely]]
      return NextPointBeyondBound();
    CTriple<int64> const point = m_Next.Get();
    Advance();
    ++m_StepIndex;
    return point;
  }
  /// The points from the next one on that lie in a row of ascending coordinates, found in O(1) but
  /// in space without all diagonals; a run of length 0 after the last point. A line that falls
  /// along its longest axis has no rows: its runs are single points.
  StRun NextRun() {
    if (!MorePoints()) return {};
    StRun run{m_Next.Get(), 0, 1};
    m_Line.ExtendRun(run, m_Next, m_StepIndex + m_Line.firstStep, m_LastStepBound - m_StepIndex);
    m_StepIndex += run.length - 1;
    Advance();
    ++m_StepIndex;
    return run;
  }
  /// Number of points still to come.
  [[nodiscard]] uint64 Remaining() const noexcept {
    return MorePoints() ? static_cast<uint64>(m_LastStepBound - m_StepIndex) + 1 : 0;
  }
  /// Back to the first point, as often as one likes: nothing is taken off the walk.
  void Rewind() noexcept {
    m_LastStepBound = m_Line.steps;
    Start();
  }
  /// What NextPoint will return, without advancing.
  [[nodiscard]] CTriple<int64> TestNextPoint() const noexcept {
    return (IsBeyondEnd() ? m_Next.Before() : m_Next).Get();
  }

  /// Move i of the walk: of its first point to the second, and so on; the null move past the end.
  /// CException for a negative i.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    bool const isLast = i == std::numeric_limits<int64>::max();
    return InnerStep(isLast ? i : i + m_Line.firstStep);
  }
  /// Adds move i to the point and returns the change of a linear pixel index, move.x * strideX +
  /// move.y * strideY. A move along z reaches the point but never the index, in 3D walks too.
  int64 Step(int64 i, int64 strideX, int64 strideY, CTriple<int64>& point) const {
    CTriple<int64> const move = Step(i);
    point += move;
    return move.x * strideX + move.y * strideY;
  }
  /// Always 0.
  [[nodiscard]] int64 FirstStep() const noexcept { return 0; }
  /// Number of moves of the line, less 2 without end points (so it can be negative).
  [[nodiscard]] int64 LastStep() const { return InnerSteps() - 2 * m_Line.firstStep; }
  /// The same; a walk hands out one point more.
  [[nodiscard]] int64 Steps() const { return LastStep(); }
  /// Whether Steps() is 0.
  [[nodiscard]] bool empty() const { return LastStep() == 0; }
  /// The dimension, 2 or 3; 0 of a default line.
  [[nodiscard]] int64 Dim() const noexcept { return m_Line.dimension; }
  /// The code of the neighborhood.
  [[nodiscard]] int64 Neighborhood() const noexcept { return m_Line.neighborhood; }

  /// Back to the first point. Without end points each call takes two further points off the walk.
  void Reset() {
    if (m_Line.dimension == 0) [[unlikely]]
      RaiseInReset();
    Start();
  }
  /// No effect: this walk is not clipped (CBresenhamVisitorSelect is).
  void SetImageSize(CTriple<int64>) noexcept {}
  template <class = void>
  void SetImageSize(CSize) noexcept {}

  /// Print the moves of a 3D line, or those of its three projections, to standard output.
  void PrintMoves() const;
  /// Prints the moves of the three projections of a 3D line to standard output.
  void PrintProjMoves() const;

private:
  friend class CBresenhamVisitorSelect;
  friend struct Impl::StWalkAccess;

  explicit CBresenhamVisitor(Impl::StLine line) noexcept
      : m_Line(std::move(line)), m_LastStepBound(m_Line.steps) {
    Start();
  }
  // "invalid dimension" of a default walk; else "Step i out of range".
  [[noreturn]] static void RaiseInStep(int64 dimension);
  [[noreturn]] static void RaiseInLastStep();
  [[noreturn]] static void RaiseInReset();

  [[nodiscard]] CTriple<int64> InnerStep(int64 i) const {
    if (m_Line.dimension == 0 || i < 0) [[unlikely]]
      RaiseInStep(m_Line.dimension);
    return i < m_Line.steps ? m_Line.Move(i) : CTriple<int64>();
  }
  [[nodiscard]] int64 InnerSteps() const {
    if (m_Line.dimension == 0) [[unlikely]]
      RaiseInLastStep();
    return m_Line.steps;
  }
  void Advance() noexcept { m_Line.Advance(m_Next, m_StepIndex + m_Line.firstStep); }
  // The cursor goes one move beyond the end: to check for it at every point would cost more.
  [[nodiscard]] bool IsBeyondEnd() const noexcept {
    return m_StepIndex + m_Line.firstStep > m_Line.steps;
  }
  CTriple<int64> NextPointBeyondBound() {
    if (m_Line.dimension == 0) RaiseInStep(0);
    CTriple<int64> const point = TestNextPoint();
    if (!IsBeyondEnd()) Advance();
    ++m_StepIndex;
    return point;
  }
  void Start() noexcept {
    m_Next = m_Line.start;
    m_StepIndex = 0;
    if (m_Line.firstStep == 0) return;
    m_StepIndex = -1;
    Advance();
    m_StepIndex = 0;
    m_LastStepBound =
        m_LastStepBound - 2; // the bound is not restored first: each rewind shortens the walk
  }

  Impl::StLine m_Line;
  Impl::StLineCursor m_Next;
  int64 m_StepIndex = 0;
  Impl::CUntilMoved<int64, -1> m_LastStepBound{-1};
};

/// The part of a digital line inside an image: the first run of its points that lie inside. A line
/// that comes back into the image after leaving it is not followed further.
///
/// The selection is made by the first SetImageSize; later ones only rewind the walk. Before it the
/// walk hands out its start point alone. A line that never enters the image still hands out one
/// point, the last one tried, which lies outside. Without end points the selection starts its
/// search at the from point. Constructors, errors and costs as for CBresenhamVisitor.
class SELUUTILS_EXPORT CBresenhamVisitorSelect {
public:
  CBresenhamVisitorSelect() = default;
  CBresenhamVisitorSelect(CTriple<int64> from, CTriple<int64> to, int64 dimension,
                          int64 neighborhood, bool withEndPoints);
  template <class = void>
  CBresenhamVisitorSelect(CSize from, CSize to, int64 dimension, int64 neighborhood,
                          bool withEndPoints)
      : CBresenhamVisitorSelect(CTriple<int64>(from.x, from.y, from.z),
                                CTriple<int64>(to.x, to.y, to.z), dimension, neighborhood,
                                withEndPoints) {}
  CBresenhamVisitorSelect(CTriple<int64> difference, int64 diagonal);

  /// Selects the part inside an image of these extents and rewinds. A component of the image beyond
  /// the walk's dimension is not looked at. CException for a default walk.
  void SetImageSize(CTriple<int64> size);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_StepIndex <= m_LastStepBound; }
  /// The next point. Past the end it stays the last one.
  CTriple<int64> NextPoint() {
    CTriple<int64> const point = m_Next.Get();
    if (m_StepIndex < m_LastStepBound)
      m_Line.m_Line.Advance(m_Next, m_FirstSelected + m_StepIndex + m_Line.m_Line.firstStep);
    ++m_StepIndex;
    return point;
  }
  /// As for CBresenhamVisitor.
  StRun NextRun() {
    if (!MorePoints()) return {};
    Impl::StLine const& line = m_Line.m_Line;
    int64 const move = m_FirstSelected + m_StepIndex + line.firstStep;
    StRun run{m_Next.Get(), 0, 1};
    line.ExtendRun(run, m_Next, move, m_LastStepBound - m_StepIndex);
    m_StepIndex += run.length - 1;
    if (m_StepIndex < m_LastStepBound) line.Advance(m_Next, move + run.length - 1);
    ++m_StepIndex;
    return run;
  }
  /// Number of points still to come.
  [[nodiscard]] uint64 Remaining() const noexcept {
    return MorePoints() ? static_cast<uint64>(m_LastStepBound - m_StepIndex) + 1 : 0;
  }
  /// Back to the first selected point.
  void Rewind() noexcept { Reset(); }
  /// What NextPoint will return, without advancing.
  [[nodiscard]] CTriple<int64> TestNextPoint() const noexcept { return m_Next.Get(); }
  /// Selected move i; the null move past the end. CException for a negative i.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    if (i < 0) [[unlikely]]
      RaiseInStep();
    return i < LastStep() ? m_Line.Step(m_FirstSelected + i) : CTriple<int64>();
  }
  /// Always 0.
  [[nodiscard]] int64 FirstStep() const noexcept { return 0; }
  /// Number of selected moves; the walk hands out one point more.
  [[nodiscard]] int64 LastStep() const noexcept {
    return m_LastStepBound < 0 ? 0 : static_cast<int64>(m_LastStepBound);
  }
  /// The same as LastStep: the number of selected moves.
  [[nodiscard]] int64 Steps() const noexcept { return LastStep(); }
  /// Whether no move is selected.
  [[nodiscard]] bool empty() const noexcept { return LastStep() == 0; }
  /// Back to the first selected point.
  void Reset() noexcept;

private:
  friend struct Impl::StWalkAccess;

  [[noreturn]] static void RaiseInStep();

  CBresenhamVisitor m_Line;
  CTriple<int64> m_SelectionStart;
  bool m_IsClipped = false;
  int64 m_FirstSelected = 0; // of the line's moves
  Impl::StLineCursor m_Next;
  int64 m_StepIndex = 0;
  Impl::CUntilMoved<int64, -1> m_LastStepBound{0}; // number of selected moves
};

namespace Impl {

/// Visits one point.
class CVisitPoint {
public:
  constexpr explicit CVisitPoint(CTriple<int64> point) noexcept : m_Point(point) {}

  [[nodiscard]] constexpr bool MorePoints() const noexcept { return m_State == 0; }
  /// The point, and (0, 0, 0) on every further call.
  constexpr CTriple<int64> NextPoint() noexcept {
    if (m_State != 0) return {};
    m_State = 2;
    return m_Point;
  }
  /// The point as a run of its own; a run of length 0 on every further call.
  constexpr StRun NextRun() noexcept {
    int64 const length = MorePoints() ? 1 : 0;
    return {NextPoint(), 0, length};
  }
  [[nodiscard]] constexpr uint64 Remaining() const noexcept { return MorePoints() ? 1 : 0; }
  constexpr void Rewind() noexcept { m_State = 0; }
  [[nodiscard]] constexpr int64 Steps() const noexcept { return 1; }
  [[nodiscard]] constexpr bool empty() const noexcept { return false; }
  constexpr void Reset() noexcept { m_State = 0; }
  /// No effect.
  constexpr void SetImageSize(CTriple<int64>) noexcept {}
  template <class = void>
  constexpr void SetImageSize(CSize) noexcept {}

private:
  CTriple<int64> m_Point;
  int64 m_State = 0; // 2 once the point was handed out
};

} // namespace Impl
} // namespace ORVA
