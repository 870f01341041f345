// The random source beside the standard library's 64-bit Mersenne twister. Its 32-bit words are the
// high halves of 64-bit ones, as the source's are.
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

void TwisterHalf(benchmark::State& state) {
  std::mt19937_64 twister(1);
  for (auto _ : state) benchmark::DoNotOptimize(static_cast<std::uint32_t>(twister() >> 32));
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

BENCHMARK(SourceRand64)->Name("random 64-bit words/SeluUtils");
BENCHMARK(TwisterWord)->Name("random 64-bit words/std::mt19937_64");
BENCHMARK(SourceRand32)->Name("random 32-bit words/SeluUtils");
BENCHMARK(TwisterHalf)->Name("random 32-bit words/std::mt19937_64");
BENCHMARK(SourceBuffer)->Name("random bytes, 64 KiB/SeluUtils");
BENCHMARK(TwisterBuffer)->Name("random bytes, 64 KiB/std::mt19937_64");
