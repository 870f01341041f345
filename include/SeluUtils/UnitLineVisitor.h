// Walks all voxels of any box along one of the 26 unit directions, line by line, thin boxes too.
//
//   #include <iostream>
//   CUnitLineVisitor lines({0, 0, 0}, {3, 0, 0}, {1, 1, 0});       // each line is one voxel here
//   for (auto const& p : lines) std::cout << p.x << ' ';           // prints 0 1 2 3
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/AxisMove.h>
#include <SeluUtils/Impl/Box.h>
#include <SeluUtils/Impl/MovingPoint.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/WindowVisitor.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <array>

namespace ORVA {

/// Covers a box with straight lines along a unit direction: a line starts at every voxel that the
/// direction enters the box through and ends where it leaves it. Every voxel of every box is handed
/// out once. Lines start on the face across x first, then on those across y and z, each in raster
/// order.
///
/// O(1) per point, no memory. A box with a low above its high has no points.
class SELUUTILS_EXPORT CUnitLineVisitor {
public:
  /// No points.
  CUnitLineVisitor() = default;
  /// The box from low to high, both included. CExBadParam for the null direction and for a
  /// component other than -1, 0 and 1.
  CUnitLineVisitor(CTriple<int64> low, CTriple<int64> high, CTriple<int64> direction);

  /// Clips the box to an image of these extents and starts anew.
  void SetImageSize(CTriple<int64> extents) noexcept;
  template <class = void>
  void SetImageSize(CSize size) noexcept {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }
  /// Starts anew in another direction; errors as for the constructor.
  void SetDirection(CTriple<int64> direction);

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_HasPoints; }
  /// The next point; (0, 0, 0) after the last one.
  CTriple<int64> NextPoint() noexcept {
    CTriple<int64> const point = m_Current.Get();
    if (m_LeftInLine == 0) [[unlikely]] {
      if (!m_HasPoints) return {};
      NextLine();
      return point;
    }
    --m_LeftInLine;
    m_Current.MoveBy(m_Direction);
    return point;
  }
  /// What is left of the next point's line in the directions +x, +y and +z, in others the next
  /// point; a run of length 0 after the last point.
  StRun NextRun() noexcept;
  /// Number of points still to come, modulo 2^64.
  [[nodiscard]] uint64 Remaining() const noexcept {
    return m_HasPoints ? m_InLaterLines + m_LeftInLine + 1 : 0;
  }
  /// Back to the first point.
  void Rewind() noexcept { Start(); }
  /// Back to the first point.
  void Reset() noexcept { Start(); }
  /// Number of points of a full walk, modulo 2^64.
  [[nodiscard]] uint64 Steps() const noexcept;
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return !Impl::HasPoints(m_Low, m_High); }

private:
  void Start() noexcept;
  void BeginFace() noexcept;
  void NextLine() noexcept;
  void BeginLine(CTriple<int64> const& start) noexcept;

  CTriple<int64> m_Low{1, 1, 1}, m_High;
  CTriple<int64> m_Direction{1, 0, 0};
  int m_Axis = 0;          // across the face on which the next lines start
  CWindowVisitor m_Starts; // its lines to come
  Impl::StMovingPoint m_Current;
  uint64 m_LeftInLine = 0; // points of the line behind the next one
  uint64 m_InLaterLines = 0;
  bool m_HasPoints = false;
};

} // namespace ORVA
