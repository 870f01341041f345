// Texture of an image does not depend on the layout of its pixels in memory: the given class counts
// the same in every order of the axes and with every axis flipped.

#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Cooccurrence.h>
#include <pxlib2image/ImageView.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using namespace ORVA;

namespace {

using Strides = std::array<int64, 3>;

// The pixels of an image laid out anew, with a view of them that looks like the image.
struct StLayout {
  std::vector<std::byte> memory;
  CImageView view;
};

StLayout LayOut(CImage const& image, std::array<std::size_t, 3> const& axes, unsigned flips,
                int64 gap) {
  auto const access = image.CreateAccess(false);
  auto const& extents = access.Extents();
  auto const bytes = image.Type().Bytes();
  Strides strides{};
  int64 next = bytes + gap, first = 0;
  for (std::size_t const axis : axes) {
    bool const isFlipped = (flips >> axis & 1U) != 0;
    strides[axis] = isFlipped ? -next : next;
    if (isFlipped && extents[axis] > 0) first += next * (extents[axis] - 1);
    next = next * extents[axis] + gap;
  }
  StLayout layout{std::vector<std::byte>(static_cast<std::size_t>(next)), {}};
  for (int64 z = 0; z < extents[2]; ++z)
    for (int64 y = 0; y < extents[1]; ++y)
      for (int64 x = 0; x < extents[0]; ++x)
        std::memcpy(
            layout.memory.data() + (first + x * strides[0] + y * strides[1] + z * strides[2]),
            access.Base() + x * access.Stride(0) + y * access.Stride(1) + z * access.Stride(2),
            static_cast<std::size_t>(bytes));
  layout.view = CImageView(image.Type(), image.Size(),
                           static_cast<void const*>(layout.memory.data() + first), strides);
  return layout;
}

CImage Matrix(IImage const& image, CTriple<long> direction) {
  CImage matrix(IMAGE_GREY_32, CSize(1, 256, 256));
  CCooccurrence("texture", nullptr).ComputeMatrix(matrix, image, &direction);
  return matrix;
}

} // namespace

TEST(Layout, GivenCounterCountsTheSameInEveryOrderOfTheAxes) {
  test::CRandomNumbers random;
  for (IImage::CType const type : {IMAGE_GREY_8, IMAGE_GREY_16, IMAGE_GREY_32}) {
    CImage image(type, CSize(23, 6, 4));
    auto* const pixels = image.CreateAccess(true).WritableBase();
    for (std::size_t k = 0; k < image.Bytes(); ++k)
      pixels[k] = static_cast<std::byte>(random.Between(0, 3) * 80);
    std::array<std::size_t, 3> axes = {0, 1, 2};
    do {
      for (unsigned flips = 0; flips < 8; ++flips) {
        CTriple<long> const direction(random.Between(-2L, 2L), random.Between(-2L, 2L),
                                      random.Between(-2L, 2L));
        auto const layout = LayOut(image, axes, flips, random.Between<int64>(0, 3));
        ASSERT_EQ(Matrix(layout.view, direction), Matrix(image, direction))
            << type.ToString() << ' ' << direction.x << ' ' << direction.y << ' ' << direction.z;
      }
    } while (std::next_permutation(axes.begin(), axes.end()));
  }
}

TEST(Layout, SinglePlanesRowsAndColumnsHaveNoLayoutOfTheirOwn) {
  test::CRandomNumbers random;
  for (CSize const& size : {CSize(9, 1, 1), CSize(1, 9, 1), CSize(1, 1, 9), CSize(1, 5, 4),
                            CSize(5, 1, 4), CSize(1, 1, 1), CSize(0, 3, 3)}) {
    CImage image(IMAGE_GREY_8, size);
    auto* const pixels = image.CreateAccess(true).WritableBase();
    for (std::size_t k = 0; k < image.Bytes(); ++k)
      pixels[k] = static_cast<std::byte>(random.Between(0, 3));
    for (unsigned flips = 0; flips < 8; ++flips)
      for (CTriple<long> const& d :
           {CTriple<long>(1, 0, 0), CTriple<long>(0, -1, 0), CTriple<long>(0, 1, 1)})
        EXPECT_EQ(Matrix(LayOut(image, {2, 1, 0}, flips, 0).view, d), Matrix(image, d));
  }
}
