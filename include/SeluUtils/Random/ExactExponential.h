// Exponentially distributed numbers, exact to the tail and fast.
//
//   #include <vector>
//   CExactExponential const wait(0.5);        // rate; the mean is 2
//   CRandomSource source(42);
//   double const value = wait(source);
//   std::vector<double> many(1000);
//   wait.Fill(many, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>

namespace ORVA {

/// By the ziggurat with 256 layers and the exact tail (the papers: SeluUtils/Impl/Ziggurat.h): no
/// number is infinite, and there is no greatest one. Tested are 1000 equally likely cells, four
/// moments, and the tails beyond 6 to 17 means at 10^8 draws. 1.02 words per draw, about 2 ns.
class SELUUTILS_EXPORT CExactExponential final
    : public Impl::CExactDraws<CExactExponential, double> {
public:
  CExactExponential() = default; ///< rate 1
  /// Throws CExBadParam unless the rate is positive and it and the mean 1 / rate are finite.
  explicit CExactExponential(double rate);

private:
  friend CDraws;
  template <RandomSource Source>
  [[nodiscard]] double Draw(Source& source) const {
    return m_Mean * Impl::StandardExponential(source);
  }

  double m_Mean = 1;
};

} // namespace ORVA
