// A rotation of space as a unit quaternion: four numbers instead of a matrix.
//
//   #include <SeluUtils/EulerRotation.h>
//   CQuaternion const q(0.5, 0.5, 0.5, 0.5);              // w, x, y, z
//   CTriple<double> const v = q.Rotate({1.0, 0.0, 0.0});  // (0, 1, 0)
//   CEulerRotation const r = q.ToRotation();              // r.rotateVector is q.Rotate
//   CQuaternion const same(r);                            // q or -q, which are one rotation
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Triple.h>

#include <array>

namespace ORVA {

struct CEulerRotation;

/// q = w + xi + yj + zk; Rotate(v) is q v q*. A plain value; a default one is the identity. The
/// operations expect length 1, as every draw has it but for rounding.
struct SELUUTILS_EXPORT CQuaternion {
  constexpr CQuaternion() = default;
  constexpr CQuaternion(double wValue, double xValue, double yValue, double zValue)
      : w(wValue), x(xValue), y(yValue), z(zValue) {}
  /// One of the two quaternions of the rotation, the one whose largest component is positive.
  explicit CQuaternion(CEulerRotation const& rotation);

  /// The rotation matrix, row by row.
  [[nodiscard]] constexpr std::array<double, 9> Matrix() const {
    double const xx = x * x, yy = y * y, zz = z * z;
    double const xy = x * y, xz = x * z, yz = y * z, wx = w * x, wy = w * y, wz = w * z;
    return {1 - 2 * (yy + zz), 2 * (xy - wz), 2 * (xz + wy), 2 * (xy + wz),    1 - 2 * (xx + zz),
            2 * (yz - wx),     2 * (xz - wy), 2 * (yz + wx), 1 - 2 * (xx + yy)};
  }
  /// The same rotation as Euler angles and matrix.
  [[nodiscard]] CEulerRotation ToRotation() const;
  /// The vector turned by the rotation.
  [[nodiscard]] constexpr CTriple<double> Rotate(CTriple<double> const& v) const {
    auto const m = Matrix();
    return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[3] * v.x + m[4] * v.y + m[5] * v.z,
            m[6] * v.x + m[7] * v.y + m[8] * v.z};
  }
  /// The rotation by b, then by a.
  friend constexpr CQuaternion operator*(CQuaternion const& a, CQuaternion const& b) {
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
  }
  friend constexpr bool operator==(CQuaternion const&, CQuaternion const&) = default;

  /// The real part, and the parts along x, y and z.
  double w = 1, x = 0, y = 0, z = 0;
};

} // namespace ORVA
