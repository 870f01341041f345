#include "Utils/PolygonVisitor/Polygon.h"

#include <SeluBase/Neighborhood.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <vector>

namespace ORVA::Impl {

namespace {

// Where an edge crosses a column, in half units: 2y at a lattice point, else 2 floor(y) + 1. Which
// lattice points lie above and below it, that is all a fill needs to know; it also sorts crossings
// as far as their order matters.
struct StCrossing {
  int64 column, halfUnits;
  friend auto operator<=>(StCrossing const&, StCrossing const&) = default;
};

constexpr int64 Floor(int64 halfUnits) { return halfUnits >> 1; }
constexpr int64 Ceil(int64 halfUnits) { return (halfUnits + 1) >> 1; }

// Calls visit(column, halfUnits) for each column that the edge from a to b touches; a.x < b.x. The
// height is kept as whole + rest / dx.
template <class Visit>
void CrossColumns(CTriple<int64> const& a, CTriple<int64> const& b, Visit visit) {
  int64 const dx = b.x - a.x;
  int64 const rise = FloorDivided(b.y - a.y, dx), restRise = b.y - a.y - rise * dx;
  int64 whole = a.y, rest = 0;
  for (int64 x = a.x; x <= b.x; ++x) {
    visit(x, 2 * whole + (rest != 0 ? 1 : 0));
    whole += rise;
    rest += restRise;
    if (rest >= dx) {
      rest -= dx;
      ++whole;
    }
  }
}

// floor((start + k * numerator) / denominator) for k = 0, 1, 2, ..., by additions alone.
class CQuotients {
public:
  CQuotients(int64 start, int64 numerator, int64 denominator)
      : m_Denominator(denominator), m_Rise(numerator / denominator),
        m_RestRise(numerator % denominator), m_Whole(start / denominator),
        m_Rest(start % denominator) {}

  [[nodiscard]] int64 Get() const { return m_Whole; }
  [[nodiscard]] bool IsExact() const { return m_Rest == 0; }
  void Advance() {
    m_Whole += m_Rise;
    m_Rest += m_RestRise;
    if (m_Rest < m_Denominator) return;
    m_Rest -= m_Denominator;
    ++m_Whole;
  }

private:
  int64 m_Denominator, m_Rise, m_RestRise, m_Whole, m_Rest;
};

// Whether a line that rises or falls steps in both axes at once.
bool HasDiagonal(int64 neighborhood, bool falls) {
  if (neighborhood == NEIGHBORHOOD_6_1) return !falls;
  if (neighborhood == NEIGHBORHOOD_6_2) return falls;
  return neighborhood == NEIGHBORHOOD_8;
}

// Calls visit(run) for each column of the digital line from a to b, a.x <= b.x, without its moves:
// after k of n moves the axis that steps s times has taken floor(k s / n + 1/2) steps.
template <class Visit>
void CrossLineColumns(CTriple<int64> const& a, CTriple<int64> const& b, int64 neighborhood,
                      Visit visit) {
  int64 const dx = b.x - a.x, dy = std::abs(b.y - a.y);
  bool const falls = b.y < a.y;
  auto const visitColumn = [&](int64 column, int64 low, int64 high) {
    if (falls)
      visit(StPolygonRun{a.x + column, a.y - high, a.y - low});
    else
      visit(StPolygonRun{a.x + column, a.y + low, a.y + high});
  };
  bool const isDiagonal = HasDiagonal(neighborhood, falls);
  if (dx == 0) return visitColumn(0, 0, dy);
  if (isDiagonal && dx >= dy) {
    CQuotients height(dx, 2 * dy, 2 * dx);
    for (int64 column = 0; column <= dx; ++column, height.Advance())
      visitColumn(column, height.Get(), height.Get());
    return;
  }
  // Column c is reached after (2c - 1) n / 2dx moves, rounded up; where x steps whenever y does not
  // and is the longer one, ties of y come first.
  int64 const moves = isDiagonal ? dy : dx + dy;
  bool const tiesAreLate = !isDiagonal && dx >= dy;
  CQuotients reached(moves, 2 * moves, 2 * dx);
  int64 first = 0;
  for (int64 column = 0; column <= dx; ++column, reached.Advance()) {
    bool const isLate = !reached.IsExact() || tiesAreLate;
    int64 const next = column < dx ? reached.Get() + (isLate ? 1 : 0) : moves + 1;
    int64 const beside = isDiagonal ? 0 : column; // moves along x, which leave y
    visitColumn(column, first - beside, next - 1 - beside);
    first = next;
  }
}

bool RunLess(StPolygonRun const& a, StPolygonRun const& b) {
  return a.column != b.column ? a.column < b.column : a.low < b.low;
}

// Sorts by column, counting them, and each column by `less`. An outline crosses every column of its
// box, so that the counts take no more memory than its entries.
template <class Entry, class Less>
void SortColumns(std::vector<Entry>& entries, Less less) {
  if (entries.empty()) return;
  auto const [lowest, highest] = std::ranges::minmax(entries, {}, &Entry::column);
  int64 const first = lowest.column;
  auto const column = [first](Entry const& entry) {
    return static_cast<std::size_t>(entry.column - first);
  };
  std::vector<std::size_t> places(column(highest) + 2); // begin of each column, then its end
  for (Entry const& entry : entries) ++places[column(entry) + 1];
  std::partial_sum(places.begin(), places.end(), places.begin());
  std::vector<Entry> sorted(entries.size());
  for (Entry const& entry : entries) sorted[places[column(entry)]++] = entry;
  auto begin = sorted.begin();
  for (std::size_t const place : places) {
    auto const end = sorted.begin() + static_cast<std::ptrdiff_t>(place);
    std::sort(begin, end, less);
    begin = end;
  }
  entries.swap(sorted);
}

// Of sorted runs, joins those that overlap or follow each other without a gap.
void JoinRuns(std::vector<StPolygonRun>& runs) {
  std::size_t kept = 0;
  for (StPolygonRun const& run : runs) {
    if (kept > 0 && runs[kept - 1].column == run.column && run.low <= runs[kept - 1].high + 1) {
      runs[kept - 1].high = std::max(runs[kept - 1].high, run.high);
    } else {
      runs[kept++] = run;
    }
  }
  runs.resize(kept);
}

// The points of both; both sorted and disjoint.
std::vector<StPolygonRun> Union(std::vector<StPolygonRun> const& a,
                                std::vector<StPolygonRun> const& b) {
  std::vector<StPolygonRun> runs(a.size() + b.size());
  std::merge(a.begin(), a.end(), b.begin(), b.end(), runs.begin(), RunLess);
  JoinRuns(runs);
  return runs;
}

// Runs of `from` without the points of `taken`; both sorted and disjoint.
std::vector<StPolygonRun> Difference(std::vector<StPolygonRun> const& from,
                                     std::vector<StPolygonRun> const& taken) {
  std::vector<StPolygonRun> left;
  std::size_t t = 0;
  for (StPolygonRun run : from) {
    while (t < taken.size() && (taken[t].column < run.column ||
                                (taken[t].column == run.column && taken[t].high < run.low)))
      ++t;
    for (; t < taken.size() && taken[t].column == run.column && taken[t].low <= run.high; ++t) {
      if (taken[t].low > run.low) left.push_back({run.column, run.low, taken[t].low - 1});
      run.low = taken[t].high + 1;
      if (run.low > run.high) break; // this one may reach into the next run as well
    }
    if (run.low <= run.high) left.push_back(run);
  }
  return left;
}

// The even-odd runs between crossings that come in pairs.
void FillBetween(std::vector<StCrossing>& crossings, std::vector<StPolygonRun>& runs) {
  SortColumns(crossings, std::less<>());
  for (std::size_t k = 0; k + 1 < crossings.size(); k += 2) {
    int64 const low = Ceil(crossings[k].halfUnits), high = Floor(crossings[k + 1].halfUnits);
    if (low <= high) runs.push_back({crossings[k].column, low, high});
  }
}

template <class Visit>
void ForEachEdge(std::span<Ring const> rings, Visit visit) {
  for (Ring const& ring : rings) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
      CTriple<int64> const &a = ring[i], &b = ring[i + 1 < ring.size() ? i + 1 : 0];
      bool const isAscending = a.x != b.x ? a.x < b.x : a.y <= b.y;
      visit(isAscending ? a : b, isAscending ? b : a);
    }
  }
}

// All lattice points inside or on the outline. A point of a column belongs to the polygon if it
// does on the column's left or right side, or lies on an edge along the column.
std::vector<StPolygonRun> ClosedRegion(std::span<Ring const> rings) {
  std::vector<StPolygonRun> runs;
  std::vector<StCrossing> crossings;
  ForEachEdge(rings, [&](CTriple<int64> const& a, CTriple<int64> const& b) {
    if (a.x == b.x) {
      runs.push_back({a.x, a.y, b.y});
    } else {
      CrossColumns(a, b, [&](int64 x, int64 y) {
        if (x < b.x) crossings.push_back({x, y});
      });
    }
  });
  FillBetween(crossings, runs);
  crossings.clear();
  ForEachEdge(rings, [&](CTriple<int64> const& a, CTriple<int64> const& b) {
    if (a.x == b.x) return;
    CrossColumns(a, b, [&](int64 x, int64 y) {
      if (x > a.x) crossings.push_back({x, y});
    });
  });
  FillBetween(crossings, runs);
  SortColumns(runs, RunLess);
  JoinRuns(runs);
  return runs;
}

// The points of the digital lines of all edges.
std::vector<StPolygonRun> BorderLine(std::span<Ring const> rings, int64 neighborhood) {
  std::vector<StPolygonRun> runs;
  ForEachEdge(rings, [&](CTriple<int64> const& a, CTriple<int64> const& b) {
    CrossLineColumns(a, b, neighborhood, [&](StPolygonRun const& run) { runs.push_back(run); });
  });
  SortColumns(runs, RunLess);
  JoinRuns(runs);
  return runs;
}

} // namespace

std::vector<StPolygonRun> FillPolygon(std::span<Ring const> rings, int64 neighborhood,
                                      bool border) {
  std::vector<StPolygonRun> const region = ClosedRegion(rings);
  std::vector<StPolygonRun> const line = BorderLine(rings, neighborhood);
  // The digital line passes through every lattice point of its edge, so the region without it has
  // no point of the outline left.
  return border ? Union(region, line) : Difference(region, line);
}

} // namespace ORVA::Impl
