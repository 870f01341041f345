// What the area visitors share: marking the columns of an outline and pairing starts with ends.
#pragma once

#include <SeluUtils/Impl/AreaRuns.h>
#include <pxlib2core/Exception.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <stdexcept>
#include <vector>

namespace ORVA::Impl {

/// CExBadParam where the corners' box has a side longer than a digital line can be.
void CheckSpan(std::span<CTriple<int64> const> corners, StExLocation const& location);

/// Appends, with the error of a list that is full.
inline void AppendLimit(std::vector<CTriple<int64>>& list, CTriple<int64> const& point) {
  if (list.size() == list.max_size()) [[unlikely]]
    throw std::length_error("list<T> too long");
  list.push_back(point);
}

/// Walks the line and appends the extreme point of each column that it crosses; `isBeyond(y, best)`
/// says which of two is the more extreme.
template <class Line, class IsBeyond>
void SampleColumns(std::vector<CTriple<int64>>& list, CTriple<int64> const& start, Line const& line,
                   IsBeyond isBeyond) {
  CTriple<int64> point = start, extreme = start;
  for (int64 i = 0, steps = line.LastStep(); i < steps; ++i) {
    point += line.Step(i);
    if (point.x != extreme.x) {
      AppendLimit(list, extreme);
      extreme = point;
    } else if (isBeyond(point.y, extreme.y)) {
      extreme = point;
    }
  }
  AppendLimit(list, extreme);
}

/// Marks all edges of a closed path; `lineBetween(a, b)` gives the moves of one.
template <class LineBetween>
void SignEdges(StRunLimits& limits, std::span<CTriple<int64> const> corners, bool border,
               LineBetween lineBetween) {
  for (std::size_t i = 0; i + 1 < corners.size(); ++i) {
    CTriple<int64> const &a = corners[i], &b = corners[i + 1];
    if (a.x < b.x) {
      SampleColumns(limits.ends, a, lineBetween(a, b), std::greater<>());
    } else if (a.x > b.x) {
      SampleColumns(limits.starts, a, lineBetween(a, b), std::less<>());
    } else if (border) {
      AppendLimit(limits.starts, a.y < b.y ? a : b);
      AppendLimit(limits.ends, a.y < b.y ? b : a);
    }
  }
}

void SortLimits(StRunLimits& limits);

enum class EnPairing {
  Failed, ///< starts and ends do not pair
  Lossy,  ///< all pair, but a part of a side that a corner splits is left out
  Whole
};

/// Leaves one start and one end a run, in scan order.
[[nodiscard]] EnPairing PairLimits(StRunLimits& limits, bool border);

/// Removes the runs of the leftmost and of the rightmost column.
void EraseOuterColumns(StRunLimits& limits);

/// Removes the runs for which `isKept(start, end)`, which may shorten them, is false.
template <class IsKept>
void FilterRuns(StRunLimits& limits, IsKept isKept) {
  std::size_t kept = 0;
  for (std::size_t k = 0; k < limits.Runs(); ++k) {
    CTriple<int64> start = limits.starts[k], end = limits.ends[k];
    if (!isKept(start, end)) continue;
    limits.starts[kept] = start;
    limits.ends[kept] = end;
    ++kept;
  }
  limits.starts.resize(kept);
  limits.ends.resize(kept);
}

void PrintLimits(StRunLimits const& limits);

} // namespace ORVA::Impl
