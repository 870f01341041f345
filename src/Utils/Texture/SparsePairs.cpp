#include <SeluUtils/Impl/SparsePairs.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace ORVA::Impl {

namespace {

// Sorts keys by radix, 11 bits at a time; `space` is for the sorting. A digit that is the same in
// all keys costs no pass.
void SortKeys(std::vector<std::uint32_t>& keys, std::vector<std::uint32_t>& space) {
  constexpr std::size_t c_nDigits = 3, c_nValues = 2048;
  if (keys.size() < c_nValues) {
    std::ranges::sort(keys);
    return;
  }
  std::array<std::array<std::uint32_t, c_nValues>, c_nDigits> places{};
  for (std::uint32_t const key : keys)
    for (unsigned digit = 0; digit < c_nDigits; ++digit)
      ++places[digit][key >> (11 * digit) & (c_nValues - 1)];
  space.resize(keys.size());
  for (unsigned digit = 0; digit < c_nDigits; ++digit) {
    auto& place = places[digit];
    auto const digitOf = [shift = 11 * digit](std::uint32_t key) {
      return key >> shift & (c_nValues - 1);
    };
    if (place[digitOf(keys.front())] == keys.size()) continue;
    std::exclusive_scan(place.begin(), place.end(), place.begin(), 0U);
    for (std::uint32_t const key : keys) space[place[digitOf(key)]++] = key;
    keys.swap(space);
  }
}

void Append(StCellList& list, std::uint32_t key, std::uint64_t count) {
  if (!list.keys.empty() && list.keys.back() == key) {
    list.counts.back() += count;
  } else {
    list.keys.push_back(key);
    list.counts.push_back(count);
  }
}

StCellList ListOf(std::vector<std::uint32_t> const& sortedKeys) {
  StCellList list;
  std::size_t cells = sortedKeys.empty() ? 0 : 1;
  for (std::size_t k = 1; k < sortedKeys.size(); ++k) cells += sortedKeys[k] != sortedKeys[k - 1];
  list.keys.reserve(cells);
  list.counts.reserve(cells);
  for (std::size_t first = 0; first < sortedKeys.size();) {
    std::size_t last = first + 1;
    while (last < sortedKeys.size() && sortedKeys[last] == sortedKeys[first]) ++last;
    list.keys.push_back(sortedKeys[first]);
    list.counts.push_back(last - first);
    first = last;
  }
  return list;
}

StCellList Sorted(StCellList const& list) {
  std::vector<std::size_t> order(list.keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&](std::size_t k) { return list.keys[k]; });
  StCellList sorted;
  for (std::size_t const k : order) Append(sorted, list.keys[k], list.counts[k]);
  return sorted;
}

// How many different keys two lists have; a pass over the keys alone costs less than room for cells
// that there are not.
std::size_t CellsOfBoth(StCellList const& a, StCellList const& b) {
  std::size_t i = 0, j = 0, cells = 0;
  for (; i < a.keys.size() && j < b.keys.size(); ++cells) {
    std::uint32_t const x = a.keys[i], y = b.keys[j];
    i += x <= y;
    j += y <= x;
  }
  return cells + (a.keys.size() - i) + (b.keys.size() - j);
}

StCellList Merged(StCellList const& a, StCellList const& b) {
  StCellList merged;
  std::size_t const cells = CellsOfBoth(a, b);
  merged.keys.resize(cells);
  merged.counts.resize(cells);
  std::size_t i = 0, j = 0, k = 0;
  for (; i < a.keys.size() && j < b.keys.size(); ++k) { // without a branch: nobody knows what comes
    std::uint32_t const x = a.keys[i], y = b.keys[j];
    merged.keys[k] = std::min(x, y);
    merged.counts[k] = (x <= y ? a.counts[i] : 0) + (y <= x ? b.counts[j] : 0);
    i += x <= y;
    j += y <= x;
  }
  auto const copyRest = [&merged, k](StCellList const& list, std::size_t from) {
    auto const rest = static_cast<std::ptrdiff_t>(from), to = static_cast<std::ptrdiff_t>(k);
    std::copy(list.keys.begin() + rest, list.keys.end(), merged.keys.begin() + to);
    std::copy(list.counts.begin() + rest, list.counts.end(), merged.counts.begin() + to);
  };
  if (i < a.keys.size()) copyRest(a, i);
  if (j < b.keys.size()) copyRest(b, j);
  return merged;
}

} // namespace

void CSparsePairs::EndLongRun() {
  m_LongRuns.keys.push_back(m_RunKey);
  m_LongRuns.counts.push_back(m_RunLength);
}

void CSparsePairs::EmptyBuffer() {
  if (!m_Buffer.empty()) {
    SortKeys(m_Buffer, m_SortSpace);
    AddList(ListOf(m_Buffer));
    m_Buffer.clear();
  }
  if (!m_LongRuns.keys.empty()) {
    AddList(Sorted(m_LongRuns));
    m_LongRuns.keys.clear();
    m_LongRuns.counts.clear();
  }
}

void CSparsePairs::AddList(StCellList&& list) {
  m_Lists.push_back(std::move(list));
  while (m_Lists.size() > 1) {
    auto const& last = m_Lists.back();
    auto& before = m_Lists[m_Lists.size() - 2];
    if (before.keys.size() / 2 > last.keys.size()) break;
    before = Merged(before, last);
    m_Lists.pop_back();
  }
}

// The shortest lists first, so that a cell moves as seldom as can be.
void CSparsePairs::Settle() {
  EndRun();
  m_RunLength = 0;
  EmptyBuffer();
  // Their memory goes, too, which an assignment of {} would keep.
  m_Buffer = std::vector<std::uint32_t>();
  m_SortSpace = std::vector<std::uint32_t>();
  m_LongRuns = StCellList();
  while (m_Lists.size() > 1) {
    auto& before = m_Lists[m_Lists.size() - 2];
    before = Merged(before, m_Lists.back());
    m_Lists.pop_back();
  }
  if (m_Lists.empty()) return;
  m_Cells = m_Cells.keys.empty() ? std::move(m_Lists.front()) : Merged(m_Cells, m_Lists.front());
  m_Lists.clear();
}

void CSparsePairs::Forget() noexcept {
  m_RunLength = 0;
  m_Buffer = {};
  m_SortSpace = {};
  m_LongRuns = {};
  m_Lists = {};
}

std::uint64_t CSparsePairs::CountOf(std::uint32_t key) const noexcept {
  auto const found = std::ranges::lower_bound(m_Cells.keys, key);
  if (found == m_Cells.keys.end() || *found != key) return 0;
  return m_Cells.counts[static_cast<std::size_t>(found - m_Cells.keys.begin())];
}

void CSparsePairs::Add(StCellList const& other) { m_Cells = Merged(m_Cells, other); }

// The cells come by rows: a stable counting sort by columns puts them in the order of the
// transposed matrix.
void CSparsePairs::AddTransposed() {
  std::vector<std::size_t> places(65537);
  for (std::uint32_t const key : m_Cells.keys) ++places[(key & 0xFFFFU) + 1];
  std::inclusive_scan(places.begin(), places.end(), places.begin());
  StCellList transposed;
  transposed.keys.resize(m_Cells.keys.size());
  transposed.counts.resize(m_Cells.keys.size());
  for (std::size_t k = 0; k < m_Cells.keys.size(); ++k) {
    std::uint32_t const key = m_Cells.keys[k], column = key & 0xFFFFU;
    std::size_t const place = places[column]++;
    transposed.keys[place] = Key(column, key >> 16U);
    transposed.counts[place] = m_Cells.counts[k];
  }
  Add(transposed);
}

void CSparsePairs::Clear() noexcept { *this = {}; }

} // namespace ORVA::Impl
