// The texture of objects against each object by itself, with all other voxels outside.
#include "Fuzzing.h"

#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <pxlib2image/ImageView.h>

#include <bit>
#include <cmath>
#include <vector>

using namespace ORVA;
using namespace fuzz;

namespace {

constexpr std::array<std::uint32_t, 5> c_names = {0, 1, 2, 70000, 4294967295U};

std::vector<std::uint8_t> OfObject(std::vector<std::uint8_t> levels,
                                   std::vector<std::uint32_t> const& labels, std::uint32_t label) {
  for (std::size_t k = 0; k < levels.size(); ++k)
    if (labels[k] != label) levels[k] = 0;
  return levels;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  CSize const extents(input.Between(0, 8), input.Between(0, 6), input.Between(0, 4));
  auto const voxels = static_cast<std::size_t>(extents.x * extents.y * extents.z);
  int const n = static_cast<int>(input.Between(1, 9));
  std::vector<Point> displacements(1 + input.Count(3));
  bool const isFar = input.Flag();
  for (Point& d : displacements) d = isFar ? input.AnyPoint() : input.SmallPoint(2);
  bool const isSymmetric = input.Flag(), isCombined = input.Flag();
  std::vector<std::uint8_t> levels(voxels);
  std::vector<std::uint32_t> labels(voxels);
  std::uint32_t label = 0;
  for (std::size_t k = 0; k < voxels; ++k) {
    if (input.Byte() < 100) label = input.OneOf(c_names);
    labels[k] = label;
    levels[k] = static_cast<std::uint8_t>(input.Between(0, n));
  }
  CImageView const levelView(IMAGE_GREY_8, extents, static_cast<void const*>(levels.data()));
  CImageView const labelView(IMAGE_GREY_32, extents, static_cast<void const*>(labels.data()));
  StObjectTextureOptions options;
  options.isSymmetric = isSymmetric;
  options.isCombined = isCombined;
  options.displacements = displacements;
  auto const texture =
      Try([&] { return CObjectTexture(CLevelImage(levelView, n), labelView, options); });
  if (!texture) return 0;
  auto const values = texture->Compute();
  std::size_t const features = texture->Features().size();
  int64 inObjects = 0;
  for (std::size_t k = 0; k < texture->Objects().size(); ++k) {
    auto const& object = texture->Objects()[k];
    inObjects += object.voxels;
    auto const alone = OfObject(levels, labels, object.label);
    CAggregatedTexture expected(isCombined ? EnAggregation::Combine3D : EnAggregation::Average3D, n,
                                CTextureFeatures(), {isSymmetric, displacements});
    expected.Count(
        CLevelImage(CImageView(IMAGE_GREY_8, extents, static_cast<void const*>(alone.data())), n));
    auto const all = expected.Values();
    for (std::size_t f = 0; f < features; ++f) {
      double const a = values[k * features + f], b = all[f];
      Require(std::bit_cast<uint64>(a) == std::bit_cast<uint64>(b) ||
                  (std::isnan(a) && std::isnan(b)),
              "an object has the texture that it has by itself");
    }
  }
  Require(inObjects == static_cast<int64>(voxels) - std::ranges::count(labels, std::uint32_t{0}),
          "every voxel but the background is in an object");
  return 0;
}
