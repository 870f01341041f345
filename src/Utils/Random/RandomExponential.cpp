#include <SeluUtils/Random/RandomExponential.h>

#include <limits>

namespace ORVA {

bool CRandomExponential::IsValid() const {
  return m_Lambda > std::numeric_limits<double>::min() && std::isfinite(m_Lambda);
}

} // namespace ORVA
