#include <SeluUtils/Random/RandomRayleigh.h>

#include "Utils/Random/Parameters.h"

namespace ORVA {

bool CRandomRayleigh::IsValid() const { return Impl::IsPositiveNormal(m_Sigma); }

} // namespace ORVA
