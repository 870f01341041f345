// Rotations whose directions gather around a mean direction, one way.
//
//   CVonMisesFisher bundle(50.0, CPolarCoordinates(1.0, 0.5));
//   CEulerRotation const r = bundle();
//   CEulerRotation const other = bundle(5.0, CVonMisesFisher::zaxis);   // parameters of one draw
//   double const theta = bundle.GenerateTheta(50.0);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/AxisFrame.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>

#include <numbers>

namespace ORVA {

/// Density proportional to exp(kappa cos(angle to the mean)), by inversion (R. Fisher, "Dispersion
/// on a Sphere", Proceedings of the Royal Society A 217 (1953) 295-305). No constructor checks: a
/// kappa of +infinity gives the mean itself, one of 0, -infinity or NaN the error of the angles it
/// leads to.
///
/// Of 2^32 cosines one is -1, and the others end at an angle of about sqrt(44.4 / kappa):
/// CExactVonMisesFisher goes on.
class SELUUTILS_EXPORT CVonMisesFisher : public IRotationGenerator {
public:
  /// The direction of +z, as an angle to it and an azimuth.
  static constexpr CPolarCoordinates zaxis{0.0, 0.0};

  CVonMisesFisher(double kappa, CPolarCoordinates const& mean) : m_Kappa(kappa), m_Frame(mean) {}

  CEulerRotation operator()() override;
  CEulerRotation operator()(double kappa, CPolarCoordinates const& mean);
  /// From the product of two such densities.
  CEulerRotation operator()(double kappa1, CPolarCoordinates const& mean1, double kappa2,
                            CPolarCoordinates const& mean2);

  /// An angle to the mean and an azimuth about it, each from one uniform draw.
  [[nodiscard]] double GenerateTheta(double kappa) const;
  /// An azimuth about the mean, in radians, from one uniform draw.
  [[nodiscard]] double GeneratePhi() const { return 2 * std::numbers::pi * m_Uniform(); }

  /// The same from a given source.
  using IRotationGenerator::operator();
  template <RandomSource Source>
  CEulerRotation operator()(double kappa, CPolarCoordinates const& mean, Source& source) {
    return DrawFrom(kappa, Impl::CAxisFrame(mean), source);
  }
  template <RandomSource Source>
  CEulerRotation operator()(double kappa1, CPolarCoordinates const& mean1, double kappa2,
                            CPolarCoordinates const& mean2, Source& source) {
    auto const [kappa, mean] = Product(kappa1, mean1, kappa2, mean2);
    return (*this)(kappa, mean, source);
  }
  /// An angle to the mean, in radians, from one uniform draw.
  template <RandomSource Source>
  [[nodiscard]] double GenerateTheta(double kappa, Source& source) const {
    return Theta(kappa, m_Uniform(source));
  }
  /// An azimuth about the mean, in radians, from one uniform draw.
  template <RandomSource Source>
  [[nodiscard]] double GeneratePhi(Source& source) const {
    return 2 * std::numbers::pi * m_Uniform(source);
  }

  /// Whether kappa is finite and positive.
  [[nodiscard]] bool IsValid() const override;
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  struct StProduct {
    double kappa;
    CPolarCoordinates mean;
  };

  CEulerRotation DrawFrom(CSourceReference source) override;
  CEulerRotation DrawFrom(double kappa, Impl::CAxisFrame const& frame,
                          CSourceReference source) const;
  template <class Source>
  CEulerRotation Draw(double kappa, Impl::CAxisFrame const& frame, Source& source) const;
  static StProduct Product(double kappa1, CPolarCoordinates const& mean1, double kappa2,
                           CPolarCoordinates const& mean2);
  static double Theta(double kappa, double u);

  double m_Kappa;
  CRandomUniform m_Uniform;
  Impl::CAxisFrame m_Frame;
};

} // namespace ORVA
