// Gamma-distributed numbers.
//
//   CRandomGamma const volume(2.5, 0.5);      // shape, rate; the mean is 5
//   double const value = volume();
//   bool const sensible = volume.IsValid();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <limits>

namespace ORVA {

/// Shape and rate, both positive. A shape below 0 or NaN gives NaN without a draw. Constants of
/// seven digits and numbers of 32 bits put the law off by some 10^-7: CExactGamma is off by 10^-15.
///
/// Rejection from a normal for shapes from 1 on: J. H. Ahrens and U. Dieter, "Generating Gamma
/// Variates by a Modified Rejection Technique", Communications of the ACM 25 (1982) 47-54; below:
/// "Computer Methods for Sampling from Gamma, Beta, Poisson and Binomial Distributions", Computing
/// 12 (1974) 223-246. Their normal deviates: "Extensions of Forsythe's Method for Random Sampling
/// from the Normal Distribution", Mathematics of Computation 27 (1973) 927-937; the exponential
/// ones: "Computer Methods for Sampling from the Exponential and Normal Distributions",
/// Communications of the ACM 15 (1972) 873-882.
class SELUUTILS_EXPORT CRandomGamma : public IRandomGenerator<double> {
public:
  /// Shape and rate are NaN: a place holder to assign to.
  CRandomGamma() = default;
  CRandomGamma(double shape, double rate) : m_Rate(rate), m_Shape(shape) {}

  double operator()() const override;
  using IRandomGenerator<double>::operator();

  /// Whether both are finite.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const override;

  // Standard exponential (algorithm SA), normal (FL) and gamma deviates (GD and GS).
  template <class Source>
  [[nodiscard]] double sexpo(Source& source) const;
  template <class Source>
  [[nodiscard]] double snorm(Source& source) const;
  template <class Source>
  [[nodiscard]] double sgamma(double a, Source& source) const;
  [[nodiscard]] double fsign(double x, double y) const;

  template <class Source>
  [[nodiscard]] double PositiveUniform(Source& source) const;
  template <class Source>
  [[nodiscard]] double NormalCenter(double u, int interval, Source& source) const;
  template <class Source>
  [[nodiscard]] double NormalTail(double u, Source& source) const;
  template <class Source>
  [[nodiscard]] double GammaFromOne(double a, Source& source) const;
  template <class Source>
  [[nodiscard]] double GammaBelowOne(double a, Source& source) const;

  CRandomUniform m_Uniform;
  double m_Rate = std::numeric_limits<double>::quiet_NaN();
  double m_Shape = std::numeric_limits<double>::quiet_NaN();
};

} // namespace ORVA
