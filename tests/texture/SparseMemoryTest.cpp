// The memory that a list of cells takes follows the cells that occur, not the levels and not the
// pairs.
#include "support/Random.h"

#include <SeluUtils/Texture/PairCounter.h>
#include <pxlib2image/Image.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

// What is allocated now, and the most that was since it was last asked.
std::size_t s_bytes = 0, s_most = 0;

} // namespace

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* const memory = std::malloc(bytes != 0 ? bytes : 1);
  if (memory == nullptr) throw std::bad_alloc();
  s_bytes += ::malloc_usable_size(memory);
  s_most = std::max(s_most, s_bytes);
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) s_bytes -= ::malloc_usable_size(memory);
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  ::operator delete(memory);
}

namespace {

using namespace ORVA;

struct StMemory {
  std::size_t most, kept, cells;
};

StMemory MemoryOfCounting(CLevelImage const& levels) {
  std::size_t const before = s_bytes;
  s_most = s_bytes;
  CPairCounter pairs(65535);
  pairs.Count(levels, {1, 0, 0});
  StMemory memory{s_most - before, s_bytes - before, 0};
  pairs.ForEach([&](int, int, uint64) { ++memory.cells; });
  return memory;
}

constexpr std::size_t c_mebibyte = std::size_t{1} << 20U;
constexpr std::size_t c_cell = 12;

template <class Level>
CLevelImage MakeLevels(CSize const& size, Level levelAt) {
  CImage image(IMAGE_GREY_16, size);
  auto const pixels = image.CreateAccess(true).As<std::uint16_t>();
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 x = 0; x < size.x; ++x) pixels(x, y, z) = levelAt(x, y, z);
  return CLevelImage(image, 65535);
}

// A scan of 16 bits: smooth tissue, noise of some gray values, all levels as they are. 8 million
// pairs have a fraction of the 4 billion cells that a table would.
TEST(SparseMemory, FollowsTheCellsOfAScanWithAll16Bits) {
  test::CRandomNumbers random;
  auto const levels = MakeLevels(CSize(200, 200, 200), [&](int64 x, int64 y, int64 z) {
    double const tissue = 32768 + 10000 * (std::sin(0.03 * static_cast<double>(x)) +
                                           std::sin(0.02 * static_cast<double>(y)) +
                                           std::sin(0.04 * static_cast<double>(z)));
    return static_cast<std::uint16_t>(tissue + random.Between(-20, 20));
  });
  auto const memory = MemoryOfCounting(levels);
  EXPECT_GT(memory.cells, 500'000u);
  EXPECT_LE(memory.kept, memory.cells * c_cell + c_mebibyte);
  EXPECT_LE(memory.most, 3 * memory.cells * c_cell + 33 * c_mebibyte);
}

TEST(SparseMemory, DoesNotGrowWithThePairs) {
  auto const noise = [](int64 pairs) { // of four levels far apart
    test::CRandomNumbers random;
    return MakeLevels(CSize(1000, pairs / 1000), [&](int64, int64, int64) {
      return static_cast<std::uint16_t>(1 + 20000 * random.Between(0, 3));
    });
  };
  auto const few = MemoryOfCounting(noise(5'000'000)), many = MemoryOfCounting(noise(15'000'000));
  EXPECT_EQ(many.cells, 16u);
  EXPECT_LE(many.most, few.most + c_mebibyte);
  EXPECT_LE(many.kept, c_mebibyte);
}

// Of equal pairs side by side no more is kept than of others.
TEST(SparseMemory, DoesNotGrowWithRuns) {
  auto const stripes = [](int64 pairs) {
    return MakeLevels(CSize(1000, pairs / 1000), [](int64 x, int64 y, int64) {
      return static_cast<std::uint16_t>(1 + (x / 3 + y) % 2 * 40000);
    });
  };
  auto const few = MemoryOfCounting(stripes(4'000'000)),
             many = MemoryOfCounting(stripes(16'000'000));
  EXPECT_EQ(many.cells, 4u);
  EXPECT_LE(many.most, few.most + c_mebibyte);
  EXPECT_LE(many.most, 64 * c_mebibyte);
}

} // namespace
