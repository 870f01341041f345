#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"
#include "base/Threads.h"
#include "drawing/Picture.h"
#include "images/Directions.h"
#include "images/ImageFile.h"
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
  std::string features = "contrast,joint_entr,energy,corr";
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

std::vector<int64> ParseWindow(std::string const& text) {
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

// One number is that of all axes.
CSize SidesOf(std::vector<int64> const& sides, int dimension) {
  if (sides.size() == 1 && dimension == 2) return CSize(sides[0], sides[0]);
  if (sides.size() == 1) return CSize(sides[0], sides[0], sides[0]);
  if (sides.size() != static_cast<std::size_t>(dimension))
    throw CAppError("--window needs one number or " + std::to_string(dimension) +
                    ", since the image is " + std::to_string(dimension) + "D");
  return dimension == 2 ? CSize(sides[0], sides[1]) : CSize(sides[0], sides[1], sides[2]);
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
                                     std::optional<COpenImage> const& mask) {
  std::vector<CAtomicFile> files;
  for (auto const& name : OutputNames(options.output, features)) {
    CheckImageOutput(name, ORVA::IMAGE_GREY_F, image.Header().size.Dim());
    RefuseOverwriting(name, image);
    if (mask) RefuseOverwriting(name, *mask);
    files.emplace_back(name);
  }
  if (options.picture.empty()) return files;
  RefuseOverwriting(options.picture, image);
  if (mask) RefuseOverwriting(options.picture, *mask);
  files.push_back(OpenPicture(options.picture));
  return files;
}

std::string WindowText(CSize const& sides) {
  std::vector<int64> numbers = {sides.x, sides.y};
  if (sides.Dim() == 3) numbers.push_back(sides.z);
  return Joined(numbers, " x ");
}

void Write(std::vector<CAtomicFile>& files, StOptions const& options,
           ORVA::CTextureWindow const& window, std::vector<ORVA::CImage> const& maps,
           StGrid const& grid, int levels) {
  std::string const sides = WindowText(window.Sides());
  for (std::size_t k = 0; k < maps.size(); ++k)
    WriteImage(
        files[k], maps[k], grid,
        {{"feature", std::string(ORVA::FeatureName(window.Features()[k]))}, {"window", sides}});
  if (!options.picture.empty())
    files.back().Write(
        DrawMaps({options.image, "window " + sides + ", " + std::to_string(levels) + " levels"},
                 window.Features(), maps, EndingOf(options.picture)));
  std::vector<CAtomicFile*> all;
  for (auto& file : files) all.push_back(&file);
  CommitAll(all);
}

void Run(StOptions const& options) {
  auto const recipe = ParseLevels(options.levels);
  auto const sides = ParseWindow(options.window);
  auto const features = MappedFeatures(options.features);
  int const threads = ParseThreads(options.threads);
  std::vector<StGivenDirection> given;
  for (auto const& text : options.directions) given.push_back(ParseDirection(text));
  COpenImage image = OpenImage(options.image, options.series);
  CSize const size = image.Header().size;
  ORVA::CTextureWindow window("texture-map", nullptr);
  window.SetSides(SidesOf(sides, size.Dim()));
  window.SetFeatures(features);
  window.SetDisplacements(Displacements(given, size));
  window.SetSymmetric(options.symmetric);
  auto mask = OpenMask(options.levels, image);
  auto files = OpenOutputs(options, features, image, mask);

  StGrayLevels const gray = MakeLevels(image, mask, recipe);
  auto const maps = ComputeMaps(window, gray.levels, threads);
  Write(files, options, window, maps, image.Grid(), gray.levels.Levels());
}

constexpr char c_help[] =
    R"(Each pixel or voxel of a map is the feature of the window around it, the mean over the directions;
at the border what of the window lies in the image counts. Pairs with a voxel off the mask, or NaN,
do not count; a window without any pair is NaN. The maps are 32-bit floating-point and keep the
spacing, the origin and the orientation of the image.

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
