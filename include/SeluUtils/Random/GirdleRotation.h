// Rotations whose directions gather around an axis or in the plane across it.
//
//   CGirdleRotation flat(5.0);                           // near the plane z = 0
//   CGirdleRotation along(0.2, CPolarCoordinates(1.0, 0.5));   // near that axis, both ways
//   CEulerRotation const r = flat();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/AxisFrame.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>

namespace ORVA {

/// The directions of a uniform sphere stretched across the axis by beta: 1 is isotropic, below 1
/// they gather near the axis, above 1 near the plane across it. The cosine t of the angle to the
/// axis has density beta / (2 (1 + (beta^2 - 1) t^2)^(3/2)) on [-1, 1]. A beta whose square
/// overflows ends in the rotation's error. The cosine is one of 2^32 values and its angle loses
/// digits near the axis: CExactGirdleRotation does neither.
class SELUUTILS_EXPORT CGirdleRotation : public IRotationGenerator {
public:
  /// The direction of +z, as an angle to it and an azimuth.
  static constexpr CPolarCoordinates zaxis{0.0, 0.0};

  /// Throws CException unless beta is finite and a normal positive number.
  explicit CGirdleRotation(double beta);
  CGirdleRotation(double beta, CPolarCoordinates const& axis);

  CEulerRotation operator()() override;
  using IRotationGenerator::operator();
  /// Whether beta is finite and a normal positive number.
  [[nodiscard]] bool IsValid() const override;
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  CEulerRotation DrawFrom(CSourceReference source) override;
  template <class Source>
  CEulerRotation Draw(Source& source) const;

  void Check(int line) const;

  double m_Beta;
  CRandomUniform m_Uniform;
  Impl::CAxisFrame m_Frame;
};

} // namespace ORVA
