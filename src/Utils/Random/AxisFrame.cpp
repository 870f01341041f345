#include <SeluUtils/Random/AxisFrame.h>

namespace ORVA::Impl {

namespace {

constexpr CPolarCoordinates c_zAxis{0.0, 0.0};

} // namespace

CAxisFrame::CAxisFrame(CPolarCoordinates const& axis)
    : m_axis(axis), m_isZAxis(axis == c_zAxis),
      m_isFinite(IsFinite(axis.m_fTheta) && IsFinite(axis.m_fPhi)) {
  if (m_isFinite) m_rotation = CEulerRotation(axis, 0);
}

void CAxisFrame::RaiseNoFrame() const {
  static_cast<void>(CEulerRotation(m_axis, 0)); // throws: an angle is not finite
  __builtin_unreachable();
}

} // namespace ORVA::Impl
