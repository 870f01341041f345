// Goodness of fit over a thousand equally likely cells, one number at a time.
//
//   test::CEqualCells cells("normal");
//   for (int i = 0; i < 1'000'000; ++i) cells.Add(cdf(normal, draw()));   // in [0, 1]
//   cells.ExpectEven();
#pragma once

#include "support/Statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Numbers that should be uniform on [0, 1], and independent of one another: beside the cells it
/// counts in which of 32 x 32 squares two successive ones fall.
class CEqualCells {
public:
  static constexpr std::size_t c_cells = 1000, c_side = 32;

  explicit CEqualCells(std::string what)
      : m_What(std::move(what)), m_Counts(c_cells), m_Pairs(c_side * c_side) {}

  void Add(double share) {
    ++m_Counts.at(Cell(share, c_cells));
    std::size_t const side = Cell(share, c_side);
    if (m_Total % 2 == 1) ++m_Pairs.at(m_LastSide * c_side + side);
    m_LastSide = side;
    ++m_Total;
  }
  void ExpectEven() const {
    ExpectEven(m_Counts, static_cast<double>(m_Total), ", cells");
    ExpectEven(m_Pairs, static_cast<double>(m_Total / 2), ", pairs");
  }

private:
  static std::size_t Cell(double share, std::size_t cells) {
    EXPECT_TRUE(share >= 0 && share <= 1) << share;
    double const place = std::clamp(share, 0.0, 1.0) * static_cast<double>(cells);
    return std::min(static_cast<std::size_t>(std::isnan(place) ? 0 : place), cells - 1);
  }
  void ExpectEven(std::vector<double> const& counts, double total, char const* which) const {
    std::vector<double> const expected(counts.size(), total / static_cast<double>(counts.size()));
    double const p = ChiSquarePValue(counts, expected);
    EXPECT_GT(p, c_falseAlarm) << m_What << which;
    EXPECT_LT(p, 1 - c_falseAlarm) << m_What << which << " are too even to be random";
  }

  std::string m_What;
  std::vector<double> m_Counts, m_Pairs;
  std::size_t m_LastSide = 0, m_Total = 0;
};

} // namespace test
