#include "texture/GrayTexture.h"

#include "base/Output.h"
#include "base/Progress.h"
#include "base/Threads.h"
#include "texture/LevelSource.h"
#include "texture/LevelTexture.h"

#include <SeluUtils/CooccurrenceSum.h>

#include <memory>

namespace selu {
namespace {

using ORVA::CCooccurrenceSum;
using ORVA::CImage;
using ORVA::CPos;
using ORVA::int64;

constexpr int64 c_levels = ORVA::CCooccurrence::m_cGreyLevels;

std::vector<ORVA::CTriple<int64>> DisplacementsOf(std::vector<Direction> const& directions) {
  std::vector<ORVA::CTriple<int64>> displacements;
  for (auto const& d : directions) displacements.push_back({d.x, d.y, d.z});
  return displacements;
}

// The image whose gray levels are counted: the pixels themselves or, with a range, a copy.
std::unique_ptr<ORVA::IImage> GrayOf(CRawImage const& pixels, std::optional<StRange> const& range,
                                     std::filesystem::path const& path) {
  if (!range) return ValuesOf(pixels, path);
  return std::make_unique<CImage>(ToGray(pixels, range, path));
}

// The sums of all directions, each by one thread at a time.
std::vector<CCooccurrenceSum> CountSums(CVolumeSource& image, StGrayCounting const& counting) {
  auto const displacements = DisplacementsOf(counting.directions);
  auto const size = image.Size();
  bool const isFlat = size.Dim() == 2;
  double const copied =
      counting.range ? image.BytesPerSlice() / static_cast<double>(PixelBytes(image.Pixel())) : 0;
  auto const slabs =
      SlabsOf(size, image.BytesPerSlice() + copied, HaloOf(displacements, size.Dim()));
  auto const count = static_cast<int64>(displacements.size());
  std::vector<CCooccurrenceSum> sums(displacements.size());
  CCollapseMeter collapse(image.Pixel(), counting.range);
  CProgressBar bar("counting pairs", count * static_cast<int64>(slabs.size()));
  for (StSlab const& slab : slabs) {
    CRawImage const pixels = image.Slab(slab.from, slab.to);
    collapse.Add(pixels);
    auto const gray = GrayOf(pixels, counting.range, image.Path());
    int64 const first = slab.first - slab.from, last = slab.last - slab.from;
    ForEachPart(counting.threads, count, [&](int64 part) {
      auto const k = static_cast<std::size_t>(part);
      sums[k].Count(*gray, displacements[k], isFlat ? CPos(0, first, 0) : CPos(0, 0, first),
                    isFlat ? CPos(size.x, last, 1) : CPos(size.x, size.y, last));
      bar.Advance();
    });
  }
  auto const warning = collapse.Warning(image.Path());
  if (!warning.empty()) PrintNote("warning: " + warning);
  return sums;
}

} // namespace

void ComputeGray(StTexture& texture, CVolumeSource& image, StGrayCounting const& counting) {
  RequireRange(image, counting.range);
  auto const sums = CountSums(image, counting);
  texture.featureNames.assign(c_featureNames.begin(), c_featureNames.end());
  if (counting.keepsMatrices)
    texture.matrices = CImage(ORVA::IMAGE_GREY_32,
                              ORVA::CSize(static_cast<int64>(sums.size()), c_levels, c_levels));
  for (std::size_t k = 0; k < sums.size(); ++k) {
    auto const values = sums[k].Features();
    texture.directions.push_back({counting.directions[k],
                                  static_cast<int64>(sums[k].Pairs()),
                                  {values.begin(), values.end()}});
    if (!counting.keepsMatrices) continue;
    sums[k].Write(texture.matrices, static_cast<int64>(k));
    texture.matrixNames.push_back(DirectionText(counting.directions[k], image.Size().Dim()));
  }
}

} // namespace selu
