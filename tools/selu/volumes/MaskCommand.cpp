#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/JsonValues.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "images/PixelValue.h"
#include "images/SlabWriter.h"
#include "images/VolumeSource.h"

#include <SeluUtils/CylinderMask.h>
#include <pxlib2image/HeaderTools.h>

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

namespace selu {
namespace {

constexpr char c_parametersKey[] = "cylinderMaskParameters", c_sliceKey[] = "cylinderMaskSlice";

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

void CheckMaskable(EnPixel pixel, std::string const& path) {
  if (HasOwnGrayLevels(pixel) || pixel == EnPixel::Float) return;
  throw CAppError(Quoted(path) + " has " + PixelText(pixel) +
                  " pixels, but the mask takes only unsigned 8, 16 and 32-bit integer and "
                  "32-bit floating-point ones");
}

std::string ParametersText(ORVA::CImage const& image) {
  ORVA::CValue parameters;
  ORVA::CValueMap map;
  if (ORVA::CSeluHeaderTools::GetMetaInfo(image, c_parametersKey, parameters))
    map.SetEntry(c_parametersKey, parameters);
  return ToJsonText(map);
}

// An image one voxel thin along the cylinder, which has the same cross section and parameters.
ORVA::CImage ThinImage(StCylinder const& cylinder, ORVA::CSize const& size) {
  ORVA::int64 const x = cylinder.axis == "X" ? 1 : size.x, y = cylinder.axis == "Y" ? 1 : size.y;
  ORVA::int64 const z = cylinder.axis == "Z" ? 1 : size.z;
  ORVA::CImage thin(ORVA::IMAGE_BINARY_FG,
                    size.Dim() == 2 ? ORVA::CSize(x, y) : ORVA::CSize(x, y, z));
  ORVA::CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(thin, cylinder.axis, cylinder.s, cylinder.t, cylinder.radius);
  mask.SetCylinderSlice(thin);
  return thin;
}

// Sets what is outside of the cylinder, slab by slab.
class CSlabMask {
public:
  CSlabMask(ORVA::CImage const& thin, char axis, PixelValue const& value)
      : m_Section(ORVA::CSeluHeaderTools::FindMetaInfo(thin, c_sliceKey)
                      ->Pointer<ORVA::CImage>()
                      ->CreateAccess(false)),
        m_Axis(axis), m_Value(value) {}

  /// Of an image whose first slice is this one of the whole.
  void Apply(CRawImage& slab, ORVA::int64 first) const {
    auto const size = slab.Size();
    bool const isFlat = size.Dim() == 2;
    std::size_t const pixel = PixelBytes(slab.Pixel());
    std::byte* row = slab.Bytes().data();
    for (ORVA::int64 z = 0; z < size.z; ++z)
      for (ORVA::int64 y = 0; y < size.y; ++y, row += static_cast<std::size_t>(size.x) * pixel)
        ApplyToRow(row, size.x, pixel, y + (isFlat ? first : 0), z + (isFlat ? 0 : first));
  }

private:
  // The section is (y, z), (x, z) or (x, y).
  void ApplyToRow(std::byte* row, ORVA::int64 n, std::size_t pixel, ORVA::int64 y,
                  ORVA::int64 z) const {
    bool const alongRow = m_Axis == 'X';
    std::byte const* const inside = m_Section.Base() + (alongRow ? y : 0) * m_Section.Stride(0) +
                                    (m_Axis == 'Z' ? y : z) * m_Section.Stride(1);
    for (ORVA::int64 x = 0; x < n; ++x, row += pixel)
      if (inside[alongRow ? 0 : x] == std::byte{0}) std::memcpy(row, m_Value.data(), pixel);
  }

  ORVA::CImageAccess m_Section;
  char m_Axis;
  PixelValue m_Value;
};

void Run(StOptions const& options) {
  StCylinder const cylinder = ParseCylinder(options);
  CVolumeSource image(OpenImage(options.image, options.series));
  StHeader const header = image.Image().Header();
  RefuseOverwriting(options.output, image.Image());
  PixelValue const value = ParsePixelValue(options.value, header.pixel, "--value");
  CheckMaskable(header.pixel, options.image);
  CheckImageOutput(options.output, header.pixel, header.size.Dim());
  CAtomicFile file(options.output);
  std::optional<CAtomicFile> parameters;
  if (options.keepParameters) {
    RefuseOverwriting(options.output + ".json", image.Image());
    parameters.emplace(options.output + ".json");
  }

  ORVA::CImage const thin = ThinImage(cylinder, header.size);
  CSlabMask const mask(thin, cylinder.axis[0], value);
  CSlabWriter writer(file, header, image.Image().Grid());
  auto const slabs = SlabsOf(header.size, image.BytesPerSlice());
  CProgressBar bar("masking", static_cast<ORVA::int64>(slabs.size()));
  for (StSlab const& slab : slabs) {
    CRawImage pixels = image.Slab(slab.first, slab.last);
    mask.Apply(pixels, slab.first);
    writer.Write(pixels.Bytes());
    bar.Advance();
  }
  writer.Finish();
  if (parameters) parameters->Write(ParametersText(thin));
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
