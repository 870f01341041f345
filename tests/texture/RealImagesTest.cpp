// Co-occurrence inside the regions of real images, against figures that others published for them.
// Skipped where the folder with the images is not present.

#include "images/ImageFile.h"
#include "support/Matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <vector>

using namespace ORVA;

namespace {

std::filesystem::path const c_data = SELU_TEST_DATA;

std::vector<double> ReadValues(char const* name) {
  auto const image = selu::ReadImage(c_data / name);
  return selu::VisitPixels(
      image, [](auto pixels) { return std::vector<double>(pixels.begin(), pixels.end()); });
}

// Pairs with both voxels in a region: all voxels outside have a level of their own, left out here.
constexpr std::uint8_t c_outside = 255;

test::Matrix InsideRegion(test::Matrix counts) {
  for (std::size_t k = 0; k < 256; ++k)
    counts[c_outside * 256 + k] = counts[k * 256 + c_outside] = 0;
  return counts;
}

} // namespace

// The brain tumor of the PyRadiomics test data, in bins of 25 from 450 up: numbers of pairs of
// brain1_glcm.npy, and column brain1 of baseline_glcm.csv, which holds the means over the 13
// directions of the features of (C + transpose(C)) / (2 * pairs).
TEST(RealImages, BrainTumourEqualsThePyRadiomicsBaseline) {
  if (!exists(c_data / "brain1_image.nrrd")) GTEST_SKIP() << "no brain1_image.nrrd in " << c_data;
  constexpr std::array<std::uint64_t, 13> pairs = {3928, 3774, 3856, 3730, 2077, 2095, 2095,
                                                   2039, 2064, 2023, 2039, 2076, 2080};
  auto const values = ReadValues("brain1_image.nrrd"), labels = ReadValues("brain1_label.nrrd");
  ASSERT_EQ(values.size(), labels.size());
  std::vector<std::uint8_t> levels(values.size(), c_outside);
  for (std::size_t k = 0; k < values.size(); ++k)
    if (labels[k] == 1)
      levels[k] = static_cast<std::uint8_t>(std::floor((values[k] - 450) / 25) + 1);
  ASSERT_EQ(levels.size() - static_cast<std::size_t>(std::ranges::count(levels, c_outside)), 4137u);

  auto const image = test::MakeGrey8(CSize(256, 256, 25), levels);
  double contrast = 0, entropy = 0, energy = 0, homogeneity = 0;
  for (std::size_t s = 0; s < 13; ++s) {
    auto const counts =
        InsideRegion(test::CountWithLibrary(image, CCooccurrence::m_cDirections[s]));
    EXPECT_EQ(test::Total(counts), pairs[s]) << "direction " << s;
    for (std::size_t i = 0; i < 256; ++i)
      for (std::size_t j = 0; j < 256; ++j) {
        double const p = static_cast<double>(counts[i * 256 + j] + counts[j * 256 + i]) /
                         (2.0 * static_cast<double>(pairs[s]));
        double const difference = static_cast<double>(i) - static_cast<double>(j);
        contrast += difference * difference * p / 13;
        if (p > 0) entropy -= p * std::log2(p) / 13;
        energy += p * p / 13;
        homogeneity += p / (1 + difference * difference) / 13;
      }
  }
  EXPECT_NEAR(contrast, 47.492125114429776, 1e-11);
  EXPECT_NEAR(entropy, 8.799696270248813, 1e-11);
  EXPECT_NEAR(energy, 0.002893149242988865, 1e-15);
  EXPECT_NEAR(homogeneity, 0.20022255640475703, 1e-13);
}

// The IBSI digital phantom as a file: all 13 directions merged, C + transpose(C).
TEST(RealImages, PhantomFileHoldsThePublishedPhantom) {
  if (!exists(c_data / "ibsi_phantom.nii.gz"))
    GTEST_SKIP() << "no ibsi_phantom.nii.gz in " << c_data;
  auto const values = ReadValues("ibsi_phantom.nii.gz"),
             region = ReadValues("ibsi_phantom_mask.nii.gz");
  ASSERT_EQ(values.size(), 80u);
  std::vector<std::uint8_t> levels(values.size(), c_outside);
  for (std::size_t k = 0; k < values.size(); ++k)
    if (region[k] != 0) levels[k] = static_cast<std::uint8_t>(values[k]);
  auto const image = test::MakeGrey8(CSize(5, 4, 4), levels);
  std::uint64_t pairs = 0, equalOnes = 0;
  for (auto const direction : CCooccurrence::m_cDirections) {
    auto const counts = InsideRegion(test::CountWithLibrary(image, direction));
    pairs += 2 * test::Total(counts);
    equalOnes += 2 * counts[1 * 256 + 1];
  }
  EXPECT_EQ(pairs, 1054u);
  EXPECT_EQ(equalOnes, 536u);
}
