#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

#include "support/Errors.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace ORVA;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// An allocation beyond all memory is to fail as it does without the sanitizer.
extern "C" char const* __asan_default_options();
extern "C" char const* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" char const* __tsan_default_options();
extern "C" char const* __tsan_default_options() { return "allocator_may_return_null=1"; }
#endif

namespace {

constexpr char c_module[] = "framework/pxlib2image/Image";
constexpr char c_createAccess[] = "ORVA::CImage::CreateAccess";
constexpr int64 c_largest = std::numeric_limits<int64>::max();
constexpr int64 c_smallest = std::numeric_limits<int64>::min();
CSize const c_noMargin(0, 0, 0);

struct StType {
  IImage::CType type;
  int64 bytes;
  char const* name;
};

std::vector<StType> const c_types = {
    {IMAGE_BOOL, 1, "IMAGE_BOOL"},           {IMAGE_BINARY_FG, 1, "IMAGE_BINARY_FG"},
    {IMAGE_GREY_8, 1, "IMAGE_GREY_8"},       {IMAGE_GREY_16, 2, "IMAGE_GREY_16"},
    {IMAGE_GREY_32, 4, "IMAGE_GREY_32"},     {IMAGE_GREY_F, 4, "IMAGE_GREY_F"},
    {IMAGE_SIGNED_8, 1, "IMAGE_SIGNED_8"},   {IMAGE_SIGNED_16, 2, "IMAGE_SIGNED_16"},
    {IMAGE_SIGNED_32, 4, "IMAGE_SIGNED_32"}, {IMAGE_DOUBLE, 8, "IMAGE_DOUBLE"},
};

// Gray values 1, 2, 3, ... in the order of the pixel block.
CImage Numbered(CSize const& size) {
  CImage image(IMAGE_GREY_8, size, c_noMargin);
  std::byte* const pixels = image.CreateAccess(true).WritableBase();
  for (std::size_t i = 0; i < image.Bytes(); ++i) pixels[i] = static_cast<std::byte>(i + 1);
  return image;
}

int PixelAt(CImageAccess const& access, int64 x, int64 y, int64 z) {
  return static_cast<int>(
      access.Base()[x * access.Stride(0) + y * access.Stride(1) + z * access.Stride(2)]);
}

} // namespace

TEST(ImageType, HasSizeAndName) {
  for (auto const& c : c_types) {
    EXPECT_EQ(c.type.Bytes(), c.bytes) << c.name;
    EXPECT_STREQ(c.type.ToString(), c.name);
    for (auto const& other : c_types) {
      EXPECT_EQ(c.type == other.type, &c == &other) << c.name << other.name;
      EXPECT_EQ(c.type != other.type, &c != &other) << c.name << other.name;
    }
  }
  EXPECT_EQ(IImage::CType().Bytes(), 0);
  EXPECT_STREQ(IImage::CType().ToString(), "no pixel type");
  EXPECT_NE(IImage::CType(), IMAGE_BOOL);
}

TEST(Size, CarriesDimensionAndExtents) {
  EXPECT_EQ(CSize().Dim(), 0);
  EXPECT_EQ(CSize(4).Dim(), 1);
  EXPECT_EQ(CSize(4, 5).Dim(), 2);
  EXPECT_EQ(CSize(4, 5).z, 1);
  EXPECT_EQ(CSize(4, 5, 6).Dim(), 3);
  EXPECT_NE(CSize(4, 5), CSize(4, 5, 1));
  EXPECT_EQ(CSize(4, 5, 6), CSize(4, 5, 6));
  EXPECT_NE(CSize(4, 5, 6), CSize(4, 5, 7));
}

TEST(Size, SetDimPutsExtentsBeyondItTo1) {
  CSize size(4, 5, 6);
  size.SetDim(2);
  EXPECT_EQ(size, CSize(4, 5));
  size.SetDim(3);
  EXPECT_EQ(size, CSize(4, 5, 1));
  size.SetDim(1);
  EXPECT_EQ(size, CSize(4));
}

TEST(Size, OtherDimensionsAreRefused) {
  for (int const dimension : {0, 4, -1, std::numeric_limits<int>::max()}) {
    CSize size(4, 5, 6);
    test::ExpectError<CExBadParam>([&] { size.SetDim(dimension); },
                                   "image dimension " + std::to_string(dimension) +
                                       " is not 1, 2 or 3",
                                   "ORVA::CSize::SetDim", "framework/pxlib2image/Size");
    EXPECT_EQ(size, CSize(4, 5, 6));
  }
}

TEST(Size, IsEmptyWithoutVoxels) {
  EXPECT_TRUE(CSize().IsEmpty());
  EXPECT_TRUE(CSize(0, 5).IsEmpty());
  EXPECT_TRUE(CSize(5, 5, 0).IsEmpty());
  EXPECT_TRUE(CSize(5, -1, 5).IsEmpty());
  EXPECT_FALSE(CSize(1, 1, 1).IsEmpty());
}

TEST(Pos, HasTwoOrThreeCoordinates) {
  EXPECT_EQ(CPos(1, 2), CPos(1, 2, 0));
  EXPECT_NE(CPos(1, 2, 3), CPos(1, 2, 4));
  CPos const copy = CPos(-1, c_largest, c_smallest);
  EXPECT_EQ(copy.x, -1);
  EXPECT_EQ(copy.y, c_largest);
  EXPECT_EQ(copy.z, c_smallest);
}

TEST(ImageType, AnUnknownNumberIsRefused) {
  using EnId = IImage::CType::EnId;
  int const last = static_cast<int>(EnId::Double);
  for (int const id : {last + 1, last + 2, 200, 255})
    test::ExpectError<CExBadParam>([&] { (void)IImage::CType(EnId(id)); },
                                   "there is no pixel type " + std::to_string(id),
                                   "ORVA::IImage::CType::CType", c_module);
  for (auto const& c : c_types) EXPECT_EQ(IImage::CType(c.type.Id()), c.type);
  EXPECT_EQ(IImage::CType(EnId::None), IImage::CType());
}

TEST(Image, StartsWithAllPixelsZero) {
  for (auto const& c : c_types) {
    // Memory that was used before must not shine through.
    for (int round = 0; round < 3; ++round) {
      CImage image(c.type, CSize(7, 5, 3), c_noMargin);
      ASSERT_EQ(image.Bytes(), static_cast<std::size_t>(7 * 5 * 3 * c.bytes));
      EXPECT_EQ(image.Size(), CSize(7, 5, 3));
      EXPECT_EQ(image.Type(), c.type);
      std::byte* const pixels = image.CreateAccess(true).WritableBase();
      for (std::size_t i = 0; i < image.Bytes(); ++i) {
        EXPECT_EQ(pixels[i], std::byte{0}) << c.name;
        pixels[i] = std::byte{0xFF};
      }
    }
  }
}

TEST(Image, PixelsLieXFastestWithoutGaps) {
  for (auto const& c : c_types) {
    CImage const image(c.type, CSize(7, 5, 3), c_noMargin);
    CImageAccess const access = image.CreateAccess(false);
    EXPECT_EQ(access.Extents(), (std::array<int64, 3>{7, 5, 3}));
    EXPECT_EQ(access.Strides(), (std::array<int64, 3>{c.bytes, 7 * c.bytes, 35 * c.bytes}));
  }
}

TEST(Image, DefaultIsEmpty) {
  CImage image;
  EXPECT_EQ(image.Type(), IImage::CType());
  EXPECT_EQ(image.Size(), CSize());
  EXPECT_EQ(image.Bytes(), 0u);
  EXPECT_TRUE(image.Attributes().IsEmpty());
  EXPECT_EQ(image.CreateAccess(true).WritableBase(), nullptr);
  test::ExpectError<CExBadParam>([&] { image.Resize(CSize(2, 2), c_noMargin); },
                                 "an image of size (2, 2, 1) needs a pixel type",
                                 "ORVA::CImage::Resize", c_module);
}

TEST(Image, MayHaveZeroExtents) {
  for (CSize const& size : {CSize(0, 5, 6), CSize(5, 0, 6), CSize(5, 6, 0), CSize(0, 0, 0),
                            CSize(0, 0), CSize(0, c_largest, c_largest)}) {
    CImage image(IMAGE_GREY_16, size, c_noMargin);
    EXPECT_EQ(image.Size(), size);
    EXPECT_EQ(image.Bytes(), 0u);
    CImageAccess const access = image.CreateAccess(true);
    EXPECT_EQ(access.WritableBase(), nullptr);
    EXPECT_EQ(access.Extents(), (std::array<int64, 3>{size.x, size.y, size.z}));
    EXPECT_EQ(access.Strides(), (std::array<int64, 3>{0, 0, 0}));
    EXPECT_THROW((void)image.CreateAccess(false, CPos(0, 0, 0), CPos(0, 0, 0)), CExBadParam);
    CImage const copy = image;
    EXPECT_EQ(copy, image);
    image.Resize(CSize(2, 2), c_noMargin);
    EXPECT_EQ(image.Bytes(), 8u);
  }
}

TEST(Image, BadSizesAndMarginsAreRefused) {
  struct StCase {
    CSize size;
    CSize margin;
    char const* message;
  };
  CSize flat(4, 4);
  flat.z = 3;
  CSize none(4);
  none.y = 0;
  std::vector<StCase> const cases = {
      {CSize(), c_noMargin, "image size (0, 0, 0) has no dimension"},
      {CSize(-1, 5, 5), c_noMargin, "image size (-1, 5, 5) is negative"},
      {CSize(5, -1), c_noMargin, "image size (5, -1, 1) is negative"},
      {CSize(0, 0, c_smallest), c_noMargin, "image size (0, 0, -9223372036854775808) is negative"},
      {flat, c_noMargin, "image size (4, 4, 3) extends beyond its dimension"},
      {none, c_noMargin, "image size (4, 0, 1) extends beyond its dimension"},
      {CSize(c_largest, 1, 1), c_noMargin,
       "image size (9223372036854775807, 1, 1) is too large to address"},
      {CSize(4294967296, 2147483648, 1), c_noMargin,
       "image size (4294967296, 2147483648, 1) is too large to address"},
      {CSize(c_largest, c_largest, c_largest), c_noMargin,
       "image size (9223372036854775807, 9223372036854775807, 9223372036854775807) is too large "
       "to address"},
      {CSize(3037000500, 3037000500), c_noMargin,
       "image size (3037000500, 3037000500, 1) is too large to address"},
      {CSize(4, 4), CSize(1, 0, 0), "image margin (1, 0, 0) is not supported, only (0, 0, 0)"},
      {CSize(4, 4), CSize(0, 0, -1), "image margin (0, 0, -1) is not supported, only (0, 0, 0)"},
      {CSize(4, 4), CSize(0, c_largest, 0),
       "image margin (0, 9223372036854775807, 0) is not supported, only (0, 0, 0)"},
      {CSize(4, 4), CSize(0, 0), "image margin (0, 0, 1) is not supported, only (0, 0, 0)"},
  };
  for (auto const& c : cases) {
    test::ExpectError<CExBadParam>([&] { CImage image(IMAGE_GREY_16, c.size, c.margin); },
                                   c.message, "ORVA::CImage::CImage", c_module);
    CImage image = Numbered(CSize(3, 2));
    CImage const before = image;
    CImage wide(IMAGE_GREY_16, CSize(2, 2), c_noMargin);
    test::ExpectError<CExBadParam>([&] { wide.Resize(c.size, c.margin); }, c.message,
                                   "ORVA::CImage::Resize", c_module);
    EXPECT_EQ(wide.Size(), CSize(2, 2));
    EXPECT_EQ(image, before);
  }
  test::ExpectError<CExBadParam>([] { CImage image(IImage::CType(), CSize(4, 4), c_noMargin); },
                                 "an image of size (4, 4, 1) needs a pixel type",
                                 "ORVA::CImage::CImage", c_module);
}

TEST(Image, AnySizeOfNoMarginIsNone) {
  EXPECT_NO_THROW(CImage(IMAGE_GREY_8, CSize(4, 4), CSize()));
  EXPECT_NO_THROW(CImage(IMAGE_GREY_8, CSize(4, 4), CSize(0, 0, 0)));
  EXPECT_NO_THROW(CImage(IMAGE_GREY_8, CSize(4, 4)));
}

TEST(Image, MoreThanAllMemoryIsAnAllocationError) {
  EXPECT_THROW(CImage(IMAGE_GREY_8, CSize(c_largest, 1, 1), c_noMargin), std::bad_alloc);
  CImage image = Numbered(CSize(3, 2));
  EXPECT_THROW(image.Resize(CSize(c_largest, 1, 1), c_noMargin), std::bad_alloc);
  EXPECT_EQ(image, Numbered(CSize(3, 2)));
}

TEST(Image, ResizeClearsPixelsAndKeepsAttributes) {
  CImage image = Numbered(CSize(3, 2));
  image.Attributes().SetEntry("name", CValueString("x"));
  image.Resize(CSize(3, 2), c_noMargin);
  CImageAccess const access = image.CreateAccess(false);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(access.Base()[i], std::byte{0});
  image.Resize(CSize(2, 3, 4), c_noMargin);
  EXPECT_EQ(image.Size(), CSize(2, 3, 4));
  EXPECT_EQ(image.Type(), IMAGE_GREY_8);
  EXPECT_EQ(image.Attributes().Entry("name").String(), "x");
}

TEST(ImageAccess, BoxShowsItsVoxels) {
  CImage const image = Numbered(CSize(4, 3, 2));
  CImageAccess const box = image.CreateAccess(false, CPos(1, 1, 0), CPos(2, 2, 1));
  EXPECT_EQ(box.Extents(), (std::array<int64, 3>{2, 2, 2}));
  EXPECT_EQ(box.Strides(), (std::array<int64, 3>{1, 4, 12}));
  for (int z = 0; z < 2; ++z)
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < 2; ++x)
        EXPECT_EQ(PixelAt(box, x, y, z), 1 + (x + 1) + 4 * (y + 1) + 12 * z);
  CImageAccess const last = image.CreateAccess(false, CPos(3, 2, 1), CPos(3, 2, 1));
  EXPECT_EQ(PixelAt(last, 0, 0, 0), 24);
  CImageAccess const whole = image.CreateAccess(false, CPos(0, 0, 0), CPos(3, 2, 1));
  EXPECT_EQ(whole.Base(), image.CreateAccess(false).Base());
  EXPECT_EQ(whole.Extents(), image.CreateAccess(false).Extents());
}

TEST(ImageAccess, BoxOutsideIsRefused) {
  CImage image = Numbered(CSize(4, 3, 2));
  CImage const& constImage = image;
  CPos const inside(1, 1, 1);
  std::vector<std::pair<CPos, CPos>> const boxes = {
      {CPos(-1, 0, 0), inside},
      {CPos(0, -1, 0), inside},
      {CPos(0, 0, -1), inside},
      {inside, CPos(4, 2, 1)},
      {inside, CPos(3, 3, 1)},
      {inside, CPos(3, 2, 2)},
      {CPos(2, 1, 1), inside}, // first behind last
      {CPos(c_smallest, 0, 0), CPos(c_largest, 0, 0)},
      {CPos(0, c_smallest, 0), inside},
      {inside, CPos(1, 1, c_largest)},
      {CPos(c_largest, c_largest, c_largest), CPos(c_largest, c_largest, c_largest)},
      {CPos(c_largest, 0, 0), CPos(c_smallest, 0, 0)},
      {CPos(c_smallest, c_smallest, c_smallest), CPos(c_smallest, c_smallest, c_smallest)},
  };
  auto const text = [](CPos const& p) {
    return "(" + std::to_string(p.x) + ", " + std::to_string(p.y) + ", " + std::to_string(p.z) +
           ")";
  };
  for (auto const& box : boxes) {
    auto const& first = box.first; // no structured binding: Clang 14 captures none
    auto const& last = box.second;
    std::string const message =
        "box " + text(first) + " to " + text(last) + " is not inside an image of size (4, 3, 2)";
    test::ExpectError<CExBadParam>([&] { (void)image.CreateAccess(true, first, last); }, message,
                                   c_createAccess, c_module);
    test::ExpectError<CExBadParam>([&] { (void)constImage.CreateAccess(false, first, last); },
                                   message, c_createAccess, c_module);
  }
}

TEST(ImageAccess, WritesReachTheImage) {
  CImage image(IMAGE_GREY_16, CSize(3, 2), c_noMargin);
  {
    CImageAccess const access = image.CreateAccess(true, CPos(1, 1), CPos(2, 1));
    *reinterpret_cast<std::uint16_t*>(access.WritableBase() + access.Stride(0)) = 0x0102;
  }
  auto const* const pixels =
      reinterpret_cast<std::uint16_t const*>(image.CreateAccess(false).Base());
  EXPECT_EQ(pixels[5], 0x0102);
  EXPECT_EQ(pixels[4], 0);
}

TEST(Image, EachErrorHasALineOfItsOwn) {
  std::vector<std::function<void()>> errors;
  auto const make = [&](IImage::CType type, CSize size, CSize margin) {
    errors.emplace_back([=] { CImage(type, size, margin); });
  };
  make(IImage::CType(), CSize(1, 1), c_noMargin);
  make(IMAGE_GREY_8, CSize(), c_noMargin);
  make(IMAGE_GREY_8, CSize(-1, 1), c_noMargin);
  CSize beyond(4, 4);
  beyond.z = 2;
  make(IMAGE_GREY_8, beyond, c_noMargin);
  make(IMAGE_GREY_8, CSize(1, 1), CSize(1, 0, 0));
  make(IMAGE_GREY_8, CSize(c_largest, 2), c_noMargin);
  test::ExpectLinesOfTheirOwn(errors);
}

TEST(ImageAccess, ReadingAccessRefusesToWrite) {
  CImage image = Numbered(CSize(3, 2));
  CImage const& constImage = image;
  CImageAccess const access = image.CreateAccess(false);
  test::ExpectError<CExBadParam>([&] { (void)access.WritableBase(); },
                                 "the access was not opened for writing",
                                 "ORVA::CImageAccess::WritableBase", c_module);
  test::ExpectError<CExBadParam>([&] { (void)constImage.CreateAccess(true); },
                                 "a const image cannot be opened for writing", c_createAccess,
                                 c_module);
  test::ExpectError<CExBadParam>([&] { (void)constImage.CreateAccess(true, CPos(), CPos()); },
                                 "a const image cannot be opened for writing", c_createAccess,
                                 c_module);
  EXPECT_NO_THROW((void)constImage.CreateAccess(false));
}

TEST(ImageAccess, OtherAxesAreRefused) {
  CImage const image = Numbered(CSize(3, 2));
  CImageAccess const access = image.CreateAccess(false);
  for (int const axis : {-1, 3, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    std::string const message = "axis " + std::to_string(axis) + " is not 0, 1 or 2";
    test::ExpectError<CExBadParam>([&] { (void)access.Extent(axis); }, message);
    test::ExpectError<CExBadParam>([&] { (void)access.Stride(axis); }, message);
  }
}

TEST(ImageAccess, OutlivesWhateverBecomesOfTheImage) {
  struct StCase {
    char const* name;
    void (*change)(std::optional<CImage>&);
  };
  std::vector<StCase> const cases = {
      {"resize", [](std::optional<CImage>& image) { image->Resize(CSize(9, 9, 9)); }},
      {"resize to nothing", [](std::optional<CImage>& image) { image->Resize(CSize(0, 0, 0)); }},
      {"copy assignment",
       [](std::optional<CImage>& image) {
         CImage const other(IMAGE_GREY_F, CSize(1, 1));
         *image = other;
       }},
      {"move assignment", [](std::optional<CImage>& image) { *image = CImage(); }},
      {"moved away", [](std::optional<CImage>& image) { CImage const taken = std::move(*image); }},
      {"destruction", [](std::optional<CImage>& image) { image.reset(); }},
  };
  for (auto const& c : cases) {
    std::optional<CImage> image = Numbered(CSize(4, 3, 2));
    CImageAccess const access = image->CreateAccess(true);
    c.change(image);
    EXPECT_EQ(PixelAt(access, 3, 2, 1), 24) << c.name;
    access.WritableBase()[23] = std::byte{99};
    EXPECT_EQ(PixelAt(access, 3, 2, 1), 99) << c.name;
    EXPECT_EQ(access.Extents(), (std::array<int64, 3>{4, 3, 2})) << c.name;
  }
}

TEST(ImageAccess, ResizedImageHasABlockOfItsOwn) {
  CImage image = Numbered(CSize(3, 2));
  CImageAccess const old = image.CreateAccess(true);
  image.Resize(CSize(3, 2), c_noMargin);
  *old.WritableBase() = std::byte{77};
  EXPECT_EQ(PixelAt(image.CreateAccess(false), 0, 0, 0), 0);
}

TEST(ImageAccess, ReleaseLetsGo) {
  CImage image = Numbered(CSize(3, 2));
  CImageAccess access = image.CreateAccess(true);
  access.Release();
  EXPECT_EQ(access.Base(), nullptr);
  EXPECT_EQ(access.Extents(), (std::array<int64, 3>{0, 0, 0}));
  EXPECT_EQ(access.Strides(), (std::array<int64, 3>{0, 0, 0}));
  EXPECT_THROW((void)access.WritableBase(), CExBadParam);
  access.Release();
}

TEST(ImageAccess, MovedFromIsReleased) {
  CImageAccess target = CImage(IMAGE_GREY_8, CSize(1, 1)).CreateAccess(false);
  {
    CImage image = Numbered(CSize(3, 2));
    CImageAccess source = image.CreateAccess(true);
    CImageAccess taken = std::move(source);
    EXPECT_EQ(source.Base(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.Extent(0), 0);
    target = std::move(taken);
    EXPECT_EQ(taken.Base(), nullptr); // NOLINT(bugprone-use-after-move)
  }
  EXPECT_EQ(PixelAt(target, 2, 1, 0), 6);
  CImageAccess& alias = target;
  target = std::move(alias);
  EXPECT_EQ(PixelAt(target, 2, 1, 0), 6);
  CImageAccess const copy = target;
  target.Release();
  EXPECT_EQ(PixelAt(copy, 2, 1, 0), 6);
}

TEST(Image, CopiesShareNothing) {
  CImage const original = [] {
    CImage image = Numbered(CSize(3, 2));
    image.Attributes().SetEntry("a/b", CValueLong(1));
    return image;
  }();
  CImage copy = original;
  CImage assigned(IMAGE_GREY_F, CSize(9, 9, 9));
  assigned = original;
  EXPECT_EQ(copy, original);
  EXPECT_EQ(assigned, original);
  *copy.CreateAccess(true).WritableBase() = std::byte{99};
  assigned.Attributes().Entry("a/b").Long() = 2;
  EXPECT_EQ(PixelAt(original.CreateAccess(false), 0, 0, 0), 1);
  EXPECT_EQ(original.Attributes().Entry("a/b").Long(), 1);
  EXPECT_NE(copy, original);
  EXPECT_NE(assigned, original);
}

TEST(Image, MovedFromIsEmpty) {
  CImage source = Numbered(CSize(3, 2));
  source.Attributes().SetEntry("a", CValueLong(1));
  CImage const before = source;
  std::byte const* const pixels = source.CreateAccess(false).Base();
  CImage taken = std::move(source);
  EXPECT_EQ(source, CImage()); // NOLINT(bugprone-use-after-move)
  EXPECT_TRUE(source.Attributes().IsEmpty());
  EXPECT_EQ(taken, before);
  EXPECT_EQ(taken.CreateAccess(false).Base(), pixels); // moved, not copied
  source = std::move(taken);
  EXPECT_EQ(taken, CImage()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(source, before);
}

TEST(Image, AssignmentToItselfChangesNothing) {
  CImage image = Numbered(CSize(3, 2));
  CImage& alias = image;
  image = alias;
  EXPECT_EQ(image, Numbered(CSize(3, 2)));
  image = std::move(alias);
  EXPECT_EQ(image, Numbered(CSize(3, 2)));
}

TEST(Image, AssignsFromAnImageHeldByItsOwnAttributes) {
  CImage const inner = Numbered(CSize(3, 2));
  for (bool const move : {false, true}) {
    CImage image(IMAGE_GREY_F, CSize(2, 2));
    image.Attributes().SetEntry("inner", CValuePointer::Own(inner));
    CImage& held = *image.Attributes().Entry("inner").Pointer<CImage>();
    if (move)
      image = std::move(held);
    else
      image = held;
    EXPECT_EQ(image, inner);
  }
}

TEST(Image, EqualComparesTypeSizePixelsAndAttributes) {
  CImage const image = Numbered(CSize(3, 2));
  CImage pixel = image, attribute = image;
  pixel.CreateAccess(true).WritableBase()[5] = std::byte{0};
  attribute.Attributes().SetEntry("a", CValueLong(1));
  EXPECT_EQ(image, Numbered(CSize(3, 2)));
  EXPECT_NE(image, pixel);
  EXPECT_NE(image, attribute);
  EXPECT_NE(image, Numbered(CSize(2, 3)));
  EXPECT_NE(CImage(IMAGE_GREY_8, CSize(3, 2)), CImage(IMAGE_BOOL, CSize(3, 2)));
  EXPECT_NE(CImage(IMAGE_GREY_8, CSize(3, 2)), CImage(IMAGE_GREY_8, CSize(3, 2, 1)));
}

TEST(Image, MovesWithoutThrowing) {
  static_assert(std::is_nothrow_move_constructible_v<CImage>);
  static_assert(std::is_nothrow_move_assignable_v<CImage>);
  static_assert(std::is_nothrow_move_constructible_v<CImageAccess>);
  static_assert(!std::is_copy_constructible_v<IImage>);
}
