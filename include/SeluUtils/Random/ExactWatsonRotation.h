// Rotations whose directions gather around both ends of an axis or in the plane across it.
//
//   #include <vector>
//   CExactWatsonRotation const cluster(20.0, CPolarCoordinates(1.0, 0.5));
//   CExactWatsonRotation const girdle(-20.0, CPolarCoordinates(0.0, 0.0));   // near z = 0
//   CRandomSource source(42);
//   CEulerRotation const r = cluster(source);
//   std::vector<CTriple<double>> directions(1000);
//   girdle.Fill(directions, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactRotations.h>
#include <SeluUtils/PolarCoordinates.h>
#include <pxlib2core/Types.h>

#include <cmath>

namespace ORVA {

/// Density proportional to exp(kappa t^2), t the cosine of the angle to the mean, over the whole
/// sphere: kappa > 0 gathers directions at both ends of the axis, kappa < 0 across it, 0 is
/// isotropic (G. S. Watson, "Equatorial Distributions on a Sphere", Biometrika 52 (1965) 193-201).
///
/// By rejection. Near the axis 1 - |t| is proposed from an exponential distribution and accepted
/// with the probability exp(-kappa |t| (1 - |t|)); across it t is proposed from a normal one, which
/// is its law between -1 and 1; small concentrations propose a uniform t. Every test compares with
/// an exponential number, so no power over- or underflows, whatever the concentration. Half of the
/// proposals or more are accepted: at most 9 words per rotation on average.
class SELUUTILS_EXPORT CExactWatsonRotation final
    : public Impl::CExactRotations<CExactWatsonRotation> {
public:
  /// Throws CExBadParam unless kappa and both angles of the mean are finite.
  CExactWatsonRotation(double kappa, CPolarCoordinates const& mean);

private:
  friend CExactRotations;
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> DrawDirection(Source& source) const {
    if (m_Kappa > c_bipolar) {
      double const versine = VersineNearAxis(source);
      double const sine = std::sqrt(versine * (2 - versine));
      double const t = 1 - versine;
      return m_Frame.DirectionAt(source() >> 63 == 0 ? t : -t, sine, source);
    }
    double const t = m_Kappa < c_girdle ? CosineAcross(source) : CosineOfAny(source);
    return m_Frame.DirectionAt(t, std::sqrt((1 - t) * (1 + t)), source);
  }

  // 1 - |t|.
  template <RandomSource Source>
  [[nodiscard]] double VersineNearAxis(Source& source) const {
    for (;;) {
      double const versine = Impl::StandardExponential(source) / m_Kappa;
      if (versine > 1) continue;
      if (Impl::StandardExponential(source) >= m_Kappa * versine * (1 - versine)) return versine;
    }
  }
  template <RandomSource Source>
  [[nodiscard]] double CosineAcross(Source& source) const {
    for (;;) {
      double const t = Impl::StandardNormal(source) * m_Spread;
      if (std::fabs(t) <= 1) [[likely]]
        return t;
    }
  }
  template <RandomSource Source>
  [[nodiscard]] double CosineOfAny(Source& source) const {
    for (;;) {
      double const t = 2 * Impl::UnitUniform(source) - 1;
      double const deficit = m_Kappa >= 0 ? m_Kappa * (1 - t) * (1 + t) : -m_Kappa * t * t;
      if (Impl::StandardExponential(source) >= deficit) return t;
    }
  }

  // Between them a uniform cosine is accepted more often.
  static constexpr double c_bipolar = 1.5, c_girdle = -1;

  double m_Kappa;
  double m_Spread; // standard deviation of the cosine's normal law across the axis
  Impl::CMeanFrame m_Frame;
};

} // namespace ORVA
