// Points spread evenly over a ball.
//
//   #include <vector>
//   CBallPoint const place({0, 0, 0}, 10.0);  // center, radius
//   CRandomSource source(42);
//   CTriple<double> const p = place(source);
//   std::vector<CTriple<double>> points(1000);
//   place.Fill(points, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactRotations.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// Three of five coordinates of a uniform point of the sphere in five dimensions: three exact
/// normal numbers and an exponential one, which is half the square of the other two together (F.
/// Barthe, O. Guedon, S. Mendelson and A. Naor, "A Probabilistic Approach to the Geometry of the
/// l_p^n-Ball", Annals of Probability 33 (2005) 480-513). Nothing is rejected; about 4.1 words a
/// point.
class SELUUTILS_EXPORT CBallPoint final : public Impl::CDraws<CBallPoint, CTriple<double>> {
public:
  CBallPoint() = default; ///< radius 1 about the origin
  /// Throws CExBadParam unless all numbers are finite, those of the ball as well, and the radius is
  /// at least 0.
  CBallPoint(CTriple<double> const& center, double radius);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> Draw(Source& source) const {
    double const x = Impl::StandardNormal(source), y = Impl::StandardNormal(source);
    double const z = Impl::StandardNormal(source);
    double const square = x * x + y * y + z * z + 2 * Impl::StandardExponential(source);
    double const factor = Impl::ToLengthOne(square);
    return m_Center + CTriple<double>(x * factor, y * factor, z * factor) * m_Radius;
  }

  CTriple<double> m_Center{0, 0, 0};
  double m_Radius = 1;
};

} // namespace ORVA
