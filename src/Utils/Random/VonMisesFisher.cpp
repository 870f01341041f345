#include <SeluUtils/Random/VonMisesFisher.h>

#include <SeluUtils/Triple.h>

#include <algorithm>
#include <cmath>

namespace ORVA {

namespace {

constexpr double c_twoPi = 2 * std::numbers::pi;
// Below the first, 1 - exp(-2 kappa) loses digits; below the second, the cosine is uniform to the
// last one.
constexpr double c_small = 1e-5;
constexpr double c_vanishing = 1e-17;

// (1 - cosine) / 2 of the angle to the mean: -ln((1 - e) u + e) / (2 kappa) with e =
// exp(-2 kappa), without its loss for a small kappa. No number for kappa = 0.
double HalfOfOneMinusCosine(double kappa, double u) {
  double const size = std::fabs(kappa);
  if (size > 0 && size < c_vanishing) return 1 - u;
  if (size < c_small) return -std::log1p((1 - u) * std::expm1(-2 * kappa)) / (2 * kappa);
  double const e = std::exp(-2 * kappa);
  return -std::log((1 - e) * u + e) / (2 * kappa);
}

} // namespace

template <class Source>
CEulerRotation CVonMisesFisher::Draw(double kappa, Impl::CAxisFrame const& frame,
                                     Source& source) const {
  double const u1 = m_Uniform(source);
  double const u2 = m_Uniform(source);
  double const sine = std::sqrt(HalfOfOneMinusCosine(kappa, u1)); // of half the angle
  double const theta = 2 * std::asin(sine > 1 ? 1 : sine);
  CPolarCoordinates const d(theta, c_twoPi * u2);
  double const spin = c_twoPi * m_Uniform(source);
  if (frame.IsZAxis()) return {d, spin};
  CTriple<double> const v = frame.FromZ(d);
  return {CPolarCoordinates(v.x, v.y, v.z), spin};
}

CEulerRotation CVonMisesFisher::DrawFrom(double kappa, Impl::CAxisFrame const& frame,
                                         CSourceReference source) const {
  return Draw(kappa, frame, source);
}

CEulerRotation CVonMisesFisher::DrawFrom(CSourceReference source) {
  return Draw(m_Kappa, m_Frame, source);
}

CEulerRotation CVonMisesFisher::operator()() {
  Impl::CSharedSource shared;
  return Draw(m_Kappa, m_Frame, shared);
}

CEulerRotation CVonMisesFisher::operator()(double kappa, CPolarCoordinates const& mean) {
  Impl::CSharedSource shared;
  return Draw(kappa, Impl::CAxisFrame(mean), shared);
}

CEulerRotation CVonMisesFisher::operator()(double kappa1, CPolarCoordinates const& mean1,
                                           double kappa2, CPolarCoordinates const& mean2) {
  auto const [kappa, mean] = Product(kappa1, mean1, kappa2, mean2);
  return (*this)(kappa, mean);
}

CVonMisesFisher::StProduct CVonMisesFisher::Product(double kappa1, CPolarCoordinates const& mean1,
                                                    double kappa2, CPolarCoordinates const& mean2) {
  CTriple<double> const m = kappa1 * CTriple<double>(mean1) + kappa2 * CTriple<double>(mean2);
  double const kappa = std::sqrt(m.x * m.x + m.y * m.y + m.z * m.z);
  return {kappa, CPolarCoordinates(m.x / kappa, m.y / kappa, m.z / kappa)};
}

double CVonMisesFisher::GenerateTheta(double kappa) const { return Theta(kappa, m_Uniform()); }

double CVonMisesFisher::Theta(double kappa, double u) {
  double const t = std::fabs(kappa) < c_small
                       ? 1 - 2 * HalfOfOneMinusCosine(kappa, 1 - u)
                       : std::log(1 - u * (1 - std::exp(-2 * kappa))) / kappa + 1;
  return std::acos(std::clamp(t, -1.0, 1.0));
}

bool CVonMisesFisher::IsValid() const { return std::isfinite(m_Kappa) && m_Kappa > 0; }

IRotationGenerator* CVonMisesFisher::Clone() const { return new CVonMisesFisher(*this); }

} // namespace ORVA
