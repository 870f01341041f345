// The pixels of an image as numbers, checked for the image's type, their place and their alignment.
#include <pxlib2image/Image.h>
#include <pxlib2image/ImageView.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

constexpr char c_module[] = "framework/pxlib2image/Image";
constexpr int64 c_largest = std::numeric_limits<int64>::max();
constexpr int64 c_smallest = std::numeric_limits<int64>::min();

struct StType {
  IImage::CType type;
  int64 bytes;
};

StType const c_types[] = {{IMAGE_BOOL, 1},     {IMAGE_BINARY_FG, 1}, {IMAGE_GREY_8, 1},
                          {IMAGE_GREY_16, 2},  {IMAGE_GREY_32, 4},   {IMAGE_GREY_F, 4},
                          {IMAGE_SIGNED_8, 1}, {IMAGE_SIGNED_16, 2}, {IMAGE_SIGNED_32, 4},
                          {IMAGE_DOUBLE, 8}};

// Fills an image by its pixels' places and reads it back as numbers, raw bytes and rows.
template <class T>
void ExpectPixels(IImage::CType type) {
  SCOPED_TRACE(type.ToString());
  CImage image(type, CSize(3, 4, 5));
  auto const value = [](int64 x, int64 y, int64 z) { return static_cast<T>(x + 10 * y + 50 * z); };
  auto const pixels = image.CreateAccess(true).As<T>();
  for (int64 z = 0; z < 5; ++z)
    for (int64 y = 0; y < 4; ++y)
      for (int64 x = 0; x < 3; ++x) pixels(x, y, z) = value(x, y, z);
  auto const access = std::as_const(image).CreateAccess(false);
  auto const same = access.As<T const>();
  for (int64 z = 0; z < 5; ++z)
    for (int64 y = 0; y < 4; ++y) {
      auto const row = same.Row(y, z);
      ASSERT_EQ(row.size(), 3u);
      for (int64 x = 0; x < 3; ++x) {
        EXPECT_EQ(same(x, y, z), value(x, y, z));
        EXPECT_EQ(&same(x, y, z), &row[static_cast<std::size_t>(x)]);
        EXPECT_EQ(&same(x, y, z), &same(CPos(x, y, z)));
        EXPECT_EQ(reinterpret_cast<std::byte const*>(&same(x, y, z)),
                  access.Base() + x * access.Stride(0) + y * access.Stride(1) +
                      z * access.Stride(2));
      }
    }
}

template <class T>
void ExpectRefused(CImage& image, std::string const& wanted) {
  std::string const message = std::string("the pixels are of type ") + image.Type().ToString() +
                              ", not " + wanted + " bytes";
  test::ExpectError<CExBadParam>([&] { (void)image.CreateAccess(true).template As<T>(); }, message,
                                 "ORVA::CImageAccess::As", c_module);
  test::ExpectError<CExBadParam>([&] { (void)image.CreateAccess(false).template As<T const>(); },
                                 message);
}

} // namespace

TEST(Pixels, AreNumbersOfTheImagesType) {
  ExpectPixels<std::uint8_t>(IMAGE_BOOL);
  ExpectPixels<std::uint8_t>(IMAGE_BINARY_FG);
  ExpectPixels<std::uint8_t>(IMAGE_GREY_8);
  ExpectPixels<std::uint16_t>(IMAGE_GREY_16);
  ExpectPixels<std::uint32_t>(IMAGE_GREY_32);
  ExpectPixels<float>(IMAGE_GREY_F);
}

TEST(Pixels, OfAnotherTypeAreRefused) {
  for (auto const& c : c_types) {
    CImage image(c.type, CSize(2, 2));
    if (c.bytes != 1) ExpectRefused<std::uint8_t>(image, "unsigned integers of 1");
    if (c.bytes != 2) ExpectRefused<std::uint16_t>(image, "unsigned integers of 2");
    if (c.type != IMAGE_GREY_32) ExpectRefused<std::uint32_t>(image, "unsigned integers of 4");
    if (c.type != IMAGE_GREY_F) ExpectRefused<float>(image, "real numbers of 4");
    if (c.type == IMAGE_GREY_16) ExpectRefused<std::int16_t>(image, "signed integers of 2");
  }
}

TEST(Pixels, AreCheckedForTheirPlace) {
  CImage image(IMAGE_GREY_8, CSize(3, 4, 5));
  CPos const first(1, 1, 1), last(2, 3, 4);
  auto const pixels = image.CreateAccess(true, first, last).As<std::uint8_t>();
  EXPECT_EQ(pixels.Extents(), (std::array<int64, 3>{2, 3, 4}));
  pixels(1, 2, 3) = 9;
  EXPECT_EQ(image.CreateAccess(false).As<std::uint8_t const>()(2, 3, 4), 9);
  struct StCase {
    int64 x, y, z;
    char const* text;
  };
  for (auto const& c :
       {StCase{2, 0, 0, "(2, 0, 0)"}, StCase{0, 3, 0, "(0, 3, 0)"}, StCase{0, 0, 4, "(0, 0, 4)"},
        StCase{-1, 0, 0, "(-1, 0, 0)"}, StCase{0, -1, 0, "(0, -1, 0)"},
        StCase{0, 0, c_smallest, "(0, 0, -9223372036854775808)"},
        StCase{c_largest, 0, 0, "(9223372036854775807, 0, 0)"}}) {
    test::ExpectError<CExBadParam>([&] { (void)pixels(c.x, c.y, c.z); },
                                   std::string("pixel ") + c.text +
                                       " is outside a box of (2, 3, 4) pixels",
                                   "ORVA::CPixels::operator ()", c_module);
    if (c.x == 0) {
      EXPECT_THROW((void)pixels.Row(c.y, c.z), CExBadParam);
    }
  }
  test::ExpectError<CExBadParam>([&] { (void)pixels.Row(3, 1); },
                                 "row y = 3, z = 1 is outside a box of (2, 3, 4) pixels",
                                 "ORVA::CPixels::Row", c_module);
}

TEST(Pixels, ForWritingNeedAnAccessForWriting) {
  CImage image(IMAGE_GREY_8, CSize(2, 2));
  test::ExpectError<CExBadParam>([&] { (void)image.CreateAccess(false).As<std::uint8_t>(); },
                                 "the access was not opened for writing");
  auto access = image.CreateAccess(true);
  access.Release();
  EXPECT_THROW((void)access.As<std::uint8_t const>(), CExBadParam);
}

TEST(Pixels, StayWhenTheImageGoes) {
  std::optional<CImage> image(std::in_place, IMAGE_GREY_16, CSize(2, 2));
  auto const pixels = image->CreateAccess(true).As<std::uint16_t>();
  image.reset();
  pixels(1, 1) = 7;
  EXPECT_EQ(pixels.Row(1)[1], 7);
}

TEST(Pixels, OfAForeignLayoutKeepToIt) {
  std::array<std::uint16_t, 12> numbers{};
  std::iota(numbers.begin(), numbers.end(), std::uint16_t{0});
  auto const view = [&](std::array<int64, 3> const& extents, std::array<int64, 3> const& strides,
                        int64 from) {
    auto* const base = reinterpret_cast<std::byte*>(numbers.data()) + from;
    return CImageAccess::ForWriting(IMAGE_GREY_16, base, extents, strides);
  };
  auto const turned = view({3, 4, 1}, {8, 2, 0}, 0).As<std::uint16_t>(); // rows and columns swapped
  EXPECT_EQ(turned(2, 3), 11);
  test::ExpectError<CExBadParam>([&] { (void)turned.Row(1); },
                                 "the pixels of a row are 8 bytes apart", "ORVA::CPixels::Row",
                                 c_module);
  auto const mirrored = view({4, 3, 1}, {-2, 8, 0}, 6).As<std::uint16_t const>();
  EXPECT_EQ(mirrored(0, 1), 7);
  EXPECT_EQ(mirrored(3, 0), 0);
  EXPECT_THROW((void)mirrored.Row(0), CExBadParam);
  EXPECT_EQ((view({1, 3, 1}, {0, 8, 0}, 2).As<std::uint16_t>().Row(2)[0]), 9);
  for (auto const& access : {view({2, 2, 1}, {2, 8, 0}, 1), view({2, 2, 1}, {2, 7, 0}, 0),
                             view({2, 1, 1}, {3, 0, 0}, 0)})
    test::ExpectError<CExBadParam>([&] { (void)access.As<std::uint16_t>(); },
                                   "the pixels are not aligned for numbers of 2 bytes",
                                   "ORVA::CImageAccess::As", c_module);
}

TEST(Pixels, OfAnEmptyImageAreNone) {
  CImage image(IMAGE_GREY_8, CSize(0, 3));
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  EXPECT_TRUE(pixels.Row(2).empty());
  EXPECT_THROW((void)pixels(0, 0), CExBadParam);
  EXPECT_THROW((void)pixels.Row(3), CExBadParam);
}
