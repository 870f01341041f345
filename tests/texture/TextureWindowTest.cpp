// Texture maps by example: shapes, borders, masks, degenerate windows, progress, refusals.

#include "support/Errors.h"
#include "support/Windows.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <pxlib2image/ImageView.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

using namespace ORVA;
using namespace test;
using enum EnTextureFeature;

namespace {

CTextureWindow Window(CSize const& sides, Displacements const& displacements,
                      std::vector<EnTextureFeature> const& features) {
  CTextureWindow window("window", nullptr);
  window.SetSides(sides);
  window.SetDisplacements(displacements);
  window.SetFeatures(features);
  return window;
}

CLevelImage Levels(CSize const& size, std::vector<std::uint8_t> const& levels, int n) {
  return CLevelImage(MakeGrey8(size, levels), n);
}

CLevelImage Gray(CSize const& size, int n = 4) {
  return Levels(size, std::vector<std::uint8_t>(Pixels(size), 3), n);
}

// A window as large as the image allows: one map pixel knows all.
double ValueOf(EnTextureFeature feature, CLevelImage const& levels,
               CTriple<int64> const& d = {1, 0, 0}, bool isSymmetric = false) {
  auto window = Window(CSize(99, 99), {d}, {feature});
  window.SetSymmetric(isSymmetric);
  return AllMaps(window, levels).front();
}

struct StCountingObserver : IProgressObserver {
  void Start(int64 n, char const* text) override {
    steps = n;
    what = text;
  }
  void Advance() override { ++advanced; }
  void Finish(bool isComplete) noexcept override { complete += isComplete ? 1 : -1; }
  bool IsCancelled() override { return advanced >= cancelAt; }

  int64 steps = -1, advanced = 0, cancelAt = std::numeric_limits<int64>::max();
  int complete = 0;
  std::string what;
};

} // namespace

TEST(TextureWindow, ContrastOfThreePixelsAroundEach) {
  auto const levels = Levels(CSize(5, 1), {1, 2, 4, 4, 1}, 4);
  auto const window = Window(CSize(3, 1), {{1, 0, 0}}, {Contrast, Dissimilarity});
  // Squared differences 1 4 0 9: the first and the last window hold one pair, the others two.
  EXPECT_EQ(AllMaps(window, levels),
            (std::vector<double>{1, 2.5, 2, 4.5, 9, /* and absolute ones */ 1, 1.5, 1, 1.5, 3}));
}

TEST(TextureWindow, MapsAreImagesOfFloats) {
  CLevelImage const levels = Gray(CSize(7, 5));
  auto window = Window(CSize(3, 3), {{1, 0, 0}}, {JointAverage, JointEntropy});
  window.SetSteps(CSize(2, 1));
  auto const maps = window.Maps(levels);
  ASSERT_EQ(maps.size(), 2u);
  for (auto const& map : maps) {
    EXPECT_EQ(map.Type(), IMAGE_GREY_F);
    EXPECT_EQ(map.Size(), CSize(4, 5));
  }
  EXPECT_EQ(test::Pixels<float>(maps[0]), std::vector<float>(20, 3.0F));
  EXPECT_EQ(test::Pixels<float>(maps[1]), std::vector<float>(20, 0.0F));
}

TEST(TextureWindow, FloatsAreTheDoublesRounded) {
  CRandomNumbers random;
  auto const levels = RandomLevels(random, CSize(30, 20), 16, 0.1);
  auto const window = Window(CSize(5, 5), NeighborDisplacements(2), WindowFeatures());
  auto const doubles = AllMaps(window, levels);
  std::vector<float> floats(doubles.size());
  window.Compute(levels, {0, 20}, std::span(floats));
  for (std::size_t k = 0; k < doubles.size(); ++k)
    ASSERT_EQ(floats[k], static_cast<float>(doubles[k])) << k;
}

TEST(TextureWindow, ShapesAndCentersOfMaps) {
  struct StCase {
    CSize image, sides, steps;
    EnWindowBorder border;
    CSize map;
    CPos lastCenter;
  } const cases[] = {
      {CSize(512, 512),
       CSize(15, 15),
       CSize(1, 1),
       EnWindowBorder::Clipped,
       CSize(512, 512),
       {511, 511}},
      {CSize(512, 512),
       CSize(15, 15),
       CSize(1, 1),
       EnWindowBorder::Valid,
       CSize(498, 498),
       {504, 504}},
      {CSize(10, 10), CSize(3, 3), CSize(4, 3), EnWindowBorder::Clipped, CSize(3, 4), {8, 9}},
      {CSize(10, 10), CSize(3, 3), CSize(4, 3), EnWindowBorder::Valid, CSize(2, 3), {5, 7}},
      {CSize(3, 3), CSize(3, 3), CSize(9, 9), EnWindowBorder::Valid, CSize(1, 1), {1, 1}},
      {CSize(2, 9), CSize(3, 3), CSize(1, 1), EnWindowBorder::Valid, CSize(0, 7), {0, 7}},
      {CSize(0, 9), CSize(3, 3), CSize(1, 1), EnWindowBorder::Clipped, CSize(0, 9), {-1, 8}},
      {CSize(8, 9, 10),
       CSize(3, 5, 7),
       CSize(1, 2, 3),
       EnWindowBorder::Valid,
       CSize(6, 3, 2),
       {6, 6, 6}},
  };
  for (auto const& c : cases) {
    auto window = Window(c.sides, {{1, 0, 0}}, {Contrast});
    window.SetBorder(c.border);
    window.SetSteps(c.steps);
    EXPECT_EQ(window.MapSize(c.image), c.map);
    EXPECT_EQ(window.Center({c.map.x - 1, c.map.y - 1, c.map.z - 1}), c.lastCenter);
    EXPECT_EQ(AllMaps(window, Gray(c.image)).size(), Pixels(c.map));
  }
}

TEST(TextureWindow, VoxelsOfLevelZeroAreInNoPair) {
  auto const levels = Levels(CSize(6, 1), {1, 3, 0, 2, 2, 4}, 4);
  auto const window = Window(CSize(3, 1), {{1, 0, 0}}, {Contrast});
  auto const map = AllMaps(window, levels);
  EXPECT_EQ(map[1], 4);
  EXPECT_TRUE(std::isnan(map[2])) << "3 0 2 have no pair";
  EXPECT_EQ(map[3], 0);
}

TEST(TextureWindow, MeanIsThatOfTheDisplacementsWithPairs) {
  // In the corner 1 2 / 4 0 there is a pair to the right, one down, and none oblique.
  auto const levels = Levels(CSize(2, 2), {1, 2, 4, 0}, 4);
  auto const window = Window(CSize(3, 3), {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {Contrast});
  EXPECT_EQ(AllMaps(window, levels).front(), (1.0 + 9.0) / 2);
}

TEST(TextureWindow, OneLevelIsExact) {
  struct {
    EnTextureFeature feature;
    double value;
  } const cases[] = {{JointMaximum, 1},
                     {JointAverage, 3},
                     {JointVariance, 0},
                     {JointEntropy, 0},
                     {DifferenceEntropy, 0},
                     {SumAverage, 6},
                     {SumEntropy, 0},
                     {AngularSecondMoment, 1},
                     {InverseDifference, 1},
                     {InverseDifferenceMomentNormalized, 1},
                     {InverseVariance, 0},
                     {Correlation, 1},
                     {Autocorrelation, 9},
                     {ClusterShade, 0},
                     {ClusterProminence, 0},
                     {InformationCorrelation1, 0},
                     {InformationCorrelation2, 0}};
  for (bool const isSymmetric : {false, true})
    for (auto const& [feature, value] : cases)
      EXPECT_EQ(ValueOf(feature, Gray(CSize(9, 7)), {1, 1, 0}, isSymmetric), value)
          << FeatureName(feature);
}

// Each of the nine pairs of three levels once; the logarithm of 3 is in no fraction of 2.
TEST(TextureWindow, IndependentLevelsHaveNoMutualInformationAtAll) {
  auto const levels = Levels(CSize(10, 1), {1, 1, 2, 1, 3, 2, 2, 3, 3, 1}, 3);
  auto const window = Window(CSize(21, 1), {{1, 0, 0}}, WindowFeatures());
  auto const values = window.At(levels, {5, 0});
  auto const value = [&](EnTextureFeature feature) {
    auto const features = window.Features();
    return values[static_cast<std::size_t>(std::ranges::find(features, feature) -
                                           features.begin())];
  };
  EXPECT_EQ(value(InformationCorrelation1), 0);
  EXPECT_EQ(value(InformationCorrelation2), 0);
  EXPECT_EQ(value(Correlation), 0);
  EXPECT_NEAR(value(JointEntropy), std::log2(9.0), 1e-14);
  EXPECT_EQ(value(JointMaximum), 1.0 / 9);
}

TEST(TextureWindow, CorrelationOfOneWithItselfIsOne) {
  auto const levels = Levels(CSize(6, 1), {1, 4, 2, 3, 3, 1}, 4);
  EXPECT_EQ(ValueOf(Correlation, levels, {0, 0, 0}), 1);
  EXPECT_EQ(ValueOf(InformationCorrelation1, levels, {0, 0, 0}), -1);
}

TEST(TextureWindow, CorrelationIsZeroWhereOnlyOneVoxelVaries) {
  EXPECT_EQ(ValueOf(Correlation, Levels(CSize(2, 2), {1, 2, 1, 3}, 4)), 0);
}

// The greatest numbers there may be, of alternating extreme levels.
TEST(TextureWindow, LargestWindowsAndMostLevelsDoNotOverflow) {
  struct {
    CSize size;
    int n;
  } const cases[] = {{CSize(1023, 1023), 256}, {CSize(361, 363), 2048}, {CSize(255, 257), 4096}};
  for (auto const& [size, n] : cases)
    for (bool const isSymmetric : {false, true}) {
      std::vector<std::uint16_t> levels(Pixels(size));
      for (std::size_t k = 0; k < levels.size(); ++k)
        levels[k] = static_cast<std::uint16_t>(k % 3 == 0 ? 1 : n);
      CLevelImage const image(MakeImage(IMAGE_GREY_16, size, levels), n);
      auto features = WindowFeatures();
      if (n > 2048) std::erase(features, ClusterProminence);
      auto window = Window(size, {{1, 0, 0}}, features);
      window.SetSymmetric(isSymmetric);
      window.SetBorder(EnWindowBorder::Valid);
      CPairCounter pairs(n);
      pairs.Count(image, {1, 0, 0});
      if (isSymmetric) pairs.Symmetrize();
      CTextureFeatures reference{std::span<EnTextureFeature const>(features)};
      auto const expected = reference.Of(pairs);
      auto const values = AllMaps(window, image);
      ASSERT_EQ(values.size(), features.size());
      for (std::size_t f = 0; f < features.size(); ++f)
        EXPECT_NEAR(values[f], expected[f], 1e-9 * std::max(1.0, std::abs(expected[f])))
            << FeatureName(features[f]) << ", levels " << n;
    }
}

TEST(TextureWindow, NormalizingLevelsMayBeSet) {
  auto const levels = Levels(CSize(2, 1), {1, 3}, 4);
  auto window = Window(CSize(3, 1), {{1, 0, 0}},
                       {InverseDifferenceNormalized, InverseDifferenceMomentNormalized});
  EXPECT_DOUBLE_EQ(window.At(levels, {0, 0})[0], 1 / 1.5);
  EXPECT_DOUBLE_EQ(window.At(levels, {0, 0})[1], 1 / 1.25);
  window.SetNormalizingLevels(2);
  EXPECT_DOUBLE_EQ(window.At(levels, {0, 0})[0], 0.5);
  EXPECT_DOUBLE_EQ(window.At(levels, {0, 0})[1], 0.5);
}

// The tables of those who count end with the last level: what is written to the pixels after they
// were checked leads no further.
TEST(TextureWindow, LevelsThatShouldNotBeThereAreOutside) {
  std::vector<std::uint8_t> pixels = {1, 2, 2, 1, 2, 1};
  CImageView const view(IMAGE_GREY_8, CSize(6, 1), pixels.data());
  CLevelImage const levels(view, 2);
  auto const window = Window(CSize(3, 1), {{1, 0, 0}}, WindowFeatures());
  pixels[2] = 0;
  auto const expected = AllMaps(window, levels);
  pixels[2] = 255;
  EXPECT_EQ(Bits(AllMaps(window, levels)), Bits(expected));
  EXPECT_EQ(Bits(window.At(levels, {1, 0})), Bits(ValuesAt(expected, CSize(6, 1), {1, 0})));
}

TEST(TextureWindow, ProgressCountsLines) {
  StCountingObserver observer;
  auto window = Window(CSize(3, 3), {{1, 0, 0}}, {Contrast});
  window.SetProgressObserver(&observer);
  static_cast<void>(window.Maps(Gray(CSize(40, 30))));
  EXPECT_EQ(observer.steps, 30);
  EXPECT_EQ(observer.advanced, 30);
  EXPECT_EQ(observer.complete, 1);
  EXPECT_EQ(observer.what, "texture maps");
}

TEST(TextureWindow, ObserverCancels) {
  StCountingObserver observer;
  observer.cancelAt = 7;
  auto window = Window(CSize(3, 3), {{1, 0, 0}}, {Contrast});
  window.SetProgressObserver(&observer);
  ExpectError([&] { static_cast<void>(window.Maps(Gray(CSize(40, 30)))); }, "operation cancelled");
  EXPECT_EQ(observer.advanced, 7);
  EXPECT_EQ(observer.complete, -1);
}

TEST(TextureWindow, InputRowsAreThoseOfTheWindows) {
  auto window = Window(CSize(3, 5), {{1, 0, 0}}, {Contrast});
  CSize const image(40, 30);
  EXPECT_EQ(window.InputRows(image, {0, 30}), (StRowRange{0, 30}));
  EXPECT_EQ(window.InputRows(image, {10, 12}), (StRowRange{8, 14}));
  EXPECT_EQ(window.InputRows(image, {28, 30}), (StRowRange{26, 30}));
  EXPECT_EQ(window.InputRows(image, {4, 4}), (StRowRange{0, 0}));
  window.SetBorder(EnWindowBorder::Valid);
  EXPECT_EQ(window.InputRows(image, {0, 26}), (StRowRange{0, 30}));
  EXPECT_EQ(window.InputRows(image, {10, 12}), (StRowRange{10, 16}));
  window.SetSteps(CSize(1, 4));
  EXPECT_EQ(window.InputRows(image, {2, 3}), (StRowRange{8, 13}));
}

TEST(TextureWindow, RefusesWhatItCannotDo) {
  CTextureWindow window("window", nullptr);
  auto const refused = [](auto call, char const* message) {
    ExpectError<CExBadParam>(call, message);
  };
  refused([] { CTextureWindow(nullptr, nullptr); }, "name is null");
  refused([&] { window.SetSides(CSize(3, 4)); }, "the sides of a window are odd, not 3 x 4 x 1");
  refused([&] { window.SetSides(CSize(-1, 3)); }, "the sides of a window are odd, not -1 x 3 x 1");
  refused([&] { window.SetSides(CSize(1025, 1025)); },
          "a window of 1025 x 1025 x 1 voxels is too large");
  refused([&] { window.SetSides(CSize(1, std::numeric_limits<int64>::max())); },
          "a window of 1 x 9223372036854775807 x 1 voxels is too large");
  refused([&] { window.SetDisplacements({}); }, "no displacement");
  refused([&] { window.SetFeatures({}); }, "no feature");
  refused(
      [&] {
        window.SetFeatures(std::array{Contrast, MaximalCorrelation});
      },
      "the feature mcc has no moving window");
  refused([&] { window.SetFeatures(std::array{HaralickMaximalCorrelation}); },
          "the feature haralick_maximal_correlation has no moving window");
  refused([&] { window.SetFeatures(std::array{static_cast<EnTextureFeature>(200)}); },
          "no feature has the number 200");
  refused([&] { window.SetSteps(CSize(1, 0)); }, "steps of 1 x 0 x 1 voxels");
  refused([&] { window.SetNormalizingLevels(-1); }, "-1 levels");

  auto const maps = [&](CLevelImage const& levels) {
    return [&] { static_cast<void>(window.Maps(levels)); };
  };
  auto const flat = Gray(CSize(20, 20)), solid = Gray(CSize(20, 20, 3));
  window.SetSides(CSize(3, 3, 3));
  refused(maps(flat), "a window of 3 x 3 x 3 in an image of dimension 2");
  window.SetSides(CSize(3, 5));
  std::array<CTriple<int64>, 2> displacements = {{{2, -4, 0}, {0, -5, 0}}};
  window.SetDisplacements(displacements);
  refused(maps(flat), "displacement (0, -5, 0) leaves no pair in a window of 3 x 5 x 1");
  displacements[1] = {0, 0, 1};
  window.SetDisplacements(displacements);
  refused(maps(solid), "displacement (0, 0, 1) leaves no pair in a window of 3 x 5 x 1");
  displacements[1] = {0, 0, std::numeric_limits<int64>::min()};
  window.SetDisplacements(displacements);
  refused(maps(flat),
          "displacement (0, 0, -9223372036854775808) leaves no pair in a window of 3 x 5 x 1");
  window.SetDisplacements(std::span(displacements).first(1));

  refused(maps(Gray(CSize(9, 9), 5000)), "5000 levels in a moving window");
  refused(maps(Gray(CSize(9, 9), 2049)), "2049 levels with the cluster prominence");
  window.SetSides(CSize(1023, 1023));
  refused(maps(Gray(CSize(9, 9), 257)), "257 levels in a window of 1023 x 1023 x 1");
  window.SetSides(CSize(3, 5));

  std::vector<double> values(25 * 20 * 2);
  auto const compute = [&](StRowRange rows, std::size_t count) {
    return [&, rows, count] { window.Compute(flat, rows, std::span(values).first(count)); };
  };
  refused(compute({0, 2}, 999), "999 values for 25 features of 40 windows");
  refused(compute({0, 2}, 975), "975 values for 25 features of 40 windows");
  refused(compute({-1, 2}, 1000), "rows from -1 to 2 of a map of 20");
  refused(compute({5, 4}, 1000), "rows from 5 to 4 of a map of 20");
  refused(compute({19, 21}, 1000), "rows from 19 to 21 of a map of 20");
  EXPECT_NO_THROW(compute({18, 20}, 1000)());

  auto const part = [&](int64 first, CSize image) {
    return [&, first, image] { window.Compute(flat, first, image, {30, 32}, std::span(values)); };
  };
  refused(part(29, CSize(20, 90)), "20 rows from 29 on where those from 28 to 34 are needed");
  refused(part(13, CSize(20, 90)), "20 rows from 13 on where those from 28 to 34 are needed");
  refused(part(-1, CSize(20, 90)), "20 rows from -1 on where those from 28 to 34 are needed");
  refused(part(20, CSize(21, 90)), "levels of 20 x 20 x 1 voxels of an image of 21 x 90 x 1");
  EXPECT_NO_THROW(part(14, CSize(20, 90))());
  EXPECT_NO_THROW(part(28, CSize(20, 90))());

  EXPECT_THROW(static_cast<void>(window.At(flat, {20, 0})), CExBadParam);
}

TEST(TextureWindow, DefaultsAreThoseOfTheHeader) {
  CTextureWindow const window("window", nullptr);
  EXPECT_EQ(window.Sides(), CSize(15, 15));
  EXPECT_EQ(window.Features().size(), 25u);
  EXPECT_EQ(window.MapSize(CSize(50, 40)), CSize(50, 40));
  EXPECT_EQ(window.Name(), "window");
}
