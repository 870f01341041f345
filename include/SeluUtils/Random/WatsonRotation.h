// Rotations whose directions gather around an axis or in the plane across it.
//
//   CWatsonRotation cluster(20.0, CWatsonRotation::xaxis);     // around +x
//   CWatsonRotation girdle(-20.0, CPolarCoordinates(0.0, 0.0));   // near the plane z = 0
//   CEulerRotation const r = cluster();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>
#include <SeluUtils/Triple.h>

#include <array>
#include <numbers>

namespace ORVA {

/// Density proportional to exp(kappa t^2), t the cosine of the angle to the mean, over the
/// hemisphere t >= 0 about the mean: directions stand for axes. kappa > 0 gathers them at the mean,
/// kappa < 0 across it; kappa = 0 draws an isotropic rotation, on the whole sphere. The
/// cosine comes from 32 random bits, and its angle loses digits for huge concentrations:
/// CExactWatsonRotation has 53, keeps the digits, and draws axes at both ends.
///
/// By rejection, two draws a trial and less than two trials on average: N. I. Fisher, T. Lewis and
/// B. J. J. Embleton, Statistical Analysis of Spherical Data (1987), 3.6.2. No constructor checks;
/// a kappa that is not finite ends in the rotation's error.
class SELUUTILS_EXPORT CWatsonRotation : public IRotationGenerator {
public:
  /// The direction of +x, as an angle to the z axis and an azimuth.
  static constexpr CPolarCoordinates xaxis{std::numbers::pi / 2, 0.0};

  CWatsonRotation(double kappa, CPolarCoordinates const& mean);

  CEulerRotation operator()() override;
  using IRotationGenerator::operator();
  /// Whether kappa is finite.
  [[nodiscard]] bool IsValid() const override;
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  CEulerRotation DrawFrom(CSourceReference source) override;
  template <class Source>
  CEulerRotation Draw(Source& source) const;

  template <class Source>
  [[nodiscard]] double BipolarCosine(Source& source) const;
  template <class Source>
  [[nodiscard]] double GirdleCosine(Source& source) const;

  double m_Kappa;
  CPolarCoordinates m_Mean;
  CRandomUniform m_Uniform;
  CIsotropicRotation m_Isotropic;
  std::array<CTriple<double>, 3> m_ToMean; // rows of the rotation from the z axis to the mean
};

} // namespace ORVA
