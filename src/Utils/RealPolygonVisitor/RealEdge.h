// Where an edge between real points crosses the rows of the grid.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// The crossing lies at `ceil` or less than 1 before it.
struct StRealCrossing {
  int64 ceil;
  bool isLatticePoint;
};

/// An edge from a up to b, a.y < b.y, with coordinates up to 2^30.
class CRealEdge {
public:
  CRealEdge(CTriple<double> const& a, CTriple<double> const& b) noexcept;

  /// With the row y, a.y <= y <= b.y.
  [[nodiscard]] StRealCrossing At(int64 y) const;

private:
  // On which side of (x, y) the edge passes: 1 toward greater x, 0 through the point.
  [[nodiscard]] int Side(double x, double y) const;

  CTriple<double> m_A, m_B;
  double m_Uncertainty; // of a crossing as computed
  bool m_IsFixed;       // all coordinates are multiples of 2^-30
};

} // namespace ORVA::Impl
