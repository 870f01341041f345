#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Output.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "drawing/Picture.h"
#include "images/Directions.h"
#include "images/VolumeSource.h"
#include "texture/GrayTexture.h"
#include "texture/LevelTexture.h"
#include "texture/Texture.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <span>

namespace selu {
namespace {

using ORVA::CCooccurrence;
using ORVA::CSize;
using ORVA::int64;

struct StOptions {
  std::string image, series, format = "table", matrix, features, aggregate, threads;
  std::vector<std::string> directions, distances, pictures;
  StLevelOptions levels;
  bool all = false, symmetric = false;

  /// Whether the 256 gray levels and the thirteen features are asked for.
  [[nodiscard]] bool IsGiven() const {
    return features == "selu" ||
           (features.empty() && aggregate.empty() && !symmetric && !levels.AreGiven());
  }
};

// What the command line says, judged before any file is opened.
struct StAsked {
  std::vector<StGivenDirection> directions;
  std::vector<int64> distances;
  std::optional<StRange> range;
  StLevelRecipe recipe;
  std::optional<ORVA::EnAggregation> way;
  StCounting counting;
};

ORVA::EnAggregation ParseWay(std::string const& text) {
  if (auto const way = ORVA::AggregationFromName(text)) return *way;
  throw CUsageError("--aggregate knows no " + QuotedPart(text) +
                    ", but 2D_avg, 2D_comb, 2_5D_avg, 2_5D_comb, 3D_avg and 3D_comb");
}

std::vector<int64> ParseDistances(std::vector<std::string> const& texts) {
  std::vector<int64> distances;
  for (auto const& text : texts) {
    auto const numbers = ParseIntegers(text);
    if (!numbers) throw CUsageError("--distance needs whole numbers, not \"" + text + "\"");
    for (int64 const number : *numbers) {
      if (number < 1 || number > INT32_MAX)
        throw CUsageError("--distance needs numbers from 1 to 2147483647, not \"" + text + "\"");
      distances.push_back(number);
    }
  }
  return distances;
}

void CheckTogether(StOptions const& options) {
  if (options.features == "selu" &&
      (options.symmetric || !options.aggregate.empty() || options.levels.AreGiven()))
    throw CUsageError("--features selu are those of 256 gray levels as counted: leave out "
                      "--levels, --bin-width, --bin-count, --mask, --symmetric and --aggregate, "
                      "or take ibsi or haralick");
}

StAsked Parse(StOptions const& options) {
  CheckTogether(options);
  StAsked asked;
  if (!options.levels.range.empty()) asked.range = ParseRange(options.levels.range);
  for (auto const& text : options.directions) asked.directions.push_back(ParseDirection(text));
  asked.distances = ParseDistances(options.distances);
  asked.recipe = ParseLevels(options.levels);
  asked.counting.threads = ParseThreads(options.threads);
  asked.counting.isSymmetric = options.symmetric;
  asked.counting.keepsMatrices = !(options.matrix.empty() && options.pictures.empty());
  if (!options.aggregate.empty()) asked.way = ParseWay(options.aggregate);
  if (!options.IsGiven())
    asked.counting.features = ParseFeatures(options.features.empty() ? "ibsi" : options.features);
  return asked;
}

Direction Times(Direction const& direction, int64 distance) {
  return {direction.x * distance, direction.y * distance, direction.z * distance};
}

// The directions to the neighbors, so many times as long, that fit; a note names those that do not.
std::vector<Direction> FittingDirections(CSize const& size, std::vector<int64> const& distances) {
  std::vector<Direction> directions;
  std::string left;
  auto const count = static_cast<std::size_t>(CCooccurrence::NumberOfDirections(size.Dim()));
  for (int64 const distance : distances)
    for (Direction const& one : std::span(CCooccurrence::m_cDirections).first(count)) {
      Direction const d = Times(one, distance);
      if (PairsOf(size, d) > 0)
        directions.push_back(d);
      else
        left += (left.empty() ? "" : " ") + DirectionText(d, size.Dim());
    }
  bool const areNeighbors = distances == std::vector<int64>{1};
  if (directions.empty())
    throw CAppError(areNeighbors ? "the image has no two voxels that are neighbors"
                                 : "the image has no two voxels as far apart as --distance asks");
  if (!left.empty())
    PrintNote(std::string("note: the image is ") + (areNeighbors ? "one voxel" : "too") +
              " thin, so these directions are left out: " + left);
  return directions;
}

std::vector<Direction> FitDirections(StOptions const& options, StAsked const& asked,
                                     CSize const& size) {
  auto const distances = asked.distances.empty() ? std::vector<int64>{1} : asked.distances;
  std::vector<Direction> directions;
  for (auto const& one : asked.directions)
    for (int64 const distance : distances) {
      Direction const direction = Times(FitDirection(one, size), distance);
      if (PairsOf(size, direction) == 0)
        throw CAppError("the direction " + DirectionText(direction, size.Dim()) +
                        " is as long as the image or longer");
      directions.push_back(direction);
    }
  if (!asked.directions.empty() && !options.all) return directions;
  for (Direction const& one : FittingDirections(size, distances)) directions.push_back(one);
  return directions;
}

// Those of an aggregation: none where its own do. Others lead nowhere where they do not fit.
std::vector<Direction> AggregatedDirections(StOptions const& options, StAsked const& asked,
                                            CSize const& size) {
  if (asked.directions.empty() && asked.distances.empty()) return {};
  auto directions = FitDirections(options, asked, size);
  bool const isFlat =
      *asked.way != ORVA::EnAggregation::Average3D && *asked.way != ORVA::EnAggregation::Combine3D;
  if (!isFlat) return directions;
  if (asked.directions.empty())
    std::erase_if(directions, [](Direction const& one) { return one.z != 0; });
  for (auto const& one : directions)
    if (one.z != 0)
      throw CAppError("the direction " + DirectionText(one, 3) + " leaves the slice, but " +
                      options.aggregate + " stays in it");
  if (directions.empty()) throw CAppError("no direction that fits lies in the slices");
  return directions;
}

std::optional<CAtomicFile> OpenMatrix(StOptions const& options, COpenImage const& image) {
  if (options.matrix.empty()) return std::nullopt;
  CheckImageOutput(options.matrix, ORVA::IMAGE_GREY_32, 3);
  RefuseOverwriting(options.matrix, image);
  return std::optional<CAtomicFile>(std::in_place, options.matrix);
}

std::vector<CAtomicFile> OpenPictures(StOptions const& options, COpenImage const& image) {
  std::vector<CAtomicFile> pictures;
  for (auto const& path : options.pictures) {
    RefuseOverwriting(path, image);
    pictures.push_back(OpenPicture(path));
  }
  return pictures;
}

std::string Formatted(StOptions const& options, StTexture const& texture) {
  if (options.format == "json") return ToJson(texture);
  if (options.format == "csv") return ToCsv(texture);
  return ToTable(texture, OutputColumns());
}

// The features of levels that were made on purpose.
void Measure(StTexture& texture, StOptions const& options, StAsked& asked, CVolumeSource& image) {
  auto& counting = asked.counting;
  counting.directions = asked.way ? AggregatedDirections(options, asked, texture.size)
                                  : FitDirections(options, asked, texture.size);
  auto mask = OpenMask(options.levels, image.Image());
  CLevelSource source(image, mask ? &*mask : nullptr, asked.recipe);
  int const most = options.pictures.empty() ? c_mostMatrixLevels : c_mostPictureLevels;
  if (counting.keepsMatrices && source.Count() > most)
    throw CAppError(std::string(options.pictures.empty() ? "--matrix holds" : "--picture shows") +
                    " up to " + std::to_string(most) + " levels, not " +
                    std::to_string(source.Count()));
  if (asked.way) return Aggregate(texture, source, counting, *asked.way);
  CountDirections(texture, source, counting);
}

void Run(StOptions const& options) {
  StAsked asked = Parse(options);
  StTexture texture;
  texture.image = options.image;
  texture.range = asked.range;
  CVolumeSource image(OpenImage(options.image, options.series));
  texture.size = image.Size();
  texture.pixel = image.Pixel();
  if (options.IsGiven()) asked.counting.directions = FitDirections(options, asked, texture.size);
  auto matrix = OpenMatrix(options, image.Image());
  auto pictures = OpenPictures(options, image.Image());

  auto const& counting = asked.counting;
  if (options.IsGiven())
    ComputeGray(texture, image,
                {texture.range, counting.directions, counting.keepsMatrices, counting.threads});
  else
    Measure(texture, options, asked, image);

  if (matrix) WriteImage(*matrix, texture.matrices);
  for (auto& picture : pictures) picture.Write(DrawTexture(texture, EndingOf(picture.Target())));
  std::string const text = Formatted(options, texture);
  std::vector<CAtomicFile*> files = {matrix ? &*matrix : nullptr};
  for (auto& picture : pictures) files.push_back(&picture);
  CommitAll(files, [&] { PrintOut(text); });
}

constexpr char c_help[] =
    R"(Gray levels are the highest byte of unsigned 8, 16 and 32-bit pixels. Signed and floating-point
pixels need --range LO,HI: LO becomes 0, HI 255, values beyond are clamped.

With --levels, --bin-width, --bin-count, --mask, --symmetric, --aggregate or --features, levels are
made on purpose, 1 to n, of integers and floating-point numbers, and have the features of IBSI
(--features ibsi, the default then), of Haralick's paper (haralick), or those that are named, such
as contrast,joint_entr. A value on an edge belongs to the bin above it; values beyond --range are
clamped; pairs with a voxel off the mask, or NaN, do not count. --aggregate makes one value of all
directions; --matrix and --picture then show the matrices that it takes, added up over the slices
and, where the way ends in comb, over the directions. A feature without any pair is NaN (null in
JSON).

Coming from another tool, for the same values:
  scikit-image  graycomatrix(a, [1], [0], 256, symmetric=True) is --levels 256 --direction 1,0
                --symmetric; pi/4 is 1,1 (y runs downwards). ASM is energy here, and its energy
                the root of that; homogeneity is inv_diff_mom; its entropy is in nats, here in bits
  mahotas       haralick(a) is --levels 256 --symmetric --features haralick; its entropies are in
                bits, here in nats; return_mean=True adds --aggregate 2D_avg
  ITK           its Inertia is contrast, its Energy energy; 32 bins from 0 to 1023 are --levels 32
                --range 0,1024, but values beyond are clamped here and left out there
  PyRadiomics   binWidth=25 is --bin-width 25 --bin-start multiple, binCount=32 --bin-count 32; with
                --symmetric --aggregate 3D_avg, or 2_5D_avg for force2D

Examples:
  selu texture brick.png --picture brick-texture.png
  selu texture scan.nii.gz --range -200,300 --direction 1,0,0 --direction 0,0,2 --format csv
  selu texture phantom.nii.gz --mask mask.nii.gz --bin-width 1 --symmetric --features ibsi
    --aggregate 3D_avg --format json)";

} // namespace

void AddFeatureOptions(CLI::App& command, StOptions& options) {
  AddLevelOptions(command, options.levels);
  AddMaskOptions(command, options.levels);
  command.add_flag("--symmetric", options.symmetric, "count each pair in both orders");
  command.add_option("--features", options.features,
                     "selu (the 13 of 256 gray levels), ibsi, haralick, or names of features");
  command.add_option("--aggregate", options.aggregate,
                     "one value of all directions: 2D_avg, 2D_comb, 2_5D_avg, 2_5D_comb, 3D_avg "
                     "or 3D_comb");
  command.add_option("--threads", options.threads, c_threadsHelp);
}

void AddTextureCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("texture", "Co-occurrence matrices and the 13 Haralick features");
  command->add_option("IMAGE", options->image, c_imageHelp)->required();
  command->add_option("--series", options->series, c_seriesHelp);
  command
      ->add_option("--direction", options->directions,
                   "dx,dy,dz (2D: dx,dy), the displacement in voxels; may be given repeatedly")
      ->take_all()
      ->expected(1);
  command->add_flag("--all-directions", options->all,
                    "the 13 directions to the neighbors, in 2D 4; taken when no other is given. "
                    "Those that lead out "
                    "of a thin image are left out, with a note");
  command
      ->add_option("--distance", options->distances,
                   "take the directions so many times as long, such as 1,2,4; may be given "
                   "repeatedly")
      ->take_all()
      ->expected(1);
  command->add_option("--range", options->levels.range,
                      "LO,HI: map these values linearly onto the gray levels 0 to 255");
  AddFeatureOptions(*command, *options);
  command->add_option("--format", options->format, "table, json or csv")
      ->check(CLI::IsMember({"table", "json", "csv"}))
      ->capture_default_str();
  command->add_option("--matrix", options->matrix,
                      "write the counts as an image (.nrrd, .mha, .nii.gz): C[i][j] of direction s "
                      "at x = s, y = i, z = j");
  command
      ->add_option("--picture", options->pictures,
                   "draw the matrices and the features (.png or .svg); may be given repeatedly")
      ->take_all()
      ->expected(1);
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
