#include "texture/TextureMap.h"

#include "base/Progress.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "drawing/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace selu {
namespace {

using ORVA::int64;

// The page, in points.
constexpr double c_margin = 40, c_top = 100, c_panel = 300, c_barWidth = 12, c_barRoom = 110;
constexpr double c_titleHeight = 34;
constexpr int64 c_mostCells = 600; // along each axis of a panel

int Rows(CMapPanels const& maps, CMapPanels::StPanel const& panel) {
  return static_cast<int>(panel.values.size()) / maps.Columns();
}

double Share(CMapPanels::StPanel const& panel, float value) {
  return panel.low < panel.high ? (double{value} - panel.low) / (double{panel.high} - panel.low)
                                : 0;
}

std::vector<Color> ColorsOf(CMapPanels::StPanel const& panel) {
  std::vector<Color> colors;
  for (float const value : panel.values)
    colors.push_back(std::isnan(value) ? c_empty : SequentialRamp(Share(panel, value)));
  return colors;
}

std::vector<StTick> TicksOf(CMapPanels::StPanel const& panel) {
  if (!(panel.low < panel.high)) return {{0, Rounded(double{panel.low}, 6)}};
  return LinearTicks(double{panel.low}, double{panel.high}, 5);
}

void DrawPanel(CPicture& picture, ORVA::EnTextureFeature feature, CMapPanels const& maps,
               CMapPanels::StPanel const& panel, StBox const& box) {
  picture.TextWithin(box.x, box.y - 16, box.width + c_barRoom - 20,
                     std::string(ORVA::FeatureTitle(feature)), {.size = 15, .bold = true});
  picture.Cells(box, maps.Columns(), Rows(maps, panel), ColorsOf(panel));
  picture.Frame(box, c_hairline);
  if (panel.low <= panel.high)
    picture.ColorBar({box.x + box.width + 12, box.y, c_barWidth, box.height}, SequentialRamp,
                     TicksOf(panel), "");
}

// Pixels of a slice (a row of a flat image).
int64 SlicePixels(ORVA::CSize const& size) { return size.Dim() == 3 ? size.x * size.y : size.x; }

// The maps' slices from `slab.first` up to but not including `slab.last`, map after map.
std::vector<float> ComputeSlab(ORVA::CTextureWindow const& window, CLevelSource& source,
                               ORVA::StRowRange const& slab, int threads) {
  auto const image = source.Size();
  auto const input = window.InputRows(image, slab);
  auto const levels = source.Levels({input.low, input.high, input.low, input.high});
  std::size_t const features = window.Features().size();
  int64 const perSlice = SlicePixels(window.MapSize(image)), slices = slab.high - slab.low;
  std::vector<float> all(features * static_cast<std::size_t>(slices * perSlice));
  int64 const parts = std::min(slices, int64{threads} * 4);
  ForEachPart(threads, parts, [&](int64 part) {
    int64 const first = slices * part / parts, last = slices * (part + 1) / parts;
    auto const count = static_cast<std::size_t>((last - first) * perSlice);
    std::vector<float> some(features * count);
    window.Compute(levels, input.low, image, {slab.low + first, slab.low + last}, some);
    for (std::size_t k = 0; k < features; ++k)
      std::copy_n(some.data() + k * count, count,
                  all.data() + (static_cast<int64>(k) * slices + first) * perSlice);
  });
  return all;
}

} // namespace

void ComputeMaps(ORVA::CTextureWindow& window, CLevelSource& source, int threads,
                 TakeMapSlices const& take) {
  auto const size = window.MapSize(source.Size());
  std::size_t const features = window.Features().size();
  bool const isFlat = size.Dim() == 2;
  int64 const reach = isFlat ? window.Sides().y : window.Sides().z;
  int64 const step = isFlat ? window.Steps().y : window.Steps().z;
  auto const perSlice = static_cast<double>(SlicePixels(size));
  // Twice the maps: those of the threads, and all of them in their order.
  double const bytes = source.BytesPerSlice() * static_cast<double>(step) +
                       8 * perSlice * static_cast<double>(features);
  CProgressBar bar("measuring windows", size.y * size.z);
  window.SetProgressObserver(&bar);
  int64 const halo = reach / step / 2 + 1;
  for (StSlab const& slab : SlabsOf(size, bytes, {halo, halo})) {
    auto const values = ComputeSlab(window, source, {slab.first, slab.last}, threads);
    std::size_t const count = values.size() / features;
    for (std::size_t k = 0; k < features; ++k)
      take(k, slab.first, std::span(values).subspan(k * count, count));
  }
  window.SetProgressObserver(nullptr);
  if (step <= reach) source.RequireVoxels(); // else not every voxel has been looked at
}

StGrid MapGrid(StGrid grid, ORVA::CTextureWindow const& window) {
  auto const first = window.Center(ORVA::CPos(0, 0, 0));
  std::array<int64, 3> const center = {first.x, first.y, first.z};
  std::array<int64, 3> const steps = {window.Steps().x, window.Steps().y, window.Steps().z};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (std::size_t k = 0; k < 3 && center[axis] != 0; ++k)
      grid.origin[k] +=
          grid.direction[axis][k] * grid.spacing[axis] * static_cast<double>(center[axis]);
    grid.spacing[axis] *= static_cast<double>(steps[axis]);
  }
  return grid;
}

CMapPanels::CMapPanels(std::size_t features, ORVA::CSize const& size)
    : m_Size(size), m_Step((std::max(size.x, size.y) + c_mostCells - 1) / c_mostCells),
      m_Columns(static_cast<int>((size.x + m_Step - 1) / m_Step)), m_Panels(features) {}

void CMapPanels::Add(std::size_t feature, int64 first, std::span<float const> values) {
  StPanel& panel = m_Panels[feature];
  int64 y = first; // of the first row
  if (m_Size.Dim() == 3) {
    int64 const middle = m_Size.z / 2, slice = m_Size.x * m_Size.y;
    int64 const last = first + static_cast<int64>(values.size()) / slice;
    if (middle < first || middle >= last) return;
    values = values.subspan(static_cast<std::size_t>((middle - first) * slice),
                            static_cast<std::size_t>(slice));
    y = 0;
  }
  auto const width = static_cast<std::size_t>(m_Size.x), step = static_cast<std::size_t>(m_Step);
  for (; !values.empty(); values = values.subspan(width), ++y) {
    if (y % m_Step != 0) continue;
    for (std::size_t x = 0; x < width; x += step) {
      float const value = values[x];
      panel.values.push_back(value);
      if (std::isnan(value)) continue;
      panel.low = std::min(panel.low, value);
      panel.high = std::max(panel.high, value);
    }
  }
}

std::string DrawMaps(StMapTitle const& title, std::span<ORVA::EnTextureFeature const> features,
                     CMapPanels const& maps, std::string const& ending) {
  auto const columns =
      static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(features.size()))));
  std::size_t const rows = (features.size() + columns - 1) / columns;
  auto const size = maps.Size();
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
  for (std::size_t k = 0; k < features.size(); ++k)
    DrawPanel(picture, features[k], maps, maps.Panels()[k],
              {c_margin + static_cast<double>(k % columns) * right,
               c_top + static_cast<double>(k / columns) * down + c_titleHeight / 2, width, height});
  return picture.Finish();
}

} // namespace selu
