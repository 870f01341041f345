// What every window, directional and parallel-line walk must hold, over all small boxes and over
// many random ones.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>

#include "support/Random.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <set>
#include <string>
#include <tuple>

using namespace ORVA;
using namespace test;

namespace {

template <class Visit>
void ForAllPoints(int64 low, int64 high, Visit visit) {
  for (Point const& p : BoxPoints({low, low, low}, {high, high, high})) visit(p);
}

Point Last(Point const& extents) { return {extents.x - 1, extents.y - 1, extents.z - 1}; }

bool IsInside(Point const& p, Point const& low, Point const& high) {
  return low.x <= p.x && p.x <= high.x && low.y <= p.y && p.y <= high.y && low.z <= p.z &&
         p.z <= high.z;
}

PointList InsideOf(PointList const& points, Point const& low, Point const& high) {
  PointList inside;
  for (Point const& p : points)
    if (IsInside(p, low, high)) inside.push_back(p);
  return inside;
}

CTriple<double> RandomDirection(test::CRandomNumbers& random) {
  double const z = random.Real(-1, 1), phi = random.Real(0, 2 * std::numbers::pi);
  double const r = std::sqrt(1 - z * z);
  return {r * std::cos(phi), r * std::sin(phi), z};
}

// Main axis first, and the axes in which the delta walk hands its points out.
template <class T>
std::array<T, 3> LineAxes(int axis, CTriple<T> const& a) {
  if (axis == 0) return {a.x, a.y, a.z};
  if (axis == 1) return {a.y, a.x, a.z};
  return {a.z, a.x, a.y};
}
int MainAxis(CTriple<double> const& d) {
  double const x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
  return x >= y && x >= z ? 0 : y >= z ? 1 : 2;
}
Point HandedOutExtents(int axis, Point const& extents) {
  return axis == 2 ? Point(extents.y, extents.z, extents.x) : extents;
}

bool HasLine(CTriple<double> const& direction, Point const& extents) {
  int const axis = MainAxis(direction);
  double const diagonal = std::sqrt(
      static_cast<double>(extents.x * extents.x + extents.y * extents.y + extents.z * extents.z));
  double const moves = std::floor(std::abs(LineAxes(axis, direction)[0] * diagonal) + 0.5);
  return moves + 1 >= static_cast<double>(LineAxes(axis, extents)[0]);
}

// The delta walk is right where the direction's minor components are not negative; elsewhere it
// stays within the box and visits nothing twice.
void CheckDeltaWalk(CTriple<double> const& direction, Point const& extents) {
  SCOPED_TRACE(testing::Message() << testing::PrintToString(direction) << " in "
                                  << testing::PrintToString(extents));
  CDeltaVisitor lines(direction);
  if (!HasLine(direction, extents)) {
    ASSERT_ANY_THROW(lines.SetImageSize(extents));
    ASSERT_FALSE(lines.MorePoints());
    return;
  }
  lines.SetImageSize(extents);
  int const axis = MainAxis(direction);
  auto const points = Sorted(Walk(lines));
  auto const box = BoxPoints({0, 0, 0}, Last(HandedOutExtents(axis, extents)));
  auto const d = LineAxes(axis, direction);
  if (d[1] >= 0 && d[2] >= 0) {
    ASSERT_EQ(points, box);
  } else {
    ASSERT_EQ(std::ranges::adjacent_find(points), points.end());
    ASSERT_EQ(InsideOf(points, {0, 0, 0}, box.back()), points);
  }
}

void CheckParallelLines(CTriple<double> const& direction, Point const& extents) {
  SCOPED_TRACE(testing::Message() << testing::PrintToString(direction) << " in "
                                  << testing::PrintToString(extents));
  CParallelLineVisitor lines(direction);
  lines.SetImageSize(extents);
  auto const axis = static_cast<std::size_t>(MainAxis(direction));
  std::array<double, 3> const d = {direction.x, direction.y, direction.z};
  PointList points;
  while (lines.MorePoints()) {
    Point const p = lines.NextPoint();
    if (!lines.BorderPoint()) { // the next voxel of its line, the way the direction points
      Point const move = p - points.back();
      std::array<int64, 3> const m = {move.x, move.y, move.z};
      ASSERT_EQ(m[axis], d[axis] < 0 ? -1 : 1);
      for (std::size_t k = 0; k < 3; ++k)
        ASSERT_TRUE(m[k] == 0 || (std::abs(m[k]) == 1 && (m[k] < 0) == (d[k] < 0)));
    }
    points.push_back(p);
  }
  ASSERT_EQ(Sorted(points), BoxPoints({0, 0, 0}, Last(extents)));
}

} // namespace

TEST(WindowProperty, AllWindowsInASmallImageAreClippedRasterWalks) {
  Point const last(3, 3, 3);
  ForAllPoints(-1, 4, [&](Point const& low) {
    ForAllPoints(-1, 4, [&](Point const& high) {
      CWindowVisitor window(low, high);
      auto const whole = BoxPoints(low, high);
      ASSERT_EQ(Walk(window), whole);
      window.SetImageSize(CSize(4, 4, 4));
      auto const inside = InsideOf(whole, {0, 0, 0}, last);
      ASSERT_EQ(Walk(window), inside);
      if (!inside.empty()) {
        ASSERT_EQ(window.Steps(), inside.size());
      }
    });
  });
}

TEST(DirectionalProperty, AllDirectionsCoverAllBoxesInStraightLines) {
  ForAllPoints(1, 5, [](Point const& extents) {
    for (std::size_t k = 0; k < 26; ++k) {
      Point const d(CNeighborhood3dDiffN26::dx[k], CNeighborhood3dDiffN26::dy[k],
                    CNeighborhood3dDiffN26::dz[k]);
      SCOPED_TRACE(testing::Message()
                   << testing::PrintToString(d) << " in " << testing::PrintToString(extents));
      Point const last = Last(extents);
      CDirectionalVisitor lines(Point(0, 0, 0), last, d);
      lines.SetImageSize(extents);
      // Every line in turn, from its first voxel to the last one before it leaves the box.
      PointList points;
      std::size_t starts = 0;
      while (lines.MorePoints()) {
        points.push_back(lines.NextPoint());
        bool const begins =
            points.size() == 1 || !IsInside(points[points.size() - 2] + d, {}, last);
        if (begins) {
          ++starts;
          ASSERT_FALSE(IsInside(points.back() - d, {}, last));
        } else {
          ASSERT_EQ(points.back(), points[points.size() - 2] + d);
        }
      }
      ASSERT_FALSE(IsInside(points.back() + d, {}, last));
      // A first face of a single voxel ends the walk after its line.
      bool const firstOfPlus[3] = {d.x == 1, d.x != 1 && d.y == 1,
                                   d.x != 1 && d.y != 1 && d.z == 1};
      bool const hasPlus = firstOfPlus[0] || firstOfPlus[1] || firstOfPlus[2];
      std::size_t const axis = hasPlus ? (firstOfPlus[0]   ? 0
                                          : firstOfPlus[1] ? 1
                                                           : 2)
                                       : (d.x == -1   ? 0
                                          : d.y == -1 ? 1
                                                      : 2);
      std::array<int64, 3> face = {extents.x, extents.y, extents.z};
      face[axis] = 1;
      if (face[0] * face[1] * face[2] == 1) {
        ASSERT_EQ(starts, 1U);
      } else {
        ASSERT_EQ(Sorted(points), BoxPoints({0, 0, 0}, last));
      }
    }
  });
}

TEST(DirectionalProperty, BoxesAnywhereAreCoveredWithinTheImage) {
  test::CRandomNumbers random;
  for (int round = 0; round < 2000; ++round) {
    Point const low(random.Between(-4, 6), random.Between(-4, 6), random.Between(-4, 6));
    Point const high =
        low + Point(random.Between(2, 6), random.Between(2, 6), random.Between(2, 6));
    auto const k = random.Between<std::size_t>(0, 25);
    Point const d(CNeighborhood3dDiffN26::dx[k], CNeighborhood3dDiffN26::dy[k],
                  CNeighborhood3dDiffN26::dz[k]);
    CDirectionalVisitor lines(low, high, d);
    lines.SetDirection(d);
    ASSERT_EQ(Sorted(Walk(lines)), BoxPoints(low, high));
    lines.SetImageSize(CSize(6, 7, 8));
    auto const points = Sorted(Walk(lines));
    auto const inside = InsideOf(BoxPoints(low, high), {0, 0, 0}, {5, 6, 7});
    bool const isThin = !inside.empty() && [&] {
      Point const extents = inside.back() - inside.front();
      return extents.x == 0 || extents.y == 0 || extents.z == 0;
    }();
    if (isThin) {
      ASSERT_EQ(InsideOf(points, {0, 0, 0}, {5, 6, 7}), points);
      ASSERT_EQ(std::ranges::adjacent_find(points), points.end());
    } else {
      ASSERT_EQ(points, inside);
    }
  }
}

TEST(DeltaProperty, UnitDirectionsCoverAllSmallImages) {
  ForAllPoints(1, 5, [](Point const& extents) {
    for (std::size_t k = 0; k < 26; ++k) {
      CTriple<double> const d(static_cast<double>(CNeighborhood3dDiffN26::dx[k]),
                              static_cast<double>(CNeighborhood3dDiffN26::dy[k]),
                              static_cast<double>(CNeighborhood3dDiffN26::dz[k]));
      CheckDeltaWalk(d, extents);
      CheckParallelLines(d, extents);
    }
  });
}

TEST(DeltaProperty, RandomDirectionsCoverRandomImages) {
  test::CRandomNumbers random;
  for (int round = 0; round < 3000; ++round) {
    auto const direction = RandomDirection(random);
    Point const extents(random.Between(1, 12), random.Between(1, 12),
                        random.Between(0, 2) == 0 ? 1 : random.Between(1, 12));
    CheckDeltaWalk(direction, extents);
    CheckParallelLines(direction, extents);
  }
}

TEST(SelectedLineProperty, IsTheFirstRunOfInsidePoints) {
  test::CRandomNumbers random;
  for (int round = 0; round < 5000; ++round) {
    int64 const dimension = random.Between(1, 3);
    auto const component = [&] { return random.Between<int64>(-12, 18); };
    Point const from(component(), component(), component()),
        to(component(), component(), component());
    int64 const code = dimension == 3 ? 12 + 3 * random.Between(0, 3) : 3 * random.Between(0, 3);
    CBresenhamVisitor whole(from, to, dimension, code, true);
    CBresenhamVisitorSelect selected(from, to, dimension, code, true);
    selected.SetImageSize(CSize(7, 6, 5));
    Point const last(6, dimension >= 2 ? 5 : 1000, dimension >= 3 ? 4 : 1000);
    Point const first(0, dimension >= 2 ? 0 : -1000, dimension >= 3 ? 0 : -1000);
    auto const points = Walk(whole);
    auto const isInside = [&](Point const& p) { return IsInside(p, first, last); };
    auto const begin = std::ranges::find_if(points, isInside);
    auto const end = std::find_if_not(begin, points.end(), isInside);
    SCOPED_TRACE(testing::Message() << testing::PrintToString(from) << testing::PrintToString(to)
                                    << dimension << ' ' << code);
    ASSERT_EQ(Walk(selected),
              begin == points.end() ? PointList{points.back()} : PointList(begin, end));
  }
}
