#include <SeluUtils/UnitLineVisitor.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <limits>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ImageWalker";

constexpr std::array<int64 CTriple<int64>::*, 3> c_axes = {&CTriple<int64>::x, &CTriple<int64>::y,
                                                           &CTriple<int64>::z};

bool IsUnit(int64 component) { return component >= -1 && component <= 1; }

uint64 Difference(int64 low, int64 high) {
  return static_cast<uint64>(high) - static_cast<uint64>(low);
}

} // namespace

CUnitLineVisitor::CUnitLineVisitor(CTriple<int64> low, CTriple<int64> high,
                                   CTriple<int64> direction)
    : m_Low(low), m_High(high) {
  SetDirection(direction);
}

void CUnitLineVisitor::SetDirection(CTriple<int64> direction) {
  auto const [x, y, z] = direction;
  if (!IsUnit(x) || !IsUnit(y) || !IsUnit(z) || direction == CTriple<int64>())
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CUnitLineVisitor::SetDirection"),
        CString("direction (%1, %2, %3) is none of the 26 unit directions").Arg(x).Arg(y).Arg(z));
  m_Direction = direction;
  Start();
}

void CUnitLineVisitor::SetImageSize(CTriple<int64> extents) noexcept {
  Impl::Clip(m_Low, m_High, extents);
  Start();
}

uint64 CUnitLineVisitor::Steps() const noexcept {
  return empty() ? 0 : CWindowVisitor(m_Low, m_High).Steps();
}

void CUnitLineVisitor::Start() noexcept {
  m_Axis = 0;
  m_LeftInLine = 0;
  m_Starts = CWindowVisitor();
  m_HasPoints = !empty();
  m_InLaterLines = Steps();
  if (!m_HasPoints) {
    m_Current = {};
    return;
  }
  BeginFace();
  NextLine();
}

// The face across m_Axis through which the direction enters, without the voxels on those before it.
void CUnitLineVisitor::BeginFace() noexcept {
  auto const across = static_cast<std::size_t>(m_Axis);
  if (m_Direction.*c_axes[across] == 0) return;
  CTriple<int64> low = m_Low, high = m_High;
  auto const enter = [&](std::size_t axis) {
    return m_Direction.*c_axes[axis] > 0 ? m_Low.*c_axes[axis] : m_High.*c_axes[axis];
  };
  low.*c_axes[across] = high.*c_axes[across] = enter(across);
  for (std::size_t axis = 0; axis < across; ++axis) {
    int64 const step = m_Direction.*c_axes[axis];
    if (step == 0) continue;
    if (m_Low.*c_axes[axis] == m_High.*c_axes[axis]) return; // all of it is on the one before
    CTriple<int64>& trimmed = step > 0 ? low : high;
    trimmed.*c_axes[axis] += step;
  }
  m_Starts = CWindowVisitor(low, high);
}

void CUnitLineVisitor::NextLine() noexcept {
  while (!m_Starts.MorePoints() && m_Axis < 2) {
    ++m_Axis;
    BeginFace();
  }
  m_HasPoints = m_Starts.MorePoints();
  if (m_HasPoints) BeginLine(m_Starts.NextPoint());
}

void CUnitLineVisitor::BeginLine(CTriple<int64> const& start) noexcept {
  uint64 behind = std::numeric_limits<uint64>::max();
  for (auto const axis : c_axes) {
    int64 const step = m_Direction.*axis;
    if (step > 0) behind = std::min(behind, Difference(start.*axis, m_High.*axis));
    if (step < 0) behind = std::min(behind, Difference(m_Low.*axis, start.*axis));
  }
  m_Current = Impl::StMovingPoint(start);
  m_LeftInLine = behind;
  m_InLaterLines -= behind + 1;
}

StRun CUnitLineVisitor::NextRun() noexcept {
  if (!m_HasPoints) return {};
  int64 const axis = Impl::AxisOfMove(m_Direction);
  constexpr auto longest = static_cast<uint64>(std::numeric_limits<int64>::max());
  if (axis < 0 || m_LeftInLine >= longest) return {NextPoint(), 0, 1};
  StRun const run{m_Current.Get(), axis, static_cast<int64>(m_LeftInLine) + 1};
  m_LeftInLine = 0;
  NextLine();
  return run;
}

} // namespace ORVA
