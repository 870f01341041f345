// Planes through volumes: the exact section and the lattice of digital lines, from any plane.
#include "Fuzzing.h"

#include <SeluUtils/CutSlice.h>
#include <SeluUtils/PlaneSection.h>

#include <cmath>

using namespace ORVA;
using namespace fuzz;

namespace {

// The lattice takes memory for its lines: the library allows extents of 2^30, this target few.
constexpr int64 c_mostExtent = 150;

bool IsFinite(CTriple<double> const& n, double distance) {
  return std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z) && std::isfinite(distance);
}

bool IsNull(CTriple<double> const& n) { return n.x == 0 && n.y == 0 && n.z == 0; }

CTriple<double> AsReal(Point const& p) {
  return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
}

int64 Along(Point const& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

StBox Box(Point const& size) {
  auto const last = [](int64 extent) { return std::max<int64>(extent, 0) - 1; };
  return {{0, 0, 0}, {last(size.x), last(size.y), last(size.z)}};
}

// Every voxel of a small box is asked whether the plane normal·p = distance passes within half a
// voxel of it along the dominant axis, halfway above it alone.
void CheckVoxels(CPlaneSection const& section, Point const& normal, int64 distance,
                 Point const& size) {
  int const axis = section.DominantAxis();
  int64 const length = Along(normal, axis);
  PointList expected;
  for (int64 x = 0; x < size.x; ++x)
    for (int64 y = 0; y < size.y; ++y)
      for (int64 z = 0; z < size.z; ++z) {
        int64 const excess = normal.x * x + normal.y * y + normal.z * z - distance;
        int64 const above = 2 * excess * (length < 0 ? -1 : 1);
        if (-std::abs(length) < above && above <= std::abs(length)) expected.emplace_back(x, y, z);
      }
  Require(Sorted(CheckWalk(section)) == expected, "a section has the voxels nearest the plane");
}

void CheckIntegerPlane(CInput& input) {
  Point const normal = input.SmallPoint(30), size = input.PointBetween(0, 14);
  int64 const distance = input.Between(-400, 400);
  auto section = Try([&] { return CPlaneSection(AsReal(normal), static_cast<double>(distance)); });
  Require(section.has_value() == (normal != Point()), "every direction is a plane's");
  if (!section) return;
  section->SetImageSize(size);
  CheckVoxels(*section, normal, distance, size);
}

void CheckSection(CInput& input) {
  auto const normal = input.RealTriple();
  double const distance = input.Real();
  auto section = Try([&] { return CPlaneSection(normal, distance); });
  Require(section.has_value() == (IsFinite(normal, distance) && !IsNull(normal)),
          "any finite plane is walked");
  if (!section) return;
  bool const isLarge = input.Flag();
  Point const size = isLarge ? input.AnyPoint() : input.PointBetween(0, 14);
  if (!Done([&] { section->SetImageSize(size); })) return Require(isLarge, "small images are cut");
  RequireInside(CheckWalk(*section), Box(size), "a section lies in its image");
}

void CheckThroughPoints(CInput& input) {
  bool const isFar = input.Flag();
  auto const next = [&] { return isFar ? input.AnyPoint() : input.SmallPoint(20); };
  Point const a = next(), b = next(), c = next();
  auto section = Try([&] { return CPlaneSection(a, b, c); });
  if (!section) return;
  Point const size = input.PointBetween(0, 14);
  section->SetImageSize(size);
  PointList const points = CheckWalk(*section);
  RequireInside(points, Box(size), "a section lies in its image");
  for (auto const& corner : {a, b, c})
    Require(!Box(size).Has(corner) || std::ranges::count(points, corner) == 1,
            "a plane passes through its points");
}

// A slice after SetImageSize: all its points, and again after an error.
void CheckLattice(CInput& input, CCutSlice slice) {
  Point const size = input.Flag() ? input.PointBetween(1, 14) : input.PointBetween(1, c_mostExtent);
  if (!Done([&] { slice.SetImageSize(size); }))
    return Require(slice.empty(), "no slice, no points");
  PointList const points = CheckWalk(slice);
  RequireInside(points, Box(size), "a slice lies in its image");
  Point const refused(input.Between((int64{1} << 30) + 1, std::numeric_limits<int64>::max()), 4, 4);
  Require(!Done([&] { slice.SetImageSize(refused); }), "extents beyond 2^30 are refused");
  slice.Reset();
  Require(CheckWalk(slice) == points, "an error leaves the slice as it was");
  slice.ComputeMoves();
  Require(CheckWalk(slice) == points, "a slice computed again is the same");
}

void CheckSlice(CInput& input) {
  auto const normal = input.RealTriple();
  double const distance = input.Real();
  int64 const neighborhood = input.Neighborhood();
  auto const slice = Try([&] { return CCutSlice(normal, distance, neighborhood); });
  if (slice) CheckLattice(input, *slice);
}

void CheckSliceThroughPoints(CInput& input) {
  bool const isFar = input.Byte() % 8 == 0;
  PointList points = input.List(4, [&] { return isFar ? input.AnyPoint() : input.SmallPoint(20); });
  PointList const kept = points;
  int64 const neighborhood = input.Neighborhood();
  auto const slice = Try([&] { return CCutSlice(points, neighborhood); });
  Require(points == (slice ? PointList() : kept), "the points are taken over, or left alone");
  if (slice) CheckLattice(input, *slice);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 5)) {
  case 0:
    CheckIntegerPlane(input);
    break;
  case 1:
    CheckSection(input);
    break;
  case 2:
    CheckThroughPoints(input);
    break;
  case 3:
    CheckSliceThroughPoints(input);
    break;
  default:
    CheckSlice(input);
  }
  return 0;
}
