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

/// sqrt(1 - U^2): the diameter of the circle that a random plane cuts from a ball of diameter 1.
class SELUUTILS_EXPORT CRandomCircleDiameter : public IRandomGenerator<double> {
public:
  double operator()() const override {
    double const u = m_Uniform();
    return std::sqrt(1 - u * u);
  }
  [[nodiscard]] bool IsValid() const override { return m_Uniform.IsValid(); }

private:
  CRandomUniform m_Uniform;
};

} // namespace ORVA
