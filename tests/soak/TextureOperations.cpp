// Texture of shared images, by own and by shared evaluators.
#include "soak/Operations.h"

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/CooccurrenceSum.h>
#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/Features.h>
#include <pxlib2image/Size.h>

#include <array>
#include <cstddef>
#include <utility>

namespace soak {

namespace {

using namespace ORVA;

void Counting(StShared const& shared, CRandomSource& source, CDigest& digest) {
  Point const way = Way(source, 3);
  CPairCounter pairs(shared.levels.Levels());
  pairs.Count(shared.levels, way);
  if (source() % 2 == 0) pairs.Symmetrize();
  pairs += shared.pairs;
  pairs.ForEach([&](int i, int j, uint64 count) {
    digest.Add(static_cast<uint64>(i) << 32 | static_cast<uint64>(j));
    digest.Add(count);
  });
  CTextureFeatures features;
  digest.Add(features.Of(pairs));
  CTextureFeatures maximal({EnTextureFeature::MaximalCorrelation});
  digest.Add(maximal.Of(shared.pairs));
}

void Classic(StShared const& shared, CRandomSource& source, CDigest& digest) {
  Point const way = Way(source, 3);
  CTriple<long> const direction(static_cast<long>(way.x), static_cast<long>(way.y),
                                static_cast<long>(way.z));
  CCooccurrence texture("soak", nullptr);
  CValueMap features;
  CTriple<long> copy = direction;
  texture.ComputeFeatures(shared.gray, &copy, &features);
  for (auto const& [key, value] : features) {
    digest.Add(key.Text());
    digest.Add(value.Double());
  }
  CCooccurrenceSum sum;
  sum.Count(shared.gray, way);
  digest.Add(sum.Pairs());
  digest.Add(sum(1, 2));
}

void Levels(StShared const& shared, CRandomSource& source, CDigest& digest) {
  StLevelReport report;
  CQuantizer const own =
      CQuantizer::BinWidth(0.25 + static_cast<double>(Between(source, 1, 40)) / 7);
  CLevelImage const levels =
      own.Quantize(shared.reals, {&shared.labels, Between(source, 1, 5)}, &report);
  for (uint64 const voxels : report.histogram) digest.Add(voxels);
  CPairCounter pairs(levels.Levels());
  pairs.Count(levels, {1, 0, 0});
  digest.Add(pairs.Pairs());
  for (int k = 0; k < 20; ++k)
    digest.Add(static_cast<uint64>(
        shared.quantizer.Level(static_cast<double>(Between(source, -99, 99)) / 3)));
}

void Windows(StShared const& shared, CRandomSource& source, CDigest& digest) {
  Point const at = Within(source, 9);
  CPos const center(at.x + 10, at.y + 9, (at.z + 9) % 16);
  digest.Add(shared.window.At(shared.levels, center));
  int64 const slice = Between(source, 0, 15);
  CSize const map = shared.window.MapSize(CSize(24, 20, 16));
  std::vector<double> values(static_cast<std::size_t>(map.x * map.y) *
                             shared.window.Features().size());
  shared.window.Compute(shared.levels, StRowRange{slice, slice + 1}, values);
  digest.Add(values);
}

void Objects(StShared const& shared, CRandomSource& source, CDigest& digest) {
  std::size_t const n = shared.objects.Objects().size();
  auto const first = static_cast<std::size_t>(Between(source, 0, static_cast<int64>(n) - 1));
  std::vector<double> values((n - first) * shared.objects.Features().size());
  shared.objects.Compute(first, n, values);
  digest.Add(values);
}

void Aggregated(StShared const& shared, CRandomSource& source, CDigest& digest) {
  auto const way = c_aggregations[static_cast<std::size_t>(Between(source, 0, 5))];
  CAggregatedTexture texture(way, shared.levels.Levels());
  texture.Count(shared.levels);
  digest.Add(texture.Values());
}

} // namespace

std::vector<StOperation> TextureOperations() {
  return {{"counting", Counting}, {"classic texture", Classic}, {"levels", Levels},
          {"windows", Windows},   {"objects", Objects},         {"aggregation", Aggregated}};
}

} // namespace soak
