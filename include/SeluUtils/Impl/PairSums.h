// Sums over the cells of a co-occurrence matrix, gathered in one sweep, from which all texture
// features follow. Levels count from 1.
//
//   sums.Start(n);
//   sums.Add(i, j, count);                           // once for each occupied cell, by rows
//   double const entropy = Impl::JointBits(sums);    // inner header Utils/Texture/FeatureValues.h
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

/// The distributions of a matrix and what needs the matrix itself. Sums of counts are exact as long
/// as they stay below 2^53, whatever the order of the cells.
class CPairSums {
public:
  /// Counts below this one are gathered by their value: equal ones share their logarithm, and their
  /// order no longer matters to the last bit.
  static constexpr std::size_t c_nSmallCounts = 4096;

  /// Sets all to 0 for a matrix of n levels. Clears only what was used before.
  void Start(int n);
  /// Adds a cell; `count` > 0.
  void Add(int i, int j, double count) {
    auto const row = static_cast<std::size_t>(i), column = static_cast<std::size_t>(j);
    m_Rows[row] += count;
    m_Columns[column] += count;
    m_Differences[m_N + column - row] += count;
    m_Sums[row + column] += count;
    m_Total += count;
    AddCell(count);
  }

private:
  void AddCell(double count) {
    auto const small = static_cast<std::uint32_t>(count < c_nSmallCounts ? count : 0);
    if (static_cast<double>(small) == count) {
      ++m_CellsOf[small];
    } else {
      m_LargeCells.push_back(count);
    }
  }

public:
  std::size_t m_N = 0;
  double m_Total = 0;
  std::vector<double> m_Rows, m_Columns; // by level 0 .. n; 0 stays empty
  std::vector<double> m_Differences;     // by j - i + n
  std::vector<double> m_Sums;            // by i + j
  std::vector<std::uint32_t> m_CellsOf;  // how many cells have that count
  std::vector<double> m_LargeCells;      // all other counts, by rows
};

} // namespace ORVA::Impl
