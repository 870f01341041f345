// What texture leaves behind where memory runs out.
#include "support/FailingAllocation.h"
#include "support/Images.h"
#include "support/Matrix.h"

#include <SeluUtils/Cooccurrence.h>

#include <gtest/gtest.h>

using namespace ORVA;

namespace {

// One of the features is there already, with a name long enough to need memory of its own.
CValueMap MapOfACaller() {
  CValueMap map;
  map.SetEntry("Information Measure of Correlation 1", CValueString("the value of another run"));
  map.SetEntry("name", CValueString("liver"));
  return map;
}

CImage Stripes() { return test::MakeGrey8(CSize(5, 2), {0, 2, 0, 2, 0, 7, 7, 9, 9, 7}); }

} // namespace

TEST(CooccurrenceMemory, FailedFeaturesLeaveTheMapAsItWas) {
  CImage const image = Stripes();
  CValueMap const before = MapOfACaller();
  CValueMap features = before;
  CTriple<long> right(1, 0, 0);
  CCooccurrence texture("texture", nullptr);
  long const failures =
      test::FailEveryAllocation([&] { texture.ComputeFeatures(image, &right, &features); },
                                [&] { EXPECT_TRUE(features == before); });
  EXPECT_GE(failures, 13); // each new entry needs memory
  EXPECT_EQ(features.Size(), 14u);
  EXPECT_EQ(features.Entry("name").String(), CString("liver"));
  EXPECT_EQ(features.Entry("Contrast").Type(), CValue::EnType::Double);
}

TEST(CooccurrenceMemory, FailedMatrixAndFeaturesLeaveTheMapAsItWas) {
  CImage const image = Stripes();
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  CValueMap const before = MapOfACaller();
  CValueMap features = before;
  CTriple<long> right(1, 0, 0);
  CCooccurrence texture("texture", nullptr);
  long const failures = test::FailEveryAllocation(
      [&] { texture.ComputeMatrixAndFeatures(out, image, &right, &features); },
      [&] { EXPECT_TRUE(features == before); });
  EXPECT_GE(failures, 13);
  EXPECT_EQ(features.Size(), 14u);
  EXPECT_EQ(test::Total(test::ReadMatrix(out)), 8u);
}

// Without a map nothing is allocated but what the image's access needs.
TEST(CooccurrenceMemory, FeaturesAsAnArrayNeedNoMemory) {
  CImage const image = Stripes();
  CCooccurrence texture("texture", nullptr);
  CCooccurrence::CFeatures features{};
  long const failures = test::FailEveryAllocation(
      [&] {
        features = texture.ComputeFeatures(image, {1, 0, 0});
      },
      [] {});
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(features, CCooccurrence("texture", nullptr).ComputeFeatures(image, {1, 0, 0}));
}
