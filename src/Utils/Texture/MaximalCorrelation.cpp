#include "Utils/Texture/MaximalCorrelation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

namespace {

using Vector = std::vector<double>;

constexpr double c_negligible = 1e-15; // beside singular values up to 1

double Dot(Vector const& a, Vector const& b) noexcept {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

void Subtract(Vector& from, double factor, Vector const& what) noexcept {
  for (std::size_t k = 0; k < from.size(); ++k) from[k] -= factor * what[k];
}

// Orthonormal vectors, the known one first.
class CBasis {
public:
  explicit CBasis(Vector known) { m_Vectors.push_back(std::move(known)); }

  // Makes a vector orthogonal to all others and a unit vector and appends it. Returns its length;
  // one of negligible length is not appended. Twice is enough (B. N. Parlett, "The Symmetric
  // Eigenvalue Problem", 1980, section 6.9).
  double Append(Vector vector) {
    for (int pass = 0; pass < 2; ++pass)
      for (Vector const& other : m_Vectors) Subtract(vector, Dot(vector, other), other);
    double const length = std::sqrt(Dot(vector, vector));
    if (length < c_negligible) return 0;
    for (double& component : vector) component /= length;
    m_Vectors.push_back(std::move(vector));
    return length;
  }
  [[nodiscard]] Vector const& Last() const noexcept { return m_Vectors.back(); }

private:
  std::vector<Vector> m_Vectors;
};

// The scaled matrix, its occupied rows and columns numbered from 0.
class CScaledMatrix {
public:
  explicit CScaledMatrix(CPairSums const& sums)
      : m_Cells(sums.Cells().begin(), sums.Cells().end()) {
    double const total = sums.Total();
    auto const rowNumbers = Number(sums.Rows(), total, rows);
    auto const columnNumbers = Number(sums.Columns(), total, columns);
    for (StWeightedCell& cell : m_Cells) {
      cell.i = rowNumbers[cell.i - sums.Low()];
      cell.j = columnNumbers[cell.j - sums.Low()];
      cell.weight = cell.weight / total / (rows[cell.i] * columns[cell.j]);
    }
  }

  [[nodiscard]] Vector Times(Vector const& vector) const {
    Vector product(rows.size());
    for (StWeightedCell const& cell : m_Cells) product[cell.i] += cell.weight * vector[cell.j];
    return product;
  }
  [[nodiscard]] Vector TransposedTimes(Vector const& vector) const {
    Vector product(columns.size());
    for (StWeightedCell const& cell : m_Cells) product[cell.j] += cell.weight * vector[cell.i];
    return product;
  }

  Vector rows, columns; // roots of their probabilities: the vectors of the singular value 1

private:
  static std::vector<std::uint32_t> Number(std::span<double const> weights, double total,
                                           Vector& roots) {
    std::vector<std::uint32_t> numbers(weights.size());
    for (std::size_t k = 0; k < weights.size(); ++k)
      if (weights[k] > 0) {
        numbers[k] = static_cast<std::uint32_t>(roots.size());
        roots.push_back(std::sqrt(weights[k] / total));
      }
    return numbers;
  }

  std::vector<StWeightedCell> m_Cells;
};

// The greatest singular value of a bidiagonal matrix, whose diagonal and other diagonal alternate
// in `entries`: the greatest eigenvalue of the symmetric tridiagonal matrix with these beside a
// diagonal of zeros. By bisection with Sturm sequences: x is above all eigenvalues where no pivot
// of x I - T is negative.
double GreatestSingularValue(Vector const& entries) {
  auto const isAbove = [&](double x) {
    double pivot = x;
    for (double const entry : entries) {
      if (pivot <= 0) return false;
      pivot = x - entry * entry / pivot;
    }
    return pivot > 0;
  };
  double low = 0, high = 0;
  for (std::size_t k = 0; k < entries.size(); ++k)
    high = std::max(high, entries[k] + (k > 0 ? entries[k - 1] : 0));
  for (int step = 0; step < 60 && high - low > 1e-16; ++step) {
    double const middle = (low + high) / 2;
    (isAbove(middle) ? high : low) = middle;
  }
  return high;
}

// Any vector will do that is no special one; the same each time.
Vector StartVector(std::size_t n) {
  Vector start(n);
  std::uint64_t state = 0x9E3779B97F4A7C15U;
  for (double& component : start) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    component = static_cast<double>(state >> 11U) * 0x1p-53 - 0.5;
  }
  return start;
}

} // namespace

double MaximalCorrelation(CPairSums const& sums) {
  CScaledMatrix const matrix(sums);
  std::size_t const least = std::min(matrix.rows.size(), matrix.columns.size());
  std::size_t const both = matrix.rows.size() + matrix.columns.size();
  if (both == 2) return 1;
  if (least < 2) return 0;

  CBasis left(matrix.rows), right(matrix.columns);
  right.Append(StartVector(matrix.columns.size()));
  Vector bidiagonal;
  double value = 0;
  int settled = 0; // steps that no longer changed the value
  std::size_t const most = std::min(least - 1, std::max<std::size_t>(64, (1U << 24U) / both));
  for (std::size_t step = 0; step < most && settled < 3; ++step) {
    double const onDiagonal = left.Append(matrix.Times(right.Last()));
    if (onDiagonal == 0) break;
    bidiagonal.push_back(onDiagonal);
    double const beside = right.Append(matrix.TransposedTimes(left.Last()));
    if (beside > 0) bidiagonal.push_back(beside);
    double const next = GreatestSingularValue(bidiagonal);
    settled = std::abs(next - value) < c_negligible ? settled + 1 : 0;
    value = next;
    if (beside == 0) break;
  }
  return std::min(value, 1.0);
}

} // namespace ORVA::Impl
