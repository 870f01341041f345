// Random numbers on (0, 1] with density x / sqrt(1 - x^2).
//
//   CRandomCircleDiameter const circle;
//   double const ballDiameter = 5;
//   double const diameter = ballDiameter * circle();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <cmath>

namespace ORVA {

/// sqrt(1 - U^2): the diameter of the circle that a random plane cuts from a ball of diameter 1. U
/// has 32 random bits, so none is shorter than 2^-15.5.
class SELUUTILS_EXPORT CRandomCircleDiameter : public IRandomGenerator<double> {
public:
  double operator()() const override { return OfUniform(m_Uniform()); }
  template <RandomSource Source>
  double operator()(Source& source) const {
    return OfUniform(m_Uniform(source));
  }
  [[nodiscard]] bool IsValid() const override { return m_Uniform.IsValid(); }

private:
  double DrawFrom(CSourceReference source) const override { return (*this)(source); }
  [[nodiscard]] static double OfUniform(double u) { return std::sqrt(1 - u * u); }

  CRandomUniform m_Uniform;
};

} // namespace ORVA
