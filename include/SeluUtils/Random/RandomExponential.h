// Exponentially distributed numbers.
//
//   CRandomExponential const wait(0.5);       // rate; the mean is 2
//   double const value = wait();
//   bool const sensible = wait.IsValid();
//   CRandomExponential const standard;        // rate 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <cmath>

namespace ORVA {

/// ln(U) * (-1 / rate): the inverse of the distribution function. Infinite once in 2^32 draws,
/// otherwise at most 22.2 means: CExactExponential has all of the tail.
class SELUUTILS_EXPORT CRandomExponential : public IRandomGenerator<double> {
public:
  CRandomExponential() = default; ///< rate 1
  explicit CRandomExponential(double lambda) : m_Lambda(lambda) {}

  double operator()() const final { return Inverse(m_Uniform()); }
  template <RandomSource Source>
  double operator()(Source& source) const {
    return Inverse(m_Uniform(source));
  }

  /// Whether the rate is finite and above the smallest normal number.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const final { return (*this)(source); }
  [[nodiscard]] double Inverse(double u) const { return std::log(u) * (-1 / m_Lambda); }

  double m_Lambda = 1;
  CRandomUniform m_Uniform;
};

} // namespace ORVA
