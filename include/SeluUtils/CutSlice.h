// Walks the voxels of a plane through a volume on a lattice of two digital lines.
//
//   CCutSlice slice(CTriple<double>(1, 2, 2), 300.0, NEIGHBORHOOD_26);  // x + 2y + 2z = 300
//   slice.SetImageSize({256, 256, 128});
//   int64 sum = 0;
//   while (slice.MorePoints()) sum += slice.NextPoint().x;
//   // CPlaneSection <SeluUtils/PlaneSection.h> visits each voxel of a plane exactly once
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/PointIterator.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <vector>

namespace ORVA {

/// A plane n·p = d cut through an image box. The plane's polygon in the box is spanned from one of
/// its corners by two digital lines along its edges: each voxel is a point of the first line plus
/// an offset of the second, row by row; those outside the box are skipped.
///
/// Corners within 1e-9 of a face (relative to the extent) are put onto it before it is asked
/// whether they lie in the box. The corner is the first with an angle of at most 90 degrees, else
/// the first of the sharpest; angles whose cosines are within 1e-12 of each other are equal.
///
/// On oblique planes such a lattice can repeat or miss single voxels; and as its corner and edges
/// are rounded to voxels it strays from the plane by up to two, and a strip can be missing where it
/// so leaves the box. Planes along two axes are exact; CPlaneSection is for every plane.
///
/// SetImageSize takes O(row starts * log(row moves)) time and 24 bytes for each of both; a point
/// takes O(1).
class SELUUTILS_EXPORT CCutSlice {
public:
  /// The plane through exactly three points. Takes them over and leaves the vector empty; if it
  /// throws, the vector is as it was. CException for another number of them, and for three whose
  /// differences have equal ratios in x, y and z, that is, most that lie in a line; those whose
  /// differences have zero components are not recognized and meet no image. CExBadParam where a
  /// difference does not fit 64 bits.
  CCutSlice(std::vector<CTriple<int64>>& points, int64 neighborhood);
  CCutSlice(std::vector<CTriple<int64>>&& points, int64 neighborhood)
      : CCutSlice(points, neighborhood) {}
  /// The plane normal·p = distance; the normal need not have length 1.
  CCutSlice(CTriple<double> normal, double distance, int64 neighborhood);

  /// Cuts the plane with an image of three dimensions and rewinds. CException "invalid dimension"
  /// for another dimension, "plane not in image" for a plane that does not meet the box from
  /// (0, 0, 0) to the last voxel, and the line's own error for a neighborhood that is not one of
  /// the 3D ones; CExBadParam for an extent beyond 2^30, as digital lines have 32-bit lengths.
  /// After an error the slice is as it was.
  template <class = void>
  void SetImageSize(CSize size) {
    CheckDimension(size);
    SetImageSize(CTriple<int64>(size.x, size.y, size.z));
  }
  /// The same from three extents.
  void SetImageSize(CTriple<int64> size);
  /// Builds the lattice anew for the image size that is set.
  void ComputeMoves();

  /// Whether not all points were handed out; false before SetImageSize.
  [[nodiscard]] bool MorePoints() const noexcept { return m_HandedOut != m_Total; }
  /// The next point. CException "No more points available" after the last one.
  CTriple<int64> NextPoint() {
    if (m_HandedOut == m_Total) [[unlikely]]
      RaiseNoMorePoints();
    if (m_Inner == m_InnerEnd) [[unlikely]]
      NextRow();
    ++m_HandedOut;
    return m_Lattice->rowStarts[m_Outer] + m_Lattice->rowMoves[m_Inner++];
  }
  /// The points from the next one on that lie in a row of ascending coordinates; a run of length 0
  /// after the last point.
  StRun NextRun();
  /// Number of points still to come.
  [[nodiscard]] uint64 Remaining() const noexcept { return m_Total - m_HandedOut; }
  /// Back to the first point.
  void Rewind() noexcept { Reset(); }
  /// Number of points of a whole walk.
  [[nodiscard]] uint64 Steps() const noexcept { return m_Total; }
  /// Whether a full walk has no points.
  [[nodiscard]] bool empty() const noexcept { return m_Total == 0; }
  /// Back to the first point.
  void Reset() noexcept;

  /// Puts the corners of the plane's polygon into cyclic order and chooses among them the lattice's
  /// origin and the two edges that leave it, towards its successor and its predecessor: the first
  /// corner with an angle of at most 90 degrees, else the sharpest. Edges too short to cover the
  /// polygon are lengthened. CException "no valid configuration possible" for corners that are not
  /// those of a plane in the box.
  void GetInitialization(CTriple<int64>& origin, CTriple<int64>& firstEdge,
                         CTriple<int64>& secondEdge, std::vector<CTriple<double>>& corners) const;
  /// Whether both points lie on one face of the image box.
  [[nodiscard]] bool lineValid(CTriple<double> a, CTriple<double> b) const noexcept;

  /// The normal of the plane.
  [[nodiscard]] CTriple<double> Normal() const noexcept { return m_Normal; }
  /// The distance in the plane's equation.
  [[nodiscard]] double Distance() const noexcept { return m_Distance; }

private:
  struct StLattice {
    std::vector<CTriple<int64>> rowStarts; // points of the first line
    std::vector<CTriple<int64>> rowMoves;  // offsets of the second line, monotone along each axis
  };

  [[noreturn]] static void RaiseNoMorePoints();
  static void CheckDimension(CSize const& size);
  void Compute(CTriple<int64> const& size);
  void NextRow();

  Impl::CKeptList<StLattice> m_Lattice;
  CTriple<int64> m_ImageSize;
  CTriple<double> m_Normal;
  double m_Distance = 0;
  int64 m_Neighborhood = 0;
  std::size_t m_Inner = 0, m_InnerEnd = 0; // next row move, and the end of those inside the box
  std::size_t m_Outer = 0;                 // current row start
  Impl::CUntilMoved<uint64> m_HandedOut, m_Total;
};

} // namespace ORVA
