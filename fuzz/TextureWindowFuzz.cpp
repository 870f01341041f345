// Texture maps of small images in any window, against each window counted by itself.
#include "Fuzzing.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <pxlib2image/Image.h>
#include <pxlib2image/ImageView.h>

#include <bit>
#include <cmath>
#include <span>
#include <vector>

using namespace ORVA;
using namespace fuzz;

namespace {

struct StPicture {
  std::vector<std::uint16_t> pixels; // x fastest
  CSize size;
  int levels = 1;

  [[nodiscard]] CLevelImage Levels() const {
    return CLevelImage(CImageView(IMAGE_GREY_16, size, static_cast<void const*>(pixels.data())),
                       levels);
  }
};

StPicture TakePicture(CInput& input) {
  static constexpr std::array<int, 6> levels = {1, 2, 3, 7, 256, 4096};
  StPicture picture;
  picture.levels = input.OneOf(levels);
  int64 const x = input.Between(0, 12), y = input.Between(0, 12), z = input.Between(0, 5);
  picture.size = input.Flag() ? CSize(x, y) : CSize(x, y, z);
  picture.pixels.resize(static_cast<std::size_t>(picture.size.x * picture.size.y * picture.size.z));
  bool const isNoisy = input.Flag();
  unsigned level = 1;
  for (auto& pixel : picture.pixels) {
    if (isNoisy) level = input.Byte() * 16U % (static_cast<unsigned>(picture.levels) + 1);
    pixel = static_cast<std::uint16_t>(level);
  }
  return picture;
}

std::vector<EnTextureFeature> TakeFeatures(CInput& input) {
  std::vector<EnTextureFeature> features(1 + input.Count(5));
  for (auto& feature : features)
    feature = static_cast<EnTextureFeature>(input.Byte() % (c_nTextureFeatures + 1));
  return features;
}

void TakeWindow(CTextureWindow& window, CInput& input) {
  auto const size = [&](int64 most) {
    return input.Byte() % 8 == 0 ? CSize(input.Integer(), input.Integer(), input.Integer())
                                 : CSize(input.Between(1, most), input.Between(1, most),
                                         input.Flag() ? 1 : input.Between(1, most));
  };
  auto sides = size(9);
  if (input.Byte() % 16 != 0) sides = CSize(sides.x | 1, sides.y | 1, sides.z | 1);
  Done([&] { window.SetSides(sides); });
  auto const displacements =
      input.List(4, [&] { return input.Byte() % 8 == 0 ? input.AnyPoint() : input.SmallPoint(2); });
  Done([&] { window.SetDisplacements(displacements); });
  Done([&] { window.SetSteps(size(6)); });
  Done([&] { window.SetFeatures(TakeFeatures(input)); });
  window.SetSymmetric(input.Flag());
  window.SetBorder(input.Flag() ? EnWindowBorder::Valid : EnWindowBorder::Clipped);
}

bool AreSame(double a, double b) {
  return std::bit_cast<uint64>(a) == std::bit_cast<uint64>(b) || (std::isnan(a) && std::isnan(b));
}

struct StMaps {
  CSize size;
  std::vector<double> values;

  [[nodiscard]] std::size_t Pixels() const {
    return static_cast<std::size_t>(size.x * size.y * size.z);
  }
};

void CheckWindow(CTextureWindow const& window, CLevelImage const& levels, StMaps const& maps,
                 CInput& input) {
  if (maps.values.empty()) return;
  CPos const pixel(input.Between(0, maps.size.x - 1), input.Between(0, maps.size.y - 1),
                   input.Between(0, maps.size.z - 1));
  auto const afresh = window.At(levels, window.Center(pixel));
  auto at = static_cast<std::size_t>((pixel.z * maps.size.y + pixel.y) * maps.size.x + pixel.x);
  for (double const value : afresh) {
    Require(AreSame(maps.values[at], value), "a map has the values of its windows by themselves");
    at += maps.Pixels();
  }
}

void CheckBand(CTextureWindow const& window, CLevelImage const& levels, StMaps const& maps,
               CInput& input) {
  bool const isSolid = maps.size.Dim() == 3;
  int64 const rows = isSolid ? maps.size.z : maps.size.y;
  if (rows == 0) return;
  int64 const low = input.Between(0, rows), high = input.Between(low, rows);
  auto const perRow = maps.Pixels() / static_cast<std::size_t>(rows);
  auto const inBand = static_cast<std::size_t>(high - low) * perRow;
  std::vector<double> band(inBand * window.Features().size());
  auto const size = levels.Size();
  auto const part = window.InputRows(size, {low, high});
  auto const box = isSolid ? levels.Box({0, 0, part.low}, {size.x, size.y, part.high})
                           : levels.Box({0, part.low}, {size.x, part.high, size.z});
  window.Compute(box, part.low, size, {low, high}, std::span(band));
  for (std::size_t k = 0; k < band.size(); ++k)
    Require(AreSame(band[k], maps.values[k / inBand * maps.Pixels() +
                                         static_cast<std::size_t>(low) * perRow + k % inBand]),
            "a band of a map is part of the whole");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  CTextureWindow window("window", nullptr);
  TakeWindow(window, input);
  StPicture const picture = TakePicture(input);
  CLevelImage const levels = picture.Levels();
  StMaps maps{window.MapSize(picture.size), {}};
  maps.values.resize(maps.Pixels() * window.Features().size());
  int64 const rows = maps.size.Dim() == 3 ? maps.size.z : maps.size.y;
  if (!Done([&] { window.Compute(levels, {0, rows}, std::span(maps.values)); })) return 0;
  for (int k = 0; k < 4; ++k) CheckWindow(window, levels, maps, input);
  CheckBand(window, levels, maps, input);
  return 0;
}
