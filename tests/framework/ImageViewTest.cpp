// Views of foreign pixels: layouts, owners, what is refused; and images of one's own making.

#include "support/Errors.h"
#include "support/Images.h"

#include <pxlib2core/Exception.h>
#include <pxlib2image/ImageView.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using test::Pixels;

namespace {

using Strides = std::array<int64, 3>;

std::vector<std::uint16_t> Numbers(std::size_t n) {
  std::vector<std::uint16_t> numbers(n);
  std::iota(numbers.begin(), numbers.end(), std::uint16_t{0});
  return numbers;
}

} // namespace

TEST(ImageView, ShowsPixelsInAnyLayout) {
  auto numbers = Numbers(6); // 0 1 2 / 3 4 5
  auto* const first = reinterpret_cast<std::byte*>(numbers.data());
  struct {
    char const* name;
    CSize size;
    std::ptrdiff_t base; // bytes
    Strides strides;
    std::vector<std::uint16_t> expected;
  } const cases[] = {
      {"rows", CSize(3, 2), 0, {2, 6, 12}, {0, 1, 2, 3, 4, 5}},
      {"columns", CSize(2, 3), 0, {6, 2, 12}, {0, 3, 1, 4, 2, 5}},
      {"mirrored", CSize(3, 2), 4, {-2, 6, 0}, {2, 1, 0, 5, 4, 3}},
      {"upside down", CSize(3, 2), 6, {2, -6, 0}, {3, 4, 5, 0, 1, 2}},
      {"every second", CSize(3), 0, {4, 0, 0}, {0, 2, 4}},
      {"one voxel, strides that do not matter", CSize(1, 1, 1), 10, {1, 1, 1}, {5}},
      {"nothing", CSize(0, 2), 0, {2, 0, 0}, {}},
  };
  for (auto const& test : cases) {
    CImageView const view(IMAGE_GREY_16, test.size, static_cast<void*>(first + test.base),
                          test.strides);
    EXPECT_EQ(Pixels<std::uint16_t>(view), test.expected) << test.name;
    EXPECT_EQ(view.Size(), test.size) << test.name;
  }
}

TEST(ImageView, WithoutStridesHasRowsWithoutGaps) {
  auto numbers = Numbers(24);
  CImageView const view(IMAGE_GREY_16, CSize(2, 3, 4), numbers.data());
  EXPECT_EQ(Pixels<std::uint16_t>(view), numbers);
  EXPECT_EQ(view.Strides(), (Strides{2, 4, 12}));
  EXPECT_EQ(CImageView::RowByRow(IMAGE_DOUBLE, CSize(5, 6)), (Strides{8, 40, 240}));
}

TEST(ImageView, WritesThroughToTheOwnersMemory) {
  auto numbers = Numbers(6);
  CImageView view(IMAGE_GREY_16, CSize(3, 2), numbers.data() + 5, {-2, -6, 0});
  EXPECT_TRUE(view.IsWritable());
  auto const access = view.CreateAccess(true);
  std::uint16_t const value = 77;
  std::memcpy(access.WritableBase() + access.Stride(0), &value, sizeof value);
  EXPECT_EQ(numbers[4], 77);
}

TEST(ImageView, ReadOnlyRefusesToBeWritten) {
  auto const numbers = Numbers(6);
  CImageView view(IMAGE_GREY_16, CSize(3, 2), numbers.data());
  EXPECT_FALSE(view.IsWritable());
  ExpectError<CExBadParam>([&] { (void)view.CreateAccess(true); },
                           "a read-only view cannot be opened for writing");
  ExpectError<CExBadParam>([&] { (void)std::as_const(view).CreateAccess(true); },
                           "a const view cannot be opened for writing");
  ExpectError<CExBadParam>([&] { (void)view.CreateAccess(false).WritableBase(); },
                           "the access was not opened for writing");
}

TEST(ImageView, KeepsTheOwnerAliveThroughCopiesAndAccesses) {
  auto owner = std::make_shared<std::vector<std::uint16_t>>(Numbers(6));
  std::weak_ptr<void const> const watch = owner;
  auto view =
      std::make_unique<CImageView>(IMAGE_GREY_16, CSize(6), owner->data(), Strides{2, 0, 0}, owner);
  owner.reset();
  auto copy = std::make_unique<CImageView>(*view);
  view.reset();
  auto access = copy->CreateAccess(false);
  copy.reset();
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(std::to_integer<int>(access.Base()[10]), 5);
  access.Release();
  EXPECT_TRUE(watch.expired());
}

TEST(ImageView, MovedFromHasNoPixels) {
  auto numbers = Numbers(6);
  CImageView view(IMAGE_GREY_16, CSize(6), numbers.data());
  view.Attributes().SetEntry("name", CValueLong(1));
  CImageView const moved = std::move(view);
  EXPECT_EQ(view.Size(), CSize());
  EXPECT_EQ(view.CreateAccess(false).Base(), nullptr);
  EXPECT_FALSE(view.Attributes().HasEntry("name"));
  EXPECT_EQ(Pixels<std::uint16_t>(moved), numbers);
  EXPECT_TRUE(moved.Attributes().HasEntry("name"));
}

TEST(ImageView, WritableRefusesVoxelsThatShareAByte) {
  std::vector<std::uint16_t> pixels(64);
  struct {
    CSize size;
    Strides strides;
    bool isRefused;
  } const cases[] = {
      {CSize(4, 4), {2, 8, 0}, false},   {CSize(4, 4), {2, 6, 0}, true},
      {CSize(4, 4), {1, 8, 0}, true},    {CSize(4, 4), {0, 8, 0}, true},
      {CSize(4, 4), {8, 2, 0}, false},   {CSize(1, 4), {0, 2, 0}, false},
      {CSize(2, 4), {-2, 4, 0}, false},  {CSize(2, 4), {-4, 4, 0}, true},
      {CSize(2, 2, 2), {2, 4, 6}, true}, {CSize(2, 2, 2), {8, 2, 4}, false},
      {CSize(0, 4), {0, 0, 0}, false},
  };
  for (auto const& test : cases) {
    auto const make = [&] {
      CImageView const view(IMAGE_GREY_16, test.size, static_cast<void*>(pixels.data() + 16),
                            test.strides);
    };
    if (test.isRefused) {
      EXPECT_THROW(make(), CExBadParam) << test.size.x << ' ' << test.strides[0];
    } else {
      EXPECT_NO_THROW(make()) << test.size.x << ' ' << test.strides[0];
    }
    EXPECT_NO_THROW(CImageView(IMAGE_GREY_16, test.size,
                               static_cast<void const*>(pixels.data() + 16), test.strides));
  }
}

TEST(ImageView, SaysWhichVoxelsShareAByte) {
  std::vector<std::uint16_t> pixels(12);
  test::ExpectError<CExBadParam>(
      [&] {
        CImageView(IMAGE_GREY_16, CSize(4, 3), pixels.data(), {2, 6, 0});
      },
      "a writable view of size (4, 3, 1) with strides (2, 6, 0) has voxels that share a byte");
}

TEST(ImageView, FindsSharedBytesAnywhere) {
  // Against a count of every byte, for all small extents and strides: what overlaps is refused, and
  // what is refused either overlaps or has axes that interleave.
  std::vector<std::uint8_t> pixels(512);
  for (int64 nx = 1; nx <= 3; ++nx)
    for (int64 ny = 1; ny <= 3; ++ny)
      for (int64 sx = -5; sx <= 5; ++sx)
        for (int64 sy = -5; sy <= 5; ++sy) {
          std::vector<int> uses(512);
          for (int64 y = 0; y < ny; ++y)
            for (int64 x = 0; x < nx; ++x)
              for (int64 byte = 0; byte < 2; ++byte)
                ++uses[static_cast<std::size_t>(256 + x * sx + y * sy + byte)];
          bool const overlaps = std::ranges::any_of(uses, [](int n) { return n > 1; });
          bool isRefused = false;
          try {
            CImageView const view(IMAGE_GREY_16, CSize(nx, ny),
                                  static_cast<void*>(pixels.data() + 256), Strides{sx, sy, 0});
          } catch (CExBadParam const&) {
            isRefused = true;
          }
          if (overlaps) {
            EXPECT_TRUE(isRefused) << nx << ' ' << ny << ' ' << sx << ' ' << sy;
          }
          if (isRefused && (nx == 1 || ny == 1)) {
            EXPECT_TRUE(overlaps) << nx << ' ' << ny << ' ' << sx << ' ' << sy;
          }
        }
}

TEST(ImageView, RefusesBadArguments) {
  std::vector<std::uint16_t> pixels(64);
  void* const p = pixels.data();
  constexpr int64 most = std::numeric_limits<int64>::max(),
                  least = std::numeric_limits<int64>::min();
  ExpectError<CExBadParam>([&] { CImageView(IImage::CType(), CSize(2, 2), p); },
                           "a view of size (2, 2, 1) needs a pixel type");
  ExpectError<CExBadParam>([&] { CImageView(IMAGE_GREY_16, CSize(), p); },
                           "view size (0, 0, 0) has no dimension");
  ExpectError<CExBadParam>([&] { CImageView(IMAGE_GREY_16, CSize(2, -2), p); },
                           "view size (2, -2, 1) is negative");
  ExpectError<CExBadParam>(
      [&] { CImageView(IMAGE_GREY_16, CSize(2, 2), static_cast<void*>(nullptr)); },
      "a view of size (2, 2, 1) needs the address of its pixels");
  for (Strides const& strides : {Strides{most, 2, 0}, Strides{least, 2, 0}, Strides{2, least, 0}})
    EXPECT_THROW(CImageView(IMAGE_GREY_16, CSize(3, 3), p, strides), CExBadParam);
  EXPECT_THROW(CImageView(IMAGE_GREY_16, CSize(most, most, most), p), CExBadParam);
  std::string const extent = std::to_string(most);
  ExpectError<CExBadParam>(
      [&] {
        CImageView(IMAGE_GREY_16, CSize(most, 1, 1), p, {2, 0, 0});
      },
      "a view of size (" + extent + ", 1, 1) with strides (2, 0, 0) leads out of memory");
}

TEST(ImageView, BoxIsAPartOfTheSamePixels) {
  auto numbers = Numbers(24);
  CImageView const view(IMAGE_GREY_16, CSize(4, 6), numbers.data() + 3, {-2, 8, 0});
  auto const box = view.Box({1, 2, 0}, {3, 4, 1});
  EXPECT_EQ(Pixels<std::uint16_t>(box), (std::vector<std::uint16_t>{10, 9, 14, 13}));
  EXPECT_EQ(box.Size(), CSize(2, 2));
  EXPECT_TRUE(box.IsWritable());
  EXPECT_TRUE(Pixels<std::uint16_t>(view.Box({4, 6, 1}, {4, 6, 1})).empty());
  ExpectError<CExBadParam>(
      [&] {
        (void)view.Box({0, 0, 0}, {5, 1, 1});
      },
      "box from (0, 0, 0) up to (5, 1, 1) is not inside a view of size (4, 6, 1)");
}

// Whoever implements IImage himself makes his accesses with the factory functions.

namespace {

class CChessBoard final : public IImage {
public:
  [[nodiscard]] CSize Size() const noexcept override { return CSize(8, 8); }
  [[nodiscard]] CType Type() const noexcept override { return IMAGE_GREY_8; }
  [[nodiscard]] CValueMap& Attributes() noexcept override { return m_Attributes; }
  [[nodiscard]] CValueMap const& Attributes() const noexcept override { return m_Attributes; }
  [[nodiscard]] CImageAccess CreateAccess(bool write) override {
    return write ? CImageAccess::ForWriting(IMAGE_GREY_8, m_Fields.data(), {8, 8, 1}, {1, 8, 64})
                 : std::as_const(*this).CreateAccess(false);
  }
  [[nodiscard]] CImageAccess CreateAccess(bool /*write*/) const override {
    return CImageAccess::ForReading(IMAGE_GREY_8, m_Fields.data(), {8, 8, 1}, {1, 8, 64});
  }

private:
  CValueMap m_Attributes;
  std::array<std::byte, 64> m_Fields{};
};

} // namespace

TEST(ImageAccess, CanBeMadeForAnImageOfOnesOwn) {
  CChessBoard board;
  *board.CreateAccess(true).WritableBase() = std::byte{1};
  EXPECT_EQ(Pixels<std::uint8_t>(board)[0], 1);
  EXPECT_EQ(Pixels<std::uint8_t>(board).size(), 64u);
  EXPECT_THROW((void)board.CreateAccess(false).WritableBase(), CExBadParam);
}

TEST(ImageAccess, OfOnesOwnRefusesWhatCannotBe) {
  std::byte pixel{};
  ExpectError<CExBadParam>(
      [&] {
        (void)CImageAccess::ForWriting(IMAGE_GREY_8, &pixel, {1, -1, 1}, {1, 1, 1});
      },
      "an extent of -1 voxels is negative");
  ExpectError<CExBadParam>(
      [&] {
        (void)CImageAccess::ForReading(IMAGE_GREY_8, nullptr, {1, 1, 1}, {1, 1, 1});
      },
      "an access to voxels needs their address");
  EXPECT_EQ(CImageAccess::ForReading(IMAGE_GREY_8, nullptr, {0, 1, 1}, {1, 1, 1}).Base(), nullptr);
}

TEST(ImageAccess, PixelsOfAViewAreCheckedForTypeAndAlignment) {
  alignas(8) std::array<std::int16_t, 8> numbers = {1, 2, 3, 4, 5, 6, 7, 8};
  CImageView const columns(IMAGE_SIGNED_16, CSize(2, 4), numbers.data(), {8, 2, 0});
  auto const access = columns.CreateAccess(false);
  EXPECT_EQ(access.As<std::int16_t const>()(1, 2), 7);
  ExpectError<CExBadParam>([&] { (void)access.As<std::int16_t const>().Row(0); },
                           "the pixels of a row are 8 bytes apart");
  auto const* const odd = reinterpret_cast<std::byte const*>(numbers.data()) + 1;
  CImageView const shifted(IMAGE_SIGNED_16, CSize(2), static_cast<void const*>(odd));
  ExpectError<CExBadParam>([&] { (void)shifted.CreateAccess(false).As<std::int16_t const>(); },
                           "the pixels are not aligned for numbers of 2 bytes");
}

TEST(ImageTypes, SignedAndDoublePixelsAreTypes) {
  EXPECT_EQ(IMAGE_SIGNED_8.Bytes(), 1);
  EXPECT_EQ(IMAGE_SIGNED_16.Bytes(), 2);
  EXPECT_EQ(IMAGE_SIGNED_32.Bytes(), 4);
  EXPECT_EQ(IMAGE_DOUBLE.Bytes(), 8);
  EXPECT_STREQ(IMAGE_SIGNED_16.ToString(), "IMAGE_SIGNED_16");
  EXPECT_EQ(CImage(IMAGE_DOUBLE, CSize(3, 2)).Bytes(), 48u);
}
