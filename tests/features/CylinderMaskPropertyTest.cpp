// Masking against the plain test of every voxel, over all pixel types, axes and odd parameters.

#include <SeluUtils/CylinderMask.h>

#include "support/Images.h"
#include "support/Printers.h"
#include "support/Random.h"

#include <pxlib2image/HeaderTools.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

using namespace ORVA;

namespace {

struct StCylinder {
  char axis;
  double s, t, radius;

  [[nodiscard]] bool IsInside(int64 x, int64 y, int64 z) const {
    auto const u = static_cast<double>(axis == 'X' ? y : x);
    auto const v = static_cast<double>(axis == 'X' || axis == 'Y' ? z : y);
    return radius * radius > (u - s) * (u - s) + (v - t) * (v - t);
  }
};

// Mostly around the image, sometimes on its voxels, sometimes anything a double can be.
double Parameter(test::CRandomNumbers& random) {
  constexpr std::array<double, 14> odd = {std::numeric_limits<double>::quiet_NaN(),
                                          std::numeric_limits<double>::infinity(),
                                          -std::numeric_limits<double>::infinity(),
                                          1e300,
                                          -1e300,
                                          1e154,
                                          1e18,
                                          -1e18,
                                          4503599627370496.5,
                                          9007199254740993.0,
                                          std::numeric_limits<double>::denorm_min(),
                                          -0.0,
                                          -5,
                                          std::numeric_limits<double>::max()};
  switch (random.Between(0, 3)) {
  case 0:
    return odd[random.Between<std::size_t>(0, odd.size() - 1)];
  case 1:
    return static_cast<double>(random.Between(-3, 15));
  case 2:
    return static_cast<double>(random.Between(-6, 30)) / 2;
  default:
    return random.Real(-5, 17);
  }
}

StCylinder RandomCylinder(test::CRandomNumbers& random) {
  StCylinder const cylinder = {"XYZ?"[random.Between(0, 3)], Parameter(random), Parameter(random),
                               Parameter(random)};
  // A whole third of the cylinders has a circle through lattice points: 3, 4, 5.
  if (random.Between(0, 2) != 0) return cylinder;
  return {cylinder.axis, static_cast<double>(random.Between(0, 9)),
          static_cast<double>(random.Between(0, 9)), random.Between(0, 1) == 0 ? 5.0 : -5.0};
}

template <class Voxel>
void ExpectLikePlainTest(test::CRandomNumbers& random, IImage::CType type) {
  CSize const size(random.Between(1, 12), random.Between(1, 12), random.Between(1, 12));
  StCylinder const cylinder = RandomCylinder(random);
  std::vector<Voxel> pixels(static_cast<std::size_t>(size.x * size.y * size.z));
  for (Voxel& pixel : pixels) pixel = static_cast<Voxel>(random.Between(0, 200));
  CImage image = test::MakeImage(type, size, pixels);
  CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(image, std::string(1, cylinder.axis), cylinder.s, cylinder.t,
                             cylinder.radius);
  mask.MaskImageWithMetaInfoCylinder(image, 201);

  std::size_t k = 0;
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x, ++k)
        if (!cylinder.IsInside(x, y, z)) pixels[k] = Voxel{201};
  EXPECT_EQ(test::Pixels<Voxel>(image), pixels)
      << "axis " << cylinder.axis << ", s = " << cylinder.s << ", t = " << cylinder.t
      << ", radius = " << cylinder.radius << ", " << testing::PrintToString(size);
}

// A slice of any pattern, masking included the rows where runs meet.
void ExpectLikeSlice(test::CRandomNumbers& random) {
  CSize const size(random.Between(1, 6), random.Between(1, 6), random.Between(1, 6));
  char const axis = "XYZ"[random.Between(0, 2)];
  CSize const extents(axis == 'X' ? size.y : size.x, axis == 'Z' ? size.y : size.z);
  std::vector<std::uint8_t> pattern(static_cast<std::size_t>(extents.x * extents.y));
  for (auto& pixel : pattern) pixel = static_cast<std::uint8_t>(random.Between(0, 1));
  CImage image(IMAGE_GREY_8, size);
  CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(image, std::string(1, axis), 0, 0, 0);
  CSeluHeaderTools::SetMetaInfo(image, "cylinderMaskSlice",
                                CValuePointer::Own(test::MakeImage(IMAGE_BOOL, extents, pattern)));
  mask.MaskImageWithMetaInfoCylinder(image, 1);
  std::vector<std::uint8_t> expected;
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        int64 const u = axis == 'X' ? y : x, v = axis == 'Z' ? y : z;
        expected.push_back(pattern[static_cast<std::size_t>(v * extents.x + u)] == 0);
      }
  EXPECT_EQ(test::Pixels<std::uint8_t>(image), expected)
      << "axis " << axis << ", " << testing::PrintToString(size);
}

} // namespace

// Circles so small that they hold one column, or none: the nearest one decides.
TEST(CylinderMaskProperty, SmallCirclesHoldTheNearestColumn) {
  CSize const size(5, 3, 1);
  for (int s = -20; s <= 100; ++s)
    for (double const radius : {0.05, 0.26, 0.49, 0.51, 0.74, 1.01}) {
      StCylinder const cylinder = {'Z', s / 20.0, 1, radius};
      CImage image(IMAGE_GREY_8, size);
      CCylinderMask mask("mask", nullptr);
      mask.SetCylinderParameters(image, "Z", cylinder.s, cylinder.t, cylinder.radius);
      mask.MaskImageWithMetaInfoCylinder(image, 1);
      auto const pixels = image.CreateAccess(false).As<std::uint8_t const>();
      for (int64 y = 0; y < size.y; ++y)
        for (int64 x = 0; x < size.x; ++x)
          ASSERT_EQ(pixels(x, y), cylinder.IsInside(x, y, 0) ? 0 : 1)
              << "s = " << cylinder.s << ", radius = " << radius << " at " << x << ", " << y;
    }
}

TEST(CylinderMaskProperty, EveryVoxelIsAsThePlainTestSays) {
  test::CRandomNumbers random;
  for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
    ExpectLikePlainTest<std::uint8_t>(random, IMAGE_GREY_8);
    ExpectLikePlainTest<std::uint8_t>(random, IMAGE_BINARY_FG);
    ExpectLikePlainTest<std::uint16_t>(random, IMAGE_GREY_16);
    ExpectLikePlainTest<std::uint32_t>(random, IMAGE_GREY_32);
    ExpectLikePlainTest<float>(random, IMAGE_GREY_F);
  }
}

TEST(CylinderMaskProperty, AnySliceMasksWhatItLeavesOut) {
  test::CRandomNumbers random;
  for (int round = 0; round < 3000 && !testing::Test::HasFailure(); ++round)
    ExpectLikeSlice(random);
}
