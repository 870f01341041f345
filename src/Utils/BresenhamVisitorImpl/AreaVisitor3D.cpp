#include "Utils/BresenhamVisitorImpl/RunLimits.h"

#include <SeluBase/Neighborhood.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <utility>

namespace ORVA::Impl {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitorImpl";
constexpr char c_constructor[] = "ORVA::Impl::CBresenhamAreaVisitor3D::CBresenhamAreaVisitor3D";

void PrintPoint(char const* title, CTriple<int64> const& p) {
  std::cout << title << p.x << ", " << p.y << ", " << p.z << ")\n";
}

} // namespace

void RaiseAreaStatus3D() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::NextPoint"),
        "intern failure with Status in CBresenhamAreaVisitor3D");
}

void RaiseAreaIndex3D(bool isStart) {
  Raise(ORVA_LOCATION(c_module, isStart
                                    ? "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentStartPoint"
                                    : "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentEndPoint"),
        "index not valid");
}

CBresenhamAreaVisitor3D::CBresenhamAreaVisitor3D(std::vector<CTriple<int64>>& corners,
                                                 int64 neighborhood, bool border)
    : m_Neighborhood(neighborhood), m_Border(border), m_Corners(corners) {
  if (m_Corners.size() < 3)
    Raise(ORVA_LOCATION(c_module, c_constructor),
          "The area has to have at least three surrounding points, notice that it is necessary to "
          "sign the start point also as endpoint!");
  if (neighborhood != NEIGHBORHOOD_14_1 && neighborhood != NEIGHBORHOOD_26)
    Raise(ORVA_LOCATION(c_module, c_constructor),
          "Only 14_1 and 26 are valid neighborhoods for this application.");
  SignBorder();
  std::vector<CTriple<int64>>().swap(corners);
}

void CBresenhamAreaVisitor3D::SignBorder() {
  CheckSpan(m_Corners, ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::SignBorder"));
  m_Limits = {};
  SignEdges<CBresenhamVisitor3D>(*this, m_Limits, m_Corners, m_Neighborhood, m_Border);
  SortLimits(m_Limits);
  EraseUselessBorders();
  if (!m_Border) EraseBorderPoints();
  CountSteps();
  Reset();
}

void CBresenhamAreaVisitor3D::SignStartPoints(CTriple<int64> start,
                                              CBresenhamVisitor3D const& line) {
  SampleColumns(m_Limits.starts, start, line, std::less<>());
}

void CBresenhamAreaVisitor3D::SignEndPoints(CTriple<int64> start, CBresenhamVisitor3D const& line) {
  SampleColumns(m_Limits.ends, start, line, std::greater<>());
}

void CBresenhamAreaVisitor3D::EraseUselessBorders() {
  if (!PairLimits(m_Limits, m_Border))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::EraseUselessBorders"),
          "Failure in Start- and Endpoints");
  m_IsPairedByColumn = std::ranges::equal(m_Limits.starts, m_Limits.ends, {}, &CTriple<int64>::x,
                                          &CTriple<int64>::x);
}

// The runs keep their ends, which the walk leaves out; what has nothing between them vanishes, and
// what leads from one column to another, which would meet other runs.
void CBresenhamAreaVisitor3D::EraseBorderPoints() {
  EraseOuterColumns(m_Limits);
  FilterRuns(m_Limits, [this](CTriple<int64>& start, CTriple<int64>& end) {
    return start.x == end.x && CBresenhamVisitor3D(end - start, m_Neighborhood).LastStep() >= 2;
  });
}

CBresenhamVisitor3D CBresenhamAreaVisitor3D::LineOfRun(std::size_t run) const {
  return {m_Limits.ends[run] - m_Limits.starts[run], m_Neighborhood};
}

void CBresenhamAreaVisitor3D::CountSteps() {
  m_Steps = 0;
  for (std::size_t k = 0; k < m_Limits.Runs(); ++k)
    m_Steps += static_cast<std::uint64_t>(LineOfRun(k).LastStep() + (m_Border ? 1 : -1));
}

void CBresenhamAreaVisitor3D::Reset() {
  if (m_Limits.Runs() == 0) {
    m_Status = 2;
    return;
  }
  BeginRun(LineOfRun(0), 0);
  m_Actual = m_Limits.starts.front();
  m_Status = 0;
}

void CBresenhamAreaVisitor3D::BeginRun(CBresenhamVisitor3D&& line, std::size_t run) noexcept {
  m_Line = std::move(line);
  m_StartIndex = m_EndIndex = run;
  m_Next = m_Limits.starts[run];
  m_StepIndex = 0;
  m_LastStep = m_Line.LastStep();
  if (m_Border) return;
  m_Next += m_Line.Step(m_StepIndex++);
  --m_LastStep;
}

void CBresenhamAreaVisitor3D::BeginNextRun() {
  std::size_t const run = m_StartIndex + 1;
  if (run < m_Limits.Runs()) {
    BeginRun(LineOfRun(run), run); // the line, which may fail, comes before any change
    m_Status = 1;
    return;
  }
  m_StartIndex = m_EndIndex = run;
  m_Status = 2;
}

void CBresenhamAreaVisitor3D::PrintBorder() const { PrintLimits(m_Limits); }

void CBresenhamAreaVisitor3D::PrintStatus() const {
  std::cout << "Status = " << m_Status << '\n';
  PrintPoint("m_Actual = (", m_Actual);
  if (m_StartIndex < m_Limits.starts.size())
    PrintPoint("GetCurrentStartPoint = (", GetCurrentStartPoint());
  if (m_EndIndex < m_Limits.ends.size()) PrintPoint("GetCurrentEndPoint = (", GetCurrentEndPoint());
}

} // namespace ORVA::Impl
