// Runs are the points of a walk, row by row: for every walker, wherever the walk stands.
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Walker.h>

#include "support/AllocationLimit.h"
#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"
#include "support/Runs.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <ranges>
#include <vector>

using namespace ORVA;
using test::ExpectRunsArePoints;
using test::Point;
using test::PointList;
using test::Walk;

namespace {

constexpr std::array c_flat{NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8};
constexpr std::array c_solid{NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26};

class WalkerRuns : public testing::Test {
protected:
  int64 Between(int64 low, int64 high) { return m_Numbers.Between(low, high); }
  Point PointWithin(int64 reach) {
    return {Between(-reach, reach), Between(-reach, reach), Between(-reach, reach)};
  }
  template <class W>
  void Expect(W const& walker) {
    ExpectRunsArePoints(walker, m_Numbers.Generator());
  }

  test::CRandomNumbers m_Numbers;
};

StRun RunOf(Point const& first, int64 axis, int64 length) { return {first, axis, length}; }

template <class W>
std::vector<StRun> AllRuns(W walker) {
  std::vector<StRun> runs;
  for (StRun const& run : Runs(walker)) runs.push_back(run);
  return runs;
}

static_assert(RunWalker<CBresenhamVisitor> && RunWalker<CBresenhamVisitorSelect>);
static_assert(RunWalker<CBresenhamAreaVisitor> && RunWalker<CBresenhamVolumeVisitor>);
static_assert(RunWalker<CPolygonVisitor> && RunWalker<CPlaneSection> && RunWalker<CCutSlice>);
static_assert(RunWalker<CWindowVisitor> && RunWalker<CDirectionalVisitor>);
static_assert(RunWalker<CDeltaVisitor> && RunWalker<CParallelLineVisitor>);
static_assert(RunWalker<Impl::CVisitPoint>);
static_assert(std::ranges::input_range<CRunRange<CWindowVisitor>>);
static_assert(std::ranges::view<COwningRunRange<CWindowVisitor>>);
static_assert(std::ranges::sized_range<CPointRange<CWindowVisitor>>);
static_assert(!std::ranges::sized_range<CPointRange<CDirectionalVisitor>>); // it counts its lines

} // namespace

TEST_F(WalkerRuns, AreTheRowsOfAWindow) {
  EXPECT_EQ(AllRuns(CWindowVisitor({2, 3, 0}, {5, 4, 0})),
            (std::vector{RunOf({2, 3, 0}, 0, 4), RunOf({2, 4, 0}, 0, 4)}));
}

TEST_F(WalkerRuns, AreTheColumnsOfAPolygon) {
  EXPECT_EQ(AllRuns(CPolygonVisitor({{0, 0, 7}, {2, 0, 7}, {2, 4, 7}}, 2, NEIGHBORHOOD_8, true)),
            (std::vector{RunOf({0, 0, 7}, 1, 1), RunOf({1, 0, 7}, 1, 3), RunOf({2, 0, 7}, 1, 5)}));
}

TEST_F(WalkerRuns, AreThePiecesOfALineAlongItsMainAxis) {
  EXPECT_EQ(AllRuns(CBresenhamVisitor({1, 5, 0}, {9, 3, 0}, 2, NEIGHBORHOOD_8, true)),
            (std::vector{RunOf({1, 5, 0}, 0, 2), RunOf({3, 4, 0}, 0, 4), RunOf({7, 3, 0}, 0, 3)}));
  EXPECT_EQ(AllRuns(CBresenhamVisitor({0, 0, 0}, {0, 6, 0}, 2, NEIGHBORHOOD_8, false)),
            (std::vector{RunOf({0, 1, 0}, 1, 5)}));
  // Downward there are no rows.
  EXPECT_EQ(AllRuns(CBresenhamVisitor({2, 0, 0}, {0, 0, 0}, 1, 0, true)),
            (std::vector{RunOf({2, 0, 0}, 0, 1), RunOf({1, 0, 0}, 0, 1), RunOf({0, 0, 0}, 0, 1)}));
}

TEST_F(WalkerRuns, OfALineAreFoundWithoutSteppingAlong) {
  CBresenhamVisitor line({0, 0, 0}, {2'000'000'000, 1, 0}, 2, NEIGHBORHOOD_8, true);
  EXPECT_EQ(AllRuns(line), (std::vector{RunOf({0, 0, 0}, 0, 1'000'000'000),
                                        RunOf({1'000'000'000, 1, 0}, 0, 1'000'000'001)}));
}

TEST_F(WalkerRuns, OfShortLinesAreTheirPoints) {
  for (int64 x = -5; x <= 5; ++x)
    for (int64 y = -5; y <= 5; ++y)
      for (bool const ends : {true, false}) {
        for (int64 const code : c_flat)
          Expect(CBresenhamVisitor({0, 0, 0}, {x, y, 0}, 2, code, ends));
        if (y == 0) Expect(CBresenhamVisitor({3, 4, 5}, {x, 9, 9}, 1, 0, ends));
      }
  for (int64 x = -3; x <= 3; ++x)
    for (int64 y = -3; y <= 3; ++y)
      for (int64 z = -3; z <= 3; ++z)
        for (int64 const code : c_solid) {
          Expect(CBresenhamVisitor({1, 1, 1}, {x, y, z}, 3, code, true));
          Expect(CBresenhamVisitor({1, 1, 1}, {x, y, z}, 3, code, false));
        }
}

TEST_F(WalkerRuns, OfLongLinesAreTheirPoints) {
  for (int k = 0; k < 200; ++k) {
    Point const from = PointWithin(100), to = PointWithin(k % 2 == 0 ? 300 : 20);
    bool const ends = Between(0, 1) == 1;
    Expect(CBresenhamVisitor(from, to, 2, c_flat[static_cast<std::size_t>(Between(0, 3))], ends));
    Expect(CBresenhamVisitor(from, to, 3, c_solid[static_cast<std::size_t>(Between(0, 3))], ends));
    Expect(CBresenhamVisitor({0, 0, 0}, {1.0, 0.2, 0.01}, 200.0, 3, NEIGHBORHOOD_26, ends));
    Expect(CBresenhamVisitor(to, Between(0, 7)));
    CBresenhamVisitorSelect part(
        from, to, 2 + k % 2,
        k % 2 == 0 ? NEIGHBORHOOD_8 : c_solid[static_cast<std::size_t>(Between(0, 3))], ends);
    Expect(part); // its start alone
    part.SetImageSize(Point(Between(1, 200), Between(1, 200), Between(1, 200)));
    Expect(part);
  }
}

TEST_F(WalkerRuns, OfALineThatResetShortenedAreItsPoints) {
  CBresenhamVisitor line({0, 0, 0}, {30, 7, 0}, 2, NEIGHBORHOOD_8, false);
  std::size_t const points = Walk(CBresenhamVisitor(line)).size();
  line.Reset();
  EXPECT_EQ(test::WalkByRuns(CBresenhamVisitor(line)), Walk(CBresenhamVisitor(line)));
  EXPECT_EQ(line.Remaining(), points - 2);
  line.Rewind();
  EXPECT_EQ(line.Remaining(), points);
}

TEST_F(WalkerRuns, OfBoxesAreTheirPoints) {
  for (int k = 0; k < 60; ++k) {
    Point const low = PointWithin(2),
                high = low + Point(Between(0, 4), Between(0, 4), Between(0, 4));
    CWindowVisitor window(low, high);
    Expect(window);
    window.SetImageSize(Point(Between(0, 4), Between(0, 4), Between(0, 4)));
    Expect(window);
  }
  CWindowVisitor walked; // the one voxel at the origin
  EXPECT_EQ(walked.Remaining(), 0U);
  EXPECT_EQ(walked.NextRun().length, 0);
  walked.Rewind();
  EXPECT_EQ(Walk(walked), (PointList{{0, 0, 0}}));
  Expect(CWindowVisitor({1, 0, 0}, {0, 5, 5}));
}

TEST_F(WalkerRuns, OfARowBeyondTheLengthOfARunComeInPieces) {
  constexpr auto lowest = std::numeric_limits<int64>::min(),
                 highest = std::numeric_limits<int64>::max();
  CWindowVisitor window({lowest + 1, 0, 0}, {highest, 0, 0});
  EXPECT_EQ(AllRuns(window),
            (std::vector{RunOf({lowest + 1, 0, 0}, 0, highest), RunOf({0, 0, 0}, 0, highest),
                         RunOf({highest, 0, 0}, 0, 1)}));
}

TEST_F(WalkerRuns, OfUnitDirectionsAreTheirPoints) {
  for (int64 x = -1; x <= 1; ++x)
    for (int64 y = -1; y <= 1; ++y)
      for (int64 z = -1; z <= 1; ++z) {
        if (x == 0 && y == 0 && z == 0) continue;
        for (int k = 0; k < 8; ++k) {
          Point const size(Between(1, 4), Between(1, 4), Between(1, 4));
          CDirectionalVisitor lines({0, 0, 0}, {3, 3, 3}, {x, y, z});
          lines.SetImageSize(size);
          Expect(lines);
        }
      }
}

TEST_F(WalkerRuns, OfALineFromTheOriginThatWasNotPreparedAreItsPoints) {
  CDirectionalVisitor lines({-1, 0, 0}, {3, 0, 0}, {1, 0, 0});
  CDirectionalVisitor byRuns = lines;
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(test::WalkByRuns(byRuns), Walk(lines));
    lines = CDirectionalVisitor({1, 0, 0}, {3, 0, 0}, {1, 0, 0}); // enters the box from outside
    byRuns = lines;
  }
}

TEST_F(WalkerRuns, OfParallelLinesAreTheirPoints) {
  std::vector<CTriple<double>> const directions = {
      {1, 0, 0},      {0, 1, 0}, {0, 0, 1},      {-1, 0, 0},     {1, 0.2, 0.1},  {0.1, 1, 0.3},
      {0.3, 0.01, 1}, {1, 1, 1}, {-1, 0.2, 0.1}, {0.2, -1, 0.1}, {0.02, 0.1, -1}};
  for (auto const& direction : directions)
    for (int k = 0; k < 5; ++k) {
      Point const size(Between(1, 7), Between(1, 7), Between(1, 5));
      CParallelLineVisitor parallel(direction);
      parallel.SetImageSize(size);
      Expect(parallel);
      CDeltaVisitor delta(direction);
      try {
        delta.SetImageSize(size);
      } catch (CException const&) {
        continue; // too short for the image
      }
      Expect(delta);
    }
}

TEST_F(WalkerRuns, OfAreasAndPolygonsAreTheirPoints) {
  for (int k = 0; k < 150; ++k) {
    PointList corners;
    for (int64 i = Between(1, 5); i > 0; --i)
      corners.emplace_back(Between(0, 12), Between(0, 12), 4);
    bool const border = Between(0, 1) == 1;
    int64 const code = c_flat[static_cast<std::size_t>(Between(0, 3))];
    Expect(CPolygonVisitor(corners, 2, code, border));
    PointList oblique = corners;
    for (Point& p : oblique) p = {p.x + p.y, 2 * p.x - p.y, k % 2 == 0 ? p.y - p.x : 3};
    Expect(CPolygonVisitor(oblique, 3, c_solid[static_cast<std::size_t>(Between(0, 3))], border));
    PointList upright = corners;
    for (Point& p : upright) p = k % 2 == 0 ? Point(p.x, 3, p.y) : Point(3, p.x, p.y);
    Expect(CPolygonVisitor(upright, 3, NEIGHBORHOOD_26, border));
    for (PointList* list : {&corners, &oblique, &upright}) {
      try {
        Expect(CBresenhamAreaVisitor(PointList(*list), 3, NEIGHBORHOOD_26, border));
      } catch (CException const&) {
        continue; // an outline that it cannot pair
      }
    }
  }
}

TEST_F(WalkerRuns, OfSolidsAreTheirPoints) {
  for (int k = 0; k < 60; ++k) {
    PointList path;
    for (int64 i = Between(2, 6); i > 0; --i)
      path.emplace_back(Between(0, 9), Between(0, 9), Between(0, 9));
    path.push_back(path.front());
    Expect(
        CBresenhamVolumeVisitor(path, k % 3 == 0 ? NEIGHBORHOOD_6 : NEIGHBORHOOD_26, k % 2 == 0));
  }
}

TEST_F(WalkerRuns, OfPlanesAreTheirPoints) {
  for (int k = 0; k < 200; ++k) {
    CTriple<double> normal(static_cast<double>(Between(-4, 4)), static_cast<double>(Between(-4, 4)),
                           static_cast<double>(Between(-4, 4)));
    if (normal == CTriple<double>()) normal.z = 1;
    Point const size(Between(1, 9), Between(1, 9), Between(1, 9));
    auto const distance = static_cast<double>(Between(-10, 40));
    CPlaneSection section(normal, distance);
    Expect(section);
    section.SetImageSize(size);
    Expect(section);
    CCutSlice slice(normal, distance, c_solid[static_cast<std::size_t>(Between(0, 3))]);
    try {
      slice.SetImageSize(size);
    } catch (CException const&) {
      continue; // the plane does not meet the image
    }
    Expect(slice);
  }
}

TEST_F(WalkerRuns, TakeNoMemory) {
  CPolygonVisitor polygon({{0, 0, 0}, {40, 3, 0}, {20, 30, 0}}, 2, NEIGHBORHOOD_8, true);
  CBresenhamVisitor line({0, 0, 0}, {40, 3, 9}, 3, NEIGHBORHOOD_6, true);
  int64 points = 0;
  {
    test::CFailingAllocations const failing(0);
    for (auto const& [first, axis, length] : Runs(polygon)) points += length;
    for (auto const& [first, axis, length] : Runs(line)) points += length;
    for (auto const& run : Runs(CWindowVisitor({0, 0, 0}, {3, 3, 3}))) points += run.length;
  }
  EXPECT_EQ(points, static_cast<int64>(polygon.Steps()) + line.Steps() + 1 + 64);
}

TEST_F(WalkerRuns, RangeForNeedsNoFunction) {
  CPolygonVisitor polygon({{0, 0, 0}, {9, 3, 0}, {2, 8, 0}}, 2, NEIGHBORHOOD_8, true);
  PointList const all = Walk(CPolygonVisitor(polygon));
  PointList points;
  for (Point const& p : polygon) {
    points.push_back(p);
    if (points.size() == 5) break;
  }
  for (auto p : polygon) points.push_back(p); // goes on behind the fifth
  EXPECT_EQ(points, all);
  points.clear();
  for (auto p : CWindowVisitor({0, 0, 0}, {2, 1, 1})) points.push_back(p);
  EXPECT_EQ(points, test::BoxPoints({0, 0, 0}, {2, 1, 1}));
}

TEST_F(WalkerRuns, PointsKnowTheirNumber) {
  CBresenhamVisitor line({0, 0, 0}, {9, 3, 1}, 3, NEIGHBORHOOD_26, true);
  EXPECT_EQ(Points(line).size(), 10U);
  line.NextPoint();
  EXPECT_EQ(std::ranges::size(Points(line)), 9U);
  EXPECT_EQ(Points(CWindowVisitor({0, 0, 0}, {2, 1, 1})).size(), 12U);
}
