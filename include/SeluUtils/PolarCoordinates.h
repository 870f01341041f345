// A direction on the unit sphere, given by two angles.
//
//   CPolarCoordinates const up(0.0, 0.0);
//   CPolarCoordinates const d(1.0, 2.0, 2.0);            // of a vector; its length is not kept
//   CTriple<double> const unit = d;                      // (1/3, 2/3, 2/3)
//   bool const same = d == CPolarCoordinates(2.0, 4.0, 4.0);
//   double const azimuth = d.m_fPhi;
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Triple.h>

#include <limits>
#include <numbers>

namespace ORVA {

namespace Impl {

[[nodiscard]] constexpr bool IsFinite(double x) noexcept {
  return x >= -std::numeric_limits<double>::max() && x <= std::numeric_limits<double>::max();
}

} // namespace Impl

/// Polar angle theta from the +z axis and azimuth phi in the x-y plane from +x towards +y, in
/// radians: the unit vector (sin theta cos phi, sin theta sin phi, cos theta).
struct SELUUTILS_EXPORT CPolarCoordinates {
  /// Throws CException unless both angles are finite, theta in [0, pi] and phi in [0, 2 pi).
  constexpr CPolarCoordinates(double theta, double phi) : m_fTheta(theta), m_fPhi(phi) {
    bool const valid =
        theta >= 0 && theta <= std::numbers::pi && phi >= 0 && phi < 2 * std::numbers::pi;
    if (!valid) [[unlikely]]
      RaiseAngles();
  }
  /// The direction of a vector of any length. Unchecked: phi comes out in (-pi, pi], and both
  /// angles are NaN for the zero vector.
  CPolarCoordinates(double x, double y, double z);

  /// Whether the angle between the directions is below 1e-6 radians. It is the arc cosine of the
  /// dot product as computed: where rounding pushes that above 1, a direction differs from itself.
  [[nodiscard]] bool operator==(CPolarCoordinates const& other) const;

  /// The unit vector.
  [[nodiscard]] CTriple<double> ConvertToCartesianRepresentation() const;
  /// The point in Cartesian coordinates.
  operator CTriple<double>() const { return ConvertToCartesianRepresentation(); }

  /// Angle to the z axis in radians.
  double m_fTheta;
  /// Azimuth in radians, from the x axis towards the y axis.
  double m_fPhi;

private:
  [[noreturn]] void RaiseAngles() const;
};

} // namespace ORVA
