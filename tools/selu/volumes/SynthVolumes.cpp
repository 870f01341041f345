#include "volumes/SynthVolumes.h"

#include <pxlib2core/Random.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace selu {
namespace {

using ORVA::CRandom;
using ORVA::CSize;
using ORVA::int64;
using ORVA::IProgressObserver;

void Advance(IProgressObserver* observer) {
  if (observer != nullptr) observer->Advance();
}

std::size_t Index(int64 value) { return static_cast<std::size_t>(value); }

// 0 <= result < 1
double Uniform() { return static_cast<double>(CRandom::Obj().Rand32()) * 0x1p-32; }

// Bell-shaped with mean 0 and deviation 3: the sum of four random bytes.
double BellNoise() {
  std::uint32_t const word = CRandom::Obj().Rand32();
  auto const sum = (word & 255) + (word >> 8 & 255) + (word >> 16 & 255) + (word >> 24);
  return (static_cast<double>(sum) - 510) * (3 / 147.8);
}

// Gray value on each plane x + y + z = s: from layer to layer a smooth step to another value.
std::vector<double> LayerProfile(int64 planes) {
  constexpr int64 thinnest = 8, thickest = 16;
  std::vector<double> profile(Index(planes));
  double from = 128;
  bool bright = CRandom::Obj().Rand8() >= 128;
  for (int64 s = 0; s < planes;) {
    auto const thickness = thinnest + static_cast<int64>(Uniform() * (thickest - thinnest + 1));
    double const to = (bright ? 150 : 30) + 75 * Uniform();
    for (int64 k = 0; k < thickness && s < planes; ++k, ++s) {
      double const t = static_cast<double>(k) / static_cast<double>(thickness);
      profile[Index(s)] = from + (to - from) * t * t * (3 - 2 * t);
    }
    from = to;
    bright = !bright;
  }
  return profile;
}

} // namespace

void MakeNoise(CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
               IProgressObserver* observer) {
  CRandom::Obj().Seed(seed);
  std::vector<std::uint8_t> slice(Index(size.x * size.y));
  for (int64 z = 0; z < size.z; ++z, Advance(observer)) {
    CRandom::Obj().Rand(slice.data(), slice.size());
    take(std::as_bytes(std::span(slice)));
  }
}

void MakeLayers(CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
                IProgressObserver* observer) {
  CRandom::Obj().Seed(seed);
  auto const profile = LayerProfile(size.x + size.y + size.z - 2);
  std::vector<std::uint8_t> slice(Index(size.x * size.y));
  for (int64 z = 0; z < size.z; ++z, Advance(observer)) {
    std::uint8_t* out = slice.data();
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        double const value = profile[Index(x + y + z)] + BellNoise();
        *out++ = static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
      }
    take(std::as_bytes(std::span(slice)));
  }
}

} // namespace selu
