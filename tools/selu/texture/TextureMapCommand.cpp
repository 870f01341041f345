#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "drawing/Picture.h"
#include "images/Directions.h"
#include "images/SlabWriter.h"
#include "texture/LevelOptions.h"
#include "texture/TextureMap.h"

#include <SeluUtils/Texture/PairCounter.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace selu {
namespace {

using ORVA::CSize;
using ORVA::int64;

struct StOptions {
  std::string image, series, window = "15", output, picture, threads;
  std::string features = "contrast,joint_entr,energy,corr", border = "clipped", step = "1";
  std::vector<std::string> directions;
  StLevelOptions levels;
  bool symmetric = false;
};

// Of Haralick's fourteen all but the one that has no map.
std::vector<ORVA::EnTextureFeature> MappedFeatures(std::string const& text) {
  auto features = ParseFeatures(text);
  if (text == "haralick") std::erase(features, ORVA::EnTextureFeature::HaralickMaximalCorrelation);
  return features;
}

std::vector<int64> ParseSides(std::string const& text) {
  auto const sides = ParseIntegers(text);
  bool isRight = sides && sides->size() <= 3;
  for (std::size_t k = 0; isRight && k < sides->size(); ++k)
    isRight = (*sides)[k] > 0 && (*sides)[k] % 2 == 1 &&
              (*sides)[k] <= ORVA::CTextureWindow::c_mostVoxels;
  if (!isRight)
    throw CUsageError("--window needs an odd number above 0, or one for each axis, not \"" + text +
                      "\"");
  return *sides;
}

std::vector<int64> ParseSteps(std::string const& text) {
  auto const steps = ParseIntegers(text);
  bool isRight = steps && steps->size() <= 3;
  for (std::size_t k = 0; isRight && k < steps->size(); ++k)
    isRight = (*steps)[k] > 0 && (*steps)[k] <= INT32_MAX;
  if (!isRight)
    throw CUsageError("--step needs a number above 0, or one for each axis, not \"" + text + "\"");
  return *steps;
}

// One number is that of all axes.
CSize PerAxis(std::vector<int64> const& numbers, int dimension, char const* option) {
  if (numbers.size() == 1 && dimension == 2) return CSize(numbers[0], numbers[0]);
  if (numbers.size() == 1) return CSize(numbers[0], numbers[0], numbers[0]);
  if (numbers.size() != static_cast<std::size_t>(dimension))
    throw CAppError(std::string(option) + " needs one number or " + std::to_string(dimension) +
                    ", since the image is " + std::to_string(dimension) + "D");
  return dimension == 2 ? CSize(numbers[0], numbers[1]) : CSize(numbers[0], numbers[1], numbers[2]);
}

// Of an image one voxel thin, those directions that lead out of it are left out.
std::vector<ORVA::CTriple<int64>> Displacements(std::vector<StGivenDirection> const& given,
                                                CSize const& size) {
  std::vector<ORVA::CTriple<int64>> displacements;
  for (auto const& one : given) {
    Direction const direction = FitDirection(one, size);
    displacements.push_back({direction.x, direction.y, direction.z});
  }
  if (!given.empty()) return displacements;
  displacements = ORVA::NeighborDisplacements(size.Dim());
  std::erase_if(displacements, [&](auto const& d) {
    return PairsOf(size,
                   {static_cast<long>(d.x), static_cast<long>(d.y), static_cast<long>(d.z)}) == 0;
  });
  if (displacements.empty()) throw CAppError("the image has no two voxels that are neighbors");
  return displacements;
}

// The name itself for one feature, otherwise with the feature's name before the ending.
std::vector<std::string> OutputNames(std::string const& output,
                                     std::span<ORVA::EnTextureFeature const> features) {
  if (features.size() == 1) return {output};
  std::size_t const ending = EndingOf(output).size();
  std::vector<std::string> names;
  for (auto const feature : features)
    names.push_back(output.substr(0, output.size() - ending) + "-" +
                    std::string(ORVA::FeatureName(feature)) +
                    output.substr(output.size() - ending));
  return names;
}

std::vector<CAtomicFile> OpenOutputs(StOptions const& options,
                                     std::span<ORVA::EnTextureFeature const> features,
                                     COpenImage const& image,
                                     std::optional<CVolumeSource> const& mask) {
  std::vector<CAtomicFile> files;
  for (auto const& name : OutputNames(options.output, features)) {
    CheckImageOutput(name, ORVA::IMAGE_GREY_F, image.Header().size.Dim());
    RefuseOverwriting(name, image);
    if (mask) RefuseOverwriting(name, mask->Image());
    files.emplace_back(name);
  }
  if (options.picture.empty()) return files;
  RefuseOverwriting(options.picture, image);
  if (mask) RefuseOverwriting(options.picture, mask->Image());
  files.push_back(OpenPicture(options.picture));
  return files;
}

std::string WindowText(CSize const& sides) {
  std::vector<int64> numbers = {sides.x, sides.y};
  if (sides.Dim() == 3) numbers.push_back(sides.z);
  return Joined(numbers, " x ");
}

// What the command line says, judged before any file is opened.
struct StAsked {
  StLevelRecipe recipe;
  std::vector<int64> sides, steps;
  std::vector<ORVA::EnTextureFeature> features;
  std::vector<StGivenDirection> directions;
  int threads = 1;
};

StAsked Parse(StOptions const& options) {
  StAsked asked;
  asked.recipe = ParseLevels(options.levels);
  asked.sides = ParseSides(options.window);
  asked.steps = ParseSteps(options.step);
  asked.features = MappedFeatures(options.features);
  asked.threads = ParseThreads(options.threads);
  for (auto const& text : options.directions) asked.directions.push_back(ParseDirection(text));
  return asked;
}

void SetUp(ORVA::CTextureWindow& window, StOptions const& options, StAsked const& asked,
           CSize const& size) {
  window.SetSides(PerAxis(asked.sides, size.Dim(), "--window"));
  window.SetSteps(PerAxis(asked.steps, size.Dim(), "--step"));
  window.SetFeatures(asked.features);
  window.SetDisplacements(Displacements(asked.directions, size));
  window.SetSymmetric(options.symmetric);
  if (options.border != "valid") return;
  window.SetBorder(ORVA::EnWindowBorder::Valid);
  auto const maps = window.MapSize(size);
  if (maps.x == 0 || maps.y == 0 || maps.z == 0)
    throw CAppError("no window of " + WindowText(window.Sides()) +
                    " voxels lies in the image: take --border clipped");
}

void Write(std::vector<CAtomicFile>& files, StOptions const& options, ORVA::CTextureWindow& window,
           CLevelSource& source, int threads, StGrid const& grid) {
  std::string const sides = WindowText(window.Sides());
  auto const size = window.MapSize(source.Size());
  std::vector<CSlabWriter> writers;
  for (std::size_t k = 0; k < window.Features().size(); ++k)
    writers.emplace_back(
        files[k], StHeader{size, EnPixel::Float}, MapGrid(grid, window),
        ImageNotes{{"feature", std::string(ORVA::FeatureName(window.Features()[k]))},
                   {"window", sides}});
  CMapPanels panels(writers.size(), size);
  ComputeMaps(window, source, threads, [&](std::size_t k, int64 first, auto values) {
    writers[k].Write(std::as_bytes(values));
    if (!options.picture.empty()) panels.Add(k, first, values);
  });
  for (auto& writer : writers) writer.Finish();
  if (options.picture.empty()) return;
  std::string const text = "window " + sides + ", " + std::to_string(source.Count()) + " levels";
  files.back().Write(
      DrawMaps({options.image, text}, window.Features(), panels, EndingOf(options.picture)));
}

void Run(StOptions const& options) {
  StAsked const asked = Parse(options);
  CVolumeSource image(OpenImage(options.image, options.series));
  ORVA::CTextureWindow window("texture-map", nullptr);
  SetUp(window, options, asked, image.Size());
  auto mask = OpenMask(options.levels, image.Image());
  auto files = OpenOutputs(options, asked.features, image.Image(), mask);
  CLevelSource source(image, mask ? &*mask : nullptr, asked.recipe);
  Write(files, options, window, source, asked.threads, image.Image().Grid());
  std::vector<CAtomicFile*> all;
  for (auto& file : files) all.push_back(&file);
  CommitAll(all);
}

constexpr char c_help[] =
    R"(Each pixel or voxel of a map is the feature of the window around it, the mean over the directions;
at the border what of the window lies in the image counts, or with --border valid there is no
window. Pairs with a voxel off the mask, or NaN, do not count; a window without any pair is NaN.
The maps are 32-bit floating-point and keep the place of the image in space; --step 2,2,1 makes
their spacing twice as large along x and y.

One feature is written to the output's name, several each to a file of its own: maps.nrrd becomes
maps-contrast.nrrd and so on. NRRD, MetaImage and TIFF files keep the feature's name and the window
as "feature" and "window".

Features have the names of IBSI, or haralick_ names; ibsi and haralick are all of them but the
maximal correlation coefficient, which has no map.

Example:
  selu texture-map brick.png --window 15 --features contrast,joint_entr -o maps.nrrd
    --picture maps.png)";

} // namespace

void AddTextureMapCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("texture-map", "Texture features of the window around every voxel");
  command->add_option("IMAGE", options->image, c_imageHelp)->required();
  command->add_option("--series", options->series, c_seriesHelp);
  command
      ->add_option("--window", options->window,
                   "side of the window in voxels, odd; or one for each axis, such as 15,15,3")
      ->capture_default_str();
  command->add_option("--features", options->features, "names of features, ibsi or haralick")
      ->capture_default_str();
  command
      ->add_option("--direction", options->directions,
                   "dx,dy,dz (2D: dx,dy), the displacement in voxels; may be given repeatedly; "
                   "those to all neighbors when none is given")
      ->take_all()
      ->expected(1);
  command
      ->add_option("--border", options->border,
                   "clipped: around every voxel, the window cut off at the border; valid: only "
                   "where the whole window lies in the image")
      ->check(CLI::IsMember({"clipped", "valid"}))
      ->capture_default_str();
  command
      ->add_option("--step", options->step,
                   "voxels from one window to the next; or one number for each axis")
      ->capture_default_str();
  AddLevelOptions(*command, options->levels);
  command->add_option("--range", options->levels.range, "LO,HI: the values that --levels divides");
  AddMaskOptions(*command, options->levels);
  command->add_flag("--symmetric", options->symmetric, "count each pair in both orders");
  command->add_option("--threads", options->threads, c_threadsHelp);
  command
      ->add_option("-o,--output", options->output,
                   "file ending in .nrrd, .mha, .nii, .nii.gz or .tif")
      ->required();
  command->add_option("--picture", options->picture,
                      "draw a panel for each feature (.png or .svg), in 3D of the middle slice");
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
