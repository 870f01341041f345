#include <SeluUtils/BresenhamVisitorImpl.h>

#include <SeluBase/Neighborhood.h>

#include "support/AllocationLimit.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

using namespace ORVA;
using Impl::CBresenhamVisitor1D;
using Impl::CBresenhamVisitor2D;
using Impl::CBresenhamVisitor3D;
using namespace test;
using Triple = CTriple<int64>;
using Moves = std::vector<Triple>;

namespace {

char const c_source[] = "src/Utils/BresenhamVisitorImpl";
char const c_invalid2D[] = "invalid neighborhood behavior, only 4, 6.1, 6.2 and 8 valid";
char const c_invalid3D[] = "invalid neighborhood behavior, only 6, 14.1, 14.2 and 26 valid";

template <class Line>
Moves MovesOf(Line const& line) {
  Moves moves;
  for (int64 i = 0; i < line.LastStep(); ++i) moves.push_back(line.Step(i));
  return moves;
}

std::vector<int64> Decisions(CBresenhamVisitor2D const& line) { return line.Decisions(); }

Moves Mirrored(Moves moves, Triple const& signs) {
  for (Triple& move : moves) move = move * signs;
  return moves;
}

Triple const c_x(1, 0, 0), c_y(0, 1, 0), c_z(0, 0, 1);
Triple const c_xy(1, 1, 0), c_xz(1, 0, 1), c_yz(0, 1, 1), c_xyz(1, 1, 1);

} // namespace

TEST(Line1D, StepsAlongItsSign) {
  EXPECT_EQ(MovesOf(CBresenhamVisitor1D(3)), (Moves{c_x, c_x, c_x}));
  EXPECT_EQ(MovesOf(CBresenhamVisitor1D(-2)), (Moves{{-1, 0, 0}, {-1, 0, 0}}));
}

TEST(Line1D, HasNoStepsByDefaultOrForZero) {
  EXPECT_EQ(CBresenhamVisitor1D().LastStep(), 0);
  EXPECT_EQ(CBresenhamVisitor1D(0).LastStep(), 0);
  EXPECT_EQ(CBresenhamVisitor1D().Step(0), Triple());
}

TEST(Line1D, LengthIsClampedToThirtyTwoBits) {
  EXPECT_EQ(CBresenhamVisitor1D(c_max).LastStep(), 2147483647);
  EXPECT_EQ(CBresenhamVisitor1D(c_min).LastStep(), 2147483648);
  EXPECT_EQ(CBresenhamVisitor1D(c_min).Step(2147483647), Triple(-1, 0, 0));
  EXPECT_EQ(CBresenhamVisitor1D(c_min).Step(2147483648), Triple());
}

TEST(LineStep, PastTheEndIsTheNullMove) {
  EXPECT_EQ(CBresenhamVisitor1D(3).Step(3), Triple());
  EXPECT_EQ(CBresenhamVisitor2D(3, 1, NEIGHBORHOOD_8).Step(3), Triple());
  EXPECT_EQ(CBresenhamVisitor3D(3, 1, 2, NEIGHBORHOOD_26).Step(3), Triple());
  EXPECT_EQ(CBresenhamVisitor1D(3).Step(c_max), Triple());
  EXPECT_EQ(CBresenhamVisitor2D(3, 1, NEIGHBORHOOD_8).Step(c_max), Triple());
  EXPECT_EQ(CBresenhamVisitor3D(3, 1, 2, NEIGHBORHOOD_26).Step(c_max), Triple());
}

TEST(LineStep, NegativeIsAnErrorInEveryClass) {
  char const message[] = "Step i out of range";
  for (int64 const i : {int64{-1}, c_min}) {
    ExpectError([&] { (void)CBresenhamVisitor1D(3).Step(i); }, message,
                "ORVA::Impl::CBresenhamVisitor1D::Step", c_source);
    ExpectError([&] { (void)CBresenhamVisitor2D(3, 1, NEIGHBORHOOD_8).Step(i); }, message,
                "ORVA::Impl::CBresenhamVisitor2D::Step", c_source);
    ExpectError([&] { (void)CBresenhamVisitor3D(3, 1, 2, NEIGHBORHOOD_26).Step(i); }, message,
                "ORVA::Impl::CBresenhamVisitor3D::Step", c_source);
  }
}

TEST(Line2D, KnownLines) {
  struct StCase {
    int64 dx, dy, code;
    Moves moves;
  };
  Triple const left(-1, 0, 0), down(0, -1, 0), falling(1, -1, 0);
  StCase const cases[] = {
      {0, 0, NEIGHBORHOOD_8, {}},
      {0, 0, NEIGHBORHOOD_4, {}},
      {3, 1, NEIGHBORHOOD_8, {c_x, c_xy, c_x}},
      {3, 1, NEIGHBORHOOD_4, {c_x, c_y, c_x, c_x}},
      {3, 3, NEIGHBORHOOD_8, {c_xy, c_xy, c_xy}},
      {3, 3, NEIGHBORHOOD_6_1, {c_xy, c_xy, c_xy}},
      {3, 3, NEIGHBORHOOD_6_2, {c_y, c_x, c_y, c_x, c_y, c_x}},
      {3, -3, NEIGHBORHOOD_6_2, {falling, falling, falling}},
      {3, -3, NEIGHBORHOOD_6_1, {down, c_x, down, c_x, down, c_x}},
      {-2, 0, NEIGHBORHOOD_8, {left, left}},
      {0, -2, NEIGHBORHOOD_8, {down, down}},
      {-2, 0, NEIGHBORHOOD_4, {left, left}},
      {0, -2, NEIGHBORHOOD_4, {down, down}},
      {1, 3, NEIGHBORHOOD_8, {c_y, c_xy, c_y}},
  };
  for (StCase const& c : cases) {
    SCOPED_TRACE(testing::Message() << c.dx << ' ' << c.dy << " code " << c.code);
    EXPECT_EQ(MovesOf(CBresenhamVisitor2D(c.dx, c.dy, c.code)), c.moves);
    EXPECT_EQ(MovesOf(CBresenhamVisitor2D(Triple(c.dx, c.dy, 0), c.code)), c.moves);
  }
}

TEST(Line2D, TieTakesTheDiagonal) {
  EXPECT_EQ(MovesOf(CBresenhamVisitor2D(2, 1, NEIGHBORHOOD_8)), (Moves{c_xy, c_x}));
}

TEST(Line2D, TieTakesTheSideStepFirstWithoutDiagonals) {
  EXPECT_EQ(MovesOf(CBresenhamVisitor2D(1, 1, NEIGHBORHOOD_4)), (Moves{c_y, c_x}));
}

TEST(Line2D, DecisionValuesFollowTheRecurrence) {
  EXPECT_EQ(Decisions(CBresenhamVisitor2D(3, 1, NEIGHBORHOOD_8)), (std::vector<int64>{-1, 1, -3}));
  EXPECT_EQ(Decisions(CBresenhamVisitor2D(3, 1, NEIGHBORHOOD_4)),
            (std::vector<int64>{-2, 0, -6, -4}));
}

TEST(Line2D, DiagonalFollowsTheQuadrantInTheNeighborhoodsOfSix) {
  struct StCase {
    int64 code;
    bool rising, falling; // (1, 1) and (1, -1)
  };
  for (StCase const& c : {StCase{NEIGHBORHOOD_4, false, false},
                          {NEIGHBORHOOD_6_1, true, false},
                          {NEIGHBORHOOD_6_2, false, true},
                          {NEIGHBORHOOD_8, true, true}}) {
    SCOPED_TRACE(c.code);
    EXPECT_EQ(CBresenhamVisitor2D(1, 1, c.code).DiagonalIn(), c.rising);
    EXPECT_EQ(CBresenhamVisitor2D(-1, -1, c.code).DiagonalIn(), c.rising);
    EXPECT_EQ(CBresenhamVisitor2D(1, -1, c.code).DiagonalIn(), c.falling);
    EXPECT_EQ(CBresenhamVisitor2D(-1, 1, c.code).DiagonalIn(), c.falling);
    EXPECT_EQ(CBresenhamVisitor2D(0, 0, c.code).DiagonalIn(), c.rising); // zero counts as positive
  }
}

TEST(Line2D, UnknownNeighborhoodIsRefused) {
  for (int64 const code : {int64{-1}, int64{1}, int64{8}, NEIGHBORHOOD_6, NEIGHBORHOOD_26, c_max})
    ExpectError([&] { CBresenhamVisitor2D(1, 1, code); }, c_invalid2D,
                "ORVA::Impl::CBresenhamVisitor2D::Init", c_source);
}

TEST(Line2D, DifferenceInSpaceIsRefused) {
  ExpectError([] { CBresenhamVisitor2D(Triple(1, 2, 3), NEIGHBORHOOD_8); }, "invalid Dimension",
              "ORVA::Impl::CBresenhamVisitor2D::CBresenhamVisitor2D", c_source);
}

TEST(Line2D, RefilledDecisionsReplaceTheOldOnes) {
  CBresenhamVisitor2D line(5, 2, NEIGHBORHOOD_8);
  line.FillNabla(3, 1);
  EXPECT_EQ(MovesOf(line), (Moves{c_x, c_xy, c_x}));
  line.FillNabla(0, 0);
  EXPECT_EQ(line.LastStep(), 0);
  line.Init(-3, -1);
  EXPECT_EQ(MovesOf(line), Mirrored({c_x, c_xy, c_x}, {-1, -1, 1}));
}

TEST(Line2D, LengthOutsideThirtyTwoBitsIsRefused) {
  CBresenhamVisitor2D line(3, 1, NEIGHBORHOOD_8);
  char const function[] = "ORVA::Impl::CBresenhamVisitor2D::FillNabla";
  ExpectError<CExBadParam>([&] { line.FillNabla(-1, 0); },
                           "length -1 is not in the range 0 to 2147483648", function, c_source);
  ExpectError<CExBadParam>([&] { line.FillNabla(1, c_max); },
                           "length 9223372036854775807 is not in the range 0 to 2147483648",
                           function, c_source);
  EXPECT_EQ(MovesOf(line), (Moves{c_x, c_xy, c_x}));
}

TEST(Line2D, DefaultLineHasNoSteps) {
  CBresenhamVisitor2D const line;
  EXPECT_EQ(line.LastStep(), 0);
  EXPECT_EQ(line.Step(0), Triple());
  EXPECT_EQ(line.Neighborhood(), 0);
}

TEST(Line3D, KnownLines) {
  struct StCase {
    Triple d;
    int64 code;
    Moves moves;
  };
  StCase const cases[] = {
      {{0, 0, 0}, NEIGHBORHOOD_6, {}},
      {{0, 0, 0}, NEIGHBORHOOD_26, {}},
      {{4, 1, 2}, NEIGHBORHOOD_26, {c_xz, c_xy, c_xz, c_x}},
      {{1, 1, 1}, NEIGHBORHOOD_26, {c_xyz}},
      {{0, 0, 3}, NEIGHBORHOOD_26, {c_z, c_z, c_z}},
      {{2, 2, 2}, NEIGHBORHOOD_14_1, {c_xyz, c_xyz}},
      {{-2, -2, -2}, NEIGHBORHOOD_14_1, {{-1, -1, -1}, {-1, -1, -1}}},
      {{1, 1, 0}, NEIGHBORHOOD_14_2, {c_xy}},
      {{1, 0, 1}, NEIGHBORHOOD_14_2, {c_xz}},
      {{0, 1, -1}, NEIGHBORHOOD_14_2, {{0, 1, -1}}},
      {{0, 1, 1}, NEIGHBORHOOD_14_1, {c_yz}},
      {{1, 1, 1}, NEIGHBORHOOD_14_2, {c_xyz}},
      {{2, 2, 2}, NEIGHBORHOOD_14_2, {c_xyz, c_xyz}},
  };
  for (StCase const& c : cases) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(c.d) << " code " << c.code);
    EXPECT_EQ(MovesOf(CBresenhamVisitor3D(c.d, c.code)), c.moves);
    EXPECT_EQ(MovesOf(CBresenhamVisitor3D(c.d.x, c.d.y, c.d.z, c.code)), c.moves);
  }
}

TEST(Line3D, OctantChoosesMaskAndAxisOrder) {
  struct StCase {
    Triple d;
    int64 code, mask;
    Triple order;
  };
  StCase const cases[] = {
      {{3, 2, 1}, NEIGHBORHOOD_26, 7, {1, 2, 3}},
      {{3, 1, 2}, NEIGHBORHOOD_26, 7, {1, 3, 2}},
      {{2, 3, 1}, NEIGHBORHOOD_26, 7, {2, 1, 3}},
      {{1, 3, 2}, NEIGHBORHOOD_26, 7, {2, 3, 1}},
      {{2, 1, 3}, NEIGHBORHOOD_26, 7, {3, 1, 2}},
      {{1, 2, 3}, NEIGHBORHOOD_26, 7, {3, 2, 1}},
      {{2, 2, 2}, NEIGHBORHOOD_26, 7, {1, 2, 3}},
      {{1, 2, 2}, NEIGHBORHOOD_26, 7, {2, 3, 1}},
      {{2, 1, 2}, NEIGHBORHOOD_26, 7, {1, 3, 2}},
      {{3, -2, 5}, NEIGHBORHOOD_6, 0, {1, 2, 3}},
      {{-1, -1, 1}, NEIGHBORHOOD_14_1, 1, {1, 2, 3}},
      {{1, 1, -1}, NEIGHBORHOOD_14_1, 1, {1, 2, 3}},
      {{-1, 1, -1}, NEIGHBORHOOD_14_1, 1, {1, 3, 2}},
      {{2, -2, 2}, NEIGHBORHOOD_14_1, 1, {1, 3, 2}},
      {{-1, 1, 1}, NEIGHBORHOOD_14_1, 1, {3, 2, 1}},
      {{1, -1, -1}, NEIGHBORHOOD_14_1, 1, {3, 2, 1}},
      {{-1, -1, -2}, NEIGHBORHOOD_14_1, 7, {3, 1, 2}},
      {{1, 2, 1}, NEIGHBORHOOD_14_1, 7, {2, 1, 3}},
      {{-1, -1, 1}, NEIGHBORHOOD_14_2, 3, {1, 2, 3}},
      {{1, 1, -1}, NEIGHBORHOOD_14_2, 3, {1, 2, 3}},
      {{-1, 1, -1}, NEIGHBORHOOD_14_2, 3, {1, 3, 2}},
      {{1, -1, 1}, NEIGHBORHOOD_14_2, 3, {1, 3, 2}},
      {{-1, 1, 1}, NEIGHBORHOOD_14_2, 0, {1, 2, 3}},
      {{1, -1, -1}, NEIGHBORHOOD_14_2, 0, {1, 2, 3}},
      {{-1, -1, -1}, NEIGHBORHOOD_14_2, 6, {2, 1, 3}},
      {{1, 1, 1}, NEIGHBORHOOD_14_2, 6, {2, 1, 3}},
  };
  for (StCase const& c : cases) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(c.d) << " code " << c.code);
    CBresenhamVisitor3D const line(c.d, c.code);
    EXPECT_EQ(line.DiagonalMask(), c.mask);
    EXPECT_EQ(line.AxisOrder(), c.order);
  }
}

TEST(Line3D, MaskGivenDirectlyFixesTheNumberOfMoves) {
  struct StCase {
    int64 mask, moves;
  };
  // Lengths 3, 5, 2.
  for (StCase const& c : {StCase{0, 10}, {1, 7}, {2, 6}, {3, 5}, {4, 5}, {5, 6}, {6, 5}, {7, 5}}) {
    SCOPED_TRACE(c.mask);
    CBresenhamVisitor3D const line(Triple(3, -5, 2), 0, c.mask);
    EXPECT_EQ(line.LastStep(), c.moves);
    EXPECT_EQ(line.DiagonalMask(), c.mask);
    Triple end;
    for (Triple const& move : line.Moves()) end += move;
    EXPECT_EQ(end, Triple(3, -5, 2));
  }
}

TEST(Line3D, NeighborhoodIsNotLookedAtBesideAMask) {
  EXPECT_EQ(CBresenhamVisitor3D(Triple(2, 2, 2), -77, 7).LastStep(), 2);
  EXPECT_EQ(CBresenhamVisitor3D(Triple(2, 2, 2), -77, 7).Neighborhood(), -77);
}

TEST(Line3D, UnknownNeighborhoodOrMaskIsRefused) {
  char const function[] = "ORVA::Impl::CBresenhamVisitor3D::Init";
  for (int64 const code : {int64{-1}, NEIGHBORHOOD_4, NEIGHBORHOOD_8, int64{13}, c_max})
    ExpectError([&] { CBresenhamVisitor3D(1, 1, 1, code); }, c_invalid3D, function, c_source);
  for (int64 const mask : {int64{8}, c_max})
    ExpectError([&] { CBresenhamVisitor3D(Triple(1, 1, 1), 0, mask); },
                "invalid diagonal, only 0 till 7 valid", function, c_source);
  for (int64 const mask : {int64{-1}, c_min})
    ExpectError([&] { CBresenhamVisitor3D(Triple(1, 1, 1), 0, mask); },
                "invalid case, for m_DiagonalIn only 0 till 7 valid", function, c_source);
}

TEST(Line3D, DefaultLineHasNoStepsAndNoAxes) {
  CBresenhamVisitor3D line;
  EXPECT_EQ(line.LastStep(), 0);
  EXPECT_EQ(line.Step(0), Triple());
  EXPECT_EQ(line.AxisOrder(), Triple());
  char const message[] = "wrong value of m_Convert in CBresenhamVisitor3D";
  ExpectError(
      [&] {
        (void)line.ConvertFrom({1, 0, 0});
      },
      message, "ORVA::Impl::CBresenhamVisitor3D::ConvertFrom", c_source);
  ExpectError([&] { line.ComputeMoves(); }, message,
              "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves", c_source);
  ExpectError([&] { line.Init(1, 1, 1); }, c_invalid3D, "ORVA::Impl::CBresenhamVisitor3D::Init");
}

TEST(Line3D, InternalMovesTurnIntoRealAxes) {
  CBresenhamVisitor3D const line(-1, -2, 3, NEIGHBORHOOD_26); // order z, y, x
  EXPECT_EQ(line.ConvertFrom({1, 0, 0}), Triple(0, 0, 1));
  EXPECT_EQ(line.ConvertFrom({0, 1, 0}), Triple(0, -1, 0));
  EXPECT_EQ(line.ConvertFrom({0, 0, 1}), Triple(-1, 0, 0));
  EXPECT_EQ(line.ConvertFrom({c_min, 0, 0}), Triple(0, 0, c_min));
  EXPECT_EQ(line.ConvertFrom({0, c_min, 0}), Triple(0, c_min, 0)); // has no opposite
}

TEST(Line3D, RepeatedComputationStartsFromEmpty) {
  CBresenhamVisitor3D line(3, 2, 1, NEIGHBORHOOD_14_2);
  auto const moves = MovesOf(line);
  line.ComputeMoves();
  EXPECT_EQ(MovesOf(line), moves);
  line.Init(4, 1, 2);
  line.Init(3, 2, 1);
  EXPECT_EQ(MovesOf(line), moves);
  line.Init(1, 1, 1, 7);
  EXPECT_EQ(MovesOf(line), (Moves{c_xyz}));
}

TEST(Line3D, OnlyTheLowThirtyTwoBitsGiveTheLength) {
  int64 const beyond = int64{1} << 32;
  EXPECT_EQ(MovesOf(CBresenhamVisitor3D(beyond + 2, 1, 0, NEIGHBORHOOD_26)), (Moves{c_xy, c_x}));
  EXPECT_EQ(MovesOf(CBresenhamVisitor3D(-beyond, 0, 2, NEIGHBORHOOD_26)), (Moves{c_z, c_z}));
  EXPECT_EQ(CBresenhamVisitor3D(c_min, 0, 0, NEIGHBORHOOD_26).LastStep(), 0);
  EXPECT_EQ(CBresenhamVisitor3D(c_max, 0, 0, NEIGHBORHOOD_26).LastStep(), 1);
  // The sign is that of the whole component: positive, though the low half alone were negative.
  EXPECT_EQ(MovesOf(CBresenhamVisitor3D(beyond - 1, 0, 0, NEIGHBORHOOD_6)), (Moves{c_x}));
}

TEST(LineCopy, StepsIndependently) {
  CBresenhamVisitor3D first(3, 2, 1, NEIGHBORHOOD_26);
  CBresenhamVisitor3D const copy = first;
  auto const moves = MovesOf(first);
  first.Init(-1, 0, 0);
  EXPECT_EQ(MovesOf(copy), moves);
  first = copy;
  EXPECT_EQ(MovesOf(first), moves);
}

TEST(LineMemory, LineLongerThanMemoryFailsAndLeavesTheObjectAsItWas) {
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  constexpr int64 c_long = 2147483647;
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
    CBresenhamVisitor3D line(4, 1, -2, code);
    auto const moves = MovesOf(line);
    EXPECT_THROW(line.Init(-5, c_long, 3), std::bad_alloc);
    EXPECT_EQ(MovesOf(line), moves);
    EXPECT_EQ(line.ConvertFrom({1, 1, 1}), Triple(1, 1, -1));
  }
}

TEST(LineMemory, LineInAPlaneTakesNone) {
  test::CFailingAllocations const failing(0);
  CBresenhamVisitor2D flat(2147483647, 7, NEIGHBORHOOD_8);
  EXPECT_EQ(flat.LastStep(), 2147483647);
  EXPECT_EQ(flat.Step(153391688), c_x);
  EXPECT_EQ(flat.Step(153391689), c_xy); // (2^31 - 1) / 14 moves are taken
  flat.FillNabla(2147483648, 2147483648);
  EXPECT_EQ(flat.Step(2147483647), c_xy);
}

TEST(LineMemory, EveryAllocationMayFail) {
  CBresenhamVisitor3D line(4, 1, -2, NEIGHBORHOOD_14_2);
  auto const moves = MovesOf(line);
  {
    test::CFailingAllocations const failing(0); // that of its moves is the only one
    EXPECT_THROW(line.Init(30, 20, -10), std::bad_alloc);
  }
  EXPECT_EQ(MovesOf(line), moves);
  test::CFailingAllocations const failing(1);
  line.Init(30, 20, -10);
}

TEST(LinePrint, MovesStandOneALineUnderTheirHeader) {
  CBresenhamVisitor3D const line(2, -1, 0, NEIGHBORHOOD_26);
  testing::internal::CaptureStdout();
  line.PrintMoves();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Moves:\n(1, -1, 0)\n(1, 0, 0)\n");
}

TEST(LinePrint, ProjectionsStandUnderTheirPlanes) {
  testing::internal::CaptureStdout();
  CBresenhamVisitor3D(1, 1, -1, NEIGHBORHOOD_6).PrintProjMoves();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Moves in XY-plane:\n(0, 1, 0)\n(1, 0, 0)\n"
                                                    "Moves in XZ-plane:\n(0, 1, 0)\n(1, 0, 0)\n"
                                                    "Moves in YZ-plane:\n(0, 1, 0)\n(1, 0, 0)\n");
}

TEST(LinePrint, PlaneLineIsPrintedWithoutHeader) {
  testing::internal::CaptureStdout();
  CBresenhamVisitor2D(2, -1, NEIGHBORHOOD_8).PrintSteps();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "(1, -1, 0)\n(1, 0, 0)\n");
}
