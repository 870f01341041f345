// Matrices of any number of levels, against a count pair by pair.

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Texture/PairCounter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using EnForm = CPairCounter::EnForm;
using Displacement = CTriple<int64>;
using Cells = std::map<std::pair<int, int>, uint64>;

namespace {

struct StPicture {
  CSize size;
  std::vector<std::uint16_t> levels;

  [[nodiscard]] int At(int64 x, int64 y, int64 z) const {
    return levels[static_cast<std::size_t>((z * size.y + y) * size.x + x)];
  }
  [[nodiscard]] CImage Image() const { return test::MakeImage(IMAGE_GREY_16, size, levels); }
  [[nodiscard]] CImage Image8() const {
    return test::MakeGrey8(size, std::vector<std::uint8_t>(levels.begin(), levels.end()));
  }
};

// Random levels in patches, so that runs of equal pairs occur as well as noise.
StPicture MakePicture(test::CRandomNumbers& random, CSize const& size, int n) {
  StPicture picture{size,
                    std::vector<std::uint16_t>(static_cast<std::size_t>(size.x * size.y * size.z))};
  bool const isNoisy = random.Between(0, 1) == 1;
  std::uint16_t level = 0;
  for (auto& pixel : picture.levels) {
    if (isNoisy || random.Between(0, 20) == 0)
      level = static_cast<std::uint16_t>(random.Between(0, n));
    pixel = level;
  }
  return picture;
}

struct StBox {
  CPos low{0, 0, 0}, high{1000, 1000, 1000};
};

Cells CountNaively(StPicture const& picture, Displacement const& d, StBox const& box = {}) {
  Cells cells;
  auto const& size = picture.size;
  for (int64 z = std::max(int64{0}, box.low.z); z < std::min(size.z, box.high.z); ++z)
    for (int64 y = std::max(int64{0}, box.low.y); y < std::min(size.y, box.high.y); ++y)
      for (int64 x = std::max(int64{0}, box.low.x); x < std::min(size.x, box.high.x); ++x) {
        int64 const u = x + d.x, v = y + d.y, w = z + d.z;
        if (u < 0 || v < 0 || w < 0 || u >= size.x || v >= size.y || w >= size.z) continue;
        int const i = picture.At(x, y, z), j = picture.At(u, v, w);
        if (i != 0 && j != 0) ++cells[{i, j}];
      }
  return cells;
}

Cells CellsOf(CPairCounter const& pairs) {
  Cells cells;
  for (auto const& cell : pairs.Cells()) cells[{cell.i, cell.j}] = cell.count;
  return cells;
}

uint64 Total(Cells const& cells) {
  uint64 total = 0;
  for (auto const& cell : cells) total += cell.second;
  return total;
}

CPairCounter Count(CLevelImage const& levels, Displacement const& d,
                   EnForm form = EnForm::Automatic) {
  CPairCounter pairs(levels.Levels(), form);
  pairs.Count(levels, d);
  return pairs;
}

Displacement AnyDisplacement(test::CRandomNumbers& random, int64 reach) {
  return {random.Between(-reach, reach), random.Between(-reach, reach),
          random.Between(-reach, reach)};
}

} // namespace

TEST(PairCounter, CountsLevelsOneDisplacementApart) {
  // The worked example of the IBSI manual: rows 1 2 2 3 / 1 2 3 3 / 4 2 4 1 / 4 1 2 3.
  auto const image = test::MakeGrey8(CSize(4, 4), {1, 2, 2, 3, 1, 2, 3, 3, 4, 2, 4, 1, 4, 1, 2, 3});
  CLevelImage const levels(image, 4);
  struct {
    Displacement d;
    std::vector<uint64> counts;
  } const cases[] = {{{1, 0, 0}, {0, 3, 0, 0, 0, 1, 3, 1, 0, 0, 1, 0, 2, 1, 0, 0}},
                     {{1, 1, 0}, {0, 2, 0, 0, 0, 1, 2, 1, 1, 0, 0, 0, 1, 0, 1, 0}},
                     {{0, 1, 0}, {1, 0, 1, 1, 1, 2, 1, 0, 1, 0, 1, 1, 0, 1, 0, 1}},
                     {{1, -1, 0}, {0, 1, 0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 2, 1, 0}}};
  for (auto const& test : cases) {
    EXPECT_EQ(Count(levels, test.d).ToDense(), test.counts);
    EXPECT_EQ(Count(levels, test.d, EnForm::Sparse).ToDense(), test.counts);
  }
}

TEST(PairCounter, LevelZeroIsOutside) {
  auto const image = test::MakeGrey8(CSize(5), {1, 0, 2, 2, 0});
  auto const pairs = Count(CLevelImage(image, 2), {1, 0, 0});
  EXPECT_EQ(pairs.ToDense(), (std::vector<uint64>{0, 0, 0, 1}));
  EXPECT_EQ(pairs.Pairs(), 1u);
  EXPECT_EQ(Count(CLevelImage(image, 2), {2, 0, 0})(1, 2), 1u);
}

TEST(PairCounter, DisplacementsThatLeadOutCountNothing) {
  auto const image = test::MakeGrey8(CSize(2, 2), {1, 1, 1, 1});
  constexpr int64 most = std::numeric_limits<int64>::max(),
                  least = std::numeric_limits<int64>::min();
  for (Displacement const& d :
       {Displacement(2, 0, 0), Displacement(0, -2, 0), Displacement(0, 0, 1),
        Displacement(most, least, least), Displacement(least, 0, 0)})
    EXPECT_EQ(Count(CLevelImage(image, 1), d).Pairs(), 0u);
  EXPECT_EQ(Count(CLevelImage(image, 1), {0, 0, 0}).Pairs(), 4u);
}

TEST(PairCounter, EveryFormAndNumberOfLevelsEqualsTheCountPairByPair) {
  test::CRandomNumbers random;
  for (int k = 0; k < 150; ++k) {
    constexpr std::array<int, 9> levelNumbers = {1, 2, 8, 32, 64, 65, 255, 256, 2000};
    int const n = levelNumbers[static_cast<std::size_t>(k) % levelNumbers.size()];
    CSize const size(random.Between(1, 70), random.Between(1, 9), random.Between(1, 5));
    auto const picture = MakePicture(random, size, n);
    auto const d = AnyDisplacement(random, 4);
    auto const expected = CountNaively(picture, d);
    for (EnForm const form : {EnForm::Automatic, EnForm::Dense, EnForm::Sparse}) {
      auto const pairs = Count(CLevelImage(picture.Image(), n), d, form);
      ASSERT_EQ(CellsOf(pairs), expected) << n << " levels";
      ASSERT_EQ(pairs.Pairs(), Total(expected));
    }
    if (n <= 255) {
      ASSERT_EQ(CellsOf(Count(CLevelImage(picture.Image8(), n), d)), expected);
    }
  }
}

TEST(PairCounter, ManyPairsUseTablesOfTheirOwnAndCountTheSame) {
  test::CRandomNumbers random;
  for (int const n : {1, 8, 100, 300}) {
    auto const picture = MakePicture(random, CSize(1000, 700), n);
    for (Displacement const& d : {Displacement(1, 0, 0), Displacement(-3, 2, 0)})
      EXPECT_EQ(CellsOf(Count(CLevelImage(picture.Image(), n), d)), CountNaively(picture, d)) << n;
  }
}

// Up to 256 levels in as many pairs are counted as bytes, whatever their pixels have.
TEST(PairCounter, LevelsThatFitBytesCountTheSameInManyPairs) {
  test::CRandomNumbers random;
  for (int const n : {130, 255, 256})
    for (bool const hasOutside : {false, true})
      for (Displacement const& d : {Displacement(1, 0, 0), Displacement(-2, 1, 1)}) {
        SCOPED_TRACE(testing::Message() << n << ' ' << hasOutside << ' ' << d.x);
        auto picture = MakePicture(random, CSize(131, 97, 26), n);
        if (!hasOutside)
          for (auto& level : picture.levels) level = std::max<std::uint16_t>(level, 1);
        picture.levels[5] = static_cast<std::uint16_t>(n);
        StBox const box{CPos(0, 1, 0), CPos(131, 97, 25)};
        auto const expected = CountNaively(picture, d, box);
        CPairCounter pairs(n);
        pairs.Count(CLevelImage(picture.Image(), n), d, box.low, box.high);
        EXPECT_EQ(CellsOf(pairs), expected);
        if (n > 255) continue;
        CPairCounter bytes(n);
        bytes.Count(CLevelImage(picture.Image8(), n), d, box.low, box.high);
        EXPECT_EQ(bytes, pairs);
      }
}

TEST(PairCounter, RowsOfAnyLengthAreCountedToTheirEnds) {
  test::CRandomNumbers random;
  for (int64 length = 1; length <= 70; ++length) {
    auto const picture = MakePicture(random, CSize(length, 3), 5);
    auto const expected = CountNaively(picture, {1, 1, 0});
    ASSERT_EQ(CellsOf(Count(CLevelImage(picture.Image(), 5), {1, 1, 0})), expected) << length;
    ASSERT_EQ(CellsOf(Count(CLevelImage(picture.Image8(), 5), {1, 1, 0})), expected) << length;
  }
}

TEST(PairCounter, LayoutDoesNotMatter) {
  test::CRandomNumbers random;
  CSize const size(7, 6, 5);
  std::array<int64, 3> const extent = {7, 6, 5};
  auto const picture = MakePicture(random, size, 9);
  std::array<std::size_t, 3> axes = {0, 1, 2}; // the order of the axes in memory, fastest first
  do {
    for (unsigned flips = 0; flips < 8; ++flips) {
      std::array<int64, 3> strides{};
      int64 next = 2;
      for (std::size_t const axis : axes) {
        strides[axis] = (flips >> axis & 1U) != 0 ? -next : next;
        next *= extent[axis];
      }
      std::vector<std::uint16_t> pixels(picture.levels.size());
      int64 first = 0; // where voxel (0, 0, 0) stands, in bytes
      for (std::size_t axis = 0; axis < 3; ++axis)
        if (strides[axis] < 0) first -= strides[axis] * (extent[axis] - 1);
      for (int64 z = 0; z < 5; ++z)
        for (int64 y = 0; y < 6; ++y)
          for (int64 x = 0; x < 7; ++x)
            pixels[static_cast<std::size_t>(
                (first + x * strides[0] + y * strides[1] + z * strides[2]) / 2)] =
                static_cast<std::uint16_t>(picture.At(x, y, z));
      CLevelImage const levels(CImageView(IMAGE_GREY_16, size, pixels.data() + first / 2, strides),
                               9);
      auto const d = AnyDisplacement(random, 3);
      ASSERT_EQ(CellsOf(Count(levels, d)), CountNaively(picture, d));
    }
  } while (std::next_permutation(axes.begin(), axes.end()));
}

TEST(PairCounter, BoxesAddUpToTheWhole) {
  test::CRandomNumbers random;
  for (int k = 0; k < 60; ++k) {
    CSize const size(random.Between(1, 12), random.Between(1, 10), random.Between(1, 8));
    auto const picture = MakePicture(random, size, 6);
    CLevelImage const levels(picture.Image(), 6);
    auto const d = AnyDisplacement(random, 5);
    CPairCounter sum(6);
    for (int64 low = 0; low < size.z; low += 3) {
      StBox const box{{0, 0, low}, {1000, 1000, low + 3}};
      CPairCounter part(6, k % 2 == 0 ? EnForm::Dense : EnForm::Sparse);
      part.Count(levels, d, box.low, box.high);
      ASSERT_EQ(CellsOf(part), CountNaively(picture, d, box));
      sum += part;
    }
    ASSERT_EQ(sum, Count(levels, d));
  }
}

TEST(PairCounter, SlabsReadWithTheirHaloAddUpToTheWhole) {
  test::CRandomNumbers random;
  for (int k = 0; k < 100; ++k) {
    CSize const size(random.Between(1, 6), random.Between(1, 6), random.Between(1, 12));
    auto const picture = MakePicture(random, size, 4);
    CLevelImage const levels(picture.Image(), 4);
    auto const d = AnyDisplacement(random, 7); // halos wider than the slab, too
    CPairCounter sum(4);
    for (int64 low = 0, high = 0; low < size.z; low = high) {
      high = std::min(size.z, low + random.Between(1, 4));
      int64 const from = std::max(int64{0}, low + std::min(int64{0}, d.z));
      int64 const to = std::min(size.z, high + std::max(int64{0}, d.z));
      sum.Count(levels.Box({0, 0, from}, {size.x, size.y, to}), d, {0, 0, low - from},
                {size.x, size.y, high - from});
    }
    ASSERT_EQ(sum, Count(levels, d));
  }
}

TEST(PairCounter, OppositeDisplacementsGiveTransposedMatrices) {
  test::CRandomNumbers random;
  auto const picture = MakePicture(random, CSize(20, 20, 4), 30);
  for (EnForm const form : {EnForm::Dense, EnForm::Sparse}) {
    CLevelImage const levels(picture.Image(), 30);
    auto both = Count(levels, {1, -2, 1}, form);
    both.Count(levels, {-1, 2, -1});
    auto symmetric = Count(levels, {1, -2, 1}, form);
    symmetric.Symmetrize();
    EXPECT_EQ(both, symmetric);
    EXPECT_EQ(symmetric.Pairs(), 2 * Count(levels, {1, -2, 1}).Pairs());
  }
}

TEST(PairCounter, ListsAreMergedWhateverTheirLength) {
  // More different pairs than one buffer holds, in an order that is hard on any hash.
  CPairCounter dense(3000, EnForm::Dense), sparse(3000, EnForm::Sparse);
  test::CRandomNumbers random;
  auto const picture = MakePicture(random, CSize(2100, 2100), 3000);
  CLevelImage const levels(picture.Image(), 3000);
  for (Displacement const& d : {Displacement(1, 0, 0), Displacement(0, 1, 0)}) {
    dense.Count(levels, d);
    sparse.Count(levels, d);
  }
  EXPECT_FALSE(sparse.IsDense());
  EXPECT_EQ(dense.Pairs(), sparse.Pairs());
  EXPECT_EQ(dense, sparse);
  auto mixed = dense;
  mixed += sparse;
  auto other = sparse;
  other += dense;
  EXPECT_EQ(mixed, other);
}

TEST(PairCounter, The65535LevelsOfA16BitImage) {
  std::vector<std::uint16_t> pixels = {65535, 1, 65535, 1, 40000, 40000, 40000, 0, 65535};
  auto const image = test::MakeImage(IMAGE_GREY_16, CSize(9), pixels);
  auto const pairs = Count(CLevelImage(image), {1, 0, 0});
  EXPECT_FALSE(pairs.IsDense());
  EXPECT_EQ(CellsOf(pairs),
            (Cells{{{1, 40000}, 1}, {{1, 65535}, 1}, {{40000, 40000}, 2}, {{65535, 1}, 2}}));
  EXPECT_EQ(pairs(65535, 1), 2u);
  EXPECT_EQ(pairs(2, 1), 0u);
}

TEST(PairCounter, CellsOfMoreThan32BitsAreExact) {
  constexpr int levels = 400; // too many for several tables that would share the pairs
  std::vector<std::uint16_t> const row(65537, levels); // stands for all rows
  CImageView const view(IMAGE_GREY_16, CSize(65537, 65536), row.data(), {2, 0, 0});
  CPairCounter pairs(levels);
  pairs.Count(CLevelImage(view, levels), {1, 0, 0});
  EXPECT_EQ(pairs(levels, levels), uint64{1} << 32);
}

TEST(PairCounter, EqualsTheGivenCounterWhereLevelsAreItsOwn) {
  test::CRandomNumbers random;
  auto const picture = MakePicture(random, CSize(30, 20, 6), 255);
  CCooccurrence given("texture", nullptr);
  for (auto const& direction : CCooccurrence::m_cDirections) {
    CImage matrix(IMAGE_GREY_32, CSize(1, 256, 256));
    CTriple<long> d = direction;
    given.ComputeMatrix(matrix, picture.Image8(), &d);
    auto const counts = test::Pixels<std::uint32_t>(matrix); // y = i fastest, then z = j
    auto const pairs = Count(CLevelImage(picture.Image8(), 255), {d.x, d.y, d.z});
    for (int i = 1; i < 256; ++i)
      for (int j = 1; j < 256; ++j)
        ASSERT_EQ(pairs(i, j), counts[static_cast<std::size_t>(j * 256 + i)]) << i << ' ' << j;
  }
}

TEST(PairCounter, AddsSingleCellsAndClears) {
  for (EnForm const form : {EnForm::Dense, EnForm::Sparse}) {
    CPairCounter pairs(5, form);
    pairs.Add(5, 1, 3);
    pairs.Add(2, 2);
    pairs.Add(2, 2, 0);
    EXPECT_EQ(CellsOf(pairs), (Cells{{{2, 2}, 1}, {{5, 1}, 3}}));
    EXPECT_EQ(pairs.Pairs(), 4u);
    pairs.Clear();
    EXPECT_EQ(pairs, CPairCounter(5));
  }
}

TEST(PairCounter, RefusesWhatDoesNotFit) {
  ExpectError<CExBadParam>([] { CPairCounter(0); }, "0 levels are not from 1 to 65535");
  ExpectError<CExBadParam>([] { CPairCounter(65536); }, "65536 levels are not from 1 to 65535");
  ExpectError<CExBadParam>([] { CPairCounter(20000, EnForm::Dense); },
                           "a table of 20000 levels is too large");
  CPairCounter pairs(4);
  ExpectError<CExBadParam>([&] { (void)pairs(1, 5); }, "level 5 is not from 1 to 4");
  ExpectError<CExBadParam>([&] { (void)pairs(0, 1); }, "level 0 is not from 1 to 4");
  ExpectError<CExBadParam>([&] { pairs += CPairCounter(5); },
                           "matrices of 4 and 5 levels do not add up");
  auto const image = test::MakeGrey8(CSize(2), {1, 5});
  ExpectError<CExBadParam>(
      [&] {
        pairs.Count(CLevelImage(image), {1, 0, 0});
      },
      "an image of 5 levels does not fit a matrix of 4");
  ExpectError<CExBadParam>([&] { CLevelImage(image, 4); }, "the image has the level 5, above 4");
  constexpr uint64 most = std::numeric_limits<uint64>::max();
  pairs.Add(1, 1, most);
  std::string const text = std::to_string(most);
  ExpectError<CExBadParam>([&] { pairs.Add(1, 2); },
                           "1 more pairs than " + text + " are more than 2^64 - 1");
  ExpectError<CExBadParam>([&] { pairs.Symmetrize(); },
                           text + " more pairs than " + text + " are more than 2^64 - 1");
  EXPECT_EQ(pairs.Pairs(), most);
}

// ---------------------------------------------------------------------------------------------

TEST(Displacements, NeighborsAreThoseOfTheGivenClass) {
  EXPECT_EQ(NeighborDisplacements(1), (std::vector<Displacement>{{1, 0, 0}}));
  EXPECT_EQ(NeighborDisplacements(2, 3),
            (std::vector<Displacement>{{3, 0, 0}, {3, 3, 0}, {0, 3, 0}, {3, -3, 0}}));
  EXPECT_EQ(NeighborDisplacements(3).size(), 13u);
  EXPECT_EQ(NeighborDisplacements(3)[12], Displacement(0, 0, 1));
}

TEST(Displacements, ShellsHaveOneOfEachOppositePair) {
  for (int dimension = 1; dimension <= 3; ++dimension)
    for (int64 distance = 1; distance <= 4; ++distance) {
      std::set<std::tuple<int64, int64, int64>> both;
      auto const shell = ShellDisplacements(dimension, distance);
      for (auto const& d : shell) {
        EXPECT_EQ(std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)}), distance);
        both.insert({d.x, d.y, d.z});
        both.insert({-d.x, -d.y, -d.z});
      }
      auto const cube = [dimension](int64 side) {
        return dimension == 1 ? side : dimension == 2 ? side * side : side * side * side;
      };
      auto const expected =
          static_cast<std::size_t>(cube(2 * distance + 1) - cube(2 * distance - 1));
      EXPECT_EQ(both.size(), expected) << dimension << ' ' << distance;
      EXPECT_EQ(2 * shell.size(), expected);
    }
  EXPECT_EQ(ShellDisplacements(3, 2).size(), 49u);
}

TEST(Displacements, RefuseOtherDimensionsAndDistances) {
  ExpectError<CExBadParam>([] { (void)NeighborDisplacements(4); }, "dimension 4 is not 1, 2 or 3");
  ExpectError<CExBadParam>([] { (void)NeighborDisplacements(3, 0); },
                           "distance 0 is not from 1 to 2147483647");
  ExpectError<CExBadParam>([] { (void)ShellDisplacements(3, 1001); },
                           "distance 1001 is not from 1 to 1000");
}

TEST(LevelImage, TakesTheGreatestPixelAsItsLevels) {
  EXPECT_EQ(CLevelImage(test::MakeGrey8(CSize(3), {0, 7, 2})).Levels(), 7);
  EXPECT_EQ(CLevelImage(test::MakeGrey8(CSize(3), {0, 0, 0})).Levels(), 1);
  EXPECT_EQ(CLevelImage(CImage(IMAGE_GREY_16, CSize(0, 3))).Levels(), 1);
  ExpectError<CExBadParam>([] { CLevelImage(CImage(IMAGE_GREY_F, CSize(3))); },
                           "levels need an image of 8 or 16 unsigned bits, not IMAGE_GREY_F");
  ExpectError<CExBadParam>([] { CLevelImage(CImage(IMAGE_GREY_8, CSize(3)), 0); },
                           "0 levels are not from 1 to 65535");
}

TEST(LevelImage, OutlivesTheImageThatItWasMadeOf) {
  CLevelImage levels;
  EXPECT_EQ(Count(levels, {1, 0, 0}).Pairs(), 0u);
  {
    auto const image = test::MakeGrey8(CSize(2, 2), {1, 2, 3, 4});
    levels = CLevelImage(image);
  }
  EXPECT_EQ(levels.At({1, 1}), 4);
  EXPECT_EQ(test::Pixels<std::uint8_t>(levels.View()), (std::vector<std::uint8_t>{1, 2, 3, 4}));
  ExpectError<CExBadParam>(
      [&] {
        (void)levels.At({2, 0});
      },
      "position (2, 0, 0) is not inside the image");
}
