// Every allocation of the operations on objects, masks, tables and sources fails once.
#include <SeluUtils/CylinderMask.h>
#include <SeluUtils/Metric.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/ValueVector.h>

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using test::FailEveryAllocation;

namespace {

// Texts too long to be kept without an allocation.
constexpr char c_long[] = "a status that is too long for the short string buffer";

CValueMap Objects() {
  CValueMap objects;
  objects.SetEntry("maximum label", CValueLong(3));
  for (int const label : {1, 3}) {
    std::string const name = "cell " + std::to_string(label);
    objects.SetEntry(name + "/volume [px]", CValueLong(label * 5));
    objects.SetEntry(name + "/status", CValueString(label == 1 ? c_long : "border"));
  }
  return objects;
}

CImage Gray() {
  CImage image(IMAGE_GREY_8, CSize(6, 5, 4));
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  for (int64 z = 0; z < 4; ++z)
    for (int64 y = 0; y < 5; ++y)
      for (std::uint8_t& pixel : pixels.Row(y, z)) pixel = static_cast<std::uint8_t>(9 + y + z);
  return image;
}

} // namespace

TEST(FeatureAllocation, AFeatureImageLeavesTheFeatures) {
  CValueMap const objects = Objects();
  CImage image(IMAGE_GREY_F, CSize(1, 1));
  EXPECT_GT(
      FailEveryAllocation(
          [&] { ConvertObjectBasedFeaturesIntoFeatureImage("cells", objects, "cell", image, {}); },
          [&] { EXPECT_EQ(objects, Objects()); }),
      20);
  EXPECT_EQ(image.Size(), CSize(4, 3));
}

TEST(FeatureAllocation, FeaturesThatWereToMoveStayWhereTheyWere) {
  CImage image(IMAGE_GREY_F, CSize(1, 1));
  CValueMap objects = Objects();
  EXPECT_GT(FailEveryAllocation(
                [&] {
                  ConvertObjectBasedFeaturesIntoFeatureImage("cells", std::move(objects), "cell",
                                                             image, {});
                },
                [&] { EXPECT_EQ(objects, Objects()); }),
            20);
  EXPECT_EQ(image.Attributes().Entry("Features/cells").Map(), Objects());
}

TEST(FeatureAllocation, ATableOfNeighborsIsAsItWas) {
  std::vector<std::vector<int64>> const before = {{1, 2}, {}, {3}};
  auto table = before;
  // Its header turns the lack of memory into an error of its own.
  auto const fill = [&] {
    try {
      CMetric::CalculateNeighbourTable(&table, 3, 3, EEdgeTreatment::Periodic);
    } catch (CExBadParam const&) {
      throw std::bad_alloc();
    }
  };
  EXPECT_GT(FailEveryAllocation(fill, [&] { EXPECT_EQ(table, before); }), 1);
  EXPECT_EQ(table.size(), 27u);
}

TEST(FeatureAllocation, AMaskIsSetOrNot) {
  CImage image = Gray();
  CCylinderMask mask("mask", nullptr);
  EXPECT_GT(FailEveryAllocation([&] { mask.SetCylinderParameters(image, "Z", 2, 2, 1.5); },
                                [&] { EXPECT_EQ(image, Gray()); }),
            0);
  CImage const marked = image;
  CImage other = Gray();
  EXPECT_GT(FailEveryAllocation([&] { (void)mask.CopyMetaInfo(marked, other); },
                                [&] { EXPECT_EQ(other, Gray()); }),
            0);
  EXPECT_EQ(other, marked);
  FailEveryAllocation([&] { mask.MaskImageWithMetaInfoCylinder(image, 0); },
                      [&] {
                        CImage tried = image; // the slice may be there already
                        tried.Attributes() = marked.Attributes();
                        EXPECT_EQ(tried, marked);
                      });
  EXPECT_NE(image, marked);
}

TEST(FeatureAllocation, ASourceGoesOnWhereItStood) {
  CRandomSource source(7), same(7);
  std::string saved;
  EXPECT_GT(FailEveryAllocation([&] { saved = source.Save(); }, [&] { EXPECT_EQ(saved, ""); }), 0);
  EXPECT_EQ(source.Rand64(), same.Rand64());
  FailEveryAllocation([&] { source.Restore(saved); }, [] {});
  same.Restore(saved);
  EXPECT_EQ(source.Rand64(), same.Rand64());
}

TEST(FeatureAllocation, AMixtureKeepsWhatItHolds) {
  CMixtureRotation mixture(2);
  mixture.Add(std::make_unique<CVonMisesFisher>(5, CPolarCoordinates(1, 2)), 0.5);
  CMixtureRotation copy(1);
  EXPECT_GT(FailEveryAllocation([&] { copy = mixture; }, [] {}), 0);
  CMixtureRotation other = mixture;
  EXPECT_GT(FailEveryAllocation([&] { other = CMixtureRotation(mixture); }, [] {}), 0);
}
