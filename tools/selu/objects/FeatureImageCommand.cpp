#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/JsonValues.h"
#include "base/Output.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "objects/FeatureTable.h"

#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/ValueVector.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace selu {
namespace {

using ORVA::CValue;
using ORVA::CValueMap;
using ORVA::int64;

struct StOptions {
  std::string features, output, csv, idKey = "object";
  std::vector<std::string> excluded;
};

// The path of a value that is there and is none, or nothing.
std::optional<std::string> PathOfNull(CValue const& value) {
  auto const below = [](std::string const& key, CValue const& child) {
    auto path = PathOfNull(child);
    if (path) *path = path->empty() ? key : key + "/" + *path;
    return path;
  };
  if (!value.IsValid()) return std::string();
  if (value.Type() == CValue::EnType::Map)
    for (auto const& [key, child] : value.Map())
      if (auto path = below(key.ToString(), child)) return path;
  if (value.Type() == CValue::EnType::Vector)
    for (std::size_t i = 0; i < value.Vector().Size(); ++i)
      if (auto path = below(std::to_string(i), value.Vector().Entry(static_cast<int64>(i))))
        return path;
  return std::nullopt;
}

// What is read of a feature map.
struct StFeatureMap {
  CFeatureTable table;
  int64 maximum = 0; // label
};

StFeature FeatureOf(std::string const& path, CValue const& value) {
  if (value.Type() == CValue::EnType::String) return {path, value.String().Std()};
  if (value.Type() == CValue::EnType::Bool) return {path, value.Bool() ? 1.0 : 0.0};
  if (value.Type() == CValue::EnType::Long) return {path, static_cast<double>(value.Long())};
  return {path, value.Double()};
}

// The label of an object's key, such as "object 007"; nothing for other keys.
std::optional<int64> LabelOf(std::string const& key, std::string const& idKey) {
  if (!key.starts_with(idKey + " ")) return std::nullopt;
  std::string const text = key.substr(idKey.size() + 1);
  if (text.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  auto const label = ParseUnsigned(text);
  constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
  if (!label || *label > most)
    throw CAppError("the key " + QuotedPart(key) + " needs a label from 0 to " +
                    std::to_string(most));
  return static_cast<int64>(*label);
}

void AddObject(CFeatureTable& table, int64 label, std::string const& name, CValueMap const& map,
               StOptions const& options) {
  if (auto const path = PathOfNull(CValue(map)))
    throw CAppError("the entry " + QuotedPart(name + "/" + *path) +
                    " is null, but a feature is a number, a Boolean or a text");
  std::vector<std::string> keys;
  ORVA::ExtractKeys(map, keys, 2, options.excluded);
  std::erase(keys, options.idKey);
  std::vector<StFeature> features;
  for (auto const& key : keys) features.push_back(FeatureOf(key, *map.Find(key)));
  table.Add(label, name, features);
}

// A whole number above 0; those of more than 32 bits come as doubles.
int64 MaximumOf(CValue const& value) {
  constexpr double most32 = std::numeric_limits<std::int32_t>::max();
  if (value.Type() == CValue::EnType::Long && value.Long() < 0)
    throw CAppError("maximum label " + std::to_string(value.Long()) + " is negative");
  if (value.Type() == CValue::EnType::Long) return value.Long();
  bool const isLarge =
      value.Type() == CValue::EnType::Double && value.Double() > most32 &&
      value.Double() <= static_cast<double>(std::numeric_limits<std::uint32_t>::max());
  return isLarge ? static_cast<int64>(value.Double()) : 0;
}

// Which of the excluded features some object has.
void NoteExcluded(CValueMap const& map, std::vector<std::string> const& excluded,
                  std::vector<bool>& found) {
  for (std::size_t i = 0; i < excluded.size(); ++i)
    found[i] = found[i] || map.HasEntry(excluded[i]);
}

StFeatureMap ReadFeatures(StOptions const& options) {
  StFeatureMap result{CFeatureTable(options.idKey)};
  std::vector<bool> found(options.excluded.size());
  ReadJsonEntries(options.features, [&](ORVA::CValue_Key const& key, CValue const& value) {
    std::string const name = key.ToString();
    if (name == "maximum label") result.maximum = MaximumOf(value);
    if (value.Type() != CValue::EnType::Map) return;
    auto const label = LabelOf(name, options.idKey);
    if (!label) return;
    AddObject(result.table, *label, name, value.Map(), options);
    NoteExcluded(value.Map(), options.excluded, found);
  });
  auto const refuse = [&](char const* why) {
    throw CAppError("cannot read " + Quoted(options.features) + ": " + why);
  };
  if (result.table.Objects() == 0) refuse("it has no objects");
  if (result.maximum == 0) refuse("it has no \"maximum label\" above 0");
  for (std::size_t i = 0; i < found.size(); ++i)
    if (!found[i])
      PrintNote("warning: no object has the feature " + Quoted(options.excluded[i]) +
                " to exclude");
  result.table.Finish();
  return result;
}

std::optional<CAtomicFile> OpenOutput(std::string const& path, StOptions const& options) {
  if (path.empty()) return std::nullopt;
  RefuseSameFile(path, options.features);
  return std::optional<CAtomicFile>(std::in_place, path);
}

void Run(StOptions const& options) {
  if (options.output.empty() && options.csv.empty())
    throw CUsageError("give --output for the image, --csv for the table, or both");
  if (!options.output.empty() && !options.csv.empty() && IsSameFile(options.output, options.csv))
    throw CUsageError("--output and --csv name the same file, " + Quoted(options.csv));
  if (!options.output.empty()) CheckImageOutput(options.output, ORVA::IMAGE_GREY_F, 2);
  auto image = OpenOutput(options.output, options), csv = OpenOutput(options.csv, options);

  StFeatureMap const features = ReadFeatures(options);
  auto const name = std::filesystem::path(options.features).stem().string();
  if (csv) features.table.WriteCsv(*csv);
  if (image)
    WriteImage(*image,
               features.table.ToImage(std::max(features.maximum, features.table.GreatestLabel())),
               {}, features.table.Notes(name));
  CommitAll({image ? &*image : nullptr, csv ? &*csv : nullptr});
}

constexpr char c_help[] =
    R"(FEATURES holds "maximum label" M and an object under the word, a blank and its label, such as
"object 007". In the image, the pixel (x, y) is feature y of the object with label x; row 0 holds
the labels 0 to M, or to the greatest label of an object where that is above M. What an object does
not have is 0. Texts become their place in the sorted list of all texts of that feature. NRRD,
MetaImage and TIFF files hold the names of the rows, too ("y-keys", "y-types", "label-lookup").

In the table, a line is an object, a column a feature, every number has all its digits, and what an
object does not have is empty.

Example:
  selu feature-image features.json -o features.tif --csv features.csv --exclude status)";

} // namespace

void AddFeatureImageCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("feature-image", "The features of objects as an image, and as a table");
  command->add_option("FEATURES", options->features, "JSON file, such as selu regions writes")
      ->required();
  command->add_option("-o,--output", options->output,
                      "image ending in .tif, .nrrd, .mha, .nii or .nii.gz, or - for NRRD to "
                      "standard output; 32-bit floating-point");
  command->add_option("--csv", options->csv,
                      "write the features as a table; - for standard output");
  command
      ->add_option("--exclude", options->excluded,
                   "key path of a feature that is to get no row, such as \"bounding box\"; may be "
                   "given repeatedly")
      ->take_all()
      ->expected(1);
  command->add_option("--id-key", options->idKey, "the word that the objects' keys begin with")
      ->capture_default_str();
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
