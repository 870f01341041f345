#include <SeluUtils/Random/GirdleRotation.h>

#include "Utils/Random/Parameters.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace ORVA {

CGirdleRotation::CGirdleRotation(double beta) : m_Beta(beta), m_Frame(zaxis) { Check(39); }

CGirdleRotation::CGirdleRotation(double beta, CPolarCoordinates const& axis)
    : m_Beta(beta), m_Frame(axis) {
  Check(49);
}

void CGirdleRotation::Check(int line) const {
  if (!Impl::IsPositiveNormal(m_Beta))
    Impl::Raise(
        ORVA_LOCATION("src/Utils/Random/GirdleRotation", "ORVA::CGirdleRotation::CGirdleRotation")
            .AtLine(line),
        CString("Invalid Anisotropyparameter beta. b=%1").Arg(m_Beta));
}

template <class Source>
CEulerRotation CGirdleRotation::Draw(Source& source) const {
  constexpr double twoPi = 2 * std::numbers::pi;
  double t = 2 * m_Uniform(source) - 1;
  if (std::fabs(m_Beta - 1) > std::numeric_limits<double>::epsilon()) {
    double const beta2 = m_Beta * m_Beta;
    // For a large beta, rounding can take the root of t = -1 down to 0.
    t = std::clamp(t / std::sqrt(t * t - beta2 * t * t + beta2), -1.0, 1.0);
  }
  double const theta = std::acos(t);
  double const phi = twoPi * m_Uniform(source);
  double const psi = twoPi * m_Uniform(source);
  CEulerRotation const aboutZ(phi, theta, psi);
  if (m_Frame.IsZAxis()) return aboutZ;
  CTriple<double> const w = m_Frame.FromZ(aboutZ.getDirectionVector());
  return {CPolarCoordinates(w.x, w.y, w.z), phi};
}

CEulerRotation CGirdleRotation::operator()() {
  Impl::CSharedSource shared;
  return Draw(shared);
}

CEulerRotation CGirdleRotation::DrawFrom(CSourceReference source) { return Draw(source); }

bool CGirdleRotation::IsValid() const { return Impl::IsPositiveNormal(m_Beta); }

IRotationGenerator* CGirdleRotation::Clone() const { return new CGirdleRotation(*this); }

} // namespace ORVA
