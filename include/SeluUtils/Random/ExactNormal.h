// Normally distributed numbers, exact to the tails and fast.
//
//   #include <vector>
//   CExactNormal const noise(0.0, 2.5);       // mean, standard deviation
//   CRandomSource source(42);
//   double const value = noise(source);
//   std::vector<double> many(1000);
//   noise.Fill(many, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

namespace ORVA {

/// By the ziggurat with 256 layers and the exact tail (the papers: SeluUtils/Impl/Ziggurat.h): no
/// number is infinite, and there is no greatest one. Tested are 1000 equally likely cells, four
/// moments, and the tails beyond 3 to 5.5 standard deviations at 10^8 draws. 1.02 words per draw,
/// about 2 ns.
class SELUUTILS_EXPORT CExactNormal final : public Impl::CExactDraws<CExactNormal, double> {
public:
  CExactNormal() = default; ///< mean 0, standard deviation 1
  /// Throws CExBadParam unless both are finite and the standard deviation is at least 0.
  CExactNormal(double mean, double sigma);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    return m_Mean + m_Sigma * Impl::StandardNormal(source);
  }

  double m_Mean = 0;
  double m_Sigma = 1;
};

} // namespace ORVA
