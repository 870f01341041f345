#include "Utils/Texture/WindowHistograms.h"

#include <algorithm>
#include <utility>

namespace ORVA::Impl {

namespace {

// From the sums of a matrix to those of the same one and its transposed one together. A pair of two
// levels counts in two cells then, but c of equal levels make 2 c in one: 2 c log2(2 c) = 2 (c log2
// c + c). So it is with differences and sums, which all counts share; `one` is the unit of log2 2.
void Symmetrize(StWindowSums& w, int64 equal, int64 one) noexcept {
  w.differences = 2 * (w.differences + w.pairs * one);
  w.sums = 2 * (w.sums + w.pairs * one);
  w.joint = 2 * (w.joint + equal * one);
  w.rows = w.columns = w.rows + w.columns;
  w.x1 = w.y1 = w.x1 + w.y1;
  w.x2 = w.y2 = w.x2 + w.y2;
  for (int64* const sum : {&w.pairs, &w.xy, &w.d1, &w.d2, &w.s1, &w.s2, &w.s3, &w.s4, &w.energy})
    *sum *= 2;
  for (int64& sum : w.inverse) sum *= 2;
}

} // namespace

// The counts of one line's moving window and their sums. Joint: 0 without, 1 with the histogram of
// pairs, 2 with its greatest count, too.
template <int Joint, bool Marginals, bool Differences, bool Sums, bool IsSymmetric>
class CWindowHistograms::CMoving {
public:
  static constexpr bool c_isNeeded = Joint > 0 || Marginals || Differences || Sums;

  explicit CMoving(CWindowHistograms& self) noexcept
      : m_Steps(self.m_Units.logs.Steps().data()), m_Joint(self.m_Counts.joint.data()),
        m_Rows(self.m_Counts.rows.data()),
        m_Columns(IsSymmetric ? m_Rows : self.m_Counts.columns.data()),
        m_Differences(self.m_Counts.differences.data()), m_SumCounts(self.m_Counts.sums.data()),
        m_Cells(self.m_Counts.cells.data()), m_Key(self.m_Key) {}

  void Add(std::uint32_t key) noexcept {
    auto const i = m_Key.First(key), j = m_Key.Second(key);
    if constexpr (Joint > 0) AddPair(key, i == j);
    if constexpr (Marginals) {
      m_Now.rows += m_Steps[m_Rows[i]++];
      m_Now.columns += m_Steps[m_Columns[j]++];
    }
    if constexpr (Differences) m_Now.differences += m_Steps[m_Differences[Distance(i, j)]++];
    if constexpr (Sums) m_Now.sums += m_Steps[m_SumCounts[i + j]++];
  }

  void Remove(std::uint32_t key) noexcept {
    auto const i = m_Key.First(key), j = m_Key.Second(key);
    if constexpr (Joint > 0) RemovePair(key, i == j);
    if constexpr (Marginals) {
      m_Now.rows -= m_Steps[--m_Rows[i]];
      m_Now.columns -= m_Steps[--m_Columns[j]];
    }
    if constexpr (Differences) m_Now.differences -= m_Steps[--m_Differences[Distance(i, j)]];
    if constexpr (Sums) m_Now.sums -= m_Steps[--m_SumCounts[i + j]];
  }

  // Moves on by as many keys as enter. Where a pair of the same levels enters in the place of one
  // that leaves, as often happens in smooth images, there is nothing to do.
  void Move(std::uint32_t const* leaving, std::uint32_t const* entering, std::size_t n) noexcept {
    CMoving local = *this; // lets the sums stay in registers
    for (std::size_t k = 0; k < n; ++k) {
      auto const from = leaving[k], to = entering[k];
      if (from == to) continue;
      if (from != StPairKey::c_none) local.Remove(from);
      if (to != StPairKey::c_none) local.Add(to);
    }
    m_Now = local.m_Now;
  }

  StHistogramSums const& Now() noexcept {
    if constexpr (Joint > 1)
      while (m_Now.maximum > 0 && m_Cells[m_Now.maximum] == 0) --m_Now.maximum;
    return m_Now;
  }

private:
  // The matrix of the symmetric form has twice the count c of a pair of equal levels, and c in two
  // cells otherwise: half of its sum of squares is c^2 or 2 c^2.
  void AddPair(std::uint32_t key, bool areEqual) noexcept {
    int64 const before = m_Joint[key]++;
    int const twice = IsSymmetric && areEqual ? 1 : 0;
    m_Now.joint += m_Steps[before];
    m_Now.equal += twice;
    m_Now.energy += (2 * before + 1) << twice;
    if constexpr (Joint > 1) {
      int64 const now = (before + 1) << twice;
      --m_Cells[before << twice]; // of those of 0 nobody asks
      ++m_Cells[now];
      m_Now.maximum = std::max(m_Now.maximum, now);
    }
  }

  void RemovePair(std::uint32_t key, bool areEqual) noexcept {
    int64 const now = --m_Joint[key];
    int const twice = IsSymmetric && areEqual ? 1 : 0;
    m_Now.joint -= m_Steps[now];
    m_Now.equal -= twice;
    m_Now.energy -= (2 * now + 1) << twice;
    if constexpr (Joint > 1) {
      --m_Cells[(now + 1) << twice];
      ++m_Cells[now << twice];
    }
  }

  int64 const* m_Steps;
  std::uint32_t *m_Joint, *m_Rows, *m_Columns, *m_Differences, *m_SumCounts, *m_Cells;
  StPairKey m_Key;
  StHistogramSums m_Now;
};

template <class Moving>
void CWindowHistograms::RunLine(CWindowHistograms& self, CPairColumns const& columns, int64 step,
                                std::span<StWindowSums> line) {
  int64 const perWindow = columns.PerWindow(), moved = std::min(step, perWindow);
  std::size_t const perColumn = columns.PerColumn();
  std::size_t const inWindow = static_cast<std::size_t>(perWindow) * perColumn;
  Moving moving(self);
  StLinearSums linear;
  for (int64 c = 0; c < perWindow; ++c) linear += columns.Linear(c);
  if constexpr (Moving::c_isNeeded)
    for (std::uint32_t const key : std::span(columns.Keys(0), inWindow))
      if (key != StPairKey::c_none) moving.Add(key);
  int64 column = 0;
  for (std::size_t w = 0; w < line.size(); ++w) {
    line[w] = self.SumsOf(linear, moving.Now());
    if (w + 1 == line.size()) break;
    int64 const entering = column + step + perWindow - moved;
    if constexpr (Moving::c_isNeeded)
      moving.Move(columns.Keys(column), columns.Keys(entering),
                  static_cast<std::size_t>(moved) * perColumn);
    for (int64 c = 0; c < moved; ++c) {
      linear += columns.Linear(entering + c);
      linear -= columns.Linear(column + c);
    }
    column += step;
  }
  if constexpr (Moving::c_isNeeded) self.Empty({columns.Keys(column), inWindow});
}

template <std::size_t... K>
constexpr std::array<CWindowHistograms::Run, sizeof...(K)>
CWindowHistograms::AllRuns(std::index_sequence<K...>) {
  return {&RunLine<CMoving<K / 16, (K & 8) != 0, (K & 4) != 0, (K & 2) != 0, (K & 1) != 0>>...};
}

CWindowHistograms::CWindowHistograms(StWindowUnits const& units, StPairKey const& key,
                                     StWindowNeeds const& needs)
    : m_Units(units), m_Key(key),
      m_AreNeeded(needs.joint || needs.marginals || needs.differences || needs.sums) {
  constexpr auto runs = AllRuns(std::make_index_sequence<48>());
  unsigned const joint = needs.maximum ? 2 : needs.joint ? 1 : 0;
  m_Run = runs[joint << 4U | unsigned{needs.marginals} << 3U | unsigned{needs.differences} << 2U |
               unsigned{needs.sums} << 1U | unsigned{key.isSymmetric}];
  auto const n = static_cast<std::size_t>(units.levels);
  if (needs.joint) m_Counts.joint.resize(n << key.bits);
  if (needs.maximum) m_Counts.cells.resize(units.logs.Steps().size() + 1);
  if (needs.marginals) m_Counts.rows.resize(n);
  if (needs.marginals) m_Counts.columns.resize(n);
  if (needs.differences) m_Counts.differences.resize(n);
  if (needs.sums) m_Counts.sums.resize(2 * n);
}

void CWindowHistograms::Line(CPairColumns const& columns, int64 step,
                             std::span<StWindowSums> line) {
  if (!line.empty()) m_Run(*this, columns, step, line);
}

// Clears what the last window of a line has left.
void CWindowHistograms::Empty(std::span<std::uint32_t const> keys) noexcept {
  for (std::uint32_t const key : keys)
    if (key != StPairKey::c_none && !m_Counts.joint.empty()) m_Counts.joint[key] = 0;
  for (auto* const counts :
       {&m_Counts.rows, &m_Counts.columns, &m_Counts.differences, &m_Counts.sums, &m_Counts.cells})
    std::ranges::fill(*counts, 0U);
}

StWindowSums CWindowHistograms::SumsOf(StLinearSums const& linear,
                                       StHistogramSums const& h) const noexcept {
  auto const& [n, d1, d2, w0, w1, w2, w3, w4] = linear.difference;
  auto const& [s1, s2, s3, s4] = linear.sum;
  int64 const shift = m_Units.levels + 1; // of s from i + j
  int64 const sum1 = s1 + n * shift, sum2 = s2 + (2 * s1 + n * shift) * shift;
  int64 const products = (sum2 - d2) / 4; // i j = ((i + j)^2 - (i - j)^2) / 4
  StWindowSums w{.pairs = n,
                 .x1 = linear.first[0],
                 .y1 = sum1 - linear.first[0],
                 .x2 = linear.first[1],
                 .y2 = (sum2 + d2) / 2 - linear.first[1],
                 .xy = products,
                 .d1 = d1,
                 .d2 = d2,
                 .s1 = s1,
                 .s2 = s2,
                 .s3 = s3,
                 .s4 = s4,
                 .inverse = {w0, w1, w2, w3, w4},
                 .energy = h.energy,
                 .maximum = h.maximum,
                 .joint = h.joint,
                 .rows = h.rows,
                 .columns = h.columns,
                 .differences = h.differences,
                 .sums = h.sums};
  if (m_Key.isSymmetric) Symmetrize(w, h.equal, int64{1} << m_Units.logBits);
  return w;
}

} // namespace ORVA::Impl
