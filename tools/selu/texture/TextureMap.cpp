#include "texture/TextureMap.h"

#include "base/Memory.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "drawing/Picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::int64;

// The page, in points.
constexpr double c_margin = 40, c_top = 100, c_panel = 300, c_barWidth = 12, c_barRoom = 110;
constexpr double c_titleHeight = 34;
constexpr int64 c_mostCells = 600; // along each axis of a panel

// A slice of a map, thinned out to what a panel shows.
class CSlice {
public:
  explicit CSlice(CImage const& map) {
    auto const access = map.CreateAccess(false);
    auto const size = map.Size();
    int64 const step = (std::max(size.x, size.y) + c_mostCells - 1) / c_mostCells;
    m_Columns = (size.x + step - 1) / step;
    std::byte const* const base = access.Base() + size.z / 2 * access.Stride(2);
    for (int64 y = 0; y < size.y; y += step)
      for (int64 x = 0; x < size.x; x += step) {
        float value = 0;
        std::memcpy(&value, base + x * access.Stride(0) + y * access.Stride(1), sizeof value);
        m_Values.push_back(value);
        if (std::isnan(value)) continue;
        m_Low = std::min(m_Low, value);
        m_High = std::max(m_High, value);
      }
  }
  [[nodiscard]] int Columns() const noexcept { return static_cast<int>(m_Columns); }
  [[nodiscard]] int Rows() const noexcept { return static_cast<int>(m_Values.size()) / Columns(); }
  [[nodiscard]] bool HasValues() const noexcept { return m_Low <= m_High; }

  [[nodiscard]] std::vector<Color> Colors() const {
    std::vector<Color> colors;
    for (float const value : m_Values)
      colors.push_back(std::isnan(value) ? c_empty : SequentialRamp(Share(value)));
    return colors;
  }
  [[nodiscard]] std::vector<StTick> Ticks() const {
    if (!HasValues()) return {};
    if (!(m_Low < m_High)) return {{0, Rounded(m_Low, 6)}};
    return LinearTicks(m_Low, m_High, 5);
  }

private:
  [[nodiscard]] double Share(double value) const noexcept {
    return m_Low < m_High ? (value - m_Low) / (double{m_High} - m_Low) : 0;
  }

  int64 m_Columns = 1;
  std::vector<float> m_Values;
  float m_Low = std::numeric_limits<float>::infinity(), m_High = -m_Low;
};

void DrawPanel(CPicture& picture, ORVA::EnTextureFeature feature, CSlice const& slice,
               StBox const& box) {
  picture.TextWithin(box.x, box.y - 16, box.width + c_barRoom - 20,
                     std::string(ORVA::FeatureTitle(feature)), {.size = 15, .bold = true});
  picture.Cells(box, slice.Columns(), slice.Rows(), slice.Colors());
  picture.Frame(box, c_hairline);
  if (slice.HasValues())
    picture.ColorBar({box.x + box.width + 12, box.y, c_barWidth, box.height}, SequentialRamp,
                     slice.Ticks(), "");
}

// Rows of a band of maps, map after map, to their places.
void CopyBand(std::vector<CImage>& maps, ORVA::StRowRange const& rows,
              std::span<float const> values) {
  std::size_t const count = values.size() / maps.size();
  auto const size = maps.front().Size();
  int64 const perRow = size.z == 1 ? size.x : size.x * size.y;
  for (std::size_t k = 0; k < maps.size(); ++k) {
    auto const access = maps[k].CreateAccess(true);
    auto* const to = reinterpret_cast<float*>(access.WritableBase()) + rows.low * perRow;
    std::copy_n(values.data() + k * count, count, to);
  }
}

} // namespace

std::vector<CImage> ComputeMaps(ORVA::CTextureWindow& window, ORVA::CLevelImage const& levels,
                                int threads) {
  auto const size = window.MapSize(levels.Size());
  std::size_t const count = window.Features().size();
  auto const voxels =
      static_cast<double>(size.x) * static_cast<double>(size.y) * static_cast<double>(size.z);
  RefuseBeyondMemory(4 * voxels * static_cast<double>(count), "the maps");
  std::vector<CImage> maps;
  for (std::size_t k = 0; k < count; ++k) maps.emplace_back(ORVA::IMAGE_GREY_F, size);

  CProgressBar bar("measuring windows", size.y * size.z);
  window.SetProgressObserver(&bar);
  int64 const rows = size.Dim() == 3 ? size.z : size.y;
  int64 const perRow = size.Dim() == 3 ? size.x * size.y : size.x;
  int64 const parts = std::min<int64>(rows, int64{threads} * 4);
  ForEachPart(threads, parts, [&](int64 part) {
    ORVA::StRowRange const band{rows * part / parts, rows * (part + 1) / parts};
    std::vector<float> values(count * static_cast<std::size_t>((band.high - band.low) * perRow));
    window.Compute(levels, band, values);
    CopyBand(maps, band, values);
  });
  window.SetProgressObserver(nullptr);
  return maps;
}

std::string DrawMaps(StMapTitle const& title, std::span<ORVA::EnTextureFeature const> features,
                     std::span<CImage const> maps, std::string const& ending) {
  auto const columns =
      static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(maps.size()))));
  std::size_t const rows = (maps.size() + columns - 1) / columns;
  auto const size = maps.front().Size();
  double const ratio = static_cast<double>(size.y) / static_cast<double>(size.x);
  double const width = std::clamp(c_panel / std::sqrt(ratio), 60.0, 2 * c_panel);
  double const height = std::clamp(c_panel * std::sqrt(ratio), 60.0, 2 * c_panel);
  double const right = width + c_barRoom, down = height + c_titleHeight + 16;
  CPicture picture(std::max(2 * c_margin + static_cast<double>(columns) * right, 480.0),
                   c_top + static_cast<double>(rows) * down + c_margin / 2, ending);
  picture.TextWithin(c_margin, 36, std::max(static_cast<double>(columns) * right, 400.0),
                     "Texture maps of " + Shown(std::filesystem::path(title.image).filename()),
                     {.size = 22, .bold = true});
  picture.Text(c_margin, 64, title.text, {.size = 13, .color = c_faint});
  for (std::size_t k = 0; k < maps.size(); ++k)
    DrawPanel(picture, features[k], CSlice(maps[k]),
              {c_margin + static_cast<double>(k % columns) * right,
               c_top + static_cast<double>(k / columns) * down + c_titleHeight / 2, width, height});
  return picture.Finish();
}

} // namespace selu
