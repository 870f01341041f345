#include <SeluUtils/CylinderMask.h>

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Printers.h"

#include <pxlib2image/HeaderTools.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using test::Pixels;

namespace {

char const c_source[] = "src/Utils/CylinderMask";
char const c_parameters[] = "cylinderMaskParameters";
char const c_slice[] = "cylinderMaskSlice";
char const c_doMask[] = "ORVA::`anonymous-namespace'::DoMaskImage";

class CylinderMask : public testing::Test {
protected:
  CCylinderMask mask{"mask", nullptr};
};

CValueMap Parameters(char const* axis, double s, double t, double radius) {
  CValueMap map;
  map.SetEntry("axis", CValueString(axis));
  map.SetEntry("s", CValueDouble(s));
  map.SetEntry("t", CValueDouble(t));
  map.SetEntry("radius", CValueDouble(radius));
  return map;
}

CValue Stored(CImage const& image, char const* key) {
  CValue value;
  return CSeluHeaderTools::GetMetaInfo(image, key, value) ? value : CValue();
}

// The stored slice as rows of '#' (inside) and '.'.
std::vector<std::string> Slice(CImage const& image) {
  CValue const stored = Stored(image, c_slice);
  CImage const* const slice = stored.Pointer<CImage>();
  if (slice == nullptr) return {"no slice"};
  auto const pixels = Pixels<std::uint8_t>(*slice);
  std::vector<std::string> rows;
  for (std::size_t k = 0; k < pixels.size(); ++k) {
    if (k % static_cast<std::size_t>(slice->Size().x) == 0) rows.emplace_back();
    rows.back() += pixels[k] == 0 ? '.' : '#';
  }
  return rows;
}

using Rows = std::vector<std::string>;

CImage Slice(IImage::CType type, CSize size) { return CImage(type, size); }

} // namespace

TEST_F(CylinderMask, LeavesVoxelsOnTheCircleOutside) {
  CImage image(IMAGE_GREY_8, CSize(5, 5, 3));
  mask.SetCylinderParameters(image, "Z", 2, 2, 2);
  mask.MaskImageWithMetaInfoCylinder(image, 9);
  EXPECT_EQ(Slice(image), (Rows{".....", ".###.", ".###.", ".###.", "....."}));
  std::vector<std::uint8_t> const plane = {9, 9, 9, 9, 9, 9, 0, 0, 0, 9, 9, 0, 0,
                                           0, 9, 9, 0, 0, 0, 9, 9, 9, 9, 9, 9};
  std::vector<std::uint8_t> expected;
  for (int z = 0; z < 3; ++z) expected.insert(expected.end(), plane.begin(), plane.end());
  EXPECT_EQ(Pixels<std::uint8_t>(image), expected);
}

TEST_F(CylinderMask, RunsAlongTheAxisNamedByTheFirstLetter) {
  struct StCase {
    char const* axis;
    Rows slice;
  };
  // Radius 1 around (1, 0): of an image of 3 x 2 x 1 voxels the one slice pixel (1, 0).
  std::vector<StCase> const cases = {
      {"X", {".#"}},         // (y, z)
      {"Xylophone", {".#"}}, //
      {"Y", {".#."}},        // (x, z)
      {"Z", {".#.", "..."}}, // (x, y)
      {"x", {".#.", "..."}}, // lower case is no X
      {"anything", {".#.", "..."}},
  };
  for (auto const& c : cases) {
    CImage image(IMAGE_GREY_8, CSize(3, 2, 1));
    mask.SetCylinderParameters(image, c.axis, 1, 0, 1);
    mask.SetCylinderSlice(image);
    EXPECT_EQ(Slice(image), c.slice) << c.axis;
    CValue const stored = Stored(image, c_slice);
    EXPECT_EQ(stored.Pointer<CImage>()->Type(), IMAGE_BOOL);
    EXPECT_EQ(stored.Pointer<CImage>()->Size().Dim(), 2);
  }
}

TEST_F(CylinderMask, StoresItsParametersInTheImage) {
  CImage image(IMAGE_GREY_8, CSize(2, 2, 2));
  mask.SetCylinderParameters(image, "Y", 1, 2, 3);
  EXPECT_EQ(Stored(image, c_parameters).Map(), Parameters("Y", 1, 2, 3));
  mask.SetCylinderParameters(image, Parameters("Z", -1, NAN, 0)); // values are not checked
  EXPECT_EQ(Stored(image, c_parameters).Map().Entry("axis").String(), CString("Z"));
}

TEST_F(CylinderMask, PassesOverMapsWithOtherTypes) {
  CValueMap const complete = Parameters("Z", 1, 2, 3);
  for (char const* const key : {"axis", "s", "t", "radius"}) {
    SCOPED_TRACE(key);
    CImage image(IMAGE_GREY_8, CSize(2, 2, 2));
    CValueMap map = complete;
    map.SetEntry(key, CValueLong(1));
    mask.SetCylinderParameters(image, map);
    EXPECT_FALSE(Stored(image, c_parameters).IsValid());
    map.RemoveEntry(key);
    mask.SetCylinderParameters(image, map);
    EXPECT_FALSE(Stored(image, c_parameters).IsValid());
  }
}

TEST_F(CylinderMask, CopiesParametersButNoSlice) {
  CImage from(IMAGE_GREY_8, CSize(2, 2, 2)), to(IMAGE_GREY_F, CSize(3, 3, 3));
  EXPECT_FALSE(mask.CopyMetaInfo(from, to));
  EXPECT_FALSE(Stored(to, c_parameters).IsValid());
  mask.SetCylinderParameters(from, "X", 1, 2, 3);
  mask.SetCylinderSlice(from);
  EXPECT_TRUE(mask.CopyMetaInfo(from, to));
  EXPECT_EQ(Stored(to, c_parameters).Map(), Parameters("X", 1, 2, 3));
  EXPECT_FALSE(Stored(to, c_slice).IsValid());
}

TEST_F(CylinderMask, DoesNothingWithoutParameters) {
  CImage image = test::MakeGrey8(CSize(2, 1, 1), {1, 2});
  CImage const before = image;
  mask.SetCylinderSlice(image);
  mask.MaskImageWithMetaInfoCylinder(image, 5);
  EXPECT_EQ(image, before);
  // A slice says nothing without the axis that its parameters name.
  CSeluHeaderTools::SetMetaInfo(image, c_slice, CValuePointer::Own(Slice(IMAGE_BOOL, CSize(2, 1))));
  mask.MaskImageWithMetaInfoCylinder(image, 5);
  EXPECT_EQ(Pixels<std::uint8_t>(image), (std::vector<std::uint8_t>{1, 2}));
}

TEST_F(CylinderMask, KeepsUsingTheSliceItHas) {
  CImage image(IMAGE_GREY_8, CSize(3, 1, 1));
  mask.SetCylinderParameters(image, "Z", 1, 0, 1);
  mask.MaskImageWithMetaInfoCylinder(image, 1);
  mask.SetCylinderParameters(image, "Z", 0, 0, 100);
  mask.MaskImageWithMetaInfoCylinder(image, 2);
  EXPECT_EQ(Pixels<std::uint8_t>(image), (std::vector<std::uint8_t>{2, 0, 2}));
  mask.SetCylinderSlice(image);
  mask.MaskImageWithMetaInfoCylinder(image, 3);
  EXPECT_EQ(Pixels<std::uint8_t>(image), (std::vector<std::uint8_t>{2, 0, 2}));
}

TEST_F(CylinderMask, TakesALargerSliceAsItIs) {
  CImage image(IMAGE_GREY_8, CSize(2, 2, 1));
  mask.SetCylinderParameters(image, "Z", 0, 0, 0);
  CSeluHeaderTools::SetMetaInfo(image, c_slice,
                                CValuePointer::Own(test::MakeImage<std::uint8_t>(
                                    IMAGE_BOOL, CSize(3, 3), {0, 1, 0, 1, 0, 0, 1, 1, 1})));
  mask.MaskImageWithMetaInfoCylinder(image, 7);
  EXPECT_EQ(Pixels<std::uint8_t>(image), (std::vector<std::uint8_t>{7, 0, 0, 7}));
}

TEST_F(CylinderMask, NarrowsTheValueToThePixelType) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct StCase {
    double value;
    std::uint8_t gray8;
    std::uint16_t gray16;
    std::uint32_t gray32;
  };
  std::vector<StCase> const cases = {
      {0, 0, 0, 0},
      {300.7, 44, 300, 300},
      {-0.9, 0, 0, 0},
      {-1.9, 255, 65535, 4294967295},
      {4294967296.0 + 65536 + 256 + 3, 3, 259, 65795},
      {NAN, 0, 0, 0},
      {infinity, 255, 65535, 4294967295}, // 2^63 - 1
      {9223372036854775808.0, 255, 65535, 4294967295},
      {1e300, 255, 65535, 4294967295},
      {-9223372036854775808.0, 0, 0, 0}, // -2^63
      {-infinity, 0, 0, 0},
      {9223372036854774784.0, 0, 64512, 4294966272}, // 2^63 - 1024 fits
  };
  auto const masked = [&](IImage::CType type, double value) {
    CImage image(type, CSize(1, 1, 1));
    mask.SetCylinderParameters(image, "Z", 0, 0, 0);
    mask.MaskImageWithMetaInfoCylinder(image, value);
    return image;
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(Pixels<std::uint8_t>(masked(IMAGE_GREY_8, c.value))[0], c.gray8);
    EXPECT_EQ(Pixels<std::uint8_t>(masked(IMAGE_BINARY_FG, c.value))[0], c.gray8);
    EXPECT_EQ(Pixels<std::uint16_t>(masked(IMAGE_GREY_16, c.value))[0], c.gray16);
    EXPECT_EQ(Pixels<std::uint32_t>(masked(IMAGE_GREY_32, c.value))[0], c.gray32);
  }
  EXPECT_EQ(Pixels<float>(masked(IMAGE_GREY_F, 300.7))[0], 300.7F);
  EXPECT_EQ(Pixels<float>(masked(IMAGE_GREY_F, -1e300))[0],
            -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(Pixels<float>(masked(IMAGE_GREY_F, NAN))[0]));
}

TEST_F(CylinderMask, RefusesPixelTypesItCannotMask) {
  CImage image(IMAGE_BOOL, CSize(2, 2, 2));
  mask.SetCylinderParameters(image, "Z", 0, 0, 0);
  ExpectError([&] { mask.MaskImageWithMetaInfoCylinder(image, 1); },
              "Image type IMAGE_BOOL not supported.",
              "CCylinderMask::MaskImageWithMetaInfoCylinder");
  EXPECT_EQ(Pixels<std::uint8_t>(image), std::vector<std::uint8_t>(8, 0));
}

TEST_F(CylinderMask, RefusesImagesWithoutVoxels) {
  CImage flat(IMAGE_GREY_8, CSize(0, 5, 3));
  mask.SetCylinderParameters(flat, "Z", 0, 0, 1);
  ExpectError([&] { mask.SetCylinderSlice(flat); }, "unable to write to mask image",
              "ORVA::CCylinderMask::SetCylinderSlice", c_source);
  ExpectError([&] { mask.MaskImageWithMetaInfoCylinder(flat, 1); }, "unable to write to mask image",
              "ORVA::CCylinderMask::SetCylinderSlice", c_source);
  CImage noPlane(IMAGE_GREY_8, CSize(5, 5, 0));
  mask.SetCylinderParameters(noPlane, "Z", 0, 0, 1);
  ExpectError([&] { mask.MaskImageWithMetaInfoCylinder(noPlane, 1); },
              "unable to write to output image", c_doMask, c_source);
}

TEST_F(CylinderMask, RefusesSlicesItCannotRead) {
  struct StCase {
    CValue slice;
    char const* message;
    char const* function;
    bool isBadParam;
  };
  char const* const function = "ORVA::CCylinderMask::MaskImageWithMetaInfoCylinder";
  std::vector<StCase> const cases = {
      {CValueLong(1), "unable to read mask image", function, false},
      {CValuePointer::Own(5), "unable to read mask image", function, false},
      {CValuePointer::Refer(static_cast<CImage*>(nullptr)), "unable to read mask image", function,
       false},
      {CValuePointer::Own(CImage()), "unable to access mask image", c_doMask, false},
      {CValuePointer::Own(Slice(IMAGE_BOOL, CSize(0, 3))), "unable to access mask image", c_doMask,
       false},
      {CValuePointer::Own(Slice(IMAGE_GREY_8, CSize(4, 3))),
       "the mask image is an IMAGE_GREY_8, not an IMAGE_BOOL", c_doMask, true},
      {CValuePointer::Own(Slice(IMAGE_BOOL, CSize(3, 3))),
       "a mask image of size (3, 3) does not cover a cross section of (4, 3)", c_doMask, true},
      {CValuePointer::Own(Slice(IMAGE_BOOL, CSize(9, 2))),
       "a mask image of size (9, 2) does not cover a cross section of (4, 3)", c_doMask, true},
  };
  for (auto const& c : cases) {
    CImage image(IMAGE_GREY_16, CSize(4, 3, 2));
    mask.SetCylinderParameters(image, "Z", 0, 0, 1);
    CSeluHeaderTools::SetMetaInfo(image, c_slice, c.slice);
    auto const run = [&] { mask.MaskImageWithMetaInfoCylinder(image, 1); };
    if (c.isBadParam)
      ExpectError<CExBadParam>(run, c.message, c.function, c_source);
    else
      ExpectError(run, c.message, c.function, c_source);
    EXPECT_EQ(Pixels<std::uint16_t>(image), std::vector<std::uint16_t>(24, 0));
  }
}

TEST_F(CylinderMask, RefusesParametersWithoutAnAxis) {
  CImage image(IMAGE_GREY_8, CSize(2, 2, 2));
  mask.SetCylinderParameters(image, "", 0, 0, 1);
  EXPECT_THROW(mask.SetCylinderSlice(image), std::out_of_range);
  CValueMap map = Parameters("Z", 0, 0, 1);
  map.RemoveEntry("axis");
  CSeluHeaderTools::SetMetaInfo(image, c_parameters, map);
  CSeluHeaderTools::SetMetaInfo(image, c_slice, CValuePointer::Own(Slice(IMAGE_BOOL, CSize(2, 2))));
  ExpectError<CExBadParam>([&] { mask.MaskImageWithMetaInfoCylinder(image, 1); },
                           "the cylinder mask parameters have no text \"axis\"", c_doMask,
                           c_source);
  EXPECT_EQ(Pixels<std::uint8_t>(image), std::vector<std::uint8_t>(8, 0));
}

TEST_F(CylinderMask, TravelsWithCopiesOfTheImage) {
  CImage image(IMAGE_GREY_8, CSize(3, 3, 1));
  mask.SetCylinderParameters(image, "Z", 1, 1, 1);
  mask.SetCylinderSlice(image);
  CImage copy = image;
  image = CImage();
  CCylinderMask const another = mask;
  mask = another;
  mask.MaskImageWithMetaInfoCylinder(copy, 4);
  EXPECT_EQ(Pixels<std::uint8_t>(copy), (std::vector<std::uint8_t>{4, 4, 4, 4, 0, 4, 4, 4, 4}));
}
