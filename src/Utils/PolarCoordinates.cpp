#include <SeluUtils/PolarCoordinates.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>

namespace ORVA {

void CPolarCoordinates::RaiseAngles() const {
  auto const where =
      ORVA_LOCATION("src/Utils/PolarCoordinates", "ORVA::CPolarCoordinates::CPolarCoordinates");
  bool const finite = Impl::IsFinite(m_fTheta) && Impl::IsFinite(m_fPhi);
  CString message(finite ? "Parameter not in valid range! %1 or %2."
                         : "Invalid Parameter! %1 or %2.");
  Impl::Raise(where.AtLine(finite ? 42 : 39), message.Arg(m_fTheta, 0).Arg(m_fPhi, 0));
}

namespace {

// Whether the square of the longest component neither overflows nor loses bits; so for NaN.
bool IsOrdinary(double longest) {
  constexpr double c_smallest = 0x1p-500, c_largest = 0x1p500;
  bool const isExtreme = longest < c_smallest || longest > c_largest;
  return !isExtreme || longest == 0 || !Impl::IsFinite(longest);
}

} // namespace

CPolarCoordinates::CPolarCoordinates(double x, double y, double z) {
  double const longest = std::max({std::abs(x), std::abs(y), std::abs(z)});
  if (!IsOrdinary(longest)) [[unlikely]] {
    int const exponent = std::ilogb(longest);
    x = std::scalbn(x, -exponent); // a power of two changes no direction and no bit
    y = std::scalbn(y, -exponent);
    z = std::scalbn(z, -exponent);
  }
  double const r = std::sqrt(x * x + y * y + z * z);
  m_fTheta = std::acos(z / r);
  m_fPhi = std::atan2(y / r, x / r);
}

bool CPolarCoordinates::operator==(CPolarCoordinates const& other) const {
  double const sinTheta1 = std::sin(m_fTheta);
  double const sinTheta2 = std::sin(other.m_fTheta);
  double const dot = sinTheta1 * sinTheta2 * std::cos(m_fPhi) * std::cos(other.m_fPhi) +
                     std::sin(m_fPhi) * sinTheta1 * sinTheta2 * std::sin(other.m_fPhi) +
                     std::cos(other.m_fTheta) * std::cos(m_fTheta);
  return std::acos(dot) < 1e-6;
}

CTriple<double> CPolarCoordinates::ConvertToCartesianRepresentation() const {
  double const sinTheta = std::sin(m_fTheta);
  return {sinTheta * std::cos(m_fPhi), sinTheta * std::sin(m_fPhi), std::cos(m_fTheta)};
}

} // namespace ORVA
