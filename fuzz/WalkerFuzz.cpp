// The walkers over whole images: windows, unit directions, parallel lines of any direction.
#include "Fuzzing.h"

#include <SeluUtils/ImageWalker.h>

#include <cmath>
#include <stdexcept>

using namespace ORVA;
using namespace fuzz;

namespace {

PointList RasterOrder(Point const& low, Point const& high) {
  PointList points;
  for (int64 z = low.z; z <= high.z; ++z)
    for (int64 y = low.y; y <= high.y; ++y)
      for (int64 x = low.x; x <= high.x; ++x) points.emplace_back(x, y, z);
  return points;
}

PointList ImagePoints(Point const& size) {
  return RasterOrder({0, 0, 0}, size + Point(-1, -1, -1));
}

Point TakeSize(CInput& input) { return input.PointBetween(-1, 20); }

bool IsFinite(CTriple<double> const& d) {
  return std::isfinite(d.x) && std::isfinite(d.y) && std::isfinite(d.z);
}

void CheckWindow(CInput& input) {
  Point low = input.SmallPoint(12), high = input.SmallPoint(12);
  CWindowVisitor window(low, high);
  if (input.Flag()) {
    Point const size = TakeSize(input);
    window.SetImageSize(size);
    Impl::Clip(low, high, size);
  }
  if (Impl::HasPoints(low, high))
    Require(CheckWalk(window) == RasterOrder(low, high), "a window is walked in raster order");
  else
    Require(!window.MorePoints(), "a window without points ends at once");
  static_cast<void>(Walk(window));
  Require(window.MorePoints() == false, "a small window ends");
  Require(Throws<CException>([&] { window.NextPoint(); }), "no point after the last one");
}

// Boxes with corners anywhere: counted modulo 2^64 and begun.
void CheckFarWindow(CInput& input) {
  Point const low = input.AnyPoint(), high = input.AnyPoint();
  CWindowVisitor window(low, high);
  if (input.Flag()) window.SetImageSize(input.AnyPoint());
  StBox const box{window.Low(), window.High()};
  RequireInside(Walk(window, 1000), box, "a window's points lie in it");
}

void CheckDirectional(CInput& input) {
  Point const direction = input.PointBetween(-1, 1);
  Point low = input.SmallPoint(8), high = input.SmallPoint(12);
  Point const size = TakeSize(input);
  CDirectionalVisitor walker(low, high, direction);
  bool const isNull = direction == Point();
  bool const refuses = Throws<std::out_of_range>([&] { walker.SetImageSize(size); });
  Impl::Clip(low, high, size);
  bool const hasPoints = Impl::HasPoints(low, high);
  Require(refuses == (isNull && hasPoints), "the null direction, and no other, has no faces");
  if (refuses || !hasPoints) return Require(!walker.MorePoints(), "no box or face, no points");
  PointList const all = RasterOrder(low, high);
  PointList const points = Walk(walker, all.size() + 1);
  RequireInside(points, {low, high}, "a directional walk stays in its box");
  RequireDistinct(points, "a directional walk visits a voxel once");
  bool const isThick = low.x < high.x && low.y < high.y && low.z < high.z;
  Require(!isThick || points.size() == all.size(), "a directional walk covers its box");
  walker.SetDirection(direction);
  Require(Walk(walker, all.size() + 1) == points, "a direction set anew restarts the walk");
}

void CheckBadDirection(CInput& input) {
  Point const direction = input.AnyPoint();
  auto const isUnit = [](int64 c) { return -1 <= c && c <= 1; };
  bool const isValid = isUnit(direction.x) && isUnit(direction.y) && isUnit(direction.z);
  auto const walker = Try([&] { return CDirectionalVisitor(Point(), Point(5, 5, 5), direction); });
  Require(walker.has_value() == isValid, "directions have the components -1, 0 and 1");
}

// The line takes memory for |direction| * diagonal points; this target leaves it at little. In
// space also a length beyond 64 bits is short: nothing is left of it in the low 32 bits that count.
bool IsLongLine(CTriple<double> const& d, Point const& size) {
  double const diagonal = std::hypot(size.x, size.y, size.z);
  return std::ranges::any_of(std::array{d.x, d.y, d.z}, [&](double component) {
    double const length = std::abs(component * diagonal);
    return length > 1e4 && (size.z == 1 || length < 0x1p64);
  });
}

void CheckDelta(CInput& input) {
  auto const direction = input.RealTriple();
  Point const size = TakeSize(input);
  if (IsFinite(direction) && IsLongLine(direction, size)) return;
  CDeltaVisitor walker(direction);
  Require(!walker.MorePoints(), "no points before there is an image");
  bool const isBuilt = Done([&] { walker.SetImageSize(size); });
  Require(!isBuilt || IsFinite(direction) || !walker.MorePoints(), "directions are finite");
  Require(isBuilt || !walker.MorePoints(), "no points after an error");
  PointList const points = Walk(walker);
  Require(!walker.MorePoints(), "a small walk ends");
  Require(Throws<CException>([&] { walker.NextPoint(); }), "no point after the last one");
  bool const isUpward = direction.x >= 0 && direction.y >= 0 && direction.z >= 0;
  if (!isUpward || !isBuilt || size.x <= 0 || size.y <= 0 || size.z <= 0) return;
  Require(points.size() == walker.Steps(), "a walk hands out as many points as it counts");
  RequireDistinct(points, "a delta walk visits a voxel once");
}

void CheckParallel(CInput& input) {
  auto const direction = input.RealTriple();
  bool const isNull = direction.x == 0 && direction.y == 0 && direction.z == 0;
  auto walker = Try([&] { return CParallelLineVisitor(direction); });
  Require(walker.has_value() == (IsFinite(direction) && !isNull), "any true direction is walked");
  if (!walker) return;
  Require(!walker->MorePoints(), "no points before there is an image");
  Point const size = TakeSize(input);
  walker->SetImageSize(size);
  if (size.x <= 0 || size.y <= 0 || size.z <= 0)
    return Require(!walker->MorePoints(), "no points without voxels");
  PointList const points = CheckWalk(*walker);
  Require(Sorted(points) == Sorted(ImagePoints(size)), "every voxel is visited once");
  walker->SetDirection(direction);
  Require(Walk(*walker) == points, "a direction set anew restarts the walk");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 5)) {
  case 0:
    CheckWindow(input);
    break;
  case 1:
    CheckFarWindow(input);
    break;
  case 2:
    CheckDirectional(input);
    break;
  case 3:
    CheckBadDirection(input);
    break;
  case 4:
    CheckDelta(input);
    break;
  default:
    CheckParallel(input);
  }
  return 0;
}
