// Co-occurrence of any number of levels beside what one would use instead: the loop ++C[a * n + b],
// ITK's filter, and scikit-image in a process of its own; the same pixels in other layouts; all
// features at once beside formula by formula; the texture of many objects.
#include "support/FeatureOracle.h"
#include "support/InThreads.h"

#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>

#include <benchmark/benchmark.h>
#include <itkImportImageFilter.h>
#include <itkScalarImageToCooccurrenceMatrixFilter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ORVA;

constexpr int64 c_side = 1024;
constexpr double c_pairs = static_cast<double>(c_side * (c_side - 1));

// Levels from 1 to n, all alike likely, or slow waves with a little noise.
CLevelImage const& Levels(int n, bool isNoise) {
  static std::map<std::pair<int, bool>, CLevelImage> images;
  auto const known = images.find({n, isNoise});
  if (known != images.end()) return known->second;
  CImage values(IMAGE_DOUBLE, CSize(c_side, c_side));
  auto const pixels = values.CreateAccess(true).As<double>();
  std::mt19937_64 random(1);
  for (int64 y = 0; y < c_side; ++y)
    for (int64 x = 0; x < c_side; ++x) {
      double const noise = static_cast<double>(random() % 65536) / 65536;
      double const wave = 0.5 + 0.22 * std::sin(0.05 * static_cast<double>(x)) +
                          0.22 * std::sin(0.07 * static_cast<double>(y));
      pixels(x, y) = isNoise ? noise : wave + (noise - 0.5) / 100;
    }
  auto const levels = CQuantizer::Range(0, 1, n).Quantize(values);
  return images.emplace(std::pair(n, isNoise), levels).first->second;
}

void Count(benchmark::State& state, int n, bool isNoise) {
  auto const& levels = Levels(n, isNoise);
  CPairCounter pairs(n);
  for (auto _ : state) {
    pairs.Clear();
    pairs.Count(levels, {1, 0, 0});
    benchmark::DoNotOptimize(pairs.Pairs());
  }
}

template <class T>
void AddNaively(std::vector<std::uint32_t>& counts, std::byte const* pixels, std::size_t side) {
  auto const* const levels = reinterpret_cast<T const*>(pixels);
  for (int64 y = 0; y < c_side; ++y)
    for (int64 x = 0; x + 1 < c_side; ++x)
      ++counts[levels[y * c_side + x] * side + levels[y * c_side + x + 1]];
}

void CountNaively(benchmark::State& state, int n, bool isNoise) {
  auto const& levels = Levels(n, isNoise);
  std::size_t const side = static_cast<std::size_t>(n) + 1;
  std::vector<std::uint32_t> counts(side * side);
  for (auto _ : state) {
    std::ranges::fill(counts, 0U);
    if (levels.BytesPerVoxel() == 1)
      AddNaively<std::uint8_t>(counts, levels.Base(), side);
    else
      AddNaively<std::uint16_t>(counts, levels.Base(), side);
    benchmark::DoNotOptimize(counts.data());
  }
}

void CountItk(benchmark::State& state, int n, bool isNoise) {
  using Image = itk::Image<std::uint16_t, 2>;
  using Filter = itk::Statistics::ScalarImageToCooccurrenceMatrixFilter<Image>;
  auto const& levels = Levels(n, isNoise);
  auto const image = Image::New();
  image->SetRegions(Image::SizeType{{c_side, c_side}});
  image->Allocate();
  for (int64 y = 0; y < c_side; ++y)
    for (int64 x = 0; x < c_side; ++x)
      image->SetPixel({{x, y}}, static_cast<std::uint16_t>(levels.At({x, y})));
  auto const filter = Filter::New();
  filter->SetInput(image);
  filter->SetOffset({{1, 0}});
  filter->SetNumberOfBinsPerAxis(static_cast<unsigned>(n));
  filter->SetPixelValueMinMax(1, static_cast<std::uint16_t>(n));
  for (auto _ : state) {
    filter->Modified();
    filter->Update();
    benchmark::DoNotOptimize(filter->GetOutput()->GetTotalFrequency());
  }
}

void CountSkimage(benchmark::State& state, int n, bool /*isNoise*/) {
  std::string const command = "/usr/bin/python3 " SELU_BENCH_DIR "/support/skimage_counts.py " +
                              std::to_string(c_side) + " " + std::to_string(n);
  for (auto _ : state) {
    double seconds = 0;
    std::unique_ptr<FILE, int (*)(FILE*)> const output(popen(command.c_str(), "r"), pclose);
    if (!output || std::fscanf(output.get(), "%lf", &seconds) != 1)
      return state.SkipWithError("scikit-image did not run");
    state.SetIterationTime(seconds);
  }
}

// The same picture, its pixels column by column or backwards in memory.
void CountLayout(benchmark::State& state, bool isUsual, bool isFlipped) {
  auto const& levels = Levels(32, true);
  std::vector<std::byte> pixels(static_cast<std::size_t>(c_side * c_side));
  std::array<int64, 3> strides =
      isUsual ? std::array<int64, 3>{1, c_side, 0} : std::array<int64, 3>{c_side, 1, 0};
  int64 first = 0;
  if (isFlipped) {
    for (int64& stride : strides) stride = -stride;
    first = c_side * c_side - 1;
  }
  for (int64 y = 0; y < c_side; ++y)
    for (int64 x = 0; x < c_side; ++x)
      pixels[static_cast<std::size_t>(first + x * strides[0] + y * strides[1])] =
          static_cast<std::byte>(levels.At({x, y}));
  CImageView const view(IMAGE_GREY_8, CSize(c_side, c_side),
                        static_cast<void const*>(pixels.data() + first), strides);
  CLevelImage const laidOut(view, 32);
  CPairCounter pairs(32);
  for (auto _ : state) {
    pairs.Clear();
    for (auto const& displacement : NeighborDisplacements(2)) pairs.Count(laidOut, displacement);
    benchmark::DoNotOptimize(pairs.Pairs());
  }
}

std::vector<double> MatrixOf(int n) {
  CPairCounter pairs(n);
  pairs.Count(Levels(n, true), {1, 0, 0});
  auto const dense = pairs.ToDense();
  return {dense.begin(), dense.end()};
}

void Features(benchmark::State& state, int n) {
  auto const matrix = MatrixOf(n);
  CTextureFeatures features;
  for (auto _ : state) benchmark::DoNotOptimize(features.Of(std::span(matrix), n).data());
}

void FeaturesByFormula(benchmark::State& state, int n) {
  auto const matrix = MatrixOf(n);
  for (auto _ : state) {
    test::CFeatureOracle<double> const oracle(matrix, n);
    for (EnTextureFeature const feature : c_ibsiFeatures)
      benchmark::DoNotOptimize(oracle.Of(feature));
  }
}

// 8 voxels, a new matrix of 32 levels, made symmetric, 25 features.
void SmallWork(benchmark::State& state) {
  CImage pixels(IMAGE_GREY_8, CSize(2, 2, 2));
  for (int k = 0; k < 8; ++k)
    pixels.CreateAccess(true).WritableBase()[k] = static_cast<std::byte>(4 * k + 1);
  CLevelImage const levels(pixels, 32);
  CTextureFeatures features;
  for (auto _ : state) {
    CPairCounter pairs(32);
    pairs.Count(levels, {1, 0, 0});
    pairs.Symmetrize();
    benchmark::DoNotOptimize(features.Of(pairs).data());
  }
}

// Cubes of 10^3 voxels, 25 features as means over 13 directions.
void Objects(benchmark::State& state, int64 perAxis, int n) {
  int64 const side = 10 * perAxis;
  CImage labels(IMAGE_GREY_32, CSize(side, side, side)), image(IMAGE_GREY_16, labels.Size());
  auto const label = labels.CreateAccess(true).As<std::uint32_t>();
  auto const level = image.CreateAccess(true).As<std::uint16_t>();
  std::mt19937_64 random(1);
  for (int64 z = 0; z < side; ++z)
    for (int64 y = 0; y < side; ++y)
      for (int64 x = 0; x < side; ++x) {
        label(x, y, z) =
            static_cast<std::uint32_t>(1 + x / 10 + perAxis * (y / 10 + perAxis * (z / 10)));
        level(x, y, z) = static_cast<std::uint16_t>(1 + random() % static_cast<unsigned>(n));
      }
  CLevelImage const levels(image, n);
  for (auto _ : state) {
    CObjectTexture const texture(levels, labels);
    benchmark::DoNotOptimize(texture.Compute().data());
  }
}

// 13 directions of 128^3 voxels and 256 levels, each thread its slices.
template <int Threads>
void CountInThreads(benchmark::State& state) {
  constexpr int64 side = 128;
  CImage image(IMAGE_GREY_16, CSize(side, side, side));
  auto const level = image.CreateAccess(true).As<std::uint16_t>();
  std::mt19937_64 random(1);
  for (int64 z = 0; z < side; ++z)
    for (int64 y = 0; y < side; ++y)
      for (std::uint16_t& pixel : level.Row(y, z))
        pixel = static_cast<std::uint16_t>(1 + random() % 256);
  CLevelImage const levels(image, 256);
  for (auto _ : state) {
    std::vector<CPairCounter> counters(Threads, CPairCounter(256));
    state.SetIterationTime(bench::SecondsInThreads(Threads, [&](int part) {
      for (auto const& d : NeighborDisplacements(3))
        counters[static_cast<std::size_t>(part)].Count(
            levels, d, CPos(0, 0, side * part / Threads),
            CPos(side, side, side * (part + 1) / Threads));
    }));
    benchmark::DoNotOptimize(counters.front().Pairs());
  }
}

// Slow waves of 16 bits with noise, every value a level of its own: a scan as it comes.
void CountScan(benchmark::State& state) {
  constexpr int64 side = 128;
  CImage image(IMAGE_GREY_16, CSize(side, side, side));
  auto const level = image.CreateAccess(true).As<std::uint16_t>();
  std::mt19937_64 random(1);
  for (int64 z = 0; z < side; ++z)
    for (int64 y = 0; y < side; ++y)
      for (int64 x = 0; x < side; ++x) {
        double const wave = 32768 + 9000 * std::sin(0.03 * static_cast<double>(x)) +
                            9000 * std::sin(0.04 * static_cast<double>(y)) +
                            9000 * std::sin(0.05 * static_cast<double>(z));
        level(x, y, z) = static_cast<std::uint16_t>(wave + static_cast<double>(random() % 64));
      }
  CLevelImage const levels(image, 65535);
  std::size_t cells = 0;
  for (auto _ : state) {
    CPairCounter pairs(65535);
    pairs.Count(levels, {1, 0, 0});
    cells = pairs.Cells().size();
  }
  state.SetItemsProcessed(state.iterations() * side * side * (side - 1));
  state.counters["cells"] = static_cast<double>(cells);
}

template <class Function>
void RegisterCount(std::string const& row, char const* contestant, Function function, int n,
                   bool isNoise) {
  auto* const bench = benchmark::RegisterBenchmark(
      (row + "/" + contestant).c_str(), [function, n, isNoise](benchmark::State& state) {
        function(state, n, isNoise);
        state.SetItemsProcessed(state.iterations() * static_cast<int64>(c_pairs));
      });
  bench->Unit(benchmark::kMillisecond);
  if (function == CountSkimage) bench->UseManualTime()->Iterations(1);
  if (function == CountItk) bench->Iterations(1);
}

void Register() {
  for (int const n : {8, 32, 256, 4096, 65535})
    for (bool const isNoise : {false, true}) {
      std::string const row =
          std::to_string(n) + " levels, 1024^2 " + (isNoise ? "noise" : "smooth");
      RegisterCount(row, "SeluUtils", Count, n, isNoise);
      if (n > 4096) continue; // a table of 16 GiB
      RegisterCount(row, "naive loop", CountNaively, n, isNoise);
      if (n > 256) continue;
      RegisterCount(row, "ITK", CountItk, n, isNoise);
      if (isNoise) RegisterCount(row, "scikit-image", CountSkimage, n, isNoise);
    }
  benchmark::RegisterBenchmark("65535 levels, 128^3 of a scan/SeluUtils", CountScan)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("256 levels, 128^3, 13 directions, threads/SeluUtils",
                               CountInThreads<1>)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime();
  benchmark::RegisterBenchmark("256 levels, 128^3, 13 directions, threads/two threads",
                               CountInThreads<2>)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime();
  struct {
    char const* contestant;
    bool isUsual, isFlipped;
  } const layouts[] = {{"SeluUtils", true, false},
                       {"columns first", false, false},
                       {"backwards", true, true},
                       {"columns backwards", false, true}};
  for (auto const& layout : layouts)
    benchmark::RegisterBenchmark(
        (std::string("32 levels, 1024^2, 4 directions, by layout/") + layout.contestant).c_str(),
        [layout](benchmark::State& state) { CountLayout(state, layout.isUsual, layout.isFlipped); })
        ->Unit(benchmark::kMillisecond);
  for (int const n : {8, 32, 256}) {
    std::string const row = "25 features of " + std::to_string(n) + " levels/";
    benchmark::RegisterBenchmark((row + "SeluUtils").c_str(), Features, n);
    benchmark::RegisterBenchmark((row + "formula by formula").c_str(), FeaturesByFormula, n);
  }
  benchmark::RegisterBenchmark("8 voxels, 32 levels, 25 features/SeluUtils", SmallWork);
  for (int64 const perAxis : {int64{5}, int64{22}})
    for (int const n : {32, 256})
      benchmark::RegisterBenchmark((std::to_string(perAxis * perAxis * perAxis) +
                                    " objects of 10^3 voxels, " + std::to_string(n) +
                                    " levels/SeluUtils")
                                       .c_str(),
                                   Objects, perAxis, n)
          ->Unit(benchmark::kMillisecond)
          ->Iterations(1);
}

[[maybe_unused]] bool const c_registered = (Register(), true);

} // namespace
