#include <SeluUtils/Random/ExactPoisson.h>

#include "Utils/Random/Parameters.h"

#include <numbers>

namespace ORVA {

namespace {

// ln k! - ((k + 1/2) ln k - k + ln(2 pi) / 2), for k from 1 on.
double StirlingError(double k) {
  constexpr double table[] = {0.0,
                              0.08106146679532726,
                              0.0413406959554093,
                              0.02767792568499834,
                              0.020790672103765093,
                              0.016644691189821193,
                              0.013876128823070748,
                              0.01189670994589177,
                              0.010411265261972096,
                              0.009255462182712733,
                              0.00833056343336287,
                              0.007573675487951841,
                              0.00694284010720953,
                              0.006408994188004207,
                              0.0059513701127588475,
                              0.005554733551962801};
  if (k < std::size(table)) return table[static_cast<std::size_t>(k)];
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

double LogProbability(double k, double mean, double difference) {
  if (k == 0) return -mean;
  return -std::log(2 * std::numbers::pi * k) / 2 - StirlingError(k) -
         Deviance(k, mean, difference);
}

} // namespace

CExactPoisson::CExactPoisson(double mean) : m_Mean(mean) {
  Impl::RequireParameter(mean >= 0 && mean <= 0x1p62,
                         ORVA_LOCATION("src/Utils/Random/ExactPoisson",
                                       "ORVA::CExactPoisson::CExactPoisson"),
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
  m_Inside = 0.9277 - 3.6224 / (m_B - 2);
}

bool CExactPoisson::IsAccepted(double edge, double v, double place) const {
  if (edge < 0.013 && v > edge) return false;
  if (place < -static_cast<double>(m_Whole) || place >= 0x1p62) return false; // no count is there
  int64 const fromWhole = Floor(place);
  double const hat = m_InverseAlpha / (m_A / (edge * edge) + m_B);
  return std::log(v * hat) <= LogProbability(static_cast<double>(m_Whole + fromWhole), m_Mean,
                                             static_cast<double>(fromWhole) - m_Fraction);
}

} // namespace ORVA
