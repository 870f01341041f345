#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/JsonValues.h"
#include "base/Memory.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "objects/Regions.h"
#include "texture/Texture.h"

#include <SeluUtils/Cooccurrence.h>

#include <CLI/CLI.hpp>

#include <cstring>
#include <limits>
#include <memory>
#include <optional>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CSize;
using ORVA::CValueDouble;
using ORVA::CValueLong;
using ORVA::CValueMap;
using ORVA::CValueString;
using ORVA::int64;

constexpr std::array<char const*, 3> c_axes = {"x", "y", "z"};

struct StOptions {
  std::string labels, intensity, range, direction, output;
  bool noTexture = false;
};

// A count of the map, which holds 32 bits.
CValueLong Count(int64 number, std::string const& what) {
  if (number > std::numeric_limits<std::int32_t>::max())
    throw CAppError(what + " " + std::to_string(number) + " is more than a feature map holds");
  return CValueLong(static_cast<std::int32_t>(number));
}

// The texture inside a box of the image, without regard to which of its voxels are the object's.
class CBoxTexture {
public:
  CBoxTexture(CImage gray, Direction const& direction)
      : m_Gray(std::move(gray)), m_Direction(direction) {}

  /// The features; all 0 where the box has no pair of voxels. Gives the number of pairs.
  int64 Measure(StRegion const& region, CValueMap& features) {
    CSize const size = BoxSize(region);
    int64 const pairs = PairsOf(size, m_Direction);
    if (pairs == 0) {
      for (char const* const name : c_featureNames) features.SetEntry(name, CValueDouble(0.0));
    } else {
      CImage const box = Box(region, size);
      m_Cooccurrence.ComputeFeatures(box, &m_Direction, &features);
    }
    return pairs;
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
  Direction m_Direction;
  ORVA::CCooccurrence m_Cooccurrence{"regions", nullptr};
};

CValueMap ToMap(StRegion const& region, int dimension, bool hasIntensity, CBoxTexture* texture) {
  std::string const name = std::to_string(region.label);
  CValueMap map;
  map.SetEntry("object", CValueString(name));
  map.SetEntry("volume [px]", Count(region.voxels, "the volume of object " + name + ":"));
  for (std::size_t axis = 0; axis < static_cast<std::size_t>(dimension); ++axis) {
    std::string const letter = c_axes[axis];
    map.SetEntry("bounding box/" + letter + " min", Count(region.low[axis], "the coordinate"));
    map.SetEntry("bounding box/" + letter + " max", Count(region.high[axis], "the coordinate"));
    map.SetEntry("centroid/" + letter, CValueDouble(region.Centroid(axis)));
  }
  if (hasIntensity) {
    map.SetEntry("intensity/mean", CValueDouble(region.mean));
    map.SetEntry("intensity/deviation", CValueDouble(region.Deviation()));
  }
  std::string status = "measured";
  if (texture != nullptr) {
    CValueMap features;
    if (texture->Measure(region, features) == 0) status = "too small for texture";
    map.SetEntry("texture", features);
  }
  map.SetEntry("status", CValueString(status));
  return map;
}

CValueMap ToMap(std::vector<StRegion> const& regions, int dimension, bool hasIntensity,
                CBoxTexture* texture) {
  constexpr double bytesPerObject = 10e3; // its entries as values, as JSON and as text
  RefuseBeyondMemory(static_cast<double>(regions.size()) * bytesPerObject,
                     "the feature map of " + std::to_string(regions.size()) + " objects");
  std::string const greatest = std::to_string(regions.back().label);
  CValueMap map;
  map.SetEntry("maximum label", Count(regions.back().label, "the label"));
  map.SetEntry("no. of objects", Count(static_cast<int64>(regions.size()), "the number"));
  CProgressBar bar("measuring objects", static_cast<int64>(regions.size()));
  for (StRegion const& region : regions) {
    std::string const label = std::to_string(region.label);
    map.SetEntry("object " + std::string(greatest.size() - label.size(), '0') + label,
                 ToMap(region, dimension, hasIntensity, texture));
    bar.Advance();
  }
  return map;
}

// A direction along x where none is given.
Direction ParseOptionalDirection(StOptions const& options, int dimension) {
  if (options.direction.empty()) return {1, 0, 0};
  return ToDirection(ParseDirection(options.direction), dimension);
}

void CheckOptions(StOptions const& options) {
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
  StInputs inputs{OpenImage(options.labels), std::nullopt};
  if (options.intensity.empty()) return inputs;
  inputs.intensity.emplace(OpenImage(options.intensity));
  if (inputs.intensity->Header().size != inputs.labels.Header().size)
    throw CAppError(Quoted(options.labels) + " and " + Quoted(options.intensity) +
                    " have different sizes");
  return inputs;
}

CBoxTexture MakeTexture(StOptions const& options, CRawImage const& intensity) {
  std::optional<StRange> range;
  if (!options.range.empty()) range = ParseRange(options.range);
  CBoxTexture texture(ToGray(intensity, range, options.intensity),
                      ParseOptionalDirection(options, intensity.Size().Dim()));
  auto const warning = CollapseWarning(intensity, range, options.intensity);
  if (!warning.empty()) PrintNote("warning: " + warning);
  return texture;
}

std::string Measure(StOptions const& options, StInputs& inputs) {
  CRawImage const labels = inputs.labels.Read();
  int const dimension = labels.Size().Dim();
  if (!inputs.intensity)
    return ToJsonText(
        ToMap(MeasureRegions(labels, nullptr, options.labels), dimension, false, nullptr));
  CRawImage const intensity = inputs.intensity->Read();
  std::optional<CBoxTexture> texture;
  if (!options.noTexture) texture.emplace(MakeTexture(options, intensity));
  auto const regions = MeasureRegions(labels, &intensity, options.labels);
  return ToJsonText(ToMap(regions, dimension, true, texture ? &*texture : nullptr));
}

void Run(StOptions const& options) {
  CheckOptions(options);
  StInputs inputs = OpenInputs(options);
  RefuseOverwriting(options.output, inputs.labels);
  if (inputs.intensity) RefuseOverwriting(options.output, *inputs.intensity);
  CAtomicFile file(options.output);
  file.Write(Measure(options, inputs));
  file.Commit();
}

constexpr char c_help[] =
    R"(For each object: "object" (its label as text), "status", "volume [px]", "bounding box" (first and
last coordinate along each axis), "centroid", and with --intensity "intensity" (mean and standard
deviation of its voxels' values as they are) and "texture" (the 13 features inside its bounding
box, the voxels of others included). All lengths are in voxels. Where the box is no longer than
the direction, the texture is 0 and the status "too small for texture". The texture takes time in
proportion to the boxes together, all else to the image.

Example:
  selu regions cells-label.nrrd --intensity cells.nrrd --range 0,2000 -o features.json)";

} // namespace

void AddRegionsCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("regions", "Measure the objects of a label image into a feature map");
  command
      ->add_option("LABELS", options->labels,
                   "image of integers: 0 is the background, every other number an object")
      ->required();
  command->add_option("--intensity", options->intensity,
                      "image of the same size, for mean, deviation and texture");
  command->add_option("--range", options->range,
                      "LO,HI: map these intensities linearly onto the gray levels 0 to 255 of the "
                      "texture");
  command->add_option("--direction", options->direction,
                      "dx,dy,dz (2D: dx,dy), the displacement of the texture in voxels; 1,0,0 when "
                      "none is given");
  command->add_flag("--no-texture", options->noTexture, "leave the texture out");
  command->add_option("-o,--output", options->output, "JSON file, for selu feature-image")
      ->required();
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
