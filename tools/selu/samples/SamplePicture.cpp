#include "samples/SamplePicture.h"

#include "base/Texts.h"
#include "drawing/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace selu {
namespace {

using ORVA::uint64;

constexpr double c_margin = 40;
constexpr Color c_bar = {0.72, 0.83, 0.90};
constexpr Color c_theory = {0.80, 0.28, 0.22};
constexpr Color c_mark = {0.10, 0.45, 0.55};

std::string Grouped(uint64 count) {
  std::string text = std::to_string(count);
  for (int i = static_cast<int>(text.size()) - 3; i > 0; i -= 3)
    text.insert(static_cast<std::size_t>(i), " ");
  return text;
}

void DrawHeading(CPicture& picture, double width, std::string const& title,
                 std::string const& note) {
  picture.TextWithin(c_margin, 38, width - 2 * c_margin, title, {.size = 22, .bold = true});
  picture.Text(c_margin, 66, note, {.size = 13, .color = c_faint});
}

double Real(uint64 count) { return static_cast<double>(count); }

// The histogram in units of its axis: a density, or for discrete values the share of each bin.
class CHistogram {
public:
  explicit CHistogram(CScalarStatistics const& statistics)
      : m_Statistics(statistics), m_IsShare(!statistics.Theory().density) {
    for (std::size_t i = 0; i < Bins(); ++i) m_Highest = std::max(m_Highest, Height(i));
    double const bars = m_Highest;
    for (auto const& point : Theory()) {
      // A density with a pole must not flatten the bars.
      if (std::isfinite(point.second))
        m_Highest = std::max(m_Highest, std::min(point.second, 1.5 * bars));
    }
    m_Highest = m_Highest > 0 ? m_Highest * 1.06 : 1;
  }

  [[nodiscard]] bool IsShare() const { return m_IsShare; }
  [[nodiscard]] std::size_t Bins() const { return m_Statistics.Counts().size(); }
  [[nodiscard]] double Low() const { return m_Statistics.Borders().front(); }
  [[nodiscard]] double High() const { return m_Statistics.Borders().back(); }
  [[nodiscard]] double Highest() const { return m_Highest; }
  [[nodiscard]] double Border(std::size_t i) const { return m_Statistics.Borders()[i]; }
  [[nodiscard]] double Height(std::size_t i) const {
    double const share = Real(m_Statistics.Counts()[i]) / Real(m_Statistics.Count());
    return m_IsShare ? share : share / (Border(i + 1) - Border(i));
  }
  [[nodiscard]] double Expected(std::size_t i) const {
    auto const& cdf = m_Statistics.Theory().cdf;
    return cdf(Border(i + 1)) - cdf(Border(i));
  }
  /// Points of the density's curve; for discrete values the middles of the bins.
  [[nodiscard]] std::vector<std::pair<double, double>> Theory() const {
    std::vector<std::pair<double, double>> points;
    if (m_IsShare) {
      for (std::size_t i = 0; i < Bins(); ++i)
        points.emplace_back((Border(i) + Border(i + 1)) / 2, Expected(i));
      return points;
    }
    constexpr int steps = 1600;
    for (int i = 0; i <= steps; ++i) {
      double const x = Low() + (High() - Low()) * i / steps;
      points.emplace_back(x, m_Statistics.Theory().density(x));
    }
    return points;
  }

private:
  CScalarStatistics const& m_Statistics;
  bool m_IsShare;
  double m_Highest = 0;
};

void DrawTheory(CPicture& picture, CHistogram const& histogram, StBox const& box) {
  auto const x = [&](double value) {
    return box.x + (value - histogram.Low()) / (histogram.High() - histogram.Low()) * box.width;
  };
  auto const y = [&](double value) {
    double const share = std::clamp(value / histogram.Highest(), 0.0, 3.0);
    return box.y + box.height * (1 - share);
  };
  auto const theory = histogram.Theory();
  if (!histogram.IsShare()) {
    std::vector<std::pair<double, double>> points;
    for (auto const& [value, density] : theory)
      if (!std::isnan(density)) points.emplace_back(x(value), y(density));
    picture.Curve(points, box, c_theory, 2);
    return;
  }
  for (std::size_t i = 0; i < theory.size(); ++i)
    if (theory[i].second > 0)
      picture.Line(x(histogram.Border(i)) + 1, y(theory[i].second), x(histogram.Border(i + 1)) - 1,
                   y(theory[i].second), c_theory, 2.5);
}

void DrawBars(CPicture& picture, CHistogram const& histogram, StBox const& box) {
  double const width = box.width / static_cast<double>(histogram.Bins());
  for (std::size_t i = 0; i < histogram.Bins(); ++i) {
    double const height = histogram.Height(i) / histogram.Highest() * box.height;
    picture.Fill({box.x + static_cast<double>(i) * width + 0.5, box.y + box.height - height,
                  width - 1, height},
                 c_bar);
  }
}

void DrawLegend(CPicture& picture, CHistogram const& histogram, double right, double y) {
  StTextStyle const style = {.size = 13};
  std::string const samples = "samples", theory = histogram.IsShare() ? "expected" : "density";
  double x = right - picture.TextWidth(samples, style) - picture.TextWidth(theory, style) - 90;
  picture.Fill({x, y - 6, 18, 12}, c_bar);
  picture.Text(x + 24, y, samples, style);
  x += 24 + picture.TextWidth(samples, style) + 22;
  picture.Line(x, y, x + 18, y, c_theory, 2.5);
  picture.Text(x + 24, y, theory, style);
}

// A hemisphere as pixels: each takes its cell's color, those beyond the disc the paper's.
class CHemisphere {
public:
  CHemisphere(CDirectionStatistics const& statistics, int hemisphere)
      : m_Counts(statistics.Counts(hemisphere)), m_Cells(statistics.Cells()) {
    // Isotropic directions would put this many into a whole cell.
    double const even = Real(statistics.Count()) * 4 / (2 * 3.141592653589793 * Real(Cells()));
    for (int row = 0; row < m_Cells; ++row)
      for (int column = 0; column < m_Cells; ++column) {
        double const part = Part(row, column);
        // A sliver of a cell at the rim would make a great density of a single direction.
        m_Densities.push_back(Real(m_Counts[Index(row, column)]) / (even * std::max(part, 0.1)));
      }
  }

  [[nodiscard]] double Highest() const {
    return *std::max_element(m_Densities.begin(), m_Densities.end());
  }

  [[nodiscard]] std::vector<Color> Pixels(int side, double highest) const {
    std::vector<Color> pixels;
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        double const right = (x + 0.5) / side * 2 - 1, up = 1 - (y + 0.5) / side * 2;
        if (right * right + up * up > 1) {
          pixels.push_back(c_paper);
          continue;
        }
        int const column = std::min(m_Cells - 1, static_cast<int>((right + 1) / 2 * m_Cells));
        int const row = std::min(m_Cells - 1, static_cast<int>((up + 1) / 2 * m_Cells));
        double const density = m_Densities[Index(row, column)];
        pixels.push_back(density > 0 ? SequentialRamp(density / highest) : c_empty);
      }
    return pixels;
  }

private:
  [[nodiscard]] uint64 Cells() const {
    return static_cast<uint64>(m_Cells) * static_cast<uint64>(m_Cells);
  }
  [[nodiscard]] std::size_t Index(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_Cells) +
           static_cast<std::size_t>(column);
  }
  // Which part of a cell lies within the unit circle.
  [[nodiscard]] double Part(int row, int column) const {
    constexpr int fine = 16;
    int inside = 0;
    for (int i = 0; i < fine; ++i)
      for (int j = 0; j < fine; ++j) {
        double const x = (column + (i + 0.5) / fine) / m_Cells * 2 - 1;
        double const y = (row + (j + 0.5) / fine) / m_Cells * 2 - 1;
        inside += x * x + y * y <= 1 ? 1 : 0;
      }
    return inside / (1.0 * fine * fine);
  }

  std::vector<uint64> const& m_Counts;
  int m_Cells;
  std::vector<double> m_Densities; // 1 is isotropic
};

struct StDisc {
  double x, y, radius;
};

void DrawGraticule(CPicture& picture, StDisc const& disc) {
  // Circles at polar angles of 30 and 60 degrees from the pole.
  for (double const cosine : {0.8660254037844386, 0.5})
    picture.Circle(disc.x, disc.y, disc.radius * std::sqrt(1 - cosine), c_hairline, 0.8);
  picture.Line(disc.x - disc.radius, disc.y, disc.x + disc.radius, disc.y, c_hairline, 0.8);
  picture.Line(disc.x, disc.y - disc.radius, disc.x, disc.y + disc.radius, c_hairline, 0.8);
  picture.Circle(disc.x, disc.y, disc.radius, c_faint, 1.2);
  StTextStyle const style = {.size = 12, .align = EnAlign::Center, .color = c_faint};
  picture.Text(disc.x + disc.radius + 14, disc.y, "+x", style);
  picture.Text(disc.x, disc.y - disc.radius - 11, "+y", style);
}

void DrawMean(CPicture& picture, StDisc const& disc, StProjected const& mean) {
  double const x = disc.x + mean.x * disc.radius, y = disc.y - mean.y * disc.radius;
  constexpr double arm = 11;
  // A light rim keeps the mark visible on dark colors.
  for (auto const& [color, width] :
       {std::pair<Color, double>{c_paper, 5}, std::pair<Color, double>{c_mark, 2.2}}) {
    picture.Circle(x, y, 7, color, width);
    picture.Line(x - arm, y, x + arm, y, color, width);
    picture.Line(x, y - arm, x, y + arm, color, width);
  }
}

std::string MeanText(Vector const& mean, double length) {
  if (!(length > 0)) return "no mean direction";
  auto const degrees = [](double radians) {
    return Rounded(std::round(radians * 1800 / 3.141592653589793) / 10 + 0.0, 5);
  };
  double phi = std::atan2(mean.y, mean.x);
  if (phi < 0) phi += 2 * 3.141592653589793;
  return "mean direction: theta " + degrees(std::acos(std::clamp(mean.z / length, -1.0, 1.0))) +
         "\xC2\xB0, phi " + degrees(phi) + "\xC2\xB0; resultant length " + Rounded(length, 3);
}

} // namespace

std::string DrawScalars(CScalarStatistics const& statistics, std::string const& title, uint64 seed,
                        std::string const& ending) {
  constexpr double width = 900, height = 600;
  CPicture picture(width, height, ending);
  CHistogram const histogram(statistics);
  std::string note = Grouped(statistics.Count()) + " samples, seed " + std::to_string(seed);
  if (statistics.Outside() > 0) note += "; " + Grouped(statistics.Outside()) + " beyond the axis";
  DrawHeading(picture, width, title, note);
  StBox const box = {c_margin + 70, 110, width - 2 * c_margin - 80, height - 190};
  DrawBars(picture, histogram, box);
  DrawTheory(picture, histogram, box);
  picture.Line(box.x, box.y + box.height, box.x + box.width, box.y + box.height, c_faint);
  picture.AxisBelow(box, LinearTicks(histogram.Low(), histogram.High(), 8), "value");
  picture.AxisLeft(box, LinearTicks(0, histogram.Highest(), 6),
                   histogram.IsShare() ? "share of the samples" : "density");
  DrawLegend(picture, histogram, box.x + box.width, 66);
  return picture.Finish();
}

std::string DrawDirections(CDirectionStatistics const& statistics, std::string const& title,
                           uint64 seed, std::string const& ending) {
  constexpr double radius = 215, top = 152, width = 1180, height = 2 * radius + top + 60;
  CPicture picture(width, height, ending);
  Vector const mean = statistics.Mean();
  double const length = std::sqrt(mean.x * mean.x + mean.y * mean.y + mean.z * mean.z);
  DrawHeading(picture, width, title,
              Grouped(statistics.Count()) + " directions, seed " + std::to_string(seed) + "; " +
                  MeanText(mean, length));
  std::array<CHemisphere, 2> const halves = {CHemisphere(statistics, 0),
                                             CHemisphere(statistics, 1)};
  double const highest = std::max(halves[0].Highest(), halves[1].Highest());
  constexpr std::array<char const*, 2> names = {"upper hemisphere, z \xE2\x89\xA5 0",
                                                "lower hemisphere, z < 0, seen from above"};
  for (std::size_t i = 0; i < halves.size(); ++i) {
    StDisc const disc = {c_margin + radius + 10 + static_cast<double>(i) * (2 * radius + 60),
                         top + radius, radius};
    picture.Cells({disc.x - radius, disc.y - radius, 2 * radius, 2 * radius}, 430, 430,
                  halves[i].Pixels(430, highest));
    DrawGraticule(picture, disc);
    picture.Text(disc.x, top - 36, names[i], {.size = 14, .align = EnAlign::Center, .bold = true});
    auto const projected = Project(length > 0 ? mean * (1 / length) : mean);
    if (length > 0 && projected.hemisphere == static_cast<int>(i))
      DrawMean(picture, disc, projected);
  }
  picture.ColorBar({width - 130, top + 10, 18, 2 * radius - 20}, SequentialRamp,
                   LinearTicks(0, highest, 6), "density");
  picture.Text(c_margin, height - 22,
               "Equal-area projection; a density of 1 is that of isotropic directions; circles at "
               "30\xC2\xB0 and 60\xC2\xB0 from the pole; the cross marks the mean direction.",
               {.size = 12, .color = c_faint});
  return picture.Finish();
}

} // namespace selu
