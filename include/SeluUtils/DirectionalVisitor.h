// Walks all voxels of a box along one of the 26 unit directions, line by line.
//
//   CDirectionalVisitor lines({0, 0, 0}, {7, 7, 3}, {1, -1, 0});
//   lines.SetImageSize({8, 8, 4});               // prepares the walk
//   int64 sum = 0;
//   while (lines.MorePoints()) sum += lines.NextPoint().x;
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/Box.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/MovingPoint.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/WindowVisitor.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <array>
#include <vector>

namespace ORVA {

/// Covers a box with straight lines along a unit direction: a line starts at every voxel of the
/// faces through which the direction enters the box, and ends where it leaves the box. Every voxel
/// is handed out once. O(1) per point, no memory beyond six faces.
///
/// Two things surprise. The constructor does not prepare the walk, SetImageSize or SetDirection
/// does; until then it hands out a line from the origin. And where the first face has a single
/// voxel and the direction more than one component, the walk ends after that voxel's line.
class SELUUTILS_EXPORT CDirectionalVisitor {
public:
  /// The box from low to high, both included; CException for a direction with a component other
  /// than -1, 0 and 1.
  CDirectionalVisitor(CTriple<int64> low, CTriple<int64> high, CTriple<int64> direction);

  /// Starts anew in another direction. The null direction has no faces: std::out_of_range.
  void SetDirection(CTriple<int64> direction);
  /// Clips the box to an image of these extents and starts anew; std::out_of_range for the null
  /// direction, unless nothing is left of the box.
  void SetImageSize(CTriple<int64> extents);
  template <class = void>
  void SetImageSize(CSize size) {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_Current.Get() != m_End; }
  /// The next point; meaningless where MorePoints is false.
  CTriple<int64> NextPoint() {
    CTriple<int64> const point = m_Current.Get();
    CTriple<int64> const next = Impl::WrappedSum(point, m_Direction); // an image's box never wraps
    m_Current = Impl::StMovingPoint(next);
    if (!IsInBox(next)) [[unlikely]]
      NextLine();
    return point;
  }
  /// What is left of the next point's line in the directions +x, +y and +z, in others the next
  /// point; a run of length 0 after the last point.
  StRun NextRun();
  /// Number of points still to come, modulo 2^64. O(lines).
  [[nodiscard]] uint64 Remaining() const noexcept;
  /// Starts anew, as SetDirection with the same direction does.
  void Rewind() { SetDirection(m_Direction); }
  /// As for CWindowVisitor.
  [[nodiscard]] uint64 Steps() const noexcept { return CWindowVisitor(m_Low, m_High).Steps(); }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  bool CheckDir_And_DefineFaces(CTriple<int64> direction) noexcept;
  void FillBorderContours();
  void Initialize();
  CTriple<int64> NextBorderPoint();
  [[nodiscard]] bool MoreBorderPoints() const noexcept { return m_Face.MorePoints(); }
  void TakeFace();
  void NextLine();
  // Points of the line from p on, modulo 2^64.
  [[nodiscard]] uint64 LengthFrom(CTriple<int64> const& p) const noexcept;

  [[nodiscard]] bool IsInBox(CTriple<int64> const& p) const noexcept {
    return m_Low.x <= p.x && p.x <= m_High.x && m_Low.y <= p.y && p.y <= m_High.y &&
           m_Low.z <= p.z && p.z <= m_High.z;
  }

  // The remaining faces, low and high corner in turn.
  Impl::CKeptList<std::vector<CTriple<int64>>> m_Faces;
  CTriple<int64> m_Low, m_High;
  CTriple<int64> m_End; // one past the high corner that the constructor was given
  CTriple<int64> m_Direction;
  Impl::StMovingPoint m_Current;
  CWindowVisitor m_Face; // walks the entry face whose lines come next
  std::array<bool, 3> m_Plus{}, m_Minus{};
};

} // namespace ORVA
