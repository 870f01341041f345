// A million directions from eight threads, the same in every run and for every number of threads.
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <pxlib2core/RandomSource.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <span>
#include <thread>
#include <vector>

using namespace ORVA;

static std::vector<CTriple<double>> MillionDirections(uint64 seed, unsigned threads) {
  constexpr std::size_t blocks = 1000, perBlock = 1000;
  CExactVonMisesFisher const bundle(20.0, CPolarCoordinates(1.0, 0.5));
  std::vector<CTriple<double>> directions(blocks * perBlock);
  std::atomic<std::size_t> next = 0;
  auto const work = [&] {
    for (std::size_t block = next++; block < blocks; block = next++) {
      CRandomSource source(seed, block);
      bundle.Fill(std::span(directions).subspan(block * perBlock, perBlock), source);
    }
  };
  {
    std::vector<std::jthread> workers;
    for (unsigned k = 0; k < threads; ++k) workers.emplace_back(work);
  }
  return directions;
}

int main() {
  auto const directions = MillionDirections(42, 8);
  bool const isRepeatable = directions == MillionDirections(42, 1);
  CTriple<double> sum;
  for (auto const& d : directions) sum += d;
  std::cout << "mean direction (" << sum.x / 1e6 << ", " << sum.y / 1e6 << ", " << sum.z / 1e6
            << "), " << (isRepeatable ? "the same" : "not the same") << " from one thread\n";
  return isRepeatable ? EXIT_SUCCESS : EXIT_FAILURE;
}
