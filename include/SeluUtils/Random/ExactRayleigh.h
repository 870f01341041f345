// Rayleigh-distributed numbers: lengths of plane vectors with normal components.
//
//   #include <vector>
//   CExactRayleigh const length(1.5);         // scale
//   CRandomSource source(42);
//   double const value = length(source);
//   std::vector<double> many(1000);
//   length.Fill(many, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

#include <cmath>

namespace ORVA {

/// scale * sqrt(2 E) with an exact exponential E, so no number is infinite. 1.02 words per draw.
class SELUUTILS_EXPORT CExactRayleigh final : public Impl::CExactDraws<CExactRayleigh, double> {
public:
  CExactRayleigh() = default; ///< scale 1
  /// Throws CExBadParam unless the scale is finite and positive.
  explicit CExactRayleigh(double sigma);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    return m_Sigma * std::sqrt(2 * Impl::StandardExponential(source));
  }

  double m_Sigma = 1;
};

} // namespace ORVA
