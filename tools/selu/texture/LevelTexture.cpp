#include "texture/LevelTexture.h"

#include "base/Errors.h"
#include "base/Progress.h"
#include "base/Threads.h"

#include <SeluUtils/Texture/PairCounter.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <mutex>

namespace selu {
namespace {

using ORVA::CLevelImage;
using ORVA::CPairCounter;
using ORVA::CPos;
using ORVA::int64;

constexpr int64 c_partVoxels = 1 << 18; // fewer take less time than a thread's start

ORVA::CTriple<int64> Displacement(Direction const& direction) {
  return {direction.x, direction.y, direction.z};
}

int64 VoxelsOf(ORVA::CSize const& size) { return size.x * size.y * size.z; }

// The image in slices or, where it is flat, in rows, shared out among the threads.
class CParts {
public:
  CParts(ORVA::CSize const& size, int threads) : m_Size(size), m_IsFlat(size.z == 1) {
    int64 const useful = VoxelsOf(size) / c_partVoxels + 1;
    m_Count = std::min({int64{threads}, useful, Extent()});
  }
  [[nodiscard]] int64 Count() const noexcept { return m_Count; }
  [[nodiscard]] int64 Begin(int64 part) const noexcept {
    return Extent() / m_Count * part + std::min(part, Extent() % m_Count);
  }
  [[nodiscard]] CPos Low(int64 part) const {
    return m_IsFlat ? CPos(0, Begin(part), 0) : CPos(0, 0, Begin(part));
  }
  [[nodiscard]] CPos High(int64 part) const {
    return m_IsFlat ? CPos(m_Size.x, Begin(part + 1), 1)
                    : CPos(m_Size.x, m_Size.y, Begin(part + 1));
  }

private:
  [[nodiscard]] int64 Extent() const noexcept { return m_IsFlat ? m_Size.y : m_Size.z; }

  ORVA::CSize m_Size;
  bool m_IsFlat;
  int64 m_Count = 1;
};

CPairCounter CountPairs(CLevelImage const& levels, Direction const& direction, int threads) {
  CParts const parts(levels.Size(), threads);
  CPairCounter all(levels.Levels());
  std::mutex mutex;
  ForEachPart(threads, parts.Count(), [&](int64 part) {
    CPairCounter some(levels.Levels());
    some.Count(levels, Displacement(direction), parts.Low(part), parts.High(part));
    std::scoped_lock const lock(mutex);
    all += some;
  });
  return all;
}

// Matrix s of all.
void KeepMatrix(ORVA::CImage& matrices, int64 s, CPairCounter const& pairs) {
  auto const to = matrices.CreateAccess(true);
  pairs.ForEach([&](int i, int j, ORVA::uint64 count) {
    if (count > std::numeric_limits<std::uint32_t>::max())
      throw CAppError("a count of " + std::to_string(count) +
                      " pairs does not fit into the 32 bits of a matrix' pixel");
    auto const pixel = static_cast<std::uint32_t>(count);
    std::memcpy(to.WritableBase() + s * to.Stride(0) + (i - 1) * to.Stride(1) +
                    (j - 1) * to.Stride(2),
                &pixel, sizeof pixel);
  });
}

void NameFeatures(StTexture& texture, StCounting const& counting) {
  for (auto const feature : counting.features)
    texture.featureNames.emplace_back(ORVA::FeatureName(feature));
}

} // namespace

void CountDirections(StTexture& texture, StGrayLevels const& gray, StCounting const& counting) {
  int64 const n = gray.levels.Levels();
  auto const count = static_cast<int64>(counting.directions.size());
  CProgressBar bar("counting pairs", count);
  ORVA::CTextureFeatures features(counting.features);
  NameFeatures(texture, counting);
  texture.edges = gray.edges;
  if (counting.keepsMatrices)
    texture.matrices = ORVA::CImage(ORVA::IMAGE_GREY_32, ORVA::CSize(count, n, n));
  for (Direction const& direction : counting.directions) {
    CPairCounter pairs = CountPairs(gray.levels, direction, counting.threads);
    if (counting.isSymmetric) pairs.Symmetrize();
    if (counting.keepsMatrices)
      KeepMatrix(texture.matrices, static_cast<int64>(texture.directions.size()), pairs);
    auto const values = features.Of(pairs);
    texture.directions.push_back(
        {direction, static_cast<int64>(pairs.Pairs()), {values.begin(), values.end()}});
    bar.Advance();
  }
}

void Aggregate(StTexture& texture, StGrayLevels const& gray, StCounting const& counting,
               ORVA::EnAggregation way) {
  ORVA::StAggregationOptions options{counting.isSymmetric, {}};
  for (auto const& direction : counting.directions)
    options.displacements.push_back(Displacement(direction));
  int64 const slices = gray.levels.Size().z;
  CProgressBar bar("counting pairs", slices);
  ORVA::CAggregatedTexture const empty(way, gray.levels.Levels(),
                                       ORVA::CTextureFeatures(counting.features), options);
  int64 const useful = VoxelsOf(gray.levels.Size()) / c_partVoxels + 1;
  int64 const parts = std::min({int64{counting.threads}, useful, slices});
  auto all = empty;
  std::mutex mutex;
  ForEachPart(counting.threads, parts, [&](int64 part) {
    auto some = empty;
    for (int64 z = slices * part / parts; z < slices * (part + 1) / parts; ++z) {
      some.Count(gray.levels, z, z + 1);
      bar.Advance();
    }
    std::scoped_lock const lock(mutex);
    all += some;
  });
  NameFeatures(texture, counting);
  texture.edges = gray.edges;
  texture.aggregation = ORVA::AggregationName(way);
  texture.aggregated = all.Values();
}

} // namespace selu
