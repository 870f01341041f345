#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Quaternion.h>

#include <cmath>

namespace ORVA {

// The largest component comes from a root, the others from quotients by it: S. W. Shepperd,
// "Quaternion from Rotation Matrix", Journal of Guidance and Control 1 (1978) 223-224.
CQuaternion::CQuaternion(CEulerRotation const& rotation) {
  CMatrix<double> const matrix = rotation.getRotationMatrix();
  auto const m = matrix.Elements();
  double const trace = m[0] + m[4] + m[8];
  if (trace >= m[0] && trace >= m[4] && trace >= m[8]) {
    w = std::sqrt(1 + trace) / 2;
    *this = {w, (m[7] - m[5]) / (4 * w), (m[2] - m[6]) / (4 * w), (m[3] - m[1]) / (4 * w)};
  } else if (m[0] >= m[4] && m[0] >= m[8]) {
    x = std::sqrt(1 + 2 * m[0] - trace) / 2;
    *this = {(m[7] - m[5]) / (4 * x), x, (m[1] + m[3]) / (4 * x), (m[2] + m[6]) / (4 * x)};
  } else if (m[4] >= m[8]) {
    y = std::sqrt(1 + 2 * m[4] - trace) / 2;
    *this = {(m[2] - m[6]) / (4 * y), (m[1] + m[3]) / (4 * y), y, (m[5] + m[7]) / (4 * y)};
  } else {
    z = std::sqrt(1 + 2 * m[8] - trace) / 2;
    *this = {(m[3] - m[1]) / (4 * z), (m[2] + m[6]) / (4 * z), (m[5] + m[7]) / (4 * z), z};
  }
}

CEulerRotation CQuaternion::ToRotation() const { return Impl::RotationOf(Matrix()); }

} // namespace ORVA
