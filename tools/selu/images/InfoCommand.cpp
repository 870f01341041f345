#include "Commands.h"
#include "base/Output.h"
#include "base/Table.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "images/Quantize.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>

namespace selu {
namespace {

using Json = nlohmann::ordered_json;

struct StOptions {
  std::string image, series, range, format = "table";
};

std::vector<ORVA::int64> Extents(ORVA::CSize const& size) {
  std::vector<ORVA::int64> extents = {size.x, size.y};
  if (size.Dim() == 3) extents.push_back(size.z);
  return extents;
}

double SurvivingShare(StLevels const& levels) {
  return static_cast<double>(levels.survivors) / static_cast<double>(levels.voxels);
}

// Numbers of any size go into JSON as they are written: as integers or doubles where these hold
// them exactly, which every value of the pixel types does. JSON has no infinite numbers: they
// become the texts "inf" and "-inf".
Json ValueJson(std::string const& text) {
  if (text.empty()) return {};
  Json value = Json::parse(text, nullptr, false);
  return value.is_discarded() ? Json(text) : value;
}

std::string ToJson(StOptions const& options, CRawImage const& image, StLevels const& levels) {
  Json json;
  json["image"] = options.image;
  json["dimension"] = image.Size().Dim();
  json["size"] = Extents(image.Size());
  json["pixel type"] = PixelName(image.Pixel());
  json["least value"] = ValueJson(levels.low);
  json["greatest value"] = ValueJson(levels.high);
  json["distinct values"] = levels.distinct;
  json["voxels"] = levels.voxels;
  json["not a number"] = levels.notNumbers;
  if (levels.quantized) {
    json["surviving voxels"] = levels.survivors;
    json["surviving share"] = SurvivingShare(levels);
    json["gray levels"] = levels.levels;
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ToTable(StOptions const& options, CRawImage const& image, StLevels const& levels) {
  std::vector<std::pair<std::string, std::string>> rows = {
      {"image", Shown(options.image)},
      {"dimension", std::to_string(image.Size().Dim())},
      {"size", Joined(Extents(image.Size()), " x ")},
      {"pixel type", PixelText(image.Pixel())},
      {"values", levels.low.empty() ? "only NaN" : levels.low + " to " + levels.high},
      {"distinct values", std::to_string(levels.distinct)},
  };
  if (levels.notNumbers > 0) rows.emplace_back("NaN voxels", std::to_string(levels.notNumbers));
  if (levels.quantized) {
    rows.emplace_back("surviving voxels", std::to_string(levels.survivors) + " of " +
                                              std::to_string(levels.voxels) + " (" +
                                              Rounded(SurvivingShare(levels) * 100, 4) + " %)");
    rows.emplace_back("gray levels", std::to_string(levels.levels) + " of 256");
  } else {
    rows.emplace_back("surviving voxels", "needs --range LO,HI for this pixel type");
  }
  std::string text;
  for (auto const& [name, value] : rows)
    text += name + std::string(18 - name.size(), ' ') + value + '\n';
  return text;
}

void Run(StOptions const& options) {
  std::optional<StRange> range;
  if (!options.range.empty()) range = ParseRange(options.range);
  CRawImage const image = OpenImage(options.image, options.series).Read();
  auto const warning = CollapseWarning(image, range, options.image);
  StLevels const levels = MeasureLevels(image, range);
  if (!warning.empty()) PrintNote("warning: " + warning);
  PrintOut(options.format == "json" ? ToJson(options, image, levels)
                                    : ToTable(options, image, levels));
}

constexpr char c_help[] =
    R"(Gray levels are the highest byte of unsigned 8, 16 and 32-bit pixels; other pixel types need
--range. A voxel survives this quantization when it is neither clamped by --range (or NaN) nor,
without --range, set to level 0 though its value is above 0. The gray levels counted are the
different ones that the voxels have afterwards.

Example:
  selu info scan.nii.gz --range -200,300)";

} // namespace

void AddInfoCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("info", "What an image holds, and what its texture would see of it");
  command->add_option("IMAGE", options->image, c_imageHelp)->required();
  command->add_option("--series", options->series, c_seriesHelp);
  command->add_option("--range", options->range,
                      "LO,HI: map these values linearly onto the gray levels 0 to 255");
  command->add_option("--format", options->format, "table or json")
      ->check(CLI::IsMember({"table", "json"}))
      ->capture_default_str();
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
