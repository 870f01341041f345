// Gray levels made on purpose, and the features that everyone publishes.
#include <SeluUtils/CooccurrenceSum.h>
#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/ValueHelper.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

// Waves of some thousand values and, in it, two boxes with labels of their own.
CImage MakeScan() {
  CImage scan(IMAGE_SIGNED_16, CSize(48, 40, 12));
  auto const pixels = scan.CreateAccess(true).As<std::int16_t>();
  for (int64 z = 0; z < 12; ++z)
    for (int64 y = 0; y < 40; ++y)
      for (int64 x = 0; x < 48; ++x)
        pixels(x, y, z) = static_cast<std::int16_t>((x * y + 17 * z) % 900 - 400);
  return scan;
}

CImage MakeLabels() {
  CImage labels(IMAGE_GREY_8, CSize(48, 40, 12));
  auto const pixels = labels.CreateAccess(true).As<std::uint8_t>();
  for (int64 z = 2; z < 10; ++z)
    for (int64 y = 5; y < 35; ++y)
      for (int64 x = 4; x < 44; ++x) pixels(x, y, z) = x < 24 ? 1 : 2;
  return labels;
}

void MeasureRegion(CImage const& scan, CImage const& labels) {
  CQuantizer const quantizer = CQuantizer::BinWidth(25); // a bin of level 1 starts at the minimum
  StLevelReport report;
  CLevelImage const levels = quantizer.Quantize(scan, {&labels, 1}, &report); // label 1 alone
  std::cout << report.Occurring() << " levels, " << report.offMask << " voxels off the mask\n";

  CAggregatedTexture texture(EnAggregation::Average3D, levels.Levels());
  texture.Count(levels);
  std::vector<double> const values = texture.Values();
  for (std::size_t k = 0; k < values.size(); ++k)
    std::cout << FeatureTitle(texture.Features()[k]) << ' ' << values[k] << '\n';
}

void CountOneMatrix(CLevelImage const& levels) {
  CPairCounter pairs(levels.Levels());
  pairs.Count(levels, {3, -2, 1}); // from each voxel to the one 3 right, 2 up and 1 slice further
  pairs.Symmetrize();
  CTextureFeatures features(c_haralickFeatures);
  auto const values = features.Of(pairs);
  std::cout << FeatureName(features.Features()[8]) << ' ' << values[8] << '\n';
}

void MeasureObjects(CImage const& scan, CImage const& labels) {
  CObjectTexture const texture(CQuantizer::BinCount(32).Quantize(scan), labels);
  CValueMap map = texture.ToMap(texture.Compute(), "cell");
  CImage table(IMAGE_GREY_F, CSize(1, 1)); // a column per object, a row per feature
  ConvertObjectBasedFeaturesIntoFeatureImage("texture", std::move(map), "cell", table, {"status"});
  std::cout << table.Size().y << " rows of " << table.Size().x << " labels\n";
}

void ViewForeignPixels() {
  std::vector<float> pixels(64 * 32); // column by column, as some libraries have them
  CImageView const view(IMAGE_GREY_F, CSize(64, 32), pixels.data(), {4 * 32, 4, 0});
  CLevelImage const levels = CQuantizer::Range(0, 1, 16).Quantize(view);
  std::cout << levels.Levels() << " levels of pixels that were not copied\n";
}

void CountSlabs() {
  CCooccurrenceSum sum; // of 256 gray levels; CPairCounter does the same with any number
  for (int64 first = 0; first < 32; first += 8) {
    int64 const to = std::min<int64>(first + 8 + 1, 32);  // one slice more for dz = 1
    CImage slab(IMAGE_GREY_8, CSize(64, 64, to - first)); // read the slices first .. to - 1 into it
    sum.Count(slab, {1, 0, 1}, CPos(0, 0, 0), CPos(64, 64, 8));
  }
  std::cout << sum.Pairs() << " pairs, contrast " << sum.Features()[0] << '\n';
}

} // namespace

int main() {
  CImage const scan = MakeScan(), labels = MakeLabels();
  MeasureRegion(scan, labels);
  CountOneMatrix(CQuantizer::BinCount(16).Quantize(scan));
  MeasureObjects(scan, labels);
  ViewForeignPixels();
  CountSlabs();
}
