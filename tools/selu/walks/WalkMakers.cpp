#include "base/Arguments.h"
#include "base/Errors.h"
#include "base/Memory.h"
#include "base/Texts.h"
#include "walks/RegionMakers.h"
#include "walks/WalkIdeal.h"
#include "walks/WalkPoints.h"

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/Exception.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace selu {
namespace {

using ORVA::CSize;
using ORVA::int64;
using MaybeSize = std::optional<CSize>;

std::string Text(Point const& p, int dimension) {
  std::vector<int64> numbers = {p.x, p.y};
  if (dimension == 3) numbers.push_back(p.z);
  return Joined(numbers, ",");
}

std::string SizeText(CSize const& size) {
  std::vector<int64> extents = {size.x, size.y};
  if (size.Dim() == 3) extents.push_back(size.z);
  return Joined(extents, " x ");
}

// What the neighborhood adds to a title.
std::string Suffix(StWalkOptions const& given, int dimension, bool hasBorder) {
  std::string const name =
      given.neighborhood.empty() ? (dimension == 2 ? "8" : "26") : given.neighborhood;
  return ", neighborhood " + name + (hasBorder ? "" : ", without border");
}

double Extent(std::vector<Point> const& points, int64 Point::*axis) {
  auto const [low, high] =
      std::minmax_element(points.begin(), points.end(),
                          [&](Point const& a, Point const& b) { return a.*axis < b.*axis; });
  return static_cast<double>(*high.*axis - *low.*axis);
}

// Digital lines have lengths of 32 bits.
void RefuseFarApart(std::vector<Point> const& points, std::string const& what) {
  constexpr std::array<std::pair<int64 Point::*, char>, 3> axes = {
      {{&Point::x, 'x'}, {&Point::y, 'y'}, {&Point::z, 'z'}}};
  for (auto const& [axis, letter] : axes)
    if (Extent(points, axis) > std::numeric_limits<std::int32_t>::max())
      throw CAppError(what + " is longer than 2147483647 voxels along " + letter);
}

// The digital lines from each point to the next must fit into memory, twice while they are walked.
void RefuseLongLines(std::vector<Point> const& points, bool isClosed, double bytesPerMove,
                     std::string const& what) {
  double moves = 0;
  for (std::size_t i = 0; i + (isClosed ? 0 : 1) < points.size(); ++i) {
    Point const step = points[(i + 1) % points.size()] - points[i];
    moves += std::abs(static_cast<double>(step.x)) + std::abs(static_cast<double>(step.y)) +
             std::abs(static_cast<double>(step.z));
  }
  RefuseBeyondMemory(2 * moves * bytesPerMove, what);
}

// A walk in two dimensions has no place in a volume.
void CheckDimension(int dimension, MaybeSize const& size, std::string const& what) {
  if (dimension == 2 && size && size->z > 1)
    throw CAppError(what + " needs z, since the image is 3D");
}

StPoints Corners(StWalkOptions const& given) {
  if (given.corners.empty() == given.points.empty())
    throw CUsageError(given.points.empty() ? "the corners are missing: name them or --corners FILE"
                                           : "the corners come from the command line or from "
                                             "--corners, not from both");
  return given.corners.empty() ? ParsePoints(given.points, "CORNER") : ReadPoints(given.corners);
}

std::string CornersText(std::string const& kind, StPoints const& corners) {
  std::size_t const count = corners.points.size();
  if (count > 4)
    return kind + " of " + std::to_string(count) + " corners from " +
           Text(corners.points.front(), corners.dimension);
  std::string text = kind;
  for (auto const& p : corners.points) text += " " + Text(p, corners.dimension);
  return text;
}

StWalk MakeLine(StWalkOptions const& given, MaybeSize const& size) {
  if (given.points.size() != 2) throw CUsageError("a line needs two points, FROM and TO");
  StPoints const ends = ParsePoints(given.points, "the line");
  auto const code = ParseNeighborhood(given.neighborhood, ends.dimension);
  auto const &from = ends.points[0], &to = ends.points[1];
  std::string const what =
      "line from " + Text(from, ends.dimension) + " to " + Text(to, ends.dimension);
  CheckDimension(ends.dimension, size, "the " + what);
  RefuseFarApart(ends.points, "the " + what);
  // Other lines are walked without a list of moves.
  if (ends.dimension == 3 && code != ORVA::NEIGHBORHOOD_26)
    RefuseLongLines(ends.points, false, 40, "the " + what);
  bool const hasEnds = given.ends == "both";
  return {.title = what + Suffix(given, ends.dimension, true) + (hasEnds ? "" : ", without ends"),
          .dimension = ends.dimension,
          .walker = ORVA::CBresenhamVisitor(from, to, ends.dimension, code, hasEnds),
          .ideal = {Chain(ends.points, false)}};
}

constexpr double c_bytesPerBorderPoint = 100; // at the peak, while it is sorted

// Corners with what every outline must fulfil.
StPoints Outline(StWalkOptions const& given, MaybeSize const& size, std::string const& kind) {
  StPoints corners = Corners(given);
  CheckDimension(corners.dimension, size, "the " + kind);
  RefuseFarApart(corners.points, "the " + kind);
  RefuseLongLines(corners.points, true, c_bytesPerBorderPoint, "the " + kind);
  return corners;
}

StWalk MakeArea(StWalkOptions const& given, MaybeSize const& size) {
  StPoints const corners = Outline(given, size, "area");
  int const dimension = corners.dimension;
  auto const code = ParseNeighborhood(given.neighborhood, dimension);
  auto taken = corners.points;
  return {.title = CornersText("area", corners) + Suffix(given, dimension, !given.withoutBorder),
          .dimension = dimension,
          .walker = ORVA::CBresenhamAreaVisitor(taken, dimension, code, !given.withoutBorder),
          .ideal = {Chain(corners.points, true)}};
}

StWalk MakePolygon(StWalkOptions const& given, MaybeSize const& size) {
  if (AsksForRealPolygon(given)) return MakeRealPolygon(given, size);
  StPoints const corners = Outline(given, size, "polygon");
  int const dimension = corners.dimension;
  auto const code = ParseNeighborhood(given.neighborhood, dimension);
  std::vector<std::vector<Point>> holes;
  std::vector<std::vector<RealPoint>> ideal = {Chain(corners.points, true)};
  for (auto const& path : given.holes) {
    StPoints hole = ReadPoints(path);
    if (hole.dimension != dimension)
      throw CAppError("the hole " + Quoted(path) + " is " + std::to_string(hole.dimension) +
                      "D, but the outline " + std::to_string(dimension) + "D");
    RefuseFarApart(hole.points, "the hole " + Quoted(path));
    RefuseLongLines(hole.points, true, c_bytesPerBorderPoint, "the hole " + Quoted(path));
    ideal.push_back(Chain(hole.points, true));
    holes.push_back(std::move(hole.points));
  }
  return {.title = CornersText("polygon", corners) + Suffix(given, dimension, !given.withoutBorder),
          .dimension = dimension,
          .walker =
              ORVA::CPolygonVisitor(corners.points, holes, dimension, code, !given.withoutBorder),
          .ideal = std::move(ideal)};
}

StWalk MakeVolume(StWalkOptions const& given, MaybeSize const& size) {
  StPoints corners = Outline(given, size, "volume");
  if (corners.dimension != 3)
    throw CUsageError("a volume needs corners x,y,z, not " + Text(corners.points[0], 2));
  for (auto const& p : corners.points)
    if (p.x < 0 || p.x > std::numeric_limits<std::int32_t>::max())
      throw CAppError("the corner " + Text(p, 3) +
                      " lies outside the slices of a volume, x from 0 to 2147483647");
  auto const code = ParseNeighborhood(given.neighborhood, 3);
  if (code != ORVA::NEIGHBORHOOD_6 && code != ORVA::NEIGHBORHOOD_26)
    throw CUsageError("--neighborhood needs one of 6 and 26 for a volume, not \"" +
                      given.neighborhood + "\"");
  StWalk walk = {.title = CornersText("volume", corners) + Suffix(given, 3, !given.withoutBorder)};
  auto& points = corners.points;
  if (!given.edges) {
    if (points.front() != points.back()) points.push_back(points.front());
    walk.ideal = {Chain(points, false)};
    walk.walker = ORVA::CBresenhamVolumeVisitor(points, code, !given.withoutBorder);
    return walk;
  }
  if (points.size() % 2 != 0)
    throw CAppError("--edges needs two corners an edge, and there are " +
                    std::to_string(points.size()));
  std::vector<Point> starts, ends;
  for (std::size_t i = 0; i < points.size(); i += 2) {
    starts.push_back(points[i]);
    ends.push_back(points[i + 1]);
    walk.ideal.push_back(Chain({points[i], points[i + 1]}, false));
  }
  walk.walker = ORVA::CBresenhamVolumeVisitor(starts, ends, code, !given.withoutBorder);
  return walk;
}

CSize NeededSize(MaybeSize const& size, std::string const& kind) {
  if (!size) throw CUsageError(kind + " needs the size of an image: --size or --image");
  return *size;
}

double ParseDistance(std::string const& text) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 1 || !std::isfinite(numbers->front()))
    throw CUsageError("--distance needs a finite number, not \"" + Shown(text) + "\"");
  return numbers->front();
}

// The plane of a slice: through three points, or by its normal and distance.
struct StPlane {
  std::vector<Point> points;
  RealPoint normal;
  double distance = 0;
};

StPlane ParsePlane(StWalkOptions const& given) {
  bool const isByNormal = !given.normal.empty() || !given.distance.empty();
  if (isByNormal == !given.points.empty())
    throw CUsageError("a slice needs three points or --normal and --distance");
  if (isByNormal) {
    if (given.normal.empty() || given.distance.empty())
      throw CUsageError("--normal and --distance belong together");
    auto const normal = ParseRealDirection(given.normal, "--normal");
    if (normal.dimension != 3)
      throw CUsageError("--normal needs three numbers x,y,z, not \"" + given.normal + "\"");
    return {{}, normal.components, ParseDistance(given.distance)};
  }
  StPoints const corners = ParsePoints(given.points, "the slice");
  if (corners.points.size() != 3 || corners.dimension != 3)
    throw CUsageError("a slice needs three points x,y,z or --normal and --distance");
  auto const &a = corners.points[0], b = corners.points[1] - a, c = corners.points[2] - a;
  RealPoint const u = Real(b), v = Real(c);
  RealPoint const normal(u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x);
  RealPoint const origin = Real(a);
  return {corners.points, normal, normal.x * origin.x + normal.y * origin.y + normal.z * origin.z};
}

std::string PlaneText(StWalkOptions const& given, StPlane const& plane) {
  if (plane.points.empty()) return "normal " + given.normal + ", distance " + given.distance;
  std::string text = "through";
  for (auto const& point : plane.points) text += " " + Text(point, 3);
  return text;
}

ORVA::CCutSlice Lattice(StPlane const& plane, int64 code, CSize const& size) {
  // As moves of two lines along the box's edges.
  RefuseBeyondMemory(
      2 * 24.0 * 3 *
          (static_cast<double>(size.x) + static_cast<double>(size.y) + static_cast<double>(size.z)),
      "the slice");
  auto taken = plane.points;
  ORVA::CCutSlice slice = taken.empty() ? ORVA::CCutSlice(plane.normal, plane.distance, code)
                                        : ORVA::CCutSlice(taken, code);
  slice.SetImageSize(CSize(size.x, size.y, size.z)); // of three dimensions
  return slice;
}

StWalk MakeSlice(StWalkOptions const& given, MaybeSize const& maybeSize) {
  bool const isLattice = given.method == "lattice";
  if (!isLattice && !given.neighborhood.empty())
    throw CUsageError("--neighborhood is for --method lattice");
  auto const code = ParseNeighborhood(given.neighborhood, 3);
  StPlane const plane = ParsePlane(given);
  CSize const size = NeededSize(maybeSize, "a slice");
  auto const& p = plane.points;
  ORVA::CPlaneSection section = p.empty() ? ORVA::CPlaneSection(plane.normal, plane.distance)
                                          : ORVA::CPlaneSection(p[0], p[1], p[2]);
  section.SetImageSize(size);
  StWalk walk = {.title = "slice " + PlaneText(given, plane) + " in " + SizeText(size) +
                          (isLattice ? Suffix(given, 3, true) : ""),
                 .walker = section,
                 .ideal = PlaneOutline(plane.normal, plane.distance, size),
                 .dominantAxis = section.DominantAxis()};
  auto const& n = plane.normal;
  bool const isAcross = (n.x != 0) + (n.y != 0) + (n.z != 0) == 1;
  if (isAcross && section.MorePoints()) {
    ORVA::CTriple<int64> const point = section.NextPoint();
    walk.place = walk.dominantAxis == 0 ? point.x : walk.dominantAxis == 1 ? point.y : point.z;
  }
  if (isLattice) walk.walker = Lattice(plane, code, size);
  return walk;
}

struct StBoxCorners {
  int dimension = 0;
  Point low, high;
};

// From --low to --high, or the whole image.
StBoxCorners ParseBox(StWalkOptions const& given, MaybeSize const& size, std::string const& kind) {
  if (given.low.empty() != given.high.empty())
    throw CUsageError("--low and --high belong together");
  if (given.low.empty()) {
    if (!size) throw CUsageError(kind + " needs --low and --high, --size or --image");
    return {size->Dim(), {0, 0, 0}, Point(size->x - 1, size->y - 1, size->z - 1)};
  }
  auto const low = ParsePoint(given.low, "--low"), high = ParsePoint(given.high, "--high");
  if (low.dimension != high.dimension)
    throw CUsageError("--low " + given.low + " and --high " + given.high +
                      " have different dimensions");
  Point const &a = low.points[0], &b = high.points[0];
  if (a.x > b.x || a.y > b.y || a.z > b.z)
    throw CUsageError("--low " + given.low + " lies beyond --high " + given.high);
  CheckDimension(low.dimension, size, kind);
  return {low.dimension, a, b};
}

std::string BoxText(StBoxCorners const& box) {
  return Text(box.low, box.dimension) + " to " + Text(box.high, box.dimension);
}

StWalk MakeWindow(StWalkOptions const& given, MaybeSize const& size) {
  auto const box = ParseBox(given, size, "a window");
  ORVA::CWindowVisitor window(box.low, box.high);
  if (size) window.SetImageSize(*size);
  return {.title = "window from " + BoxText(box),
          .dimension = box.dimension,
          .walker = window,
          .ideal = BoxOutline(box.low, box.high)};
}

StWalk MakeDirection(StWalkOptions const& given, MaybeSize const& size) {
  auto const direction = ParsePoint(given.direction, "DIRECTION");
  Point const& d = direction.points[0];
  auto const isUnit = [](int64 component) { return component >= -1 && component <= 1; };
  if (!isUnit(d.x) || !isUnit(d.y) || !isUnit(d.z) || d == Point())
    throw CUsageError("DIRECTION needs components of -1, 0 and 1 that are not all 0, not \"" +
                      given.direction + "\"");
  auto const box = ParseBox(given, size, "a direction walk");
  if (box.dimension != direction.dimension)
    throw CAppError("the direction " + given.direction + " is " +
                    std::to_string(direction.dimension) + "D, but the box " +
                    std::to_string(box.dimension) + "D");
  ORVA::CDirectionalVisitor walker(box.low, box.high, d);
  if (size)
    walker.SetImageSize(*size);
  else
    walker.SetDirection(d);
  return {.title = "direction " + given.direction + " in " + BoxText(box),
          .dimension = box.dimension,
          .walker = std::move(walker),
          .ideal = {LineThrough(box.low, box.high, Real(d))}};
}

ORVA::CDeltaVisitor PlainDelta(StWalkOptions const& given, RealPoint const& direction,
                               CSize const& size) {
  ORVA::CDeltaVisitor walker(direction);
  try {
    walker.SetImageSize(size);
  } catch (ORVA::CException const&) { // its line did not reach across the image
    throw CAppError("the direction " + given.direction + " is too short for the plain walk of " +
                    SizeText(size) + " voxels");
  }
  return walker;
}

StWalk MakeDelta(StWalkOptions const& given, MaybeSize const& maybeSize) {
  auto const direction = ParseRealDirection(given.direction, "DIRECTION");
  CSize const size = NeededSize(maybeSize, "a delta walk");
  CheckDimension(direction.dimension, size, "the direction " + given.direction);
  Point const last(size.x - 1, size.y - 1, size.z - 1);
  StWalk walk = {.title = "delta " + given.direction + " in " + SizeText(size),
                 .dimension = std::max(direction.dimension, size.Dim()),
                 .ideal = {LineThrough({0, 0, 0}, last, direction.components)}};
  // The points of one line, which is no longer than the image along its main axis.
  RefuseBeyondMemory(2.0 * sizeof(Point) * static_cast<double>(std::max({size.x, size.y, size.z})),
                     "the direction " + given.direction);
  if (given.method == "plain") {
    walk.walker = PlainDelta(given, direction.components, size);
  } else {
    ORVA::CParallelLineVisitor walker(direction.components);
    walker.SetImageSize(size);
    walk.walker = std::move(walker);
  }
  return walk;
}

struct StMaker {
  char const* name;
  StWalk (*make)(StWalkOptions const&, MaybeSize const&);
};
// Row k makes walks of kind k.
constexpr std::array<StMaker, 9> c_makers = {{{"line", MakeLine},
                                              {"area", MakeArea},
                                              {"polygon", MakePolygon},
                                              {"volume", MakeVolume},
                                              {"solid", MakeSolid},
                                              {"slice", MakeSlice},
                                              {"window", MakeWindow},
                                              {"delta", MakeDelta},
                                              {"direction", MakeDirection}}};

} // namespace

StWalk MakeWalk(EnWalk kind, StWalkOptions const& given, MaybeSize const& size) {
  auto const& maker = c_makers[static_cast<std::size_t>(kind)];
  try {
    return maker.make(given, size);
  } catch (ORVA::CException const& error) {
    throw CAppError(std::string("the ") + maker.name + " walk is impossible: " + error.what());
  }
}

} // namespace selu
