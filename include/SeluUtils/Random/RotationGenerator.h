// What every generator of random rotations offers.
//
//   void Draw(IRotationGenerator& generator, std::span<CTriple<double>> directions) {
//     for (auto& d : directions) d = generator().getDirectionVector();
//   }
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
