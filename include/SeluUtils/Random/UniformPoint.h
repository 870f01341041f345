// Points spread evenly over a box.
//
//   CUniformPoint const place({0, 0, 0}, {100, 100, 50});
//   CTriple<double> const p = place();
//   double const volume = place.volume();
//   bool const sensible = place.IsValid();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Triple.h>

namespace ORVA {

/// A box given by its lower and upper corner; three uniform draws a point.
class SELUUTILS_EXPORT CUniformPoint {
public:
  CUniformPoint() = default; ///< the unit cube
  CUniformPoint(CTriple<double> lower, CTriple<double> upper) : m_lower(lower), m_upper(upper) {}
  /// The box from the origin.
  explicit CUniformPoint(CTriple<double> upper) : m_upper(upper) {}

  CTriple<double> operator()() const {
    // z first: seeded sequences depend on the order.
    double const z = m_uniform() * (m_upper.z - m_lower.z) + m_lower.z;
    double const y = m_uniform() * (m_upper.y - m_lower.y) + m_lower.y;
    double const x = m_uniform() * (m_upper.x - m_lower.x) + m_lower.x;
    return {x, y, z};
  }

  [[nodiscard]] double volume() const {
    return (m_upper.x - m_lower.x) * (m_upper.y - m_lower.y) * (m_upper.z - m_lower.z);
  }
  /// Whether lower <= upper along every axis.
  [[nodiscard]] bool IsValid() const {
    return m_lower.x <= m_upper.x && m_lower.y <= m_upper.y && m_lower.z <= m_upper.z;
  }

private:
  CTriple<double> m_lower{0, 0, 0};
  CTriple<double> m_upper{1, 1, 1};
  CRandomUniform m_uniform;
};

} // namespace ORVA
