// Walks all voxels of a box in raster order.
//
//   CWindowVisitor window({2, 3, 0}, {5, 9, 4});
//   window.SetImageSize({8, 8, 8});              // the part within such an image
//   int64 sum = 0;
//   while (window.MorePoints()) sum += window.NextPoint().x;
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/Box.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

namespace ORVA {

/// Every voxel of the box from low to high, both included, in raster order: x fastest, then y, then
/// z. O(1) per point, no memory. A box with a low above its high has no points.
///
/// All of a walk is inline, so that a window that lives in one function walks in registers.
class SELUUTILS_EXPORT CWindowVisitor {
public:
  /// The one-voxel box at the origin, already walked.
  constexpr CWindowVisitor() noexcept = default;
  constexpr CWindowVisitor(CTriple<int64> low, CTriple<int64> high) noexcept
      : m_Low(low), m_High(high) {
    Start();
  }

  /// Clips the box to an image of these extents and starts anew.
  constexpr void SetImageSize(CTriple<int64> extents) noexcept {
    Impl::Clip(m_Low, m_High, extents);
    Start();
  }
  template <class = void>
  void SetImageSize(CSize size) noexcept {
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }

  [[nodiscard]] bool MorePoints() const noexcept { return m_Current.x != m_End.x || MoreRows(); }
  /// CException after the last point.
  CTriple<int64> NextPoint() {
    if (m_Current.x == m_End.x) [[unlikely]]
      NextRow();
    CTriple<int64> const point = m_Current;
    m_Current.x = Impl::WrappedSum(m_Current.x, 1);
    return point;
  }
  /// The product of the three extents high - low + 1, modulo 2^64. It is taken from the corners as
  /// they stand, so a box without points may have an extent below zero and a product other than 0.
  [[nodiscard]] uint64 Steps() const noexcept {
    auto const extent = [](int64 low, int64 high) {
      return static_cast<uint64>(high) - static_cast<uint64>(low) + 1;
    };
    return extent(m_Low.x, m_High.x) * extent(m_Low.y, m_High.y) * extent(m_Low.z, m_High.z);
  }
  /// Whether Steps() is 0.
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

  [[nodiscard]] CTriple<int64> Low() const noexcept { return m_Low; }
  [[nodiscard]] CTriple<int64> High() const noexcept { return m_High; }

private:
  [[noreturn]] static void RaisePointOutsideWindow();
  [[nodiscard]] bool MoreRows() const noexcept {
    return m_Current.y != m_High.y || m_Current.z != m_High.z;
  }
  void NextRow() {
    if (!MoreRows()) RaisePointOutsideWindow();
    m_Current.x = m_Low.x;
    if (m_Current.y != m_High.y) {
      ++m_Current.y;
    } else {
      m_Current.y = m_Low.y;
      ++m_Current.z;
    }
  }
  // Rows of 2^64 points count as empty.
  constexpr void Start() noexcept {
    m_End = Impl::WrappedSum(m_High, {1, 1, 1});
    bool const hasPoints = Impl::HasPoints(m_Low, m_High) && m_Low.x != m_End.x;
    m_Current = hasPoints ? m_Low : CTriple<int64>(m_End.x, m_High.y, m_High.z);
  }

  CTriple<int64> m_Low, m_High;
  CTriple<int64> m_End; // one past the high corner
  // The next point. Between two rows x is the end's: the new row waits until it is asked for, so
  // that a loop over the points turns into one over rows and, within it, one over x.
  CTriple<int64> m_Current;
};

} // namespace ORVA
