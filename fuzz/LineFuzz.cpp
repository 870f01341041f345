// Digital lines: whatever the ends, the neighborhood and the image that selects a part.
#include "Fuzzing.h"

#include <SeluUtils/BresenhamVisitor.h>

#include <cmath>
#include <span>
#include <utility>

using namespace ORVA;
using namespace fuzz;

namespace {

// A line takes 8 to 40 bytes per move: the library allows 2^31 moves, this target memory for few.
constexpr int64 c_mostMoves = 3000;

struct StLine {
  Point from, to;
  int64 dimension, neighborhood;
  bool withEndPoints;
};

std::optional<int64> Difference(int64 from, int64 to) {
  int64 difference = 0;
  if (__builtin_sub_overflow(to, from, &difference)) return std::nullopt;
  return difference;
}

// The difference in the axes that are walked; nothing where it leaves the 64-bit range.
std::optional<Point> Difference(StLine const& line) {
  auto const x = Difference(line.from.x, line.to.x);
  auto const y = line.dimension < 2 ? 0 : Difference(line.from.y, line.to.y);
  auto const z = line.dimension < 3 ? 0 : Difference(line.from.z, line.to.z);
  if (!x || !y || !z) return std::nullopt;
  return Point(*x, *y, *z);
}

int64 Length(int64 dimension, int64 component) {
  return dimension == 3 ? Impl::TruncatedLength(component) : Impl::ClampedLength(component);
}
int64 LengthSum(int64 dimension, Point const& d) {
  return Length(dimension, d.x) + Length(dimension, d.y) + Length(dimension, d.z);
}
int64 LongestLength(int64 dimension, Point const& d) {
  return std::max({Length(dimension, d.x), Length(dimension, d.y), Length(dimension, d.z)});
}

// Whether 32 bits hold the components of a difference.
bool KeepsLengths(int64 dimension, Point const& d) {
  return std::ranges::all_of(std::array{d.x, d.y, d.z}, [&](int64 component) {
    return std::in_range<std::int32_t>(component) &&
           Length(dimension, component) == std::abs(component);
  });
}

bool HasLine(int64 dimension, int64 neighborhood) {
  return dimension == 1 || (dimension == 2 && Is2D(neighborhood)) ||
         (dimension == 3 && Is3D(neighborhood));
}

bool IsMove(int64 neighborhood, int64 dimension, Point const& m) {
  if (dimension == 1) return m.x * m.x == 1 && m.y == 0 && m.z == 0;
  int64 const axes = std::abs(m.x) + std::abs(m.y) + std::abs(m.z);
  if (axes == 1) return true;
  if (std::max({std::abs(m.x), std::abs(m.y), std::abs(m.z)}) != 1) return false;
  bool const agreeXY = m.x * m.y >= 0, agreeXZ = m.x * m.z >= 0, agreeYZ = m.y * m.z >= 0;
  switch (neighborhood) {
  case NEIGHBORHOOD_6_1:
    return m.x == m.y;
  case NEIGHBORHOOD_6_2:
    return m.x == -m.y;
  case NEIGHBORHOOD_14_1:
    return agreeXY && agreeXZ && agreeYZ;
  case NEIGHBORHOOD_14_2:
    return axes == 3 || m.x != 0 ? agreeXY && agreeXZ && agreeYZ : !agreeYZ;
  default:
    return neighborhood == NEIGHBORHOOD_8 || neighborhood == NEIGHBORHOOD_26;
  }
}

StLine TakeLine(CInput& input) {
  StLine line{};
  line.dimension = input.Between(0, 4);
  line.neighborhood = input.Neighborhood();
  line.withEndPoints = input.Flag();
  bool const isFar = input.Flag();
  line.from = isFar ? input.AnyPoint() : input.SmallPoint(100);
  line.to = isFar ? input.AnyPoint() : line.from + input.SmallPoint(300);
  if (isFar && input.Flag()) { // a short line far out
    auto const near = input.SmallPoint(300);
    __builtin_add_overflow(line.from.x, near.x, &line.to.x);
    __builtin_add_overflow(line.from.y, near.y, &line.to.y);
    __builtin_add_overflow(line.from.z, near.z, &line.to.z);
  }
  return line;
}

// The moves and points of a line with end points whose lengths are those of the difference.
void CheckPoints(StLine const& line, Point const& difference, PointList const& points) {
  Require(points.front() == line.from, "a line begins at its start");
  Require(points.size() == c_longest || points.back() - points.front() == difference,
          "a line ends at its end");
  for (std::size_t k = 1; k < points.size(); ++k) {
    Point const move = points[k] - points[k - 1];
    Require(IsMove(line.neighborhood, line.dimension, move), "a line keeps to its neighborhood");
    Require(move.x * Impl::Sign(difference.x) >= 0 && move.y * Impl::Sign(difference.y) >= 0 &&
                move.z * Impl::Sign(difference.z) >= 0,
            "a line never goes back");
  }
}

void CheckCount(StLine const& line, Point const& d, int64 moves) {
  int64 const fewest = LongestLength(line.dimension, d), most = LengthSum(line.dimension, d);
  Require(fewest <= moves && moves <= most, "a line has a possible number of moves");
  if (line.neighborhood == NEIGHBORHOOD_8 || line.neighborhood == NEIGHBORHOOD_26)
    Require(moves == fewest || line.dimension == 1, "diagonals make a line shortest");
  if (line.neighborhood == NEIGHBORHOOD_4 || line.neighborhood == NEIGHBORHOOD_6)
    Require(moves == most || line.dimension == 1, "without diagonals each voxel is a move");
}

void CheckWithoutEndPoints(CBresenhamVisitor line, PointList const& whole) {
  PointList const inner = Walk(line);
  if (whole.size() >= c_longest) return;
  if (whole.size() < 3) return Require(inner.empty(), "a short line has no inner points");
  Require(std::ranges::equal(inner, std::span(whole).subspan(1, whole.size() - 2)),
          "a line without end points is the inner part of the line with them");
}

// The walk from the from point to the first voxel inside and on to the last one in a row.
void CheckSelection(CInput& input, StLine const& line, PointList const& whole) {
  Point const size(input.Between(-2, 120), input.Between(-2, 120), input.Between(-2, 120));
  CBresenhamVisitorSelect select(line.from, line.to, line.dimension, line.neighborhood, true);
  Require(Walk(select).size() == 1, "a walk without image hands out its start");
  select.SetImageSize(size);
  StBox const box{{0, 0, 0},
                  {size.x - 1, line.dimension < 2 ? line.from.y : size.y - 1,
                   line.dimension < 3 ? line.from.z : size.z - 1}};
  auto const isInside = [&](Point const& p) {
    return p.x >= 0 && p.x <= box.high.x &&
           (line.dimension < 2 || (p.y >= 0 && p.y <= box.high.y)) &&
           (line.dimension < 3 || (p.z >= 0 && p.z <= box.high.z));
  };
  PointList const selected = CheckWalk(select, static_cast<uint64>(select.Steps()) + 1);
  auto const first = std::ranges::find_if(whole, isInside);
  auto const last = std::find_if_not(first, whole.end(), isInside);
  if (first == whole.end())
    Require(selected == PointList{whole.back()},
            "a line that never enters hands out its last point");
  else
    Require(std::equal(selected.begin(), selected.end(), first, last),
            "the selection is the first run of points inside");
}

void CheckLine(CInput& input) {
  StLine const line = TakeLine(input);
  auto const difference = Difference(line);
  bool const hasLine = HasLine(line.dimension, line.neighborhood);
  if (hasLine && difference && line.dimension > 1 &&
      LengthSum(line.dimension, *difference) > c_mostMoves)
    return;
  auto const walker = Try([&] {
    return CBresenhamVisitor(line.from, line.to, line.dimension, line.neighborhood, true);
  });
  if (!hasLine || !difference) return Require(!walker, "what is no line is refused");
  bool const isWhole = KeepsLengths(line.dimension, *difference); // else it may lead elsewhere
  if (!isWhole && !walker) return;
  Require(walker.has_value(), "a line between two points within reach is walked");
  PointList const points = CheckWalk(*walker, static_cast<uint64>(walker->Steps()) + 1);
  if (!isWhole) return;
  CheckCount(line, *difference, walker->Steps());
  CheckPoints(line, *difference, points);
  CheckWithoutEndPoints(
      CBresenhamVisitor(line.from, line.to, line.dimension, line.neighborhood, false), points);
  if (points.size() < c_longest) CheckSelection(input, line, points);
}

// The core by itself: any mask, any code, built once and once more.
void CheckCore(CInput& input) {
  Point const d = input.Flag() ? input.AnyPoint() : input.SmallPoint(40);
  if (LengthSum(3, d) > c_mostMoves) return;
  int64 const neighborhood = input.Neighborhood(), mask = input.Between(-2, 9);
  auto line = Try([&] { return Impl::CBresenhamVisitor3D(d, neighborhood, mask); });
  Require(line.has_value() == (mask >= 0 && mask <= 7), "the masks are 0 to 7");
  if (!line) return;
  Point end;
  for (auto const& move : line->Moves()) end += move;
  Require(std::abs(end.x) == Impl::TruncatedLength(d.x) &&
              std::abs(end.y) == Impl::TruncatedLength(d.y) &&
              std::abs(end.z) == Impl::TruncatedLength(d.z),
          "the moves of a line add up to its difference");
  PointList const moves(line->Moves().begin(), line->Moves().end());
  line->Init(d.x, d.y, d.z, mask);
  Require(std::ranges::equal(line->Moves(), moves), "a line built again is the same");
  int64 const step = input.Integer();
  if (step < 0)
    Require(Throws<CException>([&] { static_cast<void>(line->Step(step)); }), "no negative step");
  else
    Require(step < line->LastStep() || line->Step(step) == Point(), "no move past the end");
}

// The same by the walks over the core: from the origin, and the part inside an image.
void CheckMask(CInput& input) {
  Point const d = input.Flag() ? input.AnyPoint() : input.SmallPoint(40);
  if (LengthSum(3, d) > c_mostMoves) return;
  int64 const mask = input.Between(-2, 9);
  auto const walker = Try([&] { return CBresenhamVisitor(d, mask); });
  Require(walker.has_value() == (mask >= 0 && mask <= 7), "the masks are 0 to 7");
  if (!walker) return;
  PointList const points = CheckWalk(*walker, static_cast<uint64>(walker->Steps()) + 1);
  CBresenhamVisitorSelect select(d, mask);
  select.SetImageSize(CSize(input.Between(0, 50), input.Between(0, 50), input.Between(0, 50)));
  PointList const selected = CheckWalk(select, static_cast<uint64>(select.Steps()) + 1);
  Require(std::search(points.begin(), points.end(), selected.begin(), selected.end()) !=
              points.end(),
          "a selection is a part of its line");
}

void CheckPlaneCore(CInput& input) {
  int64 const dx = input.Integer(), dy = input.Integer(), neighborhood = input.Neighborhood();
  if (LengthSum(2, {dx, dy, 0}) > c_mostMoves) return;
  auto line = Try([&] { return Impl::CBresenhamVisitor2D(dx, dy, neighborhood); });
  Require(line.has_value() == Is2D(neighborhood), "what is no neighborhood is refused");
  if (!line) return;
  Point end;
  for (int64 k = 0; k < line->LastStep(); ++k) end += line->Step(k);
  Require(end == Point(dx, dy, 0), "the moves of a line add up to its difference");
  int64 const a = input.Integer(), b = input.Integer();
  constexpr int64 c_longestLength = int64{1} << 31;
  bool const isLength = a >= 0 && a <= c_longestLength && b >= 0 && b <= c_longestLength;
  if (isLength && a + b > c_mostMoves) return;
  Require(Done([&] { line->FillNabla(a, b); }) == isLength, "lengths are 0 to 2^31");
}

// Whether a length takes few moves: in dimension 3 also one so long that nothing is left of it in
// the low 32 bits of the end of the range.
bool IsShort(double length, int64 dimension) {
  return std::abs(length) < c_mostMoves / 3 || (dimension != 2 && !(std::abs(length) < 0x1p64)) ||
         dimension == 1;
}

void CheckDirection(CInput& input) {
  Point const start = input.AnyPoint();
  auto const direction = input.RealTriple();
  double const length = input.Real();
  int64 const dimension = input.Between(1, 3), neighborhood = input.Neighborhood();
  for (double const component : {direction.x, direction.y, direction.z})
    if (!IsShort(component * length, dimension)) return;
  bool const withEndPoints = input.Flag();
  auto walker = Try([&] {
    return CBresenhamVisitor(start, direction, length, dimension, neighborhood, withEndPoints);
  });
  if (!walker) return;
  auto const expected = static_cast<uint64>(std::max<int64>(walker->Steps() + 1, 0));
  PointList const points = Walk(*walker);
  Require(points.size() == std::min<uint64>(expected, c_longest),
          "a line hands out one point more than it counts moves");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Byte() % 8) {
  case 0:
    CheckCore(input);
    break;
  case 1:
    CheckDirection(input);
    break;
  case 2:
    CheckMask(input);
    break;
  case 3:
    CheckPlaneCore(input);
    break;
  default:
    CheckLine(input);
  }
  return 0;
}
