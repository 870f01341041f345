// The distributions of a co-occurrence matrix and the texture features that follow from them.
// Example:
//   Impl::StTextureArrays arrays; // reused from matrix to matrix
//   Impl::FillTextureArrays(arrays, transposedCounts, numberOfPairs);
//   double const entropy = Impl::Entropy(arrays);
//   double const contrast = Impl::Contrast(arrays);
//   double const px = arrays.m_RowMarginal[17]; // probability of level 17 in the first voxel of a
//   pair
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// A count with its probability p and its share p ln p of the entropy (0 for p = 0). Equal counts
/// are frequent, so that most cells find their logarithm taken already.
struct StCountTerm {
  std::uint64_t count = 0;
  double p = 0;
  double pLogP = 0;
};

/// How many of them are kept at most, by the lowest bits of the count.
constexpr std::size_t c_nTextureTerms = 4096;

/// The counts of a matrix, column by column: row i, column j at j * 256 + i. That is how an output
/// image has them in memory, and what counting in the opposite direction gives.
struct StTransposedCounts {
  std::span<std::uint32_t const, 65536> m_Cells;
};

/// The same of counts that may be larger; together they must be less than 2^46.
struct StWideTransposedCounts {
  std::span<std::uint64_t const, 65536> m_Cells;
};

/// Everything that the features read: the distributions of the normalized matrix p, and the sums
/// that need the matrix itself, gathered in the one sweep over it. About 120 KiB.
struct StTextureArrays {
  std::vector<double> m_SumDistribution = std::vector<double>(511); // p of the sum i + j
  std::vector<double> m_DifferenceDistribution =
      std::vector<double>(256);                                    // p of the difference |i - j|
  std::vector<double> m_RowMarginal = std::vector<double>(256);    // p of row i
  std::vector<double> m_ColumnMarginal = std::vector<double>(256); // p of column j
  double m_MeanX = 0;    // sum of i p_x(i), divided by 256
  double m_MeanY = 0;    // sum of j p_y(j), divided by 256
  double m_MeanDiff = 0; // sum of k p_d(k), divided by 256

  double m_Total = 0;        // sum of p: 1 where the counts add up to N
  double m_MeanProduct = 0;  // sum of i j p
  double m_SumOfSquares = 0; // sum of p^2
  double m_Entropy = 0;      // -sum of p ln p, like the two below in nats
  double m_EntropyX = 0;     // the same of p_x
  double m_EntropyY = 0;     // the same of p_y
  double m_Dependence = 0;   // HXY2 - HXY: what one voxel tells about the other, at least 0

  std::vector<StCountTerm> m_Terms = std::vector<StCountTerm>(c_nTextureTerms);
};

/// Overwrites all arrays by those of the counts divided by N, the number of pairs, which must not
/// be 0. Allocates nothing. Cost: one pass over the counts; a second one where the levels of a pair
/// hardly depend on each other.
void FillTextureArrays(StTextureArrays& arrays, StTransposedCounts counts, double N) noexcept;
/// The same, to the last bit where the counts fit 32 bits.
void FillTextureArrays(StTextureArrays& arrays, StWideTransposedCounts counts, double N) noexcept;

/// Standard deviation of the rows about m_MeanX.
[[nodiscard]] double Sigma_x(StTextureArrays const& arrays) noexcept;
/// Root of the summed squared deviations of the column probabilities from m_MeanY: not the mirror
/// image of Sigma_x.
[[nodiscard]] double Sigma_y(StTextureArrays const& arrays) noexcept;
/// Entropies of rows, of columns, and the two mixed ones of rows and columns, in nats.
[[nodiscard]] double Hx(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double Hy(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double H1(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double H2(StTextureArrays const& arrays) noexcept;

/// The texture features after R. M. Haralick, K. Shanmugam and I. Dinstein, "Textural features for
/// image classification", IEEE Trans. Systems, Man and Cybernetics 3 (1973), with scale factors
/// 1/256 and 1/511 of this system's own. Pure functions of the arrays; none fails.
[[nodiscard]] double Contrast(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double Correlation(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double DifferenceEntropy(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double DifferenceVariance(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double Entropy(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double InverseDifferenceMoment(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double InformationMeasureOfCorrelation1(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double InformationMeasureOfCorrelation2(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double SecondAngularMoment(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double SumAverage(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double SumEntropy(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double SumVariance(StTextureArrays const& arrays) noexcept;
[[nodiscard]] double Variance(StTextureArrays const& arrays) noexcept;
/// All of them, in the order of CCooccurrence::m_cFeatureNames.
[[nodiscard]] std::array<double, 13> TextureFeatures(StTextureArrays const& arrays) noexcept;

} // namespace ORVA::Impl
