#include "Utils/Cooccurrence/TextureSums.h"

#include <SeluUtils/Impl/Int128.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

namespace ORVA::Impl {
namespace {

constexpr std::size_t c_nLevels = 256;
constexpr std::size_t c_nSums = 2 * c_nLevels - 1;
constexpr std::size_t c_nStrip = 16; // cells that are skipped together when they are all zero
constexpr double c_dEpsilon = std::numeric_limits<double>::epsilon();
constexpr double c_dPerLevel = 1.0 / 256;
// Below this, HXY2 - HXY loses too many digits as a difference.
constexpr double c_dHardlyDependent = 1.0 / 32;
// Products of two numbers below this fit 64 bits.
constexpr std::uint64_t c_nProductsFit = std::uint64_t{1} << 31U;

// Counts have 32 or 64 bits.
template <class Count>
using Strip = std::span<Count const, c_nStrip>;

double TimesLog(double p) noexcept { return p > 0 ? p * std::log(p) : 0; }

double EntropyOf(std::span<double const> p) noexcept {
  double sum = 0;
  for (double const pk : p) sum -= TimesLog(pk);
  return sum;
}

// Sum of (k - center)^2 p(k).
double MomentAbout(double center, std::span<double const> p) noexcept {
  double sum = 0;
  for (std::size_t k = 0; k < p.size(); ++k) {
    double const deviation = static_cast<double>(k) - center;
    sum += deviation * deviation * p[k];
  }
  return sum;
}

// The distributions as integers, hence without rounding: the sums below stay under 2^64, since all
// cells together are below 2^48 and weigh less than 2^16 each.
struct StMarginals {
  std::array<std::uint64_t, c_nLevels> x{}, y{};
  std::array<std::uint64_t, c_nSums> sum{};
  std::array<std::uint64_t, c_nSums> difference{}; // j - i + 255
};

// Sums over the cells, in four chains that the processor adds up side by side. The order of
// additions is fixed, so that the results are the same wherever this is compiled.
struct StCellSums {
  std::array<double, 4> squares{}, entropy{};
};

double Total(std::array<double, 4> const& chains) noexcept {
  return (chains[0] + chains[1]) + (chains[2] + chains[3]);
}

template <class Count>
bool IsZero(Strip<Count> counts) noexcept {
  Count any = 0;
  for (Count const count : counts) any |= count;
  return any == 0;
}

template <class Count>
void AddTo(std::uint64_t* sums, Strip<Count> counts) noexcept {
  for (std::size_t k = 0; k < c_nStrip; ++k) sums[k] += counts[k];
}

template <class Count>
void AddToMarginals(StMarginals& marginals, std::size_t i, std::size_t j,
                    Strip<Count> counts) noexcept {
  AddTo(marginals.y.data() + j, counts);
  AddTo(marginals.sum.data() + (i + j), counts);
  AddTo(marginals.difference.data() + (j + c_nLevels - 1 - i), counts);
  marginals.x[i] += std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
}

// The terms of the counts divided by N, those seen last kept by their lowest bits.
class CTerms {
public:
  // Counts are at most N: for few pairs a few places do.
  CTerms(std::span<StCountTerm> terms, double N) noexcept : m_N(N) {
    std::size_t size = 64;
    while (size < terms.size() && static_cast<double>(size) <= N) size *= 2;
    m_Terms = terms.first(size);
    std::ranges::fill(m_Terms, StCountTerm{}); // the term of count 0, which is right in place 0
  }

  StCountTerm operator()(std::uint64_t count) noexcept {
    StCountTerm& kept = m_Terms[count & (m_Terms.size() - 1)];
    if (kept.count == count) [[likely]]
      return kept;
    double const p = static_cast<double>(static_cast<std::int64_t>(count)) / m_N;
    StCountTerm const term{count, p, TimesLog(p)};
    kept = term;
    return term;
  }

private:
  std::span<StCountTerm> m_Terms; // as many as a power of 2
  double m_N;
};

// Unrolled, so that the chains of sums stay in registers.
template <class Count, std::size_t... K>
[[gnu::always_inline]] inline void SweepCells(Strip<Count> counts, CTerms& terms, StCellSums& sums,
                                              std::index_sequence<K...>) noexcept {
  StCellSums local = sums;
  auto const sweepCell = [&](std::size_t k) {
    StCountTerm const term = terms(counts[k]);
    local.squares[k % 4] += term.p * term.p;
    local.entropy[k % 4] -= term.pLogP;
  };
  (sweepCell(K), ...);
  sums = local;
}

// A square of cells, row by row.
template <class Count>
using Tile = std::array<std::array<Count, c_nStrip>, c_nStrip>;

// The cells from row i, column j on; false where all are zero.
template <class Count>
bool LoadTile(std::span<Count const, 65536> counts, std::size_t i, std::size_t j,
              Tile<Count>& tile) noexcept {
  Count const* const first = counts.data() + j * c_nLevels + i;
  std::uint64_t any = 0;
  for (std::size_t column = 0; column < c_nStrip; ++column) {
    std::array<std::uint64_t, c_nStrip * sizeof(Count) / 8> words; // of one or two cells
    std::memcpy(words.data(), first + column * c_nLevels, sizeof words);
    for (std::uint64_t const word : words) any |= word;
  }
  if (any == 0) return false;
  for (std::size_t row = 0; row < c_nStrip; ++row)
    for (std::size_t column = 0; column < c_nStrip; ++column)
      tile[row][column] = first[column * c_nLevels + row];
  return true;
}

template <class Count>
void Sweep(StTextureArrays& arrays, std::span<Count const, 65536> counts, double N,
           StMarginals& marginals) noexcept {
  CTerms terms(arrays.m_Terms, N);
  std::array<StCellSums, c_nLevels> rows{};
  Tile<Count> tile;
  for (std::size_t j = 0; j < c_nLevels; j += c_nStrip)
    for (std::size_t i = 0; i < c_nLevels; i += c_nStrip) {
      if (!LoadTile(counts, i, j, tile)) continue;
      for (std::size_t row = 0; row < c_nStrip; ++row) {
        Strip<Count> const strip(tile[row]);
        if (IsZero(strip)) continue;
        AddToMarginals(marginals, i + row, j, strip);
        SweepCells(strip, terms, rows[i + row], std::make_index_sequence<c_nStrip>());
      }
    }
  double squares = 0, entropy = 0;
  for (StCellSums const& row : rows) {
    squares += Total(row.squares);
    entropy += Total(row.entropy);
  }
  arrays.m_SumOfSquares = squares;
  arrays.m_Entropy = entropy;
}

// 1 / (k (k - 1)) for k = 2 .. 18: the coefficients of ((1 + u) ln(1 + u) - u) / u^2 in powers of
// -u.
constexpr auto c_surpriseSeries = [] {
  std::array<double, 17> series{};
  for (std::size_t n = 0; n < series.size(); ++n)
    series[n] = 1 / static_cast<double>((n + 2) * (n + 1));
  return series;
}();

// (1 + u) ln(1 + u) - u for u >= -1, never negative; by its series where the difference would lose
// digits.
double Surprise(double u) noexcept {
  if (std::abs(u) >= 0.125) return u > -1 ? (1 + u) * std::log1p(u) - u : 1;
  double sum = 0;
  for (std::size_t n = c_surpriseSeries.size(); n-- > 0;) sum = c_surpriseSeries[n] - u * sum;
  return u * u * sum;
}

// The mutual information: sum of p ln(p / (p_x p_y)) where p adds up to 1. With
// p = p_x p_y (1 + u) that is the sum of p_x p_y ((1 + u) ln(1 + u) - u), since u weighted by p_x
// p_y adds up to 0: no term is negative, hence no digits are lost. u = (C N - C_x C_y) / (C_x C_y)
// has an exact numerator, which is 0 for independent levels.
template <class Exact, class Count>
double MutualInformation(std::span<Count const, 65536> counts, StMarginals const& marginals,
                         std::uint64_t N) noexcept {
  double sum = 0;
  for (std::size_t j = 0; j < c_nLevels; ++j) {
    double column = 0;
    for (std::size_t i = 0; i < c_nLevels && marginals.y[j] > 0; ++i) {
      if (marginals.x[i] == 0) continue;
      Exact const product = static_cast<Exact>(marginals.x[i]) * static_cast<Exact>(marginals.y[j]);
      Exact const joint = static_cast<Exact>(counts[j * c_nLevels + i]) * static_cast<Exact>(N);
      auto const weight = static_cast<double>(product);
      column += weight * Surprise(static_cast<double>(joint - product) / weight);
    }
    sum += column;
  }
  return sum / static_cast<double>(N) / static_cast<double>(N);
}

template <std::size_t Size>
void Normalize(std::span<double> p, std::array<std::uint64_t, Size> const& counts,
               double N) noexcept {
  // Signed numbers, of which a sum of counts is one, are converted by one instruction.
  for (std::size_t k = 0; k < Size; ++k)
    p[k] = static_cast<double>(static_cast<std::int64_t>(counts[k])) / N;
}

// Sum of k^Power counts(k).
template <int Power>
std::uint64_t Moment(std::span<std::uint64_t const> counts) noexcept {
  std::uint64_t sum = 0;
  for (std::uint64_t k = 0; k < counts.size(); ++k) sum += (Power == 1 ? k : k * k) * counts[k];
  return sum;
}

// Brings j - i + 255 and i - j + 255 together at |i - j|.
std::array<std::uint64_t, c_nLevels>
Fold(std::array<std::uint64_t, c_nSums> const& signedDifference) noexcept {
  constexpr std::size_t zero = c_nLevels - 1;
  std::array<std::uint64_t, c_nLevels> difference{};
  difference[0] = signedDifference[zero];
  for (std::size_t k = 1; k < c_nLevels; ++k)
    difference[k] = signedDifference[zero - k] + signedDifference[zero + k];
  return difference;
}

template <class Count>
void Fill(StTextureArrays& arrays, std::span<Count const, 65536> counts, double N) noexcept {
  StMarginals marginals;
  Sweep(arrays, counts, N, marginals);
  auto const difference = Fold(marginals.difference);
  Normalize(arrays.m_RowMarginal, marginals.x, N);
  Normalize(arrays.m_ColumnMarginal, marginals.y, N);
  Normalize(arrays.m_SumDistribution, marginals.sum, N);
  Normalize(arrays.m_DifferenceDistribution, difference, N);

  auto const over = [N](std::uint64_t sum) { return static_cast<double>(sum) / N; };
  arrays.m_MeanX = over(Moment<1>(marginals.x)) * c_dPerLevel;
  arrays.m_MeanY = over(Moment<1>(marginals.y)) * c_dPerLevel;
  arrays.m_MeanDiff = over(Moment<1>(difference)) * c_dPerLevel;
  // 2 i j = i^2 + j^2 - (i - j)^2: the difference is taken in integers, where it costs no digits.
  arrays.m_MeanProduct =
      over((Moment<2>(marginals.x) + Moment<2>(marginals.y) - Moment<2>(difference)) / 2);
  std::uint64_t total = 0;
  for (std::uint64_t const row : marginals.x) total += row;
  arrays.m_Total = over(total);
  arrays.m_EntropyX = EntropyOf(arrays.m_RowMarginal);
  arrays.m_EntropyY = EntropyOf(arrays.m_ColumnMarginal);
  arrays.m_Dependence = H2(arrays) - arrays.m_Entropy;
  if (std::abs(arrays.m_Dependence) < c_dHardlyDependent && static_cast<double>(total) == N)
    arrays.m_Dependence = total < c_nProductsFit
                              ? MutualInformation<std::int64_t>(counts, marginals, total)
                              : MutualInformation<int128>(counts, marginals, total);
}

} // namespace

void FillTextureArrays(StTextureArrays& arrays, StTransposedCounts counts, double N) noexcept {
  Fill(arrays, counts.m_Cells, N);
}

void FillTextureArrays(StTextureArrays& arrays, StWideTransposedCounts counts, double N) noexcept {
  Fill(arrays, counts.m_Cells, N);
}

double Sigma_x(StTextureArrays const& arrays) noexcept {
  return std::sqrt(MomentAbout(arrays.m_MeanX, arrays.m_RowMarginal));
}

double Sigma_y(StTextureArrays const& arrays) noexcept {
  double sum = 0;
  for (double const p : arrays.m_ColumnMarginal) sum += (p - arrays.m_MeanY) * (p - arrays.m_MeanY);
  return std::sqrt(sum);
}

double Hx(StTextureArrays const& arrays) noexcept { return arrays.m_EntropyX; }

double Hy(StTextureArrays const& arrays) noexcept { return arrays.m_EntropyY; }

// ln(p_x p_y) = ln p_x + ln p_y, and p summed along rows or columns is p_x or p_y.
double H1(StTextureArrays const& arrays) noexcept { return Hx(arrays) + Hy(arrays); }

// The same with p_x p_y in place of p: each sum factorizes.
double H2(StTextureArrays const& arrays) noexcept {
  return Hx(arrays) * arrays.m_Total + Hy(arrays) * arrays.m_Total;
}

double Contrast(StTextureArrays const& arrays) noexcept {
  return MomentAbout(0, arrays.m_DifferenceDistribution) * c_dPerLevel * c_dPerLevel;
}

double Correlation(StTextureArrays const& arrays) noexcept {
  double const sigmaX = Sigma_x(arrays);
  double const sigmaY = Sigma_y(arrays);
  if (!(std::abs(sigmaX) > c_dEpsilon) || !(std::abs(sigmaY) > c_dEpsilon)) return 0;
  return (arrays.m_MeanProduct - arrays.m_MeanX * arrays.m_MeanY) / (sigmaY * sigmaX);
}

double DifferenceEntropy(StTextureArrays const& arrays) noexcept {
  return EntropyOf(arrays.m_DifferenceDistribution);
}

double DifferenceVariance(StTextureArrays const& arrays) noexcept {
  return MomentAbout(arrays.m_MeanDiff, arrays.m_DifferenceDistribution) * c_dPerLevel *
         c_dPerLevel;
}

double Entropy(StTextureArrays const& arrays) noexcept { return arrays.m_Entropy; }

double InverseDifferenceMoment(StTextureArrays const& arrays) noexcept {
  double sum = 0;
  for (std::size_t k = 0; k < c_nLevels; ++k)
    sum += arrays.m_DifferenceDistribution[k] / (1 + static_cast<double>(k * k));
  return sum;
}

// The quotient alone is divided by the larger entropy, not the difference.
double InformationMeasureOfCorrelation1(StTextureArrays const& arrays) noexcept {
  double const hx = Hx(arrays);
  double const hy = Hy(arrays);
  if (hx - hy > c_dEpsilon && std::abs(hx) > c_dEpsilon) return Entropy(arrays) - H1(arrays) / hx;
  if (std::abs(hy) > c_dEpsilon) return Entropy(arrays) - H1(arrays) / hy;
  return 0;
}

// 1 - exp(x) as -expm1(x), which keeps its digits where the voxels of a pair hardly depend on each
// other and x is close to 0.
double InformationMeasureOfCorrelation2(StTextureArrays const& arrays) noexcept {
  double const square = -std::expm1(-2 * arrays.m_Dependence);
  return square > 0 ? std::sqrt(square) : 0;
}

double SecondAngularMoment(StTextureArrays const& arrays) noexcept { return arrays.m_SumOfSquares; }

double SumAverage(StTextureArrays const& arrays) noexcept {
  double sum = 0;
  for (std::size_t k = 0; k < c_nSums; ++k)
    sum += static_cast<double>(k) * arrays.m_SumDistribution[k];
  return sum / c_nSums;
}

double SumEntropy(StTextureArrays const& arrays) noexcept {
  return EntropyOf(arrays.m_SumDistribution);
}

double SumVariance(StTextureArrays const& arrays) noexcept {
  return MomentAbout(SumAverage(arrays), arrays.m_SumDistribution) / c_nSums / c_nSums;
}

double Variance(StTextureArrays const& arrays) noexcept {
  return MomentAbout(arrays.m_MeanX, arrays.m_RowMarginal) * c_dPerLevel * c_dPerLevel;
}

std::array<double, 13> TextureFeatures(StTextureArrays const& arrays) noexcept {
  return {Contrast(arrays),
          Correlation(arrays),
          DifferenceVariance(arrays),
          DifferenceEntropy(arrays),
          Entropy(arrays),
          InverseDifferenceMoment(arrays),
          InformationMeasureOfCorrelation1(arrays),
          InformationMeasureOfCorrelation2(arrays),
          SecondAngularMoment(arrays),
          SumAverage(arrays),
          SumEntropy(arrays),
          SumVariance(arrays),
          Variance(arrays)};
}

} // namespace ORVA::Impl
