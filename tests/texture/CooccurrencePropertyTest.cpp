// Properties of the counts on random images of every pixel type, against a plain loop by
// coordinates and against themselves.

#include "support/Matrix.h"
#include "support/Printers.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace ORVA;
using test::CountByHand;
using test::CountWithLibrary;
using test::Matrix;

namespace {

template <class T>
constexpr IImage::CType PixelType() {
  return sizeof(T) == 1 ? IMAGE_GREY_8 : sizeof(T) == 2 ? IMAGE_GREY_16 : IMAGE_GREY_32;
}

// A random image in one of three manners: noise, long runs of few levels, or constant background
// with some noise in it; the last two are what segmented and masked volumes look like.
template <class T>
CImage RandomImage(test::CRandomNumbers& random, CSize size) {
  std::vector<T> pixels(static_cast<std::size_t>(size.x * size.y * size.z));
  auto const manner = random.Between(0, 2);
  auto const noise = [&] { return static_cast<T>(random.Generator()()); };
  T level = noise();
  for (T& pixel : pixels) {
    if (manner == 0) level = noise();
    if (manner == 1 && random.Between(0, 9) == 0) level = noise();
    pixel = manner == 2 ? (random.Between(0, 4) == 0 ? noise() : T{0}) : level;
  }
  return test::MakeImage(PixelType<T>(), size, pixels);
}

template <class T>
CImage Box(CImage const& image, CPos first, CPos last) {
  CImage box(image.Type(),
             image.Size().Dim() == 2
                 ? CSize(last.x - first.x + 1, last.y - first.y + 1)
                 : CSize(last.x - first.x + 1, last.y - first.y + 1, last.z - first.z + 1));
  auto const from = image.CreateAccess(false, first, last);
  auto const to = box.CreateAccess(true);
  for (int64 z = 0; z < to.Extent(2); ++z)
    for (int64 y = 0; y < to.Extent(1); ++y)
      std::memcpy(to.WritableBase() + z * to.Stride(2) + y * to.Stride(1),
                  from.Base() + z * from.Stride(2) + y * from.Stride(1),
                  static_cast<std::size_t>(to.Extent(0)) * sizeof(T));
  return box;
}

Matrix Sum(Matrix a, Matrix const& b) {
  for (std::size_t k = 0; k < a.size(); ++k) a[k] += b[k];
  return a;
}

Matrix Difference(Matrix a, Matrix const& b) {
  for (std::size_t k = 0; k < a.size(); ++k) a[k] -= b[k];
  return a;
}

template <class T>
class CooccurrenceProperty : public testing::Test {
protected:
  static constexpr int c_images = 24;
  CSize RandomSize() {
    if (random.Between(0, 1) == 0) return CSize(random.Between(1, 90), random.Between(1, 40));
    return CSize(random.Between(1, 70), random.Between(1, 12), random.Between(1, 12));
  }
  CTriple<long> RandomDirection(CSize const& size) {
    long const z = size.Dim() == 2 ? 0 : random.Between(-3L, 3L);
    return {random.Between(-20L, 20L), random.Between(-3L, 3L), z};
  }
  test::CRandomNumbers random;
};

using PixelTypes = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t>;

} // namespace

TYPED_TEST_SUITE(CooccurrenceProperty, PixelTypes);

TYPED_TEST(CooccurrenceProperty, CountsEqualThoseTakenByCoordinates) {
  for (int n = 0; n < this->c_images; ++n) {
    CSize const size = this->RandomSize();
    auto const image = RandomImage<TypeParam>(this->random, size);
    auto const direction = this->RandomDirection(size);
    ASSERT_EQ(CountWithLibrary(image, direction), CountByHand<TypeParam>(image, direction))
        << testing::PrintToString(size) << testing::PrintToString(direction);
  }
}

TYPED_TEST(CooccurrenceProperty, OppositeDirectionTransposes) {
  for (int n = 0; n < this->c_images; ++n) {
    CSize const size = this->RandomSize();
    auto const image = RandomImage<TypeParam>(this->random, size);
    auto const direction = this->RandomDirection(size);
    ASSERT_EQ(CountWithLibrary(image, direction),
              test::Transposed(CountWithLibrary(image, direction * -1L)));
  }
}

TYPED_TEST(CooccurrenceProperty, TotalIsTheNumberOfPairs) {
  for (int n = 0; n < this->c_images; ++n) {
    CSize const size = this->RandomSize();
    auto const image = RandomImage<TypeParam>(this->random, size);
    auto const d = this->RandomDirection(size);
    auto const left = [](int64 extent, long step) {
      return std::max<int64>(0, extent - std::abs(step));
    };
    ASSERT_EQ(
        test::Total(CountWithLibrary(image, d)),
        static_cast<std::uint64_t>(left(size.x, d.x) * left(size.y, d.y) * left(size.z, d.z)));
  }
}

// Two slabs that share a halo as wide as the displacement hold each pair once, but for the pairs
// that lie within the halo alone, of which there are none: those have a displacement of its width.
TYPED_TEST(CooccurrenceProperty, SlabsWithAHaloAddUp) {
  for (int n = 0; n < this->c_images; ++n) {
    CSize const size(this->random.Between(2, 60), this->random.Between(4, 16),
                     this->random.Between(6, 12));
    auto const image = RandomImage<TypeParam>(this->random, size);
    CTriple<long> direction(this->random.Between(-3L, 3L), this->random.Between(-3L, 3L),
                            this->random.Between(-3L, 3L));
    int64 const halo = std::abs(direction.z);
    int64 const cut = this->random.Between(int64{1}, size.z - halo - 1);
    auto const lower =
        Box<TypeParam>(image, CPos(0, 0, 0), CPos(size.x - 1, size.y - 1, cut + halo - 1));
    auto const upper =
        Box<TypeParam>(image, CPos(0, 0, cut), CPos(size.x - 1, size.y - 1, size.z - 1));
    ASSERT_EQ(CountWithLibrary(image, direction),
              Sum(CountWithLibrary(lower, direction), CountWithLibrary(upper, direction)))
        << testing::PrintToString(direction) << " cut at " << cut;
  }
}

// A crop keeps the pairs that lie in it: those of the whole image less those with a voxel in the
// rows cut off.
TYPED_TEST(CooccurrenceProperty, CropTakesAwayJustThePairsItCuts) {
  for (int n = 0; n < this->c_images; ++n) {
    CSize const size(this->random.Between(3, 60), this->random.Between(5, 20));
    auto const image = RandomImage<TypeParam>(this->random, size);
    CTriple<long> const down(0, 1, 0);
    auto const crop = Box<TypeParam>(image, CPos(0, 1), CPos(size.x - 1, size.y - 1));
    auto const firstTwoRows = Box<TypeParam>(image, CPos(0, 0), CPos(size.x - 1, 1));
    ASSERT_EQ(CountWithLibrary(crop, down),
              Difference(CountWithLibrary(image, down), CountWithLibrary(firstTwoRows, down)));
  }
}

// A displacement that never leaves a row does not see how the rows are stacked.
TYPED_TEST(CooccurrenceProperty, RowsMayBeStackedAnyWay) {
  for (int n = 0; n < this->c_images; ++n) {
    auto const flat = RandomImage<TypeParam>(this->random, CSize(33, 24));
    auto const stacked =
        test::MakeImage(PixelType<TypeParam>(), CSize(33, 4, 6), test::Pixels<TypeParam>(flat));
    long const dx = this->random.Between(-8L, 8L);
    ASSERT_EQ(CountWithLibrary(flat, {dx, 0, 0}), CountWithLibrary(stacked, {dx, 0, 0}));
  }
}

TEST(CooccurrenceProperty, EverySmallImageAndDirection) {
  test::CRandomNumbers random;
  for (int64 z = 1; z <= 2; ++z)
    for (int64 y = 1; y <= 3; ++y)
      for (int64 x = 1; x <= 3; ++x) {
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(x * y * z));
        for (auto& pixel : pixels) pixel = static_cast<std::uint8_t>(random.Between(0, 3));
        auto const image = test::MakeGrey8(CSize(x, y, z), pixels);
        for (long dz = -z; dz <= z; ++dz)
          for (long dy = -y; dy <= y; ++dy)
            for (long dx = -x; dx <= x; ++dx)
              ASSERT_EQ(CountWithLibrary(image, {dx, dy, dz}),
                        CountByHand<std::uint8_t>(image, {dx, dy, dz}))
                  << x << 'x' << y << 'x' << z << ' ' << dx << ' ' << dy << ' ' << dz;
      }
}
