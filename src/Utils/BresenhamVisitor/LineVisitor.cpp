#include <SeluUtils/LineVisitor.h>

#include "Utils/Exact.h"

#include <SeluUtils/Impl/LineMoves.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_innerModule[] = "src/Utils/BresenhamVisitorImpl";
constexpr char c_constructor[] = "ORVA::CBresenhamVisitor::CBresenhamVisitor";

constexpr int64 c_allDiagonals = 7; // the mask under which each axis steps evenly

// An axis that is not walked may have any difference: it wraps around.
int64 CheckedDifference(int64 from, int64 to, bool isWalked) {
  int64 difference = 0;
  if (__builtin_sub_overflow(to, from, &difference) && isWalked)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("difference from %1 to %2 does not fit 64 bits").Arg(from).Arg(to));
  return difference;
}

CTriple<int64> CheckedDifference(CTriple<int64> const& from, CTriple<int64> const& to,
                                 int64 dimension) {
  return {CheckedDifference(from.x, to.x, dimension >= 1),
          CheckedDifference(from.y, to.y, dimension >= 2),
          CheckedDifference(from.z, to.z, dimension >= 3)};
}

void CheckReach(int64 start, int64 sign, int64 length) {
  int64 end = 0;
  if (__builtin_add_overflow(start, sign * length, &end))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, c_constructor),
        CString("line of %1 voxels from %2 leaves the 64-bit range").Arg(length).Arg(start));
}

// The lines walk less far than the difference where it does not fit 32 bits.
void CheckReach(CTriple<int64> const& start, CTriple<int64> const& difference, int64 dimension) {
  auto const length = dimension == 3 ? Impl::TruncatedLength : Impl::ClampedLength;
  if (dimension >= 1) CheckReach(start.x, Impl::Sign(difference.x), length(difference.x));
  if (dimension >= 2) CheckReach(start.y, Impl::Sign(difference.y), length(difference.y));
  if (dimension >= 3) CheckReach(start.z, Impl::Sign(difference.z), length(difference.z));
}

Impl::StStepPattern EvenSteps(int64 steps, int64 moves) {
  return Impl::StStepPattern::Even(static_cast<uint64>(steps), static_cast<uint64>(moves));
}

void SetLineAlongX(Impl::StLine& line) {
  line.steps = Impl::ClampedLength(line.difference.x);
  line.start.x.SetSteps(EvenSteps(line.steps, line.steps), Impl::Sign(line.difference.x));
}

// With diagonals the driving axis steps at every move, without where the other one does not.
void SetLineInPlane(Impl::StLine& line) {
  auto const [dx, dy, dz] = line.difference;
  int64 const lengthX = Impl::ClampedLength(dx), lengthY = Impl::ClampedLength(dy);
  bool const isXMajor = lengthX >= lengthY;
  // The shortest line of the quadrant knows the neighborhoods.
  bool const hasDiagonal =
      Impl::CBresenhamVisitor2D(Impl::Sign(dx), Impl::Sign(dy), line.neighborhood).DiagonalIn();
  line.steps = hasDiagonal ? std::max(lengthX, lengthY) : lengthX + lengthY;
  auto const other = EvenSteps(std::min(lengthX, lengthY), line.steps);
  auto const driving = hasDiagonal ? EvenSteps(line.steps, line.steps) : other.Complement();
  line.start.x.SetSteps(isXMajor ? driving : other, Impl::Sign(dx));
  line.start.y.SetSteps(isXMajor ? other : driving, Impl::Sign(dy));
}

void SetLineWithAllDiagonals(Impl::StLine& line) {
  auto const [dx, dy, dz] = line.difference;
  line.steps =
      std::max({Impl::TruncatedLength(dx), Impl::TruncatedLength(dy), Impl::TruncatedLength(dz)});
  auto const setSteps = [&](Impl::StLineAxis& axis, int64 component) {
    axis.SetSteps(EvenSteps(Impl::TruncatedLength(component), line.steps), Impl::Sign(component));
  };
  setSteps(line.start.x, dx);
  setSteps(line.start.y, dy);
  setSteps(line.start.z, dz);
}

void SetLineInSpace(Impl::StLine& line, Impl::CBresenhamVisitor3D const& space) {
  if (space.DiagonalMask() == c_allDiagonals) return SetLineWithAllDiagonals(line);
  line.list = Impl::CSharedMoves(space);
  line.steps = space.LastStep();
}

// The neighborhood of 14.1 has all diagonals of the octants whose components share one sign.
bool HasAllDiagonals(Impl::StLine const& line) {
  auto const [dx, dy, dz] = line.difference;
  return line.neighborhood == NEIGHBORHOOD_26 ||
         (line.neighborhood == NEIGHBORHOOD_14_1 && Impl::Sign(dx) == Impl::Sign(dy) &&
          Impl::Sign(dx) == Impl::Sign(dz));
}

void SetLineInSpace(Impl::StLine& line) {
  if (HasAllDiagonals(line)) return SetLineWithAllDiagonals(line);
  SetLineInSpace(line, Impl::CBresenhamVisitor3D(line.difference, line.neighborhood));
}

// The list of moves of a line in space, also of one that is walked without.
Impl::CBresenhamVisitor3D MovesInSpace(Impl::StLine const& line) {
  if (line.dimension != 3) return {};
  if (line.diagonal >= 0) return {line.difference, line.neighborhood, line.diagonal};
  return {line.difference, line.neighborhood};
}

Impl::StLine LineFrom(CTriple<int64> const& start, CTriple<int64> const& difference,
                      int64 dimension, int64 neighborhood, bool withEndPoints) {
  CheckReach(start, difference, dimension);
  Impl::StLine line;
  line.difference = difference;
  line.dimension = dimension;
  line.neighborhood = neighborhood;
  line.firstStep = withEndPoints ? 0 : 1;
  line.start = Impl::StLineCursor(start);
  switch (dimension) {
  case 1:
    SetLineAlongX(line);
    return line;
  case 2:
    SetLineInPlane(line);
    return line;
  case 3:
    SetLineInSpace(line);
    return line;
  default:
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "invalid dimension\n");
  }
}

bool IsInside(CTriple<int64> const& point, CTriple<int64> const& size, int64 dimension) {
  return point.x >= 0 && point.x < size.x &&
         (dimension < 2 || (point.y >= 0 && point.y < size.y)) &&
         (dimension < 3 || (point.z >= 0 && point.z < size.z));
}

} // namespace

namespace Impl {

struct CSharedMoves::StShared {
  std::atomic<std::size_t> holders{1};
  std::vector<CTriple<int64>> moves;
};

CSharedMoves::CSharedMoves(CBresenhamVisitor3D const& line) {
  auto const moves = line.Moves();
  auto shared = std::make_unique<StShared>();
  shared->moves.assign(moves.begin(), moves.end());
  m_Shared = shared.release();
  m_Moves = m_Shared->moves.data();
}

void CSharedMoves::Acquire(StShared& shared) noexcept {
  shared.holders.fetch_add(1, std::memory_order_relaxed);
}

void CSharedMoves::Release(StShared& shared) noexcept {
  if (shared.holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
    std::unique_ptr<StShared> const last(&shared);
}

StLine LineBetween(CTriple<int64> from, CTriple<int64> to, int64 dimension, int64 neighborhood,
                   bool withEndPoints) {
  return LineFrom(from, CheckedDifference(from, to, dimension), dimension, neighborhood,
                  withEndPoints);
}

StLine LineAlong(CTriple<int64> start, CTriple<double> direction, double length, int64 dimension,
                 int64 neighborhood, bool withEndPoints) {
  CTriple<int64> const difference(RoundedSaturated(direction.x * length),
                                  RoundedSaturated(direction.y * length),
                                  RoundedSaturated(direction.z * length));
  return LineFrom(start, difference, dimension, neighborhood, withEndPoints);
}

StLine LineUnderMask(CTriple<int64> difference, int64 diagonal) {
  StLine line;
  line.difference = difference;
  line.dimension = 3;
  line.diagonal = diagonal;
  if (diagonal == c_allDiagonals) {
    SetLineWithAllDiagonals(line);
  } else {
    SetLineInSpace(line, CBresenhamVisitor3D(difference, 0, diagonal));
  }
  return line;
}

} // namespace Impl

void CBresenhamVisitor::RaiseInStep(int64 dimension) {
  if (dimension == 0)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::Step"), "invalid dimension");
  constexpr std::array<char const*, 3> inner = {"ORVA::Impl::CBresenhamVisitor1D::Step",
                                                "ORVA::Impl::CBresenhamVisitor2D::Step",
                                                "ORVA::Impl::CBresenhamVisitor3D::Step"};
  Impl::Raise(ORVA_LOCATION(c_innerModule, inner.at(static_cast<std::size_t>(dimension - 1))),
              "Step i out of range");
}

void CBresenhamVisitor::RaiseInLastStep() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::LastStep"), "invalid dimension");
}

void CBresenhamVisitor::RaiseInReset() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::Reset"), "invalid dimension\n");
}

void CBresenhamVisitor::PrintMoves() const { MovesInSpace(m_Line).PrintMoves(); }
void CBresenhamVisitor::PrintProjMoves() const { MovesInSpace(m_Line).PrintProjMoves(); }

void CBresenhamVisitorSelect::RaiseInStep() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitorSelect::Step"),
              "Step i out of range");
}

CBresenhamVisitorSelect::CBresenhamVisitorSelect(CTriple<int64> from, CTriple<int64> to,
                                                 int64 dimension, int64 neighborhood,
                                                 bool withEndPoints)
    : m_Line(from, to, dimension, neighborhood, withEndPoints), m_SelectionStart(from) {
  Reset();
}

CBresenhamVisitorSelect::CBresenhamVisitorSelect(CTriple<int64> difference, int64 diagonal)
    : m_Line(difference, diagonal) {
  Reset();
}

void CBresenhamVisitorSelect::SetImageSize(CTriple<int64> size) {
  if (!m_IsClipped) {
    int64 const lastStep = m_Line.LastStep(), dimension = m_Line.Dim();
    int64 k = 0;
    CTriple<int64> point = m_SelectionStart;
    while (!IsInside(point, size, dimension) && k < lastStep) point += m_Line.Step(k++);
    m_SelectionStart = point;
    m_FirstSelected = k;
    for (; k < lastStep; ++k) {
      point += m_Line.Step(k);
      if (!IsInside(point, size, dimension)) break;
    }
    m_LastStepBound = k - m_FirstSelected;
    m_IsClipped = true;
  }
  Reset();
}

// Without end points the selection starts its search at the from point, with the line's second
// move: the cursor's fractions are the line's, its position is not.
void CBresenhamVisitorSelect::Reset() noexcept {
  Impl::StLine const& line = m_Line.m_Line;
  m_Next = line.start.MovedTo(m_SelectionStart, m_FirstSelected + line.firstStep);
  m_StepIndex = 0;
}

} // namespace ORVA
