#include <SeluUtils/RunVisitor.h>
#include <pxlib2core/Exception.h>

#include <algorithm>
#include <utility>

namespace ORVA {

namespace {

uint64 Length(Impl::StRow const& row) { return uint64{row.high} - row.low + 1; }

uint64 CountPoints(std::vector<Impl::StRow> const& rows) {
  uint64 points = 0;
  for (Impl::StRow const& row : rows) {
    uint64 const sum = points + Length(row);
    if (sum < points)
      Impl::RaiseBadParam(ORVA_LOCATION("src/Utils/RunVisitor", "ORVA::CRunVisitor::CRunVisitor"),
                          "the region has more points than 64 bits count");
    points = sum;
  }
  return points;
}

// What is left of a range of offsets from an origin in 0 ... extent - 1: nothing where low > high.
std::pair<int64, int64> Clipped(int64 origin, uint64 low, uint64 high, int64 extent) {
  return {std::max<int64>(origin + static_cast<int64>(low), 0),
          std::min(origin + static_cast<int64>(high), std::max<int64>(extent, 0) - 1)};
}

} // namespace

CRunVisitor::CRunVisitor(Impl::StRegion region)
    : m_Region(std::move(region)), m_Steps(CountPoints(m_Region->rows)) {
  Rewind();
}

void CRunVisitor::Rewind() noexcept {
  m_Run = 0;
  m_Later = m_Steps;
  EnterRun();
}

void CRunVisitor::LeaveRun() noexcept {
  if (m_LeftInRun == 0) return;
  ++m_Run;
  EnterRun();
}

void CRunVisitor::EnterRun() noexcept {
  if (m_Run >= m_Region->rows.size()) {
    m_LeftInRun = 0;
    m_X = m_Y = m_Z = 0;
    return;
  }
  Impl::StRow const& row = m_Region->rows[m_Run];
  m_X = m_Region->origin.x + int64{row.low};
  m_Y = m_Region->origin.y + int64{row.y};
  m_Z = m_Region->origin.z + int64{row.z};
  m_LeftInRun = static_cast<int64>(Length(row));
  m_Later -= Length(row);
}

void CRunVisitor::SetImageSize(CTriple<int64> size) noexcept {
  auto const isIn = [](int64 coordinate, int64 extent) {
    return coordinate >= 0 && coordinate < extent;
  };
  std::size_t kept = 0;
  uint64 points = 0;
  for (Impl::StRow const& row : m_Region->rows) {
    auto const [low, high] = Clipped(m_Region->origin.x, row.low, row.high, size.x);
    if (low > high || !isIn(m_Region->origin.y + int64{row.y}, size.y) ||
        !isIn(m_Region->origin.z + int64{row.z}, size.z))
      continue;
    Impl::StRow const clipped{row.z, row.y, static_cast<std::uint32_t>(low - m_Region->origin.x),
                              static_cast<std::uint32_t>(high - m_Region->origin.x)};
    m_Region->rows[kept++] = clipped;
    points += Length(clipped);
  }
  m_Region->rows.erase(m_Region->rows.begin() + static_cast<std::ptrdiff_t>(kept),
                       m_Region->rows.end());
  m_Steps = points;
  Rewind();
}

} // namespace ORVA
