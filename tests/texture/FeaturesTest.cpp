// The features of any matrix: against their formulas, identities, degenerate matrices, and the same
// bits in whatever form a matrix comes.

#include "support/Errors.h"
#include "support/FeatureOracle.h"
#include "support/Random.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/PairCounter.h>

#include <Eigen/SVD>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using enum EnTextureFeature;

namespace {

std::vector<EnTextureFeature> AllFeatures() {
  std::vector<EnTextureFeature> all;
  for (std::size_t k = 0; k < c_nTextureFeatures; ++k)
    all.push_back(static_cast<EnTextureFeature>(k));
  return all;
}

bool IsMaximalCorrelation(EnTextureFeature feature) {
  return feature == MaximalCorrelation || feature == HaralickMaximalCorrelation;
}

// A matrix of integers from 0 on, some of its rows and columns empty.
std::vector<uint64> AnyMatrix(test::CRandomNumbers& random, int n) {
  auto const side = static_cast<std::size_t>(n);
  std::vector<uint64> matrix(side * side);
  int const greatest = random.Between(0, 2) == 0 ? 3 : 5000, fill = random.Between(1, 4);
  for (auto& cell : matrix)
    if (random.Between(0, fill) == 0)
      cell = random.Between<uint64>(0, static_cast<uint64>(greatest));
  matrix[0] += 1;
  matrix[side * side - 1] += 1;
  for (int k = random.Between(0, 2); k > 0; --k) {
    auto const level = static_cast<std::size_t>(random.Between(1, std::max(1, n - 2)));
    if (level + 1 >= side) continue;
    for (std::size_t other = 0; other < side; ++other)
      matrix[level * side + other] = matrix[other * side + level] = 0;
  }
  return matrix;
}

CPairCounter CounterOf(std::vector<uint64> const& matrix, int n,
                       CPairCounter::EnForm form = CPairCounter::EnForm::Dense) {
  CPairCounter pairs(n, form);
  for (int i = 1; i <= n; ++i)
    for (int j = 1; j <= n; ++j)
      pairs.Add(i, j, matrix[static_cast<std::size_t>((i - 1) * n + j - 1)]);
  return pairs;
}

double ValueOf(EnTextureFeature feature, std::vector<double> const& matrix, int n) {
  CTextureFeatures features({feature});
  return features.Of(std::span(matrix), n)[0];
}

// What a feature is a difference of, where that is much larger than itself.
double ScaleOf(EnTextureFeature feature, int n, double value) {
  if (feature == ClusterShade) return std::pow(2.0 * n, 3);
  if (feature == InformationCorrelation2 || feature == HaralickInformationCorrelation2)
    return 0.05 / value; // the root of a difference of entropies
  return feature == Correlation || feature == HaralickCorrelation ||
                 feature == InformationCorrelation1 || feature == HaralickInformationCorrelation1
             ? 1
             : 1e-3;
}

std::vector<double> Doubles(std::vector<uint64> const& matrix) {
  return {matrix.begin(), matrix.end()};
}

} // namespace

TEST(Features, EveryFormulaByItself) {
  test::CRandomNumbers random;
  CTextureFeatures features(AllFeatures());
  for (int k = 0; k < 60; ++k) {
    int const n = random.Between(2, 40);
    auto const matrix = AnyMatrix(random, n);
    test::CFeatureOracle<long double> const oracle(Doubles(matrix), n);
    auto const values = features.Of(std::span(matrix), n);
    for (std::size_t f = 0; f < values.size(); ++f) {
      auto const feature = features.Features()[f];
      if (IsMaximalCorrelation(feature)) continue;
      auto const expected = static_cast<double>(oracle.Of(feature));
      double const scale = std::max(ScaleOf(feature, n, expected), std::abs(expected));
      ASSERT_NEAR(values[f], expected, 1e-13 * scale)
          << FeatureName(feature) << " of " << n << " levels";
    }
  }
}

TEST(Features, MaximalCorrelationIsTheSecondSingularValue) {
  test::CRandomNumbers random;
  for (int k = 0; k < 60; ++k) {
    int const n = random.Between(2, k % 10 == 0 ? 120 : 20);
    auto const matrix = AnyMatrix(random, n);
    Eigen::MatrixXd p(n, n);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j)
        p(i, j) = static_cast<double>(matrix[static_cast<std::size_t>(i * n + j)]);
    Eigen::VectorXd const x = p.rowwise().sum(), y = p.colwise().sum();
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j)
        if (p(i, j) > 0) p(i, j) /= std::sqrt(x(i) * y(j));
    auto const singular = Eigen::JacobiSVD<Eigen::MatrixXd>(p).singularValues();
    ASSERT_NEAR(ValueOf(MaximalCorrelation, Doubles(matrix), n), singular(1), 1e-12) << n;
  }
}

TEST(Features, MaximalCorrelationOfSpecialMatrices) {
  EXPECT_NEAR(ValueOf(MaximalCorrelation, {1, 0, 0, 1}, 2), 1, 1e-15)
      << "each level tells the other";
  EXPECT_NEAR(ValueOf(MaximalCorrelation, {0, 3, 5, 0}, 2), 1, 1e-15);
  EXPECT_NEAR(ValueOf(MaximalCorrelation, {1, 1, 1, 1}, 2), 0, 1e-15) << "independent";
  EXPECT_NEAR(ValueOf(MaximalCorrelation, {1, 2, 3, 2, 4, 6, 3, 6, 9}, 3), 0, 1e-15);
  EXPECT_EQ(ValueOf(MaximalCorrelation, {1, 2, 0, 0}, 2), 0) << "one row";
  EXPECT_EQ(ValueOf(MaximalCorrelation, {1, 0, 2, 0}, 2), 0) << "one column";
  EXPECT_EQ(ValueOf(MaximalCorrelation, {0, 7, 0, 0}, 2), 1) << "one of each";
  EXPECT_NEAR(ValueOf(MaximalCorrelation, {3, 1, 0, 1, 3, 0, 0, 0, 4}, 3), 1, 1e-15)
      << "two blocks: the greatest value is there twice";
}

TEST(Features, IdentitiesBetweenThem) {
  test::CRandomNumbers random;
  CTextureFeatures features(AllFeatures());
  for (int k = 0; k < 50; ++k) {
    int const n = random.Between(1, 30);
    auto const matrix = AnyMatrix(random, n);
    auto const values = features.Of(std::span(matrix), n);
    auto const of = [&](EnTextureFeature f) { return values[static_cast<std::size_t>(f)]; };
    EXPECT_EQ(of(Dissimilarity), of(DifferenceAverage));
    EXPECT_EQ(of(ClusterTendency), of(SumVariance));
    EXPECT_NEAR(of(DifferenceVariance), of(Contrast) - of(Dissimilarity) * of(Dissimilarity),
                1e-12 * (1 + of(Contrast)));
    constexpr double ln2 = 0.6931471805599453;
    EXPECT_EQ(of(HaralickEntropy), of(JointEntropy) * ln2);
    EXPECT_EQ(of(HaralickInformationCorrelation1), of(InformationCorrelation1));
    for (auto const& [haralick, ibsi] :
         {std::pair(HaralickContrast, Contrast), std::pair(HaralickCorrelation, Correlation),
          std::pair(HaralickAngularSecondMoment, AngularSecondMoment),
          std::pair(HaralickVariance, JointVariance),
          std::pair(HaralickMaximalCorrelation, MaximalCorrelation)})
      EXPECT_EQ(of(haralick), of(ibsi)) << FeatureName(haralick);
    EXPECT_GE(of(InformationCorrelation2), 0);
    EXPECT_LE(of(InformationCorrelation1), 0);
    EXPECT_LE(std::abs(of(Correlation)), of(MaximalCorrelation) + 1e-12);
  }
}

TEST(Features, OneLevel) {
  for (int const level : {1, 3}) {
    CPairCounter pairs(4);
    pairs.Add(level, level, 17);
    CTextureFeatures features(AllFeatures());
    auto const values = features.Of(pairs);
    auto const of = [&](EnTextureFeature f) { return values[static_cast<std::size_t>(f)]; };
    for (EnTextureFeature const f :
         {JointMaximum, AngularSecondMoment, Correlation, MaximalCorrelation, InverseDifference,
          InverseDifferenceNormalized, InverseDifferenceMoment, InverseDifferenceMomentNormalized})
      EXPECT_EQ(of(f), 1) << FeatureName(f);
    for (EnTextureFeature const f :
         {JointVariance, JointEntropy, DifferenceAverage, DifferenceVariance, DifferenceEntropy,
          SumVariance, SumEntropy, Contrast, Dissimilarity, InverseVariance, ClusterTendency,
          ClusterShade, ClusterProminence, InformationCorrelation1, InformationCorrelation2})
      EXPECT_EQ(of(f), 0) << FeatureName(f);
    EXPECT_EQ(of(JointAverage), level);
    EXPECT_EQ(of(SumAverage), 2 * level);
    EXPECT_EQ(of(Autocorrelation), level * level);
    EXPECT_EQ(of(HaralickSumVariancePrinted), 4 * level * level) << "about an entropy of 0";
  }
}

TEST(Features, OneRowOfSeveralLevelsTellsNothing) {
  EXPECT_EQ(ValueOf(Correlation, {2, 3, 0, 0}, 2), 0);
  EXPECT_EQ(ValueOf(InformationCorrelation1, {2, 3, 0, 0}, 2), 0);
  EXPECT_EQ(ValueOf(InformationCorrelation2, {2, 3, 0, 0}, 2), 0);
}

TEST(Features, EmptyMatrixHasNone) {
  CTextureFeatures features(AllFeatures());
  for (double const value : features.Of(CPairCounter(5))) EXPECT_TRUE(std::isnan(value));
  for (double const value : features.Of(std::span<StPairCount const>(), 5))
    EXPECT_TRUE(std::isnan(value));
}

TEST(Features, SameBitsInWhateverForm) {
  test::CRandomNumbers random;
  CTextureFeatures features(AllFeatures());
  auto const bits = [](std::span<double const> values) {
    std::vector<std::uint64_t> all;
    for (double const value : values) all.push_back(std::bit_cast<std::uint64_t>(value));
    return all;
  };
  for (int k = 0; k < 30; ++k) {
    int const n = random.Between(1, 60);
    auto const matrix = AnyMatrix(random, n);
    auto const weights = Doubles(matrix);
    std::vector<std::uint32_t> const narrow(matrix.begin(), matrix.end());
    auto const expected = bits(features.Of(std::span(matrix), n));
    EXPECT_EQ(bits(features.Of(std::span(weights), n)), expected);
    EXPECT_EQ(bits(features.Of(std::span(narrow), n)), expected);
    auto const dense = CounterOf(matrix, n);
    EXPECT_EQ(bits(features.Of(dense)), expected);
    EXPECT_EQ(bits(features.Of(CounterOf(matrix, n, CPairCounter::EnForm::Sparse))), expected);
    EXPECT_EQ(bits(features.Of(std::span<StPairCount const>(dense.Cells()), n)), expected);
    for (std::size_t f = 0; f < c_nTextureFeatures; ++f) {
      CTextureFeatures alone({static_cast<EnTextureFeature>(f)});
      EXPECT_EQ(bits(alone.Of(std::span(matrix), n))[0], expected[f]) << "alone";
    }
  }
}

TEST(Features, WeightsNeedNotBeCounts) {
  test::CRandomNumbers random;
  CTextureFeatures features;
  for (int k = 0; k < 20; ++k) {
    int const n = random.Between(2, 30);
    std::vector<double> matrix(static_cast<std::size_t>(n * n));
    for (double& weight : matrix) weight = random.Real(0, 1e-3);
    test::CFeatureOracle<long double> const oracle(matrix, n);
    auto const values = features.Of(std::span(matrix), n);
    for (std::size_t f = 0; f < values.size(); ++f) {
      auto const expected = static_cast<double>(oracle.Of(features.Features()[f]));
      double const scale =
          std::max(ScaleOf(features.Features()[f], n, expected), std::abs(expected));
      EXPECT_NEAR(values[f], expected, 1e-12 * scale) << FeatureName(features.Features()[f]);
    }
  }
}

TEST(Features, KeepTheirDigitsFarFromZeroAndNextToOneLevel) {
  // Two levels at the far end: the same spread as next to 1.
  CPairCounter near(65535), far(65535);
  for (auto* const pairs : {&near, &far}) {
    int const base = pairs == &near ? 1 : 65534;
    pairs->Add(base, base, 3);
    pairs->Add(base, base + 1, 1);
    pairs->Add(base + 1, base + 1, 2);
  }
  CTextureFeatures features({Correlation, JointVariance, ClusterShade, ClusterProminence});
  std::vector<double> const expected(features.Of(near).begin(), features.Of(near).end());
  auto const values = features.Of(far);
  for (std::size_t f = 0; f < values.size(); ++f)
    EXPECT_NEAR(values[f], expected[f], 1e-9) << FeatureName(features.Features()[f]);

  // One pair among 10^12 that differs: H = -sum p log2 p to all digits.
  CPairCounter rare(2);
  rare.Add(1, 1, 999999999999);
  rare.Add(2, 2, 1);
  CTextureFeatures entropy({JointEntropy});
  double const q = 1e-12;
  double const exact = (q * std::log(1 / q) - (1 - q) * std::log1p(-q)) / std::log(2.0);
  EXPECT_NEAR(entropy.Of(rare)[0], exact, 1e-14 * exact);
}

TEST(Features, NormalizingLevelsMayBeGiven) {
  CTextureFeatures features({InverseDifferenceNormalized, InverseDifferenceMomentNormalized});
  std::vector<double> const matrix = {0, 1, 0, 0}; // one pair of levels 1 and 2
  EXPECT_EQ(features.Of(std::span(matrix), 2)[0], 1 / 1.5);
  EXPECT_EQ(features.Of(std::span(matrix), 2)[1], 1 / 1.25);
  features.SetNormalizingLevels(4);
  EXPECT_EQ(features.Of(std::span(matrix), 2)[0], 1 / 1.25);
  ExpectError<CExBadParam>([&] { features.SetNormalizingLevels(-1); }, "-1 is no number of levels");
}

TEST(Features, NamesLeadBackToTheirFeatures) {
  std::set<std::string> names;
  for (EnTextureFeature const feature : AllFeatures()) {
    EXPECT_EQ(FeatureFromName(FeatureName(feature)), feature);
    EXPECT_FALSE(FeatureTitle(feature).empty());
    names.emplace(FeatureName(feature));
    if (!FeatureCode(feature).empty()) {
      EXPECT_EQ(FeatureFromName(FeatureCode(feature)), feature);
      EXPECT_EQ(FeatureCode(feature).size(), 4u);
    }
  }
  EXPECT_EQ(names.size(), c_nTextureFeatures);
  EXPECT_EQ(FeatureName(c_ibsiFeatures.back()), "info_corr2");
  EXPECT_EQ(FeatureName(c_haralickFeatures.back()), "haralick_maximal_correlation");
  EXPECT_FALSE(FeatureFromName("homogeneity"));
  EXPECT_FALSE(FeatureFromName(""));
  EXPECT_EQ(FeatureName(static_cast<EnTextureFeature>(200)), "");
}

TEST(Features, RefuseWhatIsNoMatrix) {
  CTextureFeatures features;
  std::vector<double> matrix = {1, 2, 3};
  ExpectError<CExBadParam>([&] { (void)features.Of(std::span<double const>(matrix), 2); },
                           "a matrix of 3 cells does not have 2 levels");
  ExpectError<CExBadParam>([&] { (void)features.Of(std::span<double const>(matrix), 0); },
                           "0 levels are not from 1 to 65535");
  matrix = {1, 2, -3, 4};
  ExpectError<CExBadParam>([&] { (void)features.Of(std::span<double const>(matrix), 2); },
                           "a matrix holds the weight -3");
  for (double const bad : {std::nan(""), HUGE_VAL}) {
    matrix[2] = bad;
    EXPECT_THROW((void)features.Of(std::span<double const>(matrix), 2), CExBadParam);
  }
  matrix = {1.7e308, 1.7e308, 0, 0};
  ExpectError<CExBadParam>([&] { (void)features.Of(std::span<double const>(matrix), 2); },
                           "the weights of a matrix sum to infinity");
  using Cells = std::array<StPairCount, 2>;
  for (Cells const& cells : {Cells{{{2, 1, 1}, {1, 1, 1}}}, Cells{{{1, 2, 1}, {1, 1, 1}}},
                             Cells{{{1, 1, 1}, {1, 1, 1}}}})
    ExpectError<CExBadParam>([&] { (void)features.Of(std::span<StPairCount const>(cells), 2); },
                             "the cell (1, 1) is not in ascending order");
  for (StPairCount const& cell : {StPairCount{1, 3, 1}, StPairCount{3, 1, 1}, StPairCount{0, 1, 1}})
    ExpectError<CExBadParam>([&] { (void)features.Of(std::span(&cell, 1), 2); },
                             "the cell (" + std::to_string(cell.i) + ", " + std::to_string(cell.j) +
                                 ") is outside of the matrix");
  ExpectError<CExBadParam>([] { CTextureFeatures({static_cast<EnTextureFeature>(41)}); },
                           "there is no texture feature 41");
}
