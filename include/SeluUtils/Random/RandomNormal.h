// Normally distributed numbers.
//
//   CRandomNormal const noise(0.0, 2.5);      // mean, standard deviation
//   double const value = noise();
//   double const other = noise(10.0, 1.0);    // parameters of this draw alone
//   bool const sensible = noise.IsValid();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

namespace ORVA {

/// The polar angle and radius method, two values from two uniform draws: the second waits in the
/// object for the next call, whichever form it takes. Once in 2^32 pairs the radius is infinite,
/// otherwise at most 6.66 standard deviations: CExactNormal has all of the tail.
///
/// G. E. P. Box and M. E. Muller, "A Note on the Generation of Random Normal Deviates", Annals of
/// Mathematical Statistics 29 (1958) 610-611.
class SELUUTILS_EXPORT CRandomNormal : public IRandomGenerator<double> {
public:
  CRandomNormal() = default; ///< mean 0, standard deviation 1
  CRandomNormal(double mean, double sigma) : m_Sigma(sigma), m_Mean(mean) {}

  double operator()() const final { return Standard() * m_Sigma + m_Mean; }
  double operator()(double mean, double sigma) const { return Standard() * sigma + mean; }
  /// The first value of a new pair. The second one is not kept: what a source gives depends on the
  /// source alone.
  template <RandomSource Source>
  double operator()(Source& source) const {
    return (*this)(m_Mean, m_Sigma, source);
  }
  template <RandomSource Source>
  double operator()(double mean, double sigma, Source& source) const {
    double const u1 = m_Uniform(source);
    return FirstOfPair(u1, m_Uniform(source)) * sigma + mean;
  }

  /// Whether both are finite and the standard deviation is a normal positive number.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const final { return (*this)(source); }
  [[nodiscard]] double Standard() const {
    if (!m_IsCached) return NewPair();
    double const z = m_Cached;
    m_IsCached = false;
    m_Cached = 0;
    return z;
  }
  [[nodiscard]] double NewPair() const;
  [[nodiscard]] static double FirstOfPair(double u1, double u2);

  double m_Sigma = 1;
  double m_Mean = 0;
  mutable double m_Cached = 0;
  mutable bool m_IsCached = false;
  CRandomUniform m_Uniform;
};

} // namespace ORVA
