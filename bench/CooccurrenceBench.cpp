// Co-occurrence matrices and texture features beside what one would use instead: the loop
// ++C[a * 256 + b], the features evaluated formula by formula, and ITK's filters for both.
#include "support/TextureOracle.h"

#include "Utils/Cooccurrence/PairCounting.h"
#include "Utils/Cooccurrence/TextureSums.h"

#include <benchmark/benchmark.h>
#include <itkHistogramToTextureFeaturesFilter.h>
#include <itkImportImageFilter.h>
#include <itkScalarImageToCooccurrenceMatrixFilter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <numbers>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace ORVA::Impl;
using Direction = std::array<std::int64_t, 3>;
using Counts = std::vector<std::uint32_t>;

// The 13 directions of a volume, one of each opposite pair; the first 4 are those of an image.
constexpr Direction c_directions[] = {{1, 0, 0},  {1, 1, 0},   {0, 1, 0},  {1, -1, 0}, {1, 0, 1},
                                      {1, 1, 1},  {0, 1, 1},   {1, -1, 1}, {1, 0, -1}, {1, 1, -1},
                                      {0, 1, -1}, {1, -1, -1}, {0, 0, 1}};

// ---------------------------------------------------------------------------------------------
// The images

struct StImage {
  Direction extent;
  std::vector<std::uint8_t> voxels;

  [[nodiscard]] StGrayBlock Block() const {
    return {.base = reinterpret_cast<std::byte const*>(voxels.data()),
            .extent = extent,
            .stride = {1, extent[0], extent[0] * extent[1]}};
  }
};

enum class EContent { Smooth, Noise, Background };

constexpr char const* Name(EContent content) {
  switch (content) {
  case EContent::Smooth:
    return "smooth";
  case EContent::Noise:
    return "noise";
  default:
    return "background";
  }
}

// Slow waves of which a little noise moves each voxel by up to two levels.
std::uint8_t SmoothLevel(double x, double y, double z, std::uint64_t random) {
  double const wave =
      40 * std::sin(0.05 * x) + 40 * std::sin(0.07 * y + 1) + 40 * std::sin(0.04 * z + 0.02 * x);
  return static_cast<std::uint8_t>(128 + wave + static_cast<double>(random % 5) - 2);
}

StImage MakeImage(Direction extent, EContent content) {
  StImage image{extent, {}};
  image.voxels.reserve(static_cast<std::size_t>(extent[0] * extent[1] * extent[2]));
  std::mt19937_64 random(1);
  auto const [nx, ny, nz] = extent;
  // Background is what lies outside a ball (or disc) of 40 % of the image.
  double const n = static_cast<double>(nx);
  double const radius =
      nz > 1 ? n * std::cbrt(0.3 / std::numbers::pi) : n * std::sqrt(0.4 / std::numbers::pi);
  for (std::int64_t z = 0; z < nz; ++z)
    for (std::int64_t y = 0; y < ny; ++y)
      for (std::int64_t x = 0; x < nx; ++x) {
        auto const dx = static_cast<double>(2 * x - nx + 1),
                   dy = static_cast<double>(2 * y - ny + 1),
                   dz = static_cast<double>(2 * z - nz + 1);
        bool const outside = dx * dx + dy * dy + dz * dz > 4 * radius * radius;
        std::uint64_t const draw = random() >> 32U;
        image.voxels.push_back(content == EContent::Noise ? static_cast<std::uint8_t>(draw % 256)
                               : content == EContent::Background && outside
                                   ? std::uint8_t{0}
                                   : SmoothLevel(static_cast<double>(x), static_cast<double>(y),
                                                 static_cast<double>(z), draw));
      }
  return image;
}

// Images are made when first asked for; few are kept, since the largest are large.
std::shared_ptr<StImage const> GetImage(Direction extent, EContent content) {
  static std::map<std::pair<Direction, EContent>, std::shared_ptr<StImage const>> images;
  auto const key = std::pair(extent, content);
  if (!images.contains(key)) {
    if (images.size() > 8) images.clear();
    images[key] = std::make_shared<StImage const>(MakeImage(extent, content));
  }
  return images[key];
}

std::int64_t NumberOfPairs(Direction extent, Direction d) {
  std::int64_t n = 1;
  for (std::size_t k = 0; k < 3; ++k) n *= extent[k] - std::abs(d[k]);
  return n;
}

// ---------------------------------------------------------------------------------------------
// Counting

struct StJob {
  Direction extent;
  EContent content;
  std::span<Direction const> directions;
};

void CountNaively(StImage const& image, Direction d, Counts& counts) {
  std::ranges::fill(counts, 0U);
  auto const [nx, ny, nz] = image.extent;
  std::int64_t const toSecond = d[0] + nx * (d[1] + ny * d[2]);
  std::uint32_t* const C = counts.data();
  for (std::int64_t z = std::max<std::int64_t>(0, -d[2]); z < nz - std::max<std::int64_t>(0, d[2]);
       ++z)
    for (std::int64_t y = std::max<std::int64_t>(0, -d[1]);
         y < ny - std::max<std::int64_t>(0, d[1]); ++y) {
      std::uint8_t const* const a = image.voxels.data() + nx * (y + ny * z);
      std::uint8_t const* const b = a + toSecond;
      std::int64_t const end = nx - std::max<std::int64_t>(0, d[0]);
      for (std::int64_t x = std::max<std::int64_t>(0, -d[0]); x < end; ++x) ++C[a[x] * 256 + b[x]];
    }
}

template <class Count>
void RunCounting(benchmark::State& state, StJob const& job, Count count) {
  auto const image = GetImage(job.extent, job.content);
  Counts counts(c_nCells);
  std::int64_t pairs = 0;
  for (Direction const& d : job.directions) pairs += NumberOfPairs(job.extent, d);
  for (auto _ : state)
    for (Direction const& d : job.directions) {
      count(*image, d, counts);
      benchmark::DoNotOptimize(counts.data());
    }
  state.SetItemsProcessed(state.iterations() * pairs);
}

void Counting(benchmark::State& state, StJob job) {
  StPairScratch scratch;
  RunCounting(state, job, [&](StImage const& image, Direction d, Counts& counts) {
    if (!CountPairs(image.Block(), d, std::span<std::uint32_t, c_nCells>(counts), scratch))
      state.SkipWithError("a count exceeds 32 bits");
  });
}

void CountingPlain(benchmark::State& state, StJob job) {
  StPairScratch scratch;
  RunCounting(state, job, [&](StImage const& image, Direction d, Counts& counts) {
    if (!CountPairs(image.Block(), d, std::span<std::uint32_t, c_nCells>(counts), scratch,
                    {.path = EPairPath::Plain}))
      state.SkipWithError("a count exceeds 32 bits");
  });
}

void CountingNaive(benchmark::State& state, StJob job) { RunCounting(state, job, CountNaively); }

template <unsigned Dimension>
auto AsItkImage(StImage const& image) {
  auto import = itk::ImportImageFilter<std::uint8_t, Dimension>::New();
  typename decltype(import)::ObjectType::SizeType size;
  for (unsigned k = 0; k < Dimension; ++k)
    size[k] = static_cast<itk::SizeValueType>(image.extent[k]);
  import->SetRegion({{}, size});
  import->SetImportPointer(const_cast<std::uint8_t*>(image.voxels.data()), image.voxels.size(),
                           false);
  import->Update();
  return import;
}

template <unsigned Dimension>
void CountingItk(benchmark::State& state, StJob job) {
  using Image = itk::Image<std::uint8_t, Dimension>;
  using Filter = itk::Statistics::ScalarImageToCooccurrenceMatrixFilter<Image>;
  RunCounting(state, job, [&](StImage const& image, Direction d, Counts&) {
    auto const input = AsItkImage<Dimension>(image);
    auto const filter = Filter::New();
    filter->SetInput(input->GetOutput());
    typename Filter::OffsetType offset;
    for (unsigned k = 0; k < Dimension; ++k) offset[k] = static_cast<itk::OffsetValueType>(d[k]);
    filter->SetOffset(offset);
    filter->SetNumberOfBinsPerAxis(256);
    filter->SetPixelValueMinMax(0, 255);
    filter->Update();
    benchmark::DoNotOptimize(filter->GetOutput()->GetTotalFrequency());
  });
}

// ---------------------------------------------------------------------------------------------
// Features of the first direction

Counts FirstCounts(EContent content) {
  Counts counts(c_nCells);
  CountNaively(*GetImage({256, 256, 256}, content), c_directions[0], counts);
  return counts;
}

constexpr double c_dPairs = 255.0 * 256 * 256;

void Features(benchmark::State& state, EContent content) {
  Counts const counts = FirstCounts(content);
  StTextureArrays arrays;
  for (auto _ : state) {
    FillTextureArrays(arrays, std::span<std::uint32_t const, c_nCells>(counts), c_dPairs);
    for (auto const feature : {Contrast, Correlation, DifferenceVariance, DifferenceEntropy,
                               Entropy, InverseDifferenceMoment, InformationMeasureOfCorrelation1,
                               InformationMeasureOfCorrelation2, SecondAngularMoment, SumAverage,
                               SumEntropy, SumVariance, Variance})
      benchmark::DoNotOptimize(feature(arrays));
  }
}

// Every formula once and by itself; what two of them share is evaluated once.
void FeaturesStraightforward(benchmark::State& state, EContent content) {
  Counts const counts = FirstCounts(content);
  for (auto _ : state) {
    test::CTextureOracle<double> const texture(counts, c_dPairs);
    double const entropy = texture.Entropy(), denominator = texture.Denominator();
    benchmark::DoNotOptimize(texture.Contrast());
    benchmark::DoNotOptimize(texture.Correlation());
    benchmark::DoNotOptimize(texture.DifferenceVariance());
    benchmark::DoNotOptimize(texture.DifferenceEntropy());
    benchmark::DoNotOptimize(entropy);
    benchmark::DoNotOptimize(texture.InverseDifferenceMoment());
    benchmark::DoNotOptimize(denominator > 0 ? entropy - texture.H1() / denominator : 0);
    double const square = 1 - std::exp(2 * (entropy - texture.H2()));
    benchmark::DoNotOptimize(square > 0 ? std::sqrt(square) : 0);
    benchmark::DoNotOptimize(texture.SecondAngularMoment());
    benchmark::DoNotOptimize(texture.SumAverage());
    benchmark::DoNotOptimize(texture.SumEntropy());
    benchmark::DoNotOptimize(texture.SumVariance());
    benchmark::DoNotOptimize(texture.Variance());
  }
}

// ITK knows eight features.
void FeaturesItk(benchmark::State& state, EContent content) {
  using Filter =
      itk::Statistics::ScalarImageToCooccurrenceMatrixFilter<itk::Image<std::uint8_t, 3>>;
  auto const input = AsItkImage<3>(*GetImage({256, 256, 256}, content));
  auto const matrix = Filter::New();
  matrix->SetInput(input->GetOutput());
  matrix->SetOffset({{1, 0, 0}});
  matrix->SetNumberOfBinsPerAxis(256);
  matrix->SetPixelValueMinMax(0, 255);
  matrix->Update();
  auto const features =
      itk::Statistics::HistogramToTextureFeaturesFilter<Filter::HistogramType>::New();
  features->SetInput(matrix->GetOutput());
  for (auto _ : state) {
    features->Modified();
    features->Update();
    benchmark::DoNotOptimize(features->GetEntropy());
  }
}

// ---------------------------------------------------------------------------------------------

using Function = void (*)(benchmark::State&, StJob);

void RegisterJob(std::string const& row, StJob const& job, Function itk) {
  auto const add = [&](char const* contestant, Function function) {
    return benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function, job)
        ->Unit(benchmark::kMillisecond);
  };
  add("SeluUtils", Counting);
  add("naive loop", CountingNaive);
  add("plain path", CountingPlain);
  if (itk != nullptr) add("ITK", itk)->Iterations(1);
}

void RegisterCounting() {
  auto const first = std::span(c_directions).first(1);
  for (EContent const content : {EContent::Smooth, EContent::Noise, EContent::Background}) {
    std::string const name = Name(content);
    Direction const volume{256, 256, 256}, image{2048, 2048, 1};
    RegisterJob("256^3 " + name + ", first direction", {volume, content, first}, CountingItk<3>);
    RegisterJob("256^3 " + name + ", 13 directions", {volume, content, c_directions}, nullptr);
    RegisterJob("2048^2 " + name + ", first direction", {image, content, first}, CountingItk<2>);
    RegisterJob("2048^2 " + name + ", 4 directions",
                {image, content, std::span(c_directions).first(4)}, CountingItk<2>);
  }
  for (std::int64_t n : {64, 128, 512})
    RegisterJob(std::to_string(n) + "^3 smooth, first direction",
                {{n, n, n}, EContent::Smooth, first}, nullptr);
}

void RegisterFeatures() {
  struct {
    char const* contestant;
    void (*function)(benchmark::State&, EContent);
  } const contestants[] = {
      {"SeluUtils", Features}, {"straightforward", FeaturesStraightforward}, {"ITK", FeaturesItk}};
  for (EContent const content : {EContent::Smooth, EContent::Noise})
    for (auto const& [contestant, function] : contestants) {
      std::string const row = std::string("features of 256^3 ") + Name(content);
      benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function, content)
          ->Unit(benchmark::kMillisecond);
    }
}

[[maybe_unused]] bool const c_registered = (RegisterCounting(), RegisterFeatures(), true);

} // namespace
