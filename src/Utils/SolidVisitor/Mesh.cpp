#include "Utils/SolidVisitor/Mesh.h"

#include <pxlib2core/String.h>

#include <algorithm>
#include <limits>

namespace ORVA::Impl {

namespace {

constexpr int64 c_farthest = int64{1} << 62;

CTriple<int64> Cross(CTriple<int64> const& a, CTriple<int64> const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

int128 Dot(CTriple<int64> const& a, CTriple<int64> const& b) {
  return int128{a.x} * b.x + int128{a.y} * b.y + int128{a.z} * b.z;
}

// The least coordinate of the corners that faces name.
int64 CheckedLeast(std::span<CTriple<int64> const> corners, std::span<std::uint32_t const> named,
                   int64 CTriple<int64>::*axis) {
  int64 low = std::numeric_limits<int64>::max(), high = std::numeric_limits<int64>::min();
  for (std::uint32_t const corner : named) {
    low = std::min(low, corners[corner].*axis);
    high = std::max(high, corners[corner].*axis);
  }
  if (low < -c_farthest || high > c_farthest)
    RaiseBadParam(
        ORVA_LOCATION(c_solidModule, c_solidConstructor),
        CString("corner coordinate %1 lies beyond 2^62").Arg(low < -c_farthest ? low : high));
  if (high - low > INT32_MAX)
    RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                  CString("corner coordinates from %1 to %2 lie more than 2147483647 apart")
                      .Arg(low)
                      .Arg(high));
  return low;
}

void CheckUnit(int64 unit) {
  if (unit < 1 || unit > int64{1} << 20)
    RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                  CString("unit %1 is not from 1 to 1048576").Arg(unit));
}

void AddFace(StMesh& mesh, std::span<std::uint32_t const> face, std::size_t corners) {
  for (std::uint32_t const corner : face)
    if (corner >= corners)
      RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                    CString("face %1 names corner %2 of %3")
                        .Arg(mesh.faceBegins.size() - 1)
                        .Arg(corner)
                        .Arg(corners));
  mesh.faceCorners.insert(mesh.faceCorners.end(), face.begin(), face.end());
  mesh.faceBegins.push_back(mesh.faceCorners.size());
}

} // namespace

template <class Face>
StMesh MakeMesh(std::span<CTriple<int64> const> corners, std::span<Face const> faces, int64 unit) {
  CheckUnit(unit);
  StMesh mesh;
  mesh.unit = unit;
  mesh.faceBegins.reserve(faces.size() + 1);
  mesh.faceBegins.push_back(0);
  for (Face const& face : faces) AddFace(mesh, face, corners.size());
  if (mesh.faceCorners.size() > INT32_MAX || corners.size() > INT32_MAX)
    RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                  CString("%1 corners of faces are more than 2147483647")
                      .Arg(std::max(mesh.faceCorners.size(), corners.size())));
  if (mesh.faceCorners.empty()) return mesh;
  // Digital faces stray from corners by less than the slack, and only they do.
  int64 const slack = unit == 1 ? c_slack : 0;
  auto const origin = [&](int64 CTriple<int64>::*axis) {
    return FloorDivided(CheckedLeast(corners, mesh.faceCorners, axis), unit) - slack;
  };
  mesh.origin = {origin(&CTriple<int64>::x), origin(&CTriple<int64>::y),
                 origin(&CTriple<int64>::z)};
  mesh.corners.resize(corners.size()); // those that no face names stay 0
  for (std::uint32_t const corner : mesh.faceCorners)
    mesh.corners[corner] = corners[corner] - mesh.origin * unit;
  return mesh;
}

template StMesh MakeMesh(std::span<CTriple<int64> const>, std::span<CSolidVisitor::Triangle const>,
                         int64);
template StMesh MakeMesh(std::span<CTriple<int64> const>, std::span<CSolidVisitor::Face const>,
                         int64);

namespace {

CTriple<int64> Normal(StMesh const& mesh, std::span<std::uint32_t const> face) {
  CTriple<int64> direction;
  for (std::uint32_t const corner : face) {
    CTriple<int64> const d = mesh.corners[corner] - mesh.corners[face.front()];
    if (direction == CTriple<int64>()) direction = d;
    CTriple<int64> const normal = Cross(direction, d);
    if (normal != CTriple<int64>()) return normal.x < 0 ? normal * int64{-1} : normal;
  }
  return {};
}

} // namespace

std::vector<StFacePlane> FacePlanes(StMesh const& mesh) {
  std::vector<StFacePlane> planes(mesh.Faces());
  for (std::size_t face = 0; face < planes.size(); ++face) {
    auto const ring = mesh.Face(face);
    if (ring.empty()) continue;
    StFacePlane& plane = planes[face];
    plane = {Normal(mesh, ring), mesh.corners[ring.front()]};
    for (std::uint32_t const corner : ring) {
      if (Dot(plane.normal, mesh.corners[corner] - plane.anchor) == 0) continue;
      CTriple<int64> const p = mesh.Given(mesh.corners[corner]);
      RaiseBadParam(ORVA_LOCATION(c_solidModule, c_solidConstructor),
                    CString("face %1 is not flat: corner (%2, %3, %4) lies off its plane")
                        .Arg(face)
                        .Arg(p.x)
                        .Arg(p.y)
                        .Arg(p.z));
    }
  }
  return planes;
}

} // namespace ORVA::Impl
