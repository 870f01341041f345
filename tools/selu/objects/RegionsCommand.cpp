#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "objects/RegionFeatures.h"
#include "objects/Regions.h"
#include "texture/Texture.h"

#include <SeluUtils/Cooccurrence.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CSize;
using ORVA::CValueMap;
using ORVA::int64;

constexpr std::array<char const*, 3> c_axes = {"x", "y", "z"};

struct StOptions {
  std::string labels, intensity, series, range, direction, output, csv;
  bool noTexture = false, relabel = false;
};

using Texture = std::array<double, c_featureNames.size()>;

// The texture inside a box of the image, without regard to which of its voxels are the object's.
class CBoxTexture {
public:
  /// The mean over the directions is taken.
  CBoxTexture(CImage gray, std::vector<Direction> directions)
      : m_Gray(std::move(gray)), m_Directions(std::move(directions)) {}

  /// Nothing where the box has no pair of voxels in any of the directions.
  std::optional<Texture> Measure(StRegion const& region) {
    CSize const size = BoxSize(region);
    std::optional<CImage> box;
    Texture sum = {};
    int count = 0;
    for (Direction direction : m_Directions) {
      if (PairsOf(size, direction) == 0) continue;
      if (!box) box.emplace(Box(region, size));
      CValueMap features;
      m_Cooccurrence.ComputeFeatures(*box, &direction, &features);
      for (std::size_t f = 0; f < sum.size(); ++f)
        sum[f] += features.Entry(c_featureNames[f]).Double();
      ++count;
    }
    if (count == 0) return std::nullopt;
    for (double& value : sum) value /= count;
    return sum;
  }

private:
  [[nodiscard]] CSize BoxSize(StRegion const& region) const {
    auto const extent = [&](std::size_t axis) { return region.high[axis] - region.low[axis] + 1; };
    return m_Gray.Size().Dim() == 2 ? CSize(extent(0), extent(1))
                                    : CSize(extent(0), extent(1), extent(2));
  }

  [[nodiscard]] CImage Box(StRegion const& region, CSize const& size) const {
    CImage box(m_Gray.Type(), size);
    auto const from = m_Gray.CreateAccess(false);
    auto const to = box.CreateAccess(true);
    auto const bytes = static_cast<std::size_t>(size.x * m_Gray.Type().Bytes());
    for (int64 z = 0; z < size.z; ++z)
      for (int64 y = 0; y < size.y; ++y)
        std::memcpy(to.WritableBase() + y * to.Stride(1) + z * to.Stride(2),
                    from.Base() + region.low[0] * from.Stride(0) +
                        (region.low[1] + y) * from.Stride(1) + (region.low[2] + z) * from.Stride(2),
                    bytes);
    return box;
  }

  CImage m_Gray;
  std::vector<Direction> m_Directions;
  ORVA::CCooccurrence m_Cooccurrence{"regions", nullptr};
};

// What is asked of a region beside its extent.
struct StAsked {
  int dimension = 3;
  bool hasIntensity = false;
  CBoxTexture* texture = nullptr;
};

void AddTexture(std::vector<StRegionFeature>& features, std::optional<Texture> const& texture) {
  std::array<std::size_t, c_featureNames.size()> order{};
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [](std::size_t f) { return std::string_view(c_featureNames[f]); });
  for (std::size_t const f : order)
    features.push_back(
        {std::string("texture/") + c_featureNames[f], texture ? (*texture)[f] : 0.0});
}

// In the order of their paths.
std::vector<StRegionFeature> FeaturesOf(StRegion const& region, int64 label, bool relabeled,
                                        StAsked const& asked) {
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
  std::optional<Texture> texture;
  if (asked.texture != nullptr) texture = asked.texture->Measure(region);
  bool const tooSmall = asked.texture != nullptr && !texture;
  features.push_back({"status", std::string(tooSmall ? "too small for texture" : "measured")});
  if (asked.texture != nullptr) AddTexture(features, texture);
  features.push_back({"volume [px]", region.voxels});
  return features;
}

void WriteRegions(std::vector<StRegion> const& regions, StAsked const& asked, bool relabel,
                  CAtomicFile* json, CAtomicFile* csv) {
  auto const count = static_cast<int64>(regions.size());
  CRegionWriter writer(json, csv, relabel ? count : regions.back().label, regions.size());
  CProgressBar bar("measuring objects", count);
  int64 number = 0;
  for (StRegion const& region : regions) {
    int64 const label = relabel ? ++number : region.label;
    writer.Add(label, FeaturesOf(region, label, relabel, asked));
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
  if (!texture && !(options.range.empty() && options.direction.empty()))
    throw CUsageError("--range and --direction are for the texture, which needs --intensity");
  if (!options.range.empty()) (void)ParseRange(options.range);
  if (!options.direction.empty()) (void)ParseDirection(options.direction);
}

// The images that are read, opened before the output is.
struct StInputs {
  COpenImage labels;
  std::optional<COpenImage> intensity;
};

StInputs OpenInputs(StOptions const& options) {
  StInputs inputs{OpenImage(options.labels, options.series), std::nullopt};
  if (options.intensity.empty()) return inputs;
  inputs.intensity.emplace(OpenImage(options.intensity, options.series));
  if (inputs.intensity->Header().size != inputs.labels.Header().size)
    throw CAppError(Quoted(options.labels) + " and " + Quoted(options.intensity) +
                    " have different sizes");
  return inputs;
}

CBoxTexture MakeTexture(StOptions const& options, CRawImage const& intensity) {
  std::optional<StRange> range;
  if (!options.range.empty()) range = ParseRange(options.range);
  CBoxTexture texture(ToGray(intensity, range, options.intensity),
                      Directions(options, intensity.Size().Dim()));
  auto const warning = CollapseWarning(intensity, range, options.intensity);
  if (!warning.empty()) PrintNote("warning: " + warning);
  return texture;
}

void Measure(StOptions const& options, StInputs& inputs, CAtomicFile* json, CAtomicFile* csv) {
  CRawImage const labels = inputs.labels.Read();
  StAsked asked{labels.Size().Dim(), inputs.intensity.has_value(), nullptr};
  if (!inputs.intensity)
    return WriteRegions(MeasureRegions(labels, nullptr, options.labels), asked, options.relabel,
                        json, csv);
  CRawImage const intensity = inputs.intensity->Read();
  std::optional<CBoxTexture> texture;
  if (!options.noTexture) asked.texture = &texture.emplace(MakeTexture(options, intensity));
  WriteRegions(MeasureRegions(labels, &intensity, options.labels), asked, options.relabel, json,
               csv);
}

std::optional<CAtomicFile> OpenOutput(std::string const& path, StInputs const& inputs) {
  if (path.empty()) return std::nullopt;
  RefuseOverwriting(path, inputs.labels);
  if (inputs.intensity) RefuseOverwriting(path, *inputs.intensity);
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
deviation of its voxels' values as they are) and "texture" (the 13 features inside its bounding
box, the voxels of others included; without --direction their mean over the directions to the 13
neighbors, in 2D 4, as far as they fit into the box). All lengths are in voxels. Where the box is
too small for any of the directions, the texture is 0 and the status "too small for texture". The
texture takes time in proportion to the boxes together, all else to the image.

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
  command->add_option("--range", options->range,
                      "LO,HI: map these intensities linearly onto the gray levels 0 to 255 of the "
                      "texture");
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
