#include <SeluUtils/Random/IsotropicRotation.h>

#include <cmath>
#include <numbers>

namespace ORVA {

template <class Source>
CEulerRotation CIsotropicRotation::Draw(Source& source) const {
  constexpr double twoPi = 2 * std::numbers::pi;
  double const phi = twoPi * m_Uniform(source);
  double const theta = std::acos(2 * m_Uniform(source) - 1);
  double const psi = twoPi * m_Uniform(source);
  return {phi, theta, psi};
}

CEulerRotation CIsotropicRotation::operator()() {
  Impl::CSharedSource shared;
  return Draw(shared);
}

CEulerRotation CIsotropicRotation::DrawFrom(CSourceReference source) { return Draw(source); }

IRotationGenerator* CIsotropicRotation::Clone() const { return new CIsotropicRotation(*this); }

} // namespace ORVA
