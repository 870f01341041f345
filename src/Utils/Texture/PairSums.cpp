#include <SeluUtils/Impl/PairSums.h>

#include <array>
#include <cmath>

namespace ORVA::Impl {

namespace {

constexpr double c_perLn2 = 1.4426950408889634; // 1 / ln 2

using LogTable = std::array<double, 4096>;

LogTable MakeLogTable() {
  LogTable table{};
  for (std::size_t k = 1; k < table.size(); ++k) table[k] = std::log2(static_cast<double>(k));
  return table;
}

// Terms weight * log2(total / weight). The logarithm of the quotient is a difference of logarithms
// where it is at least 1, and otherwise ln(1 + x) for an x without rounding, so that no term loses
// digits.
class CEntropyTerms {
public:
  explicit CEntropyTerms(double total)
      : m_Total(total), m_Log2Total(std::log2(total)), m_Half(total / 2), m_Table(Table()) {}

  [[nodiscard]] double operator()(double weight) const {
    if (weight > m_Half) return weight * (std::log1p((m_Total - weight) / weight) * c_perLn2);
    return weight * (m_Log2Total - Log2(weight));
  }

private:
  [[nodiscard]] static LogTable const& Table() {
    static LogTable const table = MakeLogTable();
    return table;
  }
  [[nodiscard]] double Log2(double weight) const {
    if (weight < static_cast<double>(m_Table.size())) {
      auto const whole = static_cast<std::size_t>(weight);
      if (static_cast<double>(whole) == weight) return m_Table[whole];
    }
    return std::log2(weight);
  }

  double m_Total, m_Log2Total, m_Half;
  LogTable const& m_Table;
};

void Clear(std::vector<double>& values, std::size_t first, std::size_t last) {
  std::fill(values.begin() + static_cast<std::ptrdiff_t>(first),
            values.begin() + static_cast<std::ptrdiff_t>(last) + 1, 0.0);
}

} // namespace

void CPairSums::Start(int n, bool keepCells) {
  if (m_CellsOf.empty()) m_CellsOf.resize(c_nSmallCounts);
  if (m_Low <= m_High) {
    std::fill_n(m_CellsOf.begin(), m_SmallCountsEnd, 0U);
    Clear(m_Rows, m_Low, m_High);
    Clear(m_Columns, m_Low, m_High);
    Clear(m_Differences, m_N + m_Low - m_High, m_N + m_High - m_Low);
    Clear(m_Sums, 2 * m_Low, 2 * m_High);
  }
  m_SmallCountsEnd = 0;
  m_OtherCells.clear();
  m_Cells.clear();
  m_KeepsCells = keepCells;
  m_N = static_cast<std::size_t>(n);
  m_Low = m_N + 1;
  m_High = 0;
  // Each by itself: memory may have run out after the first of them.
  auto const reach = [](std::vector<double>& values, std::size_t size) {
    if (values.size() < size) values.resize(size);
  };
  for (auto* const perLevel : {&m_Rows, &m_Columns}) reach(*perLevel, m_N + 1);
  for (auto* const perPair : {&m_Differences, &m_Sums}) reach(*perPair, 2 * m_N + 1);
}

double CPairSums::Total() const noexcept {
  double total = 0;
  if (m_Low <= m_High)
    for (double const row : Rows()) total += row;
  return total;
}

double CPairSums::Greatest() const noexcept {
  double greatest = 0;
  for (double const weight : m_OtherCells) greatest = std::max(greatest, weight);
  for (std::size_t count = m_SmallCountsEnd; count-- > 1;)
    if (m_CellsOf[count] != 0) return std::max(greatest, static_cast<double>(count));
  return greatest;
}

double CPairSums::AngularSecondMoment() const noexcept {
  double const total = Total();
  double sum = 0;
  for (std::size_t count = 1; count < m_SmallCountsEnd; ++count)
    sum += static_cast<double>(m_CellsOf[count]) * static_cast<double>(count * count);
  double shares = sum / total / total;
  for (double const weight : m_OtherCells) shares += weight / total * (weight / total);
  return shares;
}

double CPairSums::Entropy() const {
  double const total = Total();
  CEntropyTerms const term(total);
  double sum = 0;
  for (std::size_t count = 1; count < m_SmallCountsEnd; ++count)
    if (std::uint32_t const cells = m_CellsOf[count]; cells != 0)
      sum += cells * term(static_cast<double>(count));
  for (double const weight : m_OtherCells) sum += term(weight);
  return sum / total;
}

double EntropyInBits(std::span<double const> weights, double total) {
  CEntropyTerms const term(total);
  double sum = 0;
  for (double const weight : weights)
    if (weight > 0) sum += term(weight);
  return sum / total;
}

} // namespace ORVA::Impl
