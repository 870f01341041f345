#include "Utils/RunVisitor/Rows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <tuple>
#include <utility>

namespace ORVA::Impl {

namespace {

using Field = std::uint32_t StRow::*;

bool RowLess(StRow const& a, StRow const& b) {
  return std::tie(a.z, a.y, a.low, a.high) < std::tie(b.z, b.y, b.low, b.high);
}

bool IsSameLine(StRow const& a, StRow const& b) { return a.z == b.z && a.y == b.y; }

constexpr int c_digitBits = 11;
constexpr std::uint32_t c_digits = 1U << c_digitBits;

// One stable pass of a radix sort, by one digit of a field whose values are least ... least +
// range.
void SortByDigit(Rows& rows, Rows& sorted, Field field, std::uint32_t least, std::uint32_t range,
                 int shift) {
  std::array<std::uint32_t, c_digits + 1> places; // as far as there are digits
  std::uint32_t const digits = std::min(c_digits, (range >> shift) + 1);
  std::fill_n(places.begin(), digits + 1, 0U);
  auto const digit = [=](StRow const& row) {
    return ((row.*field - least) >> shift) & (c_digits - 1);
  };
  for (StRow const& row : rows) ++places[digit(row) + 1];
  for (std::uint32_t k = 1; k <= digits; ++k) places[k] += places[k - 1];
  for (StRow const& row : rows) sorted[places[digit(row)]++] = row;
  rows.swap(sorted);
}

// Joins a row to the one before where it follows that without a gap.
void Append(Rows& rows, StRow const& row) {
  if (!rows.empty() && IsSameLine(rows.back(), row) && row.low == rows.back().high + 1) {
    rows.back().high = row.high;
  } else {
    rows.push_back(row);
  }
}

} // namespace

void SortRows(Rows& rows) {
  constexpr std::size_t c_few = 100; // then the passes' counts cost more than comparisons
  if (rows.size() < c_few || rows.size() > UINT32_MAX) {
    std::sort(rows.begin(), rows.end(), RowLess);
    return;
  }
  Rows sorted(rows.size());
  for (Field const field : {&StRow::low, &StRow::y, &StRow::z}) {
    auto const [lowest, highest] = std::ranges::minmax(rows, {}, field);
    std::uint32_t const least = lowest.*field, range = highest.*field - least;
    auto const bits = static_cast<int>(std::bit_width(range));
    for (int shift = 0; shift < bits; shift += c_digitBits)
      SortByDigit(rows, sorted, field, least, range, shift);
  }
}

void JoinRows(Rows& rows) {
  std::size_t kept = 0;
  for (StRow const& row : rows) {
    if (kept > 0 && IsSameLine(rows[kept - 1], row) && row.low <= rows[kept - 1].high + 1) {
      rows[kept - 1].high = std::max(rows[kept - 1].high, row.high);
    } else {
      rows[kept++] = row;
    }
  }
  rows.resize(kept);
}

void AppendInside(Rows& crossings, EnWinding rule, Rows& rows) {
  SortRows(crossings);
  std::uint32_t winding = 0; // modulo 2^32
  for (std::size_t k = 0; k < crossings.size(); ++k) {
    StRow const& crossing = crossings[k];
    winding += crossing.high;
    if (k + 1 == crossings.size() || !IsSameLine(crossing, crossings[k + 1])) {
      winding = 0;
    } else if (IsInside(static_cast<std::int32_t>(winding), rule) &&
               crossing.low < crossings[k + 1].low) {
      Append(rows, {crossing.z, crossing.y, crossing.low, crossings[k + 1].low - 1});
    }
  }
}

Rows Union(Rows const& a, Rows const& b) {
  Rows rows(a.size() + b.size());
  std::merge(a.begin(), a.end(), b.begin(), b.end(), rows.begin(), RowLess);
  JoinRows(rows);
  rows.shrink_to_fit();
  return rows;
}

Rows Difference(Rows const& from, Rows const& taken) {
  Rows left;
  auto t = taken.begin();
  auto const isBefore = [](StRow const& a, StRow const& b) {
    return std::tie(a.z, a.y, a.high) < std::tie(b.z, b.y, b.low);
  };
  for (StRow row : from) {
    while (t != taken.end() && isBefore(*t, row)) ++t;
    bool isLeft = true;
    for (; t != taken.end() && IsSameLine(*t, row) && t->low <= row.high; ++t) {
      if (t->low > row.low) left.push_back({row.z, row.y, row.low, t->low - 1});
      row.low = t->high + 1;
      isLeft = t->high < row.high;
      if (!isLeft) break; // this one may reach into the next row as well
    }
    if (isLeft) left.push_back(row);
  }
  return left;
}

Rows WithBoundary(Rows halfOpen, Rows outline, EnBoundary boundary) {
  if (boundary == EnBoundary::HalfOpen) return halfOpen;
  SortRows(outline);
  JoinRows(outline);
  return boundary == EnBoundary::Closed ? Union(halfOpen, outline) : Difference(halfOpen, outline);
}

} // namespace ORVA::Impl
