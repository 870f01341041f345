// The values of the texture features of one matrix, each group of them evaluated when first asked.
//
//   Impl::CFeatureValues values(sums, n);
//   double const contrast = values.Of(EnTextureFeature::Contrast);
#pragma once

#include <SeluUtils/Impl/PairSums.h>
#include <SeluUtils/Texture/Features.h>

#include <array>

namespace ORVA::Impl {

/// The sums must outlive the object and keep their cells where the maximal correlation is asked
/// for.
class CFeatureValues {
public:
  CFeatureValues(CPairSums const& sums, int normalizingLevels);

  /// NaN for an empty matrix.
  [[nodiscard]] double Of(EnTextureFeature feature);

private:
  /// Sums over |i - j| = k of functions of k, divided by the total.
  struct StDifferences {
    double average = 0, variance = 0, contrast = 0, inverse = 0, inverseNormalized = 0,
           inverseMoment = 0, inverseMomentNormalized = 0, inverseVariance = 0, entropy = 0;
  };
  /// Means and central moments of rows, columns and i + j; the covariance.
  struct StMoments {
    double meanX = 0, varianceX = 0, varianceY = 0, covariance = 0, product = 0;
    double sumAverage = 0, sum2 = 0, sum3 = 0, sum4 = 0;
  };
  /// In bits.
  struct StEntropies {
    double joint = 0, rows = 0, columns = 0;
  };

  [[nodiscard]] double OfDifferences(EnTextureFeature feature);
  [[nodiscard]] double OfMoments(EnTextureFeature feature);
  [[nodiscard]] double OfEntropies(EnTextureFeature feature);
  [[nodiscard]] double OfCells(EnTextureFeature feature);

  void FindDifferences();
  void FindMoments();
  void FindEntropies();
  [[nodiscard]] double FindCorrelation() const;
  [[nodiscard]] double FindInformation1() const;
  [[nodiscard]] double FindInformation2(double unitsPerBit) const;
  [[nodiscard]] double MutualInformation() const;
  [[nodiscard]] double FindSumEntropy();
  [[nodiscard]] double MaximalCorrelationOnce();

  CPairSums const& m_Sums;
  double m_Total, m_NormalizingLevels;
  bool m_HasDifferences = false, m_HasMoments = false, m_HasEntropies = false;
  StDifferences m_Differences;
  StMoments m_Moments;
  StEntropies m_Entropies;
  double m_SumEntropy = -1, m_MaximalCorrelation = -1; // negative: not evaluated yet
};

} // namespace ORVA::Impl
