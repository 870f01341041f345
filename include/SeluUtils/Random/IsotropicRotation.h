// Rotations without any preferred direction.
//
//   CIsotropicRotation any;
//   CEulerRotation const r = any();
//   CTriple<double> const d = r.getDirectionVector();   // uniform on the sphere
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>

namespace ORVA {

/// All rotations alike: cos(theta) uniform, both other Euler angles uniform, each one of 2^32
/// values. CExactIsotropicRotation has 53 bits, needs no sines, and draws quaternions as well.
class SELUUTILS_EXPORT CIsotropicRotation : public IRotationGenerator {
public:
  CEulerRotation operator()() override;
  using IRotationGenerator::operator();
  [[nodiscard]] bool IsValid() const override { return m_Uniform.IsValid(); }
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  CEulerRotation DrawFrom(CSourceReference source) override;
  template <class Source>
  CEulerRotation Draw(Source& source) const;

  CRandomUniform m_Uniform;
};

} // namespace ORVA
