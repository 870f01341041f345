#include <SeluUtils/CutSlice.h>

#include "Utils/Exact.h"

#include <SeluUtils/Impl/AxisMove.h>
#include <SeluUtils/LineVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_constructor[] = "ORVA::CCutSlice::CCutSlice";
constexpr char c_computeMoves[] = "ORVA::CCutSlice::ComputeMoves";

// Edges, lengthened ones too, then stay below 2^31, the length that digital lines have.
constexpr int64 c_largestExtent = int64{1} << 30;
// Corners this near a face, in parts of the extent, lie on it.
constexpr double c_snap = 1e-9;
// Angles are equal where their cosines differ by no more.
constexpr double c_equalAngles = 1e-12;

using Real = CTriple<double>;
using Corners = std::vector<Real>;

constexpr std::array<double Real::*, 3> c_axes = {&Real::x, &Real::y, &Real::z};

// An edge of the box: the axis along it, and where it lies on the axes (0 low, 1 high face).
struct StEdge {
  std::size_t axis;
  std::array<int, 3> high;
};
constexpr std::array<StEdge, 12> c_edges = {{{0, {0, 0, 0}},
                                             {1, {0, 0, 0}},
                                             {1, {1, 0, 0}},
                                             {0, {0, 1, 0}},
                                             {2, {0, 0, 0}},
                                             {2, {1, 0, 0}},
                                             {2, {0, 1, 0}},
                                             {2, {1, 1, 0}},
                                             {0, {0, 0, 1}},
                                             {1, {0, 0, 1}},
                                             {1, {1, 0, 1}},
                                             {0, {0, 1, 1}}}};

Real HighCorner(CTriple<int64> const& size) {
  return {static_cast<double>(size.x) - 1, static_cast<double>(size.y) - 1,
          static_cast<double>(size.z) - 1};
}

double Dot(Real const& a, Real const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Real Cross(Real const& a, Real const& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double Snapped(double value, double high) {
  double const tolerance = c_snap * (high + 1);
  if (std::abs(value) <= tolerance) return 0;
  return std::abs(value - high) <= tolerance ? high : value;
}

bool IsWithin(Real const& point, Real const& high) {
  return std::ranges::all_of(
      c_axes, [&](auto axis) { return point.*axis >= 0 && point.*axis <= high.*axis; });
}

// The corners of the plane's polygon in the box, in the order of the edges. An edge parallel to the
// plane divides by zero, and what results lies in no box.
Corners Intersect(Real const& normal, double distance, CTriple<int64> const& size) {
  Real const high = HighCorner(size);
  Corners corners;
  for (auto const& edge : c_edges) {
    Real corner(edge.high[0] * high.x, edge.high[1] * high.y, edge.high[2] * high.z);
    auto const axis = c_axes[edge.axis];
    corner.*axis = 0;
    double const solved = (distance - Dot(normal, corner)) / normal.*axis;
    corner.*axis = Snapped(solved, high.*axis);
    if (IsWithin(corner, high)) corners.push_back(corner);
  }
  return corners;
}

void SnapAndMerge(Corners& corners, CTriple<int64> const& size) {
  Real const high = HighCorner(size);
  Corners merged;
  for (auto corner : corners) {
    for (auto const axis : c_axes) corner.*axis = Snapped(corner.*axis, high.*axis);
    bool const isKnown = std::ranges::any_of(merged, [&](Real const& other) {
      return std::ranges::all_of(c_axes, [&](auto axis) {
        return std::abs(corner.*axis - other.*axis) <= c_snap * (high.*axis + 1);
      });
    });
    if (!isKnown) merged.push_back(corner);
  }
  corners = std::move(merged);
}

// Round their center as seen along the largest component of the normal, starting with the first.
void PutIntoCyclicOrder(Corners& corners, Real const& normal) {
  std::size_t main = 0;
  for (std::size_t k = 1; k < 3; ++k)
    if (std::abs(normal.*c_axes[k]) > std::abs(normal.*c_axes[main])) main = k;
  auto const right = c_axes[(main + 1) % 3], up = c_axes[(main + 2) % 3];
  Real center;
  for (auto const& corner : corners) center += corner;
  center = center * (1.0 / static_cast<double>(corners.size()));

  std::vector<std::pair<double, Real>> byAngle;
  for (auto const& corner : corners)
    byAngle.emplace_back(std::atan2(corner.*up - center.*up, corner.*right - center.*right),
                         corner);
  std::ranges::stable_sort(byAngle, {}, &std::pair<double, Real>::first);
  auto const first = std::ranges::find(byAngle, corners.front(), &std::pair<double, Real>::second);
  std::rotate(byAngle.begin(), first, byAngle.end());
  std::ranges::transform(byAngle, corners.begin(), &std::pair<double, Real>::second);
}

bool ShareFace(double a, double b, double high) { return a == b && (a == 0 || a == high); }

bool ShareFace(Real const& a, Real const& b, CTriple<int64> const& size) {
  Real const high = HighCorner(size);
  return std::ranges::any_of(c_axes,
                             [&](auto axis) { return ShareFace(a.*axis, b.*axis, high.*axis); });
}

// A corner and the edges that leave it, towards its successor and its predecessor.
struct StSpan {
  Real origin, first, second;
};

// The first corner with an angle of at most 90 degrees, else the first of the sharpest. What
// differs by less than rounding can make is equal: opposite corners of six always are.
StSpan ChooseOrigin(Corners const& corners) {
  std::size_t const count = corners.size();
  StSpan chosen;
  double best = -2; // below every cosine
  for (std::size_t k = 0; k < count; ++k) {
    Real const origin = corners[(k + 1) % count];
    Real const first = corners[(k + 2) % count] - origin, second = corners[k] - origin;
    double const cosine = Dot(first, second) / std::sqrt(Dot(first, first) * Dot(second, second));
    if (!(cosine > best + c_equalAngles)) continue;
    best = cosine;
    chosen = {origin, first, second};
    if (best >= -c_equalAngles) break;
  }
  return chosen;
}

// Lengthens the edges where their parallelogram would not cover all corners. The polygon is convex,
// so that no corner lies behind the origin.
void Cover(StSpan& span, Corners const& corners) {
  Real const normal = Cross(span.first, span.second);
  double const square = Dot(normal, normal);
  if (!(square > 0)) return;
  double alongFirst = 1, alongSecond = 1;
  for (auto const& corner : corners) {
    Real const offset = corner - span.origin;
    alongFirst = std::max(alongFirst, Dot(Cross(offset, span.second), normal) / square);
    alongSecond = std::max(alongSecond, Dot(Cross(span.first, offset), normal) / square);
  }
  if (alongFirst > 1 + c_snap) span.first = span.first * alongFirst;
  if (alongSecond > 1 + c_snap) span.second = span.second * alongSecond;
}

CTriple<int64> Rounded(Real const& point) {
  return {Impl::RoundedSaturated(point.x), Impl::RoundedSaturated(point.y),
          Impl::RoundedSaturated(point.z)};
}

StSpan Initialize(Corners& corners, Real const& normal, CTriple<int64> const& size) {
  SnapAndMerge(corners, size);
  bool isValid = !corners.empty() && std::ranges::all_of(corners, [](Real const& corner) {
    return std::isfinite(corner.x) && std::isfinite(corner.y) && std::isfinite(corner.z);
  });
  if (isValid) PutIntoCyclicOrder(corners, normal);
  for (std::size_t k = 0; isValid && k < corners.size(); ++k)
    isValid = ShareFace(corners[k], corners[(k + 1) % corners.size()], size);
  if (!isValid)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCutSlice::GetInitialization"),
                "no valid configuration possible");
  if (corners.size() == 1) return {corners[0], {}, {}};
  if (corners.size() == 2) return {corners[0], corners[1] - corners[0], {}};
  StSpan span = ChooseOrigin(corners);
  Cover(span, corners);
  return span;
}

// The points of the digital line from `from` along `edge`, as offsets from `base`.
std::vector<CTriple<int64>> LinePoints(CTriple<int64> const& from, CTriple<int64> const& edge,
                                       CTriple<int64> const& base, int64 neighborhood) {
  CBresenhamVisitor line(from, from + edge, 3, neighborhood, true);
  std::vector<CTriple<int64>> points;
  points.reserve(static_cast<std::size_t>(line.LastStep()) + 1);
  while (line.MorePoints()) points.push_back(line.NextPoint() - base);
  return points;
}

bool IsInside(CTriple<int64> const& point, CTriple<int64> const& size) {
  return point.x >= 0 && point.x < size.x && point.y >= 0 && point.y < size.y && point.z >= 0 &&
         point.z < size.z;
}

// Which of the moves lead from a row start to points of the box. A digital line goes one way along
// each axis, so that they follow one another.
std::pair<std::size_t, std::size_t> InsideRange(CTriple<int64> const& start,
                                                std::vector<CTriple<int64>> const& moves,
                                                CTriple<int64> const& size) {
  if (IsInside(start + moves.front(), size) && IsInside(start + moves.back(), size))
    return {0, moves.size()};
  auto begin = moves.begin(), end = moves.end();
  for (auto const axis : {&CTriple<int64>::x, &CTriple<int64>::y, &CTriple<int64>::z}) {
    bool const isRising = moves.back().*axis >= 0;
    // The moves before the point where a coordinate reaches the limit (or falls below it).
    auto const reaching = [&](int64 limit) {
      return std::partition_point(begin, end, [&](CTriple<int64> const& move) {
        return (start.*axis + move.*axis < limit) == isRising;
      });
    };
    begin = reaching(isRising ? 0 : size.*axis);
    end = reaching(isRising ? size.*axis : 0);
  }
  return {static_cast<std::size_t>(begin - moves.begin()),
          static_cast<std::size_t>(end - moves.begin())};
}

int64 Difference(int64 from, int64 to) {
  int64 difference = 0;
  if (__builtin_sub_overflow(to, from, &difference))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("difference from %1 to %2 does not fit 64 bits").Arg(from).Arg(to));
  return difference;
}

CTriple<int64> Difference(CTriple<int64> const& from, CTriple<int64> const& to) {
  return {Difference(from.x, to.x), Difference(from.y, to.y), Difference(from.z, to.z)};
}

// Plain ratios: 0 / 0 differs from itself, so that zero components hide a line.
bool HaveEqualRatios(CTriple<int64> const& u, CTriple<int64> const& v) {
  double const x = static_cast<double>(u.x) / static_cast<double>(v.x);
  double const y = static_cast<double>(u.y) / static_cast<double>(v.y);
  double const z = static_cast<double>(u.z) / static_cast<double>(v.z);
  return x == y && y == z;
}

// a * d - b * c in exact integers; a difference of 128-bit products can just exceed them.
double Determinant(int64 a, int64 b, int64 c, int64 d) {
  Impl::int128 const first = Impl::int128{a} * d, second = Impl::int128{b} * c;
  Impl::int128 exact = 0;
  return __builtin_sub_overflow(first, second, &exact)
             ? static_cast<double>(first) - static_cast<double>(second)
             : static_cast<double>(exact);
}

void CheckExtents(CTriple<int64> const& size) {
  for (int64 const extent : {size.x, size.y, size.z})
    if (extent > c_largestExtent)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, c_computeMoves),
          CString("extent %1 of the image is larger than %2").Arg(extent).Arg(c_largestExtent));
}

} // namespace

void CCutSlice::RaiseNoMorePoints() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCutSlice::NextPoint"), "No more points available");
}

CCutSlice::CCutSlice(std::vector<CTriple<int64>>& points, int64 neighborhood)
    : m_Neighborhood(neighborhood) {
  if (points.size() != 3)
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor),
                "The Slice has to be defined by exactly 3 points.");
  auto const u = Difference(points[0], points[1]), v = Difference(points[0], points[2]);
  if (HaveEqualRatios(u, v))
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "the three points are lying in a line");
  m_Normal = {Determinant(u.y, u.z, v.y, v.z), Determinant(u.z, u.x, v.z, v.x),
              Determinant(u.x, u.y, v.x, v.y)};
  m_Distance = Dot(m_Normal, {static_cast<double>(points[0].x), static_cast<double>(points[0].y),
                              static_cast<double>(points[0].z)});
  std::vector<CTriple<int64>>().swap(points);
}

CCutSlice::CCutSlice(CTriple<double> normal, double distance, int64 neighborhood)
    : m_Normal(normal), m_Distance(distance), m_Neighborhood(neighborhood) {}

void CCutSlice::CheckDimension(CSize const& size) {
  if (size.Dim() != 3)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCutSlice::SetImageSize"), "invalid dimension");
}

void CCutSlice::SetImageSize(CTriple<int64> size) { Compute(size); }

void CCutSlice::ComputeMoves() { Compute(m_ImageSize); }

// Everything that can fail comes before the first change.
void CCutSlice::Compute(CTriple<int64> const& size) {
  CheckExtents(size);
  Corners corners = Intersect(m_Normal, m_Distance, size);
  if (corners.empty()) Impl::Raise(ORVA_LOCATION(c_module, c_computeMoves), "plane not in image");
  StSpan const span = Initialize(corners, m_Normal, size);
  CTriple<int64> const origin = Rounded(span.origin);
  auto rowStarts = LinePoints(origin, Rounded(span.first), {}, m_Neighborhood);
  auto rowMoves = LinePoints(origin, Rounded(span.second), origin, m_Neighborhood);
  uint64 total = 0;
  for (auto const& start : rowStarts) {
    auto const [begin, end] = InsideRange(start, rowMoves, size);
    total += end - begin;
  }
  m_ImageSize = size;
  m_Lattice = StLattice{std::move(rowStarts), std::move(rowMoves)};
  m_Total = total;
  Reset();
}

void CCutSlice::Reset() noexcept {
  m_Outer = m_Inner = m_InnerEnd = 0;
  m_HandedOut = 0;
  // The origin corner, row start 0 plus row move 0, lies inside.
  if (m_Total > 0)
    m_InnerEnd = InsideRange(m_Lattice->rowStarts[0], m_Lattice->rowMoves, m_ImageSize).second;
}

StRun CCutSlice::NextRun() {
  if (!MorePoints()) return {};
  StRun run{NextPoint(), 0, 1};
  auto const& moves = m_Lattice->rowMoves;
  auto const axisAt = [&](std::size_t k) { return Impl::AxisOfMove(moves[k] - moves[k - 1]); };
  if (m_Inner == m_InnerEnd || axisAt(m_Inner) < 0) return run;
  run.axis = axisAt(m_Inner);
  for (; m_Inner != m_InnerEnd && axisAt(m_Inner) == run.axis; ++m_Inner) ++run.length;
  m_HandedOut = m_HandedOut + static_cast<uint64>(run.length - 1);
  return run;
}

void CCutSlice::NextRow() {
  do {
    if (m_Outer + 1 >= m_Lattice->rowStarts.size())
      Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCutSlice::NextPoint"), "No more points!");
    std::tie(m_Inner, m_InnerEnd) =
        InsideRange(m_Lattice->rowStarts[++m_Outer], m_Lattice->rowMoves, m_ImageSize);
  } while (m_Inner == m_InnerEnd);
}

void CCutSlice::GetInitialization(CTriple<int64>& origin, CTriple<int64>& firstEdge,
                                  CTriple<int64>& secondEdge,
                                  std::vector<CTriple<double>>& corners) const {
  StSpan const span = Initialize(corners, m_Normal, m_ImageSize);
  origin = Rounded(span.origin);
  firstEdge = Rounded(span.first);
  secondEdge = Rounded(span.second);
}

bool CCutSlice::lineValid(CTriple<double> a, CTriple<double> b) const noexcept {
  return ShareFace(a, b, m_ImageSize);
}

} // namespace ORVA
