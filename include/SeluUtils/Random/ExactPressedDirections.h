// Polar angles of plane directions after the plane has been pressed along one axis.
//
//   #include <vector>
//   CExactPressedDirections const angle(0.5); // pressing factor
//   CRandomSource source(42);
//   double const radians = angle(source);     // in [0, pi]
//   std::vector<double> many(1000);
//   angle.Fill(many, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

#include <cmath>

namespace ORVA {

/// The angle, in [0, pi], between the x axis and (f cos t, sin t) with t uniform on the circle, by
/// an arc tangent: it keeps its digits near 0 and pi, where factors above 1 gather the angles, and
/// is 0 or pi where the factor is huge. 2.04 words per draw.
class SELUUTILS_EXPORT CExactPressedDirections final
    : public Impl::CExactDraws<CExactPressedDirections, double> {
public:
  /// Throws CExBadParam unless the pressing factor is finite and at least 0.
  explicit CExactPressedDirections(double pressingFactor);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    // Two normal numbers are a vector in a uniform direction.
    double const x = Impl::StandardNormal(source), y = Impl::StandardNormal(source);
    return std::atan2(std::fabs(y), m_Factor * x);
  }

  double m_Factor;
};

} // namespace ORVA
