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
                           StLinearTables const& tables)
    : m_Pixels(pixels), m_Tables(tables), m_Box(box), m_Key(key),
      m_PerColumn(static_cast<std::size_t>(box.side[1] * box.side[2])) {}

void CPairColumns::Start(Vector const& center, int64 count) {
  for (std::size_t k = 0; k < 3; ++k) m_First[k] = center[k] + m_Box.low[k];
  m_Count = count;
  m_Keys.assign(static_cast<std::size_t>(count) * m_PerColumn, StPairKey::c_none);
  m_Linear.assign(static_cast<std::size_t>(count), {});
  for (int64 y = 0; y < m_Box.side[1]; ++y) WriteRow(m_First[1] + y);
}

void CPairColumns::MoveDown(int64 rows) {
  m_First[1] += rows;
  for (int64 y = std::max<int64>(0, m_Box.side[1] - rows); y < m_Box.side[1]; ++y)
    WriteRow(m_First[1] + y);
}

void CPairColumns::WriteRow(int64 y) {
  int64 const ring = ((y % m_Box.side[1]) + m_Box.side[1]) % m_Box.side[1];
  for (int64 z = 0; z < m_Box.side[2]; ++z) {
    auto* const keys = m_Keys.data() + ring * m_Box.side[2] + z;
    if (m_Pixels.bytes == 1)
      WriteRow<std::uint8_t>(keys, y, m_First[2] + z);
    else
      WriteRow<std::uint16_t>(keys, y, m_First[2] + z);
  }
}

// One pair of each column; a row that lies outside of the image has none.
template <class Level>
void CPairColumns::WriteRow(std::uint32_t* keys, int64 y, int64 z) {
  auto const& d = m_Box.displacement;
  auto const& [nx, ny, nz] = m_Pixels.extent;
  StRange const inX = Inside(nx, d[0]), inY = Inside(ny, d[1]), inZ = Inside(nz, d[2]);
  bool const isInside = inY.low <= y && y < inY.high && inZ.low <= z && z < inZ.high;
  int64 const begin = isInside ? std::clamp<int64>(inX.low - m_First[0], 0, m_Count) : m_Count;
  int64 const end = isInside ? std::clamp<int64>(inX.high - m_First[0], begin, m_Count) : m_Count;
  auto* sums = m_Linear.data();
  auto const put = [&](std::uint32_t key) {
    Put(*keys, *sums++, key);
    keys += m_PerColumn;
  };
  for (int64 x = 0; x < begin; ++x) put(StPairKey::c_none);
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
      put(i >= levels || j >= levels ? StPairKey::c_none : i << m_Key.bits | j);
    }
  }
  for (int64 x = end; x < m_Count; ++x) put(StPairKey::c_none);
}

void CPairColumns::Put(std::uint32_t& key, StLinearSums& sums, std::uint32_t next) noexcept {
  if (key == next) return;
  if (key != StPairKey::c_none) Subtract(sums, key);
  if (next != StPairKey::c_none) Add(sums, next);
  key = next;
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
