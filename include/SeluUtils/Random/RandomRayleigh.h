// Rayleigh-distributed numbers: lengths of plane vectors with normal components.
//
//   CRandomRayleigh const length(1.5);        // scale
//   double const value = length();
//   bool const sensible = length.IsValid();
//   CRandomRayleigh const standard;           // scale 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGenerator.h>

#include <cmath>

namespace ORVA {

/// scale * sqrt(2 E) with a standard exponential E. Infinite once in 2^32 draws,
/// otherwise at most 6.66 scales: CExactRayleigh has all of the tail.
class SELUUTILS_EXPORT CRandomRayleigh : public IRandomGenerator<double> {
public:
  CRandomRayleigh() = default; ///< scale 1
  explicit CRandomRayleigh(double sigma) : m_Sigma(sigma) {}

  double operator()() const override { return std::sqrt(2 * m_Exponential()) * m_Sigma; }
  template <RandomSource Source>
  double operator()(Source& source) const {
    return std::sqrt(2 * m_Exponential(source)) * m_Sigma;
  }

  /// Whether the scale is finite and a normal positive number.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const override { return (*this)(source); }

  double m_Sigma = 1;
  CRandomExponential m_Exponential;
};

} // namespace ORVA
