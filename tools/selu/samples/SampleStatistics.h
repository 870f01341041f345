// What is kept of the samples while they stream by: moments, a histogram, the distance to theory.
//
//   CScalarStatistics statistics(theory, n);
//   for (double value : values) statistics.Add(value);
//   PrintOut(statistics.Report(80));
#pragma once

#include "distributions/Distributions.h"

#include <array>
#include <string>
#include <vector>

namespace selu {

/// Kolmogorov and Smirnov's test of numbers that should be uniform on [0, 1]. Up to 2^20 numbers it
/// is exact; of more it keeps counts in 2^20 equal cells and takes the distance at their borders,
/// which is at most 2^-20 or so smaller. 8 MiB at most.
class CUniformTest {
public:
  explicit CUniformTest(ORVA::uint64 expected);
  void Add(double share);
  /// The greatest distance between the observed and the uniform distribution.
  [[nodiscard]] double Distance();
  [[nodiscard]] double Probability();

private:
  [[nodiscard]] double DistanceOfCells() const;
  [[nodiscard]] double DistanceOfValues();

  std::vector<double> m_Values;
  std::vector<ORVA::uint64> m_Cells;
  ORVA::uint64 m_Count = 0;
  bool m_IsUndefined = false; // a NaN was among them
};

/// Chi-square test of counts in the cells of a theory; neighbors are joined until ten are expected.
class CCellTest {
public:
  explicit CCellTest(StScalarTheory const& theory);
  [[nodiscard]] bool Exists() const noexcept { return !m_Cells.empty(); }
  void Add(double value);
  struct StResult {
    double sum, freedom, probability;
  };
  [[nodiscard]] StResult Result() const;

private:
  std::vector<double> m_Cells; // upper borders
  std::vector<double> m_Shares;
  std::vector<ORVA::uint64> m_Counts;
  ORVA::uint64 m_Count = 0;
};

/// Whether samples fit their law: no test of them is less likely than 1e-6.
class CVerdict {
public:
  /// Fewer samples are not judged.
  static constexpr ORVA::uint64 c_fewest = 100;
  static constexpr double c_least = 1e-6;

  void Add(double probability) {
    if (!(probability >= c_least)) m_Fits = false;
    m_IsTested = true;
  }
  [[nodiscard]] bool Fits() const noexcept { return m_Fits; }
  [[nodiscard]] std::string Text(ORVA::uint64 count) const;

private:
  bool m_IsTested = false, m_Fits = true;
};

class CScalarStatistics {
public:
  CScalarStatistics(StScalar const& scalar, ORVA::uint64 expected);
  void Add(double value);
  /// Moments beside those of theory, with their distances in standard errors, and the tests, as
  /// text.
  [[nodiscard]] std::string Report(int columns);
  /// Whether the samples fit, after Report.
  [[nodiscard]] bool Fits() const noexcept { return m_Verdict.Fits(); }

  [[nodiscard]] StMoments Moments() const;
  [[nodiscard]] std::vector<double> const& Borders() const noexcept { return m_Borders; }
  [[nodiscard]] std::vector<ORVA::uint64> const& Counts() const noexcept { return m_Counts; }
  [[nodiscard]] ORVA::uint64 Count() const noexcept { return m_Count; }
  [[nodiscard]] ORVA::uint64 Outside() const noexcept { return m_Outside; }
  [[nodiscard]] StScalarTheory const& Theory() const noexcept { return m_Theory; }

private:
  StScalarTheory m_Theory;
  CUniformTest m_Test;
  CCellTest m_CellTest;
  CVerdict m_Verdict;
  double m_Center, m_Scale; // powers are summed of (value - center) / scale: those of theory
  std::array<double, 4> m_Sums = {};
  ORVA::uint64 m_Count = 0, m_Outside = 0;
  std::vector<double> m_Borders; // of the histogram's bins, equally wide
  std::vector<ORVA::uint64> m_Counts;
};

class CDirectionStatistics {
public:
  /// Cells along a side of each square of the equal-area projection that holds a hemisphere.
  CDirectionStatistics(StRotationTheory const& theory, ORVA::uint64 expected);
  void Add(Vector const& direction);
  [[nodiscard]] std::string Report(int columns);
  /// Whether the samples fit, after Report.
  [[nodiscard]] bool Fits() const noexcept { return m_Verdict.Fits(); }

  [[nodiscard]] Vector Mean() const;
  [[nodiscard]] ORVA::uint64 Count() const noexcept { return m_Count; }
  [[nodiscard]] int Cells() const noexcept { return m_Cells; }
  /// Counts of a hemisphere (0 the upper, 1 the lower), row by row from the least y.
  [[nodiscard]] std::vector<ORVA::uint64> const& Counts(int hemisphere) const {
    return m_Counts[static_cast<std::size_t>(hemisphere)];
  }

private:
  [[nodiscard]] std::string AxisText() const;

  StRotationTheory m_Theory;
  CUniformTest m_Test;
  CVerdict m_Verdict;
  std::array<double, 9> m_Sums = {}, m_Squares = {};
  ORVA::uint64 m_Count = 0;
  int m_Cells;
  std::array<std::vector<ORVA::uint64>, 2> m_Counts;
};

/// Lambert's azimuthal equal-area projection of a direction's hemisphere, seen from above, onto the
/// unit disc: x and y, the pole at the origin.
struct StProjected {
  int hemisphere;
  double x, y;
};
[[nodiscard]] StProjected Project(Vector const& direction) noexcept;

} // namespace selu
