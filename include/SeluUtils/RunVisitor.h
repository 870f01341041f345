// Walks a region of the grid row by row along x: what the walkers of solids and such share.
//
//   #include <SeluUtils/EllipsoidVisitor.h>
//   #include <iostream>
//   CEllipsoidVisitor ball(CTriple<double>(0, 0, 0), 1.0);                  // is a CRunVisitor
//   ball.SetImageSize({64, 64, 64});                                        // only what is inside
//   while (ball.MorePoints()) std::cout << ball.NextRun().length << ' ';    // prints 2 1 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA {

namespace Impl {

/// The points from (low, y, z) to (high, y, z), both included, seen from an origin.
struct StRow {
  std::uint32_t z, y, low, high;

  bool operator==(StRow const&) const = default;
};

/// Rows in raster order that have no points in common.
struct StRegion {
  CTriple<int64> origin;
  std::vector<StRow> rows;
};

} // namespace Impl

/// Hands out its points in raster order, x fastest, then y, then z, each once. Points and whole
/// runs can be taken in turns. A copy walks on independently; an assignment that runs out of memory
/// changes nothing, and a walk that was moved from has no points. 16 bytes per run, O(1) time per
/// point or run.
class SELUUTILS_EXPORT CRunVisitor {
public:
  /// A walk without points.
  CRunVisitor() = default;

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_LeftInRun != 0; }
  /// The next point; (0, 0, 0) after the last one.
  CTriple<int64> NextPoint() noexcept {
    CTriple<int64> const point(m_X, m_Y, m_Z);
    if (m_LeftInRun <= 1) [[unlikely]] {
      LeaveRun();
      return point;
    }
    --m_LeftInRun;
    ++m_X;
    return point;
  }
  /// What is left of the next point's row, along axis 0; a run of length 0 after the last point.
  StRun NextRun() noexcept {
    StRun const run{{m_X, m_Y, m_Z}, 0, m_LeftInRun};
    LeaveRun();
    return run;
  }
  /// Number of points of a full walk.
  [[nodiscard]] uint64 Steps() const noexcept { return m_Steps; }
  /// Number of points still to come.
  [[nodiscard]] uint64 Remaining() const noexcept {
    return m_Later + static_cast<uint64>(static_cast<int64 const&>(m_LeftInRun));
  }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return m_Steps == 0; }
  /// Back to the first point.
  void Rewind() noexcept;
  /// Back to the first point.
  void Reset() noexcept { Rewind(); }
  /// Leaves out for good what lies outside an image of this size, and starts anew. O(runs).
  void SetImageSize(CTriple<int64> size) noexcept;
  template <class = void>
  void SetImageSize(CSize size) noexcept {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }

protected:
  /// CExBadParam for more points than 64 bits count.
  explicit CRunVisitor(Impl::StRegion region);

private:
  void EnterRun() noexcept;
  void LeaveRun() noexcept;

  Impl::CKeptList<Impl::StRegion> m_Region;
  // The next point is (m_X, m_Y, m_Z), all 0 after the last one. What changes from point to point
  // does not lie side by side: compilers would join two such numbers into one load, which has to
  // wait for the stores of both.
  int64 m_X = 0;
  int64 m_Y = 0;
  int64 m_Z = 0;
  Impl::CUntilMoved<int64> m_LeftInRun;
  Impl::CUntilMoved<uint64> m_Later; // points of the runs behind this one
  Impl::CUntilMoved<uint64> m_Steps;
  std::size_t m_Run = 0; // the run being walked
};

} // namespace ORVA
