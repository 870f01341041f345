#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/JsonValues.h"
#include "base/Output.h"
#include "base/Texts.h"
#include "images/ImageFile.h"

#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueVector.h>

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CValue;
using ORVA::CValueMap;
using ORVA::CValueVector;
using ORVA::int64;

struct StOptions {
  std::string features, output, csv, name, idKey = "object";
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

// The objects' keys are looked up with as many digits as the maximum label has; others would count
// for nothing, silently.
void CheckObjects(CValueMap const& features, StOptions const& options) {
  CValue const& maximum = features.Entry("maximum label");
  if (maximum.Type() != CValue::EnType::Long || maximum.Long() < 1) return; // it says so itself
  std::size_t const digits = std::to_string(maximum.Long()).size();
  for (auto const& [key, value] : features) {
    std::string const name = key.ToString();
    if (value.Type() != CValue::EnType::Map || !name.starts_with(options.idKey + " ")) continue;
    std::string const label = name.substr(options.idKey.size() + 1);
    bool const isNumber = label.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && label.size() != digits)
      throw CAppError("the key " + Quoted(name) + " needs a label of " + std::to_string(digits) +
                      (digits == 1 ? " digit" : " digits") + ", as the maximum label has");
    if (auto const path = PathOfNull(value))
      throw CAppError("the entry " + Quoted(name + "/" + *path) +
                      " is null, but a feature is a number, a Boolean or a text");
  }
}

void WarnOfUnknown(CValueMap const& features, StOptions const& options) {
  for (auto const& path : options.excluded) {
    bool found = false;
    for (auto const& [key, value] : features)
      found =
          found || (value.Type() == CValue::EnType::Map &&
                    key.ToString().starts_with(options.idKey + " ") && value.Map().HasEntry(path));
    if (!found) PrintNote("warning: no object has the feature " + Quoted(path) + " to exclude");
  }
}

CImage Convert(CValueMap features, StOptions const& options) {
  CImage image(ORVA::IMAGE_GREY_F, ORVA::CSize(1, 1));
  try {
    CheckObjects(features, options);
    WarnOfUnknown(features, options);
    ORVA::ConvertObjectBasedFeaturesIntoFeatureImage(options.name, std::move(features),
                                                     options.idKey, image, options.excluded);
  } catch (CAppError const& error) {
    throw CAppError(Quoted(options.features) + ": " + error.what());
  } catch (ORVA::CException const& error) {
    throw CAppError(Quoted(options.features) + ": " + error.what());
  }
  return image;
}

// Whole numbers, labels above all, without an exponent as far as a float counts in ones.
std::string NumberText(float value) {
  constexpr float ones = 1 << 24;
  bool const isCount = std::abs(value) <= ones && std::trunc(value) == value;
  return isCount ? std::to_string(static_cast<std::int32_t>(value)) : Shortest(value);
}

// A row of the image: what it is called, its numbers by label, and the texts they stand for.
struct StRow {
  std::string name;
  std::span<float const> pixels;
  CValueVector const* texts = nullptr;

  [[nodiscard]] std::string Field(std::size_t label) const {
    if (texts == nullptr) return NumberText(pixels[label]);
    return CsvField(texts->Entry(static_cast<int64>(pixels[label])).String().Std());
  }
};

std::vector<StRow> RowsOf(CImage const& image, float const* pixels) {
  CValueMap const& attributes = image.Attributes();
  auto const columns = static_cast<std::size_t>(image.Size().x);
  CValueMap const& lookup = attributes.Entry("Image/label-lookup").Map();
  std::vector<StRow> rows;
  for (auto const& key : attributes.Entry("Image/y-keys").Vector()) {
    StRow row{key.String().Std(), {pixels + rows.size() * columns, columns}};
    auto const& types = attributes.Entry("Image/y-types").Vector();
    if (types.Entry(static_cast<int64>(rows.size())).String().Std() == "label")
      row.texts = &lookup.Entry(row.name).Vector();
    rows.push_back(row);
  }
  return rows;
}

// A line for each label, a column for each row of the image.
std::string ToCsv(CImage const& image) {
  auto const access = image.CreateAccess(false);
  auto const rows = RowsOf(image, reinterpret_cast<float const*>(access.Base()));
  std::string text;
  for (auto const& row : rows) text += (text.empty() ? "" : ",") + CsvField(row.name);
  text += '\n';
  for (std::size_t label = 0; label < static_cast<std::size_t>(image.Size().x); ++label) {
    text += std::to_string(label); // row 0, whose pixels cannot tell all large ones apart
    for (auto const& row : std::span(rows).subspan(1)) text += "," + row.Field(label);
    text += '\n';
  }
  return text;
}

void Run(StOptions options) {
  if (!options.csv.empty() && IsSameFile(options.output, options.csv))
    throw CUsageError("--output and --csv name the same file, " + Quoted(options.csv));
  CheckImageOutput(options.output, ORVA::IMAGE_GREY_F, 2);
  for (auto const& output : {options.output, options.csv}) RefuseSameFile(output, options.features);
  CAtomicFile file(options.output);
  std::optional<CAtomicFile> csv;
  if (!options.csv.empty()) csv.emplace(options.csv);
  options.name = std::filesystem::path(options.features).stem().string();

  CImage const image = Convert(ReadJsonMap(options.features), options);

  // Everything is made before the first file gets its name.
  WriteImage(file, image);
  if (csv) csv->Write(ToCsv(image));
  file.Commit();
  if (csv) csv->Commit();
}

constexpr char c_help[] =
    R"(FEATURES holds "maximum label" M and an object under the word, a blank and its label with as many
digits as M has, such as "object 007". The pixel (x, y) is feature y of the object with label x;
row 0 holds the labels 0 to M. Which features there are says the object that comes first; what
another does not have is 0 or the empty text. Texts become their index in the sorted list of all
texts of that feature. In the table, a line is a label, a column a feature.

Example:
  selu feature-image features.json -o features.tif --csv features.csv --exclude status)";

} // namespace

void AddFeatureImageCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("feature-image", "The features of objects as an image, and as a table");
  command->add_option("FEATURES", options->features, "JSON file, such as selu regions writes")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "file ending in .tif, .nrrd, .mha, .nii or .nii.gz; 32-bit floating-point")
      ->required();
  command->add_option("--csv", options->csv,
                      "write the same table with the features' names and texts");
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
