// Masking a volume by a cylinder beside overwriting all of its bytes, and beside the test of every
// voxel against its cross section.
#include <SeluUtils/CylinderMask.h>

#include <pxlib2image/HeaderTools.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace {

using namespace ORVA;

constexpr int64 c_side = 512;
constexpr int64 c_voxels = c_side * c_side * c_side;

// A volume with a third of its cross section inside, its slice made, its pages touched.
CImage Volume(char const* axis) {
  CImage image(IMAGE_GREY_8, CSize(c_side, c_side, c_side));
  std::memset(image.CreateAccess(true).WritableBase(), 1, image.Bytes());
  CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(image, axis, 255.5, 255.5, 166);
  mask.SetCylinderSlice(image);
  return image;
}

void Mask(benchmark::State& state, char const* axis) {
  CImage image = Volume(axis);
  CCylinderMask mask("mask", nullptr);
  for (auto _ : state) {
    mask.MaskImageWithMetaInfoCylinder(image, 9);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c_voxels);
}

void Overwrite(benchmark::State& state) {
  CImage image = Volume("Z");
  auto const access = image.CreateAccess(true);
  for (auto _ : state) {
    std::memset(access.WritableBase(), 9, image.Bytes());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c_voxels);
}

void TestEveryVoxel(benchmark::State& state, char axis) {
  CImage image = Volume(std::string(1, axis).c_str());
  CValue stored;
  if (!CSeluHeaderTools::GetMetaInfo(image, "cylinderMaskSlice", stored)) return;
  auto const slice = std::as_const(*stored.Pointer<CImage>()).CreateAccess(false);
  auto const access = image.CreateAccess(true);
  for (auto _ : state) {
    auto* voxel = reinterpret_cast<std::uint8_t*>(access.WritableBase());
    for (int64 z = 0; z < c_side; ++z)
      for (int64 y = 0; y < c_side; ++y)
        for (int64 x = 0; x < c_side; ++x, ++voxel) {
          int64 const u = axis == 'X' ? y : x, v = axis == 'Z' ? y : z;
          if (slice.Base()[v * c_side + u] == std::byte{0}) *voxel = 9;
        }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c_voxels);
}

[[maybe_unused]] bool const c_registered = [] {
  for (char const* const axis : {"X", "Y", "Z"}) {
    std::string const row = std::string("cylinder along ") + axis + ", 512^3 bytes/";
    auto const add = [&](char const* contestant, auto run) {
      benchmark::RegisterBenchmark((row + contestant).c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("SeluUtils", [=](benchmark::State& state) { Mask(state, axis); });
    add("memset of everything", Overwrite);
    add("test of every voxel", [=](benchmark::State& state) { TestEveryVoxel(state, *axis); });
  }
  return true;
}();

} // namespace
