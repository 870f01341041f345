// Polar angles of plane directions after the plane has been pressed along one axis.
//
//   CPressedDirections const angle(0.5, 1.0);
//   double const radians = angle();           // in [0, pi]
//   CPressedDirections const same = angle;
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <span>

namespace ORVA {

/// The angle, in [0, pi], between the x axis and (f cos t, sin t) with t uniform on [-pi, pi).
class SELUUTILS_EXPORT CPressedDirections {
public:
  /// The pressing factor f; the second factor is kept but takes no part.
  CPressedDirections(double pressingFactor, double secondFactor)
      : m_PressingFactor(pressingFactor), m_SecondFactor(secondFactor) {}

  /// Draws again while the angle is not defined, which for f = 0 happens once in 2^32 draws or so.
  /// A factor that is not finite gives NaN, and one whose square overflows gives pi / 2:
  /// CExactPressedDirections gives 0 or pi there.
  double operator()() const;
  template <RandomSource Source>
  double operator()(Source& source) const {
    return DrawFrom(source);
  }
  /// Fills an array by draws from the source, one after the other.
  template <RandomSource Source>
  void Fill(std::span<double> out, Source& source) const {
    CSourceReference const reference(source);
    for (double& angle : out) angle = DrawFrom(reference);
  }

  /// The pressing factor.
  [[nodiscard]] double PressingFactor() const { return m_PressingFactor; }
  /// The second factor, which takes no part.
  [[nodiscard]] double SecondFactor() const { return m_SecondFactor; }

private:
  double DrawFrom(CSourceReference source) const;
  template <class Source>
  double Draw(Source& source) const;

  double m_PressingFactor;
  double m_SecondFactor;
  CRandomUniform m_Uniform;
};

} // namespace ORVA
