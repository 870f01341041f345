// Walks the voxels of a digital line, one point a call, in 1, 2 or 3 dimensions.
//
//   CTriple<int64> const from(0, 0, 0), to(9, 4, 2);
//   CBresenhamVisitor line(from, to, 3, NEIGHBORHOOD_26, true);
//   while (line.MorePoints()) Visit(line.NextPoint());
//   CBresenhamVisitorSelect inside(from, to, 3, NEIGHBORHOOD_26, true);
//   inside.SetImageSize(image.Size());          // only the part within the image
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/LineMoves.h>
#include <SeluUtils/Impl/MovingPoint.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace ORVA {

namespace Impl {
/// Throws CException "invalid dimension".
[[noreturn]] SELUUTILS_EXPORT void RaiseInvalidDimensionInStep();
[[noreturn]] SELUUTILS_EXPORT void RaiseInvalidDimensionInLastStep();
/// Throws CException "invalid dimension\n".
[[noreturn]] SELUUTILS_EXPORT void RaiseInvalidDimensionInReset();
/// Throws CException "Step i out of range".
[[noreturn]] SELUUTILS_EXPORT void RaiseSelectedStepOutOfRange();

/// What a walk along a line needs to know, and never changes.
struct StLine {
  CTriple<int64> difference;
  int64 dimension = 0;
  int64 neighborhood = 0;
  int64 firstStep = 0; // 0 with end points, 1 without
  CBresenhamVisitor1D alongX;
  bool isListed = false;                           // the axes do not step evenly
  std::shared_ptr<CBresenhamVisitor3D const> list; // the moves then
  int64 steps = 0;
  StLineCursor start;
};

/// What the constructors of CBresenhamVisitor of the same parameters build.
SELUUTILS_EXPORT StLine LineBetween(CTriple<int64> from, CTriple<int64> to, int64 dimension,
                                    int64 neighborhood, bool withEndPoints);
SELUUTILS_EXPORT StLine LineAlong(CTriple<int64> start, CTriple<double> direction, double length,
                                  int64 dimension, int64 neighborhood, bool withEndPoints);
SELUUTILS_EXPORT StLine LineUnderMask(CTriple<int64> difference, int64 diagonal);
} // namespace Impl

/// A digital line from a start point. With end points a line of n moves hands out its n + 1 points,
/// without them the n - 1 points between the two ends, none where n is 0 or 1.
///
/// Neighborhoods are NEIGHBORHOOD_4, _6_1, _6_2, _8 in dimension 2 and _6, _14_1, _14_2, _26 in
/// dimension 3; dimension 1 has none. Components beyond the dimension are not walked.
///
/// Lengths have 32 bits: in dimensions 1 and 2 a longer component is clamped, in dimension 3 its
/// low 32 bits count. Constructors throw CException for an unknown dimension or neighborhood,
/// and CExBadParam for a line that leaves the 64-bit range. They take O(1) time and no memory for
/// the moves; only in space without all diagonals O(moves) and about 40 bytes a move, which copies
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
  /// The extents are taken as coordinates.
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
  [[nodiscard]] int64 Dim() const noexcept { return m_Line.dimension; }
  [[nodiscard]] int64 Neighborhood() const noexcept { return m_Line.neighborhood; }

  /// Back to the first point. Without end points each call takes two further points off the walk.
  void Reset() {
    if (m_Line.dimension == 0) [[unlikely]]
      Impl::RaiseInvalidDimensionInReset();
    Start();
  }
  /// No effect: this walk is not clipped (CBresenhamVisitorSelect is).
  void SetImageSize(CSize) noexcept {}
  void SetImageSize(CTriple<int64>) noexcept {}

  /// Print the moves of a 3D line, or those of its three projections, to standard output.
  void PrintMoves() const;
  void PrintProjMoves() const;

private:
  explicit CBresenhamVisitor(Impl::StLine line) noexcept
      : m_Line(std::move(line)), m_LastStepBound(m_Line.steps) {
    Start();
  }

  [[nodiscard]] CTriple<int64> InnerStep(int64 i) const {
    if (m_Line.dimension == 1) return m_Line.alongX.Step(i);
    if (m_Line.list) return m_Line.list->Step(i);
    if (m_Line.dimension == 0) [[unlikely]]
      Impl::RaiseInvalidDimensionInStep();
    if (i < 0) [[unlikely]]
      m_Line.dimension == 2 ? Impl::RaiseStepOutOfRange2D() : Impl::RaiseStepOutOfRange3D();
    return i < m_Line.steps ? m_Line.start.Move(i) : CTriple<int64>();
  }
  [[nodiscard]] int64 InnerSteps() const {
    if (m_Line.dimension == 0) [[unlikely]]
      Impl::RaiseInvalidDimensionInLastStep();
    return m_Line.steps;
  }
  void Advance() {
    if (!m_Line.isListed) {
      m_Next.Advance();
    } else if (int64 const step = m_StepIndex + m_Line.firstStep;
               step < m_Line.steps && m_Line.list) {
      m_Next.MoveBy(m_Line.list->Moves()[static_cast<std::size_t>(step)]);
    }
  }
  // The cursor goes one move beyond the end: to check for it at every point would cost more.
  [[nodiscard]] bool IsBeyondEnd() const noexcept {
    return m_StepIndex + m_Line.firstStep > m_Line.steps;
  }
  CTriple<int64> NextPointBeyondBound() {
    if (m_Line.dimension == 0) Impl::RaiseInvalidDimensionInStep();
    CTriple<int64> const point = TestNextPoint();
    if (!IsBeyondEnd()) Advance();
    ++m_StepIndex;
    return point;
  }
  void Start() {
    m_Next = m_Line.start;
    m_StepIndex = 0;
    if (m_Line.firstStep == 0) return;
    m_StepIndex = -1;
    Advance();
    m_StepIndex = 0;
    m_LastStepBound -= 2; // the bound is not restored first: each rewind shortens the walk
  }

  Impl::StLine m_Line;
  Impl::StLineCursor m_Next;
  int64 m_StepIndex = 0;
  int64 m_LastStepBound = -1;
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
  CBresenhamVisitorSelect(CSize from, CSize to, int64 dimension, int64 neighborhood,
                          bool withEndPoints);
  CBresenhamVisitorSelect(CTriple<int64> difference, int64 diagonal);
  CBresenhamVisitorSelect(CBresenhamVisitorSelect const&) = default;
  CBresenhamVisitorSelect(CBresenhamVisitorSelect&&) noexcept = default;
  /// Assigns wholly or, where memory runs out, not at all.
  CBresenhamVisitorSelect& operator=(CBresenhamVisitorSelect const& other) {
    return *this = CBresenhamVisitorSelect(other);
  }
  CBresenhamVisitorSelect& operator=(CBresenhamVisitorSelect&&) noexcept = default;
  ~CBresenhamVisitorSelect() = default;

  /// Selects the part inside an image of these extents and rewinds. A component of the image beyond
  /// the walk's dimension is not looked at. CException for a default walk.
  void SetImageSize(CTriple<int64> size);
  void SetImageSize(CSize size) { SetImageSize(CTriple<int64>(size.x, size.y, size.z)); }

  [[nodiscard]] bool MorePoints() const noexcept { return m_StepIndex <= LastStep(); }
  CTriple<int64> NextPoint() {
    CTriple<int64> const point = m_Next.Get();
    m_Next.MoveBy(Step(m_StepIndex));
    ++m_StepIndex;
    return point;
  }
  /// What NextPoint will return, without advancing.
  [[nodiscard]] CTriple<int64> TestNextPoint() const noexcept { return m_Next.Get(); }
  /// Selected move i; the null move past the end. CException for a negative i.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    if (i < 0) [[unlikely]]
      Impl::RaiseSelectedStepOutOfRange();
    auto const index = static_cast<std::size_t>(i);
    return index < m_Selected.size() ? m_Selected[index] : CTriple<int64>();
  }
  /// Always 0.
  [[nodiscard]] int64 FirstStep() const noexcept { return 0; }
  /// Number of selected moves; the walk hands out one point more.
  [[nodiscard]] int64 LastStep() const noexcept { return static_cast<int64>(m_Selected.size()); }
  [[nodiscard]] int64 Steps() const noexcept { return LastStep(); }
  /// Whether no move is selected.
  [[nodiscard]] bool empty() const noexcept { return m_Selected.empty(); }
  /// Back to the first selected point.
  void Reset() noexcept;

private:
  CBresenhamVisitor m_Line;
  CTriple<int64> m_SelectionStart;
  bool m_IsClipped = false;
  std::vector<CTriple<int64>> m_Selected;
  Impl::StMovingPoint m_Next;
  int64 m_StepIndex = 0;
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
  [[nodiscard]] constexpr int64 Steps() const noexcept { return 1; }
  [[nodiscard]] constexpr bool empty() const noexcept { return false; }
  constexpr void Reset() noexcept { m_State = 0; }
  /// No effect.
  constexpr void SetImageSize(CSize) noexcept {}
  constexpr void SetImageSize(CTriple<int64>) noexcept {}

private:
  CTriple<int64> m_Point;
  int64 m_State = 0; // 2 once the point was handed out
};

} // namespace Impl
} // namespace ORVA
