#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactLogNormal.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPressedDirections.h>
#include <SeluUtils/Random/ExactRayleigh.h>
#include <SeluUtils/Random/ExactUniform.h>

#include "Utils/Random/Parameters.h"

#include <cmath>
#include <limits>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Random/ExactScalars";

bool IsPositive(double x) { return std::isfinite(x) && x > 0; }
bool IsNotNegative(double x) { return std::isfinite(x) && x >= 0; }

} // namespace

CExactUniform::CExactUniform(double low, double high)
    : m_Low(low), m_Width(high - low),
      m_Last(std::nextafter(high, -std::numeric_limits<double>::infinity())) {
  Impl::RequireParameter(std::isfinite(low),
                         ORVA_LOCATION(c_module, "ORVA::CExactUniform::CExactUniform"),
                         "lower end has to be finite", low);
  Impl::RequireParameter(std::isfinite(high) && high > low,
                         ORVA_LOCATION(c_module, "ORVA::CExactUniform::CExactUniform"),
                         "upper end has to be finite and above the lower one", high);
  Impl::RequireParameter(std::isfinite(m_Width),
                         ORVA_LOCATION(c_module, "ORVA::CExactUniform::CExactUniform"),
                         "difference of the ends has to be finite", m_Width);
}

CExactNormal::CExactNormal(double mean, double sigma) : m_Mean(mean), m_Sigma(sigma) {
  Impl::RequireParameter(std::isfinite(mean),
                         ORVA_LOCATION(c_module, "ORVA::CExactNormal::CExactNormal"),
                         "mean has to be finite", mean);
  Impl::RequireParameter(IsNotNegative(sigma),
                         ORVA_LOCATION(c_module, "ORVA::CExactNormal::CExactNormal"),
                         "standard deviation has to be finite and at least 0", sigma);
}

CExactExponential::CExactExponential(double rate) : m_Mean(1 / rate) {
  Impl::RequireParameter(IsPositive(rate) && std::isfinite(m_Mean),
                         ORVA_LOCATION(c_module, "ORVA::CExactExponential::CExactExponential"),
                         "rate has to be finite and positive, with a finite reciprocal", rate);
}

CExactRayleigh::CExactRayleigh(double sigma) : m_Sigma(sigma) {
  Impl::RequireParameter(IsPositive(sigma),
                         ORVA_LOCATION(c_module, "ORVA::CExactRayleigh::CExactRayleigh"),
                         "scale has to be finite and positive", sigma);
}

CExactLogNormal::CExactLogNormal(double mu, double sigma) : m_Mu(mu), m_Sigma(sigma) {
  Impl::RequireParameter(std::isfinite(mu),
                         ORVA_LOCATION(c_module, "ORVA::CExactLogNormal::CExactLogNormal"),
                         "mean of the logarithm has to be finite", mu);
  Impl::RequireParameter(
      IsNotNegative(sigma), ORVA_LOCATION(c_module, "ORVA::CExactLogNormal::CExactLogNormal"),
      "standard deviation of the logarithm has to be finite and at least 0", sigma);
}

CExactLogNormal CExactLogNormal::FromMeanAndDeviation(double mean, double deviation) {
  Impl::RequireParameter(IsPositive(mean),
                         ORVA_LOCATION(c_module, "ORVA::CExactLogNormal::FromMeanAndDeviation"),
                         "mean has to be finite and positive", mean);
  Impl::RequireParameter(IsNotNegative(deviation),
                         ORVA_LOCATION(c_module, "ORVA::CExactLogNormal::FromMeanAndDeviation"),
                         "standard deviation has to be finite and at least 0", deviation);
  double const ratio = deviation / mean;
  constexpr double huge = 1e150; // whose square, let alone 1 more, has no digits left for the 1
  double const variance =
      ratio < huge ? std::log1p(ratio * ratio) : 2 * (std::log(deviation) - std::log(mean));
  return {std::log(mean) - variance / 2, std::sqrt(variance)};
}

CExactGamma::CExactGamma(double shape, double rate)
    : m_Shape(shape), m_IsBelowOne(shape < 1), m_D((m_IsBelowOne ? shape + 1 : shape) - 1.0 / 3),
      m_C(1 / (3 * std::sqrt(m_D))), m_Scale(m_D / rate) {
  Impl::RequireParameter(IsPositive(shape),
                         ORVA_LOCATION(c_module, "ORVA::CExactGamma::CExactGamma"),
                         "shape has to be finite and positive", shape);
  Impl::RequireParameter(IsPositive(rate) && std::isfinite(m_Scale),
                         ORVA_LOCATION(c_module, "ORVA::CExactGamma::CExactGamma"),
                         "rate has to be finite and positive, with a finite quotient of the shape",
                         rate);
}

double Impl::LogRest(double y) {
  // Beyond, the difference below loses no more than three digits, which the test can spare.
  constexpr double wide = 0.1;
  if (std::fabs(y) > wide) return std::log1p(y) - y * (1 - y * (0.5 - y / 3));
  // -y^4 (1/4 - y/5 + y^2/6 - ...) from its smallest term on: the 15th is below 2^-53 of the first.
  double sum = 0;
  for (int k = 18; k >= 4; --k) sum = 1.0 / k - y * sum;
  double const square = y * y;
  return -square * square * sum;
}

CExactPressedDirections::CExactPressedDirections(double pressingFactor) : m_Factor(pressingFactor) {
  auto const location =
      ORVA_LOCATION(c_module, "ORVA::CExactPressedDirections::CExactPressedDirections");
  Impl::RequireParameter(IsNotNegative(pressingFactor), location,
                         "pressing factor has to be finite and at least 0", pressingFactor);
}

} // namespace ORVA
