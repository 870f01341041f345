// Log-normally distributed numbers.
//
//   CRandomLogNormal radius(0.5, 0.2);        // mean and standard deviation of the logarithm
//   double const value = radius();
//   radius.SetLogNormalExpectationAndStDeviation(3.0, 0.5);
//   double const other = radius();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomNormal.h>

#include <cmath>

namespace ORVA {

/// exp(mu + sigma z) with a standard normal z of CRandomNormal, whose tail ends at 6.66:
/// CExactLogNormal has all of it, and the mean and deviation it is given.
class SELUUTILS_EXPORT CRandomLogNormal : public IRandomGenerator<double> {
public:
  CRandomLogNormal() = default; ///< mu = 0, sigma = 1
  /// Throws CException unless both are finite.
  CRandomLogNormal(double mu, double sigma);

  double operator()() const override;
  template <RandomSource Source>
  double operator()(Source& source) const {
    return std::exp(m_Normal(source) * m_Sigma + m_Mu);
  }

  /// Sets sigma = ln(S^2 / E^2 + 1) and mu = ln E - sigma^2 / 2. No root is taken of sigma, as
  /// stored results demand: the values have expectation E, but standard deviation S only where that
  /// logarithm happens to be 1 or 0.
  void SetLogNormalExpectationAndStDeviation(double expectation, double stdDeviation);

  /// Whether both parameters are finite.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const override { return (*this)(source); }

  double m_Mu = 0;
  double m_Sigma = 1;
  CRandomNormal m_Normal;
};

} // namespace ORVA
