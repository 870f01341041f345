// The thirteen features by way of the class: their names, what they come to where one can work it
// out on paper, and what happens to the map.

#include <SeluUtils/Cooccurrence.h>

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using test::MakeGrey8;

namespace {

constexpr char const* c_names[] = {"Contrast",
                                   "Correlation",
                                   "Difference Variance",
                                   "Difference Entropy",
                                   "Entropy",
                                   "Inverse Difference Moment",
                                   "Information Measure of Correlation 1",
                                   "Information Measure of Correlation 2",
                                   "Second Angular Moment",
                                   "Sum Average",
                                   "Sum Entropy",
                                   "Sum Variance",
                                   "Variance"};

CValueMap Features(IImage const& image, CTriple<long> direction = {1, 0, 0}) {
  CValueMap features;
  CCooccurrence("texture", nullptr).ComputeFeatures(image, &direction, &features);
  return features;
}

double Feature(IImage const& image, char const* name, CTriple<long> direction = {1, 0, 0}) {
  return Features(image, direction).Entry(name).Double();
}

CImage Constant(std::uint8_t level, CSize size = CSize(6, 5)) {
  return MakeGrey8(
      size, std::vector<std::uint8_t>(static_cast<std::size_t>(size.x * size.y * size.z), level));
}

// Half its pairs (0, 2), half (2, 0): p = 1/2 at both.
CImage Stripes() { return MakeGrey8(CSize(5, 1), {0, 2, 0, 2, 0}); }

} // namespace

TEST(TextureFeatures, MapHoldsThirteenDoublesUnderTheirNames) {
  CValueMap const features = Features(Stripes());
  EXPECT_EQ(features.Size(), 13u);
  for (auto const* name : c_names) {
    EXPECT_EQ(features.Entry(name).Type(), CValue::EnType::Double) << name;
  }
}

TEST(TextureFeatures, ConstantImage) {
  for (int const level : {0, 1, 100, 255}) {
    CValueMap const features = Features(Constant(static_cast<std::uint8_t>(level)));
    auto const value = [&](char const* name) { return features.Entry(name).Double(); };
    EXPECT_EQ(value("Entropy"), 0);
    EXPECT_EQ(value("Second Angular Moment"), 1);
    EXPECT_EQ(value("Contrast"), 0);
    EXPECT_EQ(value("Inverse Difference Moment"), 1);
    EXPECT_EQ(value("Difference Entropy"), 0);
    EXPECT_EQ(value("Sum Entropy"), 0);
    EXPECT_EQ(value("Information Measure of Correlation 1"), 0);
    EXPECT_EQ(value("Information Measure of Correlation 2"), 0);
    EXPECT_DOUBLE_EQ(value("Sum Average"), 2.0 * level / 511);
    double const offMean = level - level / 256.0;
    EXPECT_DOUBLE_EQ(value("Variance"), offMean * offMean / 65536);
    double const offAverage = 2.0 * level - 2.0 * level / 511;
    EXPECT_DOUBLE_EQ(value("Sum Variance"), offAverage * offAverage / 511 / 511);
  }
}

// The deviation of x is taken about the mean divided by 256, so it is 0 for the constant 0 only.
TEST(TextureFeatures, CorrelationIsZeroWhereADeviationIs) {
  EXPECT_EQ(Feature(Constant(0), "Correlation"), 0);
}

TEST(TextureFeatures, CorrelationOfAConstantImageByItsFormula) {
  double const g = 8, mean = g / 256;
  double const sigmaX = std::abs(g - mean);
  double const sigmaY = std::sqrt(255 * mean * mean + (1 - mean) * (1 - mean));
  EXPECT_DOUBLE_EQ(Feature(Constant(8), "Correlation"), (g * g - mean * mean) / (sigmaY * sigmaX));
}

TEST(TextureFeatures, StripesWorkedOutOnPaper) {
  CValueMap const features = Features(Stripes());
  auto const value = [&](char const* name) { return features.Entry(name).Double(); };
  double const ln2 = std::log(2.0);
  double const meanX = 1.0 / 256, meanDiff = 2.0 / 256, sumAverage = 2.0 / 511;
  EXPECT_DOUBLE_EQ(value("Contrast"), 4.0 / 65536);
  EXPECT_DOUBLE_EQ(value("Difference Variance"), (2 - meanDiff) * (2 - meanDiff) / 65536);
  EXPECT_EQ(value("Difference Entropy"), 0);
  EXPECT_DOUBLE_EQ(value("Entropy"), ln2);
  EXPECT_DOUBLE_EQ(value("Inverse Difference Moment"), 0.2);
  EXPECT_DOUBLE_EQ(value("Second Angular Moment"), 0.5);
  EXPECT_DOUBLE_EQ(value("Sum Average"), sumAverage);
  EXPECT_EQ(value("Sum Entropy"), 0);
  EXPECT_DOUBLE_EQ(value("Sum Variance"), (2 - sumAverage) * (2 - sumAverage) / 511 / 511);
  EXPECT_DOUBLE_EQ(value("Variance"), (meanX * meanX + (2 - meanX) * (2 - meanX)) / 2 / 65536);
  // H = ln 2, HXY1 = 2 ln 2, and the quotient is by HY = ln 2: not the difference is divided.
  EXPECT_DOUBLE_EQ(value("Information Measure of Correlation 1"), ln2 - 2);
  EXPECT_DOUBLE_EQ(value("Information Measure of Correlation 2"), std::sqrt(1 - 0.25));
}

TEST(TextureFeatures, CorrelationChangesWhenTheMatrixIsTransposed) {
  auto const image = MakeGrey8(CSize(4, 2), {1, 9, 9, 200, 9, 1, 200, 200});
  EXPECT_NE(Feature(image, "Correlation", {1, 0, 0}), Feature(image, "Correlation", {-1, 0, 0}));
}

TEST(TextureFeatures, DependOnTheSignOfTheDirection) {
  auto const image = MakeGrey8(CSize(4, 1), {1, 1, 1, 200});
  EXPECT_NE(Feature(image, "Variance", {1, 0, 0}), Feature(image, "Variance", {-1, 0, 0}));
  EXPECT_EQ(Feature(image, "Contrast", {1, 0, 0}), Feature(image, "Contrast", {-1, 0, 0}));
}

TEST(TextureFeatures, DisplacementOfTheFullWidthLeavesNoPair) {
  CValueMap features;
  features.SetEntry("kept", CValueLong(1));
  CCooccurrence texture("texture", nullptr);
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  char const message[] = "Cooccurrence::PrepareArrays: division by null/epsilon!";
  char const where[] = "ORVA::CCooccurrence::PrepareArrays";
  for (CTriple<long> direction : {CTriple<long>(6, 0, 0), CTriple<long>(-6, 0, 0),
                                  CTriple<long>(0, 5, 0), CTriple<long>(0, 0, 4)}) {
    auto const volume = Constant(3, CSize(6, 5, 4));
    ExpectError([&] { texture.ComputeFeatures(volume, &direction, &features); }, message, where,
                "src/Utils/Cooccurrence");
    ExpectError([&] { texture.ComputeMatrixAndFeatures(out, volume, &direction, &features); },
                message, where, "src/Utils/Cooccurrence");
    EXPECT_EQ(features.Size(), 1u) << "a failed run sets nothing into the map";
  }
}

// The probabilities add up to 1 whatever the signs of the direction: its components count by their
// length.
TEST(TextureFeatures, EveryDirectionHasItsNumberOfPairs) {
  auto const volume = Constant(3, CSize(6, 5, 4));
  for (long dz = -3; dz <= 3; ++dz)
    for (long dy = -4; dy <= 4; ++dy)
      for (long dx = -5; dx <= 5; ++dx)
        ASSERT_EQ(Feature(volume, "Second Angular Moment", {dx, dy, dz}), 1)
            << dx << ' ' << dy << ' ' << dz;
}

TEST(TextureFeatures, IndependentLevelsHaveNoInformationInCommon) {
  // Both levels stand right of both levels once: 0 0 1 1 0.
  auto const image = MakeGrey8(CSize(5, 1), {10, 10, 70, 70, 10});
  EXPECT_EQ(Feature(image, "Information Measure of Correlation 2"), 0);
}

// One step farther the number of pairs is no longer 0 but negative; the matrix is empty all the
// same.
TEST(TextureFeatures, LongerDisplacementGivesZeros) {
  CValueMap const features = Features(Constant(3), {7, 0, 0});
  for (auto const* name : c_names) EXPECT_EQ(features.Entry(name).Double(), 0) << name;
}

TEST(TextureFeatures, ReplaceTheirEntriesAndLeaveOthersAlone) {
  CValueMap features;
  features.SetEntry("Contrast", CValueString("old"));
  features.SetEntry("name", CValueString("liver"));
  CTriple<long> right(1, 0, 0);
  CCooccurrence("texture", nullptr).ComputeFeatures(Stripes(), &right, &features);
  EXPECT_DOUBLE_EQ(features.Entry("Contrast").Double(), 4.0 / 65536);
  EXPECT_EQ(features.Entry("name").String(), CString("liver"));
  EXPECT_EQ(features.Size(), 14u);
}

TEST(TextureFeatures, MatrixAndFeaturesGiveBothFromOneCount) {
  CCooccurrence texture("texture", nullptr);
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  CTriple<long> right(1, 0, 0);
  CValueMap features;
  texture.ComputeMatrixAndFeatures(out, Stripes(), &right, &features);
  EXPECT_EQ(test::ReadMatrix(out), test::CountWithLibrary(Stripes(), right));
  EXPECT_TRUE(features == Features(Stripes()));
}

TEST(TextureFeatures, AnEarlierRunLeavesNoTrace) {
  CCooccurrence texture("texture", nullptr);
  CTriple<long> right(1, 0, 0), tooLong(6, 0, 0);
  CValueMap first, second;
  texture.ComputeFeatures(MakeGrey8(CSize(4, 1), {1, 50, 200, 3}), &right, &first);
  EXPECT_THROW(texture.ComputeFeatures(Constant(9), &tooLong, &second), CException);
  texture.ComputeFeatures(Stripes(), &right, &second);
  EXPECT_TRUE(second == Features(Stripes()));
}

TEST(TextureFeatures, SixteenAnd32BitImagesShareTheFeaturesOfTheirLevels) {
  auto const sixteen = test::MakeImage<std::uint16_t>(IMAGE_GREY_16, CSize(5, 1),
                                                      {0x00FF, 0x0200, 0x0001, 0x02AB, 0});
  auto const thirtyTwo = test::MakeImage<std::uint32_t>(
      IMAGE_GREY_32, CSize(5, 1), {0x00FFFFFFu, 0x02000000u, 1u, 0x02ABCDEFu, 0});
  EXPECT_TRUE(Features(sixteen) == Features(Stripes()));
  EXPECT_TRUE(Features(thirtyTwo) == Features(Stripes()));
}
