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
  m_Values.reserve(weightOfValue.size());
  m_Reach.reserve(weightOfValue.size());
  for (auto const& entry : weightOfValue) m_Total += entry.first;
  double const divisor = m_Total - 1 > c_epsilon ? m_Total : 1;
  double sum = 0;
  double reach = -std::numeric_limits<double>::infinity();
  for (auto const& [value, weight] : weightOfValue) {
    sum += weight / divisor;
    // The walk stops at the first sum that is not below the uniform number, so a sum that falls
    // back (a negative weight) stops none, and one that is not a number stops all.
    reach = std::isnan(sum) ? std::numeric_limits<double>::infinity() : std::max(reach, sum);
    m_Values.push_back(value);
    m_Reach.push_back(reach);
  }
}

template <class Source>
double CRandomDiscrete::Draw(Source& source) const {
  if (m_Values.empty())
    Impl::Raise(
        ORVA_LOCATION("src/Utils/Random/RandomDiscrete", "ORVA::CRandomDiscrete::operator ()"),
        "There is no value to draw: the map is empty.");
  auto const stop = std::lower_bound(m_Reach.begin(), m_Reach.end(), m_Uniform(source));
  return stop == m_Reach.end() ? m_Values.back()
                               : m_Values[static_cast<std::size_t>(stop - m_Reach.begin())];
}

double CRandomDiscrete::operator()() const {
  Impl::CSharedSource shared;
  return Draw(shared);
}

double CRandomDiscrete::DrawFrom(CSourceReference source) const { return Draw(source); }

bool CRandomDiscrete::IsValid() const { return std::fabs(1 - m_Total) < c_epsilon; }

} // namespace ORVA
