// Walks the points of any simple polygon, concave or with holes, in a plane or in space, exactly.
//
//   std::vector<CTriple<int64>> const outline{{0, 0, 0}, {9, 0, 3}, {9, 9, 6}, {0, 9, 3}};
//   CPolygonVisitor polygon(outline, 3, NEIGHBORHOOD_26, true);
//   int64 sum = 0;
//   while (polygon.MorePoints()) sum += polygon.NextPoint().x;
//   CPolygonVisitor inner(outline, 3, NEIGHBORHOOD_26, false);          // inside, off the border
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/PlaneColumns.h>
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

/// A simple polygon, given by its corners in either orientation, each once or closed by the first;
/// repeated and collinear corners are allowed. Holes are simple polygons inside the outline.
/// Corners between the pixels are for CRealPolygonVisitor.
///
/// With border the walk visits every lattice point inside or on the outline and the digital border
/// line of each edge; without, the points strictly inside that are not on the border line. Each
/// once, column by column along the first axis of the walk and upward along the second. The border
/// line of an edge goes from its lexicographically smaller corner to the greater one, so that the
/// point set does not depend on the orientation.
///
/// Dimension 2: corners in a plane z = const and NEIGHBORHOOD_4, _6_1, _6_2 or _8. Dimension 3:
/// corners in any one plane and NEIGHBORHOOD_6, _14_1, _14_2 or _26. There the dominant axis is
/// that of the plane normal's largest component (of equal ones z before y before x), the walk's
/// axes are the other two in their order, and the polygon is filled as seen along the dominant
/// axis: each column (u, v) of the seen polygon holds one voxel, the nearest to the plane, of two
/// equally near the upper. The border line is a digital line in the axes u and v in those moves of
/// the neighborhood that lie in their coordinate plane, laid onto that digital plane.
///
/// One corner is a point, two are a line, none is an empty walk. Where outlines cross themselves or
/// each other, inside means an odd number of crossings on the way out.
///
/// The arithmetic is exact. CExBadParam for corners more than 2147483647 apart along an axis or
/// beyond ±2^62, for corners off the common plane, a hole outside the outline's box, an unknown
/// dimension or neighborhood. Building takes O(n) time and memory for the n columns of all edges,
/// however high these are (O(n log c) where c edges cross one column), a point O(1); the points
/// themselves take none.
class SELUUTILS_EXPORT CPolygonVisitor {
public:
  /// A walk without points.
  CPolygonVisitor() = default;
  CPolygonVisitor(std::vector<CTriple<int64>> const& outline, int64 dimension, int64 neighborhood,
                  bool border);
  CPolygonVisitor(std::vector<CTriple<int64>> const& outline,
                  std::vector<std::vector<CTriple<int64>>> const& holes, int64 dimension,
                  int64 neighborhood, bool border);

  /// Whether there is a next point.
  [[nodiscard]] bool MorePoints() const noexcept { return m_LeftInRun != 0; }
  /// The next point; (0, 0, 0) after the last one.
  CTriple<int64> NextPoint() noexcept {
    CTriple<int64> const point = Impl::InSpace(m_Plane.dominantAxis, m_U, m_V, m_W);
    if (m_LeftInRun <= 1) [[unlikely]] {
      NextColumn();
      return point;
    }
    --m_LeftInRun;
    ++m_V;
    if (m_Plane.slopeV != 0) StepAcross();
    return point;
  }
  /// The points from the next one on that lie in a row: what is left of its column where the plane
  /// is level along it, else up to where it climbs. A run of length 0 after the last point. Columns
  /// run along y, or along z where the plane's dominant axis is not z.
  StRun NextRun() noexcept {
    StRun run{Impl::InSpace(m_Plane.dominantAxis, m_U, m_V, m_W), m_Plane.dominantAxis == 2 ? 1 : 2,
              m_LeftInRun};
    if (m_Plane.slopeV != 0) {
      run.length = LevelLength();
    } else {
      NextColumn();
    }
    return run;
  }
  /// Number of points still to come.
  [[nodiscard]] std::uint64_t Remaining() const noexcept {
    return m_Later + static_cast<std::uint64_t>(static_cast<int64>(m_LeftInRun));
  }
  /// Back to the first point.
  void Rewind() noexcept { Reset(); }
  /// Number of points of a full walk.
  [[nodiscard]] std::uint64_t Steps() const noexcept { return m_Steps; }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return m_Steps == 0; }
  /// Back to the first point.
  void Reset() noexcept;
  /// No effect: this walk is not clipped.
  void SetImageSize(CTriple<int64>) noexcept {}
  template <class = void>
  void SetImageSize(CSize) noexcept {}

private:
  void BeginColumn() noexcept;
  void NextColumn() noexcept;
  // Takes points as long as they have the same height.
  int64 LevelLength() noexcept;
  // Both residuals are at hand before it is known which of them counts: no branch, as no processor
  // predicts the carries of an oblique plane. The one that is too large may pass the end of 64
  // bits.
  void StepAcross() noexcept {
    auto const kept = static_cast<int64>(static_cast<std::uint64_t>(m_Residual) +
                                         static_cast<std::uint64_t>(m_Plane.remainderV));
    int64 const carried = m_Residual + m_Plane.carryV;
    m_Residual = carried < 0 ? kept : carried;
    m_W += m_Plane.wholeV + (carried < 0 ? 0 : 1);
  }

  Impl::CKeptList<std::vector<Impl::StPolygonRun>> m_Runs; // in scan order, disjoint
  Impl::StPolygonPlane m_Plane;
  // The next point is (m_U, m_V, m_W), all 0 after the last one. What changes from point to point
  // does not lie side by side: compilers would join two such numbers into one load, which has to
  // wait for the stores of both.
  int64 m_V = 0;
  int64 m_U = 0;
  int64 m_W = 0;
  Impl::CUntilMoved<std::uint64_t> m_Steps;
  Impl::CUntilMoved<std::uint64_t> m_Later; // points of the runs behind this one
  int64 m_Residual = 0;  // how far the plane lies above the point, in 1 / norm, plus a half
  std::size_t m_Run = 0; // the run being walked
  Impl::CUntilMoved<int64> m_LeftInRun; // points of the run to hand out
};

} // namespace ORVA
