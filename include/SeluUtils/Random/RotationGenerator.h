// What every generator of random rotations offers.
//
//   #include <SeluUtils/Random/IsotropicRotation.h>
//   #include <memory>
//   CIsotropicRotation isotropic;
//   IRotationGenerator& generator = isotropic;
//   CTriple<double> const direction = generator().getDirectionVector();
//   std::unique_ptr<IRotationGenerator> const copy(generator.Clone());
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>

namespace ORVA {

/// Rotations whose direction vector follows some distribution on the sphere, with a random spin
/// about it. Draws allocate nothing. The interface is a virtual base, so that a generator with
/// several bases is still one generator.
class SELUUTILS_EXPORT IRotationGenerator : public virtual IRandomGenerator<CEulerRotation> {
public:
  CEulerRotation operator()() override = 0;
  [[nodiscard]] bool IsValid() const override = 0;
  /// A new copy, to be deleted by the caller.
  [[nodiscard]] virtual IRotationGenerator* Clone() const = 0;
};

} // namespace ORVA
