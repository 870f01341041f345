// Walks all voxels of an image along parallel lines that keep within half a voxel of their
// direction.
//
//   #include <iostream>
//   CStraightLineVisitor lines(CTriple<double>(1, 0.25, 0));
//   lines.SetImageSize({6, 4, 1});
//   for (int k = 0; k < 6; ++k) std::cout << lines.NextPoint().y << ' ';  // prints 0 0 1 1 1 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <cstdint>
#include <vector>

namespace ORVA {

/// Covers the whole image with parallel digital lines, periodically, like CParallelLineVisitor:
/// every voxel once, for every direction other than (0, 0, 0) and every image, a line that leaves
/// the image on one side going on at the opposite one. All lines run along the main axis, that of
/// the direction's largest component (of equal ones x before y before z), the way the direction
/// points, and have its extent of points. Only the direction counts, not its length.
///
/// The slopes are exact: after i steps along the main axis a line lies floor(i * slope + 1/2)
/// voxels to the side, as the two doubles' quotient has it, never more than half a voxel off.
/// (Those of CParallelLineVisitor are rounded once for the whole line, which takes them off by up
/// to 1.3.)
///
/// O(1) per point. Setting the image or the direction takes O(extent along the main axis) time and
/// one byte per voxel of it.
class SELUUTILS_EXPORT CStraightLineVisitor {
public:
  /// No points before SetImageSize. CExBadParam for the null direction and for a component that is
  /// not finite.
  explicit CStraightLineVisitor(CTriple<double> direction);

  /// Starts anew in an image of these extents; no points where one is 0 or negative. If memory runs
  /// out the walk stays as it was.
  void SetImageSize(CTriple<int64> extents);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }
  /// Starts anew in another direction; errors as for the constructor.
  void SetDirection(CTriple<double> direction);

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_Left != 0; }
  /// The next point; (0, 0, 0) after the last one.
  CTriple<int64> NextPoint() noexcept {
    if (m_Left == 0) [[unlikely]]
      return {};
    CTriple<int64> const point = InImage(m_OnLine);
    m_IsBorder = m_NextIsBorder;
    --m_Left;
    if (++m_OnLine.x == m_Extents.x) [[unlikely]] {
      NextLine();
    } else {
      StepAside();
    }
    return point;
  }
  /// The points from the next one on that lie in a row on the same line; a run of length 0 after
  /// the last point. Lines of falling coordinates have no rows.
  StRun NextRun() noexcept {
    if (m_Left == 0) return {};
    StRun run{NextPoint(), m_Axis, 1};
    if (m_Signs.x < 0) return run;
    while (m_Left != 0 && m_OnLine.x != 0 && StepsAt(m_OnLine.x) == 0) {
      NextPoint();
      ++run.length;
    }
    return run;
  }
  /// Whether the point last handed out began a line or followed a wrap across the border.
  [[nodiscard]] bool BorderPoint() const noexcept { return m_IsBorder; }
  /// Number of points still to come, modulo 2^64.
  [[nodiscard]] uint64 Remaining() const noexcept { return m_Left; }
  /// Back to the first point.
  void Rewind() noexcept;
  /// Back to the first point.
  void Reset() noexcept { Rewind(); }
  /// Number of points: the product of the three extents, modulo 2^64.
  [[nodiscard]] uint64 Steps() const noexcept;
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  void Build(CTriple<double> const& direction, CTriple<int64> const& extents);
  void NextLine() noexcept;

  // Whether the line goes one voxel aside on its way to point i: 1 along its second axis, 2 along
  // the third.
  [[nodiscard]] std::uint8_t StepsAt(int64 i) const noexcept { return m_Steps->data()[i]; }
  void StepAside() noexcept {
    std::uint8_t const steps = StepsAt(m_OnLine.x);
    m_NextIsBorder = false;
    if ((steps & 1) != 0) Wrap(m_OnLine.y, m_Extents.y);
    if ((steps & 2) != 0) Wrap(m_OnLine.z, m_Extents.z);
  }
  void Wrap(int64& position, int64 extent) noexcept {
    if (++position < extent) return;
    position = 0;
    m_NextIsBorder = true;
  }
  // From line axes: the main axis first, mirrored so that no component of the direction is
  // negative.
  [[nodiscard]] CTriple<int64> InImage(CTriple<int64> const& onLine) const noexcept {
    CTriple<int64> const p = m_Origin + onLine * m_Signs;
    if (m_Axis == 1) return {p.y, p.x, p.z};
    if (m_Axis == 2) return {p.y, p.z, p.x};
    return p;
  }

  Impl::CKeptList<std::vector<std::uint8_t>> m_Steps;
  CTriple<double> m_Direction;
  CTriple<int64> m_ImageSize;
  int64 m_Axis = 0; // main axis: 0 x, 1 y, 2 z
  // In line axes.
  CTriple<int64> m_Extents, m_Signs{1, 1, 1}, m_Origin;
  CTriple<int64> m_LineStart; // of the current line
  CTriple<int64> m_OnLine;    // the next point
  bool m_IsBorder = true, m_NextIsBorder = true;
  Impl::CUntilMoved<uint64> m_Left;
};

} // namespace ORVA
