// Drawing with Cairo: texts, lines, boxes, cells, axes and color bars on a white page.
//
//   CPicture picture(800, 600, ".png");
//   picture.Text(400, 30, "title", {.size = 20, .align = EnAlign::Center});
//   picture.Cells({60, 60, 500, 500}, 256, 256, colors);
//   std::string bytes = picture.Finish();               // the PNG or SVG file
#pragma once

#include "base/AtomicFile.h"
#include "drawing/Colors.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace selu {

/// A box in points of the page, y downwards.
struct StBox {
  double x, y, width, height;
};

enum class EnAlign { Left, Center, Right };

struct StTextStyle {
  double size = 13;
  EnAlign align = EnAlign::Left;
  Color color = c_ink;
  bool bold = false;
  bool upwards = false; ///< rotated by 90 degrees, from bottom to top
};

/// A tick of an axis: where (0 to 1 along the axis) and what stands there.
struct StTick {
  double place;
  std::string text;
};

/// About `wanted` round numbers between low and high, placed on an axis from low to high.
[[nodiscard]] std::vector<StTick> LinearTicks(double low, double high, int wanted);
/// Powers of ten from 1 to high, placed on a logarithmic axis from 1 to high, and high itself.
[[nodiscard]] std::vector<StTick> LogarithmicTicks(double high);
/// Place of a count from 1 to high on that axis.
[[nodiscard]] double LogarithmicShare(double count, double high) noexcept;

/// Significant digits, 4 to 7, with which the least and the greatest value of a row read
/// differently; nothing where they are closer together than that or equal.
[[nodiscard]] std::optional<int> DigitsToTell(double low, double high) noexcept;

/// Throws CAppError when Cairo fails.
class CPicture {
public:
  /// `ending` is ".png" or ".svg"; a point is a pixel of a PNG.
  CPicture(double width, double height, std::string const& ending);
  CPicture(CPicture const&) = delete;
  CPicture& operator=(CPicture const&) = delete;
  ~CPicture();

  /// (x, y) is the text's middle height, and its left end, center or right end.
  void Text(double x, double y, std::string const& text, StTextStyle const& style = {});
  /// Shortened in the middle to the width; bytes that are no UTF-8 become question marks.
  void TextWithin(double x, double y, double width, std::string const& text,
                  StTextStyle const& style = {});
  [[nodiscard]] double TextWidth(std::string const& text, StTextStyle const& style);
  void Line(double x0, double y0, double x1, double y1, Color color, double width = 1);
  /// Through points (x, y), clipped to the box.
  void Curve(std::vector<std::pair<double, double>> const& points, StBox const& clip, Color color,
             double width);
  void Circle(double x, double y, double radius, Color color, double width = 1);
  void Fill(StBox const& box, Color color);
  void Frame(StBox const& box, Color color, double width = 1);
  /// A grid of cells in sharp colors, rows from the top, row by row.
  void Cells(StBox const& box, int columns, int rows, std::vector<Color> const& colors);
  /// Ticks and their texts below a box, and left of it (upwards).
  void AxisBelow(StBox const& box, std::vector<StTick> const& ticks, std::string const& title);
  void AxisLeft(StBox const& box, std::vector<StTick> const& ticks, std::string const& title);
  /// A ramp from bottom to top with ticks on its right.
  void ColorBar(StBox const& box, Color (*ramp)(double) noexcept, std::vector<StTick> const& ticks,
                std::string const& title);

  /// Ends the drawing; the file's bytes.
  [[nodiscard]] std::string Finish();

private:
  struct StCairo;
  void Use(Color color);
  void Style(StTextStyle const& style);

  std::unique_ptr<StCairo> m_Cairo;
};

/// The file for a picture; throws CAppError for an ending other than .png and .svg, and as
/// CAtomicFile does.
[[nodiscard]] CAtomicFile OpenPicture(std::filesystem::path const& path);

} // namespace selu
