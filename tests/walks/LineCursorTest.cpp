// The walk by additions against exact fractions, and against the lists of moves.
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/LineMoves.h>
#include <SeluUtils/LineVisitor.h>

#include "support/Printers.h"
#include "support/Random.h"
#include "support/Walks.h"

#include <SeluBase/Neighborhood.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <vector>

using namespace ORVA;
using Impl::StStepPattern;
using Point = CTriple<int64>;

namespace {

__extension__ using uint128 = unsigned __int128;

// Steps taken after k of the moves, in exact arithmetic.
uint64 StepsAfter(uint64 k, uint64 steps, uint64 moves) {
  return static_cast<uint64>((uint128{2} * k * steps + moves) / (uint128{2} * moves));
}

void ExpectExact(uint64 k, uint64 steps, uint64 moves) {
  SCOPED_TRACE(testing::Message() << "move " << k << ", " << steps << " over " << moves);
  bool const isStep = StepsAfter(k + 1, steps, moves) != StepsAfter(k, steps, moves);
  auto const pattern = StStepPattern::Even(steps, moves);
  ASSERT_EQ(pattern.IsStep(static_cast<int64>(k)), isStep);
  ASSERT_EQ(pattern.Complement().IsStep(static_cast<int64>(k)), !isStep);
  ASSERT_EQ(pattern.Complement().Complement().IsStep(static_cast<int64>(k)), isStep);
}

constexpr uint64 c_longest = uint64{1} << 32; // a 4-connected line of two longest components

} // namespace

TEST(StepPattern, IsExactForAllShortLines) {
  for (uint64 moves = 1; moves <= 40; ++moves)
    for (uint64 steps = 0; steps <= moves; ++steps)
      for (uint64 k = 0; k < moves; ++k) ExpectExact(k, steps, moves);
}

TEST(StepPattern, IsExactToTheEndOfTheLongestLines) {
  for (uint64 const moves : {c_longest, c_longest - 1, c_longest - 2, c_longest - 3, c_longest / 2,
                             c_longest / 2 - 1, uint64{3'037'000'499}, uint64{4'294'967'291}})
    for (uint64 const steps : {uint64{0}, uint64{1}, uint64{2}, moves / 3, moves / 2 - 1, moves / 2,
                               moves / 2 + 1, moves - 2, moves - 1, moves})
      for (uint64 const k : {uint64{0}, uint64{1}, moves / 4, moves / 2 - 1, moves / 2,
                             moves / 2 + 1, moves - 2, moves - 1})
        ExpectExact(k, steps, moves);
}

// Where a step is due as narrowly as can be, or is missed so: 2 k steps + moves just at, below or
// above a multiple of 2 moves.
TEST(StepPattern, IsExactAtTheNarrowestMoves) {
  test::CRandomNumbers random;
  for (int trial = 0; trial < 2000; ++trial) {
    uint64 const moves =
        random.Between(c_longest - 1'000'000, c_longest - 1) | 1; // odd: has the finer fractions
    uint64 const k = moves - 1 - random.Between<uint64>(0, 1000);
    uint64 const t = random.Between<uint64>(1, moves - 2);
    // The number of steps whose line comes nearest to t - 1/2 after k + 1 moves.
    uint64 const nearest =
        static_cast<uint64>((uint128{2} * t - 1) * moves / (uint128{2} * (k + 1)));
    for (uint64 const steps : {nearest, nearest + 1})
      if (steps <= moves) ExpectExact(k, steps, moves);
  }
}

TEST(StepPattern, IsExactOnRandomLines) {
  test::CRandomNumbers random;
  for (int trial = 0; trial < 100'000; ++trial) {
    uint64 const moves = random.Between<uint64>(1, c_longest);
    uint64 const steps = random.Between<uint64>(0, moves);
    uint64 const k = random.Between<uint64>(0, moves - 1);
    ExpectExact(k, steps, moves);
  }
}

// Moves from point to point.
std::vector<Point> MovesOf(CBresenhamVisitor line) {
  std::vector<Point> moves;
  for (Point p = line.NextPoint(); line.MorePoints(); p = p + moves.back())
    moves.push_back(line.NextPoint() - p);
  return moves;
}

// With end points all moves of the list, without them all but the first and the last.
void ExpectMoves(Point const& d, int64 dimension, int64 code, std::span<Point const> moves) {
  SCOPED_TRACE(testing::Message() << testing::PrintToString(d) << " code " << code);
  Point const from(-3, 5, 2);
  ASSERT_TRUE(std::ranges::equal(MovesOf({from, from + d, dimension, code, true}), moves));
  CBresenhamVisitor const between(from, from + d, dimension, code, false);
  ASSERT_EQ(between.MorePoints(), moves.size() > 1);
  if (moves.size() < 2) return;
  ASSERT_EQ(between.TestNextPoint(), from + moves.front());
  ASSERT_TRUE(std::ranges::equal(MovesOf(between), moves.subspan(1, moves.size() - 2)));
}

TEST(LineWalk, TakesTheMovesOfEveryShortList) {
  for (Point const& d : test::BoxPoints({-6, -6, -6}, {6, 6, 6})) {
    for (int64 const code :
         {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
      Impl::CBresenhamVisitor3D const line(d, code);
      ASSERT_NO_FATAL_FAILURE(ExpectMoves(d, 3, code, line.Moves()));
    }
    for (int64 mask = 0; mask <= 7; ++mask) {
      Impl::CBresenhamVisitor3D const line(d, 0, mask);
      ASSERT_TRUE(std::ranges::equal(MovesOf({d, mask}), line.Moves())) << mask;
    }
    for (int64 const code : {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8}) {
      Impl::CBresenhamVisitor2D const line(d.x, d.y, code);
      std::vector<Point> moves;
      for (int64 i = 0; i < line.LastStep(); ++i) moves.push_back(line.Step(i));
      ASSERT_NO_FATAL_FAILURE(ExpectMoves({d.x, d.y, 0}, 2, code, moves));
    }
  }
}

TEST(LineWalk, WithAllDiagonalsTakesNoMemoryForItsMoves) {
  constexpr int64 c_far = 2'147'483'647;
  for (int64 const sign : {-1, 1})
    for (int64 const code : {NEIGHBORHOOD_26, NEIGHBORHOOD_14_1}) {
      Point const to(sign * c_far, sign * 7, sign * c_far);
      CBresenhamVisitor line(Point(), to, 3, code, true);
      EXPECT_EQ(line.Steps(), c_far);
      (void)line.NextPoint();
      EXPECT_EQ(line.NextPoint(), Point(sign, 0, sign));
    }
}

TEST(LineWalk, TakesTheMovesOfItsList) {
  test::CRandomNumbers random;
  for (int trial = 0; trial < 4000; ++trial) {
    Point const d(random.Between<int64>(-40, 40), random.Between<int64>(-40, 40),
                  random.Between<int64>(-40, 40));
    Point const from(random.Between<int64>(-40, 40), random.Between<int64>(-40, 40),
                     random.Between<int64>(-40, 40));
    for (int64 const code :
         {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8, NEIGHBORHOOD_6,
          NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
      SCOPED_TRACE(testing::Message() << testing::PrintToString(d) << " code " << code);
      bool const isFlat = code <= NEIGHBORHOOD_8;
      Impl::CBresenhamVisitor2D const flat =
          isFlat ? Impl::CBresenhamVisitor2D(d.x, d.y, code) : Impl::CBresenhamVisitor2D();
      Impl::CBresenhamVisitor3D const space =
          isFlat ? Impl::CBresenhamVisitor3D() : Impl::CBresenhamVisitor3D(d, code);
      int64 const moves = isFlat ? flat.LastStep() : space.LastStep();
      CBresenhamVisitor line(from, from + d, isFlat ? 2 : 3, code, true);
      ASSERT_EQ(line.LastStep(), moves);
      Point p = from;
      for (int64 i = 0; i < moves + 3; ++i) { // and stays at its end
        Point const move = isFlat ? flat.Step(i) : space.Step(i);
        ASSERT_EQ(line.Step(i), move) << i;
        ASSERT_EQ(line.MorePoints(), i <= moves) << i;
        ASSERT_EQ(line.TestNextPoint(), p) << i;
        ASSERT_EQ(line.NextPoint(), p) << i;
        p += move;
      }
    }
  }
}
