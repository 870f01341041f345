#include <SeluUtils/Random/VonMisesFisher.h>

#include <SeluUtils/Triple.h>

#include <algorithm>
#include <cmath>

namespace ORVA {

namespace {

constexpr double c_twoPi = 2 * std::numbers::pi;

} // namespace

CEulerRotation CVonMisesFisher::Draw(double kappa, Impl::CAxisFrame const& frame) const {
  double const u1 = m_uniform();
  double const u2 = m_uniform();
  double const e = std::exp(-2 * kappa);
  double const sine = std::sqrt(-std::log((1 - e) * u1 + e) / (2 * kappa)); // of half the angle
  double const theta = 2 * std::asin(sine > 1 ? 1 : sine);
  CPolarCoordinates const d(theta, c_twoPi * u2);
  double const spin = c_twoPi * m_uniform();
  if (frame.IsZAxis()) return {d, spin};
  CTriple<double> const v = frame.FromZ(d);
  return {CPolarCoordinates(v.x, v.y, v.z), spin};
}

CEulerRotation CVonMisesFisher::operator()() { return Draw(m_kappa, m_frame); }

CEulerRotation CVonMisesFisher::operator()(double kappa, CPolarCoordinates const& mean) {
  return Draw(kappa, Impl::CAxisFrame(mean));
}

CEulerRotation CVonMisesFisher::operator()(double kappa1, CPolarCoordinates const& mean1,
                                           double kappa2, CPolarCoordinates const& mean2) {
  CTriple<double> const m = kappa1 * CTriple<double>(mean1) + kappa2 * CTriple<double>(mean2);
  double const kappa = std::sqrt(m.x * m.x + m.y * m.y + m.z * m.z);
  return (*this)(kappa, CPolarCoordinates(m.x / kappa, m.y / kappa, m.z / kappa));
}

double CVonMisesFisher::GenerateTheta(double kappa) const {
  double const t = std::log(1 - m_uniform() * (1 - std::exp(-2 * kappa))) / kappa + 1;
  return std::acos(std::clamp(t, -1.0, 1.0));
}

bool CVonMisesFisher::IsValid() const { return std::isfinite(m_kappa) && m_kappa > 0; }

IRotationGenerator* CVonMisesFisher::Clone() const { return new CVonMisesFisher(*this); }

} // namespace ORVA
