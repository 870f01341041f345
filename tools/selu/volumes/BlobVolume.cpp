#include "base/Memory.h"
#include "images/RawImage.h"
#include "volumes/SynthVolumes.h"

#include <pxlib2core/Random.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace selu {
namespace {

using ORVA::CRandom;
using ORVA::CSize;
using ORVA::int64;
using ORVA::IProgressObserver;

// Means over 9 neighbors along each axis; three passes come near a Gaussian.
constexpr int64 c_radius = 4;
constexpr std::size_t c_passes = 3;
constexpr double c_share = 1 / static_cast<double>(2 * c_radius + 1);

std::size_t Index(int64 value) { return static_cast<std::size_t>(value); }

// Place i of a sequence that ends in a mirror at both borders.
std::size_t Mirrored(int64 i, int64 count) {
  int64 const period = 2 * count;
  int64 const k = ((i % period) + period) % period;
  return Index(k < count ? k : period - 1 - k);
}

// Running mean along a row.
class CRowMean {
public:
  void Smooth(std::span<float> row) {
    m_Row.assign(row.begin(), row.end());
    auto const count = static_cast<int64>(row.size());
    double sum = 0;
    for (int64 i = -c_radius; i <= c_radius; ++i) sum += At(i, count);
    for (int64 i = 0; i < count; ++i) {
      row[Index(i)] = static_cast<float>(sum * c_share);
      sum += At(i + c_radius + 1, count) - At(i - c_radius, count);
    }
  }

private:
  [[nodiscard]] double At(int64 i, int64 count) const {
    return static_cast<double>(m_Row[i >= 0 && i < count ? Index(i) : Mirrored(i, count)]);
  }

  std::vector<float> m_Row;
};

// Running mean across planes that come one after the other, each of so many values. Those are kept
// that the mean still needs. Each value's sum is carried along, so that its bits are those of the
// mean along a line.
class CPlaneMean {
public:
  static constexpr int64 c_mostKept = 2 * c_radius + 2;

  CPlaneMean(int64 values, int64 planes)
      : m_Planes(planes),
        m_Kept(Index(std::min(planes, c_mostKept)), std::vector<float>(Index(values))),
        m_Sums(Index(values)) {}

  /// Before the first plane of another sequence.
  void Restart() {
    m_Next = m_Pulled = 0;
    std::ranges::fill(m_Sums, 0.0);
  }

  /// The mean of the next plane and its neighbors; pull(plane) gives what is to be smoothed.
  template <class Pull>
  void Next(std::span<float> mean, Pull pull) {
    if (m_Next == 0) {
      PullUpTo(c_radius, pull);
      for (int64 i = -c_radius; i <= c_radius; ++i) {
        auto const& plane = At(i);
        for (std::size_t k = 0; k < m_Sums.size(); ++k) m_Sums[k] += static_cast<double>(plane[k]);
      }
    }
    for (std::size_t k = 0; k < m_Sums.size(); ++k)
      mean[k] = static_cast<float>(m_Sums[k] * c_share);
    PullUpTo(m_Next + c_radius + 1, pull);
    auto const &enters = At(m_Next + c_radius + 1), &leaves = At(m_Next - c_radius);
    for (std::size_t k = 0; k < m_Sums.size(); ++k)
      m_Sums[k] += static_cast<double>(enters[k]) - static_cast<double>(leaves[k]);
    ++m_Next;
  }

private:
  template <class Pull>
  void PullUpTo(int64 plane, Pull pull) {
    for (; m_Pulled <= std::min(plane, m_Planes - 1); ++m_Pulled)
      pull(std::span(m_Kept[Index(m_Pulled) % m_Kept.size()]));
  }
  [[nodiscard]] std::vector<float> const& At(int64 plane) const {
    return m_Kept[Mirrored(plane, m_Planes) % m_Kept.size()];
  }

  int64 m_Planes, m_Next = 0, m_Pulled = 0;
  std::vector<std::vector<float>> m_Kept;
  std::vector<double> m_Sums;
};

// Smooth noise, one slice after the other, always the same from its start on.
class CBlobField {
public:
  CBlobField(CSize const& size, ORVA::uint64 seed)
      : m_Size(size), m_Seed(seed), m_AlongY(size.x, size.y) {
    if (size.z > 1) m_AlongZ.assign(c_passes, CPlaneMean(size.x * size.y, size.z));
  }

  void Restart() {
    CRandom::Obj().Seed(m_Seed);
    for (auto& mean : m_AlongZ) mean.Restart();
  }
  void NextSlice(std::span<float> slice) { SmoothedSlice(slice, c_passes); }

private:
  // The next slice after so many passes.
  void SmoothedSlice(std::span<float> slice, std::size_t passes) {
    if (passes == 0) {
      for (float& value : slice) value = static_cast<float>(CRandom::Obj().Rand8());
      return;
    }
    auto const pull = [&](std::span<float> plane) {
      SmoothedSlice(plane, passes - 1);
      SmoothWithin(plane);
    };
    if (m_AlongZ.empty()) return pull(slice);
    m_AlongZ[passes - 1].Next(slice, pull);
  }

  void SmoothWithin(std::span<float> slice) {
    auto const width = Index(m_Size.x);
    auto const row = [&](int64 y) { return slice.subspan(Index(y) * width, width); };
    for (int64 y = 0; y < m_Size.y; ++y) m_AlongX.Smooth(row(y));
    m_AlongY.Restart();
    int64 next = 0; // the rows that are overwritten have been taken before
    auto const pull = [&](std::span<float> plane) {
      std::ranges::copy(row(next++), plane.begin());
    };
    for (int64 y = 0; y < m_Size.y; ++y) m_AlongY.Next(row(y), pull);
  }

  CSize m_Size;
  ORVA::uint64 m_Seed;
  CRowMean m_AlongX;
  CPlaneMean m_AlongY;
  std::vector<CPlaneMean> m_AlongZ; // of each pass
};

// The slices of a field as often as they are asked for: kept where they fit into SlabBytes(), else
// made anew.
class CBlobSlices {
public:
  CBlobSlices(CSize const& size, ORVA::uint64 seed)
      : m_Size(size), m_Field(size, seed), m_Slice(Index(size.x * size.y)) {
    m_IsToBeKept = ImageBytes({size, EnPixel::Float}) <= SlabBytes();
    if (m_IsToBeKept) m_Kept.reserve(m_Slice.size() * Index(size.z));
  }

  template <class Use>
  void ForEach(IProgressObserver* observer, Use use) {
    bool const isKept = m_Kept.size() == m_Slice.size() * Index(m_Size.z);
    if (!isKept) m_Field.Restart();
    for (int64 z = 0; z < m_Size.z; ++z) {
      use(isKept ? std::span(m_Kept).subspan(m_Slice.size() * Index(z), m_Slice.size()) : Make());
      if (observer != nullptr) observer->Advance();
    }
  }

private:
  std::span<float> Make() {
    m_Field.NextSlice(m_Slice);
    if (m_IsToBeKept) m_Kept.insert(m_Kept.end(), m_Slice.begin(), m_Slice.end());
    return m_Slice;
  }

  CSize m_Size;
  CBlobField m_Field;
  std::vector<float> m_Slice, m_Kept;
  bool m_IsToBeKept;
};

} // namespace

double BlobBytes(CSize const& size) {
  double const kept = static_cast<double>(std::min(size.z, CPlaneMean::c_mostKept));
  double const perMean = kept * sizeof(float) + sizeof(double);
  double const perVoxel =
      sizeof(float) + sizeof(std::uint8_t) + (size.z > 1 ? c_passes * perMean : 0);
  return static_cast<double>(size.x) * static_cast<double>(size.y) * perVoxel;
}

void MakeBlobs(CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
               IProgressObserver* observer) {
  CBlobSlices slices(size, seed);
  double const count = static_cast<double>(size.x * size.y * size.z);
  double sum = 0, squares = 0;
  slices.ForEach(observer, [&](std::span<float const> slice) {
    for (float const value : slice) sum += static_cast<double>(value);
  });
  double const center = sum / count;
  slices.ForEach(observer, [&](std::span<float const> slice) {
    for (float const value : slice) {
      double const off = static_cast<double>(value) - center;
      squares += off * off;
    }
  });
  double const deviation = std::sqrt(squares / count);
  double const scale = deviation > 0 ? 127.5 / (3 * deviation) : 0;
  std::vector<std::uint8_t> grays(Index(size.x * size.y));
  slices.ForEach(observer, [&](std::span<float const> slice) {
    std::ranges::transform(slice, grays.begin(), [&](float field) {
      double const value = 128 + (static_cast<double>(field) - center) * scale;
      return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
    });
    take(std::as_bytes(std::span(grays)));
  });
}

} // namespace selu
