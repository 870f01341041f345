// Convex solids walked slice by slice against the half-spaces that bound them.
#include <SeluUtils/VolumeVisitor.h>

#include <SeluBase/Neighborhood.h>

#include "support/Random.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>
#include <vector>

using namespace ORVA;
using namespace test;
using test::CRandomNumbers;

namespace {

// Points with normal·p <= distance.
struct StHalfSpace {
  Point normal;
  int64 distance;
};

struct StSolid {
  PointList from, to; // edges
  std::vector<StHalfSpace> faces;
  Point low, high;
};

int64 Dot(Point const& a, Point const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point Cross(Point const& a, Point const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
int64 Length(Point const& a) { return std::abs(a.x) + std::abs(a.y) + std::abs(a.z); }
auto Key(Point const& p) { return std::tuple(p.x, p.y, p.z); }

// Whether all points within `reach` of p along each axis lie in the solid; for negative reach
// whether p is as near to each of its half-spaces.
bool IsWithin(StSolid const& solid, Point const& p, int64 reach) {
  return std::ranges::all_of(solid.faces, [&](auto const& face) {
    return Dot(face.normal, p) + reach * Length(face.normal) <= face.distance;
  });
}

void AddFace(StSolid& solid, Point const& normal, Point const& on, Point const& inside) {
  int64 const sign = Dot(normal, inside - on) > 0 ? -1 : 1;
  solid.faces.push_back({normal * sign, Dot(normal, on) * sign});
}

void Frame(StSolid& solid, PointList const& corners) {
  solid.low = solid.high = corners[0];
  for (auto const& p : corners)
    for (auto const axis : {&Point::x, &Point::y, &Point::z}) {
      solid.low.*axis = std::min(solid.low.*axis, p.*axis);
      solid.high.*axis = std::max(solid.high.*axis, p.*axis);
    }
}

// Moved to x >= 0.
PointList Shifted(PointList corners) {
  int64 const low = std::ranges::min_element(corners, {}, &Point::x)->x;
  for (auto& p : corners) p.x -= low;
  return corners;
}

StSolid Tetrahedron(PointList const& corners) {
  StSolid solid;
  for (std::size_t a = 0; a < 4; ++a)
    for (std::size_t b = a + 1; b < 4; ++b) {
      solid.from.push_back(corners[a]);
      solid.to.push_back(corners[b]);
    }
  for (std::size_t k = 0; k < 4; ++k) {
    Point const a = corners[(k + 1) % 4], b = corners[(k + 2) % 4], c = corners[(k + 3) % 4];
    AddFace(solid, Cross(b - a, c - a), a, corners[k]);
  }
  Frame(solid, corners);
  return solid;
}

StSolid Parallelepiped(std::array<Point, 3> const& edges) {
  PointList corners;
  for (std::size_t k = 0; k < 8; ++k) {
    Point corner;
    for (std::size_t e = 0; e < 3; ++e)
      if ((k >> e & 1) != 0) corner += edges[e];
    corners.push_back(corner);
  }
  corners = Shifted(corners);
  StSolid solid;
  for (std::size_t k = 0; k < 8; ++k)
    for (std::size_t e = 0; e < 3; ++e)
      if ((k >> e & 1) == 0) {
        solid.from.push_back(corners[k]);
        solid.to.push_back(corners[k | std::size_t{1} << e]);
      }
  for (std::size_t e = 0; e < 3; ++e) {
    Point const normal = Cross(edges[(e + 1) % 3], edges[(e + 2) % 3]);
    AddFace(solid, normal, corners[0], corners[7]);
    AddFace(solid, normal, corners[7], corners[0]);
  }
  Frame(solid, corners);
  return solid;
}

std::set<std::tuple<int64, int64, int64>> WalkedOnce(StSolid const& solid, int64 neighborhood,
                                                     bool border) {
  CBresenhamVolumeVisitor walker(PointList(solid.from), PointList(solid.to), neighborhood, border);
  PointList const points = Walk(walker);
  EXPECT_EQ(points.size(), walker.Steps());
  std::set<std::tuple<int64, int64, int64>> walked;
  for (auto const& p : points) EXPECT_TRUE(walked.insert(Key(p)).second) << "twice";
  return walked;
}

Point RandomPoint(CRandomNumbers& random, int64 low, int64 high) {
  return {random.Between(low, high), random.Between(low, high), random.Between(low, high)};
}

void ExpectExact(StSolid const& solid) {
  auto walked = WalkedOnce(solid, NEIGHBORHOOD_26, true);
  for (auto const& p : BoxPoints(solid.low, solid.high))
    ASSERT_EQ(walked.erase(Key(p)) == 1, IsWithin(solid, p, 0)) << testing::PrintToString(p);
  ASSERT_TRUE(walked.empty());
}

// Exact corners of all slices: what is walked besides the solid are points of the digital lines
// between them, at most half a voxel off along y or z.
void ExpectExactSlices(StSolid const& solid) {
  auto walked = WalkedOnce(solid, NEIGHBORHOOD_26, true);
  for (auto const& p : BoxPoints(solid.low, solid.high))
    if (IsWithin(solid, p, 0)) {
      ASSERT_EQ(walked.erase(Key(p)), 1u) << testing::PrintToString(p);
    }
  for (auto const& [x, y, z] : walked)
    for (auto const& [normal, distance] : solid.faces)
      ASSERT_LE(2 * (Dot(normal, Point(x, y, z)) - distance),
                std::max(std::abs(normal.y), std::abs(normal.z)))
          << testing::PrintToString(Point(x, y, z));
}

// Digital edges stray by less than a voxel, so that all is settled outside of one voxel's reach of
// the faces (two for axis moves, whose corners in a slice stray further).
void ExpectNear(StSolid const& solid, int64 neighborhood) {
  int64 const deep = neighborhood == NEIGHBORHOOD_26 ? 1 : 2;
  auto const withBorder = WalkedOnce(solid, neighborhood, true);
  auto const inside = WalkedOnce(solid, neighborhood, false);
  ASSERT_TRUE(std::ranges::includes(withBorder, inside));
  for (auto const& [x, y, z] : withBorder) ASSERT_TRUE(IsWithin(solid, Point(x, y, z), -1));
  for (auto const& p : BoxPoints(solid.low, solid.high)) {
    if (IsWithin(solid, p, deep)) {
      ASSERT_TRUE(withBorder.contains(Key(p))) << testing::PrintToString(p);
    }
    if (IsWithin(solid, p, deep + 2)) {
      ASSERT_TRUE(inside.contains(Key(p))) << testing::PrintToString(p);
    }
  }
}

} // namespace

TEST(VolumeVisitorProperty, OctahedraAreExact) {
  for (int64 r = 1; r <= 8; ++r) {
    SCOPED_TRACE(r);
    PointList const tips = {{0, r, r},     {2 * r, r, r}, {r, 0, r},
                            {r, 2 * r, r}, {r, r, 0},     {r, r, 2 * r}};
    StSolid solid;
    for (std::size_t a = 0; a < 6; ++a)
      for (std::size_t b = a + 1; b < 6; ++b)
        if (a / 2 != b / 2) {
          solid.from.push_back(tips[a]);
          solid.to.push_back(tips[b]);
        }
    for (int k = 0; k < 8; ++k)
      AddFace(solid, {(k & 1) != 0 ? 1 : -1, (k & 2) != 0 ? 1 : -1, (k & 4) != 0 ? 1 : -1},
              tips[(k & 1) != 0 ? 1 : 0], {r, r, r});
    Frame(solid, tips);
    ASSERT_NO_FATAL_FAILURE(ExpectExact(solid));
  }
}

TEST(VolumeVisitorProperty, EdgesAlongUnitMovesHaveExactSlices) {
  CRandomNumbers random;
  for (int k = 0; k < 1500; ++k) {
    std::array<Point, 3> edges;
    do {
      for (auto& edge : edges) edge = RandomPoint(random, -1, 1) * random.Between<int64>(1, 5);
    } while (Dot(edges[0], Cross(edges[1], edges[2])) == 0);
    SCOPED_TRACE(testing::PrintToString(edges));
    ASSERT_NO_FATAL_FAILURE(ExpectExactSlices(Parallelepiped(edges)));
  }
}

TEST(VolumeVisitorProperty, TetrahedraAreSettledAVoxelOffTheirFaces) {
  CRandomNumbers random;
  for (int k = 0; k < 1500; ++k) {
    PointList corners;
    do {
      corners.clear();
      for (int i = 0; i < 4; ++i) corners.push_back(RandomPoint(random, 0, 18));
    } while (
        Dot(corners[3] - corners[0], Cross(corners[1] - corners[0], corners[2] - corners[0])) == 0);
    SCOPED_TRACE(testing::PrintToString(corners));
    ASSERT_NO_FATAL_FAILURE(
        ExpectNear(Tetrahedron(corners), k % 2 == 0 ? NEIGHBORHOOD_26 : NEIGHBORHOOD_6));
  }
}

TEST(VolumeVisitorProperty, ParallelepipedsAreSettledAVoxelOffTheirFaces) {
  CRandomNumbers random;
  for (int k = 0; k < 1000; ++k) {
    std::array<Point, 3> edges;
    do {
      for (auto& edge : edges) edge = RandomPoint(random, -8, 8);
    } while (Dot(edges[0], Cross(edges[1], edges[2])) == 0);
    SCOPED_TRACE(testing::PrintToString(edges));
    ASSERT_NO_FATAL_FAILURE(
        ExpectNear(Parallelepiped(edges), k % 2 == 0 ? NEIGHBORHOOD_26 : NEIGHBORHOOD_6));
  }
}
