// Random simple polygons of several kinds, and an exact test of where a point lies.
#pragma once

#include "Random.h"
#include "Walks.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitorImpl.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test {

using Int = ORVA::int64;
using Polygon = std::vector<Point>; // open: each corner once

/// The neighborhoods of the plane.
inline constexpr Int c_flat[] = {ORVA::NEIGHBORHOOD_4, ORVA::NEIGHBORHOOD_6_1,
                                 ORVA::NEIGHBORHOOD_6_2, ORVA::NEIGHBORHOOD_8};

inline Int Turn(Point const& o, Point const& a, Point const& b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

enum class EnPlace { Outside, Border, Inside };

/// Where p lies in the polygon of these rings (even-odd), in the xy-plane, without rounding.
inline EnPlace Place(std::vector<Polygon> const& rings, Point const& p) {
  bool isInside = false;
  for (Polygon const& ring : rings) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
      Point const &a = ring[i], &b = ring[(i + 1) % ring.size()];
      Int const turn = Turn(a, b, p);
      if (turn == 0 && std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) &&
          std::min(a.y, b.y) <= p.y && p.y <= std::max(a.y, b.y))
        return EnPlace::Border;
      // A ray to greater x meets the edge's half-open range of y right of p.
      if ((a.y > p.y) != (b.y > p.y) && (turn > 0) == (b.y > a.y)) isInside = !isInside;
    }
  }
  return isInside ? EnPlace::Inside : EnPlace::Outside;
}

struct StPointLess {
  bool operator()(Point const& a, Point const& b) const {
    return std::tuple(a.x, a.y, a.z) < std::tuple(b.x, b.y, b.z);
  }
};
using PointSet = std::set<Point, StPointLess>;

inline void AddLine(PointSet& points, Point p, Point const& to, Int neighborhood) {
  ORVA::Impl::CBresenhamVisitor2D const line(to.x - p.x, to.y - p.y, neighborhood);
  points.insert(p);
  for (Int i = 0; i < line.LastStep(); ++i) points.insert(p += line.Step(i));
}

/// Border lines drawn from each edge's smaller corner to its greater one.
inline PointSet BorderLine(std::vector<Polygon> const& rings, Int neighborhood) {
  PointSet points;
  for (Polygon const& ring : rings)
    for (std::size_t i = 0; i < ring.size(); ++i) {
      Point const &a = ring[i], &b = ring[(i + 1) % ring.size()];
      bool const isAscending = StPointLess()(a, b);
      AddLine(points, isAscending ? a : b, isAscending ? b : a, neighborhood);
    }
  return points;
}

/// The lattice points inside the polygon or, if wanted, on its outline.
inline PointSet LatticePoints(std::vector<Polygon> const& rings, bool withOutline) {
  auto const [lowX, highX] = std::ranges::minmax(rings.front(), {}, &Point::x);
  auto const [lowY, highY] = std::ranges::minmax(rings.front(), {}, &Point::y);
  PointSet points;
  for (Int x = lowX.x; x <= highX.x; ++x)
    for (Int y = lowY.y; y <= highY.y; ++y) {
      EnPlace const place = Place(rings, {x, y, 0});
      if (place == EnPlace::Inside || (withOutline && place == EnPlace::Border))
        points.insert({x, y, 0});
    }
  return points;
}

inline Point RandomPoint(CRandomNumbers& random, Int reach) {
  return {random.Between<Int>(-reach, reach), random.Between<Int>(-reach, reach), 0};
}

/// Hull of random points: strictly convex, counter-clockwise; at least a triangle.
inline Polygon ConvexPolygon(CRandomNumbers& random, Int reach) {
  for (;;) {
    PointSet cloud;
    for (Int k = random.Between<Int>(3, 12); k > 0; --k) cloud.insert(RandomPoint(random, reach));
    PointList const points(cloud.begin(), cloud.end());
    Polygon hull;
    auto const add = [&hull](Point const& p, std::size_t fixed) {
      while (hull.size() > fixed && Turn(hull[hull.size() - 2], hull.back(), p) <= 0)
        hull.pop_back();
      hull.push_back(p);
    };
    for (Point const& p : points) add(p, 1);
    std::size_t const lower = hull.size();
    for (auto p = points.rbegin() + 1; p < points.rend(); ++p) add(*p, lower);
    hull.pop_back();
    if (hull.size() >= 3) return hull;
  }
}

/// Corners by angle about the origin, one each direction.
inline Polygon StarPolygon(CRandomNumbers& random, Int reach) {
  auto const half = [](Point const& p) { return p.y < 0 || (p.y == 0 && p.x < 0); };
  auto const before = [&half](Point const& a, Point const& b) {
    if (half(a) != half(b)) return half(a) < half(b);
    return Turn({}, a, b) > 0;
  };
  for (;;) {
    std::set<Point, decltype(before)> corners(before);
    for (Int k = random.Between<Int>(5, 20); k > 0; --k) {
      Point const p = RandomPoint(random, reach);
      if (p != Point()) corners.insert(p);
    }
    Polygon const polygon(corners.begin(), corners.end());
    bool isStar = polygon.size() >= 3; // no gap of half a turn or more
    for (std::size_t i = 0; i < polygon.size(); ++i)
      isStar = isStar && Turn({}, polygon[i], polygon[(i + 1) % polygon.size()]) > 0;
    if (isStar) return polygon;
  }
}

/// Monotone in x: an upper and a lower chain between two ends on the x-axis.
inline Polygon MonotonePolygon(CRandomNumbers& random, Int reach, Int clearance = 1) {
  Polygon upper, lower;
  Int x = -reach;
  for (x += random.Between<Int>(1, 4); x < reach; x += random.Between<Int>(1, 4))
    (random.Between(0, 1) == 0 ? upper : lower).emplace_back(x, 0, 0);
  for (Point& p : upper) p.y = random.Between<Int>(clearance, reach);
  for (Point& p : lower) p.y = -random.Between<Int>(clearance, reach);
  if (upper.empty()) upper.emplace_back(0, clearance, 0);
  Polygon polygon{{-reach, 0, 0}};
  polygon.insert(polygon.end(), lower.begin(), lower.end());
  polygon.emplace_back(x, 0, 0);
  polygon.insert(polygon.end(), upper.rbegin(), upper.rend());
  return polygon;
}

/// Steps up and down on either side of the x-axis, at least `clearance` away from it.
inline Polygon RectilinearPolygon(CRandomNumbers& random, Int reach, Int clearance = 1) {
  Polygon lower, upper;
  Int x = -reach;
  for (Int k = random.Between<Int>(1, 6); k > 0; --k) {
    Int const next = x + random.Between<Int>(1, 5);
    Int const low = -random.Between<Int>(clearance, reach);
    Int const high = random.Between<Int>(clearance, reach);
    lower.insert(lower.end(), {{x, low, 0}, {next, low, 0}});
    upper.insert(upper.end(), {{x, high, 0}, {next, high, 0}});
    x = next;
  }
  lower.insert(lower.end(), upper.rbegin(), upper.rend());
  return lower;
}

/// A triangle or quadrilateral of next to no area.
inline Polygon SliverPolygon(CRandomNumbers& random, Int reach) {
  for (;;) {
    Point const a = RandomPoint(random, reach), b = RandomPoint(random, reach);
    Point const c = b + RandomPoint(random, 1), d = a + RandomPoint(random, 1);
    if (Turn(a, b, c) > 0 && Turn(a, c, d) > 0 && Turn(b, c, d) > 0 && Turn(d, a, b) > 0)
      return {a, b, c, d};
    if (Turn(a, b, c) > 0) return {a, b, c};
  }
}

struct StKind {
  char const* name;
  Polygon (*make)(CRandomNumbers&, Int);
};
inline constexpr StKind c_kinds[] = {
    {"convex", ConvexPolygon},
    {"star", StarPolygon},
    {"monotone", [](CRandomNumbers& random, Int reach) { return MonotonePolygon(random, reach); }},
    {"rectilinear",
     [](CRandomNumbers& random, Int reach) { return RectilinearPolygon(random, reach); }},
    {"sliver", SliverPolygon}};

/// The same outline with some corners repeated and some edges split at lattice points.
inline Polygon Decorated(CRandomNumbers& random, Polygon const& polygon) {
  Polygon decorated;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    Point const &a = polygon[i], d = polygon[(i + 1) % polygon.size()] - a;
    decorated.push_back(a);
    if (random.Between(0, 3) == 0) decorated.push_back(a);
    Int const parts = std::gcd(d.x, d.y);
    if (parts > 1 && random.Between(0, 1) == 0)
      decorated.push_back(a +
                          Point(d.x / parts, d.y / parts, 0) * random.Between<Int>(1, parts - 1));
  }
  return decorated;
}

/// Starting at another corner and, half the time, the other way round.
inline Polygon Turned(CRandomNumbers& random, Polygon polygon) {
  std::rotate(polygon.begin(), polygon.begin() + random.Between<Int>(0, std::ssize(polygon) - 1),
              polygon.end());
  if (random.Between(0, 1) == 0) std::ranges::reverse(polygon);
  return polygon;
}

inline std::string Text(Polygon const& polygon) {
  std::string text;
  for (Point const& p : polygon)
    text +=
        '(' + std::to_string(p.x) + ", " + std::to_string(p.y) + ", " + std::to_string(p.z) + ") ";
  return text;
}

} // namespace test
