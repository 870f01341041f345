#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "images/VolumeSource.h"
#include "objects/BoxTextures.h"
#include "objects/ObjectTextures.h"
#include "objects/RegionFeatures.h"
#include "objects/Regions.h"
#include "texture/LevelOptions.h"
#include "texture/Texture.h"

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Texture/ObjectTexture.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace selu {
namespace {

using ORVA::int64;

constexpr std::array<char const*, 3> c_axes = {"x", "y", "z"};

struct StOptions {
  std::string labels, intensity, series, direction, output, csv, features, threads;
  StLevelOptions levels;
  bool box = false, symmetric = false, noTexture = false, relabel = false;
};

// The texture of all regions: so many features each, NaN for a region without pairs.
struct StTextures {
  std::vector<std::string> names;
  std::vector<double> values;

  [[nodiscard]] std::span<double const> Of(std::size_t region) const {
    return std::span(values).subspan(region * names.size(), names.size());
  }
};

// What is asked of a region beside its extent.
struct StAsked {
  int dimension = 3;
  bool hasIntensity = false;
  StGrid grid;
  StTextures const* textures = nullptr;
};

void AddTexture(std::vector<StRegionFeature>& features, std::vector<std::string> const& names,
                std::span<double const> texture) {
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&](std::size_t f) { return std::string_view(names[f]); });
  for (std::size_t const f : order) features.push_back({"texture/" + names[f], texture[f]});
}

// Lengths in the unit of the grid, where the image has one.
void AddPhysical(std::vector<StRegionFeature>& features, StRegion const& region,
                 std::size_t dimension, StGrid const& grid) {
  if (grid == StGrid()) return;
  auto const add = [&](std::string const& name, double value) {
    features.push_back({"physical/" + name, value});
  };
  double voxel = 1;
  for (std::size_t k = 0; k < dimension; ++k) {
    double place = grid.origin[k];
    for (std::size_t i = 0; i < dimension; ++i)
      place += grid.direction[i][k] * grid.spacing[i] * region.Centroid(i);
    add(std::string("centroid ") + c_axes[k], place);
    voxel *= grid.spacing[k];
  }
  for (std::size_t i = 0; i < dimension; ++i)
    add(std::string("extent ") + c_axes[i],
        grid.spacing[i] * static_cast<double>(region.high[i] - region.low[i] + 1));
  add("volume", voxel * static_cast<double>(region.voxels));
}

// In the order of their paths.
std::vector<StRegionFeature> FeaturesOf(StRegion const& region, std::size_t index, int64 label,
                                        bool relabeled, StAsked const& asked) {
  auto const axes = std::span(c_axes).first(static_cast<std::size_t>(asked.dimension));
  std::vector<StRegionFeature> features;
  for (std::size_t i = 0; i < axes.size(); ++i) {
    std::string const box = std::string("bounding box/") + axes[i];
    features.push_back({box + " max", region.high[i]});
    features.push_back({box + " min", region.low[i]});
  }
  for (std::size_t i = 0; i < axes.size(); ++i)
    features.push_back({std::string("centroid/") + axes[i], region.Centroid(i)});
  if (asked.hasIntensity) {
    features.push_back({"intensity/deviation", region.Deviation()});
    features.push_back({"intensity/mean", region.mean});
  }
  if (relabeled) features.push_back({"label", region.label});
  features.push_back({"object", std::to_string(label)});
  AddPhysical(features, region, axes.size(), asked.grid);
  std::span<double const> texture;
  if (asked.textures != nullptr) texture = asked.textures->Of(index);
  bool const tooSmall = !texture.empty() && std::isnan(texture.front()); // all are then
  features.push_back({"status", std::string(tooSmall ? "too small for texture" : "measured")});
  if (asked.textures != nullptr) AddTexture(features, asked.textures->names, texture);
  features.push_back({"volume [px]", region.voxels});
  return features;
}

void WriteRegions(std::vector<StRegion> const& regions, StAsked const& asked, bool relabel,
                  CAtomicFile* json, CAtomicFile* csv) {
  auto const count = static_cast<int64>(regions.size());
  CRegionWriter writer(json, csv, relabel ? count : regions.back().label, regions.size());
  CProgressBar bar("measuring objects", count);
  for (std::size_t index = 0; index < regions.size(); ++index) {
    StRegion const& region = regions[index];
    int64 const label = relabel ? static_cast<int64>(index) + 1 : region.label;
    writer.Add(label, FeaturesOf(region, index, label, relabel, asked));
    bar.Advance();
  }
  writer.Finish();
}

// Those to all neighbors where none is given.
std::vector<Direction> Directions(StOptions const& options, int dimension) {
  if (!options.direction.empty())
    return {ToDirection(ParseDirection(options.direction), dimension)};
  auto const all = std::span(ORVA::CCooccurrence::m_cDirections);
  auto const some =
      all.first(static_cast<std::size_t>(ORVA::CCooccurrence::NumberOfDirections(dimension)));
  return {some.begin(), some.end()};
}

void CheckOptions(StOptions const& options) {
  if (options.output.empty() && options.csv.empty())
    throw CUsageError("give --output for the feature map, --csv for a table, or both");
  if (!options.output.empty() && !options.csv.empty() && IsSameFile(options.output, options.csv))
    throw CUsageError("--output and --csv name the same file, " + Quoted(options.csv));
  bool const texture = !options.intensity.empty() && !options.noTexture;
  bool const hasObjectOptions = options.symmetric || !options.features.empty() ||
                                options.levels.AreGiven() || !options.threads.empty();
  if (!texture && (options.box || hasObjectOptions ||
                   !(options.levels.range.empty() && options.direction.empty())))
    throw CUsageError(
        "--range, --direction and others are for the texture, which needs --intensity");
  if (options.box && hasObjectOptions)
    throw CUsageError("--box measures the 13 features of 256 gray levels: leave out --levels, "
                      "--bin-width, --bin-count, --symmetric, --features and --threads");
  (void)ParseLevels(options.levels);
  (void)ParseThreads(options.threads);
  (void)ParseFeatures(options.features.empty() ? "ibsi" : options.features);
  if (!options.direction.empty()) (void)ParseDirection(options.direction);
}

// The images that are read, opened before the output is.
struct StInputs {
  CVolumeSource labels;
  std::optional<CVolumeSource> intensity;
};

StInputs OpenInputs(StOptions const& options) {
  StInputs inputs{CVolumeSource(OpenImage(options.labels, options.series)), std::nullopt};
  if (options.intensity.empty()) return inputs;
  inputs.intensity.emplace(OpenImage(options.intensity, options.series));
  if (inputs.intensity->Size() != inputs.labels.Size())
    throw CAppError(Quoted(options.labels) + " and " + Quoted(options.intensity) +
                    " have different sizes");
  return inputs;
}

StTextures BoxTextures(StOptions const& options, CVolumeSource& intensity,
                       std::vector<StRegion> const& regions) {
  StBoxTextures wanted{{}, Directions(options, intensity.Size().Dim())};
  if (!options.levels.range.empty()) wanted.range = ParseRange(options.levels.range);
  return {{c_featureNames.begin(), c_featureNames.end()},
          MeasureBoxTextures(intensity, regions, wanted)};
}

// All objects at once, in ascending order of their labels, as the regions come.
StTextures ObjectTextures(StOptions const& options, StInputs& inputs,
                          std::vector<StRegion> const& regions) {
  StObjectTextures wanted{ParseLevels(options.levels), {}, ParseThreads(options.threads)};
  wanted.options.features = ParseFeatures(options.features.empty() ? "ibsi" : options.features);
  wanted.options.isSymmetric = options.symmetric;
  for (auto const& d : Directions(options, inputs.labels.Size().Dim()))
    wanted.options.displacements.emplace_back(d.x, d.y, d.z);
  std::vector<std::string> names;
  for (auto const feature : wanted.options.features) names.emplace_back(ORVA::FeatureName(feature));
  auto values = MeasureTextures(inputs.labels, *inputs.intensity, regions, wanted);
  return {std::move(names), std::move(values)};
}

void Measure(StOptions const& options, StInputs& inputs, CAtomicFile* json, CAtomicFile* csv) {
  auto* const intensity = inputs.intensity ? &*inputs.intensity : nullptr;
  auto const regions = MeasureRegions(inputs.labels, intensity);
  StAsked asked{inputs.labels.Size().Dim(), intensity != nullptr, inputs.labels.Image().Grid(),
                nullptr};
  StTextures textures;
  if (intensity != nullptr && !options.noTexture) {
    textures = options.box ? BoxTextures(options, *intensity, regions)
                           : ObjectTextures(options, inputs, regions);
    asked.textures = &textures;
  }
  WriteRegions(regions, asked, options.relabel, json, csv);
}

std::optional<CAtomicFile> OpenOutput(std::string const& path, StInputs const& inputs) {
  if (path.empty()) return std::nullopt;
  RefuseOverwriting(path, inputs.labels.Image());
  if (inputs.intensity) RefuseOverwriting(path, inputs.intensity->Image());
  return std::optional<CAtomicFile>(std::in_place, path);
}

void Run(StOptions const& options) {
  CheckOptions(options);
  StInputs inputs = OpenInputs(options);
  auto json = OpenOutput(options.output, inputs), csv = OpenOutput(options.csv, inputs);
  Measure(options, inputs, json ? &*json : nullptr, csv ? &*csv : nullptr);
  CommitAll({json ? &*json : nullptr, csv ? &*csv : nullptr});
}

constexpr char c_help[] =
    R"(For each object: "object" (its label as text), "status", "volume [px]", "bounding box" (first and
last coordinate along each axis), "centroid", and with --intensity "intensity" (mean and standard
deviation of its voxels' values as they are) and "texture" (the features of the pairs with both
voxels in the object; without --direction their mean over the directions to the 13 neighbors, in 2D
4, that have a pair). Lengths are in voxels; where the image has a spacing, "physical" has the
centroid in space, the extent of the bounding box along each axis and the volume (in 2D the area) in
the unit of the file, too. Where there is no pair, the texture is NaN and the
status "too small for texture". The levels are made of the whole intensity image.

With --box the texture is that of the object's bounding box, the voxels of others included: the 13
features of 256 gray levels. It takes time in proportion to the boxes together, all else to the
image.

Example:
  selu regions cells-label.nrrd --intensity cells.nrrd --range 0,2000 -o features.json)";

} // namespace

void AddRegionsCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("regions", "Measure the objects of a label image into a feature map");
  command
      ->add_option(
          "LABELS", options->labels,
          "image of whole numbers from 0, the background, to 4294967295; every other number is "
          "an object")
      ->required();
  command->add_option("--intensity", options->intensity,
                      "image of the same size, for mean, deviation and texture");
  command->add_option("--series", options->series, c_seriesHelp);
  command->add_option("--range", options->levels.range,
                      "LO,HI: the intensities that --levels divides, 256 levels when not given");
  AddLevelOptions(*command, options->levels);
  command->add_option("--features", options->features,
                      "ibsi (taken when not given), haralick, or names of features");
  command->add_flag("--symmetric", options->symmetric, "count each pair in both orders");
  command->add_flag("--box", options->box, "the texture of the bounding box, not of the object");
  command->add_option("--threads", options->threads, c_threadsHelp);
  command->add_option(
      "--direction", options->direction,
      "the displacement of the texture in voxels; the mean over all directions to the "
      "neighbors when none is given");
  command->add_flag("--no-texture", options->noTexture, "leave the texture out");
  command->add_option("-o,--output", options->output,
                      "JSON file, for selu feature-image; - for standard output");
  command->add_option("--csv", options->csv,
                      "the same as a table, an object per line; - for standard output");
  command->add_flag("--relabel", options->relabel,
                    "number the objects from 1, and keep the old number as the feature \"label\"");
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
