// The random source beside the standard library's 64-bit Mersenne twister.
#include <pxlib2core/Random.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using ORVA::CRandom;

constexpr std::size_t c_bufferBytes = 64 * 1024;

void SourceRand64(benchmark::State& state) {
  CRandom::Obj().Seed(1);
  for (auto _ : state) benchmark::DoNotOptimize(CRandom::Obj().Rand64());
  state.SetItemsProcessed(state.iterations());
}

void SourceRand32(benchmark::State& state) {
  CRandom::Obj().Seed(1);
  for (auto _ : state) benchmark::DoNotOptimize(CRandom::Obj().Rand32());
  state.SetItemsProcessed(state.iterations());
}

void SourceBuffer(benchmark::State& state) {
  CRandom::Obj().Seed(1);
  std::vector<std::uint8_t> buffer(c_bufferBytes);
  for (auto _ : state) {
    CRandom::Obj().Rand(buffer.data(), buffer.size());
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(c_bufferBytes));
}

void TwisterWord(benchmark::State& state) {
  std::mt19937_64 twister(1);
  for (auto _ : state) benchmark::DoNotOptimize(twister());
  state.SetItemsProcessed(state.iterations());
}

void TwisterBuffer(benchmark::State& state) {
  std::mt19937_64 twister(1);
  std::vector<std::uint8_t> buffer(c_bufferBytes);
  for (auto _ : state) {
    for (std::size_t at = 0; at < buffer.size(); at += 8) {
      std::uint64_t const word = twister();
      std::memcpy(buffer.data() + at, &word, 8);
    }
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(c_bufferBytes));
}

} // namespace

BENCHMARK(SourceRand64);
BENCHMARK(SourceRand32);
BENCHMARK(TwisterWord);
BENCHMARK(SourceBuffer);
BENCHMARK(TwisterBuffer);
