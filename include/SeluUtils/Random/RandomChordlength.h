// Random numbers on [0, 1) with density 2x.
//
//   CRandomChordlength const chord;
//   double const diameter = 5;
//   double const length = diameter * chord();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <cmath>

namespace ORVA {

/// sqrt(U): the chord that a random line cuts from a ball of diameter 1. U has 32 random bits, so
/// no chord but 0 is shorter than 2^-16.
class SELUUTILS_EXPORT CRandomChordlength : public IRandomGenerator<double> {
public:
  double operator()() const override { return std::sqrt(m_Uniform()); }
  template <RandomSource Source>
  double operator()(Source& source) const {
    return std::sqrt(m_Uniform(source));
  }
  [[nodiscard]] bool IsValid() const override { return m_Uniform.IsValid(); }

private:
  double DrawFrom(CSourceReference source) const override { return (*this)(source); }

  CRandomUniform m_Uniform;
};

} // namespace ORVA
