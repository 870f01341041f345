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
#include <vector>

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

/// Turns the columns of a walk into rows across them. It remembers of each place along the columns
/// where the row through it began, and hands a row out where a column lacks it: O(1) per end of a
/// column or a row.
template <class Pixel, class Function>
class CRowsOfColumns {
public:
  CRowsOfColumns(CVoxelBlock<Pixel> const& block, Function& f) : m_Block(block), m_Function(f) {
    CTriple<int64> const extents = block.Extents();
    int64 const longest = extents.y > extents.z ? extents.y : extents.z;
    m_RowStarts.resize(static_cast<std::size_t>(longest > extents.x ? longest : extents.x));
  }

  /// The next run of the walk, inside the image.
  void Add(StVoxelRow<Pixel> const& run) {
    if (!Follows(run)) {
      Flush();
      m_Across = run.axis == 0 ? 1 : 0;
    }
    int64 const column = At(run.position, m_Across);
    if (!m_Current.empty() && column != m_Column) CloseColumn();
    if (m_Current.empty()) {
      m_First = run;
      m_Column = column;
    }
    int64 const low = At(run.position, run.axis);
    m_Current.push_back({low, low + run.length - 1});
  }
  /// Hands out all rows that are left.
  void Flush() {
    if (!m_Current.empty()) CloseColumn();
    if (!m_Previous.empty()) CloseRows(m_Column + 1);
    m_Previous.clear();
  }

private:
  struct StPart {
    int64 low, high;
  };
  using Parts = std::vector<StPart>;

  static int64 At(CTriple<int64> const& p, int64 axis) noexcept {
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  }
  // Whether the run lies in the current column behind its other runs, or in the one after it; else
  // the rows end here.
  bool Follows(StVoxelRow<Pixel> const& run) {
    if (m_Current.empty() || run.axis != m_First.axis) return false;
    CTriple<int64> const from = m_First.position, to = run.position;
    int64 const axis = run.axis, low = At(to, axis);
    int64 const a = axis == 0 ? 1 : 0, b = axis == 2 ? 1 : 2;
    bool const isSameA = At(from, a) == At(to, a), isSameB = At(from, b) == At(to, b);
    if (isSameA && isSameB) return low > m_Current.back().high;
    if (m_Previous.empty() && isSameA != isSameB) {
      m_Across = isSameA ? b : a;
      m_Column = At(from, m_Across);
    }
    return At(to, m_Across) == m_Column + 1 && (m_Across == a ? isSameB : isSameA);
  }
  // Calls visit(low, high) for the parts of a outside of b.
  template <class VisitPart>
  static void ForEachOutside(Parts const& a, Parts const& b, VisitPart visit) {
    auto taken = b.begin();
    for (StPart part : a) {
      while (taken != b.end() && taken->high < part.low) ++taken;
      for (auto cut = taken; cut != b.end() && cut->low <= part.high; ++cut) {
        if (cut->low > part.low) visit(part.low, cut->low - 1);
        part.low = cut->high + 1;
      }
      if (part.low <= part.high) visit(part.low, part.high);
    }
  }
  void CloseColumn() {
    if (!m_Previous.empty()) CloseRows(m_Column);
    ForEachOutside(m_Current, m_Previous, [&](int64 low, int64 high) {
      for (int64 place = low; place <= high; ++place)
        m_RowStarts[static_cast<std::size_t>(place)] = m_Column;
    });
    m_Previous.swap(m_Current);
    m_Current.clear();
  }
  // Hands out the rows of the column before `end` that the current column has not.
  void CloseRows(int64 end) {
    CTriple<int64> position = m_First.position;
    int64 const axis = m_First.axis;
    int64& along = axis == 0 ? position.x : axis == 1 ? position.y : position.z;
    int64& across = m_Across == 0 ? position.x : m_Across == 1 ? position.y : position.z;
    ForEachOutside(m_Previous, m_Current, [&](int64 low, int64 high) {
      for (along = low; along <= high; ++along) {
        across = m_RowStarts[static_cast<std::size_t>(along)];
        VisitRow(StVoxelRow<Pixel>{position, m_Across, m_Block.Address(position),
                                   m_Block.Stride(m_Across), end - across},
                 m_Function);
      }
    });
  }

  CVoxelBlock<Pixel> const& m_Block;
  Function& m_Function;
  StVoxelRow<Pixel> m_First;        // of the current column
  int64 m_Across = 0, m_Column = 0; // the axis across the columns, and where on it this one is
  Parts m_Previous, m_Current;      // the columns' places, ascending
  std::vector<int64> m_RowStarts;   // by place along the columns
};

/// As rows, where neighbors across the columns lie nearer in memory than those along them and the
/// walk has the points to make up for it.
template <class Pixel, class W, class Function>
void WalkColumns(CVoxelBlock<Pixel> const& block, W& walker, Function& f) {
  CTriple<int64> const extents = block.Extents();
  int64 const longest = extents.y > extents.z ? extents.y : extents.z;
  int64 const x = block.Stride(0), y = block.Stride(1);
  bool const isXNearest = (x < 0 ? -x : x) < (y < 0 ? -y : y);
  if (!isXNearest || walker.Remaining() < static_cast<uint64>(longest) + 256)
    return WalkRuns(block, walker, f);
  CRowsOfColumns<Pixel, Function> rows(block, f);
  while (walker.MorePoints()) {
    auto const row = block.Clip(walker.NextRun());
    if (row.length > 0) rows.Add(row);
  }
  rows.Flush();
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
