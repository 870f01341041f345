// Texture maps beside a loop over cut-outs: with this library's counter and features, and with
// scikit-image's graycomatrix and graycoprops. Loops run for a sample of the pixels; their times
// are those of all. scikit-image computes six features (it has no more), in a process of its own,
// whose start does not count.
#include "support/InThreads.h"

#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <pxlib2image/Image.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace ORVA;
using enum EnTextureFeature;

struct StJob {
  int64 side, window;
  int levels;
  bool isSmooth;
  std::vector<EnTextureFeature> features;
  bool isSolid = false;
};

// Noise, or slow waves with some.
CLevelImage MakeLevels(StJob const& job) {
  CSize const size = job.isSolid ? CSize(job.side, job.side, job.side) : CSize(job.side, job.side);
  CImage image(IMAGE_GREY_16, size);
  std::mt19937 random(1);
  auto const access = image.CreateAccess(true);
  auto* pixel = reinterpret_cast<std::uint16_t*>(access.WritableBase());
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) {
        auto const u = static_cast<double>(x), v = static_cast<double>(y + 3 * z);
        double const wave =
            0.5 +
            (std::sin(0.05 * u) + std::sin(0.07 * v + 1) + std::sin(0.04 * u + 0.02 * v)) / 6.0;
        auto const noise = static_cast<int>(random() >> 8U);
        int const level =
            job.isSmooth ? static_cast<int>(wave * job.levels) + noise % 3 - 1 : noise % job.levels;
        *pixel++ = static_cast<std::uint16_t>(1 + std::clamp(level, 0, job.levels - 1));
      }
  return CLevelImage(image, job.levels);
}

CTextureWindow MakeWindow(StJob const& job) {
  CTextureWindow window("window", nullptr);
  window.SetSides(CSize(job.window, job.window, job.isSolid ? job.window : 1));
  window.SetDisplacements(NeighborDisplacements(job.isSolid ? 3 : 2));
  window.SetFeatures(job.features);
  return window;
}

int64 Voxels(StJob const& job) { return job.side * job.side * (job.isSolid ? job.side : 1); }

void Maps(benchmark::State& state, StJob const& job) {
  auto const levels = MakeLevels(job);
  auto const window = MakeWindow(job);
  std::vector<float> values(static_cast<std::size_t>(Voxels(job)) * job.features.size());
  for (auto _ : state) {
    window.Compute(levels, {0, job.side}, std::span(values));
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * Voxels(job));
}

// Bands of rows, one for each thread.
template <int Threads>
void MapsInThreads(benchmark::State& state, StJob const& job) {
  auto const levels = MakeLevels(job);
  auto const window = MakeWindow(job);
  std::vector<std::vector<float>> values(Threads);
  for (auto _ : state)
    state.SetIterationTime(bench::SecondsInThreads(Threads, [&](int part) {
      StRowRange const rows{job.side * part / Threads, job.side * (part + 1) / Threads};
      auto& band = values[static_cast<std::size_t>(part)];
      band.resize(static_cast<std::size_t>((rows.high - rows.low) * job.side) *
                  job.features.size());
      window.Compute(levels, rows, std::span(band));
    }));
  state.SetItemsProcessed(state.iterations() * Voxels(job));
}

void CutOuts(benchmark::State& state, StJob const& job) {
  constexpr int64 pixels = 200;
  auto const levels = MakeLevels(job);
  CTextureFeatures features{std::span<EnTextureFeature const>(job.features)};
  auto const displacements = NeighborDisplacements(2);
  for (auto _ : state) {
    std::clock_t const start = std::clock();
    for (int64 k = 0; k < pixels; ++k) {
      int64 const x = k * (job.side - job.window) / pixels;
      auto const cut = levels.Box({x, x}, {x + job.window, x + job.window, 1});
      for (auto const& d : displacements) {
        CPairCounter pairs(job.levels);
        pairs.Count(cut, d);
        benchmark::DoNotOptimize(features.Of(pairs).data());
      }
    }
    auto const ticks = static_cast<double>(std::clock() - start);
    state.SetIterationTime(ticks / CLOCKS_PER_SEC * static_cast<double>(Voxels(job)) / pixels);
  }
}

// What a command prints.
std::string OutputOf(std::string const& command) {
  std::string text;
  if (auto* const pipe = popen(command.c_str(), "r")) {
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) text += buffer;
    if (pclose(pipe) != 0) text.clear();
  }
  return text;
}

void ScikitImage(benchmark::State& state, StJob const& job) {
  auto const path = std::filesystem::temp_directory_path() /
                    ("selu_window_" + std::to_string(job.levels) + (job.isSmooth ? "s" : "n"));
  auto const levels = MakeLevels(job);
  std::ofstream file(path, std::ios::binary);
  for (int64 y = 0; y < job.side; ++y)
    for (int64 x = 0; x < job.side; ++x) file.put(static_cast<char>(levels.At({x, y}) - 1));
  file.close();
  std::string const command = "/usr/bin/python3 " SELU_BENCH_DIR "/support/window_features.py " +
                              path.string() + ' ' + std::to_string(job.side) + ' ' +
                              std::to_string(job.levels) + ' ' + std::to_string(job.window) +
                              " 100";
  for (auto _ : state) {
    double const seconds = std::atof(OutputOf(command).c_str());
    if (seconds <= 0) {
      state.SkipWithError("needs python3-skimage");
      break;
    }
    state.SetIterationTime(seconds * static_cast<double>(Voxels(job)));
  }
  std::filesystem::remove(path);
}

void Register(std::string const& row, StJob const& job, bool hasPeers) {
  auto const add = [&](char const* contestant, void (*function)(benchmark::State&, StJob const&)) {
    return benchmark::RegisterBenchmark((row + "/" + contestant).c_str(), function, job)
        ->Unit(benchmark::kMillisecond);
  };
  add("SeluUtils", Maps);
  if (!hasPeers) return;
  add("cut-outs", CutOuts)->UseManualTime()->Iterations(1);
  add("scikit-image", ScikitImage)->UseManualTime()->Iterations(1);
}

void RegisterAll() {
  std::vector<EnTextureFeature> const all(c_ibsiFeatures.begin(), c_ibsiFeatures.end());
  std::vector<EnTextureFeature> const without(c_ibsiFeatures.begin() + 1, c_ibsiFeatures.end());
  // Those of scikit-image; its energy is the root of the angular second moment.
  std::vector<EnTextureFeature> const six = {Contrast, Dissimilarity, InverseDifferenceMoment,
                                             Correlation, AngularSecondMoment};
  for (int const levels : {8, 32, 256})
    Register("512^2, window 15, the 6 of scikit-image, " + std::to_string(levels) +
                 " levels, noise",
             {512, 15, levels, false, six}, true);
  for (int const levels : {8, 32, 256})
    for (bool const isSmooth : {true, false})
      Register("512^2, window 15, 24 features, " + std::to_string(levels) + " levels, " +
                   (isSmooth ? "smooth" : "noise"),
               {512, 15, levels, isSmooth, without}, true);
  for (int64 const window : {5, 15, 31, 63, 127}) {
    auto const size = "512^2, 32 levels, noise, window " + std::to_string(window);
    Register(size + ", contrast", {512, window, 32, false, {Contrast}}, false);
    Register(size + ", joint entropy", {512, window, 32, false, {JointEntropy}}, false);
    Register(size + ", 25 features", {512, window, 32, false, all}, false);
  }
  StJob const job{512, 15, 256, false, without};
  std::string const byThreads = "512^2, window 15, 24 features, 256 levels, threads/";
  benchmark::RegisterBenchmark((byThreads + "SeluUtils").c_str(), MapsInThreads<1>, job)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime();
  benchmark::RegisterBenchmark((byThreads + "two threads").c_str(), MapsInThreads<2>, job)
      ->Unit(benchmark::kMillisecond)
      ->UseManualTime();
  Register("64^3, window 7^3, 32 levels, 13 directions, noise, 24 features",
           {64, 7, 32, false, without, true}, false);
}

[[maybe_unused]] bool const c_registered = (RegisterAll(), true);

} // namespace
