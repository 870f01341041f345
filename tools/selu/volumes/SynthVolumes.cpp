#include "volumes/SynthVolumes.h"

#include <pxlib2core/Random.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
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

// Running mean over 2 * radius + 1 values of a line, which ends in a mirror at both borders.
class CLineMean {
public:
  explicit CLineMean(int64 radius) : m_Radius(radius) {}

  void Smooth(float* first, int64 stride, int64 count) {
    m_Line.resize(Index(count));
    for (int64 i = 0; i < count; ++i) m_Line[Index(i)] = first[i * stride];
    double sum = 0;
    for (int64 i = -m_Radius; i <= m_Radius; ++i) sum += At(i, count);
    double const share = 1 / static_cast<double>(2 * m_Radius + 1);
    for (int64 i = 0; i < count; ++i) {
      first[i * stride] = static_cast<float>(sum * share);
      sum += At(i + m_Radius + 1, count) - At(i - m_Radius, count);
    }
  }

private:
  [[nodiscard]] double At(int64 i, int64 count) const {
    int64 const period = 2 * count;
    int64 const k = ((i % period) + period) % period;
    return static_cast<double>(m_Line[Index(k < count ? k : period - 1 - k)]);
  }

  int64 m_Radius;
  std::vector<float> m_Line;
};

// One pass of means along each axis; three passes come near a Gaussian.
void SmoothPass(std::vector<float>& field, CSize const& size, CLineMean& mean,
                IProgressObserver* observer) {
  int64 const slab = size.x * size.y;
  for (int64 z = 0; z < size.z; ++z, Advance(observer))
    for (int64 y = 0; y < size.y; ++y) mean.Smooth(&field[Index(z * slab + y * size.x)], 1, size.x);
  for (int64 z = 0; z < size.z; ++z, Advance(observer))
    for (int64 x = 0; x < size.x; ++x) mean.Smooth(&field[Index(z * slab + x)], size.x, size.y);
  if (size.z > 1)
    for (int64 i = 0; i < slab; ++i) mean.Smooth(&field[Index(i)], slab, size.z);
  for (int64 z = 0; z < size.z; ++z) Advance(observer);
}

struct StMoments {
  double mean, deviation;
};

StMoments MomentsOf(std::vector<float> const& field) {
  double sum = 0, squares = 0;
  for (float const value : field) sum += static_cast<double>(value);
  double const mean = sum / static_cast<double>(field.size());
  for (float const value : field) {
    double const off = static_cast<double>(value) - mean;
    squares += off * off;
  }
  return {mean, std::sqrt(squares / static_cast<double>(field.size()))};
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

void MakeBlobs(CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
               IProgressObserver* observer) {
  CRandom::Obj().Seed(seed);
  int64 const slab = size.x * size.y;
  std::vector<float> field(Index(slab * size.z));
  for (int64 z = 0; z < size.z; ++z, Advance(observer))
    for (int64 i = 0; i < slab; ++i)
      field[Index(z * slab + i)] = static_cast<float>(CRandom::Obj().Rand8());
  CLineMean mean(4);
  for (int pass = 0; pass < 3; ++pass) SmoothPass(field, size, mean, observer);
  auto const [center, deviation] = MomentsOf(field);
  double const scale = deviation > 0 ? 127.5 / (3 * deviation) : 0;
  std::vector<std::uint8_t> slice(Index(slab));
  for (int64 z = 0; z < size.z; ++z, Advance(observer)) {
    for (int64 i = 0; i < slab; ++i) {
      double const value = 128 + (static_cast<double>(field[Index(z * slab + i)]) - center) * scale;
      slice[Index(i)] = static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
    }
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
