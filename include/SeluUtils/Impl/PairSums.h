// Sums over the cells of a co-occurrence matrix, gathered in one sweep, from which all texture
// features follow. Levels count from 1.
//
//   #include <iostream>
//   Impl::CPairSums sums;
//   sums.Start(2);                                    // levels 1 and 2
//   sums.Add(1, 1, 3U);                               // once for each occupied cell, by rows
//   sums.Add(1, 2, 1U);
//   std::cout << sums.AngularSecondMoment();          // prints 0.625
#pragma once

#include <SeluUtils/Export.h>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// A cell, for what the sums do not tell.
struct StWeightedCell {
  std::uint32_t i, j;
  double weight;
};

/// The distributions of a matrix and what needs the matrix itself. Sums of counts are exact as long
/// as they stay below 2^53, whatever the order of the cells.
class SELUUTILS_EXPORT CPairSums {
public:
  /// Integers below this one are gathered by their value: equal counts share their logarithm, and
  /// their order no longer matters to the last bit.
  static constexpr std::size_t c_nSmallCounts = 1024;

  /// Sets all to 0 for a matrix of n levels; with `keepCells` the cells are kept, too. Clears only
  /// what was used.
  void Start(int n, bool keepCells = false);

  /// Adds a cell of levels i and j; `count` > 0.
  template <class T>
  void Add(std::size_t i, std::size_t j, T count) {
    auto const weight = static_cast<double>(count);
    m_Rows[i] += weight;
    m_Columns[j] += weight;
    m_Differences[m_N + j - i] += weight;
    m_Sums[i + j] += weight;
    Widen(std::min(i, j), std::max(i, j));
    AddCell(i, j, count);
  }
  /// Adds row i of a dense matrix, column 1 first; cells may be 0.
  template <class T>
  void AddRow(std::size_t i, T const* row) {
    for (std::size_t j = 1; j <= m_N; ++j)
      if (T const count = row[j - 1]; count != 0) Add(i, j, count);
  }

  [[nodiscard]] std::size_t Levels() const noexcept { return m_N; }
  /// The least and the greatest level of a row or column that holds something; 1 and 0 without any.
  [[nodiscard]] std::size_t Low() const noexcept { return m_Low; }
  [[nodiscard]] std::size_t High() const noexcept { return m_High; }
  /// The sum of all cells.
  [[nodiscard]] double Total() const noexcept;

  /// By levels Low() .. High(): sums of rows and of columns.
  [[nodiscard]] std::span<double const> Rows() const noexcept {
    return Used(m_Rows, m_Low, m_High);
  }
  [[nodiscard]] std::span<double const> Columns() const noexcept {
    return Used(m_Columns, m_Low, m_High);
  }
  /// By j - i from Low() - High() to High() - Low().
  [[nodiscard]] std::span<double const> Differences() const noexcept {
    return Used(m_Differences, m_N + m_Low - m_High, m_N + m_High - m_Low);
  }
  /// By i + j from 2 Low() to 2 High().
  [[nodiscard]] std::span<double const> Sums() const noexcept {
    return Used(m_Sums, 2 * m_Low, 2 * m_High);
  }
  [[nodiscard]] std::span<StWeightedCell const> Cells() const noexcept { return m_Cells; }

  [[nodiscard]] double Greatest() const noexcept;
  /// The sum of the squared shares of the total.
  [[nodiscard]] double AngularSecondMoment() const noexcept;
  /// The entropy of the cells in bits.
  [[nodiscard]] double Entropy() const;

private:
  void AddSmall(std::size_t count) noexcept {
    ++m_CellsOf[count];
    m_SmallCountsEnd = std::max(m_SmallCountsEnd, count + 1);
  }
  [[nodiscard]] static std::span<double const> Used(std::vector<double> const& values,
                                                    std::size_t first, std::size_t last) noexcept {
    return std::span(values).subspan(first, last - first + 1);
  }
  void Widen(std::size_t low, std::size_t high) noexcept {
    m_Low = std::min(m_Low, low);
    m_High = std::max(m_High, high);
  }
  template <class T>
  void AddCell(std::size_t i, std::size_t j, T count) {
    if (m_KeepsCells)
      m_Cells.push_back({static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j),
                         static_cast<double>(count)});
    if constexpr (std::integral<T>) {
      if (count < c_nSmallCounts) [[likely]] {
        AddSmall(static_cast<std::size_t>(count));
        return;
      }
    } else if (count < c_nSmallCounts) {
      if (auto const whole = static_cast<std::size_t>(count); static_cast<double>(whole) == count) {
        AddSmall(whole);
        return;
      }
    }
    m_OtherCells.push_back(static_cast<double>(count));
  }

  std::size_t m_N = 0, m_Low = 1, m_High = 0;
  bool m_KeepsCells = false;
  std::vector<double> m_Rows, m_Columns; // by level 0 .. n; 0 stays empty
  std::vector<double> m_Differences;     // by j - i + n
  std::vector<double> m_Sums;            // by i + j
  std::vector<std::uint32_t> m_CellsOf;  // how many cells have that count
  std::size_t m_SmallCountsEnd = 0;      // from here on none has
  std::vector<double> m_OtherCells;      // large counts and weights that are no integers, by rows
  std::vector<StWeightedCell> m_Cells;
};

/// The entropy of a distribution given by weights >= 0 of that total, in bits; exactly 0 where one
/// weight is all.
[[nodiscard]] SELUUTILS_EXPORT double EntropyInBits(std::span<double const> weights, double total);

} // namespace ORVA::Impl
