// Co-occurrence matrices and texture features beside what one would use instead: the loop
// ++C[a * 256 + b], the features evaluated formula by formula, and ITK's filters for both.
#include "support/TextureOracle.h"

#include <SeluUtils/Cooccurrence.h>

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
#include <utility>
#include <vector>

namespace {

using namespace ORVA;
using Extent = std::array<std::int64_t, 3>;
using Direction = CTriple<long>;
using Counts = std::vector<std::uint32_t>;

constexpr std::size_t c_nCells = 65536;
constexpr std::span<Direction const> c_directions = CCooccurrence::m_cDirections;

// ---------------------------------------------------------------------------------------------
// The images

struct StImage {
  Extent extent;
  CImage image;

  [[nodiscard]] std::uint8_t const* Voxels() const {
    return reinterpret_cast<std::uint8_t const*>(image.CreateAccess(false).Base());
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

StImage MakeImage(Extent extent, EContent content) {
  CSize const size =
      extent[2] > 1 ? CSize(extent[0], extent[1], extent[2]) : CSize(extent[0], extent[1]);
  StImage image{extent, CImage(IMAGE_GREY_8, size)};
  auto access = image.image.CreateAccess(true);
  auto* voxel = reinterpret_cast<std::uint8_t*>(access.WritableBase());
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
        *voxel++ = content == EContent::Noise ? static_cast<std::uint8_t>(draw % 256)
                   : content == EContent::Background && outside
                       ? std::uint8_t{0}
                       : SmoothLevel(static_cast<double>(x), static_cast<double>(y),
                                     static_cast<double>(z), draw);
      }
  return image;
}

// Images are made when first asked for and kept, 600 MB of them: interleaved runs ask for all.
std::shared_ptr<StImage const> GetImage(Extent extent, EContent content) {
  static std::map<std::pair<Extent, EContent>, std::shared_ptr<StImage const>> images;
  auto const key = std::pair(extent, content);
  if (!images.contains(key))
    images[key] = std::make_shared<StImage const>(MakeImage(extent, content));
  return images[key];
}

std::int64_t NumberOfPairs(Extent const& extent, Direction d) {
  return (extent[0] - std::abs(d.x)) * (extent[1] - std::abs(d.y)) * (extent[2] - std::abs(d.z));
}

// ---------------------------------------------------------------------------------------------
// Counting

struct StJob {
  std::vector<Extent> extents;
  EContent content;
  std::span<Direction const> directions;
};

void CountNaively(StImage const& image, Direction d, Counts& counts) {
  std::ranges::fill(counts, 0U);
  auto const [nx, ny, nz] = image.extent;
  std::int64_t const toSecond = d.x + nx * (d.y + ny * d.z);
  std::uint8_t const* const voxels = image.Voxels();
  std::uint32_t* const C = counts.data();
  for (std::int64_t z = std::max<std::int64_t>(0, -d.z); z < nz - std::max<std::int64_t>(0, d.z);
       ++z)
    for (std::int64_t y = std::max<std::int64_t>(0, -d.y); y < ny - std::max<std::int64_t>(0, d.y);
         ++y) {
      std::uint8_t const* const a = voxels + nx * (y + ny * z);
      std::uint8_t const* const b = a + toSecond;
      std::int64_t const end = nx - std::max<std::int64_t>(0, d.x);
      for (std::int64_t x = std::max<std::int64_t>(0, -d.x); x < end; ++x) ++C[a[x] * 256 + b[x]];
    }
}

template <class Count>
void RunCounting(benchmark::State& state, StJob const& job, Count count) {
  std::vector<std::shared_ptr<StImage const>> images;
  std::int64_t pairs = 0;
  for (Extent const& extent : job.extents) {
    images.push_back(GetImage(extent, job.content));
    for (Direction const& d : job.directions) pairs += NumberOfPairs(extent, d);
  }
  for (auto _ : state)
    for (auto const& image : images)
      for (Direction const& d : job.directions) count(*image, d);
  state.SetItemsProcessed(state.iterations() * pairs);
}

void Counting(benchmark::State& state, StJob const& job) {
  CCooccurrence texture("texture", nullptr);
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  RunCounting(state, job, [&](StImage const& image, Direction d) {
    texture.ComputeMatrix(out, image.image, d);
  });
}

void CountingNaive(benchmark::State& state, StJob const& job) {
  Counts counts(c_nCells);
  RunCounting(state, job, [&](StImage const& image, Direction d) {
    CountNaively(image, d, counts);
    benchmark::DoNotOptimize(counts.data());
  });
}

template <unsigned Dimension>
auto AsItkImage(StImage const& image) {
  auto import = itk::ImportImageFilter<std::uint8_t, Dimension>::New();
  typename decltype(import)::ObjectType::SizeType size;
  for (unsigned k = 0; k < Dimension; ++k)
    size[k] = static_cast<itk::SizeValueType>(image.extent[k]);
  import->SetRegion({{}, size});
  import->SetImportPointer(const_cast<std::uint8_t*>(image.Voxels()), image.image.Bytes(), false);
  import->Update();
  return import;
}

template <unsigned Dimension, class Direction>
auto ItkMatrix(itk::Image<std::uint8_t, Dimension>* image, Direction d) {
  using Filter =
      itk::Statistics::ScalarImageToCooccurrenceMatrixFilter<itk::Image<std::uint8_t, Dimension>>;
  auto const filter = Filter::New();
  filter->SetInput(image);
  std::array<long, 3> const components{d.x, d.y, d.z};
  typename Filter::OffsetType offset;
  for (unsigned k = 0; k < Dimension; ++k) offset[k] = components[k];
  filter->SetOffset(offset);
  filter->SetNumberOfBinsPerAxis(256);
  filter->SetPixelValueMinMax(0, 255);
  filter->Update();
  return filter;
}

template <unsigned Dimension>
void CountingItk(benchmark::State& state, StJob const& job) {
  RunCounting(state, job, [&](StImage const& image, Direction d) {
    auto const input = AsItkImage<Dimension>(image);
    auto const matrix = ItkMatrix<Dimension>(input->GetOutput(), d);
    benchmark::DoNotOptimize(matrix->GetOutput()->GetTotalFrequency());
  });
}

// ---------------------------------------------------------------------------------------------
// A matrix of the first direction and the features from it

void Features(benchmark::State& state, Extent const& extent, EContent content) {
  auto const image = GetImage(extent, content);
  CCooccurrence texture("texture", nullptr);
  CImage out(IMAGE_GREY_32, CSize(1, 256, 256));
  for (auto _ : state)
    benchmark::DoNotOptimize(texture.ComputeMatrixAndFeatures(out, image->image, c_directions[0]));
}

// Every formula once and by itself; what two of them share is evaluated once.
void FeaturesByFormula(benchmark::State& state, Extent const& extent, EContent content) {
  auto const image = GetImage(extent, content);
  Counts counts(c_nCells);
  auto const pairs = static_cast<double>(NumberOfPairs(extent, c_directions[0]));
  for (auto _ : state) {
    CountNaively(*image, c_directions[0], counts);
    test::CTextureOracle<double> const texture(counts, pairs);
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
void FeaturesItk(benchmark::State& state, Extent const& extent, EContent content) {
  auto const input = AsItkImage<3>(*GetImage(extent, content));
  for (auto _ : state) {
    auto const matrix = ItkMatrix<3>(input->GetOutput(), c_directions[0]);
    using Histogram = typename std::remove_reference_t<decltype(*matrix)>::HistogramType;
    auto const features = itk::Statistics::HistogramToTextureFeaturesFilter<Histogram>::New();
    features->SetInput(matrix->GetOutput());
    features->Update();
    benchmark::DoNotOptimize(features->GetEntropy());
  }
}

// ---------------------------------------------------------------------------------------------

using Function = void (*)(benchmark::State&, StJob const&);

void RegisterJob(std::string const& row, StJob const& job, Function itk) {
  auto const add = [&](char const* contestant, Function function) {
    return benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function, job)
        ->Unit(benchmark::kMillisecond);
  };
  add("SeluUtils", Counting);
  add("naive loop", CountingNaive);
  if (itk != nullptr) add("ITK", itk)->Iterations(1)->Repetitions(1); // takes its time
}

void RegisterCounting() {
  auto const first = c_directions.first(1);
  for (EContent const content : {EContent::Smooth, EContent::Noise, EContent::Background}) {
    std::string const name = Name(content);
    for (std::int64_t const n : {64, 128, 256, 512})
      RegisterJob(std::to_string(n) + "^3 " + name + ", first direction",
                  {{{n, n, n}}, content, first}, n == 256 ? CountingItk<3> : nullptr);
    RegisterJob("256^3 " + name + ", 13 directions", {{{256, 256, 256}}, content, c_directions},
                nullptr);
    RegisterJob("2048^2 " + name + ", first direction", {{{2048, 2048, 1}}, content, first},
                CountingItk<2>);
    RegisterJob("2048^2 " + name + ", 4 directions",
                {{{2048, 2048, 1}}, content, c_directions.first(4)}, CountingItk<2>);
  }
}

// Images of about a million voxels with rows of every length.
void RegisterRowLengths() {
  constexpr std::int64_t c_groups[] = {17, 32, 48, 64, 96, 128, 192, 256, 301};
  for (std::size_t k = 0; k + 1 < std::size(c_groups); ++k) {
    std::int64_t const begin = c_groups[k], end = c_groups[k + 1];
    StJob job{{}, EContent::Smooth, c_directions.subspan(1, 1)};
    for (std::int64_t n = begin; n<end; n += end - begin> 16 ? 7 : 1)
      job.extents.push_back({n, 64, (1 << 14) / n});
    RegisterJob("rows of " + std::to_string(begin) + " to " + std::to_string(end - 1) + ", smooth",
                job, nullptr);
  }
}

void RegisterFeatures() {
  struct {
    char const* contestant;
    void (*function)(benchmark::State&, Extent const&, EContent);
  } const contestants[] = {
      {"SeluUtils", Features}, {"formulas one by one", FeaturesByFormula}, {"ITK", FeaturesItk}};
  auto const add = [&](std::string const& row, Extent const& extent, EContent content) {
    for (auto const& [contestant, function] : contestants) {
      auto* const run =
          benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function, extent, content)
              ->Unit(benchmark::kMillisecond);
      if (function == FeaturesItk) run->Iterations(1)->Repetitions(1);
    }
  };
  add("matrix and features of 8 voxels", {2, 2, 2}, EContent::Noise);
  for (EContent const content : {EContent::Smooth, EContent::Noise})
    for (std::int64_t const n : {64, 256})
      add("matrix and features of " + std::to_string(n) + "^3 " + Name(content), {n, n, n},
          content);
}

[[maybe_unused]] bool const c_registered =
    (RegisterCounting(), RegisterRowLengths(), RegisterFeatures(), true);

} // namespace
