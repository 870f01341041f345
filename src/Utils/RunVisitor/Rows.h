// Regions of the grid as lists of rows: sorted, filled between crossings, united, subtracted.
#pragma once

#include <SeluUtils/Boundary.h>
#include <SeluUtils/RunVisitor.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

using Rows = std::vector<StRow>;

/// A crossing of a ray along x with an outline, kept as a row: the points from `low` on are beyond
/// it, and `high` is what it adds to the winding number, as two's complement.
[[nodiscard]] constexpr StRow Crossing(std::uint32_t z, std::uint32_t y, std::uint32_t firstBeyond,
                                       int winding) noexcept {
  return {z, y, firstBeyond, static_cast<std::uint32_t>(winding)};
}

/// Whether a winding number means inside.
[[nodiscard]] constexpr bool IsInside(std::int32_t winding, EnWinding rule) noexcept {
  return rule == EnWinding::EvenOdd ? (winding & 1) != 0 : winding != 0;
}

/// Sorts by z, then y, then low. Linear for many rows.
void SortRows(Rows& rows);
/// Of sorted rows, joins those that overlap or follow each other without a gap.
void JoinRows(Rows& rows);
/// Sorts the crossings and appends the rows inside them.
void AppendInside(Rows& crossings, EnWinding rule, Rows& rows);

/// The points of either, and those of `from` that are not in `taken`; all sorted and disjoint.
[[nodiscard]] Rows Union(Rows const& a, Rows const& b);
[[nodiscard]] Rows Difference(Rows const& from, Rows const& taken);

/// The rows of a region with that boundary, from what lies inside by the half-open rule and the
/// points of the outline, which may be unsorted.
[[nodiscard]] Rows WithBoundary(Rows halfOpen, Rows outline, EnBoundary boundary);

} // namespace ORVA::Impl
