#include "Utils/Texture/WindowBand.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

namespace ORVA::Impl {

namespace {

using Matrix = std::map<std::pair<int64, int64>, int64>; // counts of the levels (i, j) that occur
using Counts = std::map<int64, int64>;

// The level of a voxel, 0 for one outside of the image and for a level that should not be there.
int64 LevelAt(StLevelPixels const& pixels, Vector const& at) noexcept {
  auto const* address = pixels.base;
  for (std::size_t k = 0; k < 3; ++k) {
    if (at[k] < 0 || at[k] >= pixels.extent[k]) return 0;
    address += (at[k] - pixels.low[k]) * pixels.stride[k];
  }
  std::uint16_t level = std::to_integer<std::uint8_t>(*address);
  if (pixels.bytes == 2) std::memcpy(&level, address, sizeof level);
  return level > pixels.levels ? 0 : level;
}

Matrix Count(StLevelPixels const& pixels, StPairBox const& box, Vector const& center,
             bool isSymmetric) {
  Matrix matrix;
  for (int64 z = 0; z < box.side[2]; ++z)
    for (int64 y = 0; y < box.side[1]; ++y)
      for (int64 x = 0; x < box.side[0]; ++x) {
        Vector const first{center[0] + box.low[0] + x, center[1] + box.low[1] + y,
                           center[2] + box.low[2] + z};
        Vector const second{first[0] + box.displacement[0], first[1] + box.displacement[1],
                            first[2] + box.displacement[2]};
        int64 const i = LevelAt(pixels, first), j = LevelAt(pixels, second);
        if (i == 0 || j == 0) continue;
        ++matrix[{i, j}];
        if (isSymmetric) ++matrix[{j, i}];
      }
  return matrix;
}

int64 SumOfLogs(Counts const& counts, CFixedLog const& logs) noexcept {
  int64 sum = 0;
  for (auto const& [value, count] : counts) sum += logs(count);
  return sum;
}

void AddCell(StWindowSums& w, int64 i, int64 j, int64 c, StWindowUnits const& units) noexcept {
  int64 const d = std::abs(i - j), s = i + j - (units.levels + 1);
  w.pairs += c;
  w.x1 += c * i;
  w.y1 += c * j;
  w.x2 += c * i * i;
  w.y2 += c * j * j;
  w.xy += c * i * j;
  w.d1 += c * d;
  w.d2 += c * d * d;
  w.s1 += c * s;
  w.s2 += c * s * s;
  w.s3 += c * s * s * s;
  if (units.levels <= c_mostProminenceLevels) w.s4 += c * s * s * s * s;
  for (std::size_t k = 0; k < w.inverse.size(); ++k)
    w.inverse[k] += c * units.inverse[static_cast<std::size_t>(d)][k];
  w.energy += c * c;
  w.maximum = std::max(w.maximum, c);
  w.joint += units.logs(c);
}

} // namespace

StWindowSums CountAfresh(StLevelPixels const& pixels, StPairBox const& box, Vector const& center,
                         bool isSymmetric, StWindowUnits const& units) {
  StWindowSums w;
  Counts rows, columns, differences, sums;
  for (auto const& [levels, count] : Count(pixels, box, center, isSymmetric)) {
    auto const& [i, j] = levels;
    AddCell(w, i, j, count, units);
    rows[i] += count;
    columns[j] += count;
    differences[std::abs(i - j)] += count;
    sums[i + j] += count;
  }
  w.rows = SumOfLogs(rows, units.logs);
  w.columns = SumOfLogs(columns, units.logs);
  w.differences = SumOfLogs(differences, units.logs);
  w.sums = SumOfLogs(sums, units.logs);
  return w;
}

} // namespace ORVA::Impl
