#include <SeluUtils/Voxels.h>

#include "Utils/Exact.h"

#include <pxlib2core/Exception.h>

namespace ORVA::Impl {

namespace {

constexpr char c_module[] = "src/Utils/Voxels";

// The axis after so many moves.
int64 PositionAfter(StLineAxis const& axis, int64 moves) {
  auto const carries = (int128{axis.pattern.fraction} + int128{axis.pattern.rate} * moves) >> 64;
  return static_cast<int64>(axis.position + static_cast<uint64>(moves) * axis.drift +
                            static_cast<uint64>(carries));
}

// The least count of moves in [begin, end) for which `isReached` holds, else end; once it holds it
// goes on to hold.
template <class IsReached>
int64 FirstReached(int64 begin, int64 end, IsReached isReached) {
  while (begin < end) {
    int64 const middle = begin + (end - begin) / 2;
    if (isReached(middle)) {
      end = middle;
    } else {
      begin = middle + 1;
    }
  }
  return begin;
}

// An axis rises or falls all along a line, so that what is inside follows one another; where both
// ends are inside, as they are of most lines, all of it is.
void Narrow(StPointRange& range, StLineAxis const& axis, int64 extent) {
  if (range.begin == range.end) return;
  auto const isInside = [&](int64 moves) {
    return static_cast<uint64>(PositionAfter(axis, moves)) < static_cast<uint64>(extent);
  };
  if (isInside(range.begin) && isInside(range.end - 1)) return;
  bool const isFalling = axis.drift != 0;
  int64 const begin = FirstReached(range.begin, range.end, [&](int64 moves) {
    int64 const position = PositionAfter(axis, moves);
    return isFalling ? position < extent : position >= 0;
  });
  range.end = FirstReached(begin, range.end, [&](int64 moves) {
    int64 const position = PositionAfter(axis, moves);
    return isFalling ? position < 0 : position >= extent;
  });
  range.begin = begin;
}

} // namespace

void RaiseNoPixelType() {
  RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::ForEachVoxel"),
                "an image without a pixel type has no voxels");
}

StPointRange PointsInside(StLineCursor const& cursor, int64 points,
                          CTriple<int64> const& extents) noexcept {
  StPointRange range{0, points};
  Narrow(range, cursor.x, extents.x);
  Narrow(range, cursor.y, extents.y);
  Narrow(range, cursor.z, extents.z);
  return range;
}

StLineCursor CursorAfter(StLineCursor const& cursor, int64 moves) noexcept {
  return cursor.MovedTo({PositionAfter(cursor.x, moves), PositionAfter(cursor.y, moves),
                         PositionAfter(cursor.z, moves)},
                        moves);
}

} // namespace ORVA::Impl
