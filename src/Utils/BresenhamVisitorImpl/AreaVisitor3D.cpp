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

// A line's moves by their numbers.
class CLineSteps {
public:
  explicit CLineSteps(StLine line) : m_Line(std::move(line)) {}
  [[nodiscard]] int64 LastStep() const { return m_Line.steps; }
  [[nodiscard]] CTriple<int64> Step(int64 i) const { return m_Line.Move(i); }

private:
  StLine m_Line;
};

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
  SignEdges(m_Lists->limits, m_Lists->corners, m_Border, [this](auto const& a, auto const& b) {
    return CLineSteps(LineBetween(a, b, 3, m_Neighborhood, true));
  });
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
    return start.x == end.x && LineBetween(start, end, 3, m_Neighborhood, true).steps >= 2;
  });
}

StLine CBresenhamAreaVisitor3D::LineOfRun(std::size_t run) const {
  return LineBetween(m_Lists->limits.starts[run], m_Lists->limits.ends[run], 3, m_Neighborhood,
                     true);
}

void CBresenhamAreaVisitor3D::CountSteps() {
  m_Steps = 0;
  for (std::size_t k = 0; k < m_Lists->limits.Runs(); ++k)
    m_Steps += static_cast<std::uint64_t>(LineOfRun(k).steps + (m_Border ? 1 : -1));
}

void CBresenhamAreaVisitor3D::Reset() {
  if (m_Lists->limits.Runs() == 0) {
    m_Status = 2;
    return;
  }
  StLine line = LineOfRun(0); // may fail, and so comes before any change
  m_Later = m_Steps;
  BeginRun(std::move(line), 0);
  m_Actual = m_Lists->limits.starts.front();
  m_Status = 0;
}

void CBresenhamAreaVisitor3D::BeginRun(StLine&& line, std::size_t run) noexcept {
  m_Lists->line = std::move(line);
  m_StartIndex = m_EndIndex = run;
  m_Next = m_Lists->line.start;
  m_StepIndex = 0;
  m_LastStep = m_Lists->line.steps;
  if (!m_Border) {
    m_Lists->line.Advance(m_Next, m_StepIndex++);
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
  StLineCursor const first = m_Next;
  StRun run{first.Get(), 0, 1};
  m_Lists->line.ExtendRun(run, m_Next, m_StepIndex, m_LastStep - m_StepIndex);
  m_StepIndex += run.length - 1;
  try {
    NextPoint(); // the run's last one
  } catch (...) {
    m_Next = first;
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
