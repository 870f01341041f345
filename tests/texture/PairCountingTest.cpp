// Counting pairs of gray levels: both implementations against a lookup voxel by voxel.
#include "support/Random.h"

#include "Utils/Cooccurrence/PairCounting.h"
#include "Utils/Cooccurrence/Strides.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace {

using namespace ORVA::Impl;
using Triple = std::array<std::int64_t, 3>;
using Counts = std::vector<std::uint32_t>;

std::span<std::uint32_t, c_nCells> AsSpan(Counts& counts) {
  return std::span<std::uint32_t, c_nCells>(counts);
}

// ---------------------------------------------------------------------------------------------
// Blocks in memory of exactly their size, so that a sanitizer sees every byte read beside them.

struct StLayout {
  char const* name;
  std::array<int, 3> axes;  // from the innermost outwards
  std::array<int, 3> signs; // -1: the axis runs towards lower addresses, 0: it stays in place
  std::int64_t gap;         // voxels between neighbors along the innermost axis, plus one
  std::int64_t padding;     // bytes between neighbors along the other axes
  std::int64_t offset;      // bytes before the first voxel
};

constexpr StLayout c_layouts[] = {
    {"dense", {0, 1, 2}, {1, 1, 1}, 1, 0, 0},
    {"unaligned", {0, 1, 2}, {1, 1, 1}, 1, 0, 1},
    {"padded rows", {0, 1, 2}, {1, 1, 1}, 1, 3, 5},
    {"every third voxel", {0, 1, 2}, {1, 1, 1}, 3, 0, 0},
    {"mirrored", {0, 1, 2}, {-1, -1, -1}, 1, 0, 0},
    {"mirrored planes", {0, 1, 2}, {1, -1, -1}, 1, 7, 3},
    {"z innermost", {2, 1, 0}, {1, 1, 1}, 1, 0, 0},
    {"y innermost", {1, 0, 2}, {1, -1, 1}, 1, 1, 0},
    {"one row for all", {0, 1, 2}, {1, 0, 0}, 1, 0, 0},
    {"one voxel for all", {0, 1, 2}, {0, 0, 0}, 1, 0, 0},
};

struct StImage {
  std::vector<std::byte> memory;
  StGrayBlock block;
};

StImage MakeImage(StLayout const& layout, Triple extent, int bytesPerVoxel) {
  StGrayBlock block{.extent = extent, .bytesPerVoxel = bytesPerVoxel};
  std::int64_t step = layout.gap * bytesPerVoxel, lowest = 0, highest = 0;
  for (int const axis : layout.axes) {
    auto const k = static_cast<std::size_t>(axis);
    block.stride[k] = step * layout.signs[k];
    std::int64_t const last = block.stride[k] * std::max<std::int64_t>(extent[k] - 1, 0);
    (last < 0 ? lowest : highest) += last;
    step = step * std::max<std::int64_t>(extent[k], 1) + layout.padding;
  }
  bool const empty = std::ranges::any_of(extent, [](std::int64_t n) { return n == 0; });
  std::int64_t const bytes = empty ? 0 : highest - lowest + bytesPerVoxel;
  StImage image{std::vector<std::byte>(static_cast<std::size_t>(layout.offset + bytes)), block};
  image.block.base = image.memory.data() + layout.offset + (empty ? 0 : -lowest);
  return image;
}

StImage MakeNoise(StLayout const& layout, Triple extent, int bytes, test::CRandomNumbers& random) {
  StImage image = MakeImage(layout, extent, bytes);
  for (std::byte& byte : image.memory) byte = static_cast<std::byte>(random.Between(0, 255));
  return image;
}

// ---------------------------------------------------------------------------------------------
// The reference: every voxel and its partner by coordinates, the level by division.

std::uint64_t LevelAt(StGrayBlock const& block, Triple v) {
  std::byte const* const voxel =
      block.base + v[0] * block.stride[0] + v[1] * block.stride[1] + v[2] * block.stride[2];
  std::uint8_t one;
  std::uint16_t two;
  std::uint32_t four;
  switch (block.bytesPerVoxel) {
  case 1:
    std::memcpy(&one, voxel, 1);
    return one;
  case 2:
    std::memcpy(&two, voxel, 2);
    return two / 256U;
  default:
    std::memcpy(&four, voxel, 4);
    return four / 16777216U;
  }
}

bool Inside(StGrayBlock const& block, Triple v) {
  for (std::size_t k = 0; k < 3; ++k)
    if (v[k] < 0 || v[k] >= block.extent[k]) return false;
  return true;
}

// Takes each pair of the block out of the counts: nothing must remain.
void ExpectExactly(Counts counts, StGrayBlock const& block, Triple d) {
  for (std::int64_t z = 0; z < block.extent[2]; ++z)
    for (std::int64_t y = 0; y < block.extent[1]; ++y)
      for (std::int64_t x = 0; x < block.extent[0]; ++x) {
        Triple const v{x, y, z}, w{x + d[0], y + d[1], z + d[2]};
        if (Inside(block, w)) --counts[LevelAt(block, v) * 256 + LevelAt(block, w)];
      }
  static Counts const zero(c_nCells);
  EXPECT_TRUE(counts == zero) << "extent " << block.extent[0] << ' ' << block.extent[1] << ' '
                              << block.extent[2] << ", direction " << d[0] << ' ' << d[1] << ' '
                              << d[2] << ", " << block.bytesPerVoxel << " bytes per voxel";
}

// Each implementation, with one table and with two, in one batch and in several.
constexpr StPairOptions c_ways[] = {
    {.path = EPairPath::Fastest},
    {.path = EPairPath::Plain},
    {.path = EPairPath::Fastest, .twoTablesFrom = 0},
    {.path = EPairPath::Plain, .twoTablesFrom = 0},
    {.path = EPairPath::Fastest, .batch = 37, .twoTablesFrom = 0},
    {.path = EPairPath::Plain, .batch = 16},
    {.path = EPairPath::Fastest, .batch = 700},
};

void ExpectExactlyInEveryWay(StGrayBlock const& block, Triple d, StPairScratch& scratch) {
  for (StPairOptions const& way : c_ways) {
    Counts counts(c_nCells, 99);
    EXPECT_TRUE(CountPairs(block, d, AsSpan(counts), scratch, way));
    ExpectExactly(std::move(counts), block, d);
  }
}

// ---------------------------------------------------------------------------------------------

// All extents from 0 to 4, all directions that stay inside or lead just out.
TEST(PairCounting, TinyImagesInEveryDirection) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  Counts counts(c_nCells);
  for (std::int64_t code = 0; code < 125; ++code) {
    auto const [nx, ny, nz] = Triple{code % 5, code / 5 % 5, code / 25};
    StImage const image = MakeNoise(c_layouts[0], {nx, ny, nz}, 1, random);
    for (std::int64_t dx = -nx; dx <= nx; ++dx)
      for (std::int64_t dy = -ny; dy <= ny; ++dy)
        for (std::int64_t dz = -nz; dz <= nz; ++dz) {
          ASSERT_TRUE(CountPairs(image.block, {dx, dy, dz}, AsSpan(counts), scratch));
          ExpectExactly(counts, image.block, {dx, dy, dz});
          if (HasFailure()) return;
        }
  }
}

TEST(PairCounting, EveryLayoutAndType) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  Triple const extents[] = {{0, 3, 2}, {1, 1, 1}, {5, 4, 3}, {17, 3, 2}, {40, 5, 3}, {1, 50, 2}};
  Triple const directions[] = {{0, 0, 0},  {1, 0, 0},  {-1, 1, 0},
                               {0, -1, 1}, {2, 3, -1}, {-16, 0, 1}};
  for (StLayout const& layout : c_layouts) {
    SCOPED_TRACE(layout.name);
    for (int const bytes : {1, 2, 4})
      for (Triple const& extent : extents) {
        StImage const image = MakeNoise(layout, extent, bytes, random);
        for (Triple const& direction : directions)
          ExpectExactlyInEveryWay(image.block, direction, scratch);
      }
  }
}

TEST(PairCounting, EveryWidthAndAlignment) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  for (std::int64_t width = 1; width <= 100; ++width) {
    StLayout layout = c_layouts[1];
    layout.offset = width % 16;
    int const bytes = 1 << random.Between(0, 2);
    StImage image = MakeNoise(layout, {width, 3, 2}, bytes, random);
    if (width % 2 == 0) // few levels: runs of every length
      for (std::byte& byte : image.memory) byte &= std::byte{1};
    Triple const d{random.Between<std::int64_t>(-3, 3), random.Between<std::int64_t>(-1, 1), 1};
    ExpectExactlyInEveryWay(image.block, d, scratch);
  }
}

// The voxels of a pair in every order of the axes: each direction to a neighbor, and its opposite.
std::vector<Triple> NeighborDirections() {
  std::vector<Triple> all;
  for (std::int64_t dz = -1; dz <= 1; ++dz)
    for (std::int64_t dy = -1; dy <= 1; ++dy)
      for (std::int64_t dx = -1; dx <= 1; ++dx)
        if (dx != 0 || dy != 0 || dz != 0) all.push_back({dx, dy, dz});
  return all;
}

// Rows that follow each other without a gap, and padded ones.
TEST(PairCounting, EveryLengthOfRowsInEveryDirection) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  Counts counts(c_nCells);
  std::vector<Triple> const directions = NeighborDirections();
  for (int const bytes : {1, 2, 4})
    for (std::int64_t width = 1; width <= 300; ++width) {
      StImage const image = MakeNoise(c_layouts[width % 2 + 1], {width, 9, 2}, bytes, random);
      // Every sixth direction, beginning elsewhere at each length.
      for (auto k = static_cast<std::size_t>(width) % 6; k < directions.size(); k += 6) {
        Triple const& d = directions[k];
        EPairPath const path = random.Between(0, 9) == 0 ? EPairPath::Plain : EPairPath::Fastest;
        ASSERT_TRUE(CountPairs(image.block, d, AsSpan(counts), scratch, {.path = path}));
        ExpectExactly(counts, image.block, d);
        if (HasFailure()) return;
      }
    }
}

// Rows are written by whole blocks where other rows follow them: none may read beyond the last row.
TEST(PairCounting, ShortRowsOfEveryLengthAndNumber) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  Counts counts(c_nCells);
  for (std::int64_t x = 1; x <= 34; ++x)
    for (std::int64_t y = 1; y <= 19; ++y)
      for (int const bytes : {1, 2, 4}) {
        StImage const image = MakeNoise(c_layouts[0], {x, y, 2}, bytes, random);
        for (Triple const& d :
             {Triple{1, 0, 0}, Triple{-1, 1, 0}, Triple{2, -1, 1}, Triple{0, 3, -1}}) {
          ASSERT_TRUE(CountPairs(image.block, d, AsSpan(counts), scratch));
          ExpectExactly(counts, image.block, d);
        }
      }
}

// Stretches of equal voxels and of voxels that repeat after 2, 4 or 8, so that runs of equal pairs
// begin and end at every place, and what only looks like a run stands beside them.
TEST(PairCounting, RunsOfEveryLength) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  for (int const bytes : {1, 2, 4})
    for (std::int64_t longest : {2, 9, 20, 70, 600}) {
      StImage image = MakeImage(c_layouts[0], {331, 3, 2}, bytes);
      std::size_t left = 0, period = 1;
      std::array<std::byte, 8> levels{};
      for (std::size_t k = 0; k < image.memory.size(); ++k) {
        if (k % static_cast<std::size_t>(bytes) == 0 && left-- == 0) {
          left = random.Between<std::size_t>(0, static_cast<std::size_t>(longest));
          period = std::size_t{1} << random.Between<std::size_t>(0, 3);
          for (std::byte& level : levels) level = static_cast<std::byte>(random.Between(0, 3) * 85);
        }
        image.memory[k] = levels[k / static_cast<std::size_t>(bytes) % period];
      }
      for (Triple const& d : {Triple{1, 0, 0}, Triple{-1, -1, 1}, Triple{0, 0, -1}})
        ExpectExactlyInEveryWay(image.block, d, scratch);
    }
}

// One stretch of another level, in every place and of every length, in front of constant ground.
TEST(PairCounting, RunsAcrossTheBordersOfBlocks) {
  StPairScratch scratch;
  constexpr std::int64_t width = 70;
  for (std::int64_t begin = 0; begin < width; begin += 3)
    for (std::int64_t end = begin; end <= width; end += 5) {
      StImage image = MakeImage(c_layouts[0], {width, 2, 1}, 1);
      std::fill(image.memory.begin() + begin, image.memory.begin() + end, std::byte{200});
      for (Triple const& d : {Triple{0, 1, 0}, Triple{0, -1, 0}, Triple{1, 0, 0}})
        ExpectExactlyInEveryWay(image.block, d, scratch);
    }
}

// As large as images are, so that the choice of tables is the one of real work.
TEST(PairCounting, LargeImage) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  for (int const bytes : {1, 2, 4}) {
    StImage image = MakeNoise(c_layouts[0], {141, 71, 67}, bytes, random);
    std::fill_n(image.memory.begin(), image.memory.size() / 2, std::byte{7});
    for (Triple const& d : {Triple{1, 0, 0}, Triple{-1, 1, 1}, Triple{0, 0, 1}}) {
      Counts counts(c_nCells);
      ASSERT_TRUE(CountPairs(image.block, d, AsSpan(counts), scratch));
      ExpectExactly(std::move(counts), image.block, d);
    }
  }
}

TEST(PairCounting, ScratchMemoryIsOptional) {
  test::CRandomNumbers random;
  StImage const image = MakeNoise(c_layouts[0], {30, 4, 2}, 2, random);
  Counts counts(c_nCells, 5);
  ASSERT_TRUE(CountPairs(image.block, {1, 1, 1}, AsSpan(counts)));
  ExpectExactly(std::move(counts), image.block, {1, 1, 1});
}

TEST(PairCounting, OppositeDirectionsGiveTransposedCounts) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  for (int const bytes : {1, 2, 4}) {
    StImage const image = MakeNoise(c_layouts[2], {37, 11, 5}, bytes, random);
    for (int i = 0; i < 20; ++i) {
      Triple const d{random.Between<std::int64_t>(-37, 37), random.Between<std::int64_t>(-5, 5),
                     random.Between<std::int64_t>(-3, 3)};
      Counts there(c_nCells), back(c_nCells);
      ASSERT_TRUE(CountPairs(image.block, d, AsSpan(there), scratch));
      ASSERT_TRUE(CountPairs(image.block, {-d[0], -d[1], -d[2]}, AsSpan(back), scratch));
      for (std::size_t a = 0; a < 256; ++a)
        for (std::size_t b = 0; b < 256; ++b) ASSERT_EQ(there[a * 256 + b], back[b * 256 + a]);
    }
  }
}

TEST(PairCounting, DirectionsOutOfTheImageCountNothing) {
  constexpr std::int64_t low = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t high = std::numeric_limits<std::int64_t>::max();
  test::CRandomNumbers random;
  StImage const image = MakeNoise(c_layouts[0], {20, 6, 4}, 1, random);
  for (std::int64_t far : {std::int64_t{20}, std::int64_t{-20}, std::int64_t{2147483647},
                           std::int64_t{-2147483648}, std::int64_t{2147483648}, low, high})
    for (std::size_t axis = 0; axis < 3; ++axis) {
      Triple d{};
      d[axis] = far;
      Counts counts(c_nCells, 1);
      ASSERT_TRUE(CountPairs(image.block, d, AsSpan(counts)));
      EXPECT_EQ(std::ranges::count(counts, 0U), std::ptrdiff_t{c_nCells});
    }
}

TEST(PairCounting, NoDirectionCountsTheHistogram) {
  std::vector<std::uint16_t> const values{0x1234, 0x12FF, 0x1300, 0x00FF, 0xFFFF, 0x1200};
  StGrayBlock const block{
      reinterpret_cast<std::byte const*>(values.data()), {3, 2, 1}, {2, 6, 12}, 2};
  Counts counts(c_nCells);
  ASSERT_TRUE(CountPairs(block, {0, 0, 0}, AsSpan(counts)));
  EXPECT_EQ(counts[0x1212], 3U);
  EXPECT_EQ(counts[0x1313], 1U);
  EXPECT_EQ(counts[0x0000], 1U);
  EXPECT_EQ(counts[0xFFFF], 1U);
  EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0U), 6U);
}

TEST(PairCounting, AxesOfOneVoxelAreSortedBehindTheOthers) {
  std::vector<std::byte> const voxels(200);
  StGrayBlock block{voxels.data(), {1, 5, 3}, {1, 10, 50}, 1};
  Triple displacement{0, 2, 1};
  SortAxes(block, displacement);
  EXPECT_EQ(block.extent, (Triple{5, 3, 1}));
  EXPECT_EQ(block.stride, (Triple{10, 50, 1}));
  EXPECT_EQ(displacement, (Triple{2, 1, 0}));
}

// ---------------------------------------------------------------------------------------------
// Large counts, from one row that stands for many.

StGrayBlock Repeated(std::vector<std::byte> const& row, std::int64_t times) {
  auto const width = static_cast<std::int64_t>(row.size());
  return {row.data(), {width, times, 1}, {1, 0, 0}, 1};
}

TEST(PairCounting, LargestCountOf32Bits) {
  std::vector<std::byte> const row(65535, std::byte{3});
  Counts counts(c_nCells);
  ASSERT_TRUE(CountPairs(Repeated(row, 65537), {0, 0, 0}, AsSpan(counts)));
  EXPECT_EQ(counts[0x0303], 4294967295U);
}

TEST(PairCounting, OneMoreThan32BitsIsRefused) {
  std::vector<std::byte> const row(65536, std::byte{3});
  Counts counts(c_nCells);
  EXPECT_FALSE(CountPairs(Repeated(row, 65536), {0, 0, 0}, AsSpan(counts)));
}

TEST(PairCounting, MorePairsThan32BitsWhoseCellsAllFit) {
  std::vector<std::byte> row(65536, std::byte{3});
  std::fill(row.begin() + 32768, row.end(), std::byte{4});
  constexpr std::int64_t times = 80000; // 5.2e9 pairs
  Counts counts(c_nCells);
  ASSERT_TRUE(CountPairs(Repeated(row, times), {1, 0, 0}, AsSpan(counts)));
  EXPECT_EQ(counts[0x0303], 32767 * times);
  EXPECT_EQ(counts[0x0404], 32767 * times);
  EXPECT_EQ(counts[0x0304], times);
  EXPECT_EQ(std::ranges::count(counts, 0U), std::ptrdiff_t{c_nCells - 3});
}

// 2^32 pairs that fit, and after them a cell that does not.
TEST(PairCounting, CellTooLargeAfterTheFirstBatchIsRefused) {
  std::vector<std::byte> rows(2 * 65536, std::byte{3});
  std::fill_n(rows.begin(), 32768, std::byte{4});
  std::fill_n(rows.begin() + 32768, 32768, std::byte{5});
  StGrayBlock const block{rows.data(), {65536, 65536, 2}, {1, 0, 65536}, 1};
  Counts counts(c_nCells);
  EXPECT_FALSE(CountPairs(block, {0, 0, 0}, AsSpan(counts)));
}

// The scratch memory of a refused image serves the next one.
TEST(PairCounting, RecoversFromARefusedImage) {
  test::CRandomNumbers random;
  StPairScratch scratch;
  Counts counts(c_nCells);
  std::vector<std::byte> const row(1 << 20, std::byte{3});
  ASSERT_FALSE(CountPairs(Repeated(row, 4100), {0, 0, 0}, AsSpan(counts), scratch));
  StImage const image = MakeNoise(c_layouts[0], {50, 9, 3}, 1, random);
  ExpectExactlyInEveryWay(image.block, {1, 0, 1}, scratch);
}

} // namespace
