#include "objects/ObjectTextures.h"

#include "base/Progress.h"
#include "base/Threads.h"
#include "objects/RegionSlabs.h"
#include "texture/LevelSource.h"
#include "texture/LevelTexture.h"

#include <SeluUtils/Texture/PairCounter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CPairCounter;
using ORVA::CPos;
using ORVA::int64;

// The labels as they are, if they are integers that the counter takes, and nothing else is asked
// for; else a copy of those that are to be counted here.
class CSlabLabels {
public:
  CSlabLabels(CRawImage const& labels, bool areAllHere) {
    EnPixel const pixel = labels.Pixel();
    bool const isPlain = pixel != EnPixel::Int64 && pixel != EnPixel::UInt64 &&
                         pixel != EnPixel::Float && pixel != EnPixel::Double;
    if (areAllHere && isPlain) m_Image = ValuesOf(labels, {});
  }
  [[nodiscard]] bool IsReady() const noexcept { return m_Image != nullptr; }

  template <class IsWanted>
  void Copy(CRawImage const& labels, IsWanted isWanted) {
    auto copy = std::make_unique<CImage>(ORVA::IMAGE_GREY_32, labels.Size());
    auto const access = copy->CreateAccess(true);
    auto* out = reinterpret_cast<std::uint32_t*>(access.WritableBase());
    std::uint32_t before = 0;
    bool isBeforeWanted = false;
    VisitPixels(labels, [&](auto pixels) {
      for (auto const value : pixels) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): labels were judged, none is negative
        auto const label = static_cast<std::uint32_t>(value);
        if (label != before) isBeforeWanted = label != 0 && isWanted(label);
        before = label;
        *out++ = isBeforeWanted ? label : 0;
      }
    });
    m_Image = std::move(copy);
  }
  [[nodiscard]] ORVA::IImage const& Image() const noexcept { return *m_Image; }

private:
  std::unique_ptr<ORVA::IImage> m_Image;
};

class CTextureMeter {
public:
  CTextureMeter(CVolumeSource& labels, CLevelSource& levels, std::span<StRegion const> regions,
                StObjectTextures const& wanted)
      : m_Labels(labels), m_Levels(levels), m_Regions(regions), m_Wanted(wanted),
        m_Dimension(labels.Size().Dim()), m_Width(wanted.options.features.size()),
        m_Values(regions.size() * m_Width, NAN) {}

  std::vector<double> Measure() && {
    auto const slabs = Slabs();
    CProgressBar bar("measuring texture", static_cast<int64>(m_Regions.size()));
    for (StSlab const& slab : slabs) {
      auto const levels = m_Levels.Levels(slab);
      CRawImage const labels = m_Labels.Slab(slab.from, slab.to);
      MeasureHere(slab, labels, levels, slabs.size() == 1, bar);
      CountLarge(slab, labels, levels, bar);
    }
    m_Levels.RequireVoxels();
    return std::move(m_Values);
  }

private:
  [[nodiscard]] std::vector<StSlab> Slabs() const {
    auto const size = m_Labels.Size();
    constexpr double bytesPerCopiedLabel = 4;
    double const bytes = m_Levels.BytesPerSlice() + m_Labels.BytesPerSlice() +
                         bytesPerCopiedLabel * m_Labels.BytesPerSlice() /
                             static_cast<double>(PixelBytes(m_Labels.Pixel()));
    return SlabsOfRegions(m_Regions, size, bytes,
                          HaloOf(m_Wanted.options.displacements, m_Dimension));
  }

  [[nodiscard]] StRegion const* Find(std::uint32_t label) const {
    auto const found = std::ranges::lower_bound(m_Regions, int64{label}, {}, &StRegion::label);
    return found == m_Regions.end() || found->label != label ? nullptr : &*found;
  }

  void MeasureHere(StSlab const& slab, CRawImage const& raw, ORVA::CLevelImage const& levels,
                   bool areAllHere, CProgressBar& bar) {
    CSlabLabels labels(raw, areAllHere);
    if (!labels.IsReady())
      labels.Copy(raw, [&](std::uint32_t label) {
        StRegion const* const region = Find(label);
        return region != nullptr && IsHere(*region, slab, m_Dimension);
      });
    ORVA::CObjectTexture const texture(levels, labels.Image(), m_Wanted.options);
    constexpr std::size_t block = 64;
    auto const objects = texture.Objects();
    auto const blocks = static_cast<int64>((objects.size() + block - 1) / block);
    ForEachPart(m_Wanted.threads, blocks, [&](int64 part) {
      std::size_t const first = static_cast<std::size_t>(part) * block;
      std::size_t const last = std::min(first + block, objects.size());
      std::vector<double> values((last - first) * m_Width);
      texture.Compute(first, last, values);
      for (std::size_t k = first; k < last; ++k) {
        auto const index = static_cast<std::size_t>(Find(objects[k].label) - m_Regions.data());
        std::copy_n(values.data() + (k - first) * m_Width, m_Width,
                    m_Values.data() + index * m_Width);
        bar.Advance();
      }
    });
  }

  // The matrices of an object that no slab holds as a whole, for each displacement.
  using Matrices = std::vector<CPairCounter>;

  void CountLarge(StSlab const& slab, CRawImage const& labels, ORVA::CLevelImage const& levels,
                  CProgressBar& bar) {
    for (std::size_t k = 0; k < m_Regions.size(); ++k) {
      int64 const low = LowSlice(m_Regions[k], m_Dimension);
      int64 const high = HighSlice(m_Regions[k], m_Dimension);
      if (low >= slab.first && low < slab.last && high >= slab.to)
        m_Large.emplace(k, Matrices(m_Wanted.options.displacements.size(),
                                    CPairCounter(m_Levels.Count(), CPairCounter::EnForm::Sparse)));
    }
    for (auto it = m_Large.begin(); it != m_Large.end();) {
      StRegion const& region = m_Regions[it->first];
      CountBox(region, slab, labels, levels, it->second);
      if (HighSlice(region, m_Dimension) >= slab.last) {
        ++it;
        continue;
      }
      Evaluate(it->first, it->second);
      it = m_Large.erase(it);
      bar.Advance();
    }
  }

  // The pairs whose first voxel is in the slab's own slices.
  void CountBox(StRegion const& region, StSlab const& slab, CRawImage const& labels,
                ORVA::CLevelImage const& levels, Matrices& matrices) const {
    CPos low(region.low[0], region.low[1], region.low[2]);
    CPos high(region.high[0] + 1, region.high[1] + 1, region.high[2] + 1);
    int64& from = m_Dimension == 3 ? low.z : low.y;
    int64& to = m_Dimension == 3 ? high.z : high.y;
    from = std::max(from, slab.from) - slab.from;
    to = std::min(to, slab.to) - slab.from;
    auto const levelsOfIt = Masked(levels.Box(low, high), labels, low, region.label);
    int64 const first = slab.first - slab.from - from, last = slab.last - slab.from - from;
    auto const size = levelsOfIt.Size();
    for (std::size_t k = 0; k < matrices.size(); ++k)
      matrices[k].Count(ORVA::CLevelImage(levelsOfIt, levels.Levels()),
                        m_Wanted.options.displacements[k],
                        m_Dimension == 3 ? CPos(0, 0, first) : CPos(0, first, 0),
                        m_Dimension == 3 ? CPos(size.x, size.y, last) : CPos(size.x, last, 1));
  }

  // The levels of a box where the labels are this one, else 0.
  [[nodiscard]] static CImage Masked(ORVA::CLevelImage const& box, CRawImage const& labels,
                                     CPos const& low, int64 label) {
    CImage masked(ORVA::IMAGE_GREY_16, box.Size());
    auto const access = masked.CreateAccess(true);
    auto* out = reinterpret_cast<std::uint16_t*>(access.WritableBase());
    auto const size = labels.Size();
    VisitPixels(labels, [&](auto pixels) {
      for (int64 z = 0; z < box.Extents()[2]; ++z)
        for (int64 y = 0; y < box.Extents()[1]; ++y) {
          auto const* const row =
              pixels.data() + ((low.z + z) * size.y + low.y + y) * size.x + low.x;
          std::byte const* level = box.Base() + z * box.Strides()[2] + y * box.Strides()[1];
          for (int64 x = 0; x < box.Extents()[0]; ++x, level += box.Strides()[0])
            *out++ = static_cast<int64>(row[x]) == label ? LevelAt(level, box.BytesPerVoxel()) : 0;
        }
    });
    return masked;
  }
  static std::uint16_t LevelAt(std::byte const* voxel, int bytes) {
    if (bytes == 1) return std::to_integer<std::uint16_t>(*voxel);
    std::uint16_t level = 0;
    std::memcpy(&level, voxel, sizeof level);
    return level;
  }

  void Evaluate(std::size_t index, Matrices& matrices) {
    ORVA::CTextureFeatures features(m_Wanted.options.features);
    auto const values = std::span(m_Values).subspan(index * m_Width, m_Width);
    double count = 0;
    for (CPairCounter& pairs : matrices) {
      if (pairs.Pairs() == 0) continue;
      if (m_Wanted.options.isSymmetric) pairs.Symmetrize();
      auto const some = features.Of(pairs);
      for (std::size_t f = 0; f < m_Width; ++f) values[f] = (count == 0 ? 0 : values[f]) + some[f];
      ++count;
    }
    for (double& value : values) value = count > 0 ? value / count : NAN;
  }

  CVolumeSource& m_Labels;
  CLevelSource& m_Levels;
  std::span<StRegion const> m_Regions; // in ascending order of their labels
  StObjectTextures const& m_Wanted;
  int m_Dimension;
  std::size_t m_Width;
  std::vector<double> m_Values;
  std::map<std::size_t, Matrices> m_Large; // by the region's index
};

} // namespace

std::vector<double> MeasureTextures(CVolumeSource& labels, CVolumeSource& intensity,
                                    std::span<StRegion const> regions,
                                    StObjectTextures const& wanted) {
  CLevelSource levels(intensity, nullptr, wanted.recipe);
  return CTextureMeter(labels, levels, regions, wanted).Measure();
}

} // namespace selu
