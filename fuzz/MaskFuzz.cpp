// Cylinder masks on small images of every type: each voxel is inside and kept, or set.
#include "Fuzzing.h"

#include <SeluUtils/CylinderMask.h>
#include <pxlib2image/HeaderTools.h>
#include <pxlib2image/Image.h>

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

using namespace ORVA;
using namespace fuzz;

namespace {

struct StCylinder {
  std::string axis;
  double s, t, radius;

  [[nodiscard]] bool Has(Point const& p) const {
    char const letter = axis.at(0);
    auto const u = static_cast<double>(letter == 'X' ? p.y : p.x) - s;
    auto const v = static_cast<double>(letter == 'X' || letter == 'Y' ? p.z : p.y) - t;
    return radius * radius > u * u + v * v;
  }
};

StCylinder TakeCylinder(CInput& input) {
  static constexpr std::array<char const*, 8> axes = {"X", "Y", "Z", "", "Xaver", "y", "/", "ZX"};
  StCylinder cylinder{input.OneOf(axes), 0, 0, 0};
  cylinder.s = input.Real();
  cylinder.t = input.Real();
  cylinder.radius = input.Real();
  return cylinder;
}

CImage TakeImage(CInput& input) {
  static constexpr std::array<IImage::CType, 6> types = {
      IMAGE_GREY_8, IMAGE_GREY_16, IMAGE_GREY_32, IMAGE_GREY_F, IMAGE_BINARY_FG, IMAGE_BOOL};
  auto const type = input.OneOf(types);
  int64 const x = input.Between(0, 9), y = input.Between(0, 9), z = input.Between(0, 9);
  CImage image(type, input.Flag() ? CSize(x, y) : CSize(x, y, z));
  auto const access = image.CreateAccess(true);
  if (access.Base() == nullptr) return image;
  std::fill_n(access.WritableBase(), image.Bytes(), std::byte{input.Byte()});
  return image;
}

// What the voxel is as a number, of which a mask's value keeps the low bits.
template <class Voxel>
Voxel At(CImageAccess const& access, Point const& p) {
  Voxel voxel{};
  std::memcpy(&voxel,
              access.Base() + p.x * access.Stride(0) + p.y * access.Stride(1) +
                  p.z * access.Stride(2),
              sizeof voxel);
  return voxel;
}

template <class Voxel>
Voxel Stored(double value) {
  if constexpr (std::is_floating_point_v<Voxel>) {
    return static_cast<Voxel>(value);
  } else {
    if (std::isnan(value)) return 0;
    if (value >= 0x1p63) return static_cast<Voxel>(std::numeric_limits<int64>::max());
    if (value < -0x1p63) return static_cast<Voxel>(std::numeric_limits<int64>::min());
    return static_cast<Voxel>(static_cast<int64>(value));
  }
}

template <class Voxel>
bool Same(Voxel a, Voxel b) {
  return a == b || (a != a && b != b);
}

template <class Voxel>
void CheckVoxels(CImage const& before, CImage const& after, StCylinder const& cylinder,
                 double value) {
  auto const old = before.CreateAccess(false), now = after.CreateAccess(false);
  auto const size = before.Size();
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        Point const p(x, y, z);
        Voxel const expected = cylinder.Has(p) ? At<Voxel>(old, p) : Stored<Voxel>(value);
        Require(Same(At<Voxel>(now, p), expected), "the voxels outside are set, the others kept");
      }
}

void CheckMasked(CImage const& before, CImage const& after, StCylinder const& cylinder,
                 double value) {
  if (before.Type() == IMAGE_GREY_F)
    CheckVoxels<float>(before, after, cylinder, value);
  else if (before.Type() == IMAGE_GREY_32)
    CheckVoxels<std::uint32_t>(before, after, cylinder, value);
  else if (before.Type() == IMAGE_GREY_16)
    CheckVoxels<std::uint16_t>(before, after, cylinder, value);
  else
    CheckVoxels<std::uint8_t>(before, after, cylinder, value);
}

bool SamePixels(CImage const& a, CImage const& b) {
  auto const one = a.CreateAccess(false), other = b.CreateAccess(false);
  return a.Bytes() == b.Bytes() &&
         (a.Bytes() == 0 || std::memcmp(one.Base(), other.Base(), a.Bytes()) == 0);
}

// Whether the mask went through; an empty axis fails with the standard library's error.
bool IsMasked(CCylinderMask& mask, CImage& image, double value, bool hasAxis) {
  try {
    return Done([&] { mask.MaskImageWithMetaInfoCylinder(image, value); });
  } catch (std::out_of_range const&) {
    Require(!hasAxis, "an axis text is read");
    return false;
  }
}

void CheckCylinder(CInput& input) {
  CCylinderMask mask("mask", nullptr);
  CImage image = TakeImage(input);
  CImage const before = image;
  StCylinder const cylinder = TakeCylinder(input);
  double const value = input.Real();
  mask.SetCylinderParameters(image, CString(cylinder.axis), cylinder.s, cylinder.t,
                             cylinder.radius);
  bool const isMasked = IsMasked(mask, image, value, !cylinder.axis.empty());
  bool const isDue = image.Type() != IMAGE_BOOL && image.Bytes() > 0 && !cylinder.axis.empty();
  Require(isMasked == isDue, "every image with voxels and a type that is masked is masked");
  if (!isMasked) return Require(SamePixels(image, before), "an error changes no voxel");
  CheckMasked(before, image, cylinder, value);
  CImage again = before;
  Require(mask.CopyMetaInfo(image, again), "there is meta information to copy");
  mask.MaskImageWithMetaInfoCylinder(again, value);
  Require(SamePixels(again, image), "the same cylinder masks the same voxels");
}

// A slice from anywhere: of another type or size, or none at all.
void CheckStrangeSlice(CInput& input) {
  CCylinderMask mask("mask", nullptr);
  CImage image = TakeImage(input), slice = TakeImage(input);
  CImage const before = image;
  auto const slicePixels = slice;
  StCylinder const cylinder = TakeCylinder(input);
  CValueMap parameters;
  if (input.Flag()) parameters.SetEntry("axis", CValueString(CString(cylinder.axis)));
  CValue const stored = input.Flag() ? CValue(parameters) : CValue(CValueLong(7));
  CSeluHeaderTools::SetMetaInfo(image, "cylinderMaskParameters", stored);
  if (input.Flag())
    CSeluHeaderTools::SetMetaInfo(image, "cylinderMaskSlice", CValuePointer::Own(std::move(slice)));
  if (!IsMasked(mask, image, input.Real(), !cylinder.axis.empty()))
    Require(SamePixels(image, before), "an error changes no voxel");
  else
    Require(slicePixels.Type() == IMAGE_BOOL, "a slice is Boolean");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  input.Byte() % 4 == 0 ? CheckStrangeSlice(input) : CheckCylinder(input);
  return 0;
}
