#include "objects/BoxTextures.h"

#include "base/Memory.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "objects/RegionSlabs.h"
#include "texture/LevelSource.h"
#include "texture/LevelTexture.h"
#include "texture/Texture.h"

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/CooccurrenceSum.h>
#include <pxlib2image/ImageView.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace selu {
namespace {

using ORVA::CCooccurrence;
using ORVA::CCooccurrenceSum;
using ORVA::CImageView;
using ORVA::CPos;
using ORVA::CSize;
using ORVA::int64;

constexpr std::size_t c_width = CCooccurrence::m_cFeatureNames.size();

CSize BoxSize(StRegion const& region, int dimension) {
  auto const extent = [&](std::size_t axis) { return region.high[axis] - region.low[axis] + 1; };
  return dimension == 2 ? CSize(extent(0), extent(1)) : CSize(extent(0), extent(1), extent(2));
}

// The gray levels of a slab: the pixels themselves or, with a range, a copy.
class CSlabGray {
public:
  CSlabGray(CRawImage const& pixels, std::optional<StRange> const& range,
            std::filesystem::path const& path) {
    if (range)
      m_Levels = std::make_unique<ORVA::CImage>(ToGray(pixels, range, path));
    else
      m_Levels = ValuesOf(pixels, path);
    auto const access = m_Levels->CreateAccess(false);
    m_View =
        CImageView(m_Levels->Type(), m_Levels->Size(), static_cast<void const*>(access.Base()));
  }
  [[nodiscard]] CImageView Box(CPos const& low, CPos const& high) const {
    return m_View.Box(low, high);
  }

private:
  std::unique_ptr<ORVA::IImage> m_Levels;
  CImageView m_View;
};

// The features of the directions that have pairs, and their mean.
class CFeatureMean {
public:
  explicit CFeatureMean(std::span<double> out) : m_Out(out) { std::ranges::fill(m_Out, 0.0); }
  void Add(CCooccurrence::CFeatures const& features) {
    for (std::size_t f = 0; f < m_Out.size(); ++f) m_Out[f] += features[f];
    ++m_Count;
  }
  void Finish() {
    for (double& value : m_Out) value = m_Count > 0 ? value / m_Count : NAN;
  }

private:
  std::span<double> m_Out;
  int m_Count = 0;
};

class CBoxMeter {
public:
  CBoxMeter(CVolumeSource& intensity, std::span<StRegion const> regions,
            StBoxTextures const& wanted)
      : m_Intensity(intensity), m_Regions(regions), m_Wanted(wanted),
        m_Dimension(intensity.Size().Dim()), m_Values(regions.size() * c_width, NAN) {
    for (Direction const& d : wanted.directions) m_Displacements.emplace_back(d.x, d.y, d.z);
    FindSlabs();
  }

  std::vector<double> Measure() && {
    CProgressBar bar("measuring texture", static_cast<int64>(m_Regions.size()));
    std::span<std::size_t const> later(m_Large);
    auto group = TakeGroup(later);
    MeasureAllHere(group, bar);
    Evaluate(group, bar);
    while (!later.empty()) {
      group = TakeGroup(later);
      for (StSlab const& slab : m_Slabs) CountGroupIn(slab, group);
      Evaluate(group, bar);
    }
    return std::move(m_Values);
  }

private:
  // The matrices of a box that no slab holds, for each displacement.
  struct StLarge {
    std::size_t index; // of the region
    std::vector<CCooccurrenceSum> sums;
  };

  void FindSlabs() {
    auto const size = m_Intensity.Size();
    double const copied = m_Wanted.range ? m_Intensity.BytesPerSlice() /
                                               static_cast<double>(PixelBytes(m_Intensity.Pixel()))
                                         : 0;
    m_Slabs = SlabsOfRegions(m_Regions, size, m_Intensity.BytesPerSlice() + copied,
                             HaloOf(m_Displacements, m_Dimension));
    m_Here.resize(m_Slabs.size());
    for (std::size_t index = 0; index < m_Regions.size(); ++index) {
      int64 const low = LowSlice(m_Regions[index], m_Dimension);
      auto const next = std::ranges::upper_bound(m_Slabs, low, {}, &StSlab::first);
      auto const k = static_cast<std::size_t>(next - m_Slabs.begin()) - 1;
      (IsHere(m_Regions[index], m_Slabs[k], m_Dimension) ? m_Here[k] : m_Large).push_back(index);
    }
  }

  // All boxes that a slab holds, and the first group of the others.
  void MeasureAllHere(std::vector<StLarge>& group, CProgressBar& bar) {
    CCollapseMeter collapse(m_Intensity.Pixel(), m_Wanted.range);
    for (std::size_t k = 0; k < m_Slabs.size(); ++k) {
      CRawImage const pixels = m_Intensity.Slab(m_Slabs[k].from, m_Slabs[k].to);
      collapse.Add(pixels);
      CSlabGray const gray(pixels, m_Wanted.range, m_Intensity.Path());
      for (std::size_t const index : m_Here[k]) {
        MeasureHere(m_Slabs[k], gray, index);
        bar.Advance();
      }
      CountGroup(m_Slabs[k], gray, group);
    }
    auto const warning = collapse.Warning(m_Intensity.Path());
    if (!warning.empty()) PrintNote("warning: " + warning);
  }

  void MeasureHere(StSlab const& slab, CSlabGray const& gray, std::size_t index) {
    StRegion const& region = m_Regions[index];
    auto const size = BoxSize(region, m_Dimension);
    auto const [low, high] = BoxIn(slab, region);
    auto const box = gray.Box(low, high);
    CFeatureMean mean(ValuesOfRegion(index));
    for (Direction const& direction : m_Wanted.directions)
      if (PairsOf(size, direction) > 0) mean.Add(m_Cooccurrence.ComputeFeatures(box, direction));
    mean.Finish();
  }

  // The next boxes, as many as are counted at a time.
  [[nodiscard]] std::vector<StLarge> TakeGroup(std::span<std::size_t const>& later) const {
    constexpr double bytesPerMatrix = sizeof(ORVA::uint64) * 256 * 256;
    double const room =
        SlabBytes() / (bytesPerMatrix * static_cast<double>(m_Displacements.size()));
    auto const count = static_cast<std::size_t>(
        std::min(std::max(1.0, std::floor(room)), static_cast<double>(later.size())));
    std::vector<StLarge> group;
    for (std::size_t const index : later.first(count))
      group.push_back({index, std::vector<CCooccurrenceSum>(m_Displacements.size())});
    later = later.subspan(count);
    return group;
  }

  [[nodiscard]] bool Reaches(StRegion const& region, StSlab const& slab) const {
    return LowSlice(region, m_Dimension) < slab.last &&
           HighSlice(region, m_Dimension) >= slab.first;
  }

  // Reads the slab if any of them reaches it.
  void CountGroupIn(StSlab const& slab, std::vector<StLarge>& group) {
    bool const isReached = std::ranges::any_of(
        group, [&](StLarge const& large) { return Reaches(m_Regions[large.index], slab); });
    if (!isReached) return;
    CRawImage const pixels = m_Intensity.Slab(slab.from, slab.to);
    CountGroup(slab, CSlabGray(pixels, m_Wanted.range, m_Intensity.Path()), group);
  }

  // The pairs whose first voxel is in the slab's own slices.
  void CountGroup(StSlab const& slab, CSlabGray const& gray, std::vector<StLarge>& group) const {
    for (auto& [index, sums] : group) {
      if (!Reaches(m_Regions[index], slab)) continue;
      auto const [low, high] = BoxIn(slab, m_Regions[index]);
      auto const box = gray.Box(low, high);
      CSize const size = box.Size();
      int64 const from = slab.from + (m_Dimension == 3 ? low.z : low.y);
      int64 const first = slab.first - from, last = slab.last - from;
      for (std::size_t k = 0; k < sums.size(); ++k)
        sums[k].Count(box, m_Displacements[k],
                      m_Dimension == 3 ? CPos(0, 0, first) : CPos(0, first, 0),
                      m_Dimension == 3 ? CPos(size.x, size.y, last) : CPos(size.x, last, 1));
    }
  }

  void Evaluate(std::vector<StLarge> const& group, CProgressBar& bar) {
    for (auto const& [index, sums] : group) {
      CFeatureMean mean(ValuesOfRegion(index));
      for (CCooccurrenceSum const& sum : sums)
        if (sum.Pairs() > 0) mean.Add(sum.Features());
      mean.Finish();
      bar.Advance();
    }
  }

  struct StBox {
    CPos low, high; // `high` lies outside
  };
  // As much of a bounding box as was read, in the slab's coordinates.
  [[nodiscard]] StBox BoxIn(StSlab const& slab, StRegion const& region) const {
    StBox box{CPos(region.low[0], region.low[1], region.low[2]),
              CPos(region.high[0] + 1, region.high[1] + 1, region.high[2] + 1)};
    int64& low = m_Dimension == 3 ? box.low.z : box.low.y;
    int64& high = m_Dimension == 3 ? box.high.z : box.high.y;
    low = std::max(low, slab.from) - slab.from;
    high = std::min(high, slab.to) - slab.from;
    return box;
  }
  [[nodiscard]] std::span<double> ValuesOfRegion(std::size_t index) {
    return std::span(m_Values).subspan(index * c_width, c_width);
  }

  CVolumeSource& m_Intensity;
  std::span<StRegion const> m_Regions;
  StBoxTextures const& m_Wanted;
  int m_Dimension;
  std::vector<double> m_Values;
  std::vector<ORVA::CTriple<int64>> m_Displacements;
  std::vector<StSlab> m_Slabs;
  std::vector<std::vector<std::size_t>> m_Here; // the regions that each slab holds
  std::vector<std::size_t> m_Large;             // those that none does
  CCooccurrence m_Cooccurrence{"regions", nullptr};
};

} // namespace

std::vector<double> MeasureBoxTextures(CVolumeSource& intensity, std::span<StRegion const> regions,
                                       StBoxTextures const& wanted) {
  RequireRange(intensity, wanted.range);
  return CBoxMeter(intensity, regions, wanted).Measure();
}

} // namespace selu
