// Log-normally distributed numbers, also by the mean and deviation of the numbers themselves.
//
//   auto const radius = CExactLogNormal::FromMeanAndDeviation(3.0, 0.5);
//   CExactLogNormal const other(0.5, 0.2);    // mean and standard deviation of the logarithm
//   CRandomSource source(42);
//   double const value = radius(source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

#include <cmath>

namespace ORVA {

/// exp(mu + sigma z) with an exact standard normal z. 1.02 words per draw and an exponential
/// function.
class SELUUTILS_EXPORT CExactLogNormal final : public Impl::CExactDraws<CExactLogNormal, double> {
public:
  CExactLogNormal() = default; ///< mu = 0, sigma = 1
  /// Throws CExBadParam unless both are finite and sigma is at least 0.
  CExactLogNormal(double mu, double sigma);
  /// The numbers themselves have this mean and standard deviation: sigma^2 = ln(1 + (S / E)^2) and
  /// mu = ln E - sigma^2 / 2. Throws CExBadParam unless both are finite, the mean is positive and
  /// the deviation at least 0.
  [[nodiscard]] static CExactLogNormal FromMeanAndDeviation(double mean, double deviation);

  /// The mean of the logarithm.
  [[nodiscard]] double Mu() const noexcept { return m_Mu; }
  /// The standard deviation of the logarithm.
  [[nodiscard]] double Sigma() const noexcept { return m_Sigma; }

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    return std::exp(m_Mu + m_Sigma * Impl::StandardNormal(source));
  }

  double m_Mu = 0;
  double m_Sigma = 1;
};

} // namespace ORVA
