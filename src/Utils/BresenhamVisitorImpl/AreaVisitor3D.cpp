#include "Utils/BresenhamVisitorImpl/RunLimits.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Impl/AxisMove.h>

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

void CBresenhamAreaVisitor3D::RaiseStatus() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::NextPoint"),
        "intern failure with Status in CBresenhamAreaVisitor3D");
}

void CBresenhamAreaVisitor3D::RaiseIndex(bool isStart) {
  Raise(ORVA_LOCATION(c_module, isStart
                                    ? "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentStartPoint"
                                    : "ORVA::Impl::CBresenhamAreaVisitor3D::GetCurrentEndPoint"),
        "index not valid");
}

CBresenhamAreaVisitor3D::CBresenhamAreaVisitor3D(std::vector<CTriple<int64>>& corners,
                                                 int64 neighborhood, bool border)
    : m_Neighborhood(neighborhood), m_Border(border) {
  m_Lists->corners = corners;
  if (m_Lists->corners.size() < 3)
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
  CheckSpan(m_Lists->corners,
            ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::SignBorder"));
  m_Lists->limits = {};
  SignEdges<CBresenhamVisitor3D>(*this, m_Lists->limits, m_Lists->corners, m_Neighborhood,
                                 m_Border);
  SortLimits(m_Lists->limits);
  EraseUselessBorders();
  if (!m_Border) EraseBorderPoints();
  CountSteps();
  Reset();
}

void CBresenhamAreaVisitor3D::SignStartPoints(CTriple<int64> start,
                                              CBresenhamVisitor3D const& line) {
  SampleColumns(m_Lists->limits.starts, start, line, std::less<>());
}

void CBresenhamAreaVisitor3D::SignEndPoints(CTriple<int64> start, CBresenhamVisitor3D const& line) {
  SampleColumns(m_Lists->limits.ends, start, line, std::greater<>());
}

void CBresenhamAreaVisitor3D::EraseUselessBorders() {
  EnPairing const pairing = PairLimits(m_Lists->limits, m_Border);
  if (pairing == EnPairing::Failed)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor3D::EraseUselessBorders"),
          "Failure in Start- and Endpoints");
  m_IsPairedByColumn = pairing == EnPairing::Whole &&
                       std::ranges::equal(m_Lists->limits.starts, m_Lists->limits.ends, {},
                                          &CTriple<int64>::x, &CTriple<int64>::x);
}

// The runs keep their ends, which the walk leaves out; what has nothing between them vanishes, and
// what leads from one column to another, which would meet other runs.
void CBresenhamAreaVisitor3D::EraseBorderPoints() {
  EraseOuterColumns(m_Lists->limits);
  FilterRuns(m_Lists->limits, [this](CTriple<int64>& start, CTriple<int64>& end) {
    return start.x == end.x && CBresenhamVisitor3D(end - start, m_Neighborhood).LastStep() >= 2;
  });
}

CBresenhamVisitor3D CBresenhamAreaVisitor3D::LineOfRun(std::size_t run) const {
  return {m_Lists->limits.ends[run] - m_Lists->limits.starts[run], m_Neighborhood};
}

void CBresenhamAreaVisitor3D::CountSteps() {
  m_Steps = 0;
  for (std::size_t k = 0; k < m_Lists->limits.Runs(); ++k)
    m_Steps += static_cast<std::uint64_t>(LineOfRun(k).LastStep() + (m_Border ? 1 : -1));
}

void CBresenhamAreaVisitor3D::Reset() {
  if (m_Lists->limits.Runs() == 0) {
    m_Status = 2;
    return;
  }
  CBresenhamVisitor3D line = LineOfRun(0); // may fail, and so comes before any change
  m_Later = m_Steps;
  BeginRun(std::move(line), 0);
  m_Actual = m_Lists->limits.starts.front();
  m_Status = 0;
}

void CBresenhamAreaVisitor3D::BeginRun(CBresenhamVisitor3D&& line, std::size_t run) noexcept {
  m_Lists->line = std::move(line);
  m_StartIndex = m_EndIndex = run;
  m_Next = m_Lists->limits.starts[run];
  m_StepIndex = 0;
  m_LastStep = m_Lists->line.LastStep();
  if (!m_Border) {
    m_Next += m_Lists->line.Step(m_StepIndex++);
    --m_LastStep;
  }
  m_Later = m_Later - (static_cast<std::uint64_t>(m_LastStep - m_StepIndex) + 1);
}

void CBresenhamAreaVisitor3D::BeginNextRun() {
  std::size_t const run = m_StartIndex + 1;
  if (run < m_Lists->limits.Runs()) {
    BeginRun(LineOfRun(run), run); // the line, which may fail, comes before any change
    m_Status = 1;
    return;
  }
  m_StartIndex = m_EndIndex = run;
  m_Status = 2;
}

StRun CBresenhamAreaVisitor3D::NextRun() {
  if (!MorePoints()) return {};
  CBresenhamVisitor3D const& line = m_Lists->line;
  CTriple<int64> const move = m_StepIndex < m_LastStep ? line.Step(m_StepIndex) : CTriple<int64>();
  int64 const axis = AxisOfMove(move);
  StRun run{m_Next, axis < 0 ? 0 : axis, 1};
  if (axis >= 0) {
    while (m_StepIndex < m_LastStep && line.Step(m_StepIndex) == move) {
      m_Next += move;
      ++m_StepIndex;
      ++run.length;
    }
  }
  try {
    NextPoint(); // the run's last one
  } catch (...) {
    m_Next = run.first;
    m_StepIndex -= run.length - 1;
    throw;
  }
  return run;
}

void CBresenhamAreaVisitor3D::PrintBorder() const { PrintLimits(m_Lists->limits); }

void CBresenhamAreaVisitor3D::PrintStatus() const {
  std::cout << "Status = " << m_Status << '\n';
  PrintPoint("m_Actual = (", m_Actual);
  if (m_StartIndex < m_Lists->limits.starts.size())
    PrintPoint("GetCurrentStartPoint = (", GetCurrentStartPoint());
  if (m_EndIndex < m_Lists->limits.ends.size())
    PrintPoint("GetCurrentEndPoint = (", GetCurrentEndPoint());
}

} // namespace ORVA::Impl
