#include <SeluUtils/Impl/AxisFrame.h>

namespace ORVA::Impl {

namespace {

constexpr CPolarCoordinates c_zAxis{0.0, 0.0};

} // namespace

CAxisFrame::CAxisFrame(CPolarCoordinates const& axis)
    : m_Axis(axis), m_IsZAxis(axis == c_zAxis),
      m_IsFinite(IsFinite(axis.m_fTheta) && IsFinite(axis.m_fPhi)) {
  if (m_IsFinite) m_Rotation = CEulerRotation(axis, 0);
}

void CAxisFrame::RaiseNoFrame() const {
  static_cast<void>(CEulerRotation(m_Axis, 0)); // throws: an angle is not finite
  __builtin_unreachable();
}

} // namespace ORVA::Impl
