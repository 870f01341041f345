#include <SeluUtils/DeltaVisitor.h>

#include "Utils/ImageWalker/Direction.h"

#include <SeluUtils/Impl/AxisMove.h>
#include <SeluUtils/LineVisitor.h>
#include <pxlib2core/Exception.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ImageWalker";
constexpr char c_initialize[] = "ORVA::CDeltaVisitor::Initialize";
constexpr char c_invalidLine[] = "Invalid Calculation of Line in CDeltaVisitor";

} // namespace

void CDeltaVisitor::RaiseNoMorePoints() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDeltaVisitor::NextPoint"), "No more Points");
}

void CDeltaVisitor::SetImageSize(CTriple<int64> extents) {
  m_ImageSize = extents;
  if (m_ImageSize.y == 0) m_ImageSize.z = 1;
  Initialize();
}

void CDeltaVisitor::SetDirection(CTriple<double> direction) {
  m_Direction = direction;
  Initialize();
}

uint64 CDeltaVisitor::Steps() const noexcept {
  if (m_Length == 0) return 0; // no line stands
  return static_cast<uint64>(m_ImageSize.x) * static_cast<uint64>(m_ImageSize.y) *
         static_cast<uint64>(m_ImageSize.z);
}

int64 CDeltaVisitor::MainAxis() const {
  if (!Impl::IsFinite(m_Direction))
    Impl::Raise(ORVA_LOCATION(c_module, c_initialize), "Invalid Direction given to CDeltaVisitor");
  return Impl::LargestAxis(m_Direction);
}

void CDeltaVisitor::Initialize() {
  m_Start = m_Offset = {};
  m_Previous = m_Index = 0;
  m_Length = m_Extent2 = m_Extent3 = 0; // no points until the line stands
  m_IsBorder = m_NextIsBorder = true;
  m_Line->clear();
  m_Axis = MainAxis();
  if (m_ImageSize.x <= 0 || m_ImageSize.y <= 0 || m_ImageSize.z <= 0) return;
  BuildLine();
}

CTriple<int64> CDeltaVisitor::FirstStart() const noexcept {
  auto const direction = Impl::MainAxisFirst(m_Axis, m_Direction);
  auto const extents = Impl::MainAxisFirst(m_Axis, m_ImageSize);
  return {direction.x < 0 ? extents.x - 1 : 0, direction.y < 0 ? extents.y - 1 : 0,
          direction.z < 0 ? extents.z - 1 : 0};
}

void CDeltaVisitor::Rewind() noexcept {
  m_Previous = m_Index = 0;
  m_IsBorder = m_NextIsBorder = true;
  m_Start = m_Offset = m_Length > 0 ? FirstStart() : CTriple<int64>();
}

uint64 CDeltaVisitor::Remaining() const noexcept {
  if (!MorePoints()) return 0;
  auto const linesAfter =
      static_cast<uint64>(m_Extent2 - 1 - m_Start.y) +
      static_cast<uint64>(m_Extent3 - 1 - m_Start.z) * static_cast<uint64>(m_Extent2);
  auto const length = static_cast<uint64>(static_cast<int64>(m_Length));
  return linesAfter * length + length - m_Index;
}

StRun CDeltaVisitor::NextRun() {
  if (!MorePoints()) return {};
  StRun run{NextPoint(), 0, 1};
  auto const step = [&](CTriple<int64> const& from) {
    bool const isInRow = MorePoints() && !m_NextIsBorder;
    return isInRow ? Impl::AxisOfMove(Convert((*m_Line)[m_Index] + m_Offset) - from) : int64{-1};
  };
  int64 const axis = step(run.first);
  if (axis < 0) return run;
  run.axis = axis;
  for (CTriple<int64> last = run.first; step(last) == axis; ++run.length) last = NextPoint();
  return run;
}

void CDeltaVisitor::BuildLine() {
  auto const direction = Impl::MainAxisFirst(m_Axis, m_Direction);
  auto const extents = Impl::MainAxisFirst(m_Axis, m_ImageSize);
  CTriple<int64> const start = FirstStart();
  auto const [nx, ny, nz] =
      CTriple<double>(static_cast<double>(extents.x), static_cast<double>(extents.y),
                      static_cast<double>(extents.z));
  bool const isFlat = m_ImageSize.z == 1;
  CBresenhamVisitor line(start, direction, std::sqrt(nx * nx + ny * ny + nz * nz), isFlat ? 2 : 3,
                         isFlat ? NEIGHBORHOOD_8 : NEIGHBORHOOD_26, true);
  if (line.Steps() < extents.x - 1)
    Impl::Raise(ORVA_LOCATION(c_module, c_initialize), c_invalidLine);
  std::vector<CTriple<int64>> points;
  points.reserve(static_cast<std::size_t>(extents.x));
  for (int64 i = 0; i < extents.x; ++i) points.push_back(line.NextPoint() - start);
  // Of a length beyond 32 bits so little can be left that another axis drives the line.
  if (std::abs(points.back().x) != extents.x - 1)
    Impl::Raise(ORVA_LOCATION(c_module, c_initialize), c_invalidLine);
  m_Line = std::move(points);
  m_Start = m_Offset = start;
  m_Length = extents.x;
  m_Extent2 = extents.y;
  m_Extent3 = extents.z;
}

void CDeltaVisitor::NextLine() noexcept {
  m_Index = 0;
  m_NextIsBorder = true;
  if (++m_Start.y >= m_Extent2) {
    m_Start.y = 0;
    if (++m_Start.z >= m_Extent3) m_Index = static_cast<uint64>(m_Length);
  }
  m_Offset = m_Start;
}

} // namespace ORVA
