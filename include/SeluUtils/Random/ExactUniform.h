// Uniform numbers with 53 random bits.
//
//   #include <vector>
//   CExactUniform const angle(0.0, 360.0);
//   CRandomSource source(42);
//   double const one = angle(source);
//   std::vector<double> many(1000);
//   angle.Fill(many, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

#include <algorithm>

namespace ORVA {

/// Uniform on [low, high): one of 2^53 equally likely numbers, low included, rounded to the nearest
/// double; where that would be high, the last number before it. One word per draw.
class SELUUTILS_EXPORT CExactUniform final : public Impl::CExactDraws<CExactUniform, double> {
public:
  CExactUniform() = default; ///< [0, 1)
  /// Throws CExBadParam unless both are finite, their difference as well, and low < high.
  CExactUniform(double low, double high);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    return std::min(m_Low + m_Width * Impl::UnitUniform(source), m_Last);
  }

  double m_Low = 0;
  double m_Width = 1;
  double m_Last = 1 - 0x1p-53; // the greatest number below the end
};

} // namespace ORVA
