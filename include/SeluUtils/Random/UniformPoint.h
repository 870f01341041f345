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

#include <span>

namespace ORVA {

/// A box given by its lower and upper corner; three uniform draws a point. A
/// coordinate has 32 random bits; three draws of CExactUniform have 53 each.
class SELUUTILS_EXPORT CUniformPoint {
public:
  CUniformPoint() = default; ///< the unit cube
  CUniformPoint(CTriple<double> lower, CTriple<double> upper) : m_Lower(lower), m_Upper(upper) {}
  /// The box from the origin.
  explicit CUniformPoint(CTriple<double> upper) : m_Upper(upper) {}

  CTriple<double> operator()() const {
    Impl::CSharedSource shared;
    return (*this)(shared);
  }
  template <RandomSource Source>
  CTriple<double> operator()(Source& source) const {
    // z first: seeded sequences depend on the order.
    double const z = m_Uniform(source) * (m_Upper.z - m_Lower.z) + m_Lower.z;
    double const y = m_Uniform(source) * (m_Upper.y - m_Lower.y) + m_Lower.y;
    double const x = m_Uniform(source) * (m_Upper.x - m_Lower.x) + m_Lower.x;
    return {x, y, z};
  }
  /// Fills an array by draws from the source, one after the other.
  template <RandomSource Source>
  void Fill(std::span<CTriple<double>> out, Source& source) const {
    for (auto& point : out) point = (*this)(source);
  }

  /// The volume of the box.
  [[nodiscard]] double volume() const {
    return (m_Upper.x - m_Lower.x) * (m_Upper.y - m_Lower.y) * (m_Upper.z - m_Lower.z);
  }
  /// Whether lower <= upper along every axis.
  [[nodiscard]] bool IsValid() const {
    return m_Lower.x <= m_Upper.x && m_Lower.y <= m_Upper.y && m_Lower.z <= m_Upper.z;
  }

private:
  CTriple<double> m_Lower{0, 0, 0};
  CTriple<double> m_Upper{1, 1, 1};
  CRandomUniform m_Uniform;
};

} // namespace ORVA
