// Points spread evenly over a sphere's surface.
//
//   #include <vector>
//   CSpherePoint const place({0, 0, 0}, 10.0);   // center, radius
//   CRandomSource source(42);
//   CTriple<double> const p = place(source);
//   std::vector<CTriple<double>> points(1000);
//   place.Fill(points, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactRotations.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// A vector of three exact normal numbers, scaled to the radius. About 3.1 words a point.
class SELUUTILS_EXPORT CSpherePoint final : public Impl::CDraws<CSpherePoint, CTriple<double>> {
public:
  CSpherePoint() = default; ///< radius 1 about the origin
  /// Throws CExBadParam unless all numbers are finite, those of the sphere as well, and the radius
  /// is at least 0.
  CSpherePoint(CTriple<double> const& center, double radius);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> Draw(Source& source) const {
    return m_Center + Impl::UnitVector(source) * m_Radius;
  }

  CTriple<double> m_Center{0, 0, 0};
  double m_Radius = 1;
};

} // namespace ORVA
