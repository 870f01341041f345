#include <SeluUtils/Random/FixRotation.h>

#include <pxlib2core/Exception.h>

namespace ORVA {

CFixRotation::CFixRotation(CEulerRotation const& rotation) : m_Rotation(rotation) {
  if (!m_Rotation.IsValid())
    Impl::Raise(ORVA_LOCATION("src/Utils/Random/FixRotation", "ORVA::CFixRotation::CFixRotation")
                    .AtLine(37),
                "CFixRotation::CFixRotation: Invalid Rotation.");
}

IRotationGenerator* CFixRotation::Clone() const { return new CFixRotation(*this); }

} // namespace ORVA
