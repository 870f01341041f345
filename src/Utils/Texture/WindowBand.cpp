#include "Utils/Texture/WindowBand.h"

#include "Utils/Texture/WindowHistograms.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace ORVA::Impl {

namespace {

// Windows of one line that are worked on together. Their columns of pairs shall stay in a cache
// close by, and there shall be several times as many of them as a window has.
int64 WindowsPerTile(StWindowBand const& band) noexcept {
  constexpr int64 c_keys = int64{1} << 16, c_columns = 1024, c_mostColumns = int64{1} << 16;
  int64 const side = LargestSide(band, 0);
  if (band.step[0] >= side) return 1; // nothing is shared from one to the next
  int64 const fitting = std::min(c_columns, c_keys / (LargestSide(band, 1) * LargestSide(band, 2)));
  return std::max<int64>(1, std::clamp(4 * side, fitting, c_mostColumns) / band.step[0]);
}

// Lines that are worked on together slice by slice: as many as some mebibytes hold the sums of, but
// no fewer than a window has.
int64 RowsPerBlock(StWindowBand const& band, int64 windows) noexcept {
  constexpr int64 c_sums = int64{1} << 16;
  int64 const side = LargestSide(band, 1);
  if (LargestSide(band, 2) == 1) return band.count[1]; // no sums are kept
  if (band.step[1] >= side) return 1;                  // nothing is shared from one to the next
  int64 const fitting = c_sums / ((windows - 1) * band.step[0] + LargestSide(band, 0)) - side;
  return std::max<int64>(1, std::max(side, fitting) / band.step[1]);
}

StPairKey KeyOf(StWindowBand const& band) noexcept {
  auto const greatest = static_cast<std::uint32_t>(band.pixels.levels - 1);
  return {.bits = std::max(1, static_cast<int>(std::bit_width(greatest))),
          .isSymmetric = band.isSymmetric};
}

// Values of one line: means over the displacements that have a pair in the window.
class CLineMeans {
public:
  CLineMeans(StWindowBand const& band, StWindowUnits const& units) : m_Units(units) {
    for (EnTextureFeature const feature : band.features) m_Finishers.push_back(Finisher(feature));
  }

  void Start(std::size_t windows) {
    m_Windows = windows;
    m_Sums.assign(windows * m_Finishers.size(), 0);
    m_Displacements.assign(windows, 0);
  }

  // In portions that stay in the nearest cache from feature to feature.
  void Add(std::span<StWindowSums const> line) {
    constexpr std::size_t c_portion = 32;
    for (std::size_t at = 0; at < line.size(); at += c_portion) {
      auto const windows = line.subspan(at, std::min(c_portion, line.size() - at));
      for (std::size_t f = 0; f < m_Finishers.size(); ++f)
        m_Finishers[f](windows, m_Units, m_Sums.data() + f * m_Windows + at);
    }
    for (std::size_t w = 0; w < line.size(); ++w) m_Displacements[w] += line[w].pairs != 0 ? 1 : 0;
  }

  // NaN where no displacement has a pair.
  template <class Value>
  void Write(Value* maps, int64 stride, int64 featureStride) const {
    constexpr double c_nothing = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t f = 0; f < m_Finishers.size(); ++f) {
      auto* map = maps + static_cast<int64>(f) * featureStride;
      for (std::size_t w = 0; w < m_Windows; ++w, map += stride)
        *map = static_cast<Value>(
            m_Displacements[w] != 0 ? m_Sums[f * m_Windows + w] / m_Displacements[w] : c_nothing);
    }
  }

private:
  StWindowUnits const& m_Units;
  std::vector<Finish> m_Finishers;
  std::size_t m_Windows = 0;
  std::vector<double> m_Sums;          // feature by feature
  std::vector<double> m_Displacements; // that have pairs
};

class CBand {
public:
  CBand(StWindowBand const& band, StWindowUnits const& units, StWindowMaps const& maps)
      : m_Band(band), m_Maps(maps), m_Tables(units),
        m_Histograms(units, KeyOf(band), NeedsOf(band.features)), m_Means(band, units) {
    for (StPairBox const& box : band.boxes)
      m_Columns.emplace_back(band.pixels, box, KeyOf(band), m_Tables, m_Histograms.AreNeeded());
  }

  // `windows` of each line from the one at `first` on, of `rows` lines of each slice.
  void Block(int64 first, int64 windows, int64 firstRow, int64 rows,
             std::function<void()> const& advance) {
    auto const& [stepX, stepY, stepZ] = m_Band.step;
    Vector const center{m_Band.first[0] + first * stepX, m_Band.first[1] + firstRow * stepY,
                        m_Band.first[2]};
    m_Line.resize(static_cast<std::size_t>(windows));
    for (auto& columns : m_Columns)
      columns.Start(center, (windows - 1) * stepX + columns.PerWindow(), (rows - 1) * stepY);
    for (int64 k = 0; k < m_Band.count[2]; ++k) {
      if (k > 0)
        for (auto& columns : m_Columns) columns.MoveOn(stepZ);
      for (int64 j = 0; j < rows; ++j) {
        if (j > 0)
          for (auto& columns : m_Columns) columns.MoveDown(stepY);
        Line();
        Write(first * m_Maps.stride[0] + (firstRow + j) * m_Maps.stride[1] + k * m_Maps.stride[2]);
        advance();
      }
    }
  }

private:
  void Line() {
    m_Means.Start(m_Line.size());
    for (auto const& columns : m_Columns) {
      m_Histograms.Line(columns, m_Band.step[0], m_Line);
      m_Means.Add(m_Line);
    }
  }
  void Write(int64 at) const {
    auto const stride = m_Maps.stride[0];
    if (m_Maps.doubles) m_Means.Write(m_Maps.doubles + at, stride, m_Maps.featureStride);
    if (m_Maps.floats) m_Means.Write(m_Maps.floats + at, stride, m_Maps.featureStride);
  }

  StWindowBand const& m_Band;
  StWindowMaps const& m_Maps;
  StLinearTables m_Tables;
  std::vector<CPairColumns> m_Columns; // one for each displacement
  CWindowHistograms m_Histograms;
  std::vector<StWindowSums> m_Line;
  CLineMeans m_Means;
};

bool IsEmpty(StWindowBand const& band) noexcept { return std::ranges::count(band.count, 0) > 0; }

} // namespace

int64 LargestSide(StWindowBand const& band, std::size_t axis) noexcept {
  int64 largest = 1;
  for (StPairBox const& box : band.boxes) largest = std::max(largest, box.side[axis]);
  return largest;
}

int64 LinesOf(StWindowBand const& band) noexcept {
  if (IsEmpty(band)) return 0;
  int64 const tile = WindowsPerTile(band);
  return (band.count[0] + tile - 1) / tile * band.count[1] * band.count[2];
}

void ComputeBand(StWindowBand const& band, StWindowUnits const& units, StWindowMaps const& maps,
                 std::function<void()> const& advance) {
  if (IsEmpty(band)) return;
  CBand work(band, units, maps);
  int64 const tile = WindowsPerTile(band), block = RowsPerBlock(band, tile);
  for (int64 first = 0; first < band.count[0]; first += tile)
    for (int64 row = 0; row < band.count[1]; row += block)
      work.Block(first, std::min(tile, band.count[0] - first), row,
                 std::min(block, band.count[1] - row), advance);
}

} // namespace ORVA::Impl
