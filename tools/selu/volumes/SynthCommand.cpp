#include "Commands.h"
#include "base/Arguments.h"
#include "base/Memory.h"
#include "base/Progress.h"
#include "images/SlabWriter.h"
#include "volumes/SynthVolumes.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>

namespace selu {
namespace {

using Maker = void (*)(ORVA::CSize const&, ORVA::uint64, TakeVoxels const&,
                       ORVA::IProgressObserver*);

struct StKind {
  char const* name;
  char const* text;
  char const* help;
  Maker make;
  int passes;                           // steps of progress per slice
  double (*memory)(ORVA::CSize const&); // in bytes
};

double SliceBytes(ORVA::CSize const& size) {
  return static_cast<double>(size.x) * static_cast<double>(size.y);
}

constexpr std::array<StKind, 3> c_kinds = {{
    {"noise", "Independent uniform 8-bit gray values",
     R"(Every gray value is as likely as every other, whatever its neighbors: the texture is the same in
all directions.)",
     MakeNoise, c_noisePasses, SliceBytes},
    {"blobs", "A continuous random field of 8-bit gray values",
     R"(Noise smoothed over about ten voxels in every direction; mean 128.)", MakeBlobs,
     c_blobPasses, BlobBytes},
    {"layers", "An oblique lamination with noise, 8-bit",
     R"(Layers 8 to 16 voxels thick along their normal (1,1,1), in 2D (1,1): the gray value depends on x +
y + z alone, but for a little noise. So the texture differs by direction as one can predict: the
contrast grows with |dx + dy + dz|. It is smallest in the plane of the layers, along 1,-1,0 and
1,0,-1 and 0,1,-1 (in 2D 1,-1), and largest across them, along 1,1,1 (in 2D 1,1).)",
     MakeLayers, c_layerPasses, SliceBytes},
}};

struct StOptions {
  std::string size, seed, output;
};

void Run(StKind const& kind, StOptions const& options) {
  auto const seed = ParseSeed(options.seed);
  ORVA::CSize const size = ParseSize(options.size);
  CheckImageOutput(options.output, ORVA::IMAGE_GREY_8, size.Dim());
  CAtomicFile file(options.output);
  CSlabWriter writer(file, {size, EnPixel::UInt8});
  RefuseBeyondMemory(kind.memory(size), "what is made at a time");
  {
    CProgressBar bar(std::string("making ") + kind.name, size.z * kind.passes);
    kind.make(
        size, seed, [&](auto voxels) { writer.Write(voxels); }, &bar);
    writer.Finish();
  }
  file.Commit();
}

void AddKind(CLI::App& synth, StKind const& kind) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command = synth.add_subcommand(kind.name, kind.text);
  command->add_option("--size", options->size, "nx,ny or nx,ny,nz in voxels")->required();
  command->add_option("--seed", options->seed, "the same seed gives the same file, byte for byte")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "file ending in .nrrd, .mha, .nii, .nii.gz, "
                   ".tif, or .png in 2D")
      ->required();
  command->footer(std::string(kind.help) + "\n\nExample:\n  selu synth " + kind.name +
                  " --size 64,64,64 --seed 1 -o " + kind.name + ".nrrd");
  command->callback([&kind, options] { Run(kind, *options); });
}

} // namespace

void AddSynthCommand(CLI::App& app) {
  CLI::App* const synth = app.add_subcommand("synth", "Make a sample image from random numbers");
  synth->require_subcommand(1);
  synth->footer("Example:\n  selu synth layers --size 64,64,64 --seed 1 -o layers.nrrd\n\n"
                "Each kind has a help page of its own: selu synth layers --help");
  for (auto const& kind : c_kinds) AddKind(*synth, kind);
  AddFibersCommand(*synth);
}

} // namespace selu
