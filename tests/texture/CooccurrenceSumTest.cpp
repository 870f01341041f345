// Co-occurrence counted in parts, against the co-occurrence counted in one go.
#include "support/Errors.h"
#include "support/Random.h"

#include <SeluUtils/CooccurrenceSum.h>
#include <pxlib2image/ImageView.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>

namespace {

using ORVA::CCooccurrence;
using ORVA::CCooccurrenceSum;
using ORVA::CImage;
using ORVA::CPos;
using ORVA::CSize;
using ORVA::CTriple;
using ORVA::int64;
using ORVA::uint64;

CImage RandomImage(ORVA::IImage::CType type, CSize const& size, test::CRandomNumbers& random) {
  CImage image(type, size);
  auto const access = image.CreateAccess(true);
  std::byte* const bytes = access.WritableBase();
  for (std::size_t k = 0; k < image.Bytes(); ++k)
    bytes[k] = static_cast<std::byte>(40 * random.Between(0, 6));
  return image;
}

// The matrix as an image of size (1, 256, 256).
CImage MatrixOf(CCooccurrenceSum const& sum) {
  CImage matrix(ORVA::IMAGE_GREY_32, CSize(1, 256, 256));
  sum.Write(matrix);
  return matrix;
}

bool HaveSameBytes(CImage const& a, CImage const& b) {
  return a.Bytes() == b.Bytes() &&
         std::equal(a.CreateAccess(false).Base(), a.CreateAccess(false).Base() + a.Bytes(),
                    b.CreateAccess(false).Base());
}

bool HaveSameBits(CCooccurrence::CFeatures const& a, CCooccurrence::CFeatures const& b) {
  return std::ranges::equal(a, b, {}, std::bit_cast<uint64, double>, std::bit_cast<uint64, double>);
}

struct StSumCase {
  ORVA::IImage::CType type;
  CSize size;
  CTriple<int64> d;
};

class CooccurrenceSumOf : public testing::TestWithParam<StSumCase> {};

TEST_P(CooccurrenceSumOf, PartsIsThatOfTheWhole) {
  auto const& [type, size, d] = GetParam();
  test::CRandomNumbers random;
  CImage const image = RandomImage(type, size, random);
  CImage expected(ORVA::IMAGE_GREY_32, CSize(1, 256, 256));
  CCooccurrence whole("whole", nullptr);
  auto const features = whole.ComputeMatrixAndFeatures(
      expected, image,
      CTriple<long>(static_cast<long>(d.x), static_cast<long>(d.y), static_cast<long>(d.z)));

  CCooccurrenceSum once, parts, slabs;
  once.Count(image, d);
  EXPECT_TRUE(HaveSameBytes(MatrixOf(once), expected));
  EXPECT_TRUE(HaveSameBits(once.Features(), features));

  // Boxes of first voxels that share the image among them.
  for (int64 z = 0; z < size.z; z += 2)
    for (int64 y = 0; y < size.y; y += 3) {
      CCooccurrenceSum part;
      part.Count(image, d, CPos(0, y, z), CPos(size.x, y + 3, z + 2));
      parts += part;
    }
  EXPECT_EQ(parts, once);

  // Slabs along the last axis that hold their halo and nothing else.
  bool const isFlat = size.Dim() == 2;
  int64 const extent = isFlat ? size.y : size.z, along = isFlat ? d.y : d.z;
  for (int64 first = 0; first < extent; first += 2) {
    int64 const last = std::min(first + 2, extent);
    int64 const from = std::max(int64{0}, first + std::min(along, int64{0}));
    int64 const to = std::min(extent, last + std::max(along, int64{0}));
    auto const view = ORVA::CImageView(type, size, image.CreateAccess(false).Base());
    auto const slab = isFlat ? view.Box(CPos(0, from, 0), CPos(size.x, to, 1))
                             : view.Box(CPos(0, 0, from), CPos(size.x, size.y, to));
    slabs.Count(slab, d, isFlat ? CPos(0, first - from, 0) : CPos(0, 0, first - from),
                isFlat ? CPos(size.x, last - from, 1) : CPos(size.x, size.y, last - from));
  }
  EXPECT_EQ(slabs, once);
  EXPECT_TRUE(HaveSameBits(slabs.Features(), features));
}

INSTANTIATE_TEST_SUITE_P(
    TypesAndDirections, CooccurrenceSumOf,
    testing::Values(StSumCase{ORVA::IMAGE_GREY_8, CSize(17, 9, 7), {1, 0, 0}},
                    StSumCase{ORVA::IMAGE_GREY_8, CSize(17, 9, 7), {-3, 2, 4}},
                    StSumCase{ORVA::IMAGE_GREY_8, CSize(5, 9, 7), {0, -1, -6}},
                    StSumCase{ORVA::IMAGE_GREY_16, CSize(33, 6, 5), {2, -5, 1}},
                    StSumCase{ORVA::IMAGE_GREY_32, CSize(4, 4, 4), {-1, -1, -1}},
                    StSumCase{ORVA::IMAGE_GREY_8, CSize(40, 11), {1, -2, 0}},
                    StSumCase{ORVA::IMAGE_GREY_16, CSize(3, 50), {0, 49, 0}}));

TEST(CooccurrenceSum, LayoutNeverMatters) {
  test::CRandomNumbers random;
  CSize const size(6, 7, 8);
  CImage const image = RandomImage(ORVA::IMAGE_GREY_8, size, random);
  std::byte const* const base = image.CreateAccess(false).Base();
  ORVA::CImageView const flipped(ORVA::IMAGE_GREY_8, CSize(8, 7, 6),
                                 static_cast<void const*>(base + 42 * 7), {-42, 6, 1});
  CCooccurrenceSum usual, other;
  usual.Count(image, {1, -2, 3}, CPos(1, 0, 2), CPos(6, 5, 8));
  // The same boxes with the axes z and x exchanged, and the new x running downwards.
  other.Count(flipped, {-3, -2, 1}, CPos(0, 0, 1), CPos(6, 5, 6));
  EXPECT_EQ(usual, other);
  EXPECT_GT(usual.Pairs(), 0u);
}

TEST(CooccurrenceSum, CountsBeyond32BitsHaveFeaturesOfTheirOwn) {
  test::CRandomNumbers random;
  CImage const image = RandomImage(ORVA::IMAGE_GREY_8, CSize(30, 30), random);
  CCooccurrenceSum sum;
  sum.Count(image, {1, 0, 0});
  auto const features = sum.Features();
  for (int k = 0; k < 32; ++k) sum += CCooccurrenceSum(sum);
  EXPECT_EQ(sum.Pairs(), uint64{29 * 30} << 32U);
  // A matrix 2^32 times as large has the same shares, to the last bit.
  EXPECT_TRUE(HaveSameBits(sum.Features(), features));
  test::ExpectError([&] { (void)MatrixOf(sum); }, "a co-occurrence count exceeds 4294967295");
}

TEST(CooccurrenceSum, MorePairsThanOneTableHoldsAreCounted) {
  std::byte const pixel{3};
  ORVA::CImageView const image(ORVA::IMAGE_GREY_8, CSize(65538, 65536), // of one byte, repeated
                               static_cast<void const*>(&pixel), {0, 0, 0});
  CCooccurrenceSum sum;
  sum.Count(image, {1, 0, 0});
  EXPECT_EQ(sum(3, 3), uint64{65537} * 65536);
  EXPECT_EQ(sum.Pairs(), uint64{65537} * 65536);
}

TEST(CooccurrenceSum, NothingIsCountedWhereADisplacementLeadsOut) {
  CImage const image(ORVA::IMAGE_GREY_8, CSize(4, 4));
  CCooccurrenceSum sum;
  for (CTriple<int64> const& d :
       {CTriple<int64>(4, 0, 0), CTriple<int64>(0, INT64_MIN, 0), CTriple<int64>(0, 0, 1)})
    sum.Count(image, d);
  sum.Count(CImage(ORVA::IMAGE_GREY_8, CSize(0, 4)), {0, 1, 0});
  sum.Count(image, {1, 0, 0}, CPos(2, 0, 0), CPos(2, 4, 1));
  EXPECT_EQ(sum, CCooccurrenceSum());
  test::ExpectError([&] { (void)sum.Features(); }, "there are no pairs to have features");
}

TEST(CooccurrenceSum, RefusesWhatDoesNotFit) {
  using test::ExpectError;
  CCooccurrenceSum sum;
  CImage matrix(ORVA::IMAGE_GREY_32, CSize(2, 256, 256)), small(ORVA::IMAGE_GREY_32, CSize(2, 2));
  CImage const bytes(ORVA::IMAGE_GREY_8, CSize(2, 256, 256));
  ExpectError<ORVA::CExBadParam>(
      [&] {
        sum.Count(CImage(ORVA::IMAGE_GREY_F, CSize(4, 4)), {1, 0, 0});
      },
      "an image of the type IMAGE_GREY_F has no gray levels");
  ExpectError<ORVA::CExBadParam>([&] { (void)sum(256, 0); }, "level 256 is not from 0 to 255");
  ExpectError<ORVA::CExBadParam>([&] { (void)sum(0, -1); }, "level -1 is not from 0 to 255");
  ExpectError<ORVA::CExBadParam>([&] { sum.Write(matrix, 2); }, "slice 2 is not from 0 to 1");
  ExpectError<ORVA::CExBadParam>([&] { sum.Write(matrix, -1); }, "slice -1 is not from 0 to 1");
  for (CImage other : {small, bytes, CImage(ORVA::IMAGE_GREY_32, CSize(2, 255, 256))})
    ExpectError<ORVA::CExBadParam>([&] { sum.Write(other); },
                                   "the output is no IMAGE_GREY_32 of size (n, 256, 256)");
  EXPECT_NO_THROW(sum.Write(matrix, 1));
}

// Sums doubled until there is no room for more.
TEST(CooccurrenceSum, HoldsUpTo2To46Pairs) {
  constexpr char tooMany[] = "there are more than 2^46 pairs";
  CImage const image(ORVA::IMAGE_GREY_8, CSize(5, 1));
  CCooccurrenceSum sum;
  sum.Count(image, {1, 0, 0}); // 4 pairs
  for (int k = 2; k < 46; ++k) sum += CCooccurrenceSum(sum);
  EXPECT_EQ(sum.Pairs(), ORVA::uint64{1} << 46U);
  CCooccurrenceSum const full = sum;
  test::ExpectError<ORVA::CExBadParam>([&] { sum += full; }, tooMany);
  test::ExpectError<ORVA::CExBadParam>([&] { sum.Count(image, {1, 0, 0}); }, tooMany);
  EXPECT_EQ(sum, full);
}

} // namespace
