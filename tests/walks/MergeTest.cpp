// The guards of the merge of projections, which no line that the library builds can reach.
#include "Utils/BresenhamVisitorImpl/Merge.h"

#include "support/Errors.h"

#include <SeluBase/Neighborhood.h>

#include <gtest/gtest.h>

using namespace ORVA;

namespace {

constexpr char c_function[] = "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves";
constexpr char c_source[] = "src/Utils/BresenhamVisitorImpl";

using Projections = std::array<Impl::CBresenhamVisitor2D, 3>;

// Those of a line of 4, 3 and 2 moves along the axes.
Projections Matching() {
  auto const line = [](int64 a, int64 b) {
    return Impl::CBresenhamVisitor2D(a, b, NEIGHBORHOOD_4);
  };
  return {line(4, 3), line(4, 2), line(3, 2)};
}

std::vector<CTriple<int64>> Merged(int64 mask, CTriple<int64> lengths,
                                   Projections const& projections) {
  Impl::OctantMoves octant;
  for (int64 i = 0; i < 8; ++i)
    octant[static_cast<std::size_t>(i)] = {i & 1, i >> 1 & 1, i >> 2 & 1};
  std::vector<CTriple<int64>> moves;
  moves.reserve(16);
  Impl::MergeProjections(mask, lengths, projections, octant, moves);
  return moves;
}

} // namespace

TEST(Merge, MakesTheMovesOfMatchingProjections) {
  EXPECT_EQ(Merged(0, {4, 3, 2}, Matching()).size(), 9u);
}

TEST(Merge, AMaskWithoutAMergeIsRefused) {
  for (int64 const mask : {-1, 7, 8})
    test::ExpectError(
        [&] {
          Merged(mask, {4, 3, 2}, Matching());
        },
        "invalid situation", c_function, c_source);
}

TEST(Merge, ProjectionsTooShortForTheLineAreRefused) {
  for (int64 const mask : {0, 2, 5})
    test::ExpectError(
        [&] {
          Merged(mask, {4, 3, 2}, Projections());
        },
        "invalid situation in add case special", c_function, c_source);
}

TEST(Merge, MovesAreCountedForMasksThatThereAre) {
  EXPECT_EQ(Impl::MoveCount(0, {4, 3, 2}), 9);
  EXPECT_FALSE(Impl::MoveCount(-1, {4, 3, 2}));
  EXPECT_FALSE(Impl::MoveCount(8, {4, 3, 2}));
}
