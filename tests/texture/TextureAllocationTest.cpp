// Every allocation of the texture classes fails once: what was there before is there unchanged, and
// where a header promises less, the object still serves.
#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/Texture/TextureWindow.h>

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

using namespace ORVA;
using test::FailEveryAllocation;

namespace {

// Pixels from 1 to `levels`, none of which follows from its neighbors.
CImage Pixels(CSize const& size, int levels, int factor = 7) {
  CImage image(IMAGE_GREY_16, size);
  auto const pixels = image.CreateAccess(true).As<std::uint16_t>();
  int next = 0;
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (std::uint16_t& pixel : pixels.Row(y, z)) {
        next += factor + next % 5;
        pixel = static_cast<std::uint16_t>(next % levels + 1);
      }
  return image;
}

// The same number, or NaN both.
bool IsSame(std::vector<double> const& a, std::vector<double> const& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (a[k] != b[k] && !(std::isnan(a[k]) && std::isnan(b[k]))) return false;
  return true;
}

std::vector<double> ToVector(std::span<double const> values) {
  return {values.begin(), values.end()};
}

} // namespace

TEST(TextureAllocation, QuantizingLeavesTheInputAndTheReport) {
  CImage const image = Pixels(CSize(6, 5, 4), 900), before = image;
  for (auto const& quantizer :
       {CQuantizer::BinCount(16), CQuantizer::BinCount(400), CQuantizer::BinWidth(25),
        CQuantizer::ByEdges({0, 10, 500, 1000})}) {
    StLevelReport report;
    CLevelImage levels;
    EXPECT_GT(FailEveryAllocation([&] { levels = quantizer.Quantize(image, {}, &report); },
                                  [&] {
                                    EXPECT_EQ(image, before);
                                    EXPECT_EQ(levels.Size(), CLevelImage().Size());
                                  }),
              0);
    EXPECT_EQ(levels.Size(), image.Size());
    EXPECT_GT(report.Occurring(), 0);
  }
}

TEST(TextureAllocation, ACounterIsAsItWas) {
  CImage const image = Pixels(CSize(9, 8, 3), 12);
  CLevelImage const levels(image, 12);
  for (auto const form : {CPairCounter::EnForm::Dense, CPairCounter::EnForm::Sparse}) {
    SCOPED_TRACE(form == CPairCounter::EnForm::Dense ? "table" : "list");
    CPairCounter other(12, form);
    other.Count(levels, {0, 1, 1});
    auto const fresh = [&] {
      CPairCounter counter(12, form);
      counter.Count(levels, {1, 0, 0});
      counter.Add(3, 4, 2);
      return counter;
    };
    CPairCounter counter = fresh();
    auto const unchanged = [&] {
      EXPECT_EQ(counter, fresh());
      EXPECT_EQ(counter.Pairs(), fresh().Pairs());
    };
    FailEveryAllocation([&] { counter.Count(levels, {1, 1, 0}); }, unchanged);
    counter = fresh();
    FailEveryAllocation([&] { counter += other; }, unchanged);
    counter = fresh();
    FailEveryAllocation([&] { counter += counter; }, unchanged);
    counter = fresh();
    FailEveryAllocation([&] { counter.Symmetrize(); }, unchanged);
    counter = fresh();
    FailEveryAllocation([&] { counter.Add(12, 1, 5); }, unchanged);
    counter = fresh();
    FailEveryAllocation([&] { counter = CPairCounter(40, form); }, unchanged);
    counter = fresh();
    EXPECT_GT(FailEveryAllocation([&] { (void)counter.Cells(); }, unchanged), 0);
    EXPECT_GT(FailEveryAllocation([&] { (void)counter.ToDense(); }, unchanged), 0);
  }
}

TEST(TextureAllocation, ManyPairsAreCountedOrNone) {
  // Enough of them for a table of their own, and for lists that are merged.
  CLevelImage const levels(Pixels(CSize(200, 100), 12), 12);
  for (auto const form : {CPairCounter::EnForm::Dense, CPairCounter::EnForm::Sparse}) {
    CPairCounter counter(12, form), whole(12, form);
    whole.Count(levels, {1, 0, 0});
    EXPECT_GT(FailEveryAllocation(
                  [&] {
                    counter.Count(levels, {1, 0, 0});
                  },
                  [&] { EXPECT_EQ(counter, CPairCounter(12, form)); }),
              0);
    EXPECT_EQ(counter, whole);
    EXPECT_EQ(counter.Pairs(), uint64{199 * 100});
  }
}

TEST(TextureAllocation, FeaturesStillServe) {
  CLevelImage const levels(Pixels(CSize(9, 8, 3), 12), 12);
  CPairCounter counter(12);
  counter.Count(levels, {1, 0, 0});
  for (auto const features : {std::span<EnTextureFeature const>(c_ibsiFeatures),
                              std::span<EnTextureFeature const>(c_haralickFeatures)}) {
    CTextureFeatures fresh(features);
    auto const expected = ToVector(fresh.Of(counter));
    CTextureFeatures texture(features);
    EXPECT_GT(FailEveryAllocation([&] { (void)texture.Of(counter); },
                                  [&] {
                                    CTextureFeatures tried = texture;
                                    EXPECT_TRUE(IsSame(ToVector(tried.Of(counter)), expected));
                                  }),
              0);
  }
}

TEST(TextureAllocation, AnAggregateCanBeStartedAnew) {
  CLevelImage const levels(Pixels(CSize(7, 6, 4), 8), 8);
  for (EnAggregation const way : c_aggregations) {
    SCOPED_TRACE(AggregationName(way));
    CAggregatedTexture const fresh(way, 8);
    CAggregatedTexture whole = fresh;
    whole.Count(levels);
    CAggregatedTexture texture = fresh;
    FailEveryAllocation([&] { texture.Count(levels); },
                        [&] {
                          texture = fresh;
                          EXPECT_TRUE(IsSame(texture.Values(), fresh.Values()));
                        });
    EXPECT_TRUE(IsSame(texture.Values(), whole.Values()));
    CAggregatedTexture sum = fresh;
    FailEveryAllocation([&] { sum += whole; }, [&] { sum = fresh; });
    EXPECT_TRUE(IsSame(sum.Values(), whole.Values()));
    EXPECT_GT(FailEveryAllocation([&] { (void)whole.Values(); }, [] {}), 0);
  }
}

TEST(TextureAllocation, AWindowIsAsItWas) {
  CLevelImage const levels(Pixels(CSize(12, 9), 6), 6);
  CTextureWindow window("map", nullptr);
  window.SetSides(CSize(5, 5));
  auto const before = window.Maps(levels);
  auto const unchanged = [&] { EXPECT_EQ(window.Maps(levels), before); };
  std::vector<CTriple<int64>> const displacements = NeighborDisplacements(2);
  EXPECT_GT(FailEveryAllocation([&] { window.SetDisplacements(displacements); }, unchanged), 0);
  window.SetDisplacements(std::array{CTriple<int64>(1, 0, 0)});
  EXPECT_GT(FailEveryAllocation(
                [&] {
                  CTextureWindow copy("copy", nullptr);
                  copy.SetFeatures(std::array{EnTextureFeature::Contrast});
                  window = copy;
                },
                unchanged),
            0);
  std::vector<double> values(window.Features().size() * 12 * 9, -1);
  EXPECT_GT(FailEveryAllocation([&] { window.Compute(levels, {0, 9}, values); }, [] {}), 0);
  EXPECT_GT(FailEveryAllocation([&] { (void)window.Maps(levels); }, [] {}), 0);
  EXPECT_GT(FailEveryAllocation([&] { (void)window.At(levels, CPos(3, 3)); }, [] {}), 0);
}

TEST(TextureAllocation, ObjectsLeaveTheirImages) {
  CImage const pixels = Pixels(CSize(9, 8, 3), 12), labels = Pixels(CSize(9, 8, 3), 4, 3);
  CImage const pixelsBefore = pixels, labelsBefore = labels;
  CLevelImage const levels(pixels, 12);
  EXPECT_GT(FailEveryAllocation(
                [&] {
                  CObjectTexture const texture(levels, labels);
                  (void)texture.ToMap(texture.Compute());
                },
                [&] {
                  EXPECT_EQ(pixels, pixelsBefore);
                  EXPECT_EQ(labels, labelsBefore);
                }),
            20);
}

TEST(TextureAllocation, TheGivenMatricesAreWholeOrUntouched) {
  CImage image(IMAGE_GREY_8, CSize(8, 7, 3));
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  for (int64 z = 0; z < 3; ++z)
    for (int64 y = 0; y < 7; ++y)
      for (std::uint8_t& pixel : pixels.Row(y, z)) pixel = static_cast<std::uint8_t>(y * 31 + z);
  CCooccurrence texture("texture", nullptr);
  CTriple<long> direction(1, 0, 0);
  CValueMap features;
  features.SetEntry("mine", CValueLong(7));
  CValueMap const before = features;
  EXPECT_GT(FailEveryAllocation([&] { texture.ComputeFeatures(image, &direction, &features); },
                                [&] { EXPECT_EQ(features, before); }),
            5);
  EXPECT_TRUE(features.HasEntry("Entropy"));
  CImage matrices(IMAGE_GREY_32, CSize(13, 256, 256));
  CImage const empty = matrices;
  FailEveryAllocation([&] { texture.ComputeMatrixAllDirections(matrices, image); },
                      [&] { EXPECT_EQ(matrices, empty); });
  EXPECT_NE(matrices, empty);
}
