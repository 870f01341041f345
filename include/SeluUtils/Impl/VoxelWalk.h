// Visits the voxels below a walk: rows, lines by address, columns turned into rows.
//
//   #include <SeluUtils/WindowVisitor.h>
//   CImage const image(IMAGE_GREY_8, CSize(4, 4));
//   CImageAccess const access = Impl::OpenVoxels(image);
//   CWindowVisitor window({0, 0, 0}, {3, 3, 0});
//   int sum = 0;
//   auto const add = [&](std::uint8_t value) { sum += value; };
//   Impl::WalkVoxels(Impl::CVoxelBlock<std::uint8_t const>(access), window, add);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/Box.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/RowsOfColumns.h>
#include <SeluUtils/Impl/VoxelBlock.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/WindowVisitor.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace ORVA {

class CBresenhamAreaVisitor;
class CPolygonVisitor;

namespace Impl {

// All is inline up to the caller, so that what his function adds to stays in registers: by bytes
// that are read a compiler could not know that they are not the sum's.

/// With the position, where f wants it.
template <class Pixel, class Function>
[[gnu::always_inline]] inline void Visit(Pixel& pixel, CTriple<int64> const& position,
                                         Function& f) {
  if constexpr (std::is_invocable_v<Function&, Pixel&, CTriple<int64>>) {
    f(pixel, position);
  } else {
    f(pixel);
  }
}

/// Along one axis, so that a compiler knows which coordinate changes.
template <int axis, class Pixel, class Function>
[[gnu::always_inline]] inline void VisitRowAlong(StVoxelRow<Pixel> const& row, Function& f) {
  auto const positionOf = [&row](int64 k) __attribute__((always_inline)) {
    auto const [x, y, z] = row.position;
    return CTriple<int64>(axis == 0 ? x + k : x, axis == 1 ? y + k : y, axis == 2 ? z + k : z);
  };
  if (row.stride == static_cast<int64>(sizeof(Pixel))) {
    for (int64 k = 0; k < row.length; ++k) Visit(row.first[k], positionOf(k), f);
  } else {
    for (int64 k = 0; k < row.length; ++k)
      Visit(*Moved(row.first, k * row.stride), positionOf(k), f);
  }
}

template <class Pixel, class Function>
[[gnu::always_inline]] inline void VisitRow(StVoxelRow<Pixel> const& row, Function& f) {
  if constexpr (std::is_invocable_v<Function&, Pixel&, CTriple<int64>>) {
    if (row.axis == 1) return VisitRowAlong<1>(row, f);
    if (row.axis == 2) return VisitRowAlong<2>(row, f);
  }
  VisitRowAlong<0>(row, f);
}

/// The cursor after so many moves >= 0. O(1).
[[nodiscard]] SELUUTILS_EXPORT StLineCursor CursorAfter(StLineCursor const& cursor,
                                                        int64 moves) noexcept;

/// The inner state of walkers that are walked as a whole.
struct StWalkAccess {
  /// The next point, or where its row is finished one beyond all images in that row.
  static CTriple<int64> Next(CWindowVisitor const& window) noexcept {
    CTriple<int64> next = window.m_Current;
    if (next.x == window.m_End.x) next.x = std::numeric_limits<int64>::max();
    return next;
  }
  static void Finish(CWindowVisitor& window) noexcept {
    window.m_Current = {window.m_End.x, window.m_High.y, window.m_High.z};
  }
  /// Null where the moves are listed.
  static StLineCursor const* Cursor(CBresenhamVisitor const& line) noexcept {
    return line.m_Line.list.IsEmpty() ? &line.m_Next : nullptr;
  }
  static StLineCursor const* Cursor(CBresenhamVisitorSelect const& line) noexcept {
    return line.m_Line.m_Line.list.IsEmpty() ? &line.m_Next : nullptr;
  }
  static void Finish(CBresenhamVisitor& line) noexcept {
    int64 const left = line.m_LastStepBound - line.m_StepIndex + 1;
    line.m_Next = CursorAfter(line.m_Next, left);
    line.m_StepIndex += left;
  }
  static void Finish(CBresenhamVisitorSelect& line) noexcept {
    int64 const left = line.m_LastStepBound - line.m_StepIndex;
    line.m_Next = CursorAfter(line.m_Next, left);
    line.m_StepIndex += left + 1;
  }
};

/// All runs in their order.
template <class Pixel, class W, class Function>
[[gnu::always_inline]] inline void WalkRuns(CVoxelBlock<Pixel> const& block, W& walker,
                                            Function& f) {
  while (walker.MorePoints()) {
    auto const row = block.Clip(walker.NextRun());
    if (row.length > 0) VisitRow(row, f);
  }
}

/// The box, clipped once.
template <class Pixel, class Function>
[[gnu::always_inline]] inline void WalkWindow(CVoxelBlock<Pixel> const& block,
                                              CWindowVisitor& window, Function& f) {
  if (!window.MorePoints()) return;
  CTriple<int64> const next = StWalkAccess::Next(window);
  CTriple<int64> low = window.Low(), high = window.High();
  StWalkAccess::Finish(window);
  Clip(low, high, block.Extents());
  if (!HasPoints(low, high)) return;
  CTriple<int64> begin = low; // where the walk stands, inside
  if (next.z >= low.z) {
    begin.z = next.z;
    if (next.y >= low.y) begin.y = next.y;
    // A row that was begun; one that was finished is followed by the next.
    bool const isInRow = next.y >= low.y && next.y <= high.y && next.z <= high.z;
    if (isInRow && next.x > low.x) {
      begin.x = next.x;
      if (next.x > high.x) begin = {low.x, begin.y + 1, begin.z};
    }
  }
  for (int64 z = begin.z; z <= high.z; ++z) {
    for (int64 y = begin.y; y <= high.y; ++y) {
      CTriple<int64> const first(begin.x, y, z);
      VisitRowAlong<0>(
          StVoxelRow<Pixel>{first, 0, block.Address(first), block.Stride(0), high.x - begin.x + 1},
          f);
      begin.x = low.x;
    }
    begin.y = low.y;
  }
}

/// Points [begin, end) of a line, counted from its cursor.
struct StPointRange {
  int64 begin, end;
};
/// Of the so many points from the cursor on those inside the extents. O(log points).
SELUUTILS_EXPORT StPointRange PointsInside(StLineCursor const& cursor, int64 points,
                                           CTriple<int64> const& extents) noexcept;

/// An axis that steps at some of the moves, with its step in bytes.
struct StAxisSteps {
  StStepPattern pattern;
  int64 bytes = 0;
};

/// The address of a point of a line: a constant way per move, and the steps of up to three axes.
template <int axes, class Pixel, class Function>
[[gnu::always_inline]] inline void
WalkAddresses(Pixel* pixel, StLineCursor cursor, int64 points, int64 bytesPerMove,
              std::array<StAxisSteps, 3> const& given, Function& f) {
  std::array<StAxisSteps, 3> steps = given;
  for (int64 left = points;;) {
    if constexpr (std::is_invocable_v<Function&, Pixel&, CTriple<int64>>) {
      f(*pixel, cursor.Get());
      cursor.Advance();
    } else {
      f(*pixel);
    }
    if (--left == 0) return;
    int64 bytes = bytesPerMove;
    if constexpr (axes > 0) bytes += steps[0].pattern.Advance() ? steps[0].bytes : 0;
    if constexpr (axes > 1) bytes += steps[1].pattern.Advance() ? steps[1].bytes : 0;
    if constexpr (axes > 2) bytes += steps[2].pattern.Advance() ? steps[2].bytes : 0;
    pixel = Moved(pixel, bytes);
  }
}

/// The next `points` > 0 points of a line of even steps, all of them inside.
template <class Pixel, class Function>
[[gnu::always_inline]] inline void WalkLineInside(CVoxelBlock<Pixel> const& block,
                                                  StLineCursor const& cursor, int64 points,
                                                  Function& f) {
  std::array<StAxisSteps, 3> steps;
  std::size_t axes = 0;
  int64 bytesPerMove = 0;
  auto const add = [&](StLineAxis const& axis, int64 stride) {
    bytesPerMove += static_cast<int64>(axis.drift) * stride;
    if (axis.pattern.rate == ~uint64{0}) { // a step at every move
      bytesPerMove += stride;
    } else if (axis.pattern.rate > 1) { // 0 and 1 are no step at any move of a line
      steps[axes++] = {axis.pattern, stride};
    }
  };
  add(cursor.x, block.Stride(0));
  add(cursor.y, block.Stride(1));
  add(cursor.z, block.Stride(2));
  Pixel* const first = block.Address(cursor.Get());
  switch (axes) {
  case 0:
    return WalkAddresses<0>(first, cursor, points, bytesPerMove, steps, f);
  case 1:
    return WalkAddresses<1>(first, cursor, points, bytesPerMove, steps, f);
  case 2:
    return WalkAddresses<2>(first, cursor, points, bytesPerMove, steps, f);
  default:
    return WalkAddresses<3>(first, cursor, points, bytesPerMove, steps, f);
  }
}

template <class Pixel, class Line, class Function>
[[gnu::always_inline]] inline void WalkLine(CVoxelBlock<Pixel> const& block, Line& line,
                                            Function& f) {
  StLineCursor const* const next = StWalkAccess::Cursor(line);
  if (next == nullptr) return WalkRuns(block, line, f);
  if (!line.MorePoints()) return;
  StLineCursor const cursor = *next;
  StPointRange const inside =
      PointsInside(cursor, static_cast<int64>(line.Remaining()), block.Extents());
  StWalkAccess::Finish(line);
  if (inside.begin == inside.end) return;
  WalkLineInside(block, inside.begin == 0 ? cursor : CursorAfter(cursor, inside.begin),
                 inside.end - inside.begin, f);
}

/// As rows, where neighbors across the columns lie nearer in memory than those along them and the
/// walk has the points to make up for it.
template <class Pixel, class W, class Function>
[[gnu::always_inline]] inline void WalkColumns(CVoxelBlock<Pixel> const& block, W& walker,
                                               Function& f) {
  CTriple<int64> const extents = block.Extents();
  int64 const longest = extents.y > extents.z ? extents.y : extents.z;
  int64 const x = block.Stride(0), y = block.Stride(1);
  bool const isXNearest = (x < 0 ? -x : x) < (y < 0 ? -y : y);
  if (!isXNearest || walker.Remaining() < static_cast<uint64>(longest) + 256)
    return WalkRuns(block, walker, f);
  CRowsOfColumns rows(extents);
  for (bool isMore = true; isMore;) {
    isMore = walker.MorePoints();
    if (isMore) {
      auto const row = block.Clip(walker.NextRun());
      if (row.length > 0) rows.Add({row.position, row.axis, row.length});
    } else {
      rows.Flush();
    }
    // Here, not in a member: what f adds to is to stay in registers.
    for (auto const& ended : rows.Ended())
      for (int64 place = ended.low; place <= ended.high; ++place)
        VisitRow(block.Row(rows.Row(ended, place)), f);
    rows.ForgetEnded();
  }
}

template <class Pixel, class W, class Function>
[[gnu::always_inline]] inline void WalkVoxels(CVoxelBlock<Pixel> const& block, W& walker,
                                              Function& f) {
  if constexpr (std::is_same_v<W, CWindowVisitor>) {
    WalkWindow(block, walker, f);
  } else if constexpr (std::is_same_v<W, CBresenhamVisitor> ||
                       std::is_same_v<W, CBresenhamVisitorSelect>) {
    WalkLine(block, walker, f);
  } else if constexpr (std::is_same_v<W, CPolygonVisitor> ||
                       std::is_same_v<W, CBresenhamAreaVisitor>) {
    WalkColumns(block, walker, f);
  } else {
    WalkRuns(block, walker, f);
  }
}

} // namespace Impl
} // namespace ORVA
