// Random level images and windows for tests of texture maps, and comparisons to the last bit.
#pragma once

#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <SeluUtils/Triple.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <ostream>
#include <vector>

namespace test {

using ORVA::CLevelImage;
using ORVA::CPos;
using ORVA::CSize;
using ORVA::CTextureWindow;
using ORVA::EnTextureFeature;
using ORVA::int64;
using Displacements = std::vector<ORVA::CTriple<int64>>;

/// All features that a moving window has.
inline std::vector<EnTextureFeature> WindowFeatures() {
  std::vector<EnTextureFeature> features;
  for (std::size_t k = 0; k < ORVA::c_nTextureFeatures; ++k) {
    auto const feature = static_cast<EnTextureFeature>(k);
    if (feature != EnTextureFeature::MaximalCorrelation &&
        feature != EnTextureFeature::HaralickMaximalCorrelation)
      features.push_back(feature);
  }
  return features;
}

/// Random levels 1 .. n, or of slow steps from voxel to voxel; a part of the voxels has level 0.
inline CLevelImage RandomLevels(CRandomNumbers& random, CSize size, int n, double outside) {
  std::vector<std::uint16_t> levels(static_cast<std::size_t>(size.x * size.y * size.z));
  bool const isSmooth = random.Between(0, 1) == 1;
  int level = random.Between(1, n);
  for (auto& value : levels) {
    level = isSmooth ? std::clamp(level + random.Between(-1, 1), 1, n) : random.Between(1, n);
    value = random.Real(0, 1) < outside ? std::uint16_t{0} : static_cast<std::uint16_t>(level);
  }
  if (n > 255 || random.Between(0, 1) == 1)
    return CLevelImage(MakeImage(ORVA::IMAGE_GREY_16, size, levels), n);
  return CLevelImage(MakeGrey8(size, std::vector<std::uint8_t>(levels.begin(), levels.end())), n);
}

/// A window with everything about it chosen at random, for images of a dimension.
struct StRandomWindow {
  CSize sides;
  Displacements displacements;
  bool isSymmetric;
  ORVA::EnWindowBorder border;
  CSize steps;

  StRandomWindow(CRandomNumbers& random, int dimension, int64 most = 4)
      : sides(CSize(1, 1, 1)), isSymmetric(random.Between(0, 1) == 1),
        border(random.Between(0, 2) == 0 ? ORVA::EnWindowBorder::Valid
                                         : ORVA::EnWindowBorder::Clipped),
        steps(CSize(1, 1, 1)) {
    auto const side = [&] { return 2 * random.Between(int64{0}, most) + 1; };
    sides = CSize(side(), side(), dimension == 3 ? side() : 1);
    auto const within = [&](int64 s) {
      return random.Between(std::max<int64>(-3, 1 - s), std::min<int64>(3, s - 1));
    };
    for (int k = random.Between(1, 4); k > 0; --k)
      displacements.emplace_back(within(sides.x), within(sides.y), within(sides.z));
    if (random.Between(0, 1) == 0) return;
    auto const step = [&] { return random.Between(int64{1}, int64{12}); };
    steps = CSize(step(), step(), step());
  }

  [[nodiscard]] CTextureWindow Make(std::vector<EnTextureFeature> const& features) const {
    CTextureWindow window("window", nullptr);
    window.SetSides(sides);
    window.SetDisplacements(displacements);
    window.SetSymmetric(isSymmetric);
    window.SetBorder(border);
    window.SetSteps(steps);
    window.SetFeatures(features);
    return window;
  }
};

inline std::ostream& operator<<(std::ostream& out, StRandomWindow const& w) {
  out << w.sides.x << 'x' << w.sides.y << 'x' << w.sides.z << (w.isSymmetric ? " symmetric" : "")
      << (w.border == ORVA::EnWindowBorder::Valid ? " valid" : " clipped") << " steps " << w.steps.x
      << ' ' << w.steps.y << ' ' << w.steps.z;
  for (auto const& d : w.displacements) out << " (" << d.x << ", " << d.y << ", " << d.z << ')';
  return out;
}

/// The rows or slices of a map.
inline int64 Rows(CSize const& map) {
  return map.Dim() == 3 ? map.z : map.Dim() == 2 ? map.y : map.x;
}
inline std::size_t Pixels(CSize const& map) {
  return static_cast<std::size_t>(map.x * map.y * map.z);
}

/// All maps of an image, one after the other.
inline std::vector<double> AllMaps(CTextureWindow const& window, CLevelImage const& levels) {
  CSize const size = window.MapSize(levels.Size());
  std::vector<double> values(Pixels(size) * window.Features().size(), -1.0);
  window.Compute(levels, {0, Rows(size)}, values);
  return values;
}

/// The maps' values at one pixel.
inline std::vector<double> ValuesAt(std::vector<double> const& maps, CSize const& size,
                                    CPos const& p) {
  std::vector<double> values;
  for (auto at = static_cast<std::size_t>((p.z * size.y + p.y) * size.x + p.x); at < maps.size();
       at += Pixels(size))
    values.push_back(maps[at]);
  return values;
}

/// Values as bits, so that NaN equals itself.
inline std::vector<std::uint64_t> Bits(std::vector<double> const& values) {
  std::vector<std::uint64_t> bits;
  for (double const value : values)
    bits.push_back(value != value ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(value));
  return bits;
}

} // namespace test
