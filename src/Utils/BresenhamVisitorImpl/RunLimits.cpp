#include "Utils/BresenhamVisitorImpl/RunLimits.h"

#include <pxlib2core/String.h>

#include <algorithm>
#include <iostream>

namespace ORVA::Impl {

namespace {

void CheckSpanAlong(int64 CTriple<int64>::*axis, std::span<CTriple<int64> const> corners,
                    StExLocation const& location) {
  auto const [low, high] = std::ranges::minmax(corners, {}, axis);
  auto const span = static_cast<std::uint64_t>(high.*axis) - static_cast<std::uint64_t>(low.*axis);
  if (span > INT32_MAX)
    RaiseBadParam(location, CString("corner coordinates from %1 to %2 lie more than 2147483647 "
                                    "apart")
                                .Arg(low.*axis)
                                .Arg(high.*axis));
}

void SortUnique(std::vector<CTriple<int64>>& list) {
  std::sort(list.begin(), list.end(), LexicographicLess);
  list.erase(std::unique(list.begin(), list.end()), list.end());
}

void PrintList(char const* title, std::vector<CTriple<int64>> const& list) {
  std::cout << title << '\n';
  for (CTriple<int64> const& p : list)
    std::cout << '(' << p.x << ", " << p.y << ", " << p.z << ")\n";
}

} // namespace

void CheckSpan(std::span<CTriple<int64> const> corners, StExLocation const& location) {
  if (corners.empty()) return;
  CheckSpanAlong(&CTriple<int64>::x, corners, location);
  CheckSpanAlong(&CTriple<int64>::y, corners, location);
  CheckSpanAlong(&CTriple<int64>::z, corners, location);
}

void SortLimits(StRunLimits& limits) {
  SortUnique(limits.starts);
  SortUnique(limits.ends);
}

EnPairing PairLimits(StRunLimits& limits, bool border) {
  auto& [starts, ends] = limits;
  std::size_t s = 0, e = 0, pairs = 0; // read positions; pairs are written behind them
  auto result = EnPairing::Whole;
  while (s < starts.size() && e < ends.size()) {
    if (LexicographicLess(ends[e], starts[s])) return EnPairing::Failed;
    // Of several starts before one end the last remains, of several ends the first.
    while (s + 1 < starts.size() && LexicographicLess(starts[s + 1], ends[e])) ++s;
    CTriple<int64> const start = starts[s], end = ends[e];
    if (border && start.x != end.x) return EnPairing::Failed;
    ++s;
    ++e;
    // The start that meets this end goes first, then what ends before the start that remains: of a
    // side with a corner in it the lower part is walked.
    bool const isSplit = border && s < starts.size() && starts[s] == end;
    if (isSplit) ++s;
    while (s < starts.size() && e < ends.size() && LexicographicLess(ends[e], starts[s])) {
      ++e;
      if (isSplit) result = EnPairing::Lossy;
    }
    starts[pairs] = start;
    ends[pairs] = end;
    ++pairs;
  }
  bool const haveStartsLeft = s < starts.size();
  starts.resize(pairs);
  ends.resize(pairs);
  return haveStartsLeft ? EnPairing::Failed : result;
}

void EraseOuterColumns(StRunLimits& limits) {
  auto& [starts, ends] = limits;
  std::size_t const runs = limits.Runs();
  starts.resize(runs);
  ends.resize(runs);
  if (runs == 0) return;
  int64 const left = starts.front().x;
  auto const isBeyondLeft = [&](CTriple<int64> const& p) { return p.x != left; };
  auto const first = std::ranges::find_if(starts, isBeyondLeft) - starts.begin();
  starts.erase(starts.begin(), starts.begin() + first);
  ends.erase(ends.begin(), ends.begin() + first);
  if (starts.empty()) return;
  int64 const right = starts.back().x;
  while (!starts.empty() && starts.back().x == right) {
    starts.pop_back();
    ends.pop_back();
  }
}

void PrintLimits(StRunLimits const& limits) {
  PrintList("Startpoints:", limits.starts);
  PrintList("Endpoints:", limits.ends);
}

} // namespace ORVA::Impl
