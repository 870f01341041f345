#include "LargeObjects.h"

#include "Boxes.h"
#include "Levels.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/PairCounter.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

namespace selu_python {

using ORVA::CLevelImage;
using ORVA::CPairCounter;
using ORVA::CPos;
using ORVA::CSize;
using ORVA::CTriple;
using ORVA::int64;

namespace {

constexpr int64 c_sparsest = 32; // voxels of the box per voxel of the object

CSize SizeOfBox(CPos const& low, CPos const& high) {
  return {high.x - low.x, high.y - low.y, high.z - low.z};
}

std::vector<CTriple<int64>> Displacements(ORVA::StObjectTextureOptions const& options, int ndim) {
  if (!options.displacements.empty()) return options.displacements;
  return ORVA::NeighborDisplacements(std::clamp(ndim, 1, 3));
}

void CountBoxes(CLevelImage const& levels, CTriple<int64> const& d, CPairCounter& pairs,
                CWatch& watch) {
  ForEachBox(levels.Size(), [&](CPos const& low, CPos const& high) {
    pairs.Count(levels, d, low, high);
    watch.Advance(0);
  });
}

} // namespace

CLargeObjects::CLargeObjects(CLevelImage const& levels, ORVA::CImageView const& labels,
                             std::span<ORVA::StTextureObject const> objects,
                             ORVA::StObjectTextureOptions const& options, CWatch& watch)
    : m_Levels(levels), m_Labels(labels), m_Options(options), m_Watch(watch) {
  constexpr int64 most = std::numeric_limits<int64>::max();
  for (auto const& object : objects)
    if (object.voxels >= c_largeObject)
      m_Boxes[object.label] = {CPos(most, most, most), CPos(0, 0, 0)};
  if (m_Boxes.empty()) return;
  auto const type = labels.Type();
  if (type == ORVA::IMAGE_GREY_32)
    FindBoxes<std::uint32_t>();
  else if (type == ORVA::IMAGE_SIGNED_32)
    FindBoxes<std::int32_t>();
  else if (type == ORVA::IMAGE_GREY_16)
    FindBoxes<std::uint16_t>();
  else if (type == ORVA::IMAGE_SIGNED_16)
    FindBoxes<std::int16_t>();
  else if (type == ORVA::IMAGE_SIGNED_8)
    FindBoxes<std::int8_t>();
  else
    FindBoxes<std::uint8_t>();
  for (auto const& object : objects) {
    auto const found = m_Boxes.find(object.label);
    if (found == m_Boxes.end()) continue;
    auto const& [low, high] = found->second;
    if (Voxels(low, high) / c_sparsest > object.voxels) m_Boxes.erase(found);
  }
}

template <class T>
void CLargeObjects::FindBoxes() {
  auto const pixels = m_Labels.CreateAccess(false).As<T const>();
  auto const add = [](StBox& box, CPos const& first, int64 end) {
    box.low = {std::min(box.low.x, first.x), std::min(box.low.y, first.y),
               std::min(box.low.z, first.z)};
    box.high = {std::max(box.high.x, end), std::max(box.high.y, first.y + 1),
                std::max(box.high.z, first.z + 1)};
  };
  auto const& [width, height, depth] = pixels.Extents();
  for (int64 z = 0; z < depth; ++z)
    for (int64 y = 0; y < height; ++y) {
      for (int64 x = 0; x < width;) {
        T const label = pixels(x, y, z);
        CPos const first(x, y, z);
        for (++x; x < width && pixels(x, y, z) == label; ++x) continue;
        auto const found = m_Boxes.find(static_cast<std::uint32_t>(label));
        if (found != m_Boxes.end()) add(found->second, first, x);
      }
      m_Watch.Advance(0);
    }
}

// The levels of the object alone, 0 outside.
CLevelImage CLargeObjects::LevelsOf(std::uint32_t label, StBox const& box) const {
  CSize const size = SizeOfBox(box.low, box.high);
  int const n = m_Levels.Levels();
  auto const asTheyAre =
      ORVA::CQuantizer::Range(0.5, n + 0.5, n).Beyond(ORVA::CQuantizer::EnBeyond::Outside);
  ORVA::CImage levels(n <= 255 ? ORVA::IMAGE_GREY_8 : ORVA::IMAGE_GREY_16, size);
  auto const access = levels.CreateAccess(true);
  ORVA::CImageView pixels(levels.Type(), size, static_cast<void*>(access.WritableBase()));
  auto const image = m_Levels.View().Box(box.low, box.high);
  auto const labels = m_Labels.Box(box.low, box.high);
  ForEachBox(size, [&](CPos const& low, CPos const& high) {
    ORVA::CImageView part = pixels.Box(low, high);
    auto const within = labels.Box(low, high);
    asTheyAre.QuantizeInto(part, image.Box(low, high), {&within, label});
    m_Watch.Advance(0);
  });
  return {levels, n};
}

bool CLargeObjects::Compute(std::uint32_t label, std::span<double> values) const {
  auto const found = m_Boxes.find(label);
  if (found == m_Boxes.end()) return false;
  CLevelImage const levels = LevelsOf(label, found->second);
  CPairCounter pairs(levels.Levels());
  ORVA::CTextureFeatures features(m_Options.features);
  std::ranges::fill(values, 0.0);
  double matrices = 0;
  auto const displacements = Displacements(m_Options, m_Levels.Size().Dim());
  for (auto const& d : displacements) {
    CountBoxes(levels, d, pairs, m_Watch);
    bool const isLast = &d == &displacements.back();
    if ((m_Options.isCombined && !isLast) || pairs.Pairs() == 0) continue;
    if (m_Options.isSymmetric) pairs.Symmetrize();
    auto const ofMatrix = features.Of(pairs);
    for (std::size_t k = 0; k < values.size(); ++k) values[k] += ofMatrix[k];
    ++matrices;
    pairs.Clear();
  }
  for (double& value : values) value = matrices > 0 ? value / matrices : NAN;
  return true;
}

} // namespace selu_python
