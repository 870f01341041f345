// Matrices of any number of levels in any form and layout, against a count pair by pair; and their
// features, which must be the same bits in either form.
#include "Fuzzing.h"

#include <SeluUtils/Texture/PairCounter.h>
#include <pxlib2image/ImageView.h>

#include <bit>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

using namespace ORVA;
using namespace fuzz;

namespace {

using Cells = std::map<std::pair<int, int>, uint64>;

struct StPicture {
  std::array<int64, 3> extents{}, strides{}; // in pixels
  int64 first = 0;
  std::vector<std::uint16_t> pixels;

  [[nodiscard]] int At(int64 x, int64 y, int64 z) const {
    return pixels[static_cast<std::size_t>(first + x * strides[0] + y * strides[1] +
                                           z * strides[2])];
  }
};

StPicture TakePicture(CInput& input, int levels) {
  StPicture picture;
  picture.extents = {input.Between(0, 20), input.Between(0, 6), input.Between(0, 4)};
  static constexpr std::array<std::array<std::size_t, 3>, 6> orders = {
      {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}};
  int64 next = 1 + input.Between(0, 1);
  for (std::size_t const axis : input.OneOf(orders)) {
    bool const isFlipped = input.Flag();
    picture.strides[axis] = isFlipped ? -next : next;
    if (isFlipped) picture.first += next * std::max(int64{0}, picture.extents[axis] - 1);
    next *= std::max(int64{1}, picture.extents[axis]);
  }
  picture.pixels.resize(static_cast<std::size_t>(next) + 1);
  bool const isNoisy = input.Flag();
  int level = 0;
  for (auto& pixel : picture.pixels) {
    if (isNoisy || input.Byte() < 40) level = static_cast<int>(input.Between(0, levels));
    pixel = static_cast<std::uint16_t>(level);
  }
  return picture;
}

Cells Count(StPicture const& picture, Point const& d, Point const& low, Point const& high) {
  Cells cells;
  auto const [nx, ny, nz] = picture.extents;
  for (int64 z = 0; z < nz; ++z)
    for (int64 y = 0; y < ny; ++y)
      for (int64 x = 0; x < nx; ++x) {
        if (x < low.x || y < low.y || z < low.z || x >= high.x || y >= high.y || z >= high.z)
          continue;
        int64 u = 0, v = 0, w = 0;
        if (__builtin_add_overflow(x, d.x, &u) || __builtin_add_overflow(y, d.y, &v) ||
            __builtin_add_overflow(z, d.z, &w))
          continue;
        if (u < 0 || v < 0 || w < 0 || u >= nx || v >= ny || w >= nz) continue;
        int const i = picture.At(x, y, z), j = picture.At(u, v, w);
        if (i != 0 && j != 0) ++cells[{i, j}];
      }
  return cells;
}

void CheckFeatures(CPairCounter const& dense, CPairCounter const& sparse) {
  CTextureFeatures features;
  auto const first = features.Of(dense);
  std::vector<double> const expected(first.begin(), first.end());
  auto const values = features.Of(sparse);
  for (std::size_t k = 0; k < values.size(); ++k) {
    Require(std::bit_cast<uint64>(values[k]) == std::bit_cast<uint64>(expected[k]) ||
                (std::isnan(values[k]) && std::isnan(expected[k])),
            "features do not depend on the form");
    Require(std::isnan(values[k]) == (dense.Pairs() == 0), "NaN where there are no pairs only");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  static constexpr std::array<int, 5> levelNumbers = {1, 3, 20, 64, 100};
  int const levels = input.OneOf(levelNumbers);
  bool const isFar = input.Flag();
  Point const d = isFar ? input.AnyPoint() : input.SmallPoint(4);
  Point const low = input.Flag() ? input.AnyPoint() : input.SmallPoint(5), high = input.AnyPoint();
  auto const picture = TakePicture(input, levels);
  auto const [nx, ny, nz] = picture.extents;
  CImageView const view(IMAGE_GREY_16, CSize(nx, ny, nz),
                        static_cast<void const*>(picture.pixels.data() + picture.first),
                        {2 * picture.strides[0], 2 * picture.strides[1], 2 * picture.strides[2]});
  CLevelImage const image(view, levels);
  CPairCounter dense(levels, CPairCounter::EnForm::Dense),
      sparse(levels, CPairCounter::EnForm::Sparse);
  for (auto* const pairs : {&dense, &sparse})
    pairs->Count(image, d, CPos(low.x, low.y, low.z), CPos(high.x, high.y, high.z));
  Cells const expected = Count(picture, d, low, high);
  Cells counted;
  uint64 total = 0;
  for (auto const& cell : dense.Cells()) {
    counted[{cell.i, cell.j}] = cell.count;
    total += cell.count;
  }
  Require(counted == expected, "every pair counts once");
  Require(dense.Pairs() == total, "the sum of the counts");
  Require(dense == sparse, "either form has the same counts");
  dense.Symmetrize();
  sparse.Symmetrize();
  Require(dense == sparse && dense.Pairs() == 2 * total, "symmetric in either form");
  CheckFeatures(dense, sparse);
  return 0;
}
