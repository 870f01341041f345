// Fills closed polygons between start and end points marked along their digital borders.
//
//   std::vector<CTriple<int64>> path{{0, 0, 0}, {0, 5, 0}, {5, 0, 0}, {0, 0, 0}};
//   Impl::CBresenhamAreaVisitor2D area(path, NEIGHBORHOOD_8, true);   // path is empty now
//   int64 sum = 0;
//   while (area.MorePoints()) sum += area.NextPoint().x;
//   // CBresenhamAreaVisitor takes open paths of either orientation and is what most callers want
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/LineMoves.h>
#include <SeluUtils/Impl/LineWalk.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

/// First x decides, then y, then z.
[[nodiscard]] constexpr bool LexicographicLess(CTriple<int64> const& a,
                                               CTriple<int64> const& b) noexcept {
  if (a.x != b.x) return a.x < b.x;
  if (a.y != b.y) return a.y < b.y;
  return a.z < b.z;
}

/// Where the runs of an area begin and end: entry k of both belongs to run k. While the border is
/// being marked there may be more of the one than of the other.
struct StRunLimits {
  std::vector<CTriple<int64>> starts, ends;

  [[nodiscard]] std::size_t Runs() const noexcept {
    return starts.size() < ends.size() ? starts.size() : ends.size();
  }
};

/// The lists of an area.
struct StAreaLists {
  std::vector<CTriple<int64>> corners;
  StRunLimits limits;
};

/// A polygon in a plane z = const, filled column by column (ascending x), upward in y within each.
/// The path is closed (its last corner repeats the first) and leaves its smallest corner along the
/// side of greater y, so that edges of rising x are its upper side.
///
/// With border every point inside or on a convex outline is visited; without, those strictly inside
/// that are not on the digital border line, and what a border line with several points in a column
/// leaves of them: of random convex outlines in a box of side 20 between 95 % (NEIGHBORHOOD_8) and
/// all (_4) of the walks without border hold points of the border line, and 40 % to 69 % one
/// outside the outline. Outlines whose edges are all no steeper than 45 degrees are exact too.
/// Concave outlines and vertical edges within the upper or lower side can lose points or be
/// refused: CPolygonVisitor serves any outline.
///
/// Corners may lie up to 2147483647 apart along each axis, else CExBadParam; corners of different z
/// throw CException. Building takes O(n log n) time for n border points, a point O(1).
class SELUUTILS_EXPORT CBresenhamAreaVisitor2D {
public:
  CBresenhamAreaVisitor2D() = default;
  /// Takes the corners over and leaves the vector empty; if it throws, the vector is as it was.
  /// CException for fewer than three corners and for an unknown neighborhood.
  CBresenhamAreaVisitor2D(std::vector<CTriple<int64>>& corners, int64 neighborhood, bool border);
  CBresenhamAreaVisitor2D(std::vector<CTriple<int64>>&& corners, int64 neighborhood, bool border)
      : CBresenhamAreaVisitor2D(corners, neighborhood, border) {}

  [[nodiscard]] bool MorePoints() const noexcept { return m_Status != 2; }
  /// The next point; (0, 0, 0) after the last one.
  CTriple<int64> NextPoint() {
    if (m_LeftBeforeEnd == 0) [[unlikely]]
      return NextAtLimit();
    --m_LeftBeforeEnd;
    ++m_Actual.y;
    return m_Actual;
  }
  /// The points from the next one on to the end of its column, along y; a run of length 0 after the
  /// last point.
  StRun NextRun();
  /// Number of points still to come.
  [[nodiscard]] std::uint64_t Remaining() const noexcept {
    return m_Later + static_cast<std::uint64_t>(static_cast<int64>(m_LeftBeforeEnd));
  }
  /// Number of points of a full walk.
  [[nodiscard]] std::uint64_t Steps() const noexcept { return m_Steps; }
  /// Back to the first point.
  void Reset() noexcept;

  /// Start and end of the run being walked; CException "index not valid" after the last one.
  [[nodiscard]] CTriple<int64> const& GetCurrentStartPoint() const {
    if (m_StartIndex >= m_Lists->limits.starts.size()) [[unlikely]]
      RaiseIndex(true);
    return m_Lists->limits.starts[m_StartIndex];
  }
  [[nodiscard]] CTriple<int64> const& GetCurrentEndPoint() const {
    if (m_EndIndex >= m_Lists->limits.ends.size()) [[unlikely]]
      RaiseIndex(false);
    return m_Lists->limits.ends[m_EndIndex];
  }
  /// Prints "Startpoints:" and "Endpoints:" with their points to standard output.
  void PrintBorder() const;

  /// The steps of construction: marks the border anew, tidies the limits, counts and rewinds.
  void SignBorder();
  /// Appends, for each column that the line from `start` crosses, its lowest point to the starts.
  void SignStartPoints(CTriple<int64> start, CBresenhamVisitor2D const& line);
  /// The same with the highest points and the ends.
  void SignEndPoints(CTriple<int64> start, CBresenhamVisitor2D const& line);
  /// Pairs each start with an end; CException where that cannot be done.
  void EraseUselessBorders();
  /// Takes the border's points off the runs.
  void EraseBorderPoints();
  /// Counts the points of all runs.
  void CountSteps();

private:
  [[noreturn]] static void RaiseIndex(bool isStart);
  [[noreturn]] static void RaiseStatus();
  CTriple<int64> NextAtLimit();

  CKeptList<StAreaLists> m_Lists;
  int64 m_Neighborhood = 0;
  bool m_Border = false;
  std::size_t m_StartIndex = 0, m_EndIndex = 0;
  CTriple<int64> m_Actual;
  CUntilMoved<int64, 2> m_Status; // 0 nothing handed out yet, 1 walking, 2 finished
  // Points between the last one and the run's end; 0 once limits change.
  CUntilMoved<int64> m_LeftBeforeEnd;
  CUntilMoved<std::uint64_t> m_Later; // points to come besides
  CUntilMoved<std::uint64_t> m_Steps;
};

/// A polygon in an oblique plane: as in the 2D case the border marks a start and an end point in
/// each column (value of x), and the run between them is a 3D digital line.
///
/// Only one of a path's two orientations can be paired: for the other the constructor throws.
/// Where the plane's normal is largest along x, each column (value of x) is a narrow strip and
/// holds one run: of random convex outlines 40 % of the voxel columns along x are then lost, along
/// y 0.4 %, along z 0.1 %, and up to 11 % of the outlines are refused. Without border 88 %
/// (NEIGHBORHOOD_26) to 98 % (_14_1) of the walks hold points of the border line, and most one
/// outside the outline. Concave outlines can lose voxels or be refused. CPolygonVisitor serves any
/// outline exactly.
///
/// Without border the outermost columns and the two ends of each run are left out. Corners may lie
/// up to 2147483647 apart along each axis, else CExBadParam. Building takes O(n log n + p) time for
/// n border points and p points, a point O(1), each run's line one allocation or more.
class SELUUTILS_EXPORT CBresenhamAreaVisitor3D {
public:
  CBresenhamAreaVisitor3D() = default;
  /// Takes the corners over and leaves the vector empty; if it throws, the vector is as it was.
  /// CException for fewer than three corners and for neighborhoods other than 14.1 and 26.
  CBresenhamAreaVisitor3D(std::vector<CTriple<int64>>& corners, int64 neighborhood, bool border);
  CBresenhamAreaVisitor3D(std::vector<CTriple<int64>>&& corners, int64 neighborhood, bool border)
      : CBresenhamAreaVisitor3D(corners, neighborhood, border) {}

  [[nodiscard]] bool MorePoints() const noexcept { return m_Status != 2; }
  /// The next point; (0, 0, 0) after the last one. If the next run's line does not fit into memory
  /// the walk stays where it was.
  CTriple<int64> NextPoint() {
    if (m_Status == 2) return {};
    if (m_Status != 0 && m_Status != 1) [[unlikely]]
      RaiseStatus();
    CTriple<int64> const point = m_Next.Get();
    if (m_StepIndex < m_LastStep) {
      m_Lists->line.Advance(m_Next, m_StepIndex++);
      m_Status = 1;
    } else {
      BeginNextRun();
    }
    m_Actual = point;
    return point;
  }
  /// The points from the next one on that lie in a row of ascending coordinates; a run of length 0
  /// after the last point.
  StRun NextRun();
  /// Number of points still to come.
  [[nodiscard]] std::uint64_t Remaining() const noexcept {
    return m_Status == 2 ? 0 : m_Later + static_cast<std::uint64_t>(m_LastStep - m_StepIndex) + 1;
  }
  /// Number of points of a full walk.
  [[nodiscard]] std::uint64_t Steps() const noexcept { return m_Steps; }
  /// Back to the first point.
  void Reset();

  /// Start and end of the run being walked; CException "index not valid" after the last one.
  [[nodiscard]] CTriple<int64> const& GetCurrentStartPoint() const {
    if (m_StartIndex >= m_Lists->limits.starts.size()) [[unlikely]]
      RaiseIndex(true);
    return m_Lists->limits.starts[m_StartIndex];
  }
  [[nodiscard]] CTriple<int64> const& GetCurrentEndPoint() const {
    if (m_EndIndex >= m_Lists->limits.ends.size()) [[unlikely]]
      RaiseIndex(false);
    return m_Lists->limits.ends[m_EndIndex];
  }
  /// Whether every start was paired with an end of its column and no part of a side was left out,
  /// as it is where the path's orientation is the right one. Without border other pairs are left
  /// out of the walk.
  [[nodiscard]] bool IsPairedByColumn() const noexcept { return m_IsPairedByColumn; }
  /// Print the limits, or the state of the walk, to standard output.
  void PrintBorder() const;
  void PrintStatus() const;

  /// The steps of construction, as in the 2D case.
  void SignBorder();
  void SignStartPoints(CTriple<int64> start, CBresenhamVisitor3D const& line);
  void SignEndPoints(CTriple<int64> start, CBresenhamVisitor3D const& line);
  void EraseUselessBorders();
  void EraseBorderPoints();
  void CountSteps();

private:
  struct StLists : StAreaLists {
    StLine line; // of the run being walked
  };

  [[noreturn]] static void RaiseIndex(bool isStart);
  [[noreturn]] static void RaiseStatus();
  [[nodiscard]] StLine LineOfRun(std::size_t run) const;
  void BeginRun(StLine&& line, std::size_t run) noexcept;
  void BeginNextRun();

  CKeptList<StLists> m_Lists;
  int64 m_Neighborhood = 0;
  bool m_Border = false;
  std::size_t m_StartIndex = 0, m_EndIndex = 0;
  CTriple<int64> m_Actual;
  CUntilMoved<int64, 2> m_Status; // as in the 2D case
  CUntilMoved<std::uint64_t> m_Steps;
  bool m_IsPairedByColumn = true;
  CUntilMoved<std::uint64_t> m_Later; // points of the runs behind this one
  int64 m_StepIndex = 0;              // next step of the run being walked
  int64 m_LastStep = 0;               // how many of its steps are taken
  StLineCursor m_Next;
};

} // namespace ORVA::Impl
