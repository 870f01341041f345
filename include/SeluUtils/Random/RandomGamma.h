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

/// Shape and rate, both positive. A shape below 0 or NaN gives NaN without a draw.
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

  double operator()() const override { return sgamma(m_Shape) / m_Rate; }

  /// Whether both are finite.
  [[nodiscard]] bool IsValid() const override;

private:
  // Standard exponential (algorithm SA), normal (FL) and gamma deviates (GD and GS).
  [[nodiscard]] double sexpo() const;
  [[nodiscard]] double snorm() const;
  [[nodiscard]] double sgamma(double a) const;
  [[nodiscard]] double fsign(double x, double y) const;

  [[nodiscard]] double PositiveUniform() const;
  [[nodiscard]] double NormalCenter(double u, int interval) const;
  [[nodiscard]] double NormalTail(double u) const;
  [[nodiscard]] double GammaFromOne(double a) const;
  [[nodiscard]] double GammaBelowOne(double a) const;

  CRandomUniform m_Uniform;
  double m_Rate = std::numeric_limits<double>::quiet_NaN();
  double m_Shape = std::numeric_limits<double>::quiet_NaN();
};

} // namespace ORVA
