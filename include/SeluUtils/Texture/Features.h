// The texture features of a co-occurrence matrix: IBSI's 25, Haralick's 14, from any matrix.
//
//   #include <iostream>
//   CTextureFeatures features({EnTextureFeature::Contrast, EnTextureFeature::JointEntropy});
//   std::array<double, 4> const matrix = {2, 1, 1, 4}; // of 2 levels, row by row
//   std::span<double const> const values = features.Of(std::span(matrix), 2);
//   std::cout << FeatureName(features.Features()[0]) << ' ' << values[0]; // prints contrast 0.25
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/PairSums.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ORVA {

class CPairCounter;

/// The features. p(i, j) is the matrix divided by its sum N, i and j are levels 1 .. n; px, py its
/// row and column sums with means mx, my and deviations sx, sy; pd(k) the sum of p over |i - j| =
/// k, ps(k) that over i + j = k; H(q) = -sum of q log q over q > 0. Nothing is assumed of the
/// matrix: where a convention asks for the symmetric one (IBSI does), symmetrize it first.
///
/// Every feature of an empty matrix (N = 0) is NaN. What happens where only one level occurs, and
/// elsewhere where a formula divides by 0, stands with the feature.
///
/// The first 25 are those of the reference manual of the Image Biomarker Standardisation Initiative
/// (A. Zwanenburg et al., "The Image Biomarker Standardization Initiative", Radiology 295 (2020)
/// 328-338), whose logarithms are to base 2. Haralick's paper does not say which logarithm it means
/// (R. M. Haralick, K. Shanmugam and I. Dinstein, "Textural Features for Image Classification",
/// IEEE Trans. SMC-3 (1973) 610-621); here it is the natural one, for which the second information
/// measure is the correlation of a normal distribution of the same mutual information.
enum class EnTextureFeature : std::uint8_t {
  JointMaximum,        ///< joint_max: max p
  JointAverage,        ///< joint_avg: sum i p
  JointVariance,       ///< joint_var: sum (i - mx)^2 p
  JointEntropy,        ///< joint_entr: H(p), log2
  DifferenceAverage,   ///< diff_avg: sum k pd
  DifferenceVariance,  ///< diff_var: sum (k - diff_avg)^2 pd
  DifferenceEntropy,   ///< diff_entr: H(pd), log2
  SumAverage,          ///< sum_avg: sum k ps
  SumVariance,         ///< sum_var: sum (k - sum_avg)^2 ps
  SumEntropy,          ///< sum_entr: H(ps), log2
  AngularSecondMoment, ///< energy: sum p^2
  Contrast,            ///< contrast: sum (i - j)^2 p
  Dissimilarity,       ///< dissimilarity: sum |i - j| p; the difference average again
  InverseDifference,   ///< inv_diff: sum p / (1 + |i - j|)
  /// inv_diff_norm: sum p / (1 + |i - j| / Ng). Ng is the number of levels n, which is the greatest
  /// level of a region whose levels were fitted to its own range; SetNormalizingLevels sets
  /// another.
  InverseDifferenceNormalized,
  InverseDifferenceMoment, ///< inv_diff_mom: sum p / (1 + (i - j)^2)
  /// inv_diff_mom_norm: sum p / (1 + (i - j)^2 / Ng^2), Ng as above
  InverseDifferenceMomentNormalized,
  InverseVariance, ///< inv_var: sum over i != j of p / (i - j)^2; 0 for one level
  /// corr: sum (i - mx)(j - my) p / (sx sy). 1 where neither rows nor columns vary (one level), 0
  /// where only one of them does.
  Correlation,
  Autocorrelation,   ///< auto_corr: sum i j p
  ClusterTendency,   ///< clust_tend: sum (i + j - mx - my)^2 p; the sum variance again
  ClusterShade,      ///< clust_shade: the same to the power of 3
  ClusterProminence, ///< clust_prom: the same to the power of 4
  /// info_corr1: (H(p) - HXY1) / max(H(px), H(py)), HXY1 = -sum p log2(px py) = H(px) + H(py). 0
  /// where both are 0 (one level).
  InformationCorrelation1,
  /// info_corr2: sqrt(1 - exp(-2 (HXY2 - H(p)))), HXY2 = -sum px py log2(px py) = H(px) + H(py).
  /// The entropies to base 2 inside exp are the manual's. 0 for one level.
  InformationCorrelation2,

  /// mcc: the maximal correlation coefficient, the second greatest singular value of p(i, j) /
  /// sqrt(px(i) py(j)) over the rows and columns that occur; its square is the second eigenvalue of
  /// the paper's matrix Q. 1 for one row and one column (one level), 0 for one row or one column.
  /// Costs more than all others together: about 2 k times the pairs of levels that occur, with k
  /// from 20 up to the number of levels.
  MaximalCorrelation,

  // The fourteen of the paper, in its order. Where the formula is one of those above, so is the
  // value, to the last bit.
  HaralickAngularSecondMoment,     ///< f1: sum p^2
  HaralickContrast,                ///< f2: sum k^2 pd
  HaralickCorrelation,             ///< f3: (sum i j p - mx my) / (sx sy); as Correlation
  HaralickVariance,                ///< f4, sum of squares: sum (i - mx)^2 p
  HaralickInverseDifferenceMoment, ///< f5: sum p / (1 + (i - j)^2)
  HaralickSumAverage,              ///< f6: sum k ps
  HaralickSumVariance,             ///< f7: sum (k - f6)^2 ps; the paper prints f8 for f6, see below
  HaralickSumEntropy,              ///< f8: H(ps), natural logarithm
  HaralickEntropy,                 ///< f9: H(p), natural logarithm
  HaralickDifferenceVariance,      ///< f10: the variance of pd
  HaralickDifferenceEntropy,       ///< f11: H(pd), natural logarithm
  HaralickInformationCorrelation1, ///< f12: as InformationCorrelation1, which no logarithm changes
  HaralickInformationCorrelation2, ///< f13: sqrt(1 - exp(-2 (HXY2 - HXY))), natural logarithm
  HaralickMaximalCorrelation,      ///< f14: as MaximalCorrelation
  HaralickSumVariancePrinted       ///< f7 to the letter: sum (k - f8)^2 ps, an entropy as the mean
};

/// How many there are.
inline constexpr std::size_t c_nTextureFeatures = 41;

namespace Impl {
template <std::size_t N>
constexpr std::array<EnTextureFeature, N> FeaturesFrom(EnTextureFeature first) {
  std::array<EnTextureFeature, N> features{};
  for (std::size_t k = 0; k < N; ++k)
    features[k] = static_cast<EnTextureFeature>(static_cast<std::size_t>(first) + k);
  return features;
}
} // namespace Impl

/// IBSI's 25, in the order of the manual, and Haralick's 14, in the order of the paper.
inline constexpr auto c_ibsiFeatures = Impl::FeaturesFrom<25>(EnTextureFeature::JointMaximum);
/// The fourteen features of Haralick's paper, in its order.
inline constexpr auto c_haralickFeatures =
    Impl::FeaturesFrom<14>(EnTextureFeature::HaralickAngularSecondMoment);

/// The name used in files and on command lines, such as "joint_entr" or "haralick_entropy".
[[nodiscard]] SELUUTILS_EXPORT std::string_view FeatureName(EnTextureFeature feature) noexcept;
/// The name for people, such as "Joint entropy".
[[nodiscard]] SELUUTILS_EXPORT std::string_view FeatureTitle(EnTextureFeature feature) noexcept;
/// The manual's four-character code, such as "TU9B"; empty for features that have none.
[[nodiscard]] SELUUTILS_EXPORT std::string_view FeatureCode(EnTextureFeature feature) noexcept;
/// The feature of that name (or code); nothing for any other text.
[[nodiscard]] SELUUTILS_EXPORT std::optional<EnTextureFeature>
FeatureFromName(std::string_view name) noexcept;

/// One occupied cell of a matrix: levels i (row) and j (column) from 1 on, and how many pairs.
struct StPairCount {
  /// Levels of the first and of the second voxel.
  int i = 0, j = 0;
  /// How often the pair occurs.
  uint64 count = 0;
  friend bool operator==(StPairCount const&, StPairCount const&) = default;
};

/// Evaluates chosen features of one matrix after the other. All come from one sweep over the cells
/// that hold something and from its distributions: O(n^2) for a dense matrix, O(cells + n) for a
/// list. The memory is kept from matrix to matrix; one object serves one thread at a time.
///
/// A matrix gives the same values to the last bit in whatever form it comes.
class SELUUTILS_EXPORT CTextureFeatures {
public:
  /// IBSI's 25.
  CTextureFeatures() : CTextureFeatures(std::span(c_ibsiFeatures)) {}
  /// Throws CExBadParam for a number that is no feature.
  explicit CTextureFeatures(std::span<EnTextureFeature const> features);
  CTextureFeatures(std::initializer_list<EnTextureFeature> features);

  /// The features that are computed, in the order of their values.
  [[nodiscard]] std::span<EnTextureFeature const> Features() const noexcept { return m_Features; }
  /// Ng of the normalized inverse differences, 0 for the matrix' own n. Throws CExBadParam for a
  /// negative number.
  void SetNormalizingLevels(int levels);

  // The values in the order of Features(); they stay until the next call. Levels from 1 to 65535.

  /// The features of the pairs counted, valid until the next call.
  [[nodiscard]] std::span<double const> Of(CPairCounter const& pairs);
  /// A dense matrix: row i, column j at (i - 1) * levels + j - 1. Throws CExBadParam unless there
  /// are levels^2 counts, and for weights that are negative, infinite or NaN.
  [[nodiscard]] std::span<double const> Of(std::span<uint64 const> counts, int levels);
  [[nodiscard]] std::span<double const> Of(std::span<std::uint32_t const> counts, int levels);
  [[nodiscard]] std::span<double const> Of(std::span<double const> weights, int levels);
  /// The occupied cells, each once, in ascending order of (i, j). Throws CExBadParam for another
  /// order and for levels outside 1 .. n.
  [[nodiscard]] std::span<double const> Of(std::span<StPairCount const> cells, int levels);

private:
  friend class CObjectTexture;
  template <class T>
  std::span<double const> OfDense(std::span<T const> matrix, int levels);
  [[nodiscard]] bool NeedsCells() const noexcept;
  Impl::CPairSums& Start(int levels);
  std::span<double const> Finish();

  std::vector<EnTextureFeature> m_Features;
  std::vector<double> m_Values;
  Impl::CPairSums m_Sums;
  int m_NormalizingLevels = 0;
};

} // namespace ORVA
