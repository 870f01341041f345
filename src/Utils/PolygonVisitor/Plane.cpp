#include "Utils/PolygonVisitor/Polygon.h"

#include <pxlib2core/String.h>

#include <cstdlib>
#include <numeric>

namespace ORVA::Impl {

namespace {

// Corners lie less than 2^31 apart, so a component of a cross product stays below 2^63.
CTriple<int64> Cross(CTriple<int64> const& a, CTriple<int64> const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

int128 Dot(CTriple<int64> const& a, CTriple<int64> const& b) {
  return int128{a.x} * b.x + int128{a.y} * b.y + int128{a.z} * b.z;
}

// Normal of a plane along d that is seen well along its dominant axis: d's longest axis and one
// more span it.
CTriple<int64> NormalAlong(CTriple<int64> const& d) {
  if (d == CTriple<int64>()) return {0, 0, 1};
  int64 const x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
  if (x >= y && x >= z) return {-d.z, 0, d.x};
  if (y >= z) return {0, -d.z, d.y};
  return {0, d.z, -d.y};
}

CTriple<int64> Normal(std::span<Ring const> rings) {
  CTriple<int64> const origin = rings.front().front();
  CTriple<int64> direction;
  for (Ring const& ring : rings) {
    for (CTriple<int64> const& corner : ring) {
      CTriple<int64> const d = corner - origin;
      if (direction == CTriple<int64>()) direction = d;
      CTriple<int64> const normal = Cross(direction, d);
      if (normal != CTriple<int64>()) return normal;
    }
  }
  return NormalAlong(direction);
}

void CheckPlane(std::span<Ring const> rings, CTriple<int64> const& normal) {
  CTriple<int64> const origin = rings.front().front();
  for (Ring const& ring : rings)
    for (CTriple<int64> const& p : ring)
      if (Dot(normal, p - origin) != 0)
        RaiseBadParam(ORVA_LOCATION(c_polygonModule, c_polygonConstructor),
                      CString("corner (%1, %2, %3) lies off the plane of the other corners")
                          .Arg(p.x)
                          .Arg(p.y)
                          .Arg(p.z));
}

} // namespace

StPolygonPlane FlatPlane(std::span<Ring const> rings) {
  CheckPlane(rings, {0, 0, 1});
  StPolygonPlane plane;
  plane.origin = rings.front().front();
  return plane;
}

StPolygonPlane ObliquePlane(std::span<Ring const> rings) {
  CTriple<int64> const normal = Normal(rings);
  CheckPlane(rings, normal);
  StPolygonPlane plane;
  plane.origin = rings.front().front();
  plane.dominantAxis = DominantAxis(normal);
  CTriple<int64> const seen = SeenAlong(plane.dominantAxis, normal);
  int64 const divisor = std::gcd(std::gcd(normal.x, normal.y), normal.z);
  int64 const sign = seen.z < 0 ? -1 : 1;
  plane.norm = sign * seen.z / divisor;
  plane.slopeU = -sign * seen.x / divisor;
  plane.slopeV = -sign * seen.y / divisor;
  plane.wholeV = FloorDivided(plane.slopeV, plane.norm);
  plane.remainderV = plane.slopeV - plane.wholeV * plane.norm;
  plane.carryV = plane.remainderV - plane.norm;
  return plane;
}

} // namespace ORVA::Impl
