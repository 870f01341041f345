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

int64 VoxelsOf(ORVA::CSize const& size) { return size.x * size.y * size.z; }

// The slab's own slices (where the image is flat, rows), shared out among the threads.
class CParts {
public:
  CParts(ORVA::CSize const& size, StSlab const& slab, int threads)
      : m_Size(size), m_Slab(slab), m_IsFlat(size.Dim() == 2) {
    int64 const useful = VoxelsOf(WithSlices(size, Extent())) / c_partVoxels + 1;
    m_Count = std::min({int64{threads}, useful, Extent()});
  }
  [[nodiscard]] int64 Count() const noexcept { return m_Count; }
  // In the slab, as it is read.
  [[nodiscard]] CPos Low(int64 part) const {
    return m_IsFlat ? CPos(0, Begin(part), 0) : CPos(0, 0, Begin(part));
  }
  [[nodiscard]] CPos High(int64 part) const {
    return m_IsFlat ? CPos(m_Size.x, Begin(part + 1), 1)
                    : CPos(m_Size.x, m_Size.y, Begin(part + 1));
  }

private:
  [[nodiscard]] int64 Extent() const noexcept { return m_Slab.last - m_Slab.first; }
  [[nodiscard]] int64 Begin(int64 part) const noexcept {
    return m_Slab.first - m_Slab.from + Extent() / m_Count * part +
           std::min(part, Extent() % m_Count);
  }

  ORVA::CSize m_Size;
  StSlab m_Slab;
  bool m_IsFlat;
  int64 m_Count = 1;
};

void CountPairs(CPairCounter& all, CLevelImage const& levels, CParts const& parts,
                ORVA::CTriple<int64> const& displacement, int threads) {
  if (parts.Count() == 1) return all.Count(levels, displacement, parts.Low(0), parts.High(0));
  std::mutex mutex;
  ForEachPart(threads, parts.Count(), [&](int64 part) {
    CPairCounter some(levels.Levels());
    some.Count(levels, displacement, parts.Low(part), parts.High(part));
    std::scoped_lock const lock(mutex);
    all += some;
  });
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

// Keeps all matrices, each under its direction's name or, where there is but one of all, under
// none.
void KeepMatrices(StTexture& texture, std::vector<CPairCounter> const& matrices,
                  std::span<ORVA::CTriple<int64> const> displacements) {
  int64 const n = matrices.front().Levels();
  texture.matrices =
      ORVA::CImage(ORVA::IMAGE_GREY_32, ORVA::CSize(static_cast<int64>(matrices.size()), n, n));
  for (std::size_t k = 0; k < matrices.size(); ++k) {
    KeepMatrix(texture.matrices, static_cast<int64>(k), matrices[k]);
    texture.matrixNames.push_back(matrices.size() < displacements.size()
                                      ? ""
                                      : DirectionText({static_cast<long>(displacements[k].x),
                                                       static_cast<long>(displacements[k].y),
                                                       static_cast<long>(displacements[k].z)},
                                                      texture.size.Dim()));
  }
}

void NameFeatures(StTexture& texture, StCounting const& counting) {
  for (auto const feature : counting.features)
    texture.featureNames.emplace_back(ORVA::FeatureName(feature));
}

std::vector<ORVA::CTriple<int64>> DisplacementsOf(StCounting const& counting) {
  std::vector<ORVA::CTriple<int64>> displacements;
  for (auto const& direction : counting.directions)
    displacements.push_back({direction.x, direction.y, direction.z});
  return displacements;
}

// The matrix of each direction, in one pass over the slabs.
std::vector<CPairCounter> CountMatrices(CLevelSource& source, StCounting const& counting,
                                        std::span<ORVA::CTriple<int64> const> displacements) {
  auto const slabs = source.Slabs(HaloOf(displacements, source.Size().Dim()));
  std::vector<CPairCounter> matrices(displacements.size(), CPairCounter(source.Count()));
  CProgressBar bar("counting pairs", static_cast<int64>(slabs.size() * displacements.size()));
  for (StSlab const& slab : slabs) {
    auto const levels = source.Levels(slab);
    CParts const parts(source.Size(), slab, counting.threads);
    for (std::size_t k = 0; k < displacements.size(); ++k) {
      CountPairs(matrices[k], levels, parts, displacements[k], counting.threads);
      bar.Advance();
    }
  }
  source.RequireVoxels();
  if (counting.isSymmetric)
    for (CPairCounter& pairs : matrices) pairs.Symmetrize();
  return matrices;
}

// Those of the directions that an aggregation takes, in the slices or in space; one sum of all
// where it adds them.
void KeepAggregated(StTexture& texture, CLevelSource& source, StCounting const& counting,
                    ORVA::CAggregatedTexture const& aggregated) {
  std::vector<ORVA::CTriple<int64>> displacements;
  for (auto const& d : aggregated.Displacements())
    if (PairsOf(source.Size(),
                {static_cast<long>(d.x), static_cast<long>(d.y), static_cast<long>(d.z)}) > 0)
      displacements.push_back(d);
  if (displacements.empty()) throw CAppError("the image has no two voxels that are neighbors");
  auto matrices = CountMatrices(source, counting, displacements);
  auto const way = aggregated.Way();
  bool const isCombined = way == ORVA::EnAggregation::Combine2D ||
                          way == ORVA::EnAggregation::Combine25D ||
                          way == ORVA::EnAggregation::Combine3D;
  for (std::size_t k = 1; isCombined && k < matrices.size(); ++k) matrices[0] += matrices[k];
  if (isCombined) matrices.resize(1, matrices[0]);
  KeepMatrices(texture, matrices, displacements);
}

} // namespace

StHalo HaloOf(std::span<ORVA::CTriple<int64> const> displacements, int dimension) {
  StHalo halo;
  for (auto const& d : displacements) {
    int64 const along = dimension == 3 ? d.z : d.y;
    halo.above = std::max(halo.above, along);
    halo.below = std::max(halo.below, -along);
  }
  return halo;
}

void CountDirections(StTexture& texture, CLevelSource& source, StCounting const& counting) {
  auto const displacements = DisplacementsOf(counting);
  auto const matrices = CountMatrices(source, counting, displacements);
  ORVA::CTextureFeatures features(counting.features);
  NameFeatures(texture, counting);
  texture.edges = source.Edges();
  if (counting.keepsMatrices) KeepMatrices(texture, matrices, displacements);
  for (std::size_t k = 0; k < matrices.size(); ++k) {
    auto const values = features.Of(matrices[k]);
    texture.directions.push_back({counting.directions[k],
                                  static_cast<int64>(matrices[k].Pairs()),
                                  {values.begin(), values.end()}});
  }
}

void Aggregate(StTexture& texture, CLevelSource& source, StCounting const& counting,
               ORVA::EnAggregation way) {
  ORVA::CAggregatedTexture const empty(way, source.Count(),
                                       ORVA::CTextureFeatures(counting.features),
                                       {counting.isSymmetric, DisplacementsOf(counting)});
  auto const size = source.Size();
  // A flat image is one slice, and as such counted as a whole.
  auto const slabs = size.Dim() == 3 ? source.Slabs(HaloOf(empty.Displacements(), 3))
                                     : std::vector<StSlab>{{0, size.y, 0, size.y}};
  CProgressBar bar("counting pairs", size.z);
  auto all = empty;
  for (StSlab const& slab : slabs) {
    auto const levels = source.Levels(slab);
    int64 const first = slab.first - slab.from,
                slices = size.Dim() == 3 ? slab.last - slab.first : 1;
    int64 const useful = VoxelsOf(levels.Size()) / c_partVoxels + 1;
    int64 const parts = std::min({int64{counting.threads}, useful, slices});
    std::mutex mutex;
    ForEachPart(counting.threads, parts, [&](int64 part) {
      auto some = empty;
      for (int64 z = slices * part / parts; z < slices * (part + 1) / parts; ++z) {
        some.Count(levels, first + z, first + z + 1, slab.from);
        bar.Advance();
      }
      std::scoped_lock const lock(mutex);
      all += some;
    });
  }
  source.RequireVoxels();
  NameFeatures(texture, counting);
  texture.edges = source.Edges();
  texture.aggregation = ORVA::AggregationName(way);
  texture.aggregated = all.Values();
  if (counting.keepsMatrices) KeepAggregated(texture, source, counting, all);
}

} // namespace selu
