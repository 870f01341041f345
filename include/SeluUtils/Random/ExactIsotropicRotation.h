// Rotations without any preferred direction, as matrices, quaternions or directions.
//
//   #include <vector>
//   CExactIsotropicRotation const any;
//   CRandomSource source(42);
//   CEulerRotation const r = any(source);
//   CQuaternion const q = any.Quaternion(source);
//   std::vector<CTriple<double>> directions(1000);
//   any.Fill(directions, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactRotations.h>

namespace ORVA {

/// All rotations alike: a uniform point of the sphere in four dimensions, four exact normal numbers
/// scaled to length 1 (M. E. Muller, "A Note on a Method for Generating Points Uniformly on
/// n-Dimensional Spheres", Communications of the ACM 2 (1959) 19-20). Tested is the joint law of
/// cosine, azimuth and spin. About 4.1 words per rotation, 3.1 per direction; no sine or cosine.
class SELUUTILS_EXPORT CExactIsotropicRotation final
    : public Impl::CExactRotations<CExactIsotropicRotation> {
private:
  friend CExactRotations;
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> DrawDirection(Source& source) const {
    return Impl::UnitVector(source);
  }
  template <RandomSource Source>
  [[nodiscard]] CQuaternion DrawQuaternion(Source& source) const {
    double const w = Impl::StandardNormal(source), x = Impl::StandardNormal(source);
    double const y = Impl::StandardNormal(source), z = Impl::StandardNormal(source);
    double const square = w * w + x * x + y * y + z * z;
    if (square == 0) [[unlikely]]
      return {};
    double const factor = 1 / std::sqrt(square);
    return {w * factor, x * factor, y * factor, z * factor};
  }
};

} // namespace ORVA
