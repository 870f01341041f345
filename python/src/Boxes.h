// An image cut into boxes that are small enough to look for Ctrl-C between them.
//
//   ForEachBox(levels.Size(), [&](CPos low, CPos high) { pairs.Count(levels, d, low, high); });
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

namespace selu_python {

/// Voxels of a box: some 20 ms of counting pairs.
inline constexpr ORVA::int64 c_boxVoxels = ORVA::int64{1} << 25;

[[nodiscard]] inline ORVA::int64 Voxels(ORVA::CPos const& low, ORVA::CPos const& high) noexcept {
  return (high.x - low.x) * (high.y - low.y) * (high.z - low.z);
}

/// Calls visit(low, high) for boxes that cover those from `low` up to but not including `high`,
/// halved along their longest axes until they are small.
template <class Visit>
void ForEachBox(ORVA::CPos low, ORVA::CPos high, Visit const& visit) {
  if (Voxels(low, high) <= c_boxVoxels) return visit(low, high);
  ORVA::CPos const sides(high.x - low.x, high.y - low.y, high.z - low.z);
  ORVA::int64 ORVA::CPos::*axis = &ORVA::CPos::z; // the slowest of the longest
  if (sides.y > sides.*axis) axis = &ORVA::CPos::y;
  if (sides.x > sides.*axis) axis = &ORVA::CPos::x;
  ORVA::CPos middle = high, second = low;
  middle.*axis = second.*axis = low.*axis + sides.*axis / 2;
  ForEachBox(low, middle, visit);
  ForEachBox(second, high, visit);
}

template <class Visit>
void ForEachBox(ORVA::CSize const& size, Visit const& visit) {
  if (!size.IsEmpty()) ForEachBox({}, {size.x, size.y, size.z}, visit);
}

} // namespace selu_python
