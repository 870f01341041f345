#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/HeaderTools.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

using namespace ORVA;

namespace {

CImage Picture() { return CImage(IMAGE_GREY_8, CSize(2, 2), CSize(0, 0, 0)); }

CValueVector MinMax() { return CValueVector(CValueDouble(0.0), CValueDouble(9.0)); }

} // namespace

TEST(HeaderTools, StoredInformationIsFound) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, CSeluHeaderTools::c_sMetaMinMax, MinMax());
  CValue value;
  ASSERT_TRUE(CSeluHeaderTools::GetMetaInfo(image, CSeluHeaderTools::c_sMetaMinMax, value));
  EXPECT_EQ(value.Vector(), MinMax());
}

TEST(HeaderTools, InformationIsStoredBesideTheOtherAttributes) {
  CImage image = Picture();
  image.Attributes().SetEntry("name", CValueString("x"));
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  CSeluHeaderTools::SetMetaInfo(image, "b", CValueLong(2));
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(3));
  EXPECT_EQ(image.Attributes().Size(), 2u);
  EXPECT_EQ(image.Attributes().Entry("name").String(), "x");
  EXPECT_EQ(image.Attributes().Entry("Header").Map().Size(), 2u);
  EXPECT_EQ(image.Attributes().Entry("Header/a").Long(), 3);
  EXPECT_EQ(image.Attributes().Entry("Header/b").Long(), 2);
}

TEST(HeaderTools, MissingInformationLeavesTheValueAlone) {
  CImage image = Picture();
  CValue value = CValueLong(7);
  EXPECT_FALSE(CSeluHeaderTools::GetMetaInfo(image, "a", value)); // no header at all
  CSeluHeaderTools::SetMetaInfo(image, "b", CValueLong(1));
  EXPECT_FALSE(CSeluHeaderTools::GetMetaInfo(image, "a", value));
  EXPECT_FALSE(CSeluHeaderTools::GetMetaInfo(image, "", value));
  EXPECT_FALSE(CSeluHeaderTools::GetMetaInfo(image, "b/c", value));
  image.Attributes().SetEntry("Header", CValueLong(1));
  EXPECT_FALSE(CSeluHeaderTools::GetMetaInfo(image, "b", value)); // a header that is no map
  EXPECT_EQ(value.Long(), 7);
}

TEST(HeaderTools, FoundInformationIsACopy) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, "a", MinMax());
  CValue value;
  ASSERT_TRUE(CSeluHeaderTools::GetMetaInfo(image, "a", value));
  value.Vector().Entry(0).Double() = 5;
  EXPECT_EQ(image.Attributes().Entry("Header/a").Vector(), MinMax());
}

TEST(HeaderTools, InformationCanBeLookedAtInItsPlace) {
  CImage image = Picture();
  EXPECT_EQ(CSeluHeaderTools::FindMetaInfo(image, "a/b"), nullptr);
  CSeluHeaderTools::SetMetaInfo(image, "a/b", MinMax());
  CValue const* const found = CSeluHeaderTools::FindMetaInfo(image, "a/b");
  EXPECT_EQ(found, image.Attributes().Find("Header/a/b"));
  EXPECT_EQ(found->Vector(), MinMax());
  EXPECT_EQ(CSeluHeaderTools::FindMetaInfo(image, "b"), nullptr);
  image.Attributes().SetEntry("Header", CValueLong(1));
  EXPECT_EQ(CSeluHeaderTools::FindMetaInfo(image, "a/b"), nullptr);
}

TEST(HeaderTools, InformationTravelsWithTheImage) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  CImage copy = image;
  CSeluHeaderTools::SetMetaInfo(copy, "a", CValueLong(2));
  image.Resize(CSize(3, 3), CSize(0, 0, 0));
  CValue value;
  ASSERT_TRUE(CSeluHeaderTools::GetMetaInfo(image, "a", value));
  EXPECT_EQ(value.Long(), 1);
}

TEST(HeaderTools, WholeHeaderCanBeStoredInItself) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  CSeluHeaderTools::SetMetaInfo(image, "copy", image.Attributes().Entry("Header"));
  EXPECT_EQ(image.Attributes().Entry("Header/copy/a").Long(), 1);
}

TEST(HeaderTools, EmptyKeyDoesNotReplaceTheHeader) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  CSeluHeaderTools::SetMetaInfo(image, "", CValueLong(2));
  CValue value;
  ASSERT_TRUE(CSeluHeaderTools::GetMetaInfo(image, "a", value));
  EXPECT_EQ(value.Long(), 1);
  ASSERT_TRUE(CSeluHeaderTools::GetMetaInfo(image, "", value));
  EXPECT_EQ(value.Long(), 2);
}

TEST(HeaderTools, AForeignHeaderIsNotOverwritten) {
  CImage image = Picture();
  image.Attributes().SetEntry("Header", CValueString("x"));
  test::ExpectError<CExBadParam>(
      [&] { CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1)); },
      "the image attribute \"Header\" is a CValueString, not a CValueMap",
      "ORVA::CSeluHeaderTools::SetMetaInfo", "framework/pxlib2image/HeaderTools");
  EXPECT_EQ(image.Attributes().Entry("Header").String(), "x");
  image.Attributes().SetEntry("Header", CValue());
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  EXPECT_EQ(image.Attributes().Entry("Header/a").Long(), 1);
}

TEST(HeaderTools, NullKeyIsRefused) {
  CImage image = Picture();
  CSeluHeaderTools::SetMetaInfo(image, "a", CValueLong(1));
  CValue value;
  char const* const null = nullptr;
  auto const get = [&] { (void)CSeluHeaderTools::GetMetaInfo(image, null, value); };
  auto const set = [&] { CSeluHeaderTools::SetMetaInfo(image, null, value); };
  test::ExpectError<CExBadParam>(get, "key text is null");
  test::ExpectError<CExBadParam>(set, "key text is null");
  test::ExpectError<CExBadParam>([&] { (void)CSeluHeaderTools::FindMetaInfo(image, null); },
                                 "key text is null");
  CImage bare = Picture();
  test::ExpectError<CExBadParam>([&] { CSeluHeaderTools::SetMetaInfo(bare, null, value); },
                                 "key text is null");
  test::ExpectError<CExBadParam>(
      [&] { (void)CSeluHeaderTools::GetMetaInfo(Picture(), null, value); }, "key text is null");
  EXPECT_TRUE(bare.Attributes().IsEmpty());
}
