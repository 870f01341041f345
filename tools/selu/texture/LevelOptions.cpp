#include "texture/LevelOptions.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <SeluUtils/Texture/LevelImage.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace selu {
namespace {

using ORVA::int64;

int64 ParseWhole(std::string const& text, char const* option, int64 least, int64 most) {
  auto const numbers = ParseIntegers(text);
  if (!numbers || numbers->size() != 1 || numbers->front() < least || numbers->front() > most)
    throw CUsageError(std::string(option) + " needs a whole number from " + std::to_string(least) +
                      " to " + std::to_string(most) + ", not \"" + text + "\"");
  return numbers->front();
}

double ParseWidth(std::string const& text) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 1 || !std::isfinite(numbers->front()) || numbers->front() <= 0)
    throw CUsageError("--bin-width needs a finite number above 0, not \"" + text + "\"");
  return numbers->front();
}

void ParseStart(std::string const& text, StLevelRecipe& recipe) {
  if (text == "minimum") return;
  auto const numbers = ParseNumbers(text);
  if (text == "multiple") {
    recipe.kind = StLevelRecipe::EnKind::WidthAtMultiple;
  } else if (numbers && numbers->size() == 1 && std::isfinite(numbers->front())) {
    recipe.kind = StLevelRecipe::EnKind::WidthFrom;
    recipe.start = numbers->front();
  } else {
    throw CUsageError("--bin-start needs minimum, multiple or a finite number, not \"" + text +
                      "\"");
  }
}

} // namespace

void AddLevelOptions(CLI::App& command, StLevelOptions& options) {
  command.add_option("--levels", options.levels,
                     "so many levels of equal width over --range or, without it, all values of "
                     "an unsigned pixel type; 256 when nothing else is asked for");
  command.add_option("--bin-width", options.width,
                     "levels of this width from the least value found, the fixed bin size");
  command.add_option("--bin-start", options.start,
                     "where the first of them begins: minimum (taken when not given), multiple "
                     "(the multiple of the width at or below the least value) or a value");
  command.add_option("--bin-count", options.count,
                     "so many levels of equal width over the values found, the fixed bin number");
}

void AddMaskOptions(CLI::App& command, StLevelOptions& options) {
  command.add_option("--mask", options.mask,
                     "image of whole numbers, of the same size: what is 0 in it is left out");
  command.add_option("--label", options.label, "take the voxels of this number in the mask alone");
}

StLevelRecipe ParseLevels(StLevelOptions const& options) {
  StLevelRecipe recipe;
  int const given = !options.levels.empty() + !options.width.empty() + !options.count.empty();
  if (given > 1) throw CUsageError("give one of --levels, --bin-width and --bin-count");
  if (!options.range.empty() && options.width.size() + options.count.size() > 0)
    throw CUsageError("--range goes with --levels; --bin-width and --bin-count take the values "
                      "found");
  if (!options.start.empty() && options.width.empty())
    throw CUsageError("--bin-start is for bins of one width, which need --bin-width");
  if (!options.label.empty() && options.mask.empty())
    throw CUsageError("--label is for the mask, which needs --mask");
  if (!options.range.empty()) recipe.range = ParseRange(options.range);
  if (!options.levels.empty())
    recipe.levels = static_cast<int>(ParseWhole(options.levels, "--levels", 1, ORVA::c_mostLevels));
  if (!options.width.empty()) {
    recipe.kind = StLevelRecipe::EnKind::Width;
    recipe.width = ParseWidth(options.width);
  }
  if (!options.start.empty()) ParseStart(options.start, recipe);
  if (!options.count.empty()) {
    recipe.kind = StLevelRecipe::EnKind::Count;
    recipe.levels =
        static_cast<int>(ParseWhole(options.count, "--bin-count", 1, ORVA::c_mostLevels));
  }
  if (!options.label.empty())
    recipe.label = ParseWhole(options.label, "--label", INT32_MIN, 4294967295);
  return recipe;
}

std::optional<CVolumeSource> OpenMask(StLevelOptions const& options, COpenImage const& image) {
  if (options.mask.empty()) return std::nullopt;
  std::optional<CVolumeSource> mask(OpenImage(options.mask));
  if (mask->Size() != image.Header().size)
    throw CAppError(Quoted(image.Path()) + " and its mask " + Quoted(options.mask) +
                    " have different sizes");
  return mask;
}

std::vector<ORVA::EnTextureFeature> ParseFeatures(std::string const& text) {
  if (text == "ibsi") return {ORVA::c_ibsiFeatures.begin(), ORVA::c_ibsiFeatures.end()};
  if (text == "haralick") return {ORVA::c_haralickFeatures.begin(), ORVA::c_haralickFeatures.end()};
  std::vector<ORVA::EnTextureFeature> features;
  std::istringstream names(text);
  for (std::string name; std::getline(names, name, ',');) {
    auto const feature = ORVA::FeatureFromName(name);
    if (!feature)
      throw CUsageError("--features knows no " + QuotedPart(name) +
                        ", but ibsi, haralick and names such as contrast,joint_entr");
    if (std::ranges::find(features, *feature) != features.end())
      throw CUsageError("--features names " + QuotedPart(name) + " twice");
    features.push_back(*feature);
  }
  return features;
}

} // namespace selu
