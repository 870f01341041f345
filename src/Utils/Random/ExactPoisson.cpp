#include <SeluUtils/Random/ExactPoisson.h>

#include "Utils/Random/LogFactorials.h"
#include "Utils/Random/Parameters.h"

#include <iterator>
#include <numbers>

namespace ORVA {

namespace {

constexpr double c_largeMean = 128;

// ln k! - ((k + 1/2) ln k - k + ln(2 pi) / 2): Stirling's series, for k from 16 on.
double StirlingError(double k) {
  double const r = 1 / (k * k);
  return (1.0 / 12 - (1.0 / 360 - (1.0 / 1260 - (1.0 / 1680 - r / 1188) * r) * r) * r) / k;
}

// k ln(k / mean) + mean - k, given the difference k - mean with all its digits.
double Deviance(double k, double mean, double difference) {
  if (std::fabs(difference) >= 0.1 * (k + mean)) return k * std::log(k / mean) - difference;
  double const v = difference / (k + mean);
  double sum = difference * v;
  double term = 2 * k * v;
  for (int j = 1;; ++j) {
    term *= v * v;
    double const next = sum + term / (2 * j + 1);
    if (next == sum) return sum;
    sum = next;
  }
}

// For a large mean, where a count below 16 has no chance worth a digit.
double LogProbability(double k, double mean, double difference) {
  if (k < 16) return k * std::log(mean) - mean - Impl::c_logFactorials[static_cast<std::size_t>(k)];
  return -std::log(2 * std::numbers::pi * k) / 2 - StirlingError(k) - Deviance(k, mean, difference);
}

} // namespace

CExactPoisson::CExactPoisson(double mean) : m_Mean(mean) {
  Impl::RequireParameter(
      mean >= 0 && mean <= 0x1p62,
      ORVA_LOCATION("src/Utils/Random/ExactPoisson", "ORVA::CExactPoisson::CExactPoisson"),
      "mean has to be from 0 to 2^62", mean);
  if (mean < c_rejection) {
    m_Limit = std::exp(-mean);
    return;
  }
  m_Whole = static_cast<int64>(mean);
  m_Fraction = mean - static_cast<double>(m_Whole);
  m_B = 0.931 + 2.53 * std::sqrt(mean);
  m_A = -0.059 + 0.02483 * m_B;
  m_InverseAlpha = 1.1239 + 1.1328 / (m_B - 3.4);
  m_LogMean = std::log(mean);
  m_Inside = 0.9277 - 3.6224 / (m_B - 2);
}

bool CExactPoisson::IsAccepted(double edge, double v, double place) const {
  if (edge < 0.013 && v > edge) return false;
  if (place < -static_cast<double>(m_Whole) || place >= 0x1p62) return false; // no count is there
  int64 const fromWhole = Floor(place);
  int64 const count = m_Whole + fromWhole;
  double const logShare = std::log(v * m_InverseAlpha / (m_A / (edge * edge) + m_B));
  if (m_Mean < c_largeMean && count < static_cast<int64>(std::size(Impl::c_logFactorials)))
    return logShare <= static_cast<double>(count) * m_LogMean - m_Mean -
                           Impl::c_logFactorials[static_cast<std::size_t>(count)];
  return logShare <= LogProbability(static_cast<double>(count), m_Mean,
                                    static_cast<double>(fromWhole) - m_Fraction);
}

} // namespace ORVA
