// From the integer sums of a window's pairs to its texture features: the one place where numbers
// are divided, whichever way the sums came about.
//
//   Impl::StWindowUnits const units(window, levels, symmetric);
//   std::vector<double> values(windows.size());
//   Impl::Finisher(EnTextureFeature::Contrast)(windows, units, values.data());
#pragma once

#include "Utils/Texture/FixedLog.h"

#include <SeluUtils/Texture/Features.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// Sums over the cells (i, j) of a matrix of counts c(i, j), with n for the sum of all counts.
struct StWindowSums {
  int64 pairs = 0;                              // n
  int64 x1 = 0, y1 = 0, x2 = 0, y2 = 0, xy = 0; // of i, j, i^2, j^2, i j
  int64 d1 = 0, d2 = 0;                         // of |i - j|, (i - j)^2
  int64 s1 = 0, s2 = 0, s3 = 0, s4 = 0;         // of powers of i + j - (levels + 1)
  std::array<int64, 5> inverse{};               // of the weights in the order of EnInverse
  int64 energy = 0, maximum = 0;                // of c^2; the greatest c
  // of c log2 c of the cells, of the row and column sums, and of those over one |i - j| or i + j
  int64 joint = 0, rows = 0, columns = 0, differences = 0, sums = 0;
};

/// The weights that fall with the difference d, in the order of StWindowSums::inverse.
enum EnInverse : std::size_t {
  INVERSE_DIFFERENCE,        // 1 / (1 + d)
  INVERSE_NORMALIZED,        // 1 / (1 + d / Ng)
  INVERSE_MOMENT,            // 1 / (1 + d^2)
  INVERSE_MOMENT_NORMALIZED, // 1 / (1 + d^2 / Ng^2)
  INVERSE_VARIANCE           // 1 / d^2, 0 for d = 0
};

/// The fixed points of a window, which depend on its largest number of pairs alone, so that parts
/// of an image share them; and the tables in their units.
struct StWindowUnits {
  /// `pairs`: the most that a window can have. `counts`: the greatest sum of a matrix to come.
  StWindowUnits(int64 pairs, int64 counts, int levelCount, int normalizingLevels);

  int levels;
  int logBits, inverseBits;
  double logUnit, inverseUnit; // 2^-bits
  CFixedLog logs;
  std::vector<std::array<int64, 5>> inverse; // at each difference 0 .. levels - 1
};

/// Adds one feature of each window to values; windows without pairs add nothing.
using Finish = void (*)(std::span<StWindowSums const> windows, StWindowUnits const& units,
                        double* values);
/// Null for the maximal correlation coefficients, which no sums give.
[[nodiscard]] Finish Finisher(EnTextureFeature feature) noexcept;

/// Which of a window's histograms a feature asks for.
struct StWindowNeeds {
  bool joint = false, maximum = false, marginals = false, differences = false, sums = false;
};
[[nodiscard]] StWindowNeeds NeedsOf(std::span<EnTextureFeature const> features) noexcept;

} // namespace ORVA::Impl
