// A rotation of space: from Euler angles, from a direction and a spin, or from a matrix.
//
//   CEulerRotation const r(CPolarCoordinates(0.5, 1.0), 0.25);   // direction and spin, radians
//   CTriple<double> const axis = r.getDirectionVector();         // the unit vector of (0.5, 1.0)
//   CTriple<double> const w = r.rotateVector({1.0, 0.0, 0.0});
//   CTriple<double> const v = r.backRotateVector(w);             // (1, 0, 0) again
//   CMatrix<double> const m = r.getRotationMatrix();             // 3 x 3
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Matrix.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Triple.h>

#include <array>
#include <string>

namespace ORVA {

struct CEulerRotation;

namespace Impl {

/// The rotation of nine elements, row by row, that are known to be orthonormal.
[[nodiscard]] SELUUTILS_EXPORT CEulerRotation RotationOf(std::array<double, 9> const& elements);

} // namespace Impl

/// A rotation matrix, built from Euler angles in the z-x-z convention in its passive form,
/// M = Rz(psi) Rx(theta) Rz(phi). Only the matrix is stored. A default rotation is the identity.
/// Copies are deep and cost 9 elements; nothing is allocated.
struct SELUUTILS_EXPORT CEulerRotation {
  CEulerRotation();
  /// Angles in radians, of any size; throws CException if one is not finite.
  CEulerRotation(double phi, double theta, double psi);
  /// The rotation whose direction vector is the given one, with a spin about it in radians: the
  /// Euler angles (angle, theta, pi/2 - phi).
  CEulerRotation(CPolarCoordinates const& direction, double angle);
  /// Keeps the matrix, which must be orthonormal within 1e-10 in its first three rows and have
  /// three columns; throws CException if it is not.
  explicit CEulerRotation(CMatrix<double> const& matrix);
  CEulerRotation(CEulerRotation const&) = default; // and no move, which would leave no matrix
  CEulerRotation& operator=(CEulerRotation const&) = default;
  ~CEulerRotation() = default;

  /// M v.
  [[nodiscard]] CTriple<double> rotateVector(CTriple<double> const& v) const noexcept {
    double const* const m = Elements();
    return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[3] * v.x + m[4] * v.y + m[5] * v.z,
            m[6] * v.x + m[7] * v.y + m[8] * v.z};
  }
  /// Transposed M times v: undoes rotateVector.
  [[nodiscard]] CTriple<double> backRotateVector(CTriple<double> const& v) const noexcept {
    double const* const m = Elements();
    return {m[0] * v.x + m[3] * v.y + m[6] * v.z, m[1] * v.x + m[4] * v.y + m[7] * v.z,
            m[2] * v.x + m[5] * v.y + m[8] * v.z};
  }
  /// The third column of M, a unit vector.
  [[nodiscard]] CTriple<double> getDirectionVector() const noexcept {
    double const* const m = Elements();
    return {m[2], m[5], m[8]};
  }
  /// (phi, theta) in x and y, phi in (-pi, pi], for 0 < theta < pi. The third component is
  /// atan2(M(0,2), M(2,1)), kept because stored results depend on it: it is not psi.
  [[nodiscard]] CTriple<double> getEulerAngles() const;
  /// The matrix of the rotation.
  [[nodiscard]] CMatrix<double> getRotationMatrix() const { return m_Matrix; }
  /// The transpose of M, 3 x 3.
  [[nodiscard]] CMatrix<double> getInverseRotationMatrix() const;

  /// The nine elements row by row with six significant digits, tabs between them; no locale.
  [[nodiscard]] std::string ToString() const;
  /// Whether M times its transpose is the identity within 1e-10. A reflection passes.
  [[nodiscard]] bool IsValid() const;
  /// Whether all elements agree within 1e-10; a NaN makes rotations unequal.
  [[nodiscard]] bool operator==(CEulerRotation const& other) const;

private:
  friend CEulerRotation Impl::RotationOf(std::array<double, 9> const& elements);

  [[nodiscard]] double const* Elements() const noexcept { return m_Matrix.Elements().data(); }

  CMatrix<double> m_Matrix; // three columns and at least three rows, so no reader checks an index
};

} // namespace ORVA
