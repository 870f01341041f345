// Texture features evaluated in long double straight from their formulas, one double loop over the
// matrix each, as the reference for the library's fused and rearranged sums.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace test {

/// The quantities of one matrix by formula. Real is long double for the reference; double gives the
/// straightforward evaluation that benchmarks compare with.
template <class Real>
class CTextureOracle {
public:
  CTextureOracle(std::span<std::uint32_t const> counts, double N)
      : p(65536), m_Counts(counts), m_N(static_cast<Real>(N)) {
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j) {
        Real const q = static_cast<Real>(counts[i * 256 + j]) / static_cast<Real>(N);
        p[i * 256 + j] = q;
        x[i] += q;
        y[j] += q;
        s[i + j] += q;
        d[i > j ? i - j : j - i] += q;
      }
    for (std::size_t k = 0; k < 256; ++k) {
      meanX += Real(k) * x[k];
      meanY += Real(k) * y[k];
      meanDiff += Real(k) * d[k];
    }
    meanX /= 256;
    meanY /= 256;
    meanDiff /= 256;
  }

  /// Sum of term(i, j, p(i, j)) over all cells.
  template <class Term>
  [[nodiscard]] Real Sum(Term term) const {
    Real sum = 0;
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j) sum += term(Real(i), Real(j), p[i * 256 + j]);
    return sum;
  }
  template <class Marginal>
  [[nodiscard]] static Real EntropyOf(Marginal const& marginal) {
    Real sum = 0;
    for (Real const q : marginal)
      if (q > 0) sum -= q * std::log(q);
    return sum;
  }
  /// -sum of weight(p, p_x p_y) ln(p_x p_y) where both are positive.
  template <class Weight>
  [[nodiscard]] Real MixedEntropy(Weight weight) const {
    Real sum = 0;
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j)
        if (x[i] > 0 && y[j] > 0)
          sum -= weight(p[i * 256 + j], x[i] * y[j]) * std::log(x[i] * y[j]);
    return sum;
  }

  [[nodiscard]] Real SigmaX() const {
    Real sum = 0;
    for (std::size_t i = 0; i < 256; ++i) sum += (Real(i) - meanX) * (Real(i) - meanX) * x[i];
    return std::sqrt(sum);
  }
  [[nodiscard]] Real SigmaY() const {
    Real sum = 0;
    for (Real const q : y) sum += (q - meanY) * (q - meanY);
    return std::sqrt(sum);
  }
  [[nodiscard]] Real Hx() const { return EntropyOf(x); }
  [[nodiscard]] Real Hy() const { return EntropyOf(y); }
  [[nodiscard]] Real H1() const {
    return MixedEntropy([](Real joint, Real) { return joint; });
  }
  [[nodiscard]] Real H2() const {
    return MixedEntropy([](Real, Real product) { return product; });
  }
  [[nodiscard]] Real Contrast() const {
    return Sum([](Real i, Real j, Real q) { return (i - j) * (i - j) * q; }) / 256 / 256;
  }
  [[nodiscard]] Real MeanProduct() const {
    return Sum([](Real i, Real j, Real q) { return i * j * q; });
  }
  [[nodiscard]] Real Correlation() const {
    if (!(SigmaX() > c_epsilon) || !(SigmaY() > c_epsilon)) return 0;
    return (MeanProduct() - meanX * meanY) / (SigmaY() * SigmaX());
  }
  [[nodiscard]] Real DifferenceVariance() const {
    Real sum = 0;
    for (std::size_t k = 0; k < 256; ++k) sum += (Real(k) - meanDiff) * (Real(k) - meanDiff) * d[k];
    return sum / 256 / 256;
  }
  [[nodiscard]] Real DifferenceEntropy() const { return EntropyOf(d); }
  [[nodiscard]] Real Entropy() const { return EntropyOf(p); }
  [[nodiscard]] Real InverseDifferenceMoment() const {
    return Sum([](Real i, Real j, Real q) { return q / (1 + (i - j) * (i - j)); });
  }
  /// The denominator of the first information measure, 0 where there is none.
  [[nodiscard]] Real Denominator() const {
    if (Hx() - Hy() > c_epsilon && std::abs(Hx()) > c_epsilon) return Hx();
    return std::abs(Hy()) > c_epsilon ? Hy() : 0;
  }
  [[nodiscard]] Real InformationMeasure1() const {
    Real const denominator = Denominator();
    return denominator > 0 ? Entropy() - H1() / denominator : 0;
  }
  /// HXY2 - HXY, where the counts add up to N as the mutual information: a difference of entropies
  /// has no digits left where the levels hardly depend on each other.
  [[nodiscard]] Real Dependence() const {
    std::array<Real, 256> rows{}, columns{}; // exact: integers
    Real total = 0;
    for (std::size_t k = 0; k < 65536; ++k) {
      auto const count = static_cast<Real>(m_Counts[k]);
      rows[k / 256] += count;
      columns[k % 256] += count;
      total += count;
    }
    if (total != m_N) return H2() - Entropy();
    Real sum = 0;
    for (std::size_t k = 0; k < 65536; ++k)
      if (m_Counts[k] > 0) {
        Real const product = rows[k / 256] * columns[k % 256];
        auto const count = static_cast<Real>(m_Counts[k]);
        sum += count / m_N * std::log1p((count * m_N - product) / product);
      }
    return sum;
  }
  [[nodiscard]] Real InformationMeasure2() const {
    Real const square = -std::expm1(-2 * Dependence());
    return square > 0 ? std::sqrt(square) : 0;
  }
  [[nodiscard]] Real SecondAngularMoment() const {
    return Sum([](Real, Real, Real q) { return q * q; });
  }
  [[nodiscard]] Real SumAverage() const {
    Real sum = 0;
    for (std::size_t k = 0; k < 511; ++k) sum += Real(k) * s[k];
    return sum / 511;
  }
  [[nodiscard]] Real SumEntropy() const { return EntropyOf(s); }
  [[nodiscard]] Real SumVariance() const {
    Real const average = SumAverage();
    Real sum = 0;
    for (std::size_t k = 0; k < 511; ++k) sum += (Real(k) - average) * (Real(k) - average) * s[k];
    return sum / 511 / 511;
  }
  [[nodiscard]] Real Variance() const {
    return Sum([m = meanX](Real i, Real, Real q) { return (i - m) * (i - m) * q; }) / 256 / 256;
  }

  std::vector<Real> p;
  std::array<Real, 256> x{}, y{}, d{};
  std::array<Real, 511> s{};
  Real meanX = 0, meanY = 0, meanDiff = 0;

private:
  std::span<std::uint32_t const> m_Counts; // those of the caller
  Real m_N;
  // The guards are part of the formulas: the epsilon of double, whatever Real is.
  static constexpr Real c_epsilon = std::numeric_limits<double>::epsilon();
};

} // namespace test
