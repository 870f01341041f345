#include <SeluUtils/Random/PressedDirections.h>

#include <cmath>
#include <numbers>

namespace ORVA {

template <class Source>
double CPressedDirections::Draw(Source& source) const {
  double angle = 0;
  do {
    double const t = (2 * m_Uniform(source) - 1) * std::numbers::pi;
    double const pressed = m_PressingFactor * std::cos(t);
    double const s = std::sin(t);
    angle = std::acos(pressed / std::sqrt(s * s + pressed * pressed));
  } while (std::isnan(angle) && std::isfinite(m_PressingFactor));
  return angle;
}

double CPressedDirections::operator()() const {
  Impl::CSharedSource shared;
  return Draw(shared);
}

double CPressedDirections::DrawFrom(CSourceReference source) const { return Draw(source); }

} // namespace ORVA
