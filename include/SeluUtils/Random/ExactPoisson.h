// Poisson-distributed counts of any mean.
//
//   #include <vector>
//   CExactPoisson const fibers(1000.0);       // mean
//   CRandomSource source(42);
//   int64 const count = fibers(source);
//   std::vector<int64> counts(1000);
//   fibers.Fill(counts, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>
#include <pxlib2core/Types.h>

#include <cmath>

namespace ORVA {

/// Below a mean of 10 by multiplying uniform numbers (D. E. Knuth, The Art of Computer Programming
/// 2, 3.4.1): mean + 1 words per draw. From 10 on by transformed rejection, PTRS of W. Hoermann,
/// "The Transformed Rejection Method for Generating Poisson Random Variables", Insurance:
/// Mathematics and Economics 12 (1993) 39-45: about 2.3 words per draw, whatever the mean. The
/// probability that its test needs is taken from C. Loader, "Fast and Accurate Computation of
/// Binomial Probabilities" (2000), which keeps its digits for large means; the count is summed up
/// in integers. So counts are exact for means up to 2^53, and beyond as exact as the mean is given.
class SELUUTILS_EXPORT CExactPoisson final : public Impl::CExactDraws<CExactPoisson, int64> {
public:
  /// Throws CExBadParam unless the mean is at least 0 and at most 2^62.
  explicit CExactPoisson(double mean);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] int64 Draw(Source& source) const {
    return m_Mean < c_rejection ? ByMultiplication(source) : ByRejection(source);
  }

  template <RandomSource Source>
  [[nodiscard]] int64 ByMultiplication(Source& source) const {
    // 1 - U, so that no factor is 0.
    double product = 1 - Impl::UnitUniform(source);
    int64 count = 0;
    for (; product > m_Limit; ++count) product *= 1 - Impl::UnitUniform(source);
    return count;
  }

  // Counts are differences to the whole part of the mean until the end.
  template <RandomSource Source>
  [[nodiscard]] int64 ByRejection(Source& source) const {
    for (;;) {
      // Symmetric about 0 and never +-0.5.
      auto const steps = static_cast<int64>(source() >> 12) - (int64{1} << 51);
      double const u = (static_cast<double>(steps) + 0.5) * 0x1p-52;
      double const v = 1 - Impl::UnitUniform(source);
      double const edge = 0.5 - std::fabs(u);
      double const place = (2 * m_A / edge + m_B) * u + m_Fraction + 0.43;
      if (edge >= 0.07 && v <= m_Inside) [[likely]]
        return m_Whole + Floor(place);
      if (IsAccepted(edge, v, place)) return m_Whole + Floor(place);
    }
  }
  [[nodiscard]] static int64 Floor(double x) noexcept {
    auto const towardsZero = static_cast<int64>(x);
    return towardsZero - (static_cast<double>(towardsZero) > x ? 1 : 0);
  }
  [[nodiscard]] bool IsAccepted(double edge, double v, double place) const;

  static constexpr double c_rejection = 10;

  double m_Mean;
  double m_Limit = 0; // exp(-mean)
  // The mean's whole part and rest, and the constants of the rejection in the paper's letters.
  int64 m_Whole = 0;
  double m_Fraction = 0;
  double m_LogMean = 0;
  double m_A = 0, m_B = 0, m_InverseAlpha = 0;
  double m_Inside = 0; // v_r
};

} // namespace ORVA
