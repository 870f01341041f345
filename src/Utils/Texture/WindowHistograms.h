// Histograms of a window that moves along a line: of its pairs, of the levels of their voxels, of
// differences and of sums.
//
//   Impl::CWindowHistograms histograms(units, key, needs);
//   std::vector<Impl::StWindowSums> line(512);
//   histograms.Line(columns, 1, line);       // the sums of 512 windows, each a column further
#pragma once

#include "Utils/Texture/WindowColumns.h"
#include "Utils/Texture/WindowSums.h"

#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace ORVA::Impl {

/// What the histograms say of a window: sums of c log2 c over their counts c, those of c^2 over the
/// pairs' counts and the greatest of them, and how many pairs have two equal levels.
struct StHistogramSums {
  int64 joint = 0, rows = 0, columns = 0, differences = 0, sums = 0;
  int64 energy = 0, maximum = 0, equal = 0;
};

/// Holds the histograms, all empty but for the time of a line. A change of one count changes the
/// sums by a step that a table holds; nothing is rounded, so that order does not matter.
class CWindowHistograms {
public:
  CWindowHistograms(StWindowUnits const& units, StPairKey const& key, StWindowNeeds const& needs);

  /// Whether there is any; else only linear sums are filled in, and no keys are read.
  [[nodiscard]] bool AreNeeded() const noexcept { return m_AreNeeded; }
  /// Fills in the sums of lines.size() windows, the first at the first column, each `step` columns
  /// further than the one before.
  void Line(CPairColumns const& columns, int64 step, std::span<StWindowSums> line);

private:
  struct StCounts {
    std::vector<std::uint32_t> joint, rows, columns, differences, sums, cells;
  };
  template <int Joint, bool Marginals, bool Differences, bool Sums, bool IsSymmetric>
  class CMoving;
  using Run = void (*)(CWindowHistograms& self, CPairColumns const& columns, int64 step,
                       std::span<StWindowSums> line);
  template <std::size_t... K>
  static constexpr std::array<Run, sizeof...(K)> AllRuns(std::index_sequence<K...>);
  template <class Moving>
  static void RunLine(CWindowHistograms& self, CPairColumns const& columns, int64 step,
                      std::span<StWindowSums> line);
  void Empty(std::span<std::uint32_t const> keys) noexcept;
  [[nodiscard]] StWindowSums SumsOf(StLinearSums const& linear,
                                    StHistogramSums const& histograms) const noexcept;

  StWindowUnits const& m_Units;
  StPairKey m_Key;
  StCounts m_Counts;
  bool m_AreNeeded;
  Run m_Run;
};

} // namespace ORVA::Impl
