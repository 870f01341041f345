// Points spread evenly over a disc in space.
//
//   #include <vector>
//   CDiscPoint const place({0, 0, 0}, 10.0, CPolarCoordinates(0.5, 1.0));   // center, radius, axis
//   CDiscPoint const inPlane({64, 64, 0}, 20.0);                           // in the plane z = 0
//   CRandomSource source(42);
//   CTriple<double> const p = place(source);
//   std::vector<CTriple<double>> points(1000);
//   place.Fill(points, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactRotations.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// Two of four coordinates of a uniform point of the sphere in four dimensions, as CBallPoint.
/// Nothing is rejected; about 3.1 words a point.
class SELUUTILS_EXPORT CDiscPoint final : public Impl::CDraws<CDiscPoint, CTriple<double>> {
public:
  /// Throws CExBadParam unless all numbers are finite, those of its ball as well, and the radius is
  /// at least 0.
  CDiscPoint(CTriple<double> const& center, double radius,
             CPolarCoordinates const& axis = CPolarCoordinates(0.0, 0.0));

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> Draw(Source& source) const {
    double const x = Impl::StandardNormal(source), y = Impl::StandardNormal(source);
    double const square = x * x + y * y + 2 * Impl::StandardExponential(source);
    double const factor = Impl::ToLengthOne(square);
    return m_Center + m_Frame.FromZ(x * factor, y * factor, 0) * m_Radius;
  }

  CTriple<double> m_Center;
  double m_Radius;
  Impl::CMeanFrame m_Frame;
};

} // namespace ORVA
