#include "base/Texts.h"
#include "drawing/Picture.h"
#include "texture/Texture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace selu {
namespace {

using ORVA::int64;

// The page, in points.
constexpr double c_margin = 40, c_top = 128;
constexpr double c_mapLeft = 104, c_mapSize = 530;
constexpr double c_barLeft = c_mapLeft + c_mapSize + 18, c_barWidth = 16;
constexpr double c_tableLeft = 790, c_nameWidth = 250, c_columnLeast = 70, c_columnMost = 110;
constexpr double c_thumbGap = 18, c_thumbLeast = 120, c_thumbMost = 200;
constexpr double c_tableBottomGap = 96;
constexpr std::size_t c_mostDirections = 40; // a wider page would not be read

// The counts, and the gray levels to show: all from the least to the greatest that any direction
// uses, or where these are few and scattered, the used ones alone.
class CMatrices {
public:
  CMatrices(StTexture const& texture, std::size_t count)
      : m_Access(texture.matrices.CreateAccess(false)), m_Edges(texture.edges),
        m_Used(static_cast<std::size_t>(texture.matrices.Size().y)) {
    for (std::size_t s = 0; s < count; ++s) Include(static_cast<int64>(s));
    auto const levels = static_cast<int>(m_Used.size());
    for (int level = 0; level < levels; ++level)
      if (m_Used[static_cast<std::size_t>(level)]) m_Levels.push_back(level);
    constexpr std::size_t few = 24;
    if (m_Levels.empty()) m_Levels = {0, levels - 1};
    m_Scattered = m_Levels.size() <= few;
    if (m_Scattered) return;
    int const low = m_Levels.front(), high = m_Levels.back();
    m_Levels.resize(static_cast<std::size_t>(high - low + 1));
    std::iota(m_Levels.begin(), m_Levels.end(), low);
  }

  [[nodiscard]] int Levels() const noexcept { return static_cast<int>(m_Levels.size()); }
  [[nodiscard]] double Most() const noexcept { return m_Most; }

  /// Ticks stand at the middle of their level's cell.
  [[nodiscard]] std::vector<StTick> Ticks() const {
    double const low = m_Levels.front() - 0.5;
    if (!m_Scattered && m_Edges.empty()) return LinearTicks(low, low + Levels(), 6);
    if (!m_Scattered) return LinearTicks(Edge(m_Levels.front()), Edge(m_Levels.back() + 1), 6);
    std::vector<StTick> ticks;
    for (std::size_t k = 0; k < m_Levels.size(); ++k)
      ticks.push_back({(static_cast<double>(k) + 0.5) / Levels(), Name(m_Levels[k])});
    return ticks;
  }

  /// Colors of the levels shown: i to the right, j upwards.
  [[nodiscard]] std::vector<Color> Cells(std::size_t s) const {
    std::vector<Color> colors;
    for (auto j = m_Levels.rbegin(); j != m_Levels.rend(); ++j)
      for (int const i : m_Levels) {
        auto const count = Count(static_cast<int64>(s), i, *j);
        colors.push_back(count == 0 ? c_empty : SequentialRamp(LogarithmicShare(count, m_Most)));
      }
    return colors;
  }

private:
  [[nodiscard]] double Edge(int level) const { return m_Edges[static_cast<std::size_t>(level)]; }
  /// A bin is called by its lower edge.
  [[nodiscard]] std::string Name(int level) const {
    return m_Edges.empty() ? std::to_string(level) : Rounded(Edge(level), 6);
  }

  [[nodiscard]] std::uint32_t Count(int64 s, int64 i, int64 j) const {
    std::uint32_t count = 0;
    std::memcpy(&count,
                m_Access.Base() + s * m_Access.Stride(0) + i * m_Access.Stride(1) +
                    j * m_Access.Stride(2),
                sizeof count);
    return count;
  }

  void Include(int64 s) {
    for (std::size_t i = 0; i < m_Used.size(); ++i)
      for (std::size_t j = 0; j < m_Used.size(); ++j) {
        auto const count = Count(s, static_cast<int64>(i), static_cast<int64>(j));
        if (count == 0) continue;
        m_Used[i] = m_Used[j] = true;
        m_Most = std::max(m_Most, static_cast<double>(count));
      }
  }

  ORVA::CImageAccess m_Access;
  std::vector<double> const& m_Edges;
  std::vector<bool> m_Used;
  std::vector<int> m_Levels;
  bool m_Scattered = false;
  double m_Most = 1;
};

// A column of the table.
struct StColumn {
  std::string name;
  std::vector<double> const* features;
};

std::vector<StColumn> ColumnsOf(StTexture const& texture) {
  if (!texture.aggregation.empty()) return {{texture.aggregation, &texture.aggregated}};
  std::vector<StColumn> columns;
  for (auto const& one : texture.directions)
    if (columns.size() < c_mostDirections)
      columns.push_back({DirectionText(one.direction, texture.size.Dim()), &one.features});
  return columns;
}

// Where things stand for this number of columns and matrices.
struct StLayout {
  StLayout(std::size_t columns, std::size_t count) {
    auto const n = static_cast<double>(columns);
    column = std::clamp(910 / n, c_columnLeast, c_columnMost);
    width = std::ceil(c_tableLeft + c_nameWidth + std::max(column * n, 260.0) + c_margin);
    double const room = width - 2 * c_margin;
    double const thumbs = std::max(static_cast<double>(count) - 1, 1.0);
    thumb = std::clamp(room / thumbs - c_thumbGap, c_thumbLeast, c_thumbMost);
    thumbsInRow = static_cast<std::size_t>((room + c_thumbGap) / (thumb + c_thumbGap));
    thumbTop = c_top + c_mapSize + c_tableBottomGap;
    std::size_t const fullRows = (count - 1 + thumbsInRow - 1) / thumbsInRow;
    auto const rows = static_cast<double>(fullRows);
    height = std::ceil(thumbTop + rows * (thumb + 34) + (rows > 0 ? 16 : -24));
  }
  double column, width, height, thumb, thumbTop;
  std::size_t thumbsInRow;
};

void DrawHeading(CPicture& picture, StTexture const& texture, std::size_t shown, double width) {
  std::vector<int64> extents = {texture.size.x, texture.size.y};
  if (texture.size.Dim() == 3) extents.push_back(texture.size.z);
  std::string text = Joined(extents, " x ") + " voxels, " + PixelText(texture.pixel);
  if (!texture.edges.empty())
    text += ", " + std::to_string(texture.edges.size() - 1) + " levels from values " +
            Rounded(texture.edges.front(), 10) + " to " + Rounded(texture.edges.back(), 10);
  else if (texture.range)
    text += ", gray levels 0 to 255 from values " + Rounded(texture.range->low, 10) + " to " +
            Rounded(texture.range->high, 10);
  if (shown < texture.matrixNames.size())
    text += "; the first " + std::to_string(shown) + " of " +
            std::to_string(texture.matrixNames.size()) + " directions";
  picture.TextWithin(c_margin, 38, width - 2 * c_margin,
                     "Texture of " + Shown(std::filesystem::path(texture.image).filename()),
                     {.size = 24, .bold = true});
  picture.Text(c_margin, 68, text, {.size = 14, .color = c_faint});
}

void DrawMatrix(CPicture& picture, StTexture const& texture, CMatrices const& matrices) {
  StBox const box = {c_mapLeft, c_top, c_mapSize, c_mapSize};
  int const levels = matrices.Levels();
  picture.Text(box.x, box.y - 18,
               texture.matrixNames.front().empty()
                   ? "Co-occurrence in all directions"
                   : "Co-occurrence along " + texture.matrixNames.front(),
               {.size = 15, .bold = true});
  picture.Cells(box, levels, levels, matrices.Cells(0));
  picture.Frame(box, c_hairline);
  auto const ticks = matrices.Ticks();
  std::string const what = texture.edges.empty() ? "gray level " : "gray value (its bin from) ";
  picture.AxisBelow(box, ticks, what + "i of a voxel");
  picture.AxisLeft(box, ticks, what + "j of the voxel displaced from it");
  picture.ColorBar({c_barLeft, c_top, c_barWidth, c_mapSize}, SequentialRamp,
                   LogarithmicTicks(matrices.Most()), "pairs");
}

// One row of the table: each cell's color tells its place between the row's least and greatest,
// where these can be told apart in print.
void DrawFeature(CPicture& picture, std::string const& name, std::vector<StColumn> const& columns,
                 StLayout const& layout, std::size_t feature, StBox const& row) {
  picture.Text(row.x, row.y + row.height / 2, name, {});
  double low = std::numeric_limits<double>::infinity(), high = -low; // of those that are no NaN
  for (auto const& column : columns) {
    low = std::min(low, (*column.features)[feature]);
    high = std::max(high, (*column.features)[feature]);
  }
  auto const digits = DigitsToTell(low, high);
  for (std::size_t s = 0; s < columns.size(); ++s) {
    double const value = (*columns[s].features)[feature];
    StBox const cell = {row.x + c_nameWidth + static_cast<double>(s) * layout.column, row.y,
                        layout.column, row.height};
    double const share = digits && !std::isnan(value) ? (value - low) / (high - low) : 0;
    std::string const text = Rounded(value, digits.value_or(4));
    StTextStyle style = {.size = 11, .align = EnAlign::Center};
    style.size *= std::min(1.0, (cell.width - 4) / picture.TextWidth(text, style));
    picture.Fill({cell.x + 1, cell.y + 1, cell.width - 2, cell.height - 2}, SoftRamp(share));
    picture.Text(cell.x + cell.width / 2, cell.y + cell.height / 2, text, style);
  }
}

void DrawTable(CPicture& picture, StTexture const& texture, std::vector<StColumn> const& columns,
               StLayout const& layout) {
  double const height = c_mapSize / static_cast<double>(std::max<std::size_t>(
                                        texture.featureNames.size(), c_featureNames.size()));
  picture.Text(c_tableLeft, c_top - 18,
               texture.aggregation.empty() ? "Features by direction" : "Features",
               {.size = 15, .bold = true});
  for (std::size_t s = 0; s < columns.size(); ++s)
    picture.Text(c_tableLeft + c_nameWidth + (static_cast<double>(s) + 0.5) * layout.column,
                 c_top - 18, columns[s].name, {.size = 12, .align = EnAlign::Center, .bold = true});
  for (std::size_t f = 0; f < texture.featureNames.size(); ++f)
    DrawFeature(picture, texture.featureNames[f], columns, layout, f,
                {c_tableLeft, c_top + static_cast<double>(f) * height, 0, height});

  if (columns.size() < 2) return;
  double const y = c_top + c_mapSize + 22, x = c_tableLeft + c_nameWidth;
  constexpr int steps = 64;
  std::vector<Color> ramp;
  for (int i = 0; i < steps; ++i) ramp.push_back(SoftRamp((i + 0.5) / steps));
  StTextStyle const note = {.size = 12, .color = c_faint};
  picture.Text(x, y, "least of the row", note);
  double const left = x + picture.TextWidth("least of the row", note) + 10;
  picture.Cells({left, y - 6, 120, 12}, steps, 1, ramp);
  picture.Frame({left, y - 6, 120, 12}, c_hairline);
  picture.Text(left + 130, y, "greatest of the row", note);
}

void DrawThumbnails(CPicture& picture, StTexture const& texture, CMatrices const& matrices,
                    StLayout const& layout, std::size_t shown) {
  for (std::size_t s = 1; s < shown; ++s) {
    std::size_t const rowIndex = (s - 1) / layout.thumbsInRow;
    auto const column = static_cast<double>((s - 1) % layout.thumbsInRow);
    auto const row = static_cast<double>(rowIndex);
    StBox const box = {c_margin + column * (layout.thumb + c_thumbGap),
                       layout.thumbTop + row * (layout.thumb + 34) + 18, layout.thumb,
                       layout.thumb};
    picture.Text(box.x, box.y - 11, texture.matrixNames[s], {.size = 12, .bold = true});
    picture.Cells(box, matrices.Levels(), matrices.Levels(), matrices.Cells(s));
    picture.Frame(box, c_hairline);
  }
}

} // namespace

std::string DrawTexture(StTexture const& texture, std::string const& ending) {
  std::size_t const shown = std::min(texture.matrixNames.size(), c_mostDirections);
  auto const columns = ColumnsOf(texture);
  CMatrices const matrices(texture, shown);
  StLayout const layout(columns.size(), shown);
  CPicture picture(layout.width, layout.height, ending);
  DrawHeading(picture, texture, shown, layout.width);
  DrawMatrix(picture, texture, matrices);
  DrawTable(picture, texture, columns, layout);
  DrawThumbnails(picture, texture, matrices, layout, shown);
  return picture.Finish();
}

} // namespace selu
