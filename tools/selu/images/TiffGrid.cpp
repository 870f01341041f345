#include "images/TiffGrid.h"

#include "base/Texts.h"
#include "images/GridText.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace selu {
namespace {

constexpr double c_inch = 25.4, c_centimeter = 10; // in millimeters

double SpacingOf(CTiffFile const& file, ttag_t tag, bool hasUnit) {
  auto const pixels = static_cast<double>(file.Field<float>(tag, 0));
  auto const unit = file.Field<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (!(pixels > 0) || !std::isfinite(pixels)) return 1;
  if (hasUnit) return 1 / pixels;
  if (unit == RESUNIT_NONE) return 1;
  return (unit == RESUNIT_CENTIMETER ? c_centimeter : c_inch) / pixels;
}

} // namespace

std::optional<double> ImageJNumber(std::string_view description, std::string_view key) {
  if (!description.starts_with("ImageJ=")) return std::nullopt;
  while (!description.empty()) {
    auto const end = std::min(description.find('\n'), description.size());
    std::string_view line = description.substr(0, end);
    description.remove_prefix(std::min(end + 1, description.size()));
    if (!line.starts_with(key) || line.substr(key.size(), 1) != "=") continue;
    line.remove_prefix(key.size() + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    auto const numbers = ParseNumbers(line);
    if (numbers && numbers->size() == 1) return numbers->front();
  }
  return std::nullopt;
}

StGrid ReadTiffGrid(CTiffFile const& file) {
  StGrid grid;
  char const* text = nullptr;
  bool const described = TIFFGetField(file.Get(), TIFFTAG_IMAGEDESCRIPTION, &text) == 1;
  std::string_view const description = described ? text : "";
  if (TakeGrid(description, grid)) return grid;
  bool const hasUnit =
      description.starts_with("ImageJ=") && description.find("\nunit=") != std::string_view::npos;
  grid.spacing[0] = SpacingOf(file, TIFFTAG_XRESOLUTION, hasUnit);
  grid.spacing[1] = SpacingOf(file, TIFFTAG_YRESOLUTION, hasUnit);
  grid.spacing[2] = ImageJNumber(description, "spacing").value_or(1);
  return grid;
}

void WriteTiffGrid(CTiffFile const& file, StGrid const& grid, ImageNotes const& notes) {
  if (grid != StGrid()) {
    file.Set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    file.Set(TIFFTAG_XRESOLUTION, c_centimeter / grid.spacing[0]);
    file.Set(TIFFTAG_YRESOLUTION, c_centimeter / grid.spacing[1]);
  }
  std::string const text = GridText(grid, notes);
  if (!text.empty()) file.Set(TIFFTAG_IMAGEDESCRIPTION, text.c_str());
}

} // namespace selu
