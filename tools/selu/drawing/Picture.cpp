#include "drawing/Picture.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Quiet.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include <cairo-svg.h>
#include <cairo.h>
#include <fontconfig/fontconfig.h>

namespace selu {
namespace {

extern "C" cairo_status_t AppendBytes(void* closure, unsigned char const* data,
                                      unsigned int length) {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<char const*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (...) { // no exception may cross Cairo
    return CAIRO_STATUS_NO_MEMORY;
  }
}

void Check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS)
    throw CAppError(std::string("the picture cannot be drawn: ") + cairo_status_to_string(status));
}

std::uint32_t Rgb24(Color color) {
  auto const part = [](double share) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
  };
  return part(color.red) << 16 | part(color.green) << 8 | part(color.blue);
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

// Cells enlarged to whole pixels, so that no viewer blurs them.
Surface CellSurface(int columns, int rows, int scale, std::vector<Color> const& colors) {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns * scale, rows * scale),
                  cairo_surface_destroy);
  Check(cairo_surface_status(surface.get()));
  unsigned char* const data = cairo_image_surface_get_data(surface.get());
  int const stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < rows * scale; ++y) {
    auto* const row =
        reinterpret_cast<std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
    for (int x = 0; x < columns * scale; ++x)
      row[x] = Rgb24(colors[static_cast<std::size_t>(y / scale * columns + x / scale)]);
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

// Bytes of the UTF-8 character that a text begins with, or 0 where there is none that Cairo takes.
std::size_t CharacterBytes(std::string_view text) {
  auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  std::size_t const bytes = byte(0) < 0x80 ? 1 : byte(0) < 0xe0 ? 2 : byte(0) < 0xf0 ? 3 : 4;
  if (bytes > text.size() || (byte(0) >= 0x80 && byte(0) < 0xc0) || byte(0) >= 0xf8) return 0;
  std::uint32_t code = bytes == 1 ? byte(0) : byte(0) & (0x7fu >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3fu);
  }
  constexpr std::array<std::uint32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
  bool const surrogate = code >= 0xd800 && code < 0xe000;
  bool const none = (code >= 0xfdd0 && code < 0xfdf0) || (code & 0xfffe) == 0xfffe;
  return code < least[bytes] || code > 0x10ffff || surrogate || none ? 0 : bytes;
}

// The characters of a text; bytes that are none become question marks.
std::vector<std::string> Characters(std::string_view text) {
  std::vector<std::string> characters;
  while (!text.empty()) {
    std::size_t const bytes = CharacterBytes(text);
    characters.push_back(bytes > 0 ? std::string(text.substr(0, bytes)) : "?");
    text.remove_prefix(std::max<std::size_t>(bytes, 1));
  }
  return characters;
}

// Texts are as wide on every surface; left to itself, Cairo measures those of the surface for which
// it first loaded the font.
void FixFonts(cairo_t* context) {
  std::unique_ptr<cairo_font_options_t, decltype(&cairo_font_options_destroy)> const options(
      cairo_font_options_create(), cairo_font_options_destroy);
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_set_font_options(context, options.get());
}

// Left to begin by itself, the font library tries on without an end where it gets no memory.
void LoadFonts() {
  static bool const isLoaded = [] {
    CQuiet const quiet;
    std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> const fonts(FcInitLoadConfigAndFonts(),
                                                                      FcConfigDestroy);
    return fonts != nullptr && FcConfigSetCurrent(fonts.get()) == FcTrue;
  }();
  if (!isLoaded) throw CAppError("the picture cannot be drawn: the fonts cannot be loaded");
}

} // namespace

struct CPicture::StCairo {
  std::string bytes; // of an SVG while it grows
  bool svg = false;
  Surface surface{nullptr, cairo_surface_destroy};
  Context context{nullptr, cairo_destroy};
};

CPicture::CPicture(double width, double height, std::string const& ending)
    : m_Cairo(std::make_unique<StCairo>()) {
  LoadFonts();
  m_Cairo->svg = ending == ".svg";
  m_Cairo->surface.reset(
      m_Cairo->svg
          ? cairo_svg_surface_create_for_stream(AppendBytes, &m_Cairo->bytes, width, height)
          : cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::ceil(width)),
                                       static_cast<int>(std::ceil(height))));
  Check(cairo_surface_status(m_Cairo->surface.get()));
  m_Cairo->context.reset(cairo_create(m_Cairo->surface.get()));
  Check(cairo_status(m_Cairo->context.get()));
  FixFonts(m_Cairo->context.get());
  Fill({0, 0, width, height}, c_paper);
}

CPicture::~CPicture() = default;

void CPicture::Use(Color color) {
  cairo_set_source_rgb(m_Cairo->context.get(), color.red, color.green, color.blue);
}

void CPicture::Style(StTextStyle const& style) {
  cairo_select_font_face(m_Cairo->context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                         style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(m_Cairo->context.get(), style.size);
}

double CPicture::TextWidth(std::string const& text, StTextStyle const& style) {
  Style(style);
  cairo_text_extents_t extents;
  cairo_text_extents(m_Cairo->context.get(), text.c_str(), &extents);
  return extents.x_advance;
}

void CPicture::Text(double x, double y, std::string const& text, StTextStyle const& style) {
  auto* const context = m_Cairo->context.get();
  double const share = style.align == EnAlign::Left ? 0 : style.align == EnAlign::Center ? 0.5 : 1;
  double const shift = share * TextWidth(text, style);
  cairo_save(context);
  cairo_translate(context, x, y);
  if (style.upwards) cairo_rotate(context, -1.5707963267948966);
  constexpr double halfCapital = 0.36; // of the font's size
  cairo_move_to(context, -shift, halfCapital * style.size);
  Use(style.color);
  cairo_show_text(context, text.c_str());
  cairo_restore(context);
}

void CPicture::TextWithin(double x, double y, double width, std::string const& text,
                          StTextStyle const& style) {
  auto const characters = Characters(text);
  auto const part = [&](std::size_t begin, std::size_t end) {
    std::string joined;
    for (std::size_t i = begin; i < end; ++i) joined += characters[i];
    return joined;
  };
  std::size_t const count = characters.size();
  std::string shown = part(0, count);
  for (std::size_t keep = count; keep > 4 && TextWidth(shown, style) > width;) {
    --keep;
    shown = part(0, keep / 2) + "..." + part(count - (keep - keep / 2), count);
  }
  Text(x, y, shown, style);
}

void CPicture::Line(double x0, double y0, double x1, double y1, Color color, double width) {
  auto* const context = m_Cairo->context.get();
  Use(color);
  cairo_set_line_width(context, width);
  cairo_move_to(context, x0, y0);
  cairo_line_to(context, x1, y1);
  cairo_stroke(context);
}

void CPicture::Curve(std::vector<std::pair<double, double>> const& points, StBox const& clip,
                     Color color, double width) {
  auto* const context = m_Cairo->context.get();
  cairo_save(context);
  cairo_rectangle(context, clip.x, clip.y, clip.width, clip.height);
  cairo_clip(context);
  Use(color);
  cairo_set_line_width(context, width);
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_new_path(context);
  for (auto const& [x, y] : points) cairo_line_to(context, x, y);
  cairo_stroke(context);
  cairo_restore(context);
}

void CPicture::Circle(double x, double y, double radius, Color color, double width) {
  auto* const context = m_Cairo->context.get();
  Use(color);
  cairo_set_line_width(context, width);
  cairo_new_path(context);
  cairo_arc(context, x, y, radius, 0, 6.283185307179586);
  cairo_stroke(context);
}

void CPicture::Fill(StBox const& box, Color color) {
  Use(color);
  cairo_rectangle(m_Cairo->context.get(), box.x, box.y, box.width, box.height);
  cairo_fill(m_Cairo->context.get());
}

void CPicture::Frame(StBox const& box, Color color, double width) {
  Use(color);
  cairo_set_line_width(m_Cairo->context.get(), width);
  cairo_rectangle(m_Cairo->context.get(), box.x, box.y, box.width, box.height);
  cairo_stroke(m_Cairo->context.get());
}

void CPicture::Cells(StBox const& box, int columns, int rows, std::vector<Color> const& colors) {
  auto* const context = m_Cairo->context.get();
  int const scale = std::max(1, static_cast<int>(std::ceil(box.width / columns)));
  Surface const cells = CellSurface(columns, rows, scale, colors);
  cairo_save(context);
  cairo_translate(context, box.x, box.y);
  cairo_scale(context, box.width / (columns * scale), box.height / (rows * scale));
  cairo_set_source_surface(context, cells.get(), 0, 0);
  cairo_rectangle(context, 0, 0, columns * scale, rows * scale);
  cairo_fill(context);
  cairo_restore(context);
}

void CPicture::AxisBelow(StBox const& box, std::vector<StTick> const& ticks,
                         std::string const& title) {
  double const y = box.y + box.height;
  for (auto const& tick : ticks) {
    double const x = box.x + tick.place * box.width;
    Line(x, y, x, y + 5, c_faint);
    Text(x, y + 15, tick.text, {.size = 12, .align = EnAlign::Center, .color = c_faint});
  }
  Text(box.x + box.width / 2, y + 38, title, {.align = EnAlign::Center});
}

void CPicture::AxisLeft(StBox const& box, std::vector<StTick> const& ticks,
                        std::string const& title) {
  for (auto const& tick : ticks) {
    double const y = box.y + (1 - tick.place) * box.height;
    Line(box.x - 5, y, box.x, y, c_faint);
    Text(box.x - 9, y, tick.text, {.size = 12, .align = EnAlign::Right, .color = c_faint});
  }
  Text(box.x - 48, box.y + box.height / 2, title, {.align = EnAlign::Center, .upwards = true});
}

void CPicture::ColorBar(StBox const& box, Color (*ramp)(double) noexcept,
                        std::vector<StTick> const& ticks, std::string const& title) {
  constexpr int steps = 256;
  std::vector<Color> colors;
  for (int i = 0; i < steps; ++i) colors.push_back(ramp(1 - (i + 0.5) / steps));
  Cells(box, 1, steps, colors);
  Frame(box, c_hairline);
  for (auto const& tick : ticks) {
    double const y = box.y + (1 - tick.place) * box.height;
    Line(box.x + box.width, y, box.x + box.width + 5, y, c_faint);
    Text(box.x + box.width + 9, y, tick.text, {.size = 12, .color = c_faint});
  }
  Text(box.x, box.y - 20, title, {});
}

std::string CPicture::Finish() {
  Check(cairo_status(m_Cairo->context.get()));
  if (!m_Cairo->svg)
    Check(cairo_surface_write_to_png_stream(m_Cairo->surface.get(), AppendBytes, &m_Cairo->bytes));
  m_Cairo->context.reset();
  cairo_surface_finish(m_Cairo->surface.get());
  Check(cairo_surface_status(m_Cairo->surface.get()));
  return std::move(m_Cairo->bytes);
}

std::vector<StTick> LinearTicks(double low, double high, int wanted) {
  double const rough = (high - low) / std::max(wanted, 1);
  double const power = std::pow(10, std::floor(std::log10(rough)));
  double const factor = rough / power <= 1   ? 1
                        : rough / power <= 2 ? 2
                        : rough / power <= 5 ? 5
                                             : 10;
  double const step = factor * power;
  std::vector<StTick> ticks;
  // Beyond 2^53 steps from 0, one more step is lost to rounding: no ticks can be told apart there.
  for (double k = std::ceil(low / step); k * step <= high && k + 1 > k; ++k)
    ticks.push_back({(k * step - low) / (high - low), Rounded(k * step + 0.0, 6)}); // no -0
  return ticks;
}

std::optional<int> DigitsToTell(double low, double high) noexcept {
  constexpr int least = 4, most = 7;
  double const magnitude = std::floor(std::log10(std::max(std::abs(low), std::abs(high))));
  for (int digits = least; high > low && digits <= most; ++digits)
    if (high - low >= std::pow(10, magnitude - digits + 1)) return digits;
  return std::nullopt;
}

double LogarithmicShare(double count, double high) noexcept {
  return high > 1 ? std::log(count) / std::log(high) : 1;
}

std::vector<StTick> LogarithmicTicks(double high) {
  std::vector<StTick> ticks;
  // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter): exact, as counts are below 1e22
  for (double count = 1; count <= high; count *= 10) {
    double const place = high > 1 ? LogarithmicShare(count, high) : 0.5;
    // The highest tick is the largest count; a power of ten close below would run into it.
    if (count == high || place < 0.95) ticks.push_back({place, Rounded(count, 10)});
  }
  if (ticks.empty() || ticks.back().text != Rounded(high, 10))
    ticks.push_back({1, Rounded(high, 10)});
  return ticks;
}

CAtomicFile OpenPicture(std::filesystem::path const& path) {
  std::string const ending = EndingOf(path);
  if (ending != ".png" && ending != ".svg")
    throw CAppError("cannot write " + Quoted(path) + ": a picture ends in .png or .svg");
  return CAtomicFile(path);
}

} // namespace selu
