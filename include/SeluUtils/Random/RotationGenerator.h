// What every generator of random rotations offers.
//
//   #include <SeluUtils/Random/IsotropicRotation.h>
//   #include <memory>
//   #include <vector>
//   CIsotropicRotation isotropic;
//   IRotationGenerator& generator = isotropic;
//   CTriple<double> const direction = generator().getDirectionVector();
//   std::unique_ptr<IRotationGenerator> const copy(generator.Clone());
//   CRandomSource source(42);
//   std::vector<CTriple<double>> directions(1000);
//   generator.Fill(directions, source);       // from this source, not the shared one
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Quaternion.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/RandomSource.h>

#include <array>
#include <span>

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

  /// Draws from the given source: a rotation, the same as a quaternion, or a direction alone. They
  /// depend on the source and the parameters alone.
  template <RandomSource Source>
  CEulerRotation operator()(Source& source) {
    return DrawFrom(source);
  }
  /// One draw as a unit quaternion.
  template <RandomSource Source>
  [[nodiscard]] CQuaternion Quaternion(Source& source) {
    CQuaternion quaternion;
    FillFrom(std::span(&quaternion, 1), source);
    return quaternion;
  }
  /// One draw as a direction, the image of the z axis.
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> Direction(Source& source) {
    CTriple<double> direction;
    FillFrom(std::span(&direction, 1), source);
    return direction;
  }
  /// Fill arrays by such draws, one after the other: rotations, their matrices row by row, their
  /// quaternions, or directions.
  template <RandomSource Source>
  void Fill(std::span<CEulerRotation> out, Source& source) {
    CSourceReference const reference(source);
    for (CEulerRotation& rotation : out) rotation = DrawFrom(reference);
  }
  template <RandomSource Source>
  void Fill(std::span<std::array<double, 9>> out, Source& source) {
    FillFrom(out, source);
  }
  template <RandomSource Source>
  void Fill(std::span<CQuaternion> out, Source& source) {
    FillFrom(out, source);
  }
  template <RandomSource Source>
  void Fill(std::span<CTriple<double>> out, Source& source) {
    FillFrom(out, source);
  }

protected:
  /// A generator that does not override it draws from a stream begun with five words of the source.
  virtual CEulerRotation DrawFrom(CSourceReference source);
  /// By default what DrawFrom gives.
  virtual void FillFrom(std::span<std::array<double, 9>> out, CSourceReference source);
  virtual void FillFrom(std::span<CQuaternion> out, CSourceReference source);
  virtual void FillFrom(std::span<CTriple<double>> out, CSourceReference source);
};

} // namespace ORVA
