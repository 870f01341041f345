// Walks every voxel of a plane through a volume exactly once, whatever the plane's direction.
//
//   CPlaneSection section(CTriple<double>(1, 2, 2), 300.0);             // x + 2y + 2z = 300
//   section.SetImageSize({256, 256, 128});
//   int64 sum = 0;
//   while (section.MorePoints()) sum += section.NextPoint().x;
//   CPlaneSection const tilted({0, 0, 0}, {9, 4, 0}, {0, 2, 7});        // through three points
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/PlaneColumns.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <array>
#include <cstddef>

namespace ORVA {

/// The digital plane of n·p = d inside an image box: in each column along the dominant axis (that
/// of the largest |n|; of equal ones z before y before x) the voxel nearest the plane, the upper
/// one where two are equally near, if it lies in the box. The walk goes in raster order over the
/// columns, the lower of the other two axes fastest.
///
/// The arithmetic is exact. A plane through points is walked as it stands; so is one given by
/// doubles that are multiples of 2^-59 of the largest |n| (more exactly, of the greatest power of
/// two in it), as all planes with integer normals up to 2^53 and integer distances are. Other
/// doubles are first rounded to such multiples, half away from zero, which moves the plane by less
/// than extent * 2^-58 voxels. Doubled or negated planes give the same walk.
///
/// A plane that meets the box from (0, 0, 0) to the last voxel always has points; one that misses
/// it by at most half a voxel can have some; any other is an empty walk. Nothing is allocated;
/// SetImageSize takes O(log extent) time, a point O(1).
class SELUUTILS_EXPORT CPlaneSection {
public:
  /// No plane: never any points.
  CPlaneSection() = default;
  /// The plane through three points. CExBadParam for points in a line, and for points so far apart
  /// that the plane's smallest integer normal exceeds 2^60 (never for differences up to 2^29).
  CPlaneSection(CTriple<int64> a, CTriple<int64> b, CTriple<int64> c);
  /// The plane normal·p = distance; the normal need not have length 1. CExBadParam for a number
  /// that is not finite and for the normal (0, 0, 0).
  CPlaneSection(CTriple<double> normal, double distance);

  /// Selects the voxels inside an image of two or three dimensions and rewinds; none where an
  /// extent is 0 or less. CExBadParam, with the walk as it was, for more points than 64 bits count.
  void SetImageSize(CTriple<int64> size);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_LeftInRow > 0; }
  /// The next point. CException "No more points available" after the last one.
  CTriple<int64> NextPoint() {
    CTriple<int64> const point = Impl::InSpace(m_Axes[2], m_U, m_Row, m_W);
    if (m_LeftInRow <= 1) [[unlikely]] {
      NextRow();
      return point;
    }
    --m_LeftInRow;
    ++m_U;
    // Both remainders are at hand before it is known which of them counts: no branch, as no
    // processor predicts the carries of an oblique plane.
    int64 const kept = m_Remainder + m_RemainderStep, carried = m_Remainder + m_CarryStep;
    m_Remainder = carried < 0 ? kept : carried;
    m_W += m_Climb + (carried < 0 ? 0 : 1);
    return point;
  }
  /// The points from the next one on that lie in a row along the lower of the two axes other than
  /// the dominant one: up to where the plane climbs. A run of length 0 after the last point.
  StRun NextRun() noexcept {
    StRun run{Impl::InSpace(m_Axes[2], m_U, m_Row, m_W), m_Axes[0], m_LeftInRow};
    if (m_Slopes[0] != 0) {
      run.length = LevelLength();
    } else if (run.length > 0) {
      LeaveRow();
    }
    return run;
  }
  /// Number of points still to come.
  [[nodiscard]] uint64 Remaining() const noexcept {
    return m_Later + static_cast<uint64>(m_LeftInRow);
  }
  /// Back to the first point.
  void Rewind() noexcept { Reset(); }
  /// Number of points of a whole walk; 0 before SetImageSize.
  [[nodiscard]] uint64 Steps() const noexcept { return m_Steps; }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return m_Steps == 0; }
  /// Back to the first point.
  void Reset() noexcept;

  /// The axis along which each column has one voxel: 0 x, 1 y, 2 z.
  [[nodiscard]] int DominantAxis() const noexcept { return m_Axes[2]; }

private:
  // A 128-bit integer; what computes with it is no header's concern.
  struct StWide {
    uint64 low = 0;
    int64 high = 0;
  };
  struct StPlane;

  void SetPlane(StPlane const& plane) noexcept;
  void NextRow();
  void LeaveRow() noexcept;
  // Takes points as long as they have the same height.
  int64 LevelLength() noexcept;
  void EnterRow() noexcept;
  [[noreturn]] static void RaiseNoMorePoints();

  // Over column (u, v) the plane's voxel is at w = floor(value / divisor), where value = offset +
  // slopes[0] * u + slopes[1] * v and |slopes| <= divisor <= 2^61.
  std::array<int, 3> m_Axes = {0, 1, 2}; // real axes of u (along a row), v (across the rows), w
  StWide m_Offset;
  std::array<int64, 2> m_Slopes = {};
  int64 m_Divisor = 0; // 0 without a plane

  int64 m_FirstRow = 0, m_RowEnd = 0; // these rows have points, no others do

  StWide m_RowQuotient; // value at u = 0 of the row, divided: it moves on by additions
  int64 m_RowRemainder = 0;

  // What a column adds to the height, and to the remainder without and with a carry.
  int64 m_Climb = 0, m_RemainderStep = 0, m_CarryStep = 0;
  // The next point is (m_U, m_Row, m_W). What changes from point to point does not lie side by
  // side: compilers would join two such numbers into one load, which has to wait for the stores of
  // both.
  int64 m_U = 0;
  int64 m_Row = 0;
  int64 m_W = 0;
  std::array<int64, 3> m_Extents = {}; // along u, v, w
  int64 m_Remainder = 0;
  uint64 m_Steps = 0;
  uint64 m_Later = 0;    // points of the rows behind this one
  int64 m_LeftInRow = 0; // points of the row not handed out
};

} // namespace ORVA
