#include <SeluUtils/Random/IsotropicRotation.h>

#include <cmath>
#include <numbers>

namespace ORVA {

CEulerRotation CIsotropicRotation::operator()() {
  constexpr double twoPi = 2 * std::numbers::pi;
  double const phi = twoPi * m_Uniform();
  double const theta = std::acos(2 * m_Uniform() - 1);
  double const psi = twoPi * m_Uniform();
  return {phi, theta, psi};
}

IRotationGenerator* CIsotropicRotation::Clone() const { return new CIsotropicRotation(*this); }

} // namespace ORVA
