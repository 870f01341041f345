#include <SeluUtils/Impl/ExactRotations.h>
#include <SeluUtils/Random/BallPoint.h>
#include <SeluUtils/Random/DiscPoint.h>
#include <SeluUtils/Random/ExactGirdleRotation.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/Random/SpherePoint.h>

#include "Utils/Random/Parameters.h"

#include <cmath>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Random/ExactRotations";

void CheckCircle(CTriple<double> const& center, double radius, char const* function) {
  for (double const coordinate : {center.x, center.y, center.z})
    Impl::RequireParameter(std::isfinite(coordinate), ORVA_LOCATION(c_module, function),
                           "coordinates of the center have to be finite", coordinate);
  Impl::RequireParameter(std::isfinite(radius) && radius >= 0, ORVA_LOCATION(c_module, function),
                         "radius has to be finite and at least 0", radius);
  for (double const coordinate : {center.x, center.y, center.z})
    Impl::RequireParameter(std::isfinite(std::fabs(coordinate) + radius),
                           ORVA_LOCATION(c_module, function),
                           "radius has to leave all coordinates finite", radius);
}

} // namespace

namespace Impl {

// The frame of T. Duff et al., "Building an Orthonormal Basis, Revisited", Journal of Computer
// Graphics Techniques 6 (2017) 1: no axis is near its singularity.
CMeanFrame::CMeanFrame(CPolarCoordinates const& axis, char const* function) : m_Z(axis) {
  for (double const angle : {axis.m_fTheta, axis.m_fPhi})
    RequireParameter(std::isfinite(angle), ORVA_LOCATION(c_module, function),
                     "angles of the axis have to be finite", angle);
  double const sign = std::copysign(1.0, m_Z.z);
  double const a = -1 / (sign + m_Z.z);
  double const b = m_Z.x * m_Z.y * a;
  m_X = {1 + sign * m_Z.x * m_Z.x * a, sign * b, -sign * m_Z.x};
  m_Y = {b, sign + m_Z.y * m_Z.y * a, -m_Z.y};
}

} // namespace Impl

CExactGirdleRotation::CExactGirdleRotation(double beta, CPolarCoordinates const& axis)
    : m_Across(beta < 1 ? beta : 1), m_Along(beta < 1 ? 1 : 1 / beta),
      m_Frame(axis, "ORVA::CExactGirdleRotation::CExactGirdleRotation") {
  Impl::RequireParameter(
      std::isfinite(beta) && beta > 0,
      ORVA_LOCATION(c_module, "ORVA::CExactGirdleRotation::CExactGirdleRotation"),
      "anisotropy beta has to be finite and positive", beta);
}

CExactVonMisesFisher::CExactVonMisesFisher(double kappa, CPolarCoordinates const& mean)
    : m_Kappa(kappa), m_Frame(mean, "ORVA::CExactVonMisesFisher::CExactVonMisesFisher") {
  Impl::RequireParameter(
      std::isfinite(kappa) && kappa >= 0,
      ORVA_LOCATION(c_module, "ORVA::CExactVonMisesFisher::CExactVonMisesFisher"),
      "concentration kappa has to be finite and at least 0", kappa);
}

// -ln(1 - u (1 - exp(-2 kappa))) / kappa, for which a tiny concentration is as good as none.
double CExactVonMisesFisher::Inverse(double u) const {
  constexpr double vanishing = 1e-17;
  if (m_Kappa < vanishing) return 2 * u;
  return std::fmin(-std::log1p(u * std::expm1(-2 * m_Kappa)) / m_Kappa, 2);
}

CExactWatsonRotation::CExactWatsonRotation(double kappa, CPolarCoordinates const& mean)
    : m_Kappa(kappa), m_Spread(std::sqrt(0.5 / std::fabs(kappa))),
      m_Frame(mean, "ORVA::CExactWatsonRotation::CExactWatsonRotation") {
  Impl::RequireParameter(
      std::isfinite(kappa),
      ORVA_LOCATION(c_module, "ORVA::CExactWatsonRotation::CExactWatsonRotation"),
      "concentration kappa has to be finite", kappa);
}

CSpherePoint::CSpherePoint(CTriple<double> const& center, double radius)
    : m_Center(center), m_Radius(radius) {
  CheckCircle(center, radius, "ORVA::CSpherePoint::CSpherePoint");
}

CBallPoint::CBallPoint(CTriple<double> const& center, double radius)
    : m_Center(center), m_Radius(radius) {
  CheckCircle(center, radius, "ORVA::CBallPoint::CBallPoint");
}

CDiscPoint::CDiscPoint(CTriple<double> const& center, double radius, CPolarCoordinates const& axis)
    : m_Center(center), m_Radius(radius), m_Frame(axis, "ORVA::CDiscPoint::CDiscPoint") {
  CheckCircle(center, radius, "ORVA::CDiscPoint::CDiscPoint");
}

} // namespace ORVA
