#include <SeluUtils/PlaneSection.h>

#include "Utils/Exact.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace ORVA {

namespace {

using Impl::FloorDivided;
using Impl::GreatestCommonDivisor;
using Impl::int128;
using Impl::Magnitude;

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_constructor[] = "ORVA::CPlaneSection::CPlaneSection";

// With |normal| up to 2^60, |distance| below 2^125 and 63-bit coordinates every sum below stays
// under 2^127: the offset within 7 * 2^124, slope times coordinate and divisor times extent within
// 2^124 each.
constexpr int c_normalBits = 60;
constexpr int64 c_largestNormal = int64{1} << c_normalBits;
// No voxel of any image reaches a plane at this distance: 3 * 2^60 * 2^63 is less.
constexpr int128 c_beyond = int128{7} << 122;

constexpr std::array<int64 CTriple<int64>::*, 3> c_axes = {&CTriple<int64>::x, &CTriple<int64>::y,
                                                           &CTriple<int64>::z};

CString PointText(CTriple<int64> const& p) {
  return CString("(%1, %2, %3)").Arg(p.x).Arg(p.y).Arg(p.z);
}

[[noreturn]] void RaiseBadPoints(char const* text, CTriple<int64> const& a, CTriple<int64> const& b,
                                 CTriple<int64> const& c) {
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                      CString(text).Arg(PointText(a)).Arg(PointText(b)).Arg(PointText(c)));
}

std::array<int128, 3> Difference(CTriple<int64> const& from, CTriple<int64> const& to) {
  return {int128{to.x} - from.x, int128{to.y} - from.y, int128{to.z} - from.z};
}

// Differences up to this have cross products of less than 2^125.
bool IsShort(std::array<int128, 3> const& difference) {
  return std::ranges::all_of(
      difference, [](int128 component) { return Magnitude(component) <= int128{1} << 62; });
}

// The double times 2^exponent as an integer, half away from zero; saturates at c_beyond.
int128 Scaled(double value, int exponent) {
  double const scaled = std::round(std::ldexp(value, exponent));
  if (std::abs(scaled) >= static_cast<double>(c_beyond)) return scaled > 0 ? c_beyond : -c_beyond;
  return static_cast<int128>(scaled);
}

// The least t >= 0 with value + slope * t >= limit, at most count; for positive slopes.
int64 FirstAtLeast(int128 value, int64 slope, int128 limit, int64 count) {
  if (value >= limit) return 0;
  int128 const first = (limit - value + slope - 1) / slope;
  return first < count ? static_cast<int64>(first) : count;
}

struct StRange {
  int64 begin, end;
};

// The t of [0, count) with highest + slope * t >= 0 and lowest + slope * t < limit; they follow one
// another, as each of the conditions changes once.
StRange Reaching(int128 lowest, int128 highest, int64 slope, int128 limit, int64 count) {
  if (slope > 0)
    return {FirstAtLeast(highest, slope, 0, count), FirstAtLeast(lowest, slope, limit, count)};
  if (slope < 0)
    return {FirstAtLeast(-lowest, -slope, 1 - limit, count),
            FirstAtLeast(-highest, -slope, 1, count)};
  return {0, highest >= 0 && lowest < limit ? count : 0};
}

// Sum of floor((a * i + b) / m) over i in [0, count), for a, b >= 0 and m > 0. Whole parts are
// summed at once; what is left counts the grid points under a line, and counting them along the
// other axis swaps the slope for its reciprocal, as in Euclid's algorithm: O(log m) steps.
int128 FloorSum(int128 count, int128 m, int128 a, int128 b) {
  int128 sum = 0;
  while (count > 0) {
    sum += count * (count - 1) / 2 * (a / m) + count * (b / m);
    a %= m;
    b %= m;
    int128 const top = a * count + b;
    count = top / m;
    b = top % m;
    std::swap(a, m);
  }
  return sum;
}

// How many t of [0, count) have slope * t < limit, for slope >= 0.
int128 CountBelow(int128 slope, int128 limit, int128 count) {
  if (limit <= 0) return 0;
  return slope == 0 ? count : std::min(count, (limit + slope - 1) / slope);
}

// The columns of the extents' rectangle with slopes[0] * u + slopes[1] * v < limit, slopes >= 0.
int128 CountColumnsBelow(std::array<int64, 2> const& slopes, std::array<int64, 3> const& extents,
                         int128 limit) {
  int128 const along = slopes[0], across = slopes[1];
  int128 const full = CountBelow(across, limit - along * (extents[0] - 1), extents[1]);
  int128 const begun = CountBelow(across, limit, extents[1]);
  if (begun == full) return full * extents[0];
  // From the last row that has any down to the last that is not full.
  int128 const inLast = limit - across * (begun - 1);
  return full * extents[0] + FloorSum(begun - full, along, across, inLast + along - 1);
}

// A 128-bit number is kept as its two halves.
template <class Halves>
int128 Joined(Halves const& halves) {
  return int128{halves.high} * (int128{1} << 64) + halves.low;
}

template <class Halves>
void Split(int128 value, Halves& halves) {
  halves = {static_cast<uint64>(value), static_cast<int64>(value >> 64)};
}

} // namespace

// normal·p = distance in integers.
struct CPlaneSection::StPlane {
  std::array<int128, 3> normal;
  int128 distance;
};

void CPlaneSection::RaiseNoMorePoints() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CPlaneSection::NextPoint"),
              "No more points available");
}

CPlaneSection::CPlaneSection(CTriple<int64> a, CTriple<int64> b, CTriple<int64> c) {
  auto const u = Difference(a, b), v = Difference(a, c);
  char const* const tooFar = "points %1, %2, %3 are too far apart for an exact plane";
  if (!IsShort(u) || !IsShort(v)) RaiseBadPoints(tooFar, a, b, c);
  std::array<int128, 3> normal = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                                  u[0] * v[1] - u[1] * v[0]};
  int128 const divisor =
      GreatestCommonDivisor(GreatestCommonDivisor(normal[0], normal[1]), normal[2]);
  if (divisor == 0) RaiseBadPoints("points %1, %2, %3 lie in a line", a, b, c);
  for (auto& component : normal) {
    component /= divisor;
    if (Magnitude(component) > c_largestNormal) RaiseBadPoints(tooFar, a, b, c);
  }
  SetPlane({normal, normal[0] * a.x + normal[1] * a.y + normal[2] * a.z});
}

CPlaneSection::CPlaneSection(CTriple<double> normal, double distance) {
  for (double const number : {normal.x, normal.y, normal.z, distance})
    if (!std::isfinite(number))
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                          CString("plane with the number %1").Arg(number));
  double const largest = std::max({std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)});
  if (largest == 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor), "plane with normal (0, 0, 0)");
  int exponent = 0;
  std::frexp(largest, &exponent);
  int const scale = c_normalBits - exponent; // largest is then 2^59 to 2^60
  SetPlane({{Scaled(normal.x, scale), Scaled(normal.y, scale), Scaled(normal.z, scale)},
            Scaled(distance, scale)});
}

void CPlaneSection::SetPlane(StPlane const& plane) noexcept {
  auto const& [normal, distance] = plane;
  std::size_t main = 0;
  for (std::size_t k = 1; k < 3; ++k)
    if (Magnitude(normal[k]) >= Magnitude(normal[main])) main = k;
  std::size_t const row = main == 0 ? 1 : 0, across = main == 2 ? 1 : 2;
  m_Axes = {static_cast<int>(row), static_cast<int>(across), static_cast<int>(main)};
  // w is (distance - normal[row] * u - normal[across] * v) / normal[main], rounded half up.
  int128 const sign = normal[main] < 0 ? -1 : 1;
  int128 const divisor = 2 * Magnitude(normal[main]);
  m_Divisor = static_cast<int64>(divisor);
  m_Slopes = {static_cast<int64>(-2 * sign * normal[row]),
              static_cast<int64>(-2 * sign * normal[across])};
  Split(2 * sign * distance + divisor / 2, m_Offset);

  m_Climb = m_Slopes[0] < 0 ? -1 : m_Slopes[0] == m_Divisor ? 1 : 0;
  m_RemainderStep = m_Slopes[0] - m_Climb * m_Divisor;
  m_CarryStep = m_RemainderStep - m_Divisor;
}

void CPlaneSection::SetImageSize(CTriple<int64> size) {
  std::array<int64, 3> extents{};
  for (std::size_t k = 0; k < 3; ++k)
    extents[k] = size.*c_axes[static_cast<std::size_t>(m_Axes[k])];
  StRange rows{0, 0};
  int128 count = 0;
  if (m_Divisor > 0 && std::ranges::min(extents) > 0) {
    // A row has points where its two ends lie not both below the box and not both above it: along
    // a row the plane climbs by at most one voxel a column.
    int128 const rise = int128{m_Slopes[0]} * (extents[0] - 1);
    int128 const fall = int128{m_Slopes[1]} * (extents[1] - 1);
    int128 const limit = int128{m_Divisor} * extents[2];
    int128 const offset = Joined(m_Offset);
    rows = Reaching(offset + std::min<int128>(rise, 0), offset + std::max<int128>(rise, 0),
                    m_Slopes[1], limit, extents[1]);
    // Mirrored to slopes >= 0, the box is crossed from the lowest column on.
    int128 const lowest = offset + std::min<int128>(rise, 0) + std::min<int128>(fall, 0);
    std::array<int64, 2> const slopes = {std::abs(m_Slopes[0]), std::abs(m_Slopes[1])};
    count = CountColumnsBelow(slopes, extents, limit - lowest) -
            CountColumnsBelow(slopes, extents, -lowest);
  }
  if (count > std::numeric_limits<uint64>::max())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CPlaneSection::SetImageSize"),
                        CString("section of an image of size %1 has more points than 64 bits count")
                            .Arg(PointText(size)));
  m_Extents = extents;
  m_FirstRow = rows.begin;
  m_RowEnd = rows.end;
  m_Steps = static_cast<uint64>(count);
  Reset();
}

void CPlaneSection::Reset() noexcept {
  m_LeftInRow = 0;
  m_Row = m_FirstRow;
  m_Later = m_Steps;
  if (m_Steps == 0) return;
  int128 const value = Joined(m_Offset) + int128{m_Slopes[1]} * m_Row;
  int128 const quotient = FloorDivided(value, int128{m_Divisor});
  Split(quotient, m_RowQuotient);
  m_RowRemainder = static_cast<int64>(value - quotient * m_Divisor);
  EnterRow();
}

void CPlaneSection::NextRow() {
  if (m_LeftInRow == 0) RaiseNoMorePoints();
  LeaveRow();
}

int64 CPlaneSection::LevelLength() noexcept {
  int64 const height = m_W;
  int64 length = 0;
  for (int64 left = m_LeftInRow; left > 0 && m_W == height; --left) {
    NextPoint();
    ++length;
    if (left == 1) break; // what comes next lies in another row
  }
  return length;
}

void CPlaneSection::LeaveRow() noexcept {
  m_LeftInRow = 0;
  if (++m_Row == m_RowEnd) return;
  int128 const remainder = int128{m_RowRemainder} + m_Slopes[1]; // within 0 and 2^62, or negative
  int const carry = remainder < 0 ? -1 : remainder >= m_Divisor ? 1 : 0;
  Split(Joined(m_RowQuotient) + carry, m_RowQuotient);
  m_RowRemainder = static_cast<int64>(remainder - int128{carry} * m_Divisor);
  EnterRow();
}

// A row that enters the box after its first column does so through the lowest or highest voxel: the
// plane climbs or falls by at most one voxel a column.
void CPlaneSection::EnterRow() noexcept {
  int128 const value = Joined(m_Offset) + int128{m_Slopes[1]} * m_Row;
  int128 const limit = int128{m_Divisor} * m_Extents[2];
  auto const [begin, end] = Reaching(value, value, m_Slopes[0], limit, m_Extents[0]);
  m_LeftInRow = end - begin;
  m_Later -= static_cast<uint64>(m_LeftInRow);
  m_U = begin;
  m_W = static_cast<int64>(Joined(m_RowQuotient));
  m_Remainder = m_RowRemainder;
  if (begin > 0) {
    m_W = m_Slopes[0] > 0 ? 0 : m_Extents[2] - 1;
    m_Remainder = static_cast<int64>(value + int128{m_Slopes[0]} * begin - int128{m_Divisor} * m_W);
  }
}

} // namespace ORVA
