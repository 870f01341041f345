// Random solids of many kinds, given by faces, and an exact test of where a point lies.
#pragma once

#include "Polygons.h"
#include "Random.h"
#include "Walks.h"

#include <SeluUtils/Boundary.h>
#include <SeluUtils/SolidVisitor.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace test {

__extension__ using Wide = __int128;
using Face = ORVA::CSolidVisitor::Face;

/// All faces turn the same way as seen from outside, or all the other way.
struct StSolid {
  PointList corners;
  std::vector<Face> faces;

  [[nodiscard]] Polygon Corners(Face const& face) const {
    Polygon ring;
    for (auto const corner : face) ring.push_back(corners[corner]);
    return ring;
  }
};

// --- where a point lies ---

/// Six times the volume of the tetrahedron; the sign says on which side of a, b, c the point d is.
inline Wide Volume(Point const& a, Point const& b, Point const& c, Point const& d) {
  Point const u = b - a, v = c - a, w = d - a;
  auto const minor = [](Int p, Int q, Int r, Int s) { return Wide{p} * s - Wide{q} * r; };
  return w.x * minor(u.y, u.z, v.y, v.z) - w.y * minor(u.x, u.z, v.x, v.z) +
         w.z * minor(u.x, u.y, v.x, v.y);
}

inline Point CrossProduct(Point const& a, Point const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

using Triangle = std::array<Point, 3>;

/// How often, on balance, the segment passes the triangle; nothing where it meets an edge.
inline std::optional<int> Passes(Point const& from, Point const& to, Triangle const& t) {
  auto const isPositive = [](Wide volume) { return volume > 0; };
  Wide const begin = Volume(t[0], t[1], t[2], from), end = Volume(t[0], t[1], t[2], to);
  if (begin == 0 || end == 0) return std::nullopt;
  if (isPositive(begin) == isPositive(end)) return 0;
  std::array const sides{Volume(from, to, t[0], t[1]), Volume(from, to, t[1], t[2]),
                         Volume(from, to, t[2], t[0])};
  if (std::ranges::count(sides, 0) > 0) return std::nullopt;
  if (std::ranges::count_if(sides, isPositive) % 3 != 0) return 0;
  return isPositive(end) ? 1 : -1;
}

/// The winding number of a point off the surface; all coordinates up to 2^41.
inline int WindingNumber(std::vector<Triangle> const& triangles, Point const& p,
                         CRandomNumbers& random) {
  constexpr Int far = Int{1} << 40;
  for (;;) { // until the segment meets no edge
    Point const outside(far, random.Between(-far, far), random.Between(-far, far));
    int winding = 0;
    bool isClear = true;
    for (Triangle const& triangle : triangles) {
      auto const passes = Passes(p, outside, triangle);
      isClear = isClear && passes.has_value();
      winding += passes.value_or(0);
    }
    if (isClear) return winding;
  }
}

/// Where points lie in a solid whose corners are at most 100 from the origin.
class CSolidPlaces {
public:
  explicit CSolidPlaces(StSolid const& solid) : m_Solid(solid) {
    for (Face const& face : solid.faces) {
      Polygon const ring = solid.Corners(face);
      for (std::size_t i = 1; i + 1 < ring.size(); ++i)
        if (CrossProduct(ring[i] - ring[0], ring[i + 1] - ring[0]) != Point())
          m_Triangles.push_back({ring[0] * c_scale, ring[i] * c_scale, ring[i + 1] * c_scale});
    }
  }

  /// Of the point a very little farther along x, much less along y and less still along z. These
  /// steps pass no plane of a face whose least whole normal is at most 2000 along each axis.
  [[nodiscard]] int Winding(Point const& p, CRandomNumbers& random) const {
    return WindingNumber(m_Triangles, p * c_scale + Point(1 << 22, 1 << 11, 1), random);
  }

  [[nodiscard]] bool IsOnSurface(Point const& p) const {
    return std::ranges::any_of(
        m_Solid.faces, [&](Face const& face) { return IsOnFace(m_Solid.Corners(face), p); });
  }

private:
  static constexpr Int c_scale = Int{1} << 33;

  static bool IsOnSegment(Point const& a, Point const& b, Point const& p) {
    auto const isBetween = [](Int low, Int high, Int value) {
      return std::min(low, high) <= value && value <= std::max(low, high);
    };
    return CrossProduct(b - a, p - a) == Point() && isBetween(a.x, b.x, p.x) &&
           isBetween(a.y, b.y, p.y) && isBetween(a.z, b.z, p.z);
  }

  static bool IsOnFace(Polygon const& ring, Point const& p) {
    Point normal;
    for (std::size_t i = 0; i < ring.size(); ++i) {
      if (IsOnSegment(ring[i], ring[(i + 1) % ring.size()], p)) return true;
      for (std::size_t k = 0; k < i && normal == Point(); ++k)
        normal = CrossProduct(ring[k] - ring[0], ring[i] - ring[0]);
    }
    Point const d = p - (ring.empty() ? p : ring[0]);
    if (normal == Point() || d.x * normal.x + d.y * normal.y + d.z * normal.z != 0) return false;
    auto const seen = [&](Point const& q) {
      if (normal.z != 0) return Point(q.x, q.y, 0);
      return normal.y != 0 ? Point(q.x, q.z, 0) : Point(q.y, q.z, 0);
    };
    Polygon flat;
    for (Point const& q : ring) flat.push_back(seen(q));
    return Place({flat}, seen(p)) != EnPlace::Outside;
  }

  StSolid const& m_Solid;
  std::vector<Triangle> m_Triangles;
};

// --- kinds of solids ---

inline Point RandomCorner(CRandomNumbers& random, Int reach) {
  Int const x = random.Between(-reach, reach), y = random.Between(-reach, reach),
            z = random.Between(-reach, reach);
  return {x, y, z};
}

inline StSolid Tetrahedron(CRandomNumbers& random, Int reach) {
  StSolid solid;
  for (int k = 0; k < 4; ++k) solid.corners.push_back(RandomCorner(random, reach));
  solid.faces = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
  return solid;
}

/// The octahedron with its corners and the middles of its edges moved out or in at random.
inline StSolid StarSolid(CRandomNumbers& random, Int reach) {
  StSolid solid;
  auto const corner = [&](Point const& direction) {
    Int const longest = reach / 2;
    Point const p =
        direction *
        random.Between<Int>(1, direction.x * direction.y * direction.z == 0 ? longest : reach);
    auto const found = std::ranges::find_if(solid.corners, [&](Point const& q) {
      return CrossProduct(q, direction) == Point() &&
             q.x * direction.x + q.y * direction.y + q.z * direction.z > 0;
    });
    if (found != solid.corners.end())
      return static_cast<std::uint32_t>(found - solid.corners.begin());
    solid.corners.push_back(p);
    return static_cast<std::uint32_t>(solid.corners.size() - 1);
  };
  for (int octant = 0; octant < 8; ++octant) {
    Point const a((octant & 1) != 0 ? -1 : 1, 0, 0), b(0, (octant & 2) != 0 ? -1 : 1, 0),
        c(0, 0, (octant & 4) != 0 ? -1 : 1);
    auto const i = corner(a), j = corner(b), k = corner(c);
    auto const ij = corner(a + b), jk = corner(b + c), ki = corner(c + a);
    bool const isMirrored = a.x * b.y * c.z < 0;
    for (Face face : {Face{i, ij, ki}, Face{ij, j, jk}, Face{ki, jk, k}, Face{ij, jk, ki}}) {
      if (isMirrored) std::ranges::reverse(face);
      solid.faces.push_back(face);
    }
  }
  return solid;
}

/// The same faces with corners anywhere: they cross each other.
inline StSolid CrossingSolid(CRandomNumbers& random, Int reach) {
  StSolid solid = StarSolid(random, reach);
  for (Point& p : solid.corners) p = RandomCorner(random, reach);
  return solid;
}

/// A polygon, concave or not, moved along a line, in any turn of the axes.
inline StSolid Prism(CRandomNumbers& random, Int reach) {
  auto const& kind = c_kinds[random.Between<std::size_t>(0, std::size(c_kinds) - 1)];
  Polygon const ring = kind.make(random, std::max<Int>(reach / 3, 2));
  Point const up = RandomCorner(random, reach / 2);
  auto const n = static_cast<std::uint32_t>(ring.size());
  StSolid solid;
  for (Point const& p : ring) solid.corners.push_back(p);
  for (Point const& p : ring) solid.corners.push_back(p + up);
  Face bottom, top;
  for (std::uint32_t i = 0; i < n; ++i) {
    std::uint32_t const next = (i + 1) % n;
    solid.faces.push_back({i, next, next + n, i + n});
    bottom.insert(bottom.begin(), i);
    top.push_back(i + n);
  }
  solid.faces.push_back(bottom);
  solid.faces.push_back(top);
  int const turn = random.Between(0, 2);
  for (Point& p : solid.corners)
    p = turn == 0 ? p : turn == 1 ? Point(p.y, p.z, p.x) : Point(p.z, p.x, p.y);
  return solid;
}

/// The faces of some cells of a skewed grid: of any genus, with cavities, touching at edges and
/// corners. Some faces stand for several in a row, whose corners then lie on their edges.
inline StSolid Cells(CRandomNumbers& random, Int reach) {
  constexpr int n = 3;
  std::set<std::array<int, 3>> cells;
  for (int k = random.Between(1, 20); k > 0; --k)
    cells.insert({random.Between(0, n - 1), random.Between(0, n - 1), random.Between(0, n - 1)});
  Int const most = std::max<Int>(reach / 9, 1);
  std::array<Point, 3> const steps{RandomCorner(random, most) + Point(most, 0, 0),
                                   RandomCorner(random, most) + Point(0, most, 0),
                                   RandomCorner(random, most) + Point(0, 0, most)};
  StSolid solid;
  auto const corner = [&](std::array<int, 3> const& at) {
    Point p;
    for (std::size_t k = 0; k < 3; ++k) p += steps[k] * (at[k] - 1);
    solid.corners.push_back(p);
    return static_cast<std::uint32_t>(solid.corners.size() - 1);
  };
  bool const joins = random.Between(0, 1) == 1;
  auto const hasFace = [&](std::array<int, 3> cell, std::size_t axis, int side) {
    if (!cells.contains(cell)) return false;
    cell[axis] += 2 * side - 1;
    return !cells.contains(cell);
  };
  for (auto const& cell : cells)
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (int side = 0; side < 2; ++side) {
        std::size_t const u = (axis + 1) % 3, v = (axis + 2) % 3;
        auto before = cell, end = cell;
        --before[u];
        if (!hasFace(cell, axis, side) || (joins && hasFace(before, axis, side))) continue;
        do ++end[u];
        while (joins && hasFace(end, axis, side));
        Face face;
        for (auto const& [onU, onV] :
             {std::pair(cell[u], 0), {end[u], 0}, {end[u], 1}, {cell[u], 1}}) {
          auto at = cell;
          at[axis] += side;
          at[u] = onU;
          at[v] += onV;
          face.push_back(corner(at));
        }
        if (side == 0) std::ranges::reverse(face);
        solid.faces.push_back(face);
      }
  return solid;
}

struct StSolidKind {
  char const* name;
  StSolid (*make)(CRandomNumbers&, Int);
};
inline constexpr StSolidKind c_solidKinds[] = {{"tetrahedron", Tetrahedron},
                                               {"star", StarSolid},
                                               {"crossing faces", CrossingSolid},
                                               {"prism", Prism},
                                               {"cells", Cells}};

/// Both of them as one.
inline StSolid Together(StSolid a, StSolid const& b) {
  auto const first = static_cast<std::uint32_t>(a.corners.size());
  a.corners.insert(a.corners.end(), b.corners.begin(), b.corners.end());
  for (Face face : b.faces) {
    for (auto& corner : face) corner += first;
    a.faces.push_back(face);
  }
  return a;
}

/// The same surface with faces in any order, corners of their own, repeated corners and, if wanted,
/// any orientation.
inline StSolid Shuffled(CRandomNumbers& random, StSolid const& solid, bool keepsOrientation) {
  StSolid shuffled;
  for (Face const& face : solid.faces) {
    Polygon ring = solid.Corners(face);
    std::rotate(ring.begin(), ring.begin() + random.Between<Int>(0, std::ssize(ring) - 1),
                ring.end());
    if (!keepsOrientation && random.Between(0, 1) == 0) std::ranges::reverse(ring);
    if (random.Between(0, 3) == 0) ring.push_back(ring.front());
    Face& added = shuffled.faces.emplace_back();
    for (Point const& p : ring) {
      added.push_back(static_cast<std::uint32_t>(shuffled.corners.size()));
      shuffled.corners.push_back(p);
    }
  }
  std::ranges::shuffle(shuffled.faces, random.Generator());
  return shuffled;
}

inline std::string Text(StSolid const& solid) {
  std::string text;
  for (Face const& face : solid.faces) {
    text += '[';
    text += Text(solid.Corners(face));
    text += "] ";
  }
  return text;
}

} // namespace test
