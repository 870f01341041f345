#include <SeluUtils/EulerRotation.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace ORVA {

namespace {

constexpr Impl::StExLocation c_constructor =
    ORVA_LOCATION("src/Utils/EulerRotation", "ORVA::CEulerRotation::CEulerRotation");
constexpr double c_tolerance = 1e-10;

[[noreturn]] void RaiseAngles(double phi, double theta, double psi) {
  Impl::Raise(c_constructor.AtLine(58),
              CString("Invalid Parameter! %1 or %2 or %3.").Arg(phi, 0).Arg(theta, 0).Arg(psi, 0));
}

} // namespace

CEulerRotation::CEulerRotation() : m_Matrix(3, 3) {
  auto const m = m_Matrix.Elements();
  m[0] = m[4] = m[8] = 1;
}

CEulerRotation::CEulerRotation(double phi, double theta, double psi) : m_Matrix(3, 3) {
  if (!Impl::IsFinite(phi) || !Impl::IsFinite(theta) || !Impl::IsFinite(psi)) [[unlikely]]
    RaiseAngles(phi, theta, psi);
  double const s1 = std::sin(phi), c1 = std::cos(phi);
  double const s2 = std::sin(theta), c2 = std::cos(theta);
  double const s3 = std::sin(psi), c3 = std::cos(psi);
  auto const m = m_Matrix.Elements();
  m[0] = c3 * c1 - s3 * c2 * s1;
  m[1] = s3 * c2 * c1 + c3 * s1;
  m[2] = s3 * s2;
  m[3] = -s3 * c1 - c3 * c2 * s1;
  m[4] = c3 * c2 * c1 - s3 * s1;
  m[5] = c3 * s2;
  m[6] = s2 * s1;
  m[7] = -s2 * c1;
  m[8] = c2;
}

CEulerRotation::CEulerRotation(CPolarCoordinates const& direction, double angle)
    : CEulerRotation(angle, direction.m_fTheta, std::numbers::pi / 2 - direction.m_fPhi) {}

CEulerRotation::CEulerRotation(CMatrix<double> const& matrix) : m_Matrix(matrix) {
  if (matrix.Cols() != 3) static_cast<void>(matrix * CMatrix<double>(3, 3)); // raises the error
  if (!IsValid())
    Impl::Raise(c_constructor.AtLine(97), "Invalid CMatrix in CEulerRotation constructor.");
}

CEulerRotation Impl::RotationOf(std::array<double, 9> const& elements) {
  CEulerRotation rotation;
  std::ranges::copy(elements, rotation.m_Matrix.Elements().begin());
  return rotation;
}

CTriple<double> CEulerRotation::getEulerAngles() const {
  double const* const m = Elements();
  return {std::atan2(m[6], -m[7]), std::acos(m[8]), std::atan2(m[2], m[7])};
}

CMatrix<double> CEulerRotation::getInverseRotationMatrix() const {
  CMatrix<double> const& m = m_Matrix;
  CMatrix<double> inverse(3, 3);
  for (uint64 r = 0; r < 3; ++r)
    for (uint64 c = 0; c < 3; ++c) inverse(r, c) = m(c, r);
  return inverse;
}

std::string CEulerRotation::ToString() const {
  std::string text;
  for (std::size_t i = 0; i < 9; ++i) {
    char digits[32];
    double const element = Elements()[i] + 0.0; // a negative zero prints as 0
    auto const written =
        std::to_chars(digits, digits + sizeof digits, element, std::chars_format::general, 6);
    if (i > 0) text += '\t';
    text.append(digits, written.ptr);
  }
  return text;
}

bool CEulerRotation::IsValid() const {
  CMatrix<double> const product = m_Matrix * getInverseRotationMatrix();
  for (uint64 r = 0; r < 3; ++r)
    for (uint64 c = 0; c < 3; ++c)
      if (!(std::fabs(product(r, c) - (r == c ? 1.0 : 0.0)) < c_tolerance)) return false;
  return true;
}

bool CEulerRotation::operator==(CEulerRotation const& other) const {
  double const* const a = Elements();
  double const* const b = other.Elements();
  for (std::size_t i = 0; i < 9; ++i)
    if (!(std::fabs(a[i] - b[i]) < c_tolerance)) return false;
  return true;
}

} // namespace ORVA
