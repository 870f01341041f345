#include <SeluUtils/Random/RandomDiscrete.h>

#include <pxlib2core/Exception.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORVA {

namespace {

constexpr double c_epsilon = std::numeric_limits<double>::epsilon();

} // namespace

CRandomDiscrete::CRandomDiscrete(std::map<double, double> const& weightOfValue) {
  m_values.reserve(weightOfValue.size());
  m_reach.reserve(weightOfValue.size());
  for (auto const& entry : weightOfValue) m_total += entry.first;
  double const divisor = m_total - 1 > c_epsilon ? m_total : 1;
  double sum = 0;
  double reach = -std::numeric_limits<double>::infinity();
  for (auto const& [value, weight] : weightOfValue) {
    sum += weight / divisor;
    // The walk stops at the first sum that is not below the uniform number, so a sum that falls
    // back (a negative weight) stops none, and one that is not a number stops all.
    reach = std::isnan(sum) ? std::numeric_limits<double>::infinity() : std::max(reach, sum);
    m_values.push_back(value);
    m_reach.push_back(reach);
  }
}

double CRandomDiscrete::operator()() const {
  if (m_values.empty())
    Impl::Raise(
        ORVA_LOCATION("src/Utils/Random/RandomDiscrete", "ORVA::CRandomDiscrete::operator ()"),
        "There is no value to draw: the map is empty.");
  auto const stop = std::lower_bound(m_reach.begin(), m_reach.end(), m_uniform());
  return stop == m_reach.end() ? m_values.back()
                               : m_values[static_cast<std::size_t>(stop - m_reach.begin())];
}

bool CRandomDiscrete::IsValid() const { return std::fabs(1 - m_total) < c_epsilon; }

} // namespace ORVA
