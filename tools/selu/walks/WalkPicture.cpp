#include "walks/WalkPicture.h"

#include "drawing/Picture.h"
#include "walks/SolidView.h"
#include "walks/WalkIdeal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

namespace selu {
namespace {

using ORVA::int64;
using ORVA::uint64;
using Axis = int64 Point::*;
using RealAxis = double RealPoint::*;

constexpr double c_margin = 40;
constexpr double c_top = 110;
constexpr int c_solidRoom = 420; // pixels of a projection in space, and of a view
constexpr Color c_ideal = {0.10, 0.45, 0.55};

// Coordinates of all that a picture shows, both included.
struct StFrame {
  Point low, high;
  bool isEmpty = true;

  void Add(Point const& p) {
    if (isEmpty) low = high = p;
    isEmpty = false;
    for (Axis const axis : {&Point::x, &Point::y, &Point::z}) {
      low.*axis = std::min(low.*axis, p.*axis);
      high.*axis = std::max(high.*axis, p.*axis);
    }
  }
  /// Along an axis; at least 1.
  [[nodiscard]] uint64 Extent(Axis axis) const {
    return static_cast<uint64>(high.*axis) - static_cast<uint64>(low.*axis) + 1;
  }
};

// Rounded and, in an image, moved into it.
Point Framed(RealPoint const& p, std::optional<ORVA::CSize> const& size) {
  auto const rounded = [](double a) {
    return static_cast<int64>(std::floor(std::clamp(a, -9e18, 9e18) + 0.5));
  };
  Point const point(rounded(p.x), rounded(p.y), rounded(p.z));
  if (!size) return point;
  auto const within = [](int64 a, int64 extent) {
    return std::clamp<int64>(a, 0, std::max<int64>(extent - 1, 0));
  };
  return {within(point.x, size->x), within(point.y, size->y), within(point.z, size->z)};
}

struct StPanel {
  Axis across = &Point::x, down = &Point::y;
  RealAxis realAcross = &RealPoint::x, realDown = &RealPoint::y;
  char const *acrossName = "x", *downName = "y";
};
constexpr std::array<StPanel, 3> c_panels = {
    {{&Point::x, &Point::y, &RealPoint::x, &RealPoint::y, "x", "y"},
     {&Point::x, &Point::z, &RealPoint::x, &RealPoint::z, "x", "z"},
     {&Point::y, &Point::z, &RealPoint::y, &RealPoint::z, "y", "z"}}};

// How voxels become squares, the same in all panels.
struct StScale {
  uint64 voxels = 1; // a square stands for so many along each axis
  int pixels = 1;    // sides of a square
};

StScale ScaleOf(StFrame const& frame, bool isFlat) {
  constexpr uint64 mostPixels = 28;
  uint64 const room = isFlat ? 900 : c_solidRoom;
  uint64 extent = std::max(frame.Extent(&Point::x), frame.Extent(&Point::y));
  if (!isFlat) extent = std::max(extent, frame.Extent(&Point::z));
  if (extent > room) return {(extent - 1) / room + 1, 1};
  return {1, static_cast<int>(std::min(room / extent, mostPixels))};
}

// One projection: which point of the walk each square shows.
class CProjection {
public:
  CProjection(StPanel const& panel, StFrame const& frame, StScale const& scale)
      : m_Panel(panel), m_Low(frame.low), m_Scale(scale), m_Columns(Squares(frame, panel.across)),
        m_Rows(Squares(frame, panel.down)),
        m_Order(static_cast<std::size_t>(m_Columns) * static_cast<std::size_t>(m_Rows)) {}

  void Add(Point const& p, uint64 number) {
    std::size_t const column = Square(p, m_Panel.across), row = Square(p, m_Panel.down);
    m_Order[row * static_cast<std::size_t>(m_Columns) + column] = number;
  }

  [[nodiscard]] StPanel const& Panel() const { return m_Panel; }
  [[nodiscard]] int Columns() const { return m_Columns; }
  [[nodiscard]] int Rows() const { return m_Rows; }
  [[nodiscard]] double Width() const { return 1.0 * m_Columns * m_Scale.pixels; }
  [[nodiscard]] double Height() const { return 1.0 * m_Rows * m_Scale.pixels; }

  [[nodiscard]] std::vector<Color> Colors(uint64 last) const {
    std::vector<Color> colors;
    for (uint64 const number : m_Order) {
      double const share =
          last > 1 ? static_cast<double>(number - 1) / static_cast<double>(last - 1) : 0;
      colors.push_back(number > 0 ? SequentialRamp(share) : c_empty);
    }
    return colors;
  }

  /// Where a point of the ideal lines lies in the panel, in squares.
  [[nodiscard]] std::pair<double, double> Place(RealPoint const& p) const {
    auto const place = [&](double a, int64 low) {
      return (a - static_cast<double>(low) + 0.5) / static_cast<double>(m_Scale.voxels);
    };
    return {place(p.*m_Panel.realAcross, m_Low.*m_Panel.across),
            place(p.*m_Panel.realDown, m_Low.*m_Panel.down)};
  }

private:
  [[nodiscard]] int Squares(StFrame const& frame, Axis axis) const {
    return static_cast<int>((frame.Extent(axis) - 1) / m_Scale.voxels + 1);
  }
  [[nodiscard]] std::size_t Square(Point const& p, Axis axis) const {
    return (static_cast<uint64>(p.*axis) - static_cast<uint64>(m_Low.*axis)) / m_Scale.voxels;
  }

  StPanel m_Panel;
  Point m_Low;
  StScale m_Scale;
  int m_Columns, m_Rows;
  std::vector<uint64> m_Order; // the number of the last point there, from 1
};

// Whole coordinates at the middles of their squares.
std::vector<StTick> WholeTicks(int64 low, uint64 extent, uint64 shown, double wanted) {
  double const rough = static_cast<double>(extent) / std::max(wanted, 1.0);
  uint64 step = 1;
  for (uint64 power = 1; static_cast<double>(step) < rough && power < uint64{1} << 59; power *= 10)
    for (uint64 const factor : {1u, 2u, 5u})
      if (static_cast<double>(step) < rough) step = factor * power;
  auto const wide = static_cast<int64>(step);
  int64 const rest = low % wide;
  std::vector<StTick> ticks;
  for (auto offset = static_cast<uint64>(rest > 0 ? wide - rest : -rest); offset < extent;
       offset += step)
    ticks.push_back({(static_cast<double>(offset) + 0.5) / static_cast<double>(shown),
                     std::to_string(static_cast<int64>(static_cast<uint64>(low) + offset))});
  return ticks;
}

double LabelWidth(std::vector<StTick> const& ticks) {
  std::size_t longest = 1;
  for (auto const& tick : ticks) longest = std::max(longest, tick.text.size());
  return 7.5 * static_cast<double>(longest);
}

double LabelWidth(int64 low, int64 high) {
  return LabelWidth({{0, std::to_string(low)}, {1, std::to_string(high)}});
}

// The part of a line inside a box, if any.
struct StSegment {
  double x0, y0, x1, y1;
};
bool ClipTo(StBox const& box, StSegment& s) {
  double first = 0, last = 1;
  double const dx = s.x1 - s.x0, dy = s.y1 - s.y0;
  auto const cut = [&](double way, double low, double high) {
    // low and high: from the line's beginning to the box's two sides.
    if (way == 0) return low <= 0 && high >= 0;
    first = std::max(first, std::min(low / way, high / way));
    last = std::min(last, std::max(low / way, high / way));
    return first <= last;
  };
  if (!cut(dx, box.x - s.x0, box.x + box.width - s.x0)) return false;
  if (!cut(dy, box.y - s.y0, box.y + box.height - s.y0)) return false;
  s = {s.x0 + first * dx, s.y0 + first * dy, s.x0 + last * dx, s.y0 + last * dy};
  return std::isfinite(s.x0) && std::isfinite(s.y0) && std::isfinite(s.x1) && std::isfinite(s.y1);
}

using Curve = std::vector<std::pair<double, double>>;

// A chain of lines as what of it lies inside the box, points closer than a pixel left out.
std::vector<Curve> Visible(std::vector<RealPoint> const& chain, CProjection const& projection,
                           StBox const& box, int pixels) {
  std::vector<Curve> curves;
  auto const place = [&](RealPoint const& p) {
    auto const [across, down] = projection.Place(p);
    return std::pair(box.x + across * pixels, box.y + down * pixels);
  };
  bool goesOn = false;
  std::pair<double, double> from;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    auto const to = place(chain[i]);
    if (i == 0) from = to;
    bool const isShort = std::hypot(to.first - from.first, to.second - from.second) < 0.5;
    if (i == 0 || (isShort && i + 1 < chain.size())) continue;
    StSegment segment = {from.first, from.second, to.first, to.second};
    from = to;
    if (!ClipTo(box, segment)) {
      goesOn = false;
      continue;
    }
    std::pair<double, double> const begin(segment.x0, segment.y0), end(segment.x1, segment.y1);
    if (!goesOn || curves.back().back() != begin) curves.push_back({begin});
    curves.back().push_back(end);
    goesOn = true;
  }
  return curves;
}

void DrawIdeal(CPicture& picture, StWalk const& walk, CProjection const& projection,
               StBox const& box, int pixels) {
  double const width = std::clamp(pixels / 8.0, 0.6, 2.0);
  // Lines along the panel's border keep their full width.
  StBox const clip = {box.x - 3, box.y - 3, box.width + 6, box.height + 6};
  std::vector<Curve> curves;
  for (auto const& chain : walk.ideal)
    for (auto& curve : Visible(chain, projection, box, pixels)) curves.push_back(std::move(curve));
  // A light rim keeps the line visible on dark colors.
  if (pixels >= 6)
    for (auto const& curve : curves) picture.Curve(curve, clip, c_paper, width + 2);
  for (auto const& curve : curves) picture.Curve(curve, clip, c_ideal, width);
}

void DrawGrid(CPicture& picture, CProjection const& projection, StBox const& box, int pixels) {
  if (pixels >= 6) {
    for (int i = 1; i < projection.Columns(); ++i)
      picture.Line(box.x + i * pixels, box.y, box.x + i * pixels, box.y + box.height, c_hairline,
                   0.6);
    for (int i = 1; i < projection.Rows(); ++i)
      picture.Line(box.x, box.y + i * pixels, box.x + box.width, box.y + i * pixels, c_hairline,
                   0.6);
  }
  picture.Frame(box, c_faint, 0.8);
}

void DrawAxes(CPicture& picture, CProjection const& projection, StBox const& box,
              StFrame const& frame, StScale const& scale) {
  StPanel const& panel = projection.Panel();
  auto const ticks = [&](Axis axis, int squares, double wanted) {
    return WholeTicks(frame.low.*axis, frame.Extent(axis),
                      static_cast<uint64>(squares) * scale.voxels, wanted);
  };
  double const label = LabelWidth(frame.low.*panel.across, frame.high.*panel.across) + 14;
  picture.AxisBelow(box,
                    ticks(panel.across, projection.Columns(), std::min(10.0, box.width / label)),
                    panel.acrossName);
  double widest = 0;
  for (auto const& tick : ticks(panel.down, projection.Rows(), std::min(10.0, box.height / 26))) {
    double const y = box.y + tick.place * box.height;
    StTextStyle const style = {.size = 12, .align = EnAlign::Right, .color = c_faint};
    picture.Line(box.x - 5, y, box.x, y, c_faint);
    picture.Text(box.x - 9, y, tick.text, style);
    widest = std::max(widest, picture.TextWidth(tick.text, style));
  }
  picture.Text(box.x - widest - 24, box.y + box.height / 2, panel.downName,
               {.align = EnAlign::Center});
}

// The voxels, and below them where the axes go.
void DrawView(CPicture& picture, CSolidView const& view, std::pair<double, double> const& corner,
              uint64 last) {
  auto const [x, y] = corner;
  picture.Cells({x, y, 1.0 * view.Columns(), 1.0 * view.Rows()}, view.Columns(), view.Rows(),
                view.Colors(last));
  constexpr double c_arm = 22;
  double const originX = x + c_arm + 6, originY = y + view.Rows() + 22;
  constexpr std::array<std::tuple<double, double, char const*>, 3> c_arms = {
      {{0.866, 0.5, "x"}, {-0.866, 0.5, "y"}, {0, 1, "z"}}};
  for (auto const& [right, down, name] : c_arms) {
    picture.Line(originX, originY, originX + right * c_arm, originY + down * c_arm, c_faint);
    picture.Text(originX + right * (c_arm + 9), originY + down * (c_arm + 9), name,
                 {.size = 12, .align = EnAlign::Center, .color = c_faint});
  }
}

std::string Plural(uint64 count, char const* one) {
  return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string FootNote(StWalk const& walk, StScale const& scale) {
  std::string const side = std::to_string(scale.voxels);
  std::string text = scale.voxels == 1 ? "A square is a voxel"
                     : walk.dimension == 2
                         ? "A pixel is " + side + " x " + side + " voxels"
                         : "A pixel is " + side + " x " + side + " x " + side + " voxels";
  return text + "; the last one of the walk is on top.";
}

double LeftOf(CProjection const& projection, StFrame const& frame) {
  auto const label = [&](Axis axis) { return LabelWidth(frame.low.*axis, frame.high.*axis); };
  return std::max(label(projection.Panel().down) + 50, label(projection.Panel().across) / 2 + 10);
}

// Both passes over the walk.
struct StShown {
  StFrame frame = {};
  StScale scale = {};
  StCounts counts = {};
  std::vector<CProjection> projections = {};
  std::optional<CSolidView> view = {};
};

StShown Project(StWalk const& walk, std::optional<ORVA::CSize> const& size) {
  StShown shown;
  StViewFrame viewed;
  shown.counts = ForEachBlock(walk, size, "measuring the picture", [&](auto points) {
    for (auto const& p : points) {
      shown.frame.Add(p);
      if (walk.isSolid) viewed.Add(p);
    }
  });
  for (auto const& chain : walk.ideal)
    for (auto const& p : chain) shown.frame.Add(Framed(p, size));
  bool const isFlat = walk.dimension == 2;
  shown.scale = ScaleOf(shown.frame, isFlat);
  for (std::size_t i = 0; i < (isFlat ? 1u : c_panels.size()); ++i)
    shown.projections.emplace_back(c_panels[i], shown.frame, shown.scale);
  if (!viewed.isEmpty) shown.view.emplace(viewed, c_solidRoom);
  uint64 number = 0;
  ForEachBlock(walk, size, "drawing the picture", [&](auto points) {
    for (auto const& p : points) {
      ++number;
      for (auto& projection : shown.projections) projection.Add(p, number);
      if (shown.view) shown.view->Add(p, number);
    }
  });
  return shown;
}

// Room for the panels side by side and the color bar behind them.
struct StPage {
  double width = 0, height = 0, barHeight = 0;
};

StPage PageOf(StShown const& shown) {
  double width = c_margin, height = 0;
  for (auto const& projection : shown.projections) {
    width += LeftOf(projection, shown.frame) + projection.Width();
    height = std::max(height, projection.Height());
  }
  if (shown.view) {
    width += c_margin + shown.view->Columns();
    height = std::max(height, 1.0 * shown.view->Rows());
  }
  double const digits = static_cast<double>(std::to_string(shown.counts.points).size());
  double const barHeight = std::clamp(height, 80.0, 240.0);
  return {std::ceil(std::max(width + 80 + 7.5 * digits, 560.0)), // whole pixels
          std::max(height, barHeight), barHeight};
}

// Not where the lines would hide the voxels, nor where doubles no longer tell voxels apart.
bool ShowsIdeal(StShown const& shown) {
  constexpr int64 farthest = int64{1} << 45;
  auto const isNear = [](Point const& p) {
    return std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)}) < farthest;
  };
  return shown.scale.pixels > 1 && isNear(shown.frame.low) && isNear(shown.frame.high);
}

void DrawHeading(CPicture& picture, double width, std::string const& title,
                 std::string const& note) {
  picture.TextWithin(c_margin, 38, width - 2 * c_margin, title, {.size = 20, .bold = true});
  picture.TextWithin(c_margin, 66, width - 2 * c_margin, note, {.size = 13, .color = c_faint});
}

// What the axes of a profile show.
struct StPlotRange {
  double from = 0, to = 1, low = 0, high = 0;
};

StPlotRange RangeOf(StProfile const& profile) {
  StPlotRange range;
  bool isFirst = true;
  for (auto const& [distance, value] : profile.points) {
    if (!std::isfinite(value)) continue;
    if (isFirst) range = {distance, distance, value, value};
    isFirst = false;
    range.from = std::min(range.from, distance);
    range.to = std::max(range.to, distance);
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
  }
  if (!(range.to > range.from)) range.to = range.from + 1;
  bool const differ = DigitsToTell(range.low, range.high).has_value();
  double const room =
      differ ? range.high / 25 - range.low / 25 : std::max(1.0, std::abs(range.low) / 100);
  range.low -= room;
  range.high += room;
  return range;
}

std::vector<Curve> Curves(StProfile const& profile, StPlotRange const& range, StBox const& box) {
  std::vector<Curve> curves(1);
  for (auto const& [distance, value] : profile.points) {
    // In halves, as the difference of two doubles may be infinite.
    double const share = (value / 2 - range.low / 2) / (range.high / 2 - range.low / 2);
    if (std::isfinite(share))
      curves.back().emplace_back(box.x +
                                     (distance - range.from) / (range.to - range.from) * box.width,
                                 box.y + (1 - share) * box.height);
    else if (!curves.back().empty())
      curves.emplace_back();
  }
  return curves;
}

} // namespace

std::string DrawWalk(StWalk const& walk, std::optional<ORVA::CSize> const& size,
                     std::string const& ending) {
  StShown const shown = Project(walk, size);
  uint64 const last = shown.counts.points;
  StPage const page = PageOf(shown);
  CPicture picture(page.width, c_top + page.height + 90, ending);
  std::string note = Plural(last, "point");
  if (shown.counts.outside > 0)
    note += "; " + std::to_string(shown.counts.outside) + " outside the image left out";
  DrawHeading(picture, page.width, walk.title, note);
  double left = 0;
  for (auto const& projection : shown.projections) {
    left += LeftOf(projection, shown.frame);
    StBox const box = {std::round(left), c_top, projection.Width(), projection.Height()};
    picture.Cells(box, projection.Columns(), projection.Rows(), projection.Colors(last));
    DrawGrid(picture, projection, box, shown.scale.pixels);
    if (ShowsIdeal(shown)) DrawIdeal(picture, walk, projection, box, shown.scale.pixels);
    DrawAxes(picture, projection, box, shown.frame, shown.scale);
    left += projection.Width();
  }
  if (shown.view) {
    left += c_margin;
    DrawView(picture, *shown.view, {std::round(left), c_top}, last);
    left += shown.view->Columns();
  }
  if (last > 1)
    picture.ColorBar({left + 36, c_top, 18, page.barHeight}, SequentialRamp,
                     {{0, "1"}, {1, std::to_string(last)}}, "order");
  picture.Text(c_margin, c_top + page.height + 68, FootNote(walk, shown.scale),
               {.size = 12, .color = c_faint});
  return picture.Finish();
}

std::string DrawProfile(StProfile const& profile, std::string const& ending) {
  constexpr double width = 900, height = 560;
  CPicture picture(width, height, ending);
  DrawHeading(picture, width, profile.title, Plural(profile.points.size(), "point"));
  StBox const box = {c_margin + 80, c_top, width - 2 * c_margin - 90, height - c_top - 80};
  StPlotRange const range = RangeOf(profile);
  picture.Frame(box, c_hairline);
  // Marks on the border show whole.
  StBox const clip = {box.x - 4, box.y - 4, box.width + 8, box.height + 8};
  constexpr std::size_t mostMarks = 200;
  bool const hasMarks = profile.points.size() <= mostMarks;
  for (auto const& curve : Curves(profile, range, box)) {
    picture.Curve(curve, clip, c_ideal, 1.6);
    for (std::size_t i = 0; i < curve.size() && (hasMarks || curve.size() == 1); ++i)
      picture.Fill({curve[i].first - 2.5, curve[i].second - 2.5, 5, 5}, c_ideal);
  }
  picture.AxisBelow(box, LinearTicks(range.from, range.to, 8), profile.distanceName);
  picture.AxisLeft(box, LinearTicks(range.low, range.high, 6), "");
  picture.Text(c_margin - 14, box.y + box.height / 2, "value",
               {.align = EnAlign::Center, .upwards = true});
  return picture.Finish();
}

} // namespace selu
