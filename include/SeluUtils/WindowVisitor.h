// Walks all voxels of a box in raster order.
//
//   CWindowVisitor window({2, 3, 0}, {5, 9, 4});
//   window.SetImageSize({8, 8, 8});              // the part within such an image
//   int64 sum = 0;
//   while (window.MorePoints()) sum += window.NextPoint().x;
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/Box.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <limits>

namespace ORVA {

namespace Impl {
struct StWalkAccess;
}

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

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_Current.x != m_End.x || MoreRows(); }
  /// CException after the last point.
  CTriple<int64> NextPoint() {
    if (m_Current.x == m_End.x) [[unlikely]]
      NextRow();
    CTriple<int64> const point = m_Current;
    m_Current.x = Impl::WrappedSum(m_Current.x, 1);
    return point;
  }
  /// What is left of the next point's row along x; a run of length 0 after the last point. (Of a
  /// row of 2^63 points or more it is its first 2^63 - 1.)
  StRun NextRun() noexcept {
    if (m_Current.x == m_End.x) {
      if (!MoreRows()) return {};
      BeginRow();
    }
    uint64 const left = static_cast<uint64>(m_End.x) - static_cast<uint64>(m_Current.x);
    constexpr uint64 longest = std::numeric_limits<int64>::max();
    StRun const run{m_Current, 0, static_cast<int64>(left < longest ? left : longest)};
    m_Current.x = Impl::WrappedSum(m_Current.x, run.length);
    return run;
  }
  /// Number of points still to come, modulo 2^64.
  [[nodiscard]] uint64 Remaining() const noexcept {
    auto const difference = [](int64 from, int64 to) {
      return static_cast<uint64>(to) - static_cast<uint64>(from);
    };
    uint64 const rows = difference(m_Current.y, m_High.y) +
                        difference(m_Current.z, m_High.z) * (difference(m_Low.y, m_High.y) + 1);
    return rows * difference(m_Low.x, m_End.x) + difference(m_Current.x, m_End.x);
  }
  /// Back to the first point.
  constexpr void Rewind() noexcept { Start(); }
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

  /// The lowest corner of the box.
  [[nodiscard]] CTriple<int64> Low() const noexcept { return m_Low; }
  /// The highest corner of the box, which belongs to it.
  [[nodiscard]] CTriple<int64> High() const noexcept { return m_High; }

private:
  friend struct Impl::StWalkAccess;

  [[noreturn]] static void RaisePointOutsideWindow();
  [[nodiscard]] bool MoreRows() const noexcept {
    return m_Current.y != m_High.y || m_Current.z != m_High.z;
  }
  void NextRow() {
    if (!MoreRows()) RaisePointOutsideWindow();
    BeginRow();
  }
  void BeginRow() noexcept {
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
