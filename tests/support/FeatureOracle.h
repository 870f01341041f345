// The texture features of a matrix of any number of levels in long double, formula by formula, each
// a double loop over the whole matrix: the reference for the fused sweeps, and their peer in the
// bench.
#pragma once

#include <SeluUtils/Texture/Features.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace test {

/// Real is long double for the reference and double for the bench. Level i stands at index i - 1.
template <class Real>
class CFeatureOracle {
public:
  CFeatureOracle(std::vector<double> const& matrix, int levels)
      : m_N(static_cast<std::size_t>(levels)), m_P(matrix.begin(), matrix.end()), m_X(m_N + 1),
        m_Y(m_N + 1), m_D(m_N), m_S(2 * m_N + 1) {
    Real total = 0;
    for (Real const weight : m_P) total += weight;
    for (Real& p : m_P) p /= total;
    for (std::size_t i = 1; i <= m_N; ++i)
      for (std::size_t j = 1; j <= m_N; ++j) {
        Real const p = m_P[(i - 1) * m_N + j - 1];
        m_X[i] += p;
        m_Y[j] += p;
        m_D[i > j ? i - j : j - i] += p;
        m_S[i + j] += p;
      }
  }

  /// All features but the maximal correlation.
  [[nodiscard]] Real Of(ORVA::EnTextureFeature feature) const {
    using enum ORVA::EnTextureFeature;
    Real const ln2 = std::log(Real(2)), mx = Mean(m_X), my = Mean(m_Y);
    auto const about = [&](int power) {
      return Sum(
          [&](Real i, Real j, Real p) { return std::pow(i + j - mx - my, Real(power)) * p; });
    };
    switch (feature) {
    case JointMaximum:
      return *std::ranges::max_element(m_P);
    case JointAverage:
      return Sum([](Real i, Real, Real p) { return i * p; });
    case JointVariance:
    case HaralickVariance:
      return Sum([&](Real i, Real, Real p) { return (i - mx) * (i - mx) * p; });
    case JointEntropy:
      return Entropy(m_P);
    case HaralickEntropy:
      return Entropy(m_P) * ln2;
    case DifferenceAverage:
    case Dissimilarity:
      return Sum([](Real i, Real j, Real p) { return std::abs(i - j) * p; });
    case DifferenceVariance:
    case HaralickDifferenceVariance:
      return Variance(m_D, Mean(m_D));
    case DifferenceEntropy:
      return Entropy(m_D);
    case HaralickDifferenceEntropy:
      return Entropy(m_D) * ln2;
    case SumAverage:
    case HaralickSumAverage:
      return Mean(m_S);
    case SumVariance:
    case HaralickSumVariance:
      return Variance(m_S, Mean(m_S));
    case HaralickSumVariancePrinted:
      return Variance(m_S, Entropy(m_S) * ln2);
    case SumEntropy:
      return Entropy(m_S);
    case HaralickSumEntropy:
      return Entropy(m_S) * ln2;
    case AngularSecondMoment:
    case HaralickAngularSecondMoment:
      return Sum([](Real, Real, Real p) { return p * p; });
    case Contrast:
    case HaralickContrast:
      return Sum([](Real i, Real j, Real p) { return (i - j) * (i - j) * p; });
    case InverseDifference:
      return Sum([](Real i, Real j, Real p) { return p / (1 + std::abs(i - j)); });
    case InverseDifferenceNormalized:
      return Sum([n = Real(m_N)](Real i, Real j, Real p) { return p / (1 + std::abs(i - j) / n); });
    case InverseDifferenceMoment:
    case HaralickInverseDifferenceMoment:
      return Sum([](Real i, Real j, Real p) { return p / (1 + (i - j) * (i - j)); });
    case InverseDifferenceMomentNormalized:
      return Sum([n = Real(m_N)](Real i, Real j, Real p) {
        return p / (1 + (i - j) * (i - j) / (n * n));
      });
    case InverseVariance:
      return Sum([](Real i, Real j, Real p) { return i == j ? 0 : p / ((i - j) * (i - j)); });
    case Correlation:
    case HaralickCorrelation: {
      Real const sx = std::sqrt(Variance(m_X, mx)), sy = std::sqrt(Variance(m_Y, my));
      return Sum([&](Real i, Real j, Real p) { return (i - mx) * (j - my) * p; }) / (sx * sy);
    }
    case Autocorrelation:
      return Sum([](Real i, Real j, Real p) { return i * j * p; });
    case ClusterTendency:
      return about(2);
    case ClusterShade:
      return about(3);
    case ClusterProminence:
      return about(4);
    case InformationCorrelation1:
    case HaralickInformationCorrelation1:
      return (Entropy(m_P) - Mixed(false)) / std::max(Entropy(m_X), Entropy(m_Y));
    case InformationCorrelation2:
      return std::sqrt(1 - std::exp(-2 * (Mixed(true) - Entropy(m_P))));
    case HaralickInformationCorrelation2:
      return std::sqrt(1 - std::exp(-2 * ln2 * (Mixed(true) - Entropy(m_P))));
    default:
      return NAN;
    }
  }

private:
  template <class Term>
  [[nodiscard]] Real Sum(Term term) const {
    Real sum = 0;
    for (std::size_t i = 1; i <= m_N; ++i)
      for (std::size_t j = 1; j <= m_N; ++j)
        sum += term(static_cast<Real>(i), static_cast<Real>(j), m_P[(i - 1) * m_N + j - 1]);
    return sum;
  }
  [[nodiscard]] static Real Mean(std::vector<Real> const& distribution) {
    Real sum = 0;
    for (std::size_t k = 0; k < distribution.size(); ++k)
      sum += static_cast<Real>(k) * distribution[k];
    return sum;
  }
  [[nodiscard]] static Real Variance(std::vector<Real> const& distribution, Real mean) {
    Real sum = 0;
    for (std::size_t k = 0; k < distribution.size(); ++k)
      sum += (static_cast<Real>(k) - mean) * (static_cast<Real>(k) - mean) * distribution[k];
    return sum;
  }
  [[nodiscard]] static Real Entropy(std::vector<Real> const& distribution) {
    Real sum = 0;
    for (Real const p : distribution)
      if (p > 0) sum -= p * std::log2(p);
    return sum;
  }
  // HXY2 with the products of the marginals as the weights, HXY1 with the matrix itself.
  [[nodiscard]] Real Mixed(bool ofProducts) const {
    Real sum = 0;
    for (std::size_t i = 1; i <= m_N; ++i)
      for (std::size_t j = 1; j <= m_N; ++j)
        if (Real const product = m_X[i] * m_Y[j]; product > 0)
          sum -= (ofProducts ? product : m_P[(i - 1) * m_N + j - 1]) * std::log2(product);
    return sum;
  }

  std::size_t m_N;
  std::vector<Real> m_P, m_X, m_Y, m_D, m_S;
};

} // namespace test
