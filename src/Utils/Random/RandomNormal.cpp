#include <SeluUtils/Random/RandomNormal.h>

#include "Utils/Random/Parameters.h"

#include <cmath>
#include <numbers>

namespace ORVA {

double CRandomNormal::NewPair() const {
  double const angle = 2 * std::numbers::pi * m_uniform();
  double const radius = std::sqrt(-2 * std::log(m_uniform()));
  m_cached = radius * std::sin(angle);
  m_isCached = true;
  return radius * std::cos(angle);
}

bool CRandomNormal::IsValid() const {
  return std::isfinite(m_mean) && Impl::IsPositiveNormal(m_sigma);
}

} // namespace ORVA
