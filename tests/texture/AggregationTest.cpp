// The six aggregations: against plain loops, and in parts.

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Texture/Aggregation.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace ORVA;
using test::ExpectError;

namespace {

CImage AnyLevels(test::CRandomNumbers& random, CSize const& size, int n) {
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(size.x * size.y * size.z));
  for (auto& pixel : pixels) pixel = random.Between<std::uint8_t>(0, static_cast<std::uint8_t>(n));
  return test::MakeGrey8(size, pixels);
}

double ContrastOf(CPairCounter const& pairs) {
  CTextureFeatures features({EnTextureFeature::Contrast});
  return features.Of(pairs)[0];
}

double Aggregated(EnAggregation way, CLevelImage const& levels) {
  CAggregatedTexture texture(way, levels.Levels(), CTextureFeatures({EnTextureFeature::Contrast}));
  texture.Count(levels);
  return texture.Values()[0];
}

double Mean(std::vector<double> const& values) {
  double sum = 0;
  for (double const value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

} // namespace

TEST(Aggregation, EveryWayByPlainLoops) {
  test::CRandomNumbers random;
  auto const image = AnyLevels(random, CSize(9, 8, 5), 6);
  CLevelImage const levels(image, 6);
  // The contrast of C is that of C + C^T.
  std::vector<double> bySlice, bySliceCombined, byDirection, inSpace;
  CPairCounter plane(6), space(6);
  for (int64 z = 0; z < 5; ++z) {
    auto const slice = levels.Box({0, 0, z}, {9, 8, z + 1});
    CPairCounter combined(6);
    for (auto const& d : NeighborDisplacements(2)) {
      CPairCounter pairs(6);
      pairs.Count(slice, d);
      bySlice.push_back(ContrastOf(pairs));
      combined += pairs;
    }
    bySliceCombined.push_back(ContrastOf(combined));
  }
  for (auto const& d : NeighborDisplacements(2)) {
    CPairCounter pairs(6);
    pairs.Count(levels, d);
    byDirection.push_back(ContrastOf(pairs));
    plane += pairs;
  }
  for (auto const& d : NeighborDisplacements(3)) {
    CPairCounter pairs(6);
    pairs.Count(levels, d);
    inSpace.push_back(ContrastOf(pairs));
    space += pairs;
  }
  EXPECT_NEAR(Aggregated(EnAggregation::Average2D, levels), Mean(bySlice), 1e-13);
  EXPECT_NEAR(Aggregated(EnAggregation::Combine2D, levels), Mean(bySliceCombined), 1e-13);
  EXPECT_NEAR(Aggregated(EnAggregation::Average25D, levels), Mean(byDirection), 1e-13);
  EXPECT_NEAR(Aggregated(EnAggregation::Combine25D, levels), ContrastOf(plane), 1e-13);
  EXPECT_NEAR(Aggregated(EnAggregation::Average3D, levels), Mean(inSpace), 1e-13);
  EXPECT_NEAR(Aggregated(EnAggregation::Combine3D, levels), ContrastOf(space), 1e-13);
}

TEST(Aggregation, SlabsAddUpToTheSameBits) {
  test::CRandomNumbers random;
  auto const image = AnyLevels(random, CSize(7, 6, 9), 5);
  CLevelImage const levels(image, 5);
  for (EnAggregation const way : c_aggregations) {
    CAggregatedTexture whole(way, 5);
    whole.Count(levels);
    CAggregatedTexture sum(way, 5);
    for (int64 const low : {6, 0, 3}) { // in any order, each with its halo
      int64 const from = std::max<int64>(0, low - 1), to = std::min<int64>(9, low + 4);
      CAggregatedTexture part(way, 5);
      part.Count(levels.Box({0, 0, from}, {7, 6, to}), low - from, low + 3 - from, from);
      sum += part;
    }
    EXPECT_EQ(sum.Values(), whole.Values()) << AggregationName(way);
  }
}

TEST(Aggregation, MatricesWithoutPairsAreLeftOut) {
  // Slice 1 is outside; of a row only one direction has pairs.
  auto const image = test::MakeGrey8(CSize(3, 1, 2), {1, 2, 4, 0, 0, 0});
  for (EnAggregation const way : c_aggregations)
    EXPECT_EQ(Aggregated(way, CLevelImage(image)), 2.5) << AggregationName(way);
}

TEST(Aggregation, NoPairsAtAllIsNaN) {
  auto const image = test::MakeGrey8(CSize(3, 3), std::vector<std::uint8_t>(9));
  for (EnAggregation const way : c_aggregations)
    EXPECT_TRUE(std::isnan(Aggregated(way, CLevelImage(image, 3)))) << AggregationName(way);
}

TEST(Aggregation, OneWayMatricesAndDisplacementsOfOnesOwn) {
  auto const image = test::MakeGrey8(CSize(4), {1, 2, 3, 3});
  CLevelImage const levels(image);
  CTextureFeatures const features({EnTextureFeature::JointAverage, EnTextureFeature::Contrast});
  CAggregatedTexture oneWay(EnAggregation::Combine2D, 3, features, {false, {{1, 0, 0}, {2, 0, 0}}});
  oneWay.Count(levels);
  EXPECT_EQ(oneWay.Values(), (std::vector<double>{(1 + 2 + 3 + 1 + 2) / 5.0, 7 / 5.0}));
  CAggregatedTexture both(EnAggregation::Combine2D, 3, features, {true, {{1, 0, 0}, {2, 0, 0}}});
  both.Count(levels);
  EXPECT_EQ(both.Values()[0], (1 + 2 + 3 + 1 + 2 + 2 + 3 + 3 + 3 + 3) / 10.0);
}

TEST(Aggregation, NamesLeadBackToTheirWays) {
  for (EnAggregation const way : c_aggregations)
    EXPECT_EQ(AggregationFromName(AggregationName(way)), way);
  EXPECT_EQ(AggregationName(EnAggregation::Average25D), "2_5D_avg");
  EXPECT_FALSE(AggregationFromName("2.5D_avg"));
}

TEST(Aggregation, RefusesWhatDoesNotFit) {
  ExpectError<CExBadParam>(
      [] {
        CAggregatedTexture(EnAggregation::Average2D, 4, {}, {true, {{0, 0, 1}}});
      },
      "the displacement (0, 0, 1) leads out of the slice");
  ExpectError<CExBadParam>(
      [] {
        CAggregatedTexture(EnAggregation::Average3D, 4, {}, {true, {{0, 0, 0}}});
      },
      "a displacement is (0, 0, 0)");
  ExpectError<CExBadParam>([] { CAggregatedTexture(EnAggregation::Average3D, 0); },
                           "0 levels are not from 1 to 65535");
  ExpectError<CExBadParam>([] { CAggregatedTexture(static_cast<EnAggregation>(9), 4); },
                           "there is no way 9 to aggregate");
  auto const image = test::MakeGrey8(CSize(2, 2), {1, 2, 3, 4});
  CAggregatedTexture texture(EnAggregation::Average2D, 4);
  texture.Count(CLevelImage(image));
  ExpectError<CExBadParam>([&] { texture.Count(CLevelImage(image)); },
                           "slice 0 is counted already");
  ExpectError<CExBadParam>([&] { texture += CAggregatedTexture(texture); },
                           "slice 0 is counted already");
  constexpr auto way = EnAggregation::Average2D;
  for (auto const& other :
       {CAggregatedTexture(EnAggregation::Average3D, 4), CAggregatedTexture(way, 5),
        CAggregatedTexture(way, 4, CTextureFeatures({EnTextureFeature::Contrast})),
        CAggregatedTexture(way, 4, {}, {false, {}}),
        CAggregatedTexture(way, 4, {}, {true, {{2, 0, 0}}})})
    ExpectError<CExBadParam>([&] { texture += other; },
                             "textures of different ways, levels, features or displacements do not "
                             "add up");
}
