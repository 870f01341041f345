#include <SeluUtils/Random/RandomNormal.h>

#include "Utils/Random/Parameters.h"

#include <cmath>
#include <numbers>

namespace ORVA {

double CRandomNormal::NewPair() const {
  double const angle = 2 * std::numbers::pi * m_Uniform();
  double const radius = std::sqrt(-2 * std::log(m_Uniform()));
  m_Cached = radius * std::sin(angle);
  m_IsCached = true;
  return radius * std::cos(angle);
}

double CRandomNormal::FirstOfPair(double u1, double u2) {
  return std::sqrt(-2 * std::log(u2)) * std::cos(2 * std::numbers::pi * u1);
}

bool CRandomNormal::IsValid() const {
  return std::isfinite(m_Mean) && Impl::IsPositiveNormal(m_Sigma);
}

} // namespace ORVA
