#include "Commands.h"
#include "base/Arguments.h"
#include "base/Errors.h"
#include "base/Memory.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "distributions/Distributions.h"
#include "images/SlabWriter.h"
#include "volumes/FiberVolume.h"

#include <pxlib2core/Random.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace selu {
namespace {

struct StOptions {
  std::string size, count, radius = "3", orientation = "isotropic", seed, output;
};

ORVA::int64 ParseCount(std::string const& text) {
  auto const count = ParseIntegers(text);
  if (!count || count->size() != 1 || count->front() < 0)
    throw CUsageError("--count needs a whole number of at least 0, not \"" + text + "\"");
  return count->front();
}

double ParseRadius(std::string const& text, ORVA::CSize const& size) {
  auto const radius = ParseNumbers(text);
  // A fiber wider than the image would only cost time.
  auto const most = static_cast<double>(std::max({size.x, size.y, size.z}));
  if (!radius || radius->size() != 1 || !(radius->front() > 0 && radius->front() <= most))
    throw CUsageError("--radius needs a number of voxels above 0, at most the image's extent of " +
                      Shortest(most) + ", not \"" + text + "\"");
  return radius->front();
}

void Run(StOptions const& options) {
  auto const seed = ParseSeed(options.seed);
  auto const size = ParseSize(options.size);
  if (size.Dim() != 3)
    throw CUsageError("--size needs three numbers nx,ny,nz for fibers, not \"" + options.size +
                      "\"");
  StFibers const fibers{size, ParseCount(options.count), ParseRadius(options.radius, size)};
  StRotations const orientation = MakeRotations(CParameters::FromText(options.orientation));
  CheckImageOutput(options.output, ORVA::IMAGE_GREY_8, size.Dim());
  CAtomicFile file(options.output);
  CSlabWriter writer(file, {size, EnPixel::UInt8});
  RefuseBeyondMemory(static_cast<double>(size.x) * static_cast<double>(size.y),
                     "a slice of the image");
  {
    CProgressBar bar("making fibers", FiberSteps(fibers));
    ORVA::CRandom::Obj().Seed(seed);
    MakeFibers(
        fibers, *orientation.draw, [&](auto voxels) { writer.Write(voxels); }, &bar);
    writer.Finish();
  }
  file.Commit();
}

constexpr char c_help[] = R"(
Each fiber runs straight through the whole volume, 255 inside and 0 outside; fibers may cross. The
contrast is smallest along the directions that many fibers follow.

Example:
  selu synth fibers --size 128,128,128 --count 150 --radius 3 \
    --orientation vmf,kappa=20,theta=90deg,phi=45deg --seed 1 -o fibers.nrrd
  selu texture fibers.nrrd)";

std::string Footer() {
  std::string text = "Orientations, with their parameters (angles in radians, or as 90deg):\n";
  for (auto const& [name, help] : RotationNames())
    text +=
        "  " + std::string(name) + std::string(18 - std::string(name).size(), ' ') + help + "\n";
  return text + c_help;
}

} // namespace

void AddFibersCommand(CLI::App& synth) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      synth.add_subcommand("fibers", "Straight fibers with random orientations, 8-bit");
  command->alias("fibres");
  command->add_option("--size", options->size, "nx,ny,nz in voxels")->required();
  command->add_option("--count", options->count, "number of fibers")->required();
  command->add_option("--radius", options->radius, "of each fiber, in voxels")
      ->capture_default_str();
  command
      ->add_option("--orientation", options->orientation,
                   "distribution of the directions, such as vmf,kappa=20,theta=1,phi=0.5")
      ->capture_default_str();
  command->add_option("--seed", options->seed, "the same seed gives the same file, byte for byte")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "file ending in .nrrd, .mha, .nii, .nii.gz or .tif")
      ->required();
  command->footer(Footer());
  command->callback([options] { Run(*options); });
}

} // namespace selu
