// Walks all voxels of a box: in raster order, along one of the 26 unit directions, or along
// parallel lines of any direction that wrap around at the image border.
//
//   CWindowVisitor window(low, high);
//   window.SetImageSize(image.Size());
//   while (window.MorePoints()) Visit(window.NextPoint());
//   CParallelLineVisitor lines(CTriple<double>(0.8, -0.5, 0.3));
//   lines.SetImageSize(image.Size());
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/MovingPoint.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace ORVA {

namespace Impl {
/// Throws CException "Point outside Window in CWindowVisitor".
[[noreturn]] SELUUTILS_EXPORT void RaisePointOutsideWindow();
/// Throws CException "No more Points".
[[noreturn]] SELUUTILS_EXPORT void RaiseNoMorePoints();

/// Clips the range from low to high to 0 .. extent - 1, which leaves low > high where they are
/// apart.
constexpr void Clip(int64& low, int64& high, int64 extent) noexcept {
  int64 const last = extent == std::numeric_limits<int64>::min() ? extent : extent - 1;
  low = std::max<int64>(low, 0);
  high = std::min(high, last);
}
constexpr void Clip(CTriple<int64>& low, CTriple<int64>& high,
                    CTriple<int64> const& extents) noexcept {
  Clip(low.x, high.x, extents.x);
  Clip(low.y, high.y, extents.y);
  Clip(low.z, high.z, extents.z);
}

/// Whether a box from low to high, both included, has a point.
constexpr bool HasPoints(CTriple<int64> const& low, CTriple<int64> const& high) noexcept {
  return low.x <= high.x && low.y <= high.y && low.z <= high.z;
}

/// Sum modulo 2^64.
constexpr int64 WrappedSum(int64 a, int64 b) noexcept {
  return static_cast<int64>(static_cast<uint64>(a) + static_cast<uint64>(b));
}
constexpr CTriple<int64> WrappedSum(CTriple<int64> const& a, CTriple<int64> const& b) noexcept {
  return {WrappedSum(a.x, b.x), WrappedSum(a.y, b.y), WrappedSum(a.z, b.z)};
}
} // namespace Impl

/// Every voxel of the box from low to high, both included, in raster order: x fastest, then y, then
/// z. O(1) a point, no memory. A box with a low above its high has no points.
///
/// All of a walk is inline, so that a window that lives in one function walks in registers.
class CWindowVisitor {
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
  void SetImageSize(CSize size) noexcept { SetImageSize(CTriple<int64>(size.x, size.y, size.z)); }

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
  [[nodiscard]] bool MoreRows() const noexcept {
    return m_Current.y != m_High.y || m_Current.z != m_High.z;
  }
  void NextRow() {
    if (!MoreRows()) Impl::RaisePointOutsideWindow();
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

/// Covers a box with straight lines along a unit direction: a line starts at every voxel of the
/// faces through which the direction enters the box, and ends where it leaves the box. Every voxel
/// is handed out once. O(1) a point, no memory beyond six faces.
///
/// Two things surprise. The constructor does not prepare the walk, SetImageSize or SetDirection
/// does; until then it hands out a line from the origin. And where the first face has a single
/// voxel and the direction more than one component, the walk ends after that voxel's line.
class SELUUTILS_EXPORT CDirectionalVisitor {
public:
  /// The box from low to high, both included; CException for a direction with a component other
  /// than -1, 0 and 1.
  CDirectionalVisitor(CTriple<int64> low, CTriple<int64> high, CTriple<int64> direction);
  CDirectionalVisitor(CDirectionalVisitor const&) = default;
  CDirectionalVisitor(CDirectionalVisitor&&) noexcept = default;
  /// Assigns wholly or, where memory runs out, not at all.
  CDirectionalVisitor& operator=(CDirectionalVisitor const& other) {
    return *this = CDirectionalVisitor(other);
  }
  CDirectionalVisitor& operator=(CDirectionalVisitor&&) noexcept = default;
  ~CDirectionalVisitor() = default;

  /// Starts anew in another direction. The null direction has no faces: std::out_of_range.
  void SetDirection(CTriple<int64> direction);
  /// Clips the box to an image of these extents and starts anew; std::out_of_range for the null
  /// direction, unless nothing is left of the box.
  void SetImageSize(CTriple<int64> extents);
  void SetImageSize(CSize size) { SetImageSize(CTriple<int64>(size.x, size.y, size.z)); }

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
  /// As for CWindowVisitor.
  [[nodiscard]] uint64 Steps() const noexcept { return CWindowVisitor(m_Low, m_High).Steps(); }
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  bool CheckDir_And_DefineFaces(CTriple<int64> direction) noexcept;
  void FillBorderContours();
  void Initialize();
  CTriple<int64> NextBorderPoint();
  [[nodiscard]] bool MoreBorderPoints() const noexcept { return m_Face.MorePoints(); }
  void TakeFace();
  void NextLine();

  [[nodiscard]] bool IsInBox(CTriple<int64> const& p) const noexcept {
    return m_Low.x <= p.x && p.x <= m_High.x && m_Low.y <= p.y && p.y <= m_High.y &&
           m_Low.z <= p.z && p.z <= m_High.z;
  }

  CTriple<int64> m_Low, m_High;
  CTriple<int64> m_End; // one past the high corner that the constructor was given
  CTriple<int64> m_Direction;
  Impl::StMovingPoint m_Current;
  CWindowVisitor m_Face;               // walks the entry face whose lines come next
  std::vector<CTriple<int64>> m_Faces; // the remaining faces, low and high in turn
  std::array<bool, 3> m_Plus{}, m_Minus{};
};

/// Covers the whole image with parallel digital lines of a real direction, periodically: a line
/// that leaves the image on one side goes on at the opposite one. All lines run along the main
/// axis, that of the direction's largest component, and have its extent of points.
///
/// As it was built for, it serves directions whose two other components are not negative: these
/// visit every voxel once, others end early. With main axis z the points are handed out with their
/// axes rotated, x holding the image's y, y its z and z its x. CParallelLineVisitor has neither
/// limit.
///
/// O(1) a point. Setting the image or the direction takes O(extent along the main axis) time and
/// memory (std::bad_alloc where that is too much).
class SELUUTILS_EXPORT CDeltaVisitor {
public:
  /// No points before SetImageSize.
  explicit CDeltaVisitor(CTriple<double> direction) : m_Direction(direction) {}
  CDeltaVisitor(CDeltaVisitor const&) = default;
  CDeltaVisitor(CDeltaVisitor&&) noexcept = default;
  /// Assigns wholly or, where memory runs out, not at all.
  CDeltaVisitor& operator=(CDeltaVisitor const& other) { return *this = CDeltaVisitor(other); }
  CDeltaVisitor& operator=(CDeltaVisitor&&) noexcept = default;
  ~CDeltaVisitor() = default;

  /// Starts anew in an image of these extents, none where one is 0 or negative. A y extent of 0
  /// sets the z extent to 1. CException "Invalid Direction given to CDeltaVisitor" for a component
  /// that is not finite, and "Invalid Calculation of Line in CDeltaVisitor" where round(|main
  /// component| * diagonal) + 1 is less than the extent along the main axis: a direction shorter
  /// than 1, or an oblique one in an elongated image. The walk has no points then.
  void SetImageSize(CTriple<int64> extents);
  void SetImageSize(CSize size) { SetImageSize(CTriple<int64>(size.x, size.y, size.z)); }
  /// Starts anew in another direction; errors as above.
  void SetDirection(CTriple<double> direction);

  [[nodiscard]] bool MorePoints() const noexcept {
    return m_Index != static_cast<uint64>(m_Length);
  }
  /// CException "No more Points" after the last one.
  CTriple<int64> NextPoint() {
    if (m_Index >= m_Line.size()) [[unlikely]]
      Impl::RaiseNoMorePoints();
    m_Previous = m_Index;
    m_IsBorder = m_NextIsBorder;
    CTriple<int64> const point = Convert(m_Line[m_Index] + m_Offset);
    ++m_Index;
    m_NextIsBorder = false;
    if (m_Index == static_cast<uint64>(m_Length)) [[unlikely]]
      NextLine();
    if (MorePoints()) WrapNextPoint();
    return point;
  }
  /// Whether the point last handed out began a line or followed a wrap across the border.
  [[nodiscard]] bool BorderPoint() const noexcept { return m_IsBorder; }
  /// The product of the three extents, modulo 2^64.
  [[nodiscard]] uint64 Steps() const noexcept;
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  void Initialize();
  [[nodiscard]] int64 MainAxis() const;
  void BuildLine();
  void NextLine() noexcept;

  [[nodiscard]] CTriple<int64> Convert(CTriple<int64> const& p) const noexcept {
    if (m_Axis == 1) return {p.y, p.x, p.z};
    if (m_Axis == 2) return {p.z, p.x, p.y};
    return p;
  }
  void WrapNextPoint() noexcept {
    CTriple<int64> const& next = m_Line[m_Index];
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

  CTriple<double> m_Direction;
  CTriple<int64> m_Start, m_Offset; // of the first and of the current line, in line axes
  uint64 m_Previous = 0;
  Impl::CUntilMoved<uint64> m_Index;
  int64 m_Axis = 0; // main axis: 0 x, 1 y, 2 z
  bool m_IsBorder = true, m_NextIsBorder = true;
  std::vector<CTriple<int64>> m_Line; // points of one line relative to its start, in line axes
  CTriple<int64> m_ImageSize;
  Impl::CUntilMoved<int64> m_Length; // in line axes, as the extents are
  int64 m_Extent2 = 0, m_Extent3 = 0;
};

/// Covers the whole image with parallel digital lines like CDeltaVisitor, and always: every voxel
/// once, for every direction other than (0, 0, 0) and every image, each line running the way that
/// the direction points. Only the direction counts, not its length.
///
/// O(1) a point. Setting the image or the direction takes O(extent along the main axis) time and
/// memory.
class SELUUTILS_EXPORT CParallelLineVisitor {
public:
  /// No points before SetImageSize. CExBadParam for the null direction and for a component that is
  /// not finite.
  explicit CParallelLineVisitor(CTriple<double> direction);

  /// Starts anew in an image of these extents; no points where one is 0 or negative.
  void SetImageSize(CTriple<int64> extents);
  void SetImageSize(CSize size) { SetImageSize(CTriple<int64>(size.x, size.y, size.z)); }
  /// Starts anew in another direction; errors as for the constructor.
  void SetDirection(CTriple<double> direction);

  [[nodiscard]] bool MorePoints() const noexcept { return m_Lines.MorePoints(); }
  /// CException "No more Points" after the last one.
  CTriple<int64> NextPoint() {
    CTriple<int64> const p = m_Origin + m_Lines.NextPoint() * m_Signs;
    if (m_Axis == 1) return {p.y, p.x, p.z};
    if (m_Axis == 2) return {p.y, p.z, p.x};
    return p;
  }
  /// Whether the point last handed out began a line or followed a wrap across the border.
  [[nodiscard]] bool BorderPoint() const noexcept { return m_Lines.BorderPoint(); }
  /// Number of points: the product of the three extents, modulo 2^64.
  [[nodiscard]] uint64 Steps() const noexcept { return m_Lines.Steps(); }
  [[nodiscard]] bool empty() const noexcept { return Steps() == 0; }

private:
  // The walk itself: in line axes, and mirrored so that no component of the direction is negative.
  CDeltaVisitor m_Lines{CTriple<double>(1, 0, 0)};
  int64 m_Axis = 0;
  CTriple<int64> m_Signs{1, 1, 1}; // of the direction, in line axes
  CTriple<int64> m_Origin;         // where the first line starts, in line axes
  CTriple<int64> m_ImageSize;
};

} // namespace ORVA
