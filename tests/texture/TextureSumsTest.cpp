// The features of a matrix against an independent evaluation of their formulas in long double.
#include "support/Random.h"
#include "support/TextureOracle.h"

#include "Utils/Cooccurrence/TextureSums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace {

using namespace ORVA::Impl;
using Oracle = test::CTextureOracle<long double>;
using Counts = std::vector<std::uint32_t>;

constexpr std::size_t c_cells = 65536;

double Total(Counts const& counts) {
  return static_cast<double>(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}));
}

// The library takes the counts column by column.
void Fill(StTextureArrays& arrays, Counts const& counts, double N) {
  Counts transposed(c_cells);
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j) transposed[j * 256 + i] = counts[i * 256 + j];
  FillTextureArrays(arrays, {std::span<std::uint32_t const, c_cells>(transposed)}, N);
}

StTextureArrays Arrays(Counts const& counts, double N) {
  StTextureArrays arrays;
  Fill(arrays, counts, N);
  return arrays;
}

Counts Single(std::size_t i, std::size_t j, std::uint32_t count) {
  Counts counts(c_cells);
  counts[i * 256 + j] = count;
  return counts;
}

struct StMatrix {
  std::string name;
  Counts counts;
};

// Matrices of every kind that images give, and of kinds that none gives.
std::vector<StMatrix> Matrices(test::CRandomNumbers& random) {
  std::vector<StMatrix> all;
  auto const make = [&](std::string name, auto cell) {
    Counts counts(c_cells);
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j) counts[i * 256 + j] = cell(i, j);
    all.push_back({std::move(name), std::move(counts)});
  };
  auto const upTo = [&](std::uint32_t n) { return random.Between<std::uint32_t>(0, n); };
  using Index = std::size_t;

  for (std::size_t level : {0U, 1U, 117U, 255U})
    all.push_back({"single " + std::to_string(level), Single(level, level, 65280)});
  all.push_back({"single corner", Single(255, 0, 4294967295U)});
  make("two cells", [](Index i, Index j) {
    return i == 3 && j == 250 ? 7U : i == 250 && j == 3 ? 9U : 0U;
  });
  make("two rare cells", [](Index i, Index j) {
    return i == 0 && j == 0 ? 4000000000U : i == 0 && j == 1 ? 1U : 0U;
  });
  make("one row", [&](Index i, Index) { return i == 91 ? upTo(100) : 0U; });
  make("one column", [&](Index, Index j) { return j == 91 ? upTo(100) : 0U; });
  make("diagonal", [&](Index i, Index j) { return i == j ? upTo(1000000) : 0U; });
  make("anti-diagonal", [&](Index i, Index j) { return i + j == 255 ? upTo(1000000) : 0U; });
  make("band", [&](Index i, Index j) { return (i > j ? i - j : j - i) < 6 ? upTo(40000) : 0U; });
  make("sparse", [&](Index, Index) { return upTo(99) == 0 ? 1 + upTo(4000000) : 0U; });
  make("noise of a volume", [&](Index, Index) { return 240 + upTo(32); });
  make("noise of an image", [&](Index, Index) { return upTo(3); });
  make("any counts", [&](Index, Index) { return upTo(4294967295U); });
  make("constant", [](Index, Index) { return 255U; });
  make("largest counts", [](Index, Index) { return 4294967295U; });
  make("independent",
       [](Index i, Index j) { return static_cast<std::uint32_t>((i + 1) * (j + 3)); });
  make("hardly dependent", [](Index i, Index j) {
    return static_cast<std::uint32_t>((i + 1) * (j + 3) * 1000 + (i * 7 + j * 13) % 5);
  });
  make("hardly dependent, few levels",
       [](Index i, Index j) { return i < 4 && j < 4 ? 1000000U + (i == j ? 1U : 0U) : 0U; });
  make("nearly constant", [&](Index i, Index j) {
    return i == 128 && j == 128 ? 16000000U : i / 4 == 32 && j / 4 == 32 ? upTo(20) : 0U;
  });
  make("equal places in the memory of terms",
       [](Index i, Index j) { return static_cast<std::uint32_t>(1 + 2048 * ((i + j) % 3)); });
  return all;
}

// Relative 1e-12, absolute 1e-12 within 1e-3 of zero; where a formula takes a difference, relative
// to the largest of its terms.
void ExpectClose(double actual, long double expected, char const* what, long double largest = 0) {
  long double const size = std::max(std::abs(expected), std::abs(largest));
  long double const tolerance = size < 1e-3L ? 1e-12L : 1e-12L * size;
  EXPECT_LE(std::abs(static_cast<long double>(actual) - expected), tolerance)
      << what << ": " << actual << " instead of " << static_cast<double>(expected);
}

struct StQuantity {
  char const* name;
  double (*value)(StTextureArrays const&) noexcept;
  long double (Oracle::*expected)() const;
};

// Those whose formulas add up terms of one sign.
constexpr StQuantity c_sums[] = {
    {"Sigma_x", Sigma_x, &Oracle::SigmaX},
    {"Sigma_y", Sigma_y, &Oracle::SigmaY},
    {"Hx", Hx, &Oracle::Hx},
    {"Hy", Hy, &Oracle::Hy},
    {"H1", H1, &Oracle::H1},
    {"H2", H2, &Oracle::H2},
    {"Contrast", Contrast, &Oracle::Contrast},
    {"DifferenceEntropy", DifferenceEntropy, &Oracle::DifferenceEntropy},
    {"DifferenceVariance", DifferenceVariance, &Oracle::DifferenceVariance},
    {"Entropy", Entropy, &Oracle::Entropy},
    {"InverseDifferenceMoment", InverseDifferenceMoment, &Oracle::InverseDifferenceMoment},
    {"SecondAngularMoment", SecondAngularMoment, &Oracle::SecondAngularMoment},
    {"SumAverage", SumAverage, &Oracle::SumAverage},
    {"SumEntropy", SumEntropy, &Oracle::SumEntropy},
    {"SumVariance", SumVariance, &Oracle::SumVariance},
    {"Variance", Variance, &Oracle::Variance},
};

void ExpectAllAsByFormula(StTextureArrays const& arrays, Oracle const& oracle) {
  for (StQuantity const& quantity : c_sums)
    ExpectClose(quantity.value(arrays), (oracle.*quantity.expected)(), quantity.name);

  long double const sigmas = oracle.SigmaX() * oracle.SigmaY();
  ExpectClose(Correlation(arrays), oracle.Correlation(), "Correlation",
              oracle.Correlation() != 0 ? oracle.MeanProduct() / sigmas : 0);
  long double const denominator = oracle.Denominator();
  ExpectClose(InformationMeasureOfCorrelation1(arrays), oracle.InformationMeasure1(),
              "InformationMeasureOfCorrelation1",
              denominator > 0 ? std::max(oracle.Entropy(), oracle.H1() / denominator) : 0);
  ExpectClose(InformationMeasureOfCorrelation2(arrays), oracle.InformationMeasure2(),
              "InformationMeasureOfCorrelation2");
}

TEST(TextureSums, AgreeWithTheFormulasInLongDouble) {
  test::CRandomNumbers random;
  for (StMatrix const& matrix : Matrices(random)) {
    SCOPED_TRACE(matrix.name);
    double const N = Total(matrix.counts);
    ExpectAllAsByFormula(Arrays(matrix.counts, N), Oracle(matrix.counts, N));
  }
}

TEST(TextureSums, AgreeWithTheFormulasWhereCountsDoNotAddUpToN) {
  test::CRandomNumbers random;
  for (StMatrix const& matrix : Matrices(random)) {
    SCOPED_TRACE(matrix.name);
    double const N = Total(matrix.counts) * 3 + 1;
    ExpectAllAsByFormula(Arrays(matrix.counts, N), Oracle(matrix.counts, N));
  }
}

TEST(TextureSums, DistributionsAreThoseOfTheMatrix) {
  test::CRandomNumbers random;
  for (StMatrix const& matrix : Matrices(random)) {
    SCOPED_TRACE(matrix.name);
    double const N = Total(matrix.counts);
    StTextureArrays const arrays = Arrays(matrix.counts, N);
    Oracle const oracle(matrix.counts, N);
    for (std::size_t k = 0; k < 256; ++k) {
      ExpectClose(arrays.m_RowMarginal[k], oracle.x[k], "row");
      ExpectClose(arrays.m_ColumnMarginal[k], oracle.y[k], "column");
      ExpectClose(arrays.m_DifferenceDistribution[k], oracle.d[k], "difference");
    }
    for (std::size_t k = 0; k < 511; ++k)
      ExpectClose(arrays.m_SumDistribution[k], oracle.s[k], "sum");
    ExpectClose(arrays.m_MeanX, oracle.meanX, "mean of rows");
    ExpectClose(arrays.m_MeanY, oracle.meanY, "mean of columns");
    ExpectClose(arrays.m_MeanDiff, oracle.meanDiff, "mean difference");
  }
}

// One cell (g, g), as a constant image has it.
TEST(TextureSums, ConstantImage) {
  for (std::uint32_t level = 0; level < 256; ++level) {
    SCOPED_TRACE(level);
    StTextureArrays const arrays = Arrays(Single(level, level, 65280), 65280);
    double const g = level;
    struct {
      double actual, expected;
    } const cases[] = {
        {Entropy(arrays), 0},
        {SecondAngularMoment(arrays), 1},
        {Contrast(arrays), 0},
        {InverseDifferenceMoment(arrays), 1},
        {DifferenceEntropy(arrays), 0},
        {DifferenceVariance(arrays), 0},
        {SumEntropy(arrays), 0},
        {Hx(arrays), 0},
        {Hy(arrays), 0},
        {H1(arrays), 0},
        {H2(arrays), 0},
        {InformationMeasureOfCorrelation1(arrays), 0},
        {InformationMeasureOfCorrelation2(arrays), 0},
        {SumAverage(arrays), 2 * g / 511},
        {Variance(arrays), (g - g / 256) * (g - g / 256) / (256 * 256)},
    };
    for (auto const& [actual, expected] : cases) {
      EXPECT_EQ(actual, expected);
      EXPECT_FALSE(std::signbit(actual)) << "a negative zero";
    }
  }
}

TEST(TextureSums, BlackImageHasNoCorrelation) {
  StTextureArrays const arrays = Arrays(Single(0, 0, 12), 12);
  EXPECT_EQ(Sigma_x(arrays), 0);
  EXPECT_EQ(Correlation(arrays), 0);
}

TEST(TextureSums, EmptyMatrixHasNoFeatures) {
  StTextureArrays const arrays = Arrays(Counts(c_cells), 12);
  for (StQuantity const& quantity : c_sums) EXPECT_EQ(quantity.value(arrays), 0) << quantity.name;
  EXPECT_EQ(Correlation(arrays), 0);
  EXPECT_EQ(InformationMeasureOfCorrelation1(arrays), 0);
  EXPECT_EQ(InformationMeasureOfCorrelation2(arrays), 0);
}

// A quarter each: levels 0 and 255 in all four combinations.
TEST(TextureSums, IndependentLevelsCarryNoInformation) {
  Counts counts(c_cells);
  for (std::size_t cell : {0U, 255U, 255U * 256U, 65535U}) counts[cell] = 5;
  StTextureArrays const arrays = Arrays(counts, 20);
  EXPECT_DOUBLE_EQ(Entropy(arrays), 2 * std::log(2.0));
  EXPECT_DOUBLE_EQ(H2(arrays), 2 * std::log(2.0));
  EXPECT_EQ(InformationMeasureOfCorrelation2(arrays), 0);
  EXPECT_DOUBLE_EQ(InformationMeasureOfCorrelation1(arrays), 2 * std::log(2.0) - 2);
}

// Counts that are products of a row's and a column's number, small ones and such that products of
// two numbers of pairs need more than 64 bits.
TEST(TextureSums, NoCorrelationOfIndependentLevels) {
  test::CRandomNumbers random;
  for (std::uint32_t const largest : {1U, 3U, 60U, 65535U}) {
    Counts counts(c_cells);
    std::array<std::uint32_t, 256> row{}, column{};
    for (std::uint32_t& r : row) r = random.Between<std::uint32_t>(0, largest);
    for (std::uint32_t& c : column) c = random.Between<std::uint32_t>(0, largest);
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j) counts[i * 256 + j] = row[i] * column[j];
    EXPECT_EQ(InformationMeasureOfCorrelation2(Arrays(counts, Total(counts))), 0) << largest;
  }
}

// Deviations of the size of a rounding error are none: the guard of the correlation is the epsilon
// of double, not zero.
TEST(TextureSums, CorrelationNeedsDeviationsAboveEpsilon) {
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  auto const correlation = [](double sigmaX, double sigmaY) {
    StTextureArrays arrays;
    arrays.m_RowMarginal[0] = 1;
    arrays.m_MeanX = sigmaX;
    arrays.m_MeanY = sigmaY / 16; // the root of 256 equal squares
    arrays.m_MeanProduct = 1;
    EXPECT_EQ(Sigma_x(arrays), sigmaX);
    EXPECT_EQ(Sigma_y(arrays), sigmaY);
    return Correlation(arrays);
  };
  EXPECT_EQ(correlation(epsilon, 1), 0);
  EXPECT_EQ(correlation(1, epsilon), 0);
  EXPECT_EQ(correlation(epsilon / 2, epsilon / 2), 0);
  EXPECT_GT(correlation(2 * epsilon, 1), 0);
  EXPECT_GT(correlation(1, 2 * epsilon), 0);
}

TEST(TextureSums, AnotherRunLeavesNothingOfTheOneBefore) {
  test::CRandomNumbers random;
  StTextureArrays reused;
  for (StMatrix const& matrix : Matrices(random)) {
    SCOPED_TRACE(matrix.name);
    double const N = Total(matrix.counts);
    Fill(reused, matrix.counts, N);
    StTextureArrays const fresh = Arrays(matrix.counts, N);
    EXPECT_EQ(InformationMeasureOfCorrelation2(reused), InformationMeasureOfCorrelation2(fresh));
    for (StQuantity const& quantity : c_sums)
      EXPECT_EQ(quantity.value(reused), quantity.value(fresh)) << quantity.name;
    EXPECT_EQ(Correlation(reused), Correlation(fresh));
  }
}

} // namespace
