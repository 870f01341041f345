#include <SeluUtils/PolarCoordinates.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>

namespace ORVA {

namespace Impl {

void RaisePolarCoordinates(CPolarCoordinates const& direction) {
  auto const where =
      ORVA_LOCATION("src/Utils/PolarCoordinates", "ORVA::CPolarCoordinates::CPolarCoordinates");
  bool const finite = IsFinite(direction.m_Theta) && IsFinite(direction.m_Phi);
  CString message(finite ? "Parameter not in valid range! %1 or %2."
                         : "Invalid Parameter! %1 or %2.");
  Raise(where.AtLine(finite ? 42 : 39), message.Arg(direction.m_Theta, 0).Arg(direction.m_Phi, 0));
}

} // namespace Impl

CPolarCoordinates::CPolarCoordinates(double x, double y, double z) {
  double const r = std::sqrt(x * x + y * y + z * z);
  m_Theta = std::acos(z / r);
  m_Phi = std::atan2(y / r, x / r);
}

bool CPolarCoordinates::operator==(CPolarCoordinates const& other) const {
  double const sinTheta1 = std::sin(m_Theta);
  double const sinTheta2 = std::sin(other.m_Theta);
  double const dot = sinTheta1 * sinTheta2 * std::cos(m_Phi) * std::cos(other.m_Phi) +
                     std::sin(m_Phi) * sinTheta1 * sinTheta2 * std::sin(other.m_Phi) +
                     std::cos(other.m_Theta) * std::cos(m_Theta);
  return std::acos(dot) < 1e-6;
}

CTriple<double> CPolarCoordinates::ConvertToCartesianRepresentation() const {
  double const sinTheta = std::sin(m_Theta);
  return {sinTheta * std::cos(m_Phi), sinTheta * std::sin(m_Phi), std::cos(m_Theta)};
}

} // namespace ORVA
