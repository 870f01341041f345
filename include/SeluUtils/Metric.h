// Distances of points with or without a periodic boundary, neighbor tables of cubic grids, and a
// pair of statistics with a tolerant equality.
//
//   #include <iostream>
//   std::vector<double> const a{1, 1}, b{9, 9}, window{10, 10};
//   auto const distance = CMetric::EuclideanDistance(a, b, window, EEdgeTreatment::Periodic);
//   std::cout << distance << ' ';                                    // prints 2.82843
//   std::vector<std::vector<int64>> table;
//   CMetric::CalculateNeighbourTable(&table, 2, 3, EEdgeTreatment::NoEdgeTreatment);
//   for (int64 const cell : table[4]) std::cout << cell << ' ';      // prints 0 1 2 3 5 6 7 8 4
#pragma once

#include <SeluBase/EdgeTreatment.h>
#include <SeluUtils/Export.h>
#include <pxlib2core/Types.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace ORVA {

/// Distances and neighbor tables. NoEdgeTreatment and PlusSampling both mean that nothing is done
/// at the boundary, Periodic that the domain wraps around; every other edge treatment is refused.
class SELUUTILS_EXPORT CMetric {
public:
  /// Sum of the squared coordinate differences, added in the order of the coordinates.
  ///
  /// Without boundary handling points may have any length, and the window is not looked at. With
  /// Periodic they have length 2 or 3 and the window holds the period of each axis; the difference
  /// d of a coordinate becomes the smaller of d and window - d. Coordinates are not reduced into
  /// the window first, so a difference beyond the window counts with the square of what it is
  /// beyond.
  ///
  /// Throws CException for points of different length, a window of another length than theirs,
  /// periodic points that are neither 2D nor 3D, and other edge treatments. O(length).
  [[nodiscard]] static double
  SquaredEuclideanDistance(std::vector<double> const& a, std::vector<double> const& b,
                           std::vector<double> const& window,
                           EEdgeTreatment::EnEdgeTreatmentId const& edge) {
    if (a.size() != b.size()) [[unlikely]]
      RaiseDifferentSize();
    if (edge == EEdgeTreatment::Periodic) return SquaredPeriodicDistance(a, b, window);
    if (edge != EEdgeTreatment::NoEdgeTreatment && edge != EEdgeTreatment::PlusSampling)
        [[unlikely]]
      RaiseEdgeTreatment();
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
      double const difference = a[i] - b[i];
      sum += difference * difference;
    }
    return sum;
  }

  /// The square root of SquaredEuclideanDistance; errors are that function's, under its name.
  [[nodiscard]] static double EuclideanDistance(std::vector<double> const& a,
                                                std::vector<double> const& b,
                                                std::vector<double> const& window,
                                                EEdgeTreatment::EnEdgeTreatmentId const& edge) {
    return std::sqrt(SquaredEuclideanDistance(a, b, window, edge));
  }

  /// Fills the table of a grid of n^dimension cells, dimension 2 or 3, numbered x + n * (y + n *
  /// z). The entry of a cell holds the numbers of its 8 or 26 neighbors in the order of
  /// CNeighborhood2dDiffN8 and CNeighborhood3dDiffN26 (raster order), then its own number. A
  /// neighbor outside the grid is -1, or with Periodic the cell on the opposite side.
  ///
  /// Throws CExBadParam for a null table, a negative n, and a grid whose table cannot be addressed
  /// or allocated; the table is then as it was. Another dimension or edge treatment throws
  /// CException with the table resized to n^dimension entries. O(n^dimension).
  static void CalculateNeighbourTable(std::vector<std::vector<int64>>* table,
                                      unsigned char dimension, int64 n,
                                      EEdgeTreatment::EnEdgeTreatmentId const& edge);

private:
  static double SquaredPeriodicDistance(std::vector<double> const& a, std::vector<double> const& b,
                                        std::vector<double> const& window) {
    if (a.size() != 2 && a.size() != 3) [[unlikely]]
      RaisePeriodicDimension();
    if (window.size() != a.size()) [[unlikely]]
      RaiseWindowSize();
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
      double const direct = std::abs(a[i] - b[i]);
      double const around = window[i] - direct;
      double const difference = direct > around ? around : direct;
      sum += difference * difference;
    }
    return sum;
  }
  [[noreturn]] static void RaiseDifferentSize();
  [[noreturn]] static void RaiseEdgeTreatment();
  [[noreturn]] static void RaisePeriodicDimension();
  [[noreturn]] static void RaiseWindowSize();
};

/// Two values that belong together.
template <class T>
struct CStatisticsTemplate {
  constexpr CStatisticsTemplate() noexcept = default; ///< (0, 0)
  constexpr CStatisticsTemplate(T firstValue, T secondValue) noexcept
      : first(firstValue), second(secondValue) {}

  /// The two numbers.
  T first = 0, second = 0;
};

/// A pair of values that are equal where neither differs by more than 2.2e-16 (the machine epsilon
/// of double, as an absolute tolerance whatever the size of the values). As the difference decides,
/// a pair with a NaN or an infinity equals none, not even itself.
struct CStatistics : CStatisticsTemplate<double> {
  using CStatisticsTemplate<double>::CStatisticsTemplate;

  /// Whether neither number differs by more than 2.2e-16.
  [[nodiscard]] bool operator==(CStatistics other) const noexcept {
    constexpr double epsilon = std::numeric_limits<double>::epsilon();
    return std::abs(first - other.first) <= epsilon && std::abs(second - other.second) <= epsilon;
  }
  /// Whether a number differs by more than 2.2e-16.
  [[nodiscard]] bool operator!=(CStatistics other) const noexcept { return !(*this == other); }
};

} // namespace ORVA
