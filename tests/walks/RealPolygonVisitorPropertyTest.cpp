// Polygons with real corners against a winding test in whole numbers of any length, at every
// lattice point.
#include "support/Polygons.h"
#include "support/WalkTest.h"

#include <SeluUtils/RealPolygonVisitor.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using namespace ORVA;
using test::Int;
using namespace test;
using Corner = CTriple<double>;
using Outline = CRealPolygonVisitor::Outline;
using Integer = boost::multiprecision::cpp_int;

// In units of 2^-3L: numbers whose last bit is 2^-L/2 or more, and steps of 2^-L and 2^-3L.
class CExactPlane {
public:
  struct StPoint {
    Integer x, y;
  };

  explicit CExactPlane(int smallest) : m_Smallest(smallest) {}

  [[nodiscard]] StPoint At(Corner const& p) const { return {Whole(p.x), Whole(p.y)}; }
  /// Of a point very little farther along x and much less along y: no line through two corners
  /// comes between.
  [[nodiscard]] StPoint Beyond(StPoint const& p) const {
    return {p.x + (Integer(1) << 2 * m_Smallest), p.y + 1};
  }

private:
  [[nodiscard]] Integer Whole(double value) const {
    int exponent = 0;
    double const fraction = std::frexp(value, &exponent);
    return Integer(static_cast<Int>(std::ldexp(fraction, 53))) << (3 * m_Smallest + exponent - 53);
  }

  int m_Smallest;
};
using ExactPoint = CExactPlane::StPoint;

Integer Turn(ExactPoint const& o, ExactPoint const& a, ExactPoint const& b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

bool IsOnEdge(ExactPoint const& a, ExactPoint const& b, ExactPoint const& p) {
  return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
         p.y <= std::max(a.y, b.y) && Turn(a, b, p) == 0;
}

// How often, on balance, the edge crosses the ray upward from p; p is in no corner's column.
int Crossings(ExactPoint const& a, ExactPoint const& b, ExactPoint const& p) {
  if ((a.x < p.x) == (b.x < p.x)) return 0;
  bool const isToRight = a.x < b.x;
  if ((Turn(a, b, p) < 0) != isToRight) return 0;
  return isToRight ? 1 : -1;
}

struct StPlace {
  int winding = 0;
  bool isOnOutline = false;
};

StPlace PlaceOf(std::vector<std::vector<ExactPoint>> const& outlines, ExactPoint const& p,
                ExactPoint const& beyond) {
  StPlace place;
  for (auto const& outline : outlines)
    for (std::size_t i = 0; i < outline.size(); ++i) {
      ExactPoint const &a = outline[i], &b = outline[(i + 1) % outline.size()];
      place.isOnOutline = place.isOnOutline || IsOnEdge(a, b, p);
      place.winding += Crossings(a, b, beyond);
    }
  return place;
}

std::string Text(std::vector<Outline> const& outlines) {
  std::ostringstream text;
  text << std::hexfloat;
  for (Outline const& outline : outlines) {
    for (Corner const& p : outline) text << '(' << p.x << ", " << p.y << ") ";
    text << "; ";
  }
  return text.str();
}

void ExpectWalk(CRealPolygonVisitor polygon, PointList const& expected) {
  EXPECT_EQ(polygon.Steps(), expected.size());
  EXPECT_EQ(polygon.Remaining(), expected.size());
  EXPECT_EQ(Walk(polygon), expected);
}

constexpr Int c_reach = 4;

struct StExpected {
  PointList open, halfOpen, closed;
};

void ExpectExactWalks(std::vector<Outline> const& outlines, int smallest) {
  SCOPED_TRACE(Text(outlines));
  CExactPlane const plane(smallest);
  std::vector<std::vector<ExactPoint>> exact;
  for (Outline const& outline : outlines)
    for (exact.emplace_back(); Corner const& p : outline) exact.back().push_back(plane.At(p));
  StExpected expected[2];
  for (Point const& p : BoxPoints({-c_reach, -c_reach, 0}, {c_reach, c_reach, 0})) {
    auto const at = plane.At({static_cast<double>(p.x), static_cast<double>(p.y), 0});
    auto const [winding, isOnOutline] = PlaceOf(exact, at, plane.Beyond(at));
    for (EnWinding const rule : {EnWinding::EvenOdd, EnWinding::NonZero}) {
      StExpected& points = expected[static_cast<int>(rule)];
      bool const isInside = rule == EnWinding::EvenOdd ? winding % 2 != 0 : winding != 0;
      if (isInside && !isOnOutline) points.open.push_back(p);
      if (isInside) points.halfOpen.push_back(p);
      if (isInside || isOnOutline) points.closed.push_back(p);
    }
  }
  for (EnWinding const rule : {EnWinding::EvenOdd, EnWinding::NonZero}) {
    StExpected const& points = expected[static_cast<int>(rule)];
    ExpectWalk(CRealPolygonVisitor(outlines, EnBoundary::Open, rule), points.open);
    ExpectWalk(CRealPolygonVisitor(outlines, EnBoundary::HalfOpen, rule), points.halfOpen);
    ExpectWalk(CRealPolygonVisitor(outlines, EnBoundary::Closed, rule), points.closed);
  }
}

// Coordinates of one kind, within the reach.
using MakeCoordinate = double (*)(test::CRandomNumbers&);

double Whole(test::CRandomNumbers& random) {
  return static_cast<double>(random.Between(-c_reach, c_reach));
}
double Quarter(test::CRandomNumbers& random) {
  return static_cast<double>(random.Between(-4 * c_reach, 4 * c_reach)) / 4;
}
double Any(test::CRandomNumbers& random) { return random.Real(-c_reach, c_reach); }
// A whole number or a neighbor of one among the doubles.
double Near(test::CRandomNumbers& random) {
  double const whole = Whole(random);
  int const side = random.Between(-1, 1);
  return side == 0 ? whole : std::nextafter(whole, side > 0 ? 0 : whole < 0 ? -4 : 4);
}
// Next to 0, of any exponent.
double Tiny(test::CRandomNumbers& random) {
  return random.Between(0, 1) == 0 ? Whole(random)
                                   : std::ldexp(random.Real(-1, 1), random.Between(-1080, 0));
}

struct StCoordinates {
  char const* name;
  MakeCoordinate make;
  int smallest, repetitions;
};
constexpr StCoordinates c_coordinates[] = {{"whole numbers", Whole, 30, 200},
                                           {"quarters", Quarter, 30, 200},
                                           {"any numbers", Any, 250, 100},
                                           {"next to whole numbers", Near, 2500, 50},
                                           {"next to zero", Tiny, 2500, 50}};

Outline RandomOutline(test::CRandomNumbers& random, MakeCoordinate make) {
  Outline outline(random.Between<std::size_t>(1, 7));
  for (Corner& corner : outline) {
    double const x = make(random);
    corner = {x, make(random), 0};
  }
  return outline;
}

TEST(RealPolygonVisitorProperty, EveryKindOfCornerIsExact) {
  test::CRandomNumbers random;
  for (StCoordinates const& kind : c_coordinates)
    for (int k = 0; k < kind.repetitions && !HasFailure(); ++k) {
      SCOPED_TRACE(kind.name);
      std::vector<Outline> outlines(random.Between<std::size_t>(1, 3));
      for (Outline& outline : outlines) outline = RandomOutline(random, kind.make);
      ExpectExactWalks(outlines, kind.smallest);
    }
}

// Edges that pass exactly through lattice points, between corners that lie on none.
TEST(RealPolygonVisitorProperty, EdgesThroughLatticePointsAreExact) {
  test::CRandomNumbers random;
  for (int k = 0; k < 200 && !HasFailure(); ++k) {
    Corner const on(Whole(random), Whole(random), 0);
    Corner const way(Quarter(random) / 4, Quarter(random) / 4, 0);
    double const stretch = std::ldexp(1, -random.Between(0, 40));
    Outline outline{on + way * stretch, on - way, RandomOutline(random, Any).front()};
    for (Corner& p : outline) p = {std::clamp(p.x, -4., 4.), std::clamp(p.y, -4., 4.), 0};
    ExpectExactWalks({outline}, 250);
  }
}

TEST(RealPolygonVisitorProperty, TrianglesThatTileASquareCoverEachPointOnce) {
  test::CRandomNumbers random;
  for (std::size_t k = 0; k < 1000 && !HasFailure(); ++k) {
    auto const& kind = c_coordinates[k % std::size(c_coordinates)];
    // Around a corner within the square, some through corners on its sides.
    double const middleX = kind.make(random);
    Corner const middle(middleX, kind.make(random), 0);
    double const onSide = kind.make(random);
    Outline const ring{{-4, -4, 0}, {onSide, -4, 0}, {4, -4, 0}, {4, 4, 0}, {-4, 4, 0}};
    PointList all;
    for (std::size_t i = 0; i < ring.size(); ++i) {
      Outline part{ring[i], ring[(i + 1) % ring.size()], middle};
      if (random.Between(0, 1) == 0) std::ranges::reverse(part);
      auto const points = Walk(CRealPolygonVisitor(part, EnBoundary::HalfOpen));
      all.insert(all.end(), points.begin(), points.end());
    }
    EXPECT_EQ(Sorted(all), BoxPoints({-4, -4, 0}, {3, 3, 0}))
        << middle.x << ' ' << middle.y << ' ' << onSide;
  }
}

// Of whole corners it has the points of the exact test for such polygons.
TEST(RealPolygonVisitorProperty, LargePolygonsOfWholeCornersAreExact) {
  test::CRandomNumbers random;
  for (test::StKind const& kind : test::c_kinds)
    for (int k = 0; k < 50 && !HasFailure(); ++k) {
      test::Polygon const polygon = test::Turned(random, kind.make(random, 30));
      Outline outline;
      for (Point const& p : polygon)
        outline.emplace_back(static_cast<double>(p.x), static_cast<double>(p.y), 0);
      for (bool const isClosed : {true, false}) {
        auto const points = test::LatticePoints({polygon}, isClosed);
        ExpectWalk(CRealPolygonVisitor(outline, isClosed ? EnBoundary::Closed : EnBoundary::Open),
                   Sorted({points.begin(), points.end()}));
      }
    }
}

} // namespace
