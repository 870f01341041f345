#include "Utils/BresenhamVisitorImpl/RunLimits.h"

#include <functional>

namespace ORVA::Impl {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitorImpl";

} // namespace

void CBresenhamAreaVisitor2D::RaiseStatus() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor2D::NextPoint"),
        "intern failure with Status in CBresenhamAreaVisitor2D");
}

void CBresenhamAreaVisitor2D::RaiseIndex(bool isStart) {
  Raise(ORVA_LOCATION(c_module, isStart
                                    ? "ORVA::Impl::CBresenhamAreaVisitor2D::GetCurrentStartPoint"
                                    : "ORVA::Impl::CBresenhamAreaVisitor2D::GetCurrentEndPoint"),
        "index not valid");
}

CBresenhamAreaVisitor2D::CBresenhamAreaVisitor2D(std::vector<CTriple<int64>>& corners,
                                                 int64 neighborhood, bool border)
    : m_Neighborhood(neighborhood), m_Border(border) {
  m_Lists->corners = corners;
  if (m_Lists->corners.size() < 3)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor2D::CBresenhamAreaVisitor2D"),
          "The area has to have at least three surrounding points!");
  SignBorder();
  std::vector<CTriple<int64>>().swap(corners);
}

void CBresenhamAreaVisitor2D::SignBorder() {
  CheckSpan(m_Lists->corners,
            ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor2D::SignBorder"));
  // Lines refuse a change of z; edges that need no line must not let one pass.
  for (CTriple<int64> const& corner : m_Lists->corners)
    if (corner.z != m_Lists->corners.front().z)
      CBresenhamVisitor2D(corner - m_Lists->corners.front(), m_Neighborhood);
  m_Lists->limits = {};
  SignEdges(m_Lists->limits, m_Lists->corners, m_Border, [this](auto const& a, auto const& b) {
    return CBresenhamVisitor2D(b - a, m_Neighborhood);
  });
  SortLimits(m_Lists->limits);
  EraseUselessBorders();
  if (!m_Border) EraseBorderPoints();
  CountSteps();
  Reset();
}

void CBresenhamAreaVisitor2D::SignStartPoints(CTriple<int64> start,
                                              CBresenhamVisitor2D const& line) {
  m_LeftBeforeEnd = 0;
  SampleColumns(m_Lists->limits.starts, start, line, std::less<>());
}

void CBresenhamAreaVisitor2D::SignEndPoints(CTriple<int64> start, CBresenhamVisitor2D const& line) {
  m_LeftBeforeEnd = 0;
  SampleColumns(m_Lists->limits.ends, start, line, std::greater<>());
}

// Without border the message names the 3D class; callers know both texts.
void CBresenhamAreaVisitor2D::EraseUselessBorders() {
  m_LeftBeforeEnd = 0;
  if (PairLimits(m_Lists->limits, m_Border) != EnPairing::Failed) return;
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamAreaVisitor2D::EraseUselessBorders"),
        m_Border ? "intern failure in Border Calculation in CBresenhamAreaVisitor2D"
                 : "intern failure in Border Calculation in CBresenhamAreaVisitor3D");
}

void CBresenhamAreaVisitor2D::EraseBorderPoints() {
  m_LeftBeforeEnd = 0;
  EraseOuterColumns(m_Lists->limits);
  FilterRuns(m_Lists->limits, [](CTriple<int64>& start, CTriple<int64>& end) {
    // Concave outlines can pair across columns: such a run has no end to be reached.
    if (start.x != end.x || end.y - start.y < 2) return false;
    ++start.y;
    --end.y;
    return true;
  });
}

void CBresenhamAreaVisitor2D::CountSteps() {
  m_Steps = 0;
  for (std::size_t k = 0; k < m_Lists->limits.Runs(); ++k) {
    int64 const low = m_Lists->limits.starts[k].y, high = m_Lists->limits.ends[k].y;
    if (low <= high)
      m_Steps += static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
  }
}

void CBresenhamAreaVisitor2D::Reset() noexcept {
  m_StartIndex = 0;
  m_EndIndex = 0;
  m_LeftBeforeEnd = 0;
  m_Later = m_Steps;
  m_Actual = m_Lists->limits.starts.empty() ? CTriple<int64>() : m_Lists->limits.starts.front();
  m_Status = m_Steps != 0 ? 0 : 2;
}

// A run's first and last point, and what the limits say of any other.
CTriple<int64> CBresenhamAreaVisitor2D::NextAtLimit() {
  if (m_Status == 1) {
    CTriple<int64> const& start = GetCurrentStartPoint();
    if (LexicographicLess(m_Actual, start)) {
      m_Actual = start;
    } else {
      ++m_Actual.y;
    }
  } else if (m_Status == 0) {
    m_Status = 1;
  } else if (m_Status == 2) {
    return {};
  } else {
    RaiseStatus();
  }
  CTriple<int64> const& end = GetCurrentEndPoint();
  m_Later = m_Later - 1;
  if (m_Actual == end) {
    ++m_StartIndex;
    ++m_EndIndex;
    if (m_StartIndex >= m_Lists->limits.starts.size() || m_EndIndex >= m_Lists->limits.ends.size())
      m_Status = 2;
  } else if (m_Actual.x == end.x && m_Actual.y < end.y && m_Actual.z == end.z &&
             !LexicographicLess(m_Actual, GetCurrentStartPoint())) {
    m_LeftBeforeEnd = end.y - m_Actual.y - 1;
    m_Later = m_Later - static_cast<std::uint64_t>(static_cast<int64>(m_LeftBeforeEnd));
  }
  return m_Actual;
}

StRun CBresenhamAreaVisitor2D::NextRun() {
  if (!MorePoints()) return {};
  StRun run{NextPoint(), 1, 1};
  run.length += m_LeftBeforeEnd;
  m_Actual.y += m_LeftBeforeEnd;
  m_LeftBeforeEnd = 0;
  bool const isBeforeEnd = m_Status == 1 &&
                           GetCurrentEndPoint() == m_Actual + CTriple<int64>(0, 1, 0) &&
                           !LexicographicLess(m_Actual, GetCurrentStartPoint());
  if (isBeforeEnd) {
    NextPoint();
    ++run.length;
  }
  return run;
}

void CBresenhamAreaVisitor2D::PrintBorder() const { PrintLimits(m_Lists->limits); }

} // namespace ORVA::Impl
