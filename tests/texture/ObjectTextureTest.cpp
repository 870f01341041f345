// The texture of objects: against the same object cut out, whatever the labels and the layout.

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/ValueHelper.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

using namespace ORVA;
using test::ExpectError;

namespace {

struct StScene {
  CSize size;
  std::vector<std::uint8_t> levels;
  std::vector<std::uint32_t> labels;

  [[nodiscard]] CImage Levels() const { return test::MakeGrey8(size, levels); }
  [[nodiscard]] CImage Labels() const { return test::MakeImage(IMAGE_GREY_32, size, labels); }
};

// Labels in patches, some of them far apart in number.
StScene MakeScene(test::CRandomNumbers& random, CSize const& size, int n) {
  auto const voxels = static_cast<std::size_t>(size.x * size.y * size.z);
  StScene scene{size, std::vector<std::uint8_t>(voxels), std::vector<std::uint32_t>(voxels)};
  std::vector<std::uint32_t> const names = {0, 1, 5, 6, 4000000000, 4294967295};
  std::uint32_t label = 0;
  for (std::size_t k = 0; k < voxels; ++k) {
    if (random.Between(0, 3) == 0) label = names[random.Between<std::size_t>(0, names.size() - 1)];
    scene.labels[k] = label;
    scene.levels[k] = random.Between<std::uint8_t>(0, static_cast<std::uint8_t>(n));
  }
  return scene;
}

// The features of one label by itself: all other voxels are outside.
std::vector<double> CutOut(StScene const& scene, std::uint32_t label, int n, bool isCombined,
                           bool isSymmetric, CTextureFeatures const& features) {
  auto levels = scene.levels;
  for (std::size_t k = 0; k < levels.size(); ++k)
    if (scene.labels[k] != label) levels[k] = 0;
  CAggregatedTexture texture(isCombined ? EnAggregation::Combine3D : EnAggregation::Average3D, n,
                             features, {isSymmetric, NeighborDisplacements(scene.size.Dim())});
  texture.Count(CLevelImage(test::MakeGrey8(scene.size, levels), n));
  return texture.Values();
}

std::vector<std::uint64_t> Bits(std::span<double const> values) {
  std::vector<std::uint64_t> bits;
  for (double const value : values)
    bits.push_back(std::isnan(value) ? 0 : std::bit_cast<std::uint64_t>(value));
  return bits;
}

} // namespace

TEST(ObjectTexture, EqualsTheObjectCutOutToTheLastBit) {
  test::CRandomNumbers random;
  std::vector<EnTextureFeature> wanted(c_ibsiFeatures.begin(), c_ibsiFeatures.end());
  wanted.push_back(EnTextureFeature::MaximalCorrelation);
  for (int k = 0; k < 30; ++k) {
    int const n = random.Between(1, 12);
    CSize const size =
        k % 3 == 0 ? CSize(random.Between(1, 20), random.Between(1, 20))
                   : CSize(random.Between(1, 12), random.Between(1, 9), random.Between(1, 7));
    auto const scene = MakeScene(random, size, n);
    bool const isCombined = k % 2 == 0, isSymmetric = k % 5 != 0;
    if (k % 4 == 0) wanted.pop_back(); // also without a feature that asks for the cells
    CObjectTexture const texture(CLevelImage(scene.Levels(), n), scene.Labels(),
                                 {wanted, isSymmetric, isCombined, {}});
    auto const values = texture.Compute();
    for (std::size_t object = 0; object < texture.Objects().size(); ++object) {
      auto const label = texture.Objects()[object].label;
      auto const expected =
          CutOut(scene, label, n, isCombined, isSymmetric, CTextureFeatures(wanted));
      ASSERT_EQ(Bits(std::span(values).subspan(object * wanted.size(), wanted.size())),
                Bits(expected))
          << "label " << label;
    }
    if (k % 4 == 0) wanted.push_back(EnTextureFeature::MaximalCorrelation);
  }
}

TEST(ObjectTexture, LargeCountsAreAddedInTheSameOrder) {
  test::CRandomNumbers random;
  CSize const size(300, 300);
  StScene scene{size, std::vector<std::uint8_t>(90000), std::vector<std::uint32_t>(90000, 3)};
  for (auto& level : scene.levels) level = random.Between<std::uint8_t>(1, 3);
  CObjectTexture const texture(CLevelImage(scene.Levels(), 3), scene.Labels());
  EXPECT_EQ(Bits(texture.Compute()), Bits(CutOut(scene, 3, 3, false, true, CTextureFeatures())));
}

TEST(ObjectTexture, ManyLevelsUseALessHungryForm) {
  std::vector<std::uint16_t> const levels = {1, 60000, 1, 60000, 5, 5};
  std::vector<std::uint8_t> const labels = {2, 2, 2, 2, 1, 1};
  CObjectTexture const texture(CLevelImage(test::MakeImage(IMAGE_GREY_16, CSize(6), levels), 65535),
                               test::MakeGrey8(CSize(6), labels),
                               {{EnTextureFeature::Contrast}, true, false, {}});
  EXPECT_EQ(texture.Compute(), (std::vector<double>{0, 59999.0 * 59999.0}));
}

TEST(ObjectTexture, ObjectsComeByTheirLabelsWithTheirSizes) {
  auto const labels =
      test::MakeImage<std::int32_t>(IMAGE_SIGNED_32, CSize(3, 2), {9, 9, 0, 2, 9, 7});
  CObjectTexture const texture(CLevelImage(CImage(IMAGE_GREY_8, CSize(3, 2)), 4), labels);
  ASSERT_EQ(texture.Objects().size(), 3u);
  EXPECT_EQ(texture.Objects()[0].label, 2u);
  EXPECT_EQ(texture.Objects()[2].label, 9u);
  EXPECT_EQ(texture.Objects()[2].voxels, 3);
  for (double const value : texture.Compute()) EXPECT_TRUE(std::isnan(value)) << "no levels";
}

TEST(ObjectTexture, PartsAreTheWhole) {
  test::CRandomNumbers random;
  auto const scene = MakeScene(random, CSize(30, 30), 9);
  CObjectTexture const texture(CLevelImage(scene.Levels(), 9), scene.Labels());
  auto const whole = texture.Compute();
  std::vector<double> parts(whole.size());
  std::size_t const objects = texture.Objects().size(), features = texture.Features().size();
  for (std::size_t k = 0; k < objects; ++k)
    texture.Compute(k, k + 1, std::span(parts).subspan(k * features, features));
  EXPECT_EQ(Bits(parts), Bits(whole));
  texture.Compute(0, 0, {});
}

TEST(ObjectTexture, LayoutDoesNotMatter) {
  test::CRandomNumbers random;
  CSize const size(6, 5, 4);
  auto const scene = MakeScene(random, size, 7);
  CObjectTexture const usual(CLevelImage(scene.Levels(), 7), scene.Labels());
  std::vector<std::uint32_t> turned(scene.labels.size()); // z fastest, x backwards
  for (int64 z = 0; z < 4; ++z)
    for (int64 y = 0; y < 5; ++y)
      for (int64 x = 0; x < 6; ++x)
        turned[static_cast<std::size_t>(z + 4 * (y + 5 * (5 - x)))] =
            scene.labels[static_cast<std::size_t>(x + 6 * (y + 5 * z))];
  CImageView const labels(IMAGE_GREY_32, size, turned.data() + 100, {-80, 16, 4});
  CObjectTexture const other(CLevelImage(scene.Levels(), 7), labels);
  EXPECT_EQ(Bits(other.Compute()), Bits(usual.Compute()));
}

TEST(ObjectTexture, BecomesAFeatureImage) {
  auto const labels = test::MakeGrey8(CSize(4, 2), {3, 3, 0, 12, 3, 3, 0, 12});
  auto const levels = test::MakeGrey8(CSize(4, 2), {1, 2, 9, 4, 1, 2, 9, 4});
  CObjectTexture const texture(
      CLevelImage(levels, 9), labels,
      {{EnTextureFeature::Contrast, EnTextureFeature::JointMaximum}, true, true, {}});
  auto map = texture.ToMap(texture.Compute(), "cell");
  EXPECT_EQ(map.Entry("maximum label").Long(), 12);
  EXPECT_EQ(map.Entry("no. of objects").Long(), 2);
  EXPECT_EQ(map.Entry("cell 03/no. of voxels").Long(), 4);
  CImage table(IMAGE_GREY_F, CSize(1, 1));
  ConvertObjectBasedFeaturesIntoFeatureImage("texture", std::move(map), "cell", table, {"status"});
  ASSERT_EQ(table.Size(), CSize(13, 4)); // labels, voxels and two features
  // Rows follow the keys of the map in their order.
  auto const pixels = test::Pixels<float>(table);
  EXPECT_EQ(pixels[13 + 3], 4 / 6.0F) << "contrast of label 3: 4 of 6 pairs differ by 1";
  EXPECT_EQ(pixels[13 + 12], 0);
  EXPECT_EQ(pixels[2 * 13 + 12], 1) << "joint maximum of label 12";
}

TEST(ObjectTexture, IsFoundByTheCheckForItsLayout) {
  auto const labels = test::MakeGrey8(CSize(2), {1, 1});
  CObjectTexture const texture(CLevelImage(labels, 1), labels);
  EXPECT_TRUE(IsObjectBasedFeaturesMap(texture.ToMap(texture.Compute()), "object"));
}

TEST(ObjectTexture, RefusesWhatDoesNotFit) {
  CLevelImage const levels(CImage(IMAGE_GREY_8, CSize(2, 2)), 4);
  auto const good = test::MakeGrey8(CSize(2, 2), {1, 1, 2, 2});
  ExpectError<CExBadParam>([&] { CObjectTexture(levels, CImage(IMAGE_GREY_F, CSize(2, 2))); },
                           "an image of the type IMAGE_GREY_F has no integer labels");
  ExpectError<CExBadParam>([&] { CObjectTexture(levels, CImage(IMAGE_GREY_8, CSize(2, 3))); },
                           "labels and levels have different extents");
  auto const negative = test::MakeImage<std::int8_t>(IMAGE_SIGNED_8, CSize(2, 2), {1, -7, 2, 2});
  ExpectError<CExBadParam>([&] { CObjectTexture(levels, negative); }, "label -7 is negative");
  ExpectError<CExBadParam>(
      [&] {
        CObjectTexture(levels, good, {{EnTextureFeature::Contrast}, true, true, {{0, 0, 1}}});
      },
      "the displacement (0, 0, 1) leads out of the plane");
  CObjectTexture const texture(levels, good);
  std::vector<double> values(3);
  ExpectError<CExBadParam>([&] { texture.Compute(0, 3, values); },
                           "objects from 0 up to 3 are not among 2");
  ExpectError<CExBadParam>([&] { texture.Compute(0, 1, values); },
                           "3 values are not those of 1 objects");
  ExpectError<CExBadParam>([&] { (void)texture.ToMap(values); },
                           "3 values are not those of 2 objects");
  auto const far =
      test::MakeImage<std::uint32_t>(IMAGE_GREY_32, CSize(2, 2), {1, 1, 4294967295, 0});
  CObjectTexture const distant(levels, far);
  ExpectError<CExBadParam>([&] { (void)distant.ToMap(distant.Compute()); },
                           "a map holds no number above 2147483647, such as 4294967295");
}
