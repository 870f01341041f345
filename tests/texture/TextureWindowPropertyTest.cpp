// Properties of texture maps: whatever the path to a window, its values are those of the window by
// itself, to the last bit, and those of the features of its matrix.

#include "support/Windows.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <pxlib2image/ImageView.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

using namespace ORVA;
using namespace test;
using enum EnTextureFeature;

namespace {

CSize RandomSize(CRandomNumbers& random) {
  if (random.Between(0, 2) == 0)
    return CSize(random.Between(1, 12), random.Between(1, 9), random.Between(1, 7));
  return random.Between(0, 3) == 0 ? CSize(random.Between(1, 6), random.Between(10, 60))
                                   : CSize(random.Between(1, 40), random.Between(1, 20));
}

CLevelImage RandomImage(CRandomNumbers& random, CSize const& size) {
  static constexpr std::array levels = {1, 2, 4, 8, 17, 256, 1000};
  static constexpr std::array outside = {0.0, 0.0, 0.1, 0.9};
  auto const n = levels[random.Between(std::size_t{0}, levels.size() - 1)];
  return RandomLevels(random, size, n, outside[random.Between(std::size_t{0}, outside.size() - 1)]);
}

CPos RandomPixel(CRandomNumbers& random, CSize const& size) {
  return {random.Between(int64{0}, size.x - 1), random.Between(int64{0}, size.y - 1),
          random.Between(int64{0}, size.z - 1)};
}

// The window around a voxel as an image of its own.
CLevelImage CutOut(CLevelImage const& levels, CPos const& center, CSize const& sides) {
  auto const& extent = levels.Extents();
  return levels.Box({std::max<int64>(0, center.x - sides.x / 2),
                     std::max<int64>(0, center.y - sides.y / 2),
                     std::max<int64>(0, center.z - sides.z / 2)},
                    {std::min(extent[0], center.x + sides.x / 2 + 1),
                     std::min(extent[1], center.y + sides.y / 2 + 1),
                     std::min(extent[2], center.z + sides.z / 2 + 1)});
}

// Features of the matrices of a cut-out, one for each displacement that has pairs.
std::vector<std::vector<double>> FeaturesOf(CLevelImage const& cutOut, StRandomWindow const& shape,
                                            std::vector<EnTextureFeature> const& chosen) {
  CTextureFeatures features{std::span<EnTextureFeature const>(chosen)};
  std::vector<std::vector<double>> all;
  for (auto const& d : shape.displacements) {
    CPairCounter pairs(cutOut.Levels());
    pairs.Count(cutOut, d);
    if (shape.isSymmetric) pairs.Symmetrize();
    if (pairs.Pairs() == 0) continue;
    auto const values = features.Of(pairs);
    all.emplace_back(values.begin(), values.end());
  }
  return all;
}

double Mean(std::vector<std::vector<double>> const& values, std::size_t feature) {
  double sum = 0;
  for (auto const& ofOne : values) sum += ofOne[feature];
  return sum / static_cast<double>(values.size());
}

// The second information measure is the root of a difference: where that is all rounding, the root
// of 1e-16 is left of it.
double Tolerance(EnTextureFeature feature, double value, int levels) {
  if (feature == EnTextureFeature::InformationCorrelation2 ||
      feature == EnTextureFeature::HaralickInformationCorrelation2)
    return std::abs(value) > 1e-3 ? 1e-10 : 1e-6;
  double scale = 1;
  if (feature == EnTextureFeature::ClusterShade) scale = std::pow(levels, 3);
  if (feature == EnTextureFeature::ClusterProminence) scale = std::pow(levels, 4);
  return 1e-10 * std::max(std::abs(value), 1e-3 * scale);
}

} // namespace

// 10^4 windows in some 400 images, each with all features.
TEST(TextureWindowProperty, MapsAreThoseOfWindowsCountedAfreshToTheLastBit) {
  CRandomNumbers random;
  auto const features = WindowFeatures();
  for (int windows = 0; windows < 10000;) {
    CSize const size = RandomSize(random);
    StRandomWindow const shape(random, size.Dim());
    CTextureWindow const window = shape.Make(features);
    CLevelImage const levels = RandomImage(random, size);
    CSize const mapSize = window.MapSize(size);
    if (mapSize.IsEmpty()) continue;
    auto const maps = AllMaps(window, levels);
    for (int k = 0; k < 25; ++k, ++windows) {
      CPos const pixel = RandomPixel(random, mapSize);
      CPos const center = window.Center(pixel);
      ASSERT_EQ(Bits(ValuesAt(maps, mapSize, pixel)), Bits(window.At(levels, center)))
          << shape << " at " << center.x << ' ' << center.y << ' ' << center.z << " of " << size.x
          << 'x' << size.y << 'x' << size.z << ", levels " << levels.Levels();
    }
  }
}

TEST(TextureWindowProperty, MapsAreTheFeaturesOfTheMatricesOfCutOuts) {
  CRandomNumbers random;
  auto const features = WindowFeatures();
  for (int windows = 0; windows < 2000;) {
    CSize const size = RandomSize(random);
    StRandomWindow const shape(random, size.Dim());
    CTextureWindow const window = shape.Make(features);
    CLevelImage const levels = RandomImage(random, size);
    CSize const mapSize = window.MapSize(size);
    if (mapSize.IsEmpty()) continue;
    auto const maps = AllMaps(window, levels);
    for (int k = 0; k < 5; ++k, ++windows) {
      CPos const pixel = RandomPixel(random, mapSize);
      auto const values = ValuesAt(maps, mapSize, pixel);
      auto const expected =
          FeaturesOf(CutOut(levels, window.Center(pixel), shape.sides), shape, features);
      for (std::size_t f = 0; f < features.size(); ++f) {
        double const mean = Mean(expected, f);
        if (expected.empty()) {
          ASSERT_TRUE(std::isnan(values[f])) << FeatureName(features[f]) << ' ' << shape;
          continue;
        }
        ASSERT_NEAR(values[f], mean, Tolerance(features[f], mean, levels.Levels()))
            << FeatureName(features[f]) << ' ' << shape << ", levels " << levels.Levels();
      }
    }
  }
}

// All images of 3 x 2 voxels of levels 0 to 2, all windows, in both forms.
TEST(TextureWindowProperty, EveryTinyImage) {
  auto const features = WindowFeatures();
  CSize const size(3, 2);
  Displacements const displacements = {{1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {-2, 1, 0}, {0, 0, 0}};
  for (int code = 0; code < 729; ++code) {
    std::vector<std::uint8_t> pixels;
    for (int rest = code, k = 0; k < 6; ++k, rest /= 3)
      pixels.push_back(static_cast<std::uint8_t>(rest % 3));
    CImage const image = MakeGrey8(size, pixels);
    CLevelImage const levels(image, 2);
    for (bool const isSymmetric : {false, true})
      for (auto const& d : displacements) {
        CTextureWindow window("window", nullptr);
        window.SetSides(CSize(d.x == -2 ? 5 : 3, 3));
        window.SetDisplacements(std::span(&d, 1));
        window.SetSymmetric(isSymmetric);
        window.SetFeatures(features);
        auto const maps = AllMaps(window, levels);
        for (int64 y = 0; y < size.y; ++y)
          for (int64 x = 0; x < size.x; ++x)
            ASSERT_EQ(Bits(ValuesAt(maps, size, {x, y})), Bits(window.At(levels, {x, y})))
                << code << " at " << x << ' ' << y;
      }
  }
}

TEST(TextureWindowProperty, BandsOfRowsAreThoseOfTheWhole) {
  CRandomNumbers random;
  auto const features = WindowFeatures();
  for (int n = 0; n < 150; ++n) {
    CSize const size = RandomSize(random);
    StRandomWindow const shape(random, size.Dim());
    CTextureWindow const window = shape.Make(features);
    CLevelImage const levels = RandomImage(random, size);
    CSize const mapSize = window.MapSize(size);
    int64 const rows = Rows(mapSize);
    auto const whole = AllMaps(window, levels);
    int64 const low = random.Between(int64{0}, rows), high = random.Between(low, rows);
    auto const perRow = rows == 0 ? 0 : Pixels(mapSize) / static_cast<std::size_t>(rows);
    auto const inBand = static_cast<std::size_t>(high - low) * perRow;
    std::vector<double> expected, band(inBand * features.size());
    for (std::size_t f = 0; f < features.size(); ++f) {
      auto const first =
          whole.begin() +
          static_cast<std::ptrdiff_t>(f * Pixels(mapSize) + static_cast<std::size_t>(low) * perRow);
      expected.insert(expected.end(), first, first + static_cast<std::ptrdiff_t>(inBand));
    }
    window.Compute(levels, {low, high}, std::span(band));
    ASSERT_EQ(Bits(band), Bits(expected)) << shape << " rows " << low << " to " << high;

    // The same from no more of the image than the band needs.
    StRowRange const input = window.InputRows(size, {low, high});
    CPos const first = size.Dim() == 3 ? CPos(0, 0, input.low) : CPos(0, input.low);
    CPos const end =
        size.Dim() == 3 ? CPos(size.x, size.y, input.high) : CPos(size.x, input.high, size.z);
    std::ranges::fill(band, -1.0);
    window.Compute(levels.Box(first, end), input.low, size, {low, high}, std::span(band));
    ASSERT_EQ(Bits(band), Bits(expected)) << shape << " rows " << low << " to " << high;
  }
}

TEST(TextureWindowProperty, StepsPickPixelsOfTheFullMap) {
  CRandomNumbers random;
  auto const features = WindowFeatures();
  for (int n = 0; n < 60; ++n) {
    CSize const size = RandomSize(random);
    StRandomWindow shape(random, size.Dim());
    CLevelImage const levels = RandomImage(random, size);
    CTextureWindow const stepping = shape.Make(features);
    shape.steps = CSize(1, 1, 1);
    CTextureWindow const full = shape.Make(features);
    CSize const fullSize = full.MapSize(size), mapSize = stepping.MapSize(size);
    auto const maps = AllMaps(stepping, levels), fullMaps = AllMaps(full, levels);
    CPos const start = full.Center({0, 0, 0});
    for (int64 z = 0; z < mapSize.z; ++z)
      for (int64 y = 0; y < mapSize.y; ++y)
        for (int64 x = 0; x < mapSize.x; ++x) {
          CPos const c = stepping.Center({x, y, z});
          ASSERT_EQ(
              Bits(ValuesAt(maps, mapSize, {x, y, z})),
              Bits(ValuesAt(fullMaps, fullSize, {c.x - start.x, c.y - start.y, c.z - start.z})))
              << shape;
        }
  }
}

TEST(TextureWindowProperty, ValidWindowsAreTheInnerOnesOfAllWindows) {
  CRandomNumbers random;
  for (int n = 0; n < 40; ++n) {
    CSize const size(random.Between(9, 30), random.Between(9, 20));
    StRandomWindow shape(random, 2);
    shape.steps = CSize(1, 1);
    CLevelImage const levels = RandomImage(random, size);
    shape.border = EnWindowBorder::Valid;
    CTextureWindow const valid = shape.Make(WindowFeatures());
    shape.border = EnWindowBorder::Clipped;
    CTextureWindow const clipped = shape.Make(WindowFeatures());
    CSize const inner = valid.MapSize(size);
    ASSERT_EQ(inner, CSize(size.x - shape.sides.x + 1, size.y - shape.sides.y + 1));
    auto const innerMaps = AllMaps(valid, levels), maps = AllMaps(clipped, levels);
    for (int64 y = 0; y < inner.y; ++y)
      for (int64 x = 0; x < inner.x; ++x)
        ASSERT_EQ(Bits(ValuesAt(innerMaps, inner, {x, y})),
                  Bits(ValuesAt(maps, size, valid.Center({x, y}))))
            << shape;
  }
}

// Long lines are worked on in pieces of about a thousand windows, in space wide slices in blocks of
// lines.
TEST(TextureWindowProperty, LargeImagesHaveNoSeams) {
  CRandomNumbers random;
  for (CSize const& size : {CSize(2600, 4), CSize(3, 2600), CSize(1100, 140, 3)})
    for (int64 const step : {1, 2}) {
      CLevelImage const levels = RandomLevels(random, size, 5, 0.05);
      StRandomWindow shape(random, 2);
      shape.sides = size.Dim() == 3 ? CSize(5, 5, 3) : CSize(5, 5);
      shape.displacements = {{1, -2, 0}, {0, 1, 0}};
      shape.steps = CSize(step, step, step);
      shape.border = EnWindowBorder::Clipped;
      CTextureWindow const window = shape.Make({JointEntropy, Contrast, JointMaximum, Correlation});
      CSize const mapSize = window.MapSize(size);
      auto const maps = AllMaps(window, levels);
      for (int k = 0; k < 3000; ++k) {
        CPos const p = RandomPixel(random, mapSize);
        ASSERT_EQ(Bits(ValuesAt(maps, mapSize, p)), Bits(window.At(levels, window.Center(p))))
            << p.x << ' ' << p.y << ' ' << p.z;
      }
    }
}

// Either order of a pair.
TEST(TextureWindowProperty, SymmetricFormDoesNotKnowWhichVoxelIsFirst) {
  CRandomNumbers random;
  for (int n = 0; n < 60; ++n) {
    CSize const size = RandomSize(random);
    StRandomWindow shape(random, size.Dim());
    CLevelImage const levels = RandomImage(random, size);
    shape.isSymmetric = true;
    auto const maps = AllMaps(shape.Make(WindowFeatures()), levels);
    for (auto& d : shape.displacements) d = d * int64{-1};
    ASSERT_EQ(Bits(AllMaps(shape.Make(WindowFeatures()), levels)), Bits(maps)) << shape;
  }
}

TEST(TextureWindowProperty, LayoutInMemoryDoesNotMatter) {
  CRandomNumbers random;
  for (int n = 0; n < 40; ++n) {
    CSize const size = RandomSize(random);
    CLevelImage const levels = RandomImage(random, size);
    StRandomWindow const shape(random, size.Dim());
    // The same voxels, z fastest and x backward, two bytes each, with a byte between them.
    std::vector<std::byte> memory(Pixels(size) * 3 + 3);
    std::array<int64, 3> const strides = {-3 * size.z * size.y, 3 * size.z, 3};
    auto* const base = memory.data() + (size.x - 1) * 3 * size.z * size.y;
    for (int64 z = 0; z < size.z; ++z)
      for (int64 y = 0; y < size.y; ++y)
        for (int64 x = 0; x < size.x; ++x) {
          auto const level = static_cast<std::uint16_t>(levels.At({x, y, z}));
          std::memcpy(base + x * strides[0] + y * strides[1] + z * strides[2], &level, 2);
        }
    CImageView const view(IMAGE_GREY_16, size, static_cast<void const*>(base), strides);
    CTextureWindow const window = shape.Make(WindowFeatures());
    ASSERT_EQ(Bits(AllMaps(window, CLevelImage(view, levels.Levels()))),
              Bits(AllMaps(window, levels)))
        << shape;
  }
}

TEST(TextureWindowProperty, EveryChoiceOfFeaturesGivesEachTheSameValue) {
  CRandomNumbers random;
  auto const features = WindowFeatures();
  CSize const size(23, 11);
  for (bool const isSymmetric : {false, true}) {
    StRandomWindow shape(random, 2);
    shape.isSymmetric = isSymmetric;
    shape.steps = CSize(1, 1);
    shape.border = EnWindowBorder::Clipped;
    CLevelImage const levels = RandomImage(random, size);
    CSize const mapSize = shape.Make(features).MapSize(size);
    auto const all = AllMaps(shape.Make(features), levels);
    auto const map = [&](std::size_t f) {
      auto const first = all.begin() + static_cast<std::ptrdiff_t>(f * Pixels(mapSize));
      return std::vector<double>(first, first + static_cast<std::ptrdiff_t>(Pixels(mapSize)));
    };
    for (std::size_t f = 0; f < features.size(); ++f) {
      std::size_t const g = random.Between(std::size_t{0}, features.size() - 1);
      auto expected = map(f);
      auto const second = map(g);
      expected.insert(expected.end(), second.begin(), second.end());
      ASSERT_EQ(Bits(AllMaps(shape.Make({features[f], features[g]}), levels)), Bits(expected))
          << FeatureName(features[f]) << " and " << FeatureName(features[g]) << ' ' << shape;
    }
  }
}
