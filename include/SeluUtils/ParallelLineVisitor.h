// Walks all voxels of an image along parallel lines of any direction that wrap around at its
// border.
//
//   CParallelLineVisitor lines(CTriple<double>(0.8, -0.5, 0.3));
//   lines.SetImageSize({64, 64, 32});
//   int64 sum = 0;
//   while (lines.MorePoints()) sum += lines.NextPoint().x;
#pragma once

#include <SeluUtils/DeltaVisitor.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

namespace ORVA {

/// Covers the whole image with parallel digital lines like CDeltaVisitor, and always: every voxel
/// once, for every direction other than (0, 0, 0) and every image, each line running the way that
/// the direction points. Only the direction counts, not its length.
///
/// O(1) per point. Setting the image or the direction takes O(extent along the main axis) time and
/// memory.
class SELUUTILS_EXPORT CParallelLineVisitor {
public:
  /// No points before SetImageSize. CExBadParam for the null direction and for a component that is
  /// not finite.
  explicit CParallelLineVisitor(CTriple<double> direction);

  /// Starts anew in an image of these extents; no points where one is 0 or negative, and after an
  /// error (std::bad_alloc).
  void SetImageSize(CTriple<int64> extents);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }
  /// Starts anew in another direction; errors as for the constructor.
  void SetDirection(CTriple<double> direction);

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_Lines.MorePoints(); }
  /// CException "No more Points" after the last one.
  CTriple<int64> NextPoint() { return InImage(m_Lines.NextPoint()); }
  /// The points from the next one on that lie in a row on the same line and the same side of a
  /// wrap; a run of length 0 after the last point. Lines of falling coordinates have no rows.
  StRun NextRun() {
    if (m_Signs.x < 0) return MorePoints() ? StRun{NextPoint(), 0, 1} : StRun();
    StRun const run = m_Lines.NextRun(); // none of them goes along another axis than the first
    return run.length == 0 ? run : StRun{InImage(run.first), m_Axis, run.length};
  }
  /// Number of points still to come, modulo 2^64.
  [[nodiscard]] uint64 Remaining() const noexcept { return m_Lines.Remaining(); }
  /// Back to the first point.
  void Rewind() noexcept { m_Lines.Rewind(); }
  /// Back to the first point.
  void Reset() noexcept { Rewind(); }
  /// Whether the point last handed out began a line or followed a wrap across the border.
  [[nodiscard]] bool BorderPoint() const noexcept { return m_Lines.BorderPoint(); }
  /// Number of points: the product of the three extents, modulo 2^64.
  [[nodiscard]] uint64 Steps() const noexcept { return m_Lines.Steps(); }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  [[nodiscard]] CTriple<int64> InImage(CTriple<int64> const& onLine) const noexcept {
    CTriple<int64> const p = m_Origin + onLine * m_Signs;
    if (m_Axis == 1) return {p.y, p.x, p.z};
    if (m_Axis == 2) return {p.y, p.z, p.x};
    return p;
  }

  // The walk itself: in line axes, and mirrored so that no component of the direction is negative.
  CDeltaVisitor m_Lines{CTriple<double>(1, 0, 0)};
  int64 m_Axis = 0;
  CTriple<int64> m_Signs{1, 1, 1}; // of the direction, in line axes
  CTriple<int64> m_Origin;         // where the first line starts, in line axes
  CTriple<int64> m_ImageSize;
};

} // namespace ORVA
