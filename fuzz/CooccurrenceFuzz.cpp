// Co-occurrence matrices of small images under any displacement, against a count pair by pair.
#include "Fuzzing.h"

#include <SeluUtils/Cooccurrence.h>
#include <pxlib2image/Image.h>

#include <cmath>
#include <cstring>
#include <map>

using namespace ORVA;
using namespace fuzz;

namespace {

using Direction = CTriple<long>;
using Matrix = std::map<std::pair<int, int>, std::uint32_t>; // the counts other than 0

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

Matrix Counted(StPicture const& picture, Direction const& d) {
  Matrix matrix;
  auto const size = picture.image.Size();
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        Point const q(x + d.x, y + d.y, z + d.z);
        if (StBox{{0, 0, 0}, {size.x - 1, size.y - 1, size.z - 1}}.Has(q))
          ++matrix[{picture.Level({x, y, z}), picture.Level(q)}];
      }
  return matrix;
}

// The counts other than 0 of one slice of an output.
Matrix Counts(CImage const& out, int64 slice) {
  Matrix matrix;
  auto const access = out.CreateAccess(false);
  for (int i = 0; i < 256; ++i)
    for (int j = 0; j < 256; ++j) {
      std::uint32_t count = 0;
      std::memcpy(&count,
                  access.Base() + slice * access.Stride(0) + i * access.Stride(1) +
                      j * access.Stride(2),
                  sizeof count);
      if (count != 0) matrix[{i, j}] = count;
    }
  return matrix;
}

bool Fits(Direction const& d, int dimension) {
  return std::in_range<std::int32_t>(d.x) && std::in_range<std::int32_t>(d.y) &&
         std::in_range<std::int32_t>(d.z) && (dimension == 3 || d.z == 0);
}

Direction TakeDirection(CInput& input) {
  Point const d = input.Flag() ? input.AnyPoint() : input.SmallPoint(14);
  return {d.x, d.y, input.Byte() % 4 == 0 ? 0 : d.z};
}

void CheckFeatures(CCooccurrence& texture, StPicture const& picture, Direction d,
                   Matrix const& matrix) {
  CValueMap features;
  features.SetEntry("kept", CValueLong(1));
  bool const isDone = Done([&] { texture.ComputeFeatures(picture.image, &d, &features); });
  Require(features.HasEntry("kept"), "other entries of the map stay");
  Require(isDone || matrix.empty(), "an image with a pair has features");
  if (!isDone) return Require(features.Size() == 1, "an error sets no feature");
  Require(features.Size() == 14, "there are thirteen features");
  for (char const* const name : CCooccurrence::m_cFeatureNames)
    Require(!matrix.empty() || features.Entry(name).Double() == 0, "no pairs, no texture");
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
  Matrix const matrix = Counted(picture, d);
  Require(Counts(out, 0) == matrix, "every pair is counted once");
  CheckFeatures(texture, picture, d, matrix);
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
  for (int64 slice = 0; slice < count; ++slice)
    Require(Counts(out, slice) ==
                Counted(picture, CCooccurrence::m_cDirections[static_cast<std::size_t>(slice)]),
            "every pair is counted once in its direction");
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
