#include "walks/SolidView.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace selu {
namespace {

using ORVA::int64;
using ORVA::uint64;

// Where a step along x, y and z goes in the picture, in units of a voxel's side as drawn.
constexpr double c_right = 0.8660254037844386, c_down = 0.5; // cosine and sine of 30 degrees
// A side as drawn is longer than one as it is seen from this direction.
constexpr double c_drawnPerSeen = 1.224744871391589; // sqrt(3 / 2)

constexpr double c_cubePixels = 5; // from so many pixels a voxel on, cubes
constexpr float c_noLight = -1;    // not on the voxel

Color Lit(Color const& color, double light) {
  auto const part = [light](double component) { return std::clamp(component * light, 0.0, 1.0); };
  return {part(color.red), part(color.green), part(color.blue)};
}

} // namespace

void StViewFrame::Add(Point const& p) {
  if (isEmpty) origin = p;
  Point const d = p - origin;
  int64 const across = d.x - d.y, down = d.x + d.y + 2 * d.z;
  left = isEmpty ? across : std::min(left, across);
  right = isEmpty ? across : std::max(right, across);
  top = isEmpty ? down : std::min(top, down);
  bottom = isEmpty ? down : std::max(bottom, down);
  isEmpty = false;
}

// A voxel reaches one step across and one side down from its middle.
CSolidView::CSolidView(StViewFrame const& frame, int room) : m_Frame(frame) {
  double const across = static_cast<double>(frame.right - frame.left + 2) * c_right;
  double const down = static_cast<double>(frame.bottom - frame.top) * c_down + 2;
  constexpr double c_mostPixels = 24;
  m_Scale = std::min(room / std::max(across, down), c_mostPixels);
  m_Columns = std::max(1, static_cast<int>(std::ceil(across * m_Scale)));
  m_Rows = std::max(1, static_cast<int>(std::ceil(down * m_Scale)));
  m_Pixels.resize(static_cast<std::size_t>(m_Columns) * static_cast<std::size_t>(m_Rows));
}

void CSolidView::Add(Point const& p, uint64 number) {
  Point const d = p - m_Frame.origin;
  RealPoint const center(
      static_cast<double>(d.x - d.y - m_Frame.left + 1) * c_right * m_Scale,
      (static_cast<double>(d.x + d.y + 2 * d.z - m_Frame.top) * c_down + 1) * m_Scale, 0);
  int64 const nearness = d.x + d.y - d.z;
  auto const limited = [](double value, int most) {
    return std::clamp(static_cast<int>(std::floor(value)), 0, most - 1);
  };
  int const left = limited(center.x - c_right * m_Scale, m_Columns),
            right = limited(center.x + c_right * m_Scale, m_Columns),
            top = limited(center.y - m_Scale, m_Rows), bottom = limited(center.y + m_Scale, m_Rows);
  for (int row = top; row <= bottom; ++row)
    for (int column = left; column <= right; ++column)
      AddPixel(column, row, center, nearness, number);
}

void CSolidView::AddPixel(int column, int row, RealPoint const& center, int64 nearness,
                          uint64 number) {
  auto& pixel = m_Pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_Columns) +
                         static_cast<std::size_t>(column)];
  if (pixel.number != 0 && pixel.nearness >= nearness) return;
  float const light =
      SideLight((column + 0.5 - center.x) / m_Scale, (row + 0.5 - center.y) / m_Scale);
  if (light == c_noLight) return;
  pixel = {number, nearness, light};
}

// Of a cube as drawn, seen from its center: the light of the side that is there.
float CSolidView::SideLight(double right, double down) const {
  bool const isSmall = m_Scale < c_cubePixels;
  double const reach = 0.5 + (isSmall ? 0.5 / m_Scale : 0); // of small ones no pixel is missed
  auto const light = [&](double u, double v, float side) {
    double const edge = std::max(std::abs(u), std::abs(v));
    if (edge > reach) return c_noLight;
    bool const isEdge = !isSmall && edge > 0.5 - 0.6 / m_Scale;
    return isEdge ? side * 0.72F : side;
  };
  // u and v from -1/2 to 1/2 on the top, the side of high x and the side of high y.
  double const half = right / (2 * c_right), up = down + 0.5;
  float const top = light(up + half, up - half, 1.08F);
  if (top != c_noLight) return top;
  double const onX = 0.5 - right / c_right, onY = 0.5 + right / c_right;
  float const side = light(onX, down - c_down * (0.5 + onX), 0.9F);
  return side != c_noLight ? side : light(onY, down - c_down * (onY + 0.5), 0.68F);
}

// How near the surface is, each pixel as the mean over its surroundings that belong to the same
// surface, so that steps of a voxel do not show.
std::vector<float> CSolidView::SmoothNearness() const {
  auto const radius = std::clamp(static_cast<int>(std::lround(2.5 * m_Scale)), 3, 10);
  auto const most = static_cast<double>(4 * radius) / m_Scale;
  std::vector<float> smooth(m_Pixels.size());
  auto const columns = static_cast<std::size_t>(m_Columns);
  for (int row = 0; row < m_Rows; ++row)
    for (int column = 0; column < m_Columns; ++column) {
      auto const at = static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column);
      StPixel const& here = m_Pixels[at];
      double sum = 0, weights = 0;
      for (int y = std::max(row - radius, 0); y <= std::min(row + radius, m_Rows - 1); ++y)
        for (int x = std::max(column - radius, 0); x <= std::min(column + radius, m_Columns - 1);
             ++x) {
          StPixel const& there =
              m_Pixels[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)];
          auto const step = static_cast<double>(there.nearness - here.nearness);
          if (here.number == 0 || there.number == 0 || std::abs(step) > most) continue;
          sum += step;
          ++weights;
        }
      smooth[at] = static_cast<float>(static_cast<double>(here.nearness) +
                                      (weights > 0 ? sum / weights : 0));
    }
  return smooth;
}

// By the slope of the surface toward a lamp at the upper left.
std::vector<float> CSolidView::SurfaceLight() const {
  std::vector<float> const nearness = SmoothNearness();
  std::vector<float> light(nearness.size());
  auto const columns = static_cast<std::size_t>(m_Columns);
  constexpr std::array<double, 3> c_lamp = {-0.42, -0.58, 0.70}; // right, down, toward the viewer
  for (int row = 0; row < m_Rows; ++row)
    for (int column = 0; column < m_Columns; ++column) {
      auto const at = static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column);
      auto const slope = [&](std::size_t step, bool hasBefore, bool hasBehind) {
        bool const before = hasBefore && m_Pixels[at - step].number != 0,
                   behind = hasBehind && m_Pixels[at + step].number != 0;
        double const rise = (behind ? nearness[at + step] : nearness[at]) -
                            (before ? nearness[at - step] : nearness[at]);
        double const width = (before ? 1 : 0) + (behind ? 1 : 0);
        // x + y - z grows by sqrt(3) per voxel toward the viewer.
        return width > 0 ? rise / width * m_Scale * c_drawnPerSeen / std::sqrt(3.0) : 0;
      };
      double const right = -slope(1, column > 0, column + 1 < m_Columns);
      double const down = -slope(columns, row > 0, row + 1 < m_Rows);
      double const length = std::sqrt(right * right + down * down + 1);
      double const cosine = (right * c_lamp[0] + down * c_lamp[1] + c_lamp[2]) / length;
      light[at] = static_cast<float>(0.35 + 0.8 * std::max(cosine, 0.0));
    }
  return light;
}

std::vector<Color> CSolidView::Colors(uint64 last) const {
  bool const isSmall = m_Scale < c_cubePixels;
  std::vector<float> const light = isSmall ? SurfaceLight() : std::vector<float>();
  std::vector<Color> colors;
  colors.reserve(m_Pixels.size());
  for (std::size_t at = 0; at < m_Pixels.size(); ++at) {
    StPixel const& pixel = m_Pixels[at];
    if (pixel.number == 0) {
      colors.push_back(c_paper);
      continue;
    }
    double const share =
        last > 1 ? static_cast<double>(pixel.number - 1) / static_cast<double>(last - 1) : 0;
    // The middle of the ramp: its ends are too light or dark for shades.
    colors.push_back(Lit(SequentialRamp(0.15 + 0.6 * share), isSmall ? light[at] : pixel.light));
  }
  return colors;
}

} // namespace selu
