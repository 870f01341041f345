// Plane sections against every voxel of the box asked in exact integers whether it belongs.
#include <SeluUtils/PlaneSection.h>

#include "support/Random.h"
#include "support/WalkTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <set>
#include <tuple>

using namespace ORVA;
using test::CRandomNumbers;
using namespace test;

namespace {

__extension__ using Wide = __int128;

// The plane normal·p = distance, in integers.
struct StPlane {
  std::array<int64, 3> normal;
  int64 distance;
};

std::ostream& operator<<(std::ostream& out, StPlane const& plane) {
  return out << plane.normal[0] << " x + " << plane.normal[1] << " y + " << plane.normal[2]
             << " z = " << plane.distance;
}

std::size_t DominantAxis(StPlane const& plane) {
  auto const [a, b, c] = plane.normal;
  if (std::abs(c) >= std::abs(a) && std::abs(c) >= std::abs(b)) return 2;
  return std::abs(b) >= std::abs(a) ? 1 : 0;
}

Wide Excess(StPlane const& plane, Point const& p) {
  return Wide{plane.normal[0]} * p.x + Wide{plane.normal[1]} * p.y + Wide{plane.normal[2]} * p.z -
         plane.distance;
}

// Within half a voxel of the plane along the dominant axis; halfway only above it.
bool Belongs(StPlane const& plane, std::size_t axis, Point const& p) {
  Wide const length = std::abs(plane.normal[axis]);
  Wide const above = 2 * Excess(plane, p) * (plane.normal[axis] < 0 ? -1 : 1);
  return -length < above && above <= length;
}

// Over the columns in raster order; a column can have one voxel only.
PointList ExactSection(StPlane const& plane, Point const& size) {
  std::size_t const axis = DominantAxis(plane);
  PointList points;
  for (auto const& p : BoxPoints({0, 0, 0}, size + Point(-1, -1, -1)))
    if (Belongs(plane, axis, p)) points.push_back(p);
  std::ranges::sort(points, {}, [axis](Point const& p) {
    return axis == 0 ? std::pair(p.z, p.y) : axis == 1 ? std::pair(p.z, p.x) : std::pair(p.y, p.x);
  });
  return points;
}

bool MeetsBox(StPlane const& plane, Point const& size) {
  bool isBelow = false, isAbove = false;
  for (int k = 0; k < 8; ++k) {
    Point const corner((k & 1) != 0 ? size.x - 1 : 0, (k & 2) != 0 ? size.y - 1 : 0,
                       (k & 4) != 0 ? size.z - 1 : 0);
    isBelow |= Excess(plane, corner) <= 0;
    isAbove |= Excess(plane, corner) >= 0;
  }
  return isBelow && isAbove;
}

Point RandomSize(CRandomNumbers& random, int64 largest) {
  return {random.Between<int64>(1, largest), random.Between<int64>(1, largest),
          random.Between<int64>(1, largest)};
}

// Normals whose components are often 0 or equal; some planes miss the box.
StPlane RandomPlane(CRandomNumbers& random, Point const& size, int64 largest) {
  StPlane plane{};
  while (plane.normal == std::array<int64, 3>{})
    for (auto& component : plane.normal) component = random.Between(-largest, largest);
  Point const through(random.Between<int64>(-1, size.x), random.Between<int64>(-1, size.y),
                      random.Between<int64>(-1, size.z));
  plane.distance = static_cast<int64>(Excess(plane, through)) + random.Between(-largest, largest);
  return plane;
}

CPlaneSection Section(StPlane const& plane, double unit) {
  return {CTriple<double>(static_cast<double>(plane.normal[0]) * unit,
                          static_cast<double>(plane.normal[1]) * unit,
                          static_cast<double>(plane.normal[2]) * unit),
          static_cast<double>(plane.distance) * unit};
}

void ExpectExact(CPlaneSection section, StPlane const& plane, Point const& size) {
  SCOPED_TRACE(testing::Message() << plane << " in " << testing::PrintToString(size));
  section.SetImageSize(size);
  PointList const exact = ExactSection(plane, size);
  ASSERT_EQ(section.Steps(), exact.size());
  ASSERT_EQ(Walk(section), exact);
  if (MeetsBox(plane, size)) {
    ASSERT_FALSE(exact.empty());
  }
}

} // namespace

TEST(PlaneSectionProperty, SmallNormalsAndTheirTies) {
  CRandomNumbers random;
  for (int k = 0; k < 6000; ++k) {
    Point const size = RandomSize(random, 9);
    StPlane const plane = RandomPlane(random, size, 6);
    ASSERT_NO_FATAL_FAILURE(ExpectExact(Section(plane, 1), plane, size));
  }
}

TEST(PlaneSectionProperty, RealNormalsAndDistances) {
  CRandomNumbers random;
  for (int k = 0; k < 4000; ++k) {
    Point const size = RandomSize(random, 9);
    StPlane const plane = RandomPlane(random, size, 1 << 30);
    ASSERT_NO_FATAL_FAILURE(ExpectExact(Section(plane, 0x1p-30), plane, size));
  }
}

TEST(PlaneSectionProperty, AllPlanesWithTinyNormalsInASmallBox) {
  Point const size(4, 3, 5);
  for (int64 a = -2; a <= 2; ++a)
    for (int64 b = -2; b <= 2; ++b)
      for (int64 c = -2; c <= 2; ++c)
        for (int64 d = -20; d <= 20; ++d) {
          StPlane const plane{{2 * a, 2 * b, 2 * c}, d};
          if (a == 0 && b == 0 && c == 0) continue;
          ASSERT_NO_FATAL_FAILURE(ExpectExact(Section(plane, 0.5), plane, size));
        }
}

TEST(PlaneSectionProperty, ThreePoints) {
  CRandomNumbers random;
  for (int k = 0; k < 4000; ++k) {
    Point const size = RandomSize(random, 9);
    std::array<Point, 3> points;
    for (auto& p : points)
      p = {random.Between<int64>(-4, 12), random.Between<int64>(-4, 12),
           random.Between<int64>(-4, 12)};
    Point const u = points[1] - points[0], v = points[2] - points[0];
    StPlane plane{{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x}, 0};
    if (plane.normal == std::array<int64, 3>{}) continue;
    plane.distance = static_cast<int64>(Excess(plane, points[0]));
    ASSERT_NO_FATAL_FAILURE(
        ExpectExact(CPlaneSection(points[0], points[1], points[2]), plane, size));
  }
}

// Numbers beyond any common unit: what rounding can move is left open, and nothing else.
TEST(PlaneSectionProperty, AnyDoubles) {
  CRandomNumbers random;
  constexpr double open = 1e-9; // in voxels
  for (int k = 0; k < 3000; ++k) {
    Point const size = RandomSize(random, 12);
    int const exponent = random.Between(-900, 900);
    auto const component = [&] {
      return std::ldexp(random.Real(-1, 1), exponent - random.Between(0, 40) * (k % 3));
    };
    CTriple<double> const normal(component(), component(), component());
    double const distance =
        normal.x * random.Real(0, 9) + normal.y * random.Real(0, 9) + normal.z * random.Real(0, 9);
    SCOPED_TRACE(testing::Message() << testing::PrintToString(normal) << " = " << distance);
    CPlaneSection section(normal, distance);
    section.SetImageSize(size);
    PointList const points = Walk(section);
    ASSERT_EQ(points.size(), section.Steps());
    auto const key = [](Point const& p) { return std::tuple(p.x, p.y, p.z); };
    std::set<std::tuple<int64, int64, int64>> walked;
    for (auto const& p : points) ASSERT_TRUE(walked.insert(key(p)).second);
    double const length = std::max({std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)});
    for (auto const& p : BoxPoints({0, 0, 0}, size + Point(-1, -1, -1))) {
      double const excess =
          std::abs(normal.x / length * static_cast<double>(p.x) +
                   normal.y / length * static_cast<double>(p.y) +
                   normal.z / length * static_cast<double>(p.z) - distance / length);
      if (excess < 0.5 - open) {
        ASSERT_TRUE(walked.contains(key(p))) << testing::PrintToString(p);
      }
      if (excess > 0.5 + open) {
        ASSERT_FALSE(walked.contains(key(p))) << testing::PrintToString(p);
      }
      walked.erase(key(p));
    }
    ASSERT_TRUE(walked.empty()); // what is left lay outside the box
  }
}

// Far beyond the reach of 64-bit products: columns checked one by one where they are met.
TEST(PlaneSectionProperty, LargeCoordinates) {
  CRandomNumbers random;
  constexpr int64 far = int64{1} << 28;
  for (int k = 0; k < 300; ++k) {
    std::array<Point, 3> points;
    for (auto& p : points)
      p = {random.Between<int64>(0, far), random.Between<int64>(0, far),
           random.Between<int64>(0, far)};
    Point const u = points[1] - points[0], v = points[2] - points[0];
    StPlane plane{{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x}, 0};
    std::size_t const axis = DominantAxis(plane);
    CPlaneSection section(points[0], points[1], points[2]);
    section.SetImageSize(Point(far + 1, far + 1, far + 1));
    ASSERT_EQ(section.DominantAxis(), static_cast<int>(axis));
    ASSERT_FALSE(section.empty());
    Point const origin = points[0]; // excess is taken from here, so that it stays small
    for (int i = 0; i < 500 && section.MorePoints(); ++i) {
      Point const p = section.NextPoint();
      ASSERT_TRUE(Belongs(plane, axis, p - origin)) << testing::PrintToString(p);
    }
  }
}
