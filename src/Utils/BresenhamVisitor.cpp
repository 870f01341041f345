#include <SeluUtils/LineVisitor.h>

#include "BresenhamVisitor/Rounding.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_constructor[] = "ORVA::CBresenhamVisitor::CBresenhamVisitor";

CTriple<int64> Point(CSize const& size) { return {size.x, size.y, size.z}; }

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

bool IsInside(CTriple<int64> const& point, CTriple<int64> const& size, int64 dimension) {
  return point.x >= 0 && point.x < size.x &&
         (dimension < 2 || (point.y >= 0 && point.y < size.y)) &&
         (dimension < 3 || (point.z >= 0 && point.z < size.z));
}

} // namespace

namespace Impl {

void RaiseInvalidDimensionInStep() {
  Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::Step"), "invalid dimension");
}
void RaiseInvalidDimensionInLastStep() {
  Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::LastStep"), "invalid dimension");
}
void RaiseSelectedStepOutOfRange() {
  Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitorSelect::Step"), "Step i out of range");
}

} // namespace Impl

CBresenhamVisitor::CBresenhamVisitor(CTriple<int64> from, CTriple<int64> to, int64 dimension,
                                     int64 neighborhood, bool withEndPoints)
    : m_Difference(CheckedDifference(from, to, dimension)), m_Dimension(dimension),
      m_Neighborhood(neighborhood), m_FirstInnerStep(withEndPoints ? 0 : 1), m_Start(from) {
  Build();
}

CBresenhamVisitor::CBresenhamVisitor(CSize from, CSize to, int64 dimension, int64 neighborhood,
                                     bool withEndPoints)
    : CBresenhamVisitor(Point(from), Point(to), dimension, neighborhood, withEndPoints) {}

CBresenhamVisitor::CBresenhamVisitor(CTriple<int64> start, CTriple<double> direction, double length,
                                     int64 dimension, int64 neighborhood, bool withEndPoints)
    : m_Difference(Impl::RoundedSaturated(direction.x * length),
                   Impl::RoundedSaturated(direction.y * length),
                   Impl::RoundedSaturated(direction.z * length)),
      m_Dimension(dimension), m_Neighborhood(neighborhood), m_FirstInnerStep(withEndPoints ? 0 : 1),
      m_Start(start) {
  Build();
}

CBresenhamVisitor::CBresenhamVisitor(CTriple<int64> difference, int64 diagonal)
    : m_Difference(difference), m_Dimension(3), m_Line3D(difference, 0, diagonal) {
  Start();
}

void CBresenhamVisitor::Build() {
  CheckReach(m_Start, m_Difference, m_Dimension);
  switch (m_Dimension) {
  case 1:
    m_Line1D = Impl::CBresenhamVisitor1D(m_Difference.x);
    break;
  case 2:
    m_Line2D = Impl::CBresenhamVisitor2D(m_Difference.x, m_Difference.y, m_Neighborhood);
    break;
  case 3:
    m_Line3D = Impl::CBresenhamVisitor3D(m_Difference, m_Neighborhood);
    break;
  default:
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "invalid dimension\n");
  }
  Start();
}

void CBresenhamVisitor::Start() {
  m_LastStepBound = InnerSteps();
  m_Next = Impl::StMovingPoint(m_Start);
  if (m_FirstInnerStep == 0) return;
  m_Next.MoveBy(InnerStep(0));
  m_LastStepBound -= 2;
}

void CBresenhamVisitor::Reset() {
  if (m_Dimension < 1 || m_Dimension > 3)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamVisitor::Reset"), "invalid dimension\n");
  m_Next = Impl::StMovingPoint(m_Start);
  m_StepIndex = 0;
  if (m_FirstInnerStep == 0) return;
  m_Next.MoveBy(InnerStep(0));
  m_LastStepBound -= 2; // the bound is not restored first: each rewind shortens the walk
}

void CBresenhamVisitor::PrintMoves() const { m_Line3D.PrintMoves(); }
void CBresenhamVisitor::PrintProjMoves() const { m_Line3D.PrintProjMoves(); }

CBresenhamVisitorSelect::CBresenhamVisitorSelect(CTriple<int64> from, CTriple<int64> to,
                                                 int64 dimension, int64 neighborhood,
                                                 bool withEndPoints)
    : m_Line(from, to, dimension, neighborhood, withEndPoints), m_SelectionStart(from),
      m_Next(from) {}

CBresenhamVisitorSelect::CBresenhamVisitorSelect(CSize from, CSize to, int64 dimension,
                                                 int64 neighborhood, bool withEndPoints)
    : CBresenhamVisitorSelect(Point(from), Point(to), dimension, neighborhood, withEndPoints) {}

CBresenhamVisitorSelect::CBresenhamVisitorSelect(CTriple<int64> difference, int64 diagonal)
    : m_Line(difference, diagonal) {}

void CBresenhamVisitorSelect::SetImageSize(CTriple<int64> size) {
  if (!m_IsClipped) {
    int64 const lastStep = m_Line.LastStep(), dimension = m_Line.Dim();
    int64 k = 0;
    CTriple<int64> point = m_SelectionStart;
    while (!IsInside(point, size, dimension) && k < lastStep) point += m_Line.Step(k++);
    CTriple<int64> const start = point;
    std::vector<CTriple<int64>> selected;
    while (k < lastStep) {
      CTriple<int64> const move = m_Line.Step(k++);
      point += move;
      if (!IsInside(point, size, dimension)) break;
      selected.push_back(move);
    }
    m_Selected = std::move(selected);
    m_SelectionStart = start;
    m_IsClipped = true;
  }
  Reset();
}

void CBresenhamVisitorSelect::Reset() noexcept {
  m_Next = Impl::StMovingPoint(m_SelectionStart);
  m_StepIndex = 0;
}

} // namespace ORVA
