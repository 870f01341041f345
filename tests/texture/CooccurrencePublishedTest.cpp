// Published co-occurrence counts, typed in from their sources, against what the library counts.

#include "support/Matrix.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

using namespace ORVA;
using test::Matrix;

namespace {

template <std::size_t N>
using Table = std::array<std::array<std::uint64_t, N>, N>;

// The cells of the given gray levels, rows and columns in their order.
template <std::size_t N>
Table<N> Cells(Matrix const& matrix, std::array<std::size_t, N> const& levels) {
  Table<N> cells{};
  for (std::size_t a = 0; a < N; ++a)
    for (std::size_t b = 0; b < N; ++b) cells[a][b] = matrix[levels[a] * 256 + levels[b]];
  return cells;
}

template <std::size_t N>
Table<N> Symmetric(Table<N> const& one) {
  Table<N> both = one;
  for (std::size_t a = 0; a < N; ++a)
    for (std::size_t b = 0; b < N; ++b) both[a][b] += one[b][a];
  return both;
}

} // namespace

// Haralick, Shanmugam and Dinstein, "Textural Features for Image Classification", IEEE SMC-3
// (1973), figure 3: a 4 x 4 image of four gray levels and its (symmetric) matrices.

namespace {

struct StHaralick {
  char const* name;
  CTriple<long> direction;
  Table<4> symmetric;
};

constexpr StHaralick c_haralick[] = {
    {"0 degrees", {1, 0, 0}, {{{4, 2, 1, 0}, {2, 4, 0, 0}, {1, 0, 6, 1}, {0, 0, 1, 2}}}},
    {"90 degrees", {0, 1, 0}, {{{6, 0, 2, 0}, {0, 4, 2, 0}, {2, 2, 2, 2}, {0, 0, 2, 0}}}},
    {"135 degrees", {1, 1, 0}, {{{2, 1, 3, 0}, {1, 2, 1, 0}, {3, 1, 0, 2}, {0, 0, 2, 0}}}},
    {"45 degrees", {1, -1, 0}, {{{4, 1, 0, 0}, {1, 2, 2, 0}, {0, 2, 4, 1}, {0, 0, 1, 0}}}},
};

} // namespace

TEST(CooccurrencePublished, HaralickFigure3) {
  auto const image = test::MakeGrey8(CSize(4, 4), {0, 0, 1, 1, 0, 0, 1, 1, 0, 2, 2, 2, 2, 2, 3, 3});
  for (auto const& [name, direction, symmetric] : c_haralick) {
    auto const counts = test::CountWithLibrary(image, direction);
    EXPECT_EQ(Symmetric(Cells<4>(counts, {0, 1, 2, 3})), symmetric) << name;
  }
}

// The worked 2D example of the Image Biomarker Standardization Initiative (IBSI): gray levels 1 to
// 4, rows of the counted matrices by first level.

namespace {

struct StWorked {
  CTriple<long> direction;
  Table<4> counts, symmetric;
};

constexpr StWorked c_worked[] = {
    {{1, 0, 0},
     {{{0, 3, 0, 0}, {0, 1, 3, 1}, {0, 0, 1, 0}, {2, 1, 0, 0}}},
     {{{0, 3, 0, 2}, {3, 2, 3, 2}, {0, 3, 2, 0}, {2, 2, 0, 0}}}},
    {{1, 1, 0},
     {{{0, 2, 0, 0}, {0, 1, 2, 1}, {1, 0, 0, 0}, {1, 0, 1, 0}}},
     {{{0, 2, 1, 1}, {2, 2, 2, 1}, {1, 2, 0, 1}, {1, 1, 1, 0}}}},
    {{0, 1, 0},
     {{{1, 0, 1, 1}, {1, 2, 1, 0}, {1, 0, 1, 1}, {0, 1, 0, 1}}},
     {{{2, 1, 2, 1}, {1, 4, 1, 1}, {2, 1, 2, 1}, {1, 1, 1, 2}}}},
    {{1, -1, 0},
     {{{0, 1, 0, 1}, {1, 1, 1, 0}, {0, 0, 1, 0}, {0, 2, 1, 0}}},
     {{{0, 2, 0, 1}, {2, 2, 1, 2}, {0, 1, 2, 1}, {1, 2, 1, 0}}}},
};

} // namespace

TEST(CooccurrencePublished, IbsiWorkedExample) {
  auto const image = test::MakeGrey8(CSize(4, 4), {1, 2, 2, 3, 1, 2, 3, 3, 4, 2, 4, 1, 4, 1, 2, 3});
  for (auto const& [direction, counts, symmetric] : c_worked) {
    auto const cells = Cells<4>(test::CountWithLibrary(image, direction), {1, 2, 3, 4});
    EXPECT_EQ(cells, counts) << testing::PrintToString(direction);
    EXPECT_EQ(Symmetric(cells), symmetric) << testing::PrintToString(direction);
  }
}

// The IBSI digital phantom: a volume of 5 x 4 x 4 voxels with gray levels 1, 3, 4 and 6 inside a
// region of interest of 74 voxels, and 9 in one voxel outside it (data set ibsi_1_digital_phantom,
// CC BY 4.0; its published tables are those of C + transpose(C) inside the region).

namespace {

std::vector<std::uint8_t> const c_phantom = {
    1, 4, 4, 1, 1, 1, 4, 6, 1, 1, 4, 1, 6, 4, 1, 4, 4, 6, 4, 1, 1, 4, 4, 1, 1, 1, 1,
    6, 1, 1, 1, 1, 3, 1, 1, 4, 4, 6, 1, 1, 1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 9, 1,
    1, 1, 1, 6, 1, 1, 1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 6, 1, 1};
std::vector<std::uint8_t> const c_region = {
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 1,
    1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

struct StPhantom {
  CTriple<long> direction;
  Table<4> counts; // levels 1, 3, 4, 6 inside the region
};

constexpr StPhantom c_phantomInRegion[] = {
    {{1, 0, 0}, {{{25, 1, 5, 4}, {1, 0, 0, 0}, {5, 0, 6, 3}, {5, 0, 2, 0}}}},
    {{1, 1, 0}, {{{22, 1, 1, 4}, {1, 0, 0, 0}, {7, 0, 1, 3}, {1, 0, 2, 0}}}},
    {{0, 1, 0}, {{{32, 0, 4, 1}, {0, 0, 0, 1}, {6, 0, 3, 2}, {0, 1, 0, 2}}}},
    {{1, -1, 0}, {{{16, 0, 7, 2}, {1, 0, 0, 0}, {4, 1, 2, 1}, {6, 0, 1, 0}}}},
    {{1, 0, 1}, {{{17, 1, 3, 1}, {1, 0, 0, 0}, {5, 0, 4, 3}, {6, 0, 0, 0}}}},
    {{1, 1, 1}, {{{16, 0, 0, 3}, {1, 0, 0, 0}, {6, 1, 1, 1}, {3, 0, 0, 0}}}},
    {{0, 1, 1}, {{{26, 0, 1, 0}, {0, 0, 0, 1}, {7, 0, 1, 1}, {0, 1, 0, 1}}}},
    {{1, -1, 1}, {{{10, 0, 5, 1}, {1, 0, 0, 0}, {5, 1, 1, 0}, {5, 0, 0, 0}}}},
    {{1, 0, -1}, {{{19, 1, 5, 5}, {0, 0, 1, 0}, {2, 0, 4, 1}, {3, 0, 1, 0}}}},
    {{1, 1, -1}, {{{16, 1, 2, 4}, {0, 0, 1, 0}, {4, 0, 0, 2}, {0, 0, 1, 0}}}},
    {{0, 1, -1}, {{{21, 1, 6, 1}, {0, 0, 0, 1}, {3, 0, 1, 2}, {0, 0, 0, 1}}}},
    {{1, -1, -1}, {{{15, 1, 6, 2}, {1, 0, 0, 0}, {1, 0, 0, 1}, {3, 0, 1, 0}}}},
    {{0, 0, 1}, {{{33, 0, 0, 0}, {0, 0, 0, 0}, {5, 0, 8, 0}, {1, 1, 0, 4}}}}};

struct StWholePhantom {
  CTriple<long> direction;
  Table<5> counts; // levels 1, 3, 4, 6, 9 of all 80 voxels
};

constexpr StWholePhantom c_wholePhantom[] = {
    {{1, 0, 0},
     {{{28, 1, 5, 4, 1}, {1, 0, 0, 0, 0}, {7, 0, 6, 3, 0}, {5, 0, 2, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{1, 1, 0},
     {{{24, 1, 2, 4, 1}, {1, 0, 0, 0, 0}, {7, 0, 1, 3, 0}, {1, 0, 2, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{0, 1, 0},
     {{{37, 0, 5, 1, 1}, {0, 0, 0, 1, 0}, {6, 0, 3, 2, 0}, {0, 1, 0, 2, 0}, {0, 0, 0, 1, 0}}}},
    {{1, -1, 0},
     {{{21, 0, 7, 2, 1}, {1, 0, 0, 0, 0}, {4, 1, 2, 1, 0}, {6, 0, 1, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{1, 0, 1},
     {{{20, 1, 3, 1, 1}, {1, 0, 0, 0, 0}, {7, 0, 4, 3, 0}, {6, 0, 0, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{1, 1, 1},
     {{{18, 0, 0, 3, 1}, {1, 0, 0, 0, 0}, {6, 1, 1, 1, 0}, {3, 0, 0, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{0, 1, 1},
     {{{30, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {7, 0, 1, 1, 0}, {0, 1, 0, 1, 1}, {0, 0, 0, 1, 0}}}},
    {{1, -1, 1},
     {{{14, 0, 5, 1, 0}, {1, 0, 0, 0, 0}, {5, 1, 1, 0, 1}, {6, 0, 0, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{1, 0, -1},
     {{{22, 1, 5, 5, 1}, {0, 0, 1, 0, 0}, {3, 0, 4, 1, 0}, {3, 0, 1, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{1, 1, -1},
     {{{18, 1, 3, 4, 1}, {0, 0, 1, 0, 0}, {4, 0, 0, 2, 0}, {0, 0, 1, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{0, 1, -1},
     {{{26, 1, 7, 1, 1}, {0, 0, 0, 1, 0}, {3, 0, 1, 2, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 1, 0}}}},
    {{1, -1, -1},
     {{{17, 1, 7, 2, 1}, {1, 0, 0, 0, 0}, {1, 0, 0, 1, 0}, {3, 0, 1, 0, 0}, {1, 0, 0, 0, 0}}}},
    {{0, 0, 1},
     {{{38, 0, 0, 0, 0}, {0, 0, 0, 0, 1}, {6, 0, 8, 0, 0}, {1, 1, 0, 4, 0}, {1, 0, 0, 0, 0}}}}};

// The phantom with every voxel outside the region set to a gray level of its own: the pairs inside
// the region are those of the other levels.
CImage PhantomInRegion() {
  auto pixels = c_phantom;
  for (std::size_t k = 0; k < pixels.size(); ++k)
    if (c_region[k] == 0) pixels[k] = 255;
  return test::MakeGrey8(CSize(5, 4, 4), pixels);
}

constexpr std::array<std::size_t, 4> c_levels = {1, 3, 4, 6};

} // namespace

TEST(CooccurrencePublished, IbsiPhantomWholeVolumeInEveryDirection) {
  auto const image = test::MakeGrey8(CSize(5, 4, 4), c_phantom);
  for (std::size_t s = 0; s < 13; ++s) {
    auto const& [direction, counts] = c_wholePhantom[s];
    ASSERT_EQ(direction, CCooccurrence::m_cDirections[s]);
    auto const matrix = test::CountWithLibrary(image, direction);
    EXPECT_EQ(Cells<5>(matrix, {1, 3, 4, 6, 9}), counts) << s;
    auto const pairs =
        (5 - std::abs(direction.x)) * (4 - std::abs(direction.y)) * (4 - std::abs(direction.z));
    EXPECT_EQ(test::Total(matrix), static_cast<std::uint64_t>(pairs)) << s;
  }
}

TEST(CooccurrencePublished, IbsiPhantomInsideTheRegionInEveryDirection) {
  auto const image = PhantomInRegion();
  for (std::size_t s = 0; s < 13; ++s) {
    auto const& [direction, counts] = c_phantomInRegion[s];
    ASSERT_EQ(direction, CCooccurrence::m_cDirections[s]);
    EXPECT_EQ(Cells(test::CountWithLibrary(image, direction), c_levels), counts) << s;
  }
}

TEST(CooccurrencePublished, IbsiPhantomMergedOverAllDirections) {
  constexpr Table<4> published = {
      {{536, 14, 105, 61}, {14, 0, 5, 6}, {105, 5, 64, 28}, {61, 6, 28, 16}}};
  auto const image = PhantomInRegion();
  CImage out(IMAGE_GREY_32, CSize(13, 256, 256));
  CCooccurrence("texture", nullptr).ComputeMatrixAllDirections(out, image);
  Table<4> merged{};
  for (int64 s = 0; s < 13; ++s) {
    auto const symmetric = Symmetric(Cells(test::ReadMatrix(out, s), c_levels));
    for (std::size_t a = 0; a < 4; ++a)
      for (std::size_t b = 0; b < 4; ++b) merged[a][b] += symmetric[a][b];
  }
  EXPECT_EQ(merged, published);
}
