// Walks all voxels of an image along parallel lines of a direction that wrap around at its border.
//
//   CDeltaVisitor lines(CTriple<double>(0.8, 0.5, 0.3));
//   lines.SetImageSize({64, 64, 32});
//   int64 sum = 0;
//   while (lines.MorePoints()) sum += lines.NextPoint().x;
//   // CParallelLineVisitor <SeluUtils/ParallelLineVisitor.h> covers every image in every direction
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <vector>

namespace ORVA {

/// Covers the whole image with parallel digital lines of a real direction, periodically: a line
/// that leaves the image on one side goes on at the opposite one. All lines run along the main
/// axis, that of the direction's largest component, and have its extent of points.
///
/// As it was built for, it serves directions whose two other components are not negative: these
/// visit every voxel once, others end early. With main axis z the points are handed out with their
/// axes rotated, x holding the image's y, y its z and z its x. CParallelLineVisitor has neither
/// limit.
///
/// O(1) per point. Setting the image or the direction takes O(extent along the main axis) time and
/// memory (std::bad_alloc where that is too much).
class SELUUTILS_EXPORT CDeltaVisitor {
public:
  /// No points before SetImageSize.
  explicit CDeltaVisitor(CTriple<double> direction) : m_Direction(direction) {}

  /// Starts anew in an image of these extents, no points where one is 0 or negative. A y extent of
  /// 0 sets the z extent to 1. CException "Invalid Direction given to CDeltaVisitor" for a
  /// component that is infinite or NaN, and "Invalid Calculation of Line in CDeltaVisitor" where
  /// round(|main component| * diagonal) + 1 is less than the extent along the main axis: a
  /// direction shorter than 1, or an oblique one in an elongated image. After an error,
  /// std::bad_alloc included, the walk has no points: Steps() is 0. The extents stay for the next
  /// direction.
  void SetImageSize(CTriple<int64> extents);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }
  /// Starts anew in another direction; errors as above.
  void SetDirection(CTriple<double> direction);

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept {
    return m_Index != static_cast<uint64>(m_Length);
  }
  /// CException "No more Points" after the last one.
  CTriple<int64> NextPoint() {
    if (m_Index >= m_Line->size()) [[unlikely]]
      RaiseNoMorePoints();
    m_Previous = m_Index;
    m_IsBorder = m_NextIsBorder;
    CTriple<int64> const point = Convert((*m_Line)[m_Index] + m_Offset);
    ++m_Index;
    m_NextIsBorder = false;
    if (m_Index == static_cast<uint64>(m_Length)) [[unlikely]]
      NextLine();
    if (MorePoints()) WrapNextPoint();
    return point;
  }
  /// The points from the next one on that lie in a row of ascending coordinates on the same line
  /// and the same side of a wrap; a run of length 0 after the last point.
  StRun NextRun();
  /// Number of points still to come, modulo 2^64.
  [[nodiscard]] uint64 Remaining() const noexcept;
  /// Back to the first point.
  void Rewind() noexcept;
  /// Whether the point last handed out began a line or followed a wrap across the border.
  [[nodiscard]] bool BorderPoint() const noexcept { return m_IsBorder; }
  /// The product of the three extents, modulo 2^64; 0 where the walk has no points.
  [[nodiscard]] uint64 Steps() const noexcept;
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  [[noreturn]] static void RaiseNoMorePoints();
  void Initialize();
  [[nodiscard]] int64 MainAxis() const;
  void BuildLine();
  void NextLine() noexcept;
  [[nodiscard]] CTriple<int64> FirstStart() const noexcept;

  [[nodiscard]] CTriple<int64> Convert(CTriple<int64> const& p) const noexcept {
    if (m_Axis == 1) return {p.y, p.x, p.z};
    if (m_Axis == 2) return {p.z, p.x, p.y};
    return p;
  }
  void WrapNextPoint() noexcept {
    CTriple<int64> const& next = (*m_Line)[m_Index];
    Wrap(m_Offset.y, next.y, m_Extent2);
    Wrap(m_Offset.z, next.z, m_Extent3);
  }
  void Wrap(int64& offset, int64 component, int64 extent) noexcept {
    int64 const position = component + offset;
    if (position >= 0 && position < extent) [[likely]]
      return;
    offset += position < 0 ? extent : -extent;
    m_NextIsBorder = true;
  }

  // Points of one line relative to its start, in line axes.
  Impl::CKeptList<std::vector<CTriple<int64>>> m_Line;
  CTriple<double> m_Direction;
  CTriple<int64> m_Start, m_Offset; // of the first and of the current line, in line axes
  uint64 m_Previous = 0;
  Impl::CUntilMoved<uint64> m_Index;
  int64 m_Axis = 0; // main axis: 0 x, 1 y, 2 z
  bool m_IsBorder = true, m_NextIsBorder = true;
  CTriple<int64> m_ImageSize;
  Impl::CUntilMoved<int64> m_Length; // in line axes, as the extents are
  int64 m_Extent2 = 0, m_Extent3 = 0;
};

} // namespace ORVA
