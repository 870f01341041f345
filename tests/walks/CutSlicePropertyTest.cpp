// Slices on a lattice of two digital lines: how near they keep to their plane, and that they leave
// no part of it out.
#include <SeluUtils/CutSlice.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/PlaneSection.h>
#include <pxlib2core/Exception.h>

#include "support/Random.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

using namespace ORVA;
using test::CRandomNumbers;
using namespace test;

namespace {

// Distance of a point from a plane as the longest of its components along the axes.
double ChebyshevDistance(CTriple<double> const& n, double distance, Point const& p) {
  double const excess = n.x * static_cast<double>(p.x) + n.y * static_cast<double>(p.y) +
                        n.z * static_cast<double>(p.z) - distance;
  return std::abs(excess) / (std::abs(n.x) + std::abs(n.y) + std::abs(n.z));
}

// Whether the plane crosses the column of a voxel far enough inside the box: where rounding lifts
// the lattice out of the box, its points are skipped.
bool IsPlaneInside(double margin, CTriple<double> const& n, double distance, int axis,
                   Point const& p, Point const& size) {
  double const excess = n.x * static_cast<double>(p.x) + n.y * static_cast<double>(p.y) +
                        n.z * static_cast<double>(p.z) - distance;
  auto const height = [&](double along, int64 at, int64 extent) {
    double const crossing = static_cast<double>(at) - excess / along;
    return crossing >= margin && crossing <= static_cast<double>(extent - 1) - margin;
  };
  if (axis == 0) return height(n.x, p.x, size.x);
  return axis == 1 ? height(n.y, p.y, size.y) : height(n.z, p.z, size.z);
}

// Each walked voxel's surroundings marked.
class CSurroundings {
public:
  CSurroundings(Point const& size, PointList const& points, int64 reach)
      : m_Size(size), m_Near(static_cast<std::size_t>(size.x * size.y * size.z)) {
    for (auto const& p : points)
      for (auto const& d : BoxPoints({-reach, -reach, -reach}, {reach, reach, reach}))
        if (IsInside(p + d)) m_Near[Index(p + d)] = true;
  }
  bool Contains(Point const& p) const { return m_Near[Index(p)]; }

private:
  bool IsInside(Point const& p) const {
    return p.x >= 0 && p.y >= 0 && p.z >= 0 && p.x < m_Size.x && p.y < m_Size.y && p.z < m_Size.z;
  }
  std::size_t Index(Point const& p) const {
    return static_cast<std::size_t>((p.z * m_Size.y + p.y) * m_Size.x + p.x);
  }

  Point m_Size;
  std::vector<bool> m_Near;
};

struct StPlane {
  CTriple<double> normal;
  double distance;
};

StPlane RandomPlane(CRandomNumbers& random, Point const& size) {
  StPlane plane;
  bool const isGrid = random.Between(0, 1) == 1;
  auto const component = [&] {
    return isGrid ? static_cast<double>(random.Between(-3, 3)) : random.Real(-1, 1);
  };
  while (plane.normal == CTriple<double>()) plane.normal = {component(), component(), component()};
  // Through a point of the box, so that it is met.
  auto const along = [&](int64 extent) {
    return isGrid ? static_cast<double>(random.Between<int64>(0, extent - 1))
                  : random.Real(0, static_cast<double>(extent - 1));
  };
  plane.distance = plane.normal.x * along(size.x) + plane.normal.y * along(size.y) +
                   plane.normal.z * along(size.z);
  return plane;
}

} // namespace

// A plane times a number is the same plane; what rounding makes of its corners must not count.
TEST(CutSliceProperty, RoundingDoesNotChooseTheCorner) {
  CRandomNumbers random;
  int cut = 0;
  for (int k = 0; k < 3000; ++k) {
    Point const size(random.Between(2, 9), random.Between(2, 9), random.Between(2, 9));
    // Corners at thirds, never halfway between two voxels, where rounding has to choose.
    auto const component = [&] {
      return std::array{-3.0, -1.0, 0.0, 1.0, 3.0}[random.Between<std::size_t>(0, 4)];
    };
    CTriple<double> normal;
    while (normal == CTriple<double>()) normal = {component(), component(), component()};
    auto const distance = static_cast<double>(random.Between(-10, 30));
    auto const walk = [&](double factor) {
      CCutSlice slice(normal * factor, distance * factor, NEIGHBORHOOD_26);
      try {
        slice.SetImageSize(size);
      } catch (CException const&) {
        return PointList();
      }
      return Walk(slice);
    };
    auto const expected = walk(1);
    if (!expected.empty()) ++cut;
    for (double const factor : {0.1, 1.0 / 3, 1.0 / 7, 1e-3, 1.1})
      ASSERT_EQ(walk(factor), expected) << testing::PrintToString(normal) << ' ' << distance << ' '
                                        << testing::PrintToString(size) << " times " << factor;
  }
  EXPECT_GT(cut, 1000);
}

TEST(CutSliceProperty, KeepsToItsPlaneAndCoversIt) {
  // An origin, two edges and two lines, each rounded by up to half a voxel on an axis, could add up
  // to more; they never all point the same way.
  constexpr double stray = 2;
  constexpr int64 reach = 2;
  constexpr std::array<int64, 4> codes = {NEIGHBORHOOD_26, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2,
                                          NEIGHBORHOOD_6};
  CRandomNumbers random;
  for (int k = 0; k < 3000; ++k) {
    int64 const code = codes[static_cast<std::size_t>(k % 4)];
    Point const size(random.Between<int64>(1, 16), random.Between<int64>(1, 16),
                     random.Between<int64>(1, 16));
    auto const [normal, distance] = RandomPlane(random, size);
    SCOPED_TRACE(testing::Message() << testing::PrintToString(normal) << " = " << distance << " in "
                                    << testing::PrintToString(size) << " code " << code);
    CCutSlice slice(normal, distance, code);
    slice.SetImageSize(size);
    PointList const points = Walk(slice);
    ASSERT_EQ(points.size(), slice.Steps());
    for (auto const& p : points) {
      ASSERT_TRUE(p.x >= 0 && p.y >= 0 && p.z >= 0 && p.x < size.x && p.y < size.y && p.z < size.z);
      ASSERT_LE(ChebyshevDistance(normal, distance, p), stray) << testing::PrintToString(p);
    }
    CSurroundings const surroundings(size, points, reach);
    CPlaneSection section(normal, distance);
    section.SetImageSize(size);
    while (section.MorePoints()) {
      Point const p = section.NextPoint();
      if (!IsPlaneInside(stray, normal, distance, section.DominantAxis(), p, size)) continue;
      ASSERT_TRUE(surroundings.Contains(p)) << testing::PrintToString(p);
    }
  }
}
