// Turns directions about the z axis into directions about another axis.
//
//   Impl::CAxisFrame const frame(CPolarCoordinates(1.0, 0.0, 0.0));
//   CTriple<double> const d = frame.FromZ({0.0, 0.0, 1.0});      // (1, 0, 0)
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Triple.h>

namespace ORVA::Impl {

/// An axis and what is computed from it once for many draws.
class SELUUTILS_EXPORT CAxisFrame {
public:
  explicit CAxisFrame(CPolarCoordinates const& axis);

  [[nodiscard]] CPolarCoordinates const& Axis() const { return m_Axis; }
  /// Whether the axis equals the z axis as directions do.
  [[nodiscard]] bool IsZAxis() const { return m_IsZAxis; }
  /// The direction turned along with the z axis to the axis. For angles of the axis that are not
  /// finite it throws the rotation's error: here and not when the frame is made, so that a
  /// generator draws what it draws.
  [[nodiscard]] CTriple<double> FromZ(CTriple<double> const& direction) const {
    if (!m_IsFinite) RaiseNoFrame();
    return m_Rotation.rotateVector(direction);
  }

private:
  [[noreturn]] void RaiseNoFrame() const;

  CPolarCoordinates m_Axis;
  bool m_IsZAxis;
  bool m_IsFinite;
  CEulerRotation m_Rotation;
};

} // namespace ORVA::Impl
