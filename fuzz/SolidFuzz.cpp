// Solids given by faces, real polygons and ellipsoids: any arguments refused or walked, and small
// ones exact by rules of their own.
#include "Fuzzing.h"

#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>

#include <cmath>
#include <functional>

using namespace ORVA;
using namespace fuzz;

namespace {

// Rows take memory: the library allows 2^31 of them along each axis, this target few.
constexpr uint64 c_mostSpread = 200;

using Face = CSolidVisitor::Face;
using Outline = CRealPolygonVisitor::Outline;

EnBoundary TakeBoundary(CInput& input) {
  static constexpr std::array<EnBoundary, 3> choices = {EnBoundary::Open, EnBoundary::HalfOpen,
                                                        EnBoundary::Closed};
  return input.OneOf(choices);
}

EnWinding TakeWinding(CInput& input) {
  return input.Flag() ? EnWinding::EvenOdd : EnWinding::NonZero;
}

// Taken by runs and points in turns, the walk is the same.
PointList CheckRuns(CRunVisitor walk, CInput& input) {
  PointList const all = CheckWalk(walk);
  PointList taken;
  while (walk.MorePoints() && taken.size() < c_longest) {
    Require(walk.Steps() - walk.Remaining() == taken.size(), "what is left is counted");
    if (input.Flag()) {
      taken.push_back(walk.NextPoint());
      continue;
    }
    auto const [first, axis, length] = walk.NextRun();
    Require(axis == 0 && length > 0, "a run has points along x");
    for (int64 i = 0; i < length && taken.size() < c_longest; ++i)
      taken.push_back(first + Point(i, 0, 0));
  }
  Require(taken == all, "runs and points in turns are the walk");
  auto const isBefore = [](Point const& a, Point const& b) {
    return std::tie(a.z, a.y, a.x) < std::tie(b.z, b.y, b.x);
  };
  Require(std::ranges::adjacent_find(all, std::not_fn(isBefore)) == all.end(),
          "points come in raster order, each once");
  return all;
}

std::vector<Face> TakeFaces(CInput& input, std::size_t corners) {
  std::vector<Face> faces(input.Count(8));
  for (Face& face : faces) {
    face.resize(input.Count(5));
    for (auto& corner : face)
      corner = static_cast<std::uint32_t>(input.Count(corners + (input.Byte() == 255 ? 1 : 0)));
  }
  return faces;
}

PointList Named(PointList const& corners, std::vector<Face> const& faces) {
  PointList named;
  for (Face const& face : faces)
    for (auto const corner : face)
      if (corner < corners.size()) named.push_back(corners[corner]);
  return named;
}

// Any faces, most of them open.
void CheckAnySolid(CInput& input) {
  bool const isFar = input.Flag();
  PointList const corners =
      input.List(8, [&] { return isFar ? input.AnyPoint() : input.SmallPoint(20); });
  auto const faces = TakeFaces(input, corners.size());
  uint64 const spread = Spread(Named(corners, faces));
  bool const isTooFar = spread > std::numeric_limits<std::int32_t>::max();
  int64 const unit = input.Flag() ? 1 : input.Integer();
  bool const isUnit = unit >= 1 && unit <= 1 << 20;
  if (isUnit && !isTooFar && spread / static_cast<uint64>(unit) > c_mostSpread) return;
  auto const solid = Try(
      [&] { return CSolidVisitor(corners, faces, TakeBoundary(input), TakeWinding(input), unit); });
  if (!solid) return;
  Require(isUnit && !isTooFar, "what is too far apart is refused");
  CheckRuns(*solid, input);
}

// Tetrahedra side by side, closed in any case, whatever the corners' order.
void CheckTetrahedra(CInput& input) {
  int64 const reach = input.Flag() ? 4 : 12;
  PointList const corners = input.List(8, [&] { return input.SmallPoint(reach); });
  if (corners.size() < 4) return;
  std::vector<CSolidVisitor::Triangle> triangles;
  auto const last = static_cast<std::uint32_t>(corners.size() - 1);
  for (std::uint32_t k = 3; k <= last; ++k)
    for (auto const& face : {CSolidVisitor::Triangle{0, 1, 2}, {0, 1, k}, {1, 2, k}, {0, 2, k}})
      triangles.push_back(face);
  auto const walk = [&](EnBoundary boundary) {
    return CheckRuns(CSolidVisitor(corners, triangles, boundary), input);
  };
  PointList const open = walk(EnBoundary::Open), halfOpen = walk(EnBoundary::HalfOpen),
                  closed = walk(EnBoundary::Closed);
  auto const inRaster = [](Point const& a, Point const& b) {
    return std::tie(a.z, a.y, a.x) < std::tie(b.z, b.y, b.x);
  };
  Require(std::ranges::includes(halfOpen, open, inRaster), "what is inside is half-open inside");
  Require(std::ranges::includes(closed, halfOpen, inRaster), "what is half-open inside is closed");
  auto const border =
      Try([&] { return CSolidVisitor(corners, triangles, input.Neighborhood(), true); });
  if (border)
    Require(std::ranges::includes(CheckRuns(*border, input), closed, inRaster),
            "digital faces have all points of the surface");
  PointList const mirrored = [&] { // the other way round along y, each face too
    PointList turned = corners;
    for (Point& p : turned) p.y = -p.y;
    PointList points = CheckWalk(CSolidVisitor(turned, triangles, EnBoundary::Closed));
    for (Point& p : points) p.y = -p.y;
    return points;
  }();
  Require(Sorted(mirrored) == Sorted(closed), "a mirrored solid has the mirrored points");
}

double TakeCoordinate(CInput& input) {
  double const value = input.Real();
  return std::abs(value) <= 100 || input.Byte() < 8 ? value : std::fmod(value, 100.0);
}

void CheckPolygon(CInput& input) {
  std::vector<Outline> outlines(input.Count(3));
  double const z = input.Flag() ? 0 : input.Real();
  bool isGood = true, isLarge = false;
  for (Outline& outline : outlines) {
    outline.resize(input.Count(8));
    for (auto& corner : outline) {
      double const x = TakeCoordinate(input);
      corner = {x, TakeCoordinate(input), z};
      isGood = isGood && std::abs(corner.x) <= 0x1p30 && std::abs(corner.y) <= 0x1p30 &&
               std::abs(z) <= 0x1p53 && std::trunc(z) == z;
      isLarge = isLarge || std::abs(corner.y) > 1e4;
    }
  }
  if (isGood && isLarge) return;
  EnWinding const winding = TakeWinding(input);
  auto const walk = [&](EnBoundary boundary) {
    return CRealPolygonVisitor(outlines, boundary, winding);
  };
  auto const closed = Try([&] { return walk(EnBoundary::Closed); });
  Require(closed.has_value() == isGood, "any good corners make a polygon, others do not");
  if (!closed) return;
  auto const halfOpen = walk(EnBoundary::HalfOpen), open = walk(EnBoundary::Open);
  CheckRuns(*closed, input);
  CheckRuns(halfOpen, input);
  CheckRuns(open, input);
  Require(open.Steps() <= halfOpen.Steps() && halfOpen.Steps() <= closed->Steps(),
          "boundaries have their order");
}

void CheckEllipsoid(CInput& input) {
  auto const center = input.RealTriple(), semiAxes = input.RealTriple();
  auto const isSmall = [](double axis) { return !(axis > 60 && axis <= 0x1p30); };
  if (!isSmall(semiAxes.x) || !isSmall(semiAxes.y) || !isSmall(semiAxes.z)) return;
  auto const closed = Try([&] { return CEllipsoidVisitor(center, semiAxes); });
  auto const open = Try([&] { return CEllipsoidVisitor(center, semiAxes, false); });
  Require(closed.has_value() == open.has_value(), "the border makes no argument good");
  if (!closed) return;
  CheckRuns(*closed, input);
  CheckRuns(*open, input);
  Require(open->Steps() <= closed->Steps(), "a border adds points");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 3)) {
  case 0:
    CheckAnySolid(input);
    break;
  case 1:
    CheckTetrahedra(input);
    break;
  case 2:
    CheckPolygon(input);
    break;
  default:
    CheckEllipsoid(input);
  }
  return 0;
}
