#include "Utils/Texture/FeatureValues.h"

#include "Utils/Texture/MaximalCorrelation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace ORVA::Impl {

namespace {

constexpr double c_ln2 = 0.6931471805599453;

// The moments of a distribution over first, first + 1, ... of that total.
struct StDistribution {
  std::span<double const> weights;
  double first;
  double total;

  [[nodiscard]] double Mean() const noexcept {
    double sum = 0, level = first;
    for (double const weight : weights) sum += level++ * weight;
    return sum / total;
  }
  /// The central moments of order 2, 3 and 4.
  struct StCentral {
    double second = 0, third = 0, fourth = 0;
  };
  [[nodiscard]] StCentral Central(double mean) const noexcept {
    StCentral sums;
    double level = first;
    for (double const weight : weights) {
      double const d = level++ - mean, square = d * d * weight;
      sums.second += square;
      sums.third += square * d;
      sums.fourth += square * d * d;
    }
    return {sums.second / total, sums.third / total, sums.fourth / total};
  }
};

} // namespace

CFeatureValues::CFeatureValues(CPairSums const& sums, int normalizingLevels)
    : m_Sums(sums), m_Total(sums.Total()), m_NormalizingLevels(normalizingLevels) {}

double CFeatureValues::Of(EnTextureFeature feature) {
  using enum EnTextureFeature;
  if (!(m_Total > 0)) return std::numeric_limits<double>::quiet_NaN();
  switch (feature) {
  case DifferenceAverage:
  case DifferenceVariance:
  case DifferenceEntropy:
  case Contrast:
  case Dissimilarity:
  case InverseDifference:
  case InverseDifferenceNormalized:
  case InverseDifferenceMoment:
  case InverseDifferenceMomentNormalized:
  case InverseVariance:
  case HaralickContrast:
  case HaralickInverseDifferenceMoment:
  case HaralickDifferenceVariance:
  case HaralickDifferenceEntropy:
    return OfDifferences(feature);
  case JointAverage:
  case JointVariance:
  case SumAverage:
  case SumVariance:
  case Correlation:
  case Autocorrelation:
  case ClusterTendency:
  case ClusterShade:
  case ClusterProminence:
  case HaralickCorrelation:
  case HaralickVariance:
  case HaralickSumAverage:
  case HaralickSumVariance:
  case HaralickSumVariancePrinted:
    return OfMoments(feature);
  case JointEntropy:
  case SumEntropy:
  case InformationCorrelation1:
  case InformationCorrelation2:
  case HaralickSumEntropy:
  case HaralickEntropy:
  case HaralickInformationCorrelation1:
  case HaralickInformationCorrelation2:
    return OfEntropies(feature);
  default:
    return OfCells(feature);
  }
}

double CFeatureValues::OfDifferences(EnTextureFeature feature) {
  using enum EnTextureFeature;
  if (!m_HasDifferences) FindDifferences();
  switch (feature) {
  case DifferenceVariance:
  case HaralickDifferenceVariance:
    return m_Differences.variance;
  case DifferenceEntropy:
    return m_Differences.entropy;
  case HaralickDifferenceEntropy:
    return m_Differences.entropy * c_ln2;
  case Contrast:
  case HaralickContrast:
    return m_Differences.contrast;
  case InverseDifference:
    return m_Differences.inverse;
  case InverseDifferenceNormalized:
    return m_Differences.inverseNormalized;
  case InverseDifferenceMoment:
  case HaralickInverseDifferenceMoment:
    return m_Differences.inverseMoment;
  case InverseDifferenceMomentNormalized:
    return m_Differences.inverseMomentNormalized;
  case InverseVariance:
    return m_Differences.inverseVariance;
  default: // the average and the dissimilarity
    return m_Differences.average;
  }
}

double CFeatureValues::OfMoments(EnTextureFeature feature) {
  using enum EnTextureFeature;
  if (!m_HasMoments) FindMoments();
  switch (feature) {
  case JointAverage:
    return m_Moments.meanX;
  case JointVariance:
  case HaralickVariance:
    return m_Moments.varianceX;
  case SumAverage:
  case HaralickSumAverage:
    return m_Moments.sumAverage;
  case Autocorrelation:
    return m_Moments.product;
  case ClusterShade:
    return m_Moments.sum3;
  case ClusterProminence:
    return m_Moments.sum4;
  case Correlation:
  case HaralickCorrelation:
    return FindCorrelation();
  case HaralickSumVariancePrinted: { // about another point than the mean
    double const shift = m_Moments.sumAverage - FindSumEntropy() * c_ln2;
    return m_Moments.sum2 + shift * shift;
  }
  default: // the sum variance and the cluster tendency
    return m_Moments.sum2;
  }
}

double CFeatureValues::OfEntropies(EnTextureFeature feature) {
  using enum EnTextureFeature;
  if (feature == SumEntropy) return FindSumEntropy();
  if (feature == HaralickSumEntropy) return FindSumEntropy() * c_ln2;
  if (!m_HasEntropies) FindEntropies();
  switch (feature) {
  case HaralickEntropy:
    return m_Entropies.joint * c_ln2;
  case InformationCorrelation1:
  case HaralickInformationCorrelation1:
    return FindInformation1();
  case InformationCorrelation2:
    return FindInformation2(1);
  case HaralickInformationCorrelation2:
    return FindInformation2(c_ln2);
  default:
    return m_Entropies.joint;
  }
}

double CFeatureValues::OfCells(EnTextureFeature feature) {
  using enum EnTextureFeature;
  switch (feature) {
  case JointMaximum:
    return m_Sums.Greatest() / m_Total;
  case MaximalCorrelation:
  case HaralickMaximalCorrelation:
    return MaximalCorrelationOnce();
  default:
    return m_Sums.AngularSecondMoment();
  }
}

// From j - i, whose zero stands in the middle, to k = |i - j|.
void CFeatureValues::FindDifferences() {
  auto const both = m_Sums.Differences();
  std::size_t const zero = both.size() / 2;
  std::vector<double> folded(both.begin() + static_cast<std::ptrdiff_t>(zero), both.end());
  for (std::size_t k = 1; k < folded.size(); ++k) folded[k] += both[zero - k];

  auto& d = m_Differences;
  StDistribution const distribution{folded, 0, m_Total};
  d.average = distribution.Mean();
  d.variance = distribution.Central(d.average).second;
  d.contrast = distribution.Central(0).second;
  d.entropy = EntropyInBits(folded, m_Total);
  for (std::size_t k = 0; k < folded.size(); ++k) {
    double const weight = folded[k], level = static_cast<double>(k), square = level * level;
    double const share = level / m_NormalizingLevels;
    d.inverse += weight / (1 + level);
    d.inverseNormalized += weight / (1 + share);
    d.inverseMoment += weight / (1 + square);
    d.inverseMomentNormalized += weight / (1 + share * share);
    if (k > 0) d.inverseVariance += weight / square;
  }
  for (double* const sum : {&d.inverse, &d.inverseNormalized, &d.inverseMoment,
                            &d.inverseMomentNormalized, &d.inverseVariance})
    *sum /= m_Total;
  m_HasDifferences = true;
}

// 2 cov(i, j) = var i + var j - var(j - i): all three from distributions about their own means, so
// that no digits are lost however far the levels are from 0.
void CFeatureValues::FindMoments() {
  auto const low = static_cast<double>(m_Sums.Low()), high = static_cast<double>(m_Sums.High());
  StDistribution const x{m_Sums.Rows(), low, m_Total}, y{m_Sums.Columns(), low, m_Total},
      sum{m_Sums.Sums(), 2 * low, m_Total}, difference{m_Sums.Differences(), low - high, m_Total};
  auto& m = m_Moments;
  m.meanX = x.Mean();
  bool const areEqual = m_Sums.IsSymmetric();
  double const meanY = areEqual ? m.meanX : y.Mean();
  m.varianceX = x.Central(m.meanX).second;
  m.varianceY = areEqual ? m.varianceX : y.Central(meanY).second;
  double const ofDifference = difference.Central(difference.Mean()).second;
  m.covariance = (m.varianceX + m.varianceY - ofDifference) / 2;
  m.product = m.covariance + m.meanX * meanY;
  m.sumAverage = sum.Mean();
  auto const central = sum.Central(m.sumAverage);
  m.sum2 = central.second;
  m.sum3 = central.third;
  m.sum4 = central.fourth;
  m_HasMoments = true;
}

void CFeatureValues::FindEntropies() {
  m_Entropies.joint = m_Sums.Entropy();
  m_Entropies.rows = EntropyInBits(m_Sums.Rows(), m_Total);
  m_Entropies.columns =
      m_Sums.IsSymmetric() ? m_Entropies.rows : EntropyInBits(m_Sums.Columns(), m_Total);
  m_HasEntropies = true;
}

double CFeatureValues::FindSumEntropy() {
  if (m_SumEntropy < 0) m_SumEntropy = EntropyInBits(m_Sums.Sums(), m_Total);
  return m_SumEntropy;
}

double CFeatureValues::MaximalCorrelationOnce() {
  if (m_MaximalCorrelation < 0) m_MaximalCorrelation = MaximalCorrelation(m_Sums);
  return m_MaximalCorrelation;
}

double CFeatureValues::FindCorrelation() const {
  auto const& m = m_Moments;
  if (m.varianceX == 0 || m.varianceY == 0) return m.varianceX == m.varianceY ? 1 : 0;
  return std::clamp(m.covariance / (std::sqrt(m.varianceX) * std::sqrt(m.varianceY)), -1.0, 1.0);
}

// H(px) + H(py) - H(p) in bits; what is within the rounding of the entropies is none.
double CFeatureValues::MutualInformation() const {
  double const marginals = m_Entropies.rows + m_Entropies.columns;
  double const information = marginals - m_Entropies.joint;
  return information > 1e-14 * marginals ? information : 0;
}

double CFeatureValues::FindInformation1() const {
  double const greater = std::max(m_Entropies.rows, m_Entropies.columns);
  double const information = MutualInformation();
  return information > 0 && greater > 0 ? -information / greater : 0;
}

// 1 - exp(x) as -expm1(x), which keeps its digits where there is little information.
double CFeatureValues::FindInformation2(double unitsPerBit) const {
  return std::sqrt(-std::expm1(-2 * (MutualInformation() * unitsPerBit)));
}

} // namespace ORVA::Impl
