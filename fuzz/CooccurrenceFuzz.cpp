// Co-occurrence matrices of small images under any displacement, against a count pair by pair.
#include "Fuzzing.h"

#include <SeluUtils/Cooccurrence.h>
#include <pxlib2image/Image.h>

#include <cmath>
#include <cstring>
#include <utility>

using namespace ORVA;
using namespace fuzz;

namespace {

using Direction = CTriple<long>;

struct StPicture {
  CImage image;
  std::vector<std::uint8_t> levels; // the highest byte of each pixel, x fastest

  [[nodiscard]] int Level(Point const& p) const {
    auto const size = image.Size();
    return levels[static_cast<std::size_t>((p.z * size.y + p.y) * size.x + p.x)];
  }
};

StPicture TakePicture(CInput& input) {
  static constexpr std::array<IImage::CType, 3> types = {IMAGE_GREY_8, IMAGE_GREY_16,
                                                         IMAGE_GREY_32};
  auto const type = input.OneOf(types);
  int64 const x = input.Between(0, 12), y = input.Between(0, 12), z = input.Between(0, 8);
  StPicture picture{CImage(type, input.Flag() ? CSize(x, y) : CSize(x, y, z)), {}};
  auto const bytes = static_cast<std::size_t>(type.Bytes());
  picture.levels.resize(picture.image.Bytes() / bytes);
  bool const isNoisy = input.Flag();
  std::uint8_t level = 0;
  for (auto& pixel : picture.levels) pixel = level = isNoisy ? input.Byte() : level;
  auto const access = picture.image.CreateAccess(true);
  for (std::size_t k = 0; k < picture.levels.size(); ++k)
    std::memcpy(access.WritableBase() + k * bytes + bytes - 1, &picture.levels[k], 1);
  return picture;
}

// Counts the pairs into one slice of a matrix image that holds zeros; how many there are.
std::size_t CountPairs(CImage& matrix, int64 slice, StPicture const& picture, Direction const& d) {
  std::size_t pairs = 0;
  auto const access = matrix.CreateAccess(true);
  auto const size = picture.image.Size();
  StBox const box{{0, 0, 0}, {size.x - 1, size.y - 1, size.z - 1}};
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        Point const q(x + d.x, y + d.y, z + d.z);
        if (!box.Has(q)) continue;
        auto* const cell = access.WritableBase() + slice * access.Stride(0) +
                           picture.Level({x, y, z}) * access.Stride(1) +
                           picture.Level(q) * access.Stride(2);
        ++*reinterpret_cast<std::uint32_t*>(cell);
        ++pairs;
      }
  return pairs;
}

bool SamePixels(CImage const& a, CImage const& b) {
  return std::memcmp(a.CreateAccess(false).Base(), b.CreateAccess(false).Base(), a.Bytes()) == 0;
}

bool Fits(Direction const& d, int dimension) {
  return std::in_range<std::int32_t>(d.x) && std::in_range<std::int32_t>(d.y) &&
         std::in_range<std::int32_t>(d.z) && (dimension == 3 || d.z == 0);
}

Direction TakeDirection(CInput& input) {
  Point const d = input.Flag() ? input.AnyPoint() : input.SmallPoint(14);
  return {d.x, d.y, input.Byte() % 4 == 0 ? 0 : d.z};
}

void CheckFeatures(CCooccurrence& texture, StPicture const& picture, Direction d, bool hasPairs) {
  CValueMap features;
  features.SetEntry("kept", CValueLong(1));
  bool const isDone = Done([&] { texture.ComputeFeatures(picture.image, &d, &features); });
  Require(features.HasEntry("kept"), "other entries of the map stay");
  Require(isDone || !hasPairs, "an image with a pair has features");
  if (!isDone) return Require(features.Size() == 1, "an error sets no feature");
  Require(features.Size() == 14, "there are thirteen features");
  for (char const* const name : CCooccurrence::m_cFeatureNames)
    Require(hasPairs || features.Entry(name).Double() == 0, "no pairs, no texture");
  for (char const* const name : {"Contrast", "Entropy", "Second Angular Moment", "Sum Entropy"})
    Require(std::isfinite(features.Entry(name).Double()), "features are finite");
}

void CheckDirection(CCooccurrence& texture, CInput& input) {
  StPicture const picture = TakePicture(input);
  Direction d = TakeDirection(input);
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  bool const isDone = Done([&] { texture.ComputeMatrix(out, picture.image, &d); });
  bool const fits = Fits(d, picture.image.Size().Dim());
  Require(fits || !isDone, "displacements have 32 bits, and those of a 2D image two components");
  if (!fits || picture.image.Bytes() == 0) return;
  Require(isDone, "any displacement is counted");
  CImage expected(IMAGE_GREY_32, CSize(1, 256, 256));
  bool const hasPairs = CountPairs(expected, 0, picture, d) > 0;
  Require(SamePixels(out, expected), "every pair is counted once");
  CheckFeatures(texture, picture, d, hasPairs);
}

void CheckAllDirections(CCooccurrence& texture, CInput& input) {
  StPicture const picture = TakePicture(input);
  auto const dimension = picture.image.Size().Dim();
  auto const count = CCooccurrence::NumberOfDirections(dimension);
  CImage out(IMAGE_GREY_32, CSize(count, 256, 256));
  bool const isDone = Done([&] { texture.ComputeMatrixAllDirections(out, picture.image); });
  if (picture.image.Type() == IMAGE_GREY_32) return Require(!isDone, "32 bits are refused here");
  if (picture.image.Bytes() == 0) return;
  Require(isDone, "all directions are counted");
  CImage expected(IMAGE_GREY_32, CSize(count, 256, 256));
  for (std::size_t slice = 0; slice < static_cast<std::size_t>(count); ++slice)
    CountPairs(expected, static_cast<int64>(slice), picture, CCooccurrence::m_cDirections[slice]);
  Require(SamePixels(out, expected), "every pair is counted once in its direction");
}

void CheckStrangeOutput(CCooccurrence& texture, CInput& input) {
  StPicture const picture = TakePicture(input);
  Direction d = TakeDirection(input);
  static constexpr std::array<int64, 4> extents = {1, 255, 256, 257};
  int64 const x = input.OneOf(extents) % 5, y = input.OneOf(extents), z = input.OneOf(extents);
  CImage out(input.Flag() ? IMAGE_GREY_32 : IMAGE_GREY_16, CSize(x, y, z));
  bool const isRight = out.Type() == IMAGE_GREY_32 && x == 1 && y == 256 && z == 256;
  bool const isDone = Done([&] { texture.ComputeMatrix(out, picture.image, &d); });
  Require(isRight || !isDone, "an output of another shape is refused");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static CCooccurrence texture("texture", nullptr); // a mebibyte
  CInput input(data, size);
  switch (input.Byte() % 8) {
  case 0:
    CheckAllDirections(texture, input);
    break;
  case 1:
    CheckStrangeOutput(texture, input);
    break;
  default:
    CheckDirection(texture, input);
  }
  return 0;
}
