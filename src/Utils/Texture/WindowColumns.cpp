#include "Utils/Texture/WindowColumns.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ORVA::Impl {

namespace {

template <class Level>
std::uint32_t Load(std::byte const* address) noexcept {
  Level level;
  std::memcpy(&level, address, sizeof level);
  return level;
}

// The positions along one axis from which a displacement stays inside an extent.
struct StRange {
  int64 low, high; // high excluded
};
StRange Inside(int64 extent, int64 displacement) noexcept {
  return {std::max<int64>(0, -displacement), extent - std::max<int64>(0, displacement)};
}

template <std::size_t N, class Values>
void AddTo(std::array<int64, N>& sums, Values const& values) noexcept {
  for (std::size_t k = 0; k < values.size(); ++k) sums[k] += values[k];
}
template <std::size_t N, class Values>
void SubtractFrom(std::array<int64, N>& sums, Values const& values) noexcept {
  for (std::size_t k = 0; k < values.size(); ++k) sums[k] -= values[k];
}

} // namespace

StLinearSums& StLinearSums::operator+=(StLinearSums const& other) noexcept {
  AddTo(difference, other.difference);
  AddTo(sum, other.sum);
  AddTo(first, other.first);
  return *this;
}

StLinearSums& StLinearSums::operator-=(StLinearSums const& other) noexcept {
  SubtractFrom(difference, other.difference);
  SubtractFrom(sum, other.sum);
  SubtractFrom(first, other.first);
  return *this;
}

StLinearTables::StLinearTables(StWindowUnits const& units) {
  for (int64 d = 0; d < units.levels; ++d) {
    auto const& w = units.inverse[static_cast<std::size_t>(d)];
    difference.push_back({1, d, d * d, w[0], w[1], w[2], w[3], w[4]});
  }
  for (int64 s = 1 - units.levels; s < units.levels; ++s)
    sum.push_back({s, s * s, s * s * s, units.levels > c_mostProminenceLevels ? 0 : s * s * s * s});
  for (int64 i = 1; i <= units.levels; ++i) first.push_back({i, i * i});
}

CPairColumns::CPairColumns(StLevelPixels const& pixels, StPairBox const& box, StPairKey const& key,
                           StLinearTables const& tables, bool needsKeys)
    : m_Pixels(pixels), m_Tables(tables), m_Box(box), m_Key(key),
      m_PerColumn(needsKeys || !KeepsRows() ? static_cast<std::size_t>(box.side[1] * box.side[2])
                                            : 0) {}

void CPairColumns::Start(Vector const& center, int64 columns, int64 down) {
  for (std::size_t k = 0; k < 3; ++k) m_First[k] = center[k] + m_Box.low[k];
  m_Top = m_First[1];
  m_Columns = static_cast<std::size_t>(columns);
  m_Rows = down + m_Box.side[1];
  if (KeepsRows()) {
    m_RowSums.assign(static_cast<std::size_t>(m_Rows) * m_Columns, {});
    for (int64 z = 0; z < m_Box.side[2]; ++z) AddPlane(m_First[2] + z);
  }
  StartSlice();
}

void CPairColumns::MoveOn(int64 slices) {
  m_First[1] = m_Top;
  int64 const moved = std::min(slices, m_Box.side[2]);
  if (KeepsRows()) {
    for (int64 z = 0; z < moved; ++z) SubtractPlane(m_First[2] + z);
    for (int64 z = m_Box.side[2] - moved; z < m_Box.side[2]; ++z) AddPlane(m_First[2] + slices + z);
  }
  m_First[2] += slices;
  StartSlice();
}

void CPairColumns::StartSlice() {
  m_Keys.assign(m_Columns * m_PerColumn, StPairKey::c_none);
  m_Linear.assign(m_Columns, {});
  for (int64 y = 0; y < m_Box.side[1]; ++y) {
    AddRow(m_First[1] + y);
    WriteRow(m_First[1] + y);
  }
}

void CPairColumns::MoveDown(int64 rows) {
  int64 const moved = std::min(rows, m_Box.side[1]);
  for (int64 y = 0; y < moved; ++y) SubtractRow(m_First[1] + y);
  m_First[1] += rows;
  for (int64 y = m_Box.side[1] - moved; y < m_Box.side[1]; ++y) {
    AddRow(m_First[1] + y);
    WriteRow(m_First[1] + y);
  }
}

StLinearSums* CPairColumns::Row(int64 y) noexcept {
  return m_RowSums.data() + static_cast<std::size_t>(y - m_Top) * m_Columns;
}

void CPairColumns::AddRow(int64 y) {
  if (!KeepsRows()) return;
  auto const* row = Row(y);
  for (StLinearSums& sums : m_Linear) sums += *row++;
}

void CPairColumns::SubtractRow(int64 y) {
  if (!KeepsRows()) return;
  auto const* row = Row(y);
  for (StLinearSums& sums : m_Linear) sums -= *row++;
}

void CPairColumns::AddPlane(int64 z) {
  for (int64 y = m_Top; y < m_Top + m_Rows; ++y)
    ForEachPair(y, z, [this, row = Row(y)](std::uint32_t key) mutable {
      if (key != StPairKey::c_none) Add(*row, key);
      ++row;
    });
}

void CPairColumns::SubtractPlane(int64 z) {
  for (int64 y = m_Top; y < m_Top + m_Rows; ++y)
    ForEachPair(y, z, [this, row = Row(y)](std::uint32_t key) mutable {
      if (key != StPairKey::c_none) Subtract(*row, key);
      ++row;
    });
}

// Puts the keys of a row into the ring. Without depth the sums follow from the keys that they
// replace.
void CPairColumns::WriteRow(int64 y) {
  if (m_PerColumn == 0) return;
  bool const keepsSums = !KeepsRows();
  int64 const ring = ((y % m_Box.side[1]) + m_Box.side[1]) % m_Box.side[1];
  for (int64 z = 0; z < m_Box.side[2]; ++z) {
    auto* place = m_Keys.data() + ring * m_Box.side[2] + z;
    ForEachPair(y, m_First[2] + z,
                [this, keepsSums, place, sums = m_Linear.data()](std::uint32_t key) mutable {
                  if (keepsSums && key != *place) {
                    if (*place != StPairKey::c_none) Subtract(*sums, *place);
                    if (key != StPairKey::c_none) Add(*sums, key);
                  }
                  *place = key;
                  place += m_PerColumn;
                  ++sums;
                });
  }
}

template <class Visit>
void CPairColumns::ForEachPair(int64 y, int64 z, Visit visit) const {
  if (m_Pixels.bytes == 1)
    ForEachPairOf<std::uint8_t>(y, z, visit);
  else
    ForEachPairOf<std::uint16_t>(y, z, visit);
}

// One pair of each column; a row that lies outside of the image has none.
template <class Level, class Visit>
void CPairColumns::ForEachPairOf(int64 y, int64 z, Visit visit) const {
  auto const& d = m_Box.displacement;
  auto const& [nx, ny, nz] = m_Pixels.extent;
  StRange const inX = Inside(nx, d[0]), inY = Inside(ny, d[1]), inZ = Inside(nz, d[2]);
  bool const isInside = inY.low <= y && y < inY.high && inZ.low <= z && z < inZ.high;
  auto const count = static_cast<int64>(m_Columns);
  int64 const begin = isInside ? std::clamp<int64>(inX.low - m_First[0], 0, count) : count;
  int64 const end = isInside ? std::clamp<int64>(inX.high - m_First[0], begin, count) : count;
  for (int64 x = 0; x < begin; ++x) visit(StPairKey::c_none);
  if (begin < end) {
    auto const& [stepX, stepY, stepZ] = m_Pixels.stride;
    auto const* first = m_Pixels.base + (m_First[0] + begin - m_Pixels.low[0]) * stepX +
                        (y - m_Pixels.low[1]) * stepY + (z - m_Pixels.low[2]) * stepZ;
    auto const levels = static_cast<std::uint32_t>(m_Pixels.levels);
    int64 const toSecond = d[0] * stepX + d[1] * stepY + d[2] * stepZ;
    for (int64 x = begin; x < end; ++x, first += stepX) {
      // Less 1, outside is the greatest number; so is a level that should not be there.
      std::uint32_t i = Load<Level>(first) - 1, j = Load<Level>(first + toSecond) - 1;
      if (m_Key.isSymmetric && i > j) std::swap(i, j);
      visit(i >= levels || j >= levels ? StPairKey::c_none : i << m_Key.bits | j);
    }
  }
  for (int64 x = end; x < count; ++x) visit(StPairKey::c_none);
}

void CPairColumns::Add(StLinearSums& sums, std::uint32_t key) const noexcept {
  auto const i = m_Key.First(key), j = m_Key.Second(key);
  AddTo(sums.difference, m_Tables.difference[Distance(i, j)]);
  AddTo(sums.sum, m_Tables.sum[i + j]);
  AddTo(sums.first, m_Tables.first[i]);
}

void CPairColumns::Subtract(StLinearSums& sums, std::uint32_t key) const noexcept {
  auto const i = m_Key.First(key), j = m_Key.Second(key);
  SubtractFrom(sums.difference, m_Tables.difference[Distance(i, j)]);
  SubtractFrom(sums.sum, m_Tables.sum[i + j]);
  SubtractFrom(sums.first, m_Tables.first[i]);
}

} // namespace ORVA::Impl
