#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/JsonValues.h"
#include "base/Texts.h"
#include "images/ImageFile.h"
#include "images/PixelValue.h"

#include <SeluUtils/CylinderMask.h>
#include <pxlib2image/HeaderTools.h>

#include <CLI/CLI.hpp>

#include <cmath>
#include <memory>
#include <optional>

namespace selu {
namespace {

constexpr char c_parametersKey[] = "cylinderMaskParameters";

struct StOptions {
  std::string image, series, axis, center, radius, value, output;
  bool keepParameters = false;
};

struct StCylinder {
  std::string axis;
  double s = 0, t = 0, radius = 0;
};

StCylinder ParseCylinder(StOptions const& options) {
  auto const center = ParseNumbers(options.center);
  if (!center || center->size() != 2 || !std::isfinite((*center)[0]) ||
      !std::isfinite((*center)[1]))
    throw CUsageError("--center needs two finite numbers s,t, not \"" + options.center + "\"");
  auto const radius = ParseNumbers(options.radius);
  if (!radius || radius->size() != 1 || !std::isfinite((*radius)[0]) || (*radius)[0] < 0)
    throw CUsageError("--radius needs a finite number, 0 or more, not \"" + options.radius + "\"");
  return {options.axis, (*center)[0], (*center)[1], (*radius)[0]};
}

ORVA::IImage::CType MaskedType(EnPixel pixel, std::string const& path) {
  switch (pixel) {
  case EnPixel::UInt8:
    return ORVA::IMAGE_GREY_8;
  case EnPixel::UInt16:
    return ORVA::IMAGE_GREY_16;
  case EnPixel::UInt32:
    return ORVA::IMAGE_GREY_32;
  case EnPixel::Float:
    return ORVA::IMAGE_GREY_F;
  default:
    throw CAppError(Quoted(path) + " has " + PixelText(pixel) +
                    " pixels, but the mask takes only unsigned 8, 16 and 32-bit integer and "
                    "32-bit floating-point ones");
  }
}

std::string ParametersText(ORVA::CImage const& image) {
  ORVA::CValue parameters;
  ORVA::CValueMap map;
  if (ORVA::CSeluHeaderTools::GetMetaInfo(image, c_parametersKey, parameters))
    map.SetEntry(c_parametersKey, parameters);
  return ToJsonText(map);
}

void Run(StOptions const& options) {
  StCylinder const cylinder = ParseCylinder(options);
  COpenImage opened = OpenImage(options.image, options.series);
  StHeader const header = opened.Header();
  RefuseOverwriting(options.output, opened);
  (void)ParsePixelValue(options.value, header.pixel, "--value");
  CheckImageOutput(options.output, MaskedType(header.pixel, options.image), header.size.Dim());
  CAtomicFile file(options.output);
  std::optional<CAtomicFile> parameters;
  if (options.keepParameters) {
    RefuseOverwriting(options.output + ".json", opened);
    parameters.emplace(options.output + ".json");
  }

  ORVA::CImage image = opened.Read().ToGray();
  ORVA::CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(image, cylinder.axis, cylinder.s, cylinder.t, cylinder.radius);
  mask.MaskImageWithMetaInfoCylinder(image, ParseNumbers(options.value)->front());

  WriteImage(file, image, opened.Grid());
  if (parameters) parameters->Write(ParametersText(image));
  CommitAll({&file, parameters ? &*parameters : nullptr});
}

constexpr char c_help[] =
    R"(A voxel stays when its center lies nearer to the axis than the radius; one exactly on the circle
does not. Voxel centers have whole coordinates from 0. The pixels are unsigned 8, 16 or 32-bit
integers or 32-bit floating-point, and so are those of the output; a value that they do not hold is
refused. The output keeps the spacing, the origin and the orientation of the image.

--keep-parameters writes a JSON object with one entry, "cylinderMaskParameters", that holds
"axis", "s", "t" and "radius".

Example:
  selu mask scan.nrrd --axis Z --center 40.5,33 --radius 30 --value 0 -o inside.nrrd)";

} // namespace

void AddMaskCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("mask", "Overwrite every voxel outside an upright circular cylinder");
  command->add_option("IMAGE", options->image, c_imageHelp)->required();
  command->add_option("--series", options->series, c_seriesHelp);
  command->add_option("--axis", options->axis, "X, Y or Z: the axis along which the cylinder runs")
      ->transform(CLI::IsMember({"X", "Y", "Z"}, CLI::ignore_case))
      ->required();
  command
      ->add_option(
          "--center", options->center,
          "s,t: the center of the cross-section in voxels; y,z for X, x,z for Y, x,y for Z")
      ->required();
  command->add_option("--radius", options->radius, "in voxels, 0 or more")->required();
  command->add_option("--value", options->value, "what the voxels outside become")->required();
  command
      ->add_option("-o,--output", options->output,
                   "file ending in .nrrd, .mha, .nii, .nii.gz, .tif or .png")
      ->required();
  command->add_flag("--keep-parameters", options->keepParameters,
                    "write the cylinder to the output's name with .json behind it, too");
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
