#include "walks/RegionMakers.h"

#include "base/Errors.h"
#include "base/Memory.h"
#include "base/Texts.h"
#include "walks/MeshFile.h"
#include "walks/WalkIdeal.h"
#include "walks/WalkPoints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace selu {
namespace {

using ORVA::CSize;
using ORVA::EnBoundary;
using ORVA::EnWinding;
using ORVA::int64;
using MaybeSize = std::optional<CSize>;

std::string Text(RealPoint const& p, int dimension) {
  std::string text = Shortest(p.x) + "," + Shortest(p.y);
  return dimension == 3 ? text + "," + Shortest(p.z) : text;
}

EnBoundary BoundaryOf(StWalkOptions const& given) {
  if (!given.boundary.empty() && given.withoutBorder)
    throw CUsageError("--boundary and --without-border exclude each other");
  if (given.boundary == "half-open") return EnBoundary::HalfOpen;
  return given.boundary == "open" || given.withoutBorder ? EnBoundary::Open : EnBoundary::Closed;
}

EnWinding WindingOf(StWalkOptions const& given) {
  return given.winding == "non-zero" ? EnWinding::NonZero : EnWinding::EvenOdd;
}

std::string BoundaryText(EnBoundary boundary) {
  constexpr std::array names = {", without boundary", ", half-open", ", with boundary"};
  return names[static_cast<std::size_t>(boundary)];
}

std::string WindingText(StWalkOptions const& given) {
  return given.winding.empty() ? "" : ", " + given.winding;
}

// --- polygons ---

StRealPoints RealCorners(StWalkOptions const& given) {
  if (given.corners.empty() == given.points.empty())
    throw CUsageError(given.points.empty() ? "the corners are missing: name them or --corners FILE"
                                           : "the corners come from the command line or from "
                                             "--corners, not from both");
  return given.corners.empty() ? ParseRealPoints(given.points, "CORNER")
                               : ReadRealPoints(given.corners);
}

std::vector<RealPoint> RealChain(std::vector<RealPoint> points) {
  points.push_back(points.front());
  return points;
}

// At the peak, while they are sorted, for each row that an edge crosses.
void RefuseManyRows(std::vector<RealPoint> const& outline, std::string const& what) {
  constexpr double c_bytesPerRow = 100;
  double rows = 0;
  for (std::size_t i = 0; i < outline.size(); ++i)
    rows += std::abs(outline[i].y - outline[(i + 1) % outline.size()].y) + 1;
  RefuseBeyondMemory(rows * c_bytesPerRow, what);
}

// --- solids ---

// Corners in steps of 1 / unit voxel.
struct StSolidMesh {
  std::vector<Point> corners;
  Faces faces;
  int64 unit = 1;
};

double ParseScale(std::string const& text) {
  if (text.empty()) return 1;
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 1 || !std::isfinite(numbers->front()) || numbers->front() == 0)
    throw CUsageError("--scale needs a finite number other than 0, not \"" + Shown(text) + "\"");
  return numbers->front();
}

RealPoint ParseShift(std::string const& text) {
  if (text.empty()) return {};
  StRealPoints const shift = ParseRealPoints({text}, "--shift");
  if (shift.dimension != 3) throw CUsageError("--shift needs x,y,z, not \"" + Shown(text) + "\"");
  return shift.points.front();
}

bool IsWhole(std::vector<RealPoint> const& points) {
  auto const isWhole = [](double value) { return std::trunc(value) == value; };
  return std::all_of(points.begin(), points.end(), [&](RealPoint const& p) {
    return isWhole(p.x) && isWhole(p.y) && isWhole(p.z);
  });
}

// As many steps per voxel, up to 2^16, as a walk of this extent allows.
int64 UnitFor(std::vector<RealPoint> const& points) {
  constexpr double c_mostSteps = std::numeric_limits<std::int32_t>::max() - 1.0;
  double extent = 0, farthest = 0;
  for (auto const axis : {&RealPoint::x, &RealPoint::y, &RealPoint::z}) {
    auto const [low, high] = std::minmax_element(
        points.begin(), points.end(),
        [axis](RealPoint const& a, RealPoint const& b) { return a.*axis < b.*axis; });
    extent = std::max(extent, (*high).*axis - (*low).*axis);
    farthest = std::max({farthest, std::abs((*low).*axis), std::abs((*high).*axis)});
  }
  int64 unit = IsWhole(points) ? 1 : 1 << 16;
  auto const fits = [&] {
    auto const steps = static_cast<double>(unit);
    return extent * steps <= c_mostSteps && farthest * steps <= 0x1p61;
  };
  while (unit > 1 && !fits()) unit /= 2;
  if (!fits())
    throw CAppError("the mesh reaches farther than walks do: it is " + Rounded(extent, 4) +
                    " voxels long");
  return unit;
}

StSolidMesh ToVoxels(StMesh mesh, StWalkOptions const& given) {
  double const scale = ParseScale(given.scale);
  RealPoint const shift = ParseShift(given.shift);
  for (RealPoint& p : mesh.corners) p = p * scale + shift;
  for (RealPoint const& p : mesh.corners)
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
      throw CAppError("the mesh " + Quoted(given.mesh) + " scaled by " + given.scale +
                      " is too large");
  StSolidMesh solid{{}, std::move(mesh.faces), UnitFor(mesh.corners)};
  auto const steps = static_cast<double>(solid.unit);
  auto const rounded = [&](double value) { return static_cast<int64>(std::round(value * steps)); };
  solid.corners.reserve(mesh.corners.size());
  for (RealPoint const& p : mesh.corners)
    solid.corners.emplace_back(rounded(p.x), rounded(p.y), rounded(p.z));
  return solid;
}

StSolidMesh ReadSolid(StWalkOptions const& given) {
  bool const hasCorners = !given.points.empty() || !given.corners.empty();
  bool const hasFaces = !given.faces.empty() || !given.facesFile.empty();
  if (!given.mesh.empty()) {
    if (hasCorners || hasFaces)
      throw CUsageError("the solid comes from --mesh or from corners and faces, not from both");
    return ToVoxels(ReadMesh(given.mesh), given);
  }
  if (!given.scale.empty() || !given.shift.empty())
    throw CUsageError("--scale and --shift are for --mesh");
  if (!hasCorners || !hasFaces)
    throw CUsageError("a solid needs --mesh FILE, or corners and faces: CORNER... or --corners "
                      "FILE, and --face or --faces FILE");
  if (!given.points.empty() && !given.corners.empty())
    throw CUsageError("the corners come from the command line or from --corners, not from both");
  if (!given.faces.empty() && !given.facesFile.empty())
    throw CUsageError("the faces come from --face or from --faces, not from both");
  StPoints corners =
      given.corners.empty() ? ParsePoints(given.points, "CORNER") : ReadPoints(given.corners);
  if (corners.dimension != 3) throw CUsageError("a solid needs corners x,y,z");
  return {std::move(corners.points),
          given.facesFile.empty() ? ParseFaces(given.faces, "--face") : ReadFaces(given.facesFile)};
}

__extension__ using int128 = __int128;

struct StWideNormal {
  int128 x = 0, y = 0, z = 0;
  [[nodiscard]] bool IsNull() const { return x == 0 && y == 0 && z == 0; }
};

StWideNormal Cross(Point const& a, Point const& b) {
  return {int128{a.y} * b.z - int128{a.z} * b.y, int128{a.z} * b.x - int128{a.x} * b.z,
          int128{a.x} * b.y - int128{a.y} * b.x};
}

// Corners less than 2^31 apart.
bool IsFlat(std::vector<Point> const& corners, std::vector<std::uint32_t> const& face) {
  StWideNormal normal;
  for (std::size_t i = 1; i + 1 < face.size() && normal.IsNull(); ++i)
    normal = Cross(corners[face[i]] - corners[face[0]], corners[face[i + 1]] - corners[face[0]]);
  return std::all_of(face.begin(), face.end(), [&](std::uint32_t corner) {
    Point const d = corners[corner] - corners[face[0]];
    return normal.x * d.x + normal.y * d.y + normal.z * d.z == 0;
  });
}

// Faces that rounding or their maker bent, as the triangles from their first corner.
void CutBentFaces(StSolidMesh& solid) {
  Faces cut;
  for (auto& face : solid.faces) {
    if (face.size() <= 3 || IsFlat(solid.corners, face)) {
      cut.push_back(std::move(face));
      continue;
    }
    for (std::size_t i = 1; i + 1 < face.size(); ++i)
      cut.push_back({face[0], face[i], face[i + 1]});
  }
  solid.faces.swap(cut);
}

void CheckSolid(StSolidMesh const& solid) {
  for (auto const& face : solid.faces)
    for (auto const corner : face)
      if (corner >= solid.corners.size())
        throw CAppError("the solid has a face with corner " + std::to_string(corner) + " of " +
                        std::to_string(solid.corners.size()));
  for (auto const& [axis, letter] :
       {std::pair(&Point::x, 'x'), {&Point::y, 'y'}, {&Point::z, 'z'}}) {
    auto const [low, high] =
        std::minmax_element(solid.corners.begin(), solid.corners.end(),
                            [a = axis](Point const& p, Point const& q) { return p.*a < q.*a; });
    if ((*high).*axis - (*low).*axis > std::numeric_limits<std::int32_t>::max())
      throw CAppError(std::string("the solid is longer than 2147483647 along ") + letter);
  }
}

// The rows along x and the digital voxels of all faces, at the peak, while they are sorted.
void RefuseLargeSolid(StSolidMesh const& solid) {
  constexpr double c_bytesPerRow = 100;
  double rows = 0;
  for (auto const& face : solid.faces) {
    if (face.empty()) continue;
    auto const extent = [&](int64 Point::*axis) {
      auto const [low, high] =
          std::minmax_element(face.begin(), face.end(), [&](std::uint32_t a, std::uint32_t b) {
            return solid.corners[a].*axis < solid.corners[b].*axis;
          });
      return static_cast<double>(solid.corners[*high].*axis - solid.corners[*low].*axis) /
                 static_cast<double>(solid.unit) +
             1;
    };
    double const x = extent(&Point::x), y = extent(&Point::y), z = extent(&Point::z);
    rows += std::max({y * z, std::min(x * y, x * z)});
  }
  RefuseBeyondMemory(rows * c_bytesPerRow, "the solid");
}

std::vector<std::vector<RealPoint>> FaceChains(StSolidMesh const& solid) {
  constexpr std::size_t c_most = 1000; // more lines would hide the voxels
  std::vector<std::vector<RealPoint>> chains;
  if (solid.faces.size() > c_most) return chains;
  for (auto const& face : solid.faces) {
    if (face.empty()) continue;
    std::vector<RealPoint> chain;
    for (auto const corner : face)
      chain.push_back(Real(solid.corners[corner]) * (1 / static_cast<double>(solid.unit)));
    chains.push_back(RealChain(std::move(chain)));
  }
  return chains;
}

} // namespace

bool AsksForRealPolygon(StWalkOptions const& given) {
  return !given.boundary.empty() || !given.winding.empty() || HasRealPoint(given.points) ||
         (!given.corners.empty() && HasRealPointIn(given.corners)) ||
         std::any_of(given.holes.begin(), given.holes.end(), HasRealPointIn);
}

StWalk MakeRealPolygon(StWalkOptions const& given, MaybeSize const& size) {
  if (!given.neighborhood.empty())
    throw CUsageError("--neighborhood is for digital border lines between whole corners; a polygon "
                      "with real corners, --boundary or --winding has none");
  EnBoundary const boundary = BoundaryOf(given);
  StRealPoints const corners = RealCorners(given);
  int const dimension = corners.dimension;
  if (dimension == 2 && size && size->z > 1)
    throw CAppError("the polygon needs z, since the image is 3D");
  std::vector<std::vector<RealPoint>> outlines = {corners.points};
  for (auto const& path : given.holes) {
    StRealPoints hole = ReadRealPoints(path);
    if (hole.dimension != dimension)
      throw CAppError("the hole " + Quoted(path) + " is " + std::to_string(hole.dimension) +
                      "D, but the outline " + std::to_string(dimension) + "D");
    outlines.push_back(std::move(hole.points));
  }
  StWalk walk = {.title = "polygon of " + std::to_string(corners.points.size()) + " corners from " +
                          Text(corners.points.front(), dimension) + BoundaryText(boundary) +
                          WindingText(given),
                 .dimension = dimension};
  for (auto const& outline : outlines) {
    RefuseManyRows(outline, "the polygon");
    walk.ideal.push_back(RealChain(outline));
  }
  walk.walker = ORVA::CRealPolygonVisitor(outlines, boundary, WindingOf(given));
  return walk;
}

StWalk MakeSolid(StWalkOptions const& given, MaybeSize const&) {
  EnBoundary const boundary = BoundaryOf(given);
  auto const code = ParseNeighborhood(given.neighborhood, 3);
  StSolidMesh solid = ReadSolid(given);
  bool const isDigital = solid.unit == 1 && given.boundary.empty();
  if (!isDigital && !given.neighborhood.empty())
    throw CUsageError("--neighborhood is for digital faces, which need whole corners and no "
                      "--boundary");
  CheckSolid(solid);
  CutBentFaces(solid);
  RefuseLargeSolid(solid);
  std::string const name = given.neighborhood.empty() ? "26" : given.neighborhood;
  StWalk walk = {.title = "solid of " + std::to_string(solid.faces.size()) + " faces" +
                          (isDigital && !given.withoutBorder ? ", neighborhood " + name
                                                             : BoundaryText(boundary)) +
                          WindingText(given),
                 .ideal = FaceChains(solid),
                 .isSolid = true};
  std::span<ORVA::CSolidVisitor::Face const> const faces(solid.faces);
  walk.walker =
      isDigital
          ? ORVA::CSolidVisitor(solid.corners, faces, code, !given.withoutBorder, WindingOf(given))
          : ORVA::CSolidVisitor(solid.corners, faces, boundary, WindingOf(given), solid.unit);
  return walk;
}

} // namespace selu
