// One fixed rotation as a generator.
//
//   CFixRotation fixed(CEulerRotation(0.1, 0.2, 0.3));
//   CEulerRotation const r = fixed();                       // that rotation, every time
//   IRandomGenerator<CEulerRotation>& generator = fixed;    // by any of its bases
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/RotationGenerator.h>

namespace ORVA {

/// Gives the fixed rotation through all its bases, without a random draw. A default one gives the
/// identity.
class SELUUTILS_EXPORT CFixRotation : public IRotationGenerator,
                                      public CConstantValue<CEulerRotation> {
public:
  CFixRotation() = default;
  /// Throws CException if the rotation is not valid.
  explicit CFixRotation(CEulerRotation const& rotation);

  CEulerRotation operator()() override { return m_Rotation; }
  using IRotationGenerator::operator();
  using IRotationGenerator::Fill;
  [[nodiscard]] bool IsValid() const override { return m_Rotation.IsValid(); }
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  CEulerRotation DrawFrom(CSourceReference) override { return m_Rotation; }

  CEulerRotation m_Rotation;
};

} // namespace ORVA
