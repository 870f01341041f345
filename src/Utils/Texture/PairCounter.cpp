#include <SeluUtils/Texture/PairCounter.h>

#include "Utils/Cooccurrence/PairTotals.h"
#include "Utils/Cooccurrence/Strides.h"
#include "Utils/Texture/LevelPairs.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";
constexpr int c_mostTableLevels = 16383; // 2 GiB

// The pairs of an image: both voxels of the first pair, how many along each axis, and the strides.
struct StPairs {
  std::byte const* base = nullptr;
  Impl::StJointBox<2> box; // of the first and of the second voxels
  uint64 count = 0;
};

// Along one axis: the first voxel v in [low, high) with v and v + d inside, and how many there are.
struct StRange {
  int64 first = 0, count = 0;
};

StRange RangeOf(int64 extent, int64 d, int64 low, int64 high) noexcept {
  if (extent <= 0 || d >= extent || d <= -extent) return {};
  int64 const first = std::max({low, int64{0}, -d});
  int64 const end = std::min({high, extent, extent - d});
  return {first, std::max(int64{0}, end - first)};
}

StPairs PairsOf(CLevelImage const& levels, CTriple<int64> const& d, CPos const& low,
                CPos const& high) {
  auto const& extents = levels.Extents();
  auto const& strides = levels.Strides();
  std::array<StRange, 3> const ranges = {RangeOf(extents[0], d.x, low.x, high.x),
                                         RangeOf(extents[1], d.y, low.y, high.y),
                                         RangeOf(extents[2], d.z, low.z, high.z)};
  std::array<int64, 3> const steps = {d.x, d.y, d.z};
  StPairs pairs{levels.Base(), {{}, {strides, strides}, {}}, 1};
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (ranges[axis].count == 0) return {};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    pairs.box.extent[axis] = ranges[axis].count;
    pairs.box.offset[0] += ranges[axis].first * strides[axis];
    pairs.box.offset[1] += (ranges[axis].first + steps[axis]) * strides[axis];
    if (__builtin_mul_overflow(pairs.count, static_cast<uint64>(ranges[axis].count), &pairs.count))
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPairCounter::Count"),
                          "an image has more than 2^64 - 1 pairs");
  }
  pairs.box.Normalize();
  return pairs;
}

template <class Cell>
using RowCounter = void (*)(Impl::StLevelTables<Cell> const&, std::byte const*, std::byte const*,
                            int64, int64) noexcept;

template <class Cell>
RowCounter<Cell> RowCounterOf(int bytesPerVoxel) noexcept {
  return bytesPerVoxel == 1 ? Impl::CountLevelRow<std::uint8_t, Cell>
                            : Impl::CountLevelRow<std::uint16_t, Cell>;
}

// 32-bit counters of one call, emptied into 64-bit ones before they could overflow.
class CCounterTables {
public:
  CCounterTables(std::vector<uint64>& totals, std::size_t side, std::size_t tables)
      : m_Totals(totals), m_Tables(tables), m_Pitch(side * side + c_nGap),
        m_Counters(tables * m_Pitch) {
    for (std::size_t k = 0; k < 4; ++k) m_View.table[k] = m_Counters.data() + k % tables * m_Pitch;
    m_View.side = side;
  }

  void Count(RowCounter<std::uint32_t> countRow, std::byte const* a, std::byte const* b, int64 n,
             int64 stride) {
    while (n > 0) {
      if (m_Room == 0) Empty();
      int64 const part = std::min(n, m_Room);
      countRow(m_View, a, b, part, stride);
      a += part * stride;
      b += part * stride;
      n -= part;
      m_Room -= part;
    }
  }

  void Empty() noexcept {
    for (std::size_t table = 0; table < m_Tables; ++table)
      for (std::size_t k = 0; k < m_Totals.size(); ++k)
        m_Totals[k] += m_Counters[table * m_Pitch + k];
    std::ranges::fill(m_Counters, 0U);
    m_Room = c_most;
  }

private:
  // Tables a multiple of 4096 bytes apart would evict each other from the cache.
  static constexpr std::size_t c_nGap = 21 * 16;
  static constexpr int64 c_most = std::numeric_limits<std::uint32_t>::max();

  std::vector<uint64>& m_Totals;
  std::size_t m_Tables, m_Pitch;
  std::vector<std::uint32_t> m_Counters;
  Impl::StLevelTables<std::uint32_t> m_View{};
  int64 m_Room = c_most;
};

void CountDense(StPairs const& pairs, int bytesPerVoxel, std::size_t side,
                std::vector<uint64>& table) {
  int64 const n = pairs.box.extent[0], stride = pairs.box.stride[0][0];
  std::size_t const tables = side <= 65 ? 4 : side <= 300 ? 2 : 1;
  if (pairs.count < 16 * tables * table.size()) { // not worth tables of its own
    Impl::StLevelTables<uint64> const view{{table.data(), table.data(), table.data(), table.data()},
                                           side};
    auto const countRow = RowCounterOf<uint64>(bytesPerVoxel);
    pairs.box.ForEachRow([&](std::array<int64, 2> const& at) {
      countRow(view, pairs.base + at[0], pairs.base + at[1], n, stride);
    });
    return;
  }
  CCounterTables counters(table, side, tables);
  auto const countRow = RowCounterOf<std::uint32_t>(bytesPerVoxel);
  pairs.box.ForEachRow([&](std::array<int64, 2> const& at) {
    counters.Count(countRow, pairs.base + at[0], pairs.base + at[1], n, stride);
  });
  counters.Empty();
}

// Whether a voxel has level 0; looks at one row after the other.
bool HasOutside(Impl::StGrayBlock const& block) noexcept {
  for (int64 z = 0; z < block.extent[2]; ++z)
    for (int64 y = 0; y < block.extent[1]; ++y) {
      std::byte const* const row = block.base + y * block.stride[1] + z * block.stride[2];
      unsigned zeros = 0;
      for (int64 x = 0; x < block.extent[0]; ++x) {
        std::uint16_t level;
        std::memcpy(&level, row + x * 2, sizeof level);
        zeros |= level == 0 ? 1U : 0U;
      }
      if (zeros != 0) return true;
    }
  return false;
}

// Up to 256 levels in many pairs fit the tables of gray levels, which are counted fastest: as bytes
// or, where no voxel is outside, counted from 0. Returns whether they do and have been added.
bool CountAsGray(CLevelImage const& levels, CTriple<int64> const& displacement, CPos const& low,
                 CPos const& high, std::size_t side, std::vector<uint64>& table) {
  constexpr double enough = 1 << 18;
  constexpr std::size_t fewest = 129, most = 257; // fewer levels are at home in smaller tables
  if (side < fewest || side > most) return false;
  std::array<int64, 3> const d = {displacement.x, displacement.y, displacement.z};
  auto const block = Impl::BlockOfPairs(
      {levels.Base(), levels.Extents(), levels.Strides(), levels.BytesPerVoxel()}, d,
      {low.x, low.y, low.z}, {high.x, high.y, high.z});
  if (Impl::PairsOf(block, d) < enough) return false;
  if (levels.BytesPerVoxel() == 1) {
    Impl::AddPairs(block, d, {table.data(), side, std::min<std::size_t>(side, 256)});
    return true;
  }
  if (levels.Levels() > 256 || block.stride[0] != 2 || HasOutside(block)) return false;
  auto fromOne = block;
  fromOne.hasLevelsFromOne = true;
  Impl::AddPairs(fromOne, d, {table.data() + side + 1, side, side - 1});
  return true;
}

// Takes the pairs with level 0 out of a table; how many there were.
uint64 RemoveOutside(std::vector<uint64>& table, std::size_t side) noexcept {
  uint64 outside = 0;
  for (std::size_t k = 0; k < side; ++k)
    for (uint64* const cell : {&table[k], &table[k * side]}) {
      outside += *cell;
      *cell = 0;
    }
  return outside;
}

template <class Level>
uint64 PushRow(Impl::CSparsePairs& cells, std::byte const* a, std::byte const* b, int64 n,
               int64 stride) {
  uint64 within = 0;
  for (int64 i = 0; i < n; ++i, a += stride, b += stride) {
    Level x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    if (x == 0 || y == 0) continue;
    cells.Push(Impl::CSparsePairs::Key(x, y));
    ++within;
  }
  return within;
}

uint64 CountSparse(StPairs const& pairs, int bytesPerVoxel, Impl::CSparsePairs& cells) {
  auto const pushRow = bytesPerVoxel == 1 ? PushRow<std::uint8_t> : PushRow<std::uint16_t>;
  uint64 within = 0;
  try {
    pairs.box.ForEachRow([&](std::array<int64, 2> const& at) {
      within += pushRow(cells, pairs.base + at[0], pairs.base + at[1], pairs.box.extent[0],
                        pairs.box.stride[0][0]);
    });
    cells.Settle();
  } catch (...) {
    cells.Forget();
    throw;
  }
  return within;
}

} // namespace

CPairCounter::CPairCounter(int levels, EnForm form) : m_Levels(levels) {
  if (levels < 1 || levels > c_mostLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPairCounter::CPairCounter"),
                        CString("%1 levels are not from 1 to 65535").Arg(levels));
  if (form == EnForm::Dense && levels > c_mostTableLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPairCounter::CPairCounter"),
                        CString("a table of %1 levels is too large").Arg(levels));
  m_IsDense = form == EnForm::Dense || (form == EnForm::Automatic && levels <= c_mostDenseLevels);
  if (m_IsDense) m_Table.resize(Side() * Side());
}

void CPairCounter::Count(CLevelImage const& levels, CTriple<int64> const& displacement) {
  constexpr int64 all = std::numeric_limits<int64>::max();
  Count(levels, displacement, CPos(0, 0, 0), CPos(all, all, all));
}

void CPairCounter::Count(CLevelImage const& levels, CTriple<int64> const& displacement,
                         CPos const& low, CPos const& high) {
  if (levels.Levels() > m_Levels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPairCounter::Count"),
                        CString("an image of %1 levels does not fit a matrix of %2")
                            .Arg(levels.Levels())
                            .Arg(m_Levels));
  StPairs const pairs = PairsOf(levels, displacement, low, high);
  if (pairs.count == 0) return;
  (void)TotalWith(pairs.count); // those of level 0 will not count
  if (m_IsDense) {
    if (!CountAsGray(levels, displacement, low, high, Side(), m_Table))
      CountDense(pairs, levels.BytesPerVoxel(), Side(), m_Table);
    m_Pairs += pairs.count - RemoveOutside(m_Table, Side());
  } else {
    m_Pairs += CountSparse(pairs, levels.BytesPerVoxel(), m_Cells);
  }
}

uint64 CPairCounter::TotalWith(uint64 pairs) const {
  uint64 total = 0;
  if (__builtin_add_overflow(m_Pairs, pairs, &total))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CPairCounter::TotalWith"),
        CString("%1 more pairs than %2 are more than 2^64 - 1").Arg(pairs).Arg(m_Pairs));
  return total;
}

CPairCounter& CPairCounter::operator+=(CPairCounter const& other) {
  if (other.m_Levels != m_Levels)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CPairCounter::operator+="),
        CString("matrices of %1 and %2 levels do not add up").Arg(m_Levels).Arg(other.m_Levels));
  uint64 const total = TotalWith(other.m_Pairs);
  if (m_IsDense && other.m_IsDense) {
    for (std::size_t k = 0; k < m_Table.size(); ++k) m_Table[k] += other.m_Table[k];
  } else if (m_IsDense) {
    other.ForEach([this](int i, int j, uint64 count) {
      m_Table[static_cast<std::size_t>(i) * Side() + static_cast<std::size_t>(j)] += count;
    });
  } else if (!other.m_IsDense) {
    m_Cells.Add(other.m_Cells.Cells());
  } else {
    Impl::StCellList list;
    other.ForEach([&list](int i, int j, uint64 count) {
      list.keys.push_back(
          Impl::CSparsePairs::Key(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j)));
      list.counts.push_back(count);
    });
    m_Cells.Add(list);
  }
  m_Pairs = total;
  return *this;
}

void CPairCounter::CheckCell(int i, int j, char const* function) const {
  for (int const level : {i, j})
    if (level < 1 || level > m_Levels)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                          CString("level %1 is not from 1 to %2").Arg(level).Arg(m_Levels));
}

void CPairCounter::Add(int i, int j, uint64 count) {
  CheckCell(i, j, "ORVA::CPairCounter::Add");
  if (count == 0) return;
  uint64 const total = TotalWith(count);
  if (m_IsDense) {
    m_Table[static_cast<std::size_t>(i) * Side() + static_cast<std::size_t>(j)] += count;
  } else {
    m_Cells.Add(
        {{Impl::CSparsePairs::Key(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j))},
         {count}});
  }
  m_Pairs = total;
}

void CPairCounter::Symmetrize() {
  uint64 const total = TotalWith(m_Pairs);
  if (!m_IsDense) m_Cells.AddTransposed();
  std::size_t const side = m_IsDense ? Side() : 0;
  for (std::size_t i = 1; i < side; ++i)
    for (std::size_t j = 1; j <= i; ++j) {
      uint64 const both = m_Table[i * side + j] + m_Table[j * side + i];
      m_Table[i * side + j] = both;
      m_Table[j * side + i] = both;
    }
  m_Pairs = total;
}

void CPairCounter::Clear() noexcept {
  std::ranges::fill(m_Table, uint64{0});
  m_Cells.Clear();
  m_Pairs = 0;
}

uint64 CPairCounter::operator()(int i, int j) const {
  CheckCell(i, j, "ORVA::CPairCounter::operator()");
  auto const row = static_cast<std::uint32_t>(i), column = static_cast<std::uint32_t>(j);
  return m_IsDense ? m_Table[row * Side() + column]
                   : m_Cells.CountOf(Impl::CSparsePairs::Key(row, column));
}

std::vector<StPairCount> CPairCounter::Cells() const {
  std::vector<StPairCount> cells;
  ForEach([&cells](int i, int j, uint64 count) { cells.push_back({i, j, count}); });
  return cells;
}

std::vector<uint64> CPairCounter::ToDense() const {
  if (m_Levels > c_mostTableLevels)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPairCounter::ToDense"),
                        CString("a table of %1 levels is too large").Arg(m_Levels));
  auto const n = static_cast<std::size_t>(m_Levels);
  std::vector<uint64> dense(n * n);
  ForEach([&dense, n](int i, int j, uint64 count) {
    dense[static_cast<std::size_t>(i - 1) * n + static_cast<std::size_t>(j - 1)] = count;
  });
  return dense;
}

bool operator==(CPairCounter const& a, CPairCounter const& b) {
  if (a.m_Levels != b.m_Levels || a.m_Pairs != b.m_Pairs) return false;
  if (a.m_IsDense && b.m_IsDense) return a.m_Table == b.m_Table;
  return a.Cells() == b.Cells();
}

} // namespace ORVA
