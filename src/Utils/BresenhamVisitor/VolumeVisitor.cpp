#include <SeluUtils/VolumeVisitor.h>

#include "Utils/Exact.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/LineVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <tuple>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_constructor[] = "ORVA::CBresenhamVolumeVisitor::CBresenhamVolumeVisitor";
constexpr char c_convertListToPath[] = "ORVA::CBresenhamVolumeVisitor::ConvertListToPath";

constexpr int64 c_largestSlice = INT32_MAX;

using Impl::int128;
using Path = std::vector<CTriple<int64>>;

int64 CheckedSliceNeighborhood(int64 neighborhood) {
  if (neighborhood == NEIGHBORHOOD_6) return NEIGHBORHOOD_4;
  if (neighborhood == NEIGHBORHOOD_26) return NEIGHBORHOOD_8;
  Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "Neighborhood not supported");
}

void CheckSlices(Path const& points) {
  for (auto const& p : points)
    if (p.x < 0 || p.x > c_largestSlice)
      Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, c_constructor),
          CString("slice x = %1 is not within 0 and %2").Arg(p.x).Arg(c_largestSlice));
}

// Digital lines take the low 32 bits of a longer difference.
void CheckLength(int64 from, int64 to) {
  int64 difference = 0;
  if (__builtin_sub_overflow(to, from, &difference) || difference < -INT32_MAX ||
      difference > INT32_MAX)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("edge from %1 to %2 is longer than %3 voxels")
                            .Arg(from)
                            .Arg(to)
                            .Arg(int64{INT32_MAX}));
}

auto Order(CTriple<int64> const& p) { return std::tuple(p.x, p.y, p.z); }

void SortAndMerge(Path& points) {
  std::ranges::sort(points, {}, Order);
  points.erase(std::unique(points.begin(), points.end()), points.end());
}

// Directions are compared in 128 bits.
bool AreComparable(int64 low, int64 high) {
  int64 difference = 0;
  return !__builtin_sub_overflow(high, low, &difference) && difference <= int64{1} << 62;
}

bool IsTurnRight(CTriple<int64> const& a, CTriple<int64> const& b, CTriple<int64> const& c) {
  return int128{b.x - a.x} * (c.y - a.y) < int128{b.y - a.y} * (c.x - a.x);
}

// Appends a side of the hull over points in their order, without the last one; every corner of it
// turns right. Points that later ones overtake are dropped again.
template <class Iterator>
void AppendSide(Path& hull, Iterator begin, Iterator end) {
  std::size_t const first = hull.size();
  for (auto point = begin; point != end; ++point) {
    while (hull.size() >= first + 2 && !IsTurnRight(hull[hull.size() - 2], hull.back(), *point))
      hull.pop_back();
    hull.push_back(*point);
  }
  hull.pop_back();
}

// Appends the points of the edge between two of the solid's points.
void Collect(Path& border, CTriple<int64> const& from, CTriple<int64> const& to,
             int64 neighborhood) {
  CheckLength(from.x, to.x);
  CheckLength(from.y, to.y);
  CheckLength(from.z, to.z);
  CBresenhamVisitor line(from, to, 3, neighborhood, true);
  while (line.MorePoints()) border.push_back(line.NextPoint());
}

} // namespace

CBresenhamVolumeVisitor::CBresenhamVolumeVisitor(Path& path, int64 neighborhood, bool border)
    : m_Lists({path, {}, {}, {}}), m_Neighborhood(neighborhood),
      m_SliceNeighborhood(CheckedSliceNeighborhood(neighborhood)), m_Border(border) {
  ComputeBorder();
  CountSteps();
  Reset();
  Path().swap(path);
}

CBresenhamVolumeVisitor::CBresenhamVolumeVisitor(Path& startPoints, Path& endPoints,
                                                 int64 neighborhood, bool border)
    : m_Lists({startPoints, endPoints, {}, {}}), m_Neighborhood(neighborhood), m_Border(border) {
  if (startPoints.size() != endPoints.size())
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "not same account of start- and endpoints");
  m_SliceNeighborhood = CheckedSliceNeighborhood(neighborhood);
  ComputeBorderFromPairs();
  CountSteps();
  Reset();
  Path().swap(startPoints);
  Path().swap(endPoints);
}

void CBresenhamVolumeVisitor::ComputeBorder() {
  CheckSlices(m_Lists->points);
  Path border;
  for (std::size_t i = 1; i < m_Lists->points.size(); ++i)
    if (m_Lists->points[i - 1] != m_Lists->points[i])
      Collect(border, m_Lists->points[i - 1], m_Lists->points[i], m_Neighborhood);
  ReplaceBorder(std::move(border));
}

void CBresenhamVolumeVisitor::ComputeBorderFromPairs() {
  CheckSlices(m_Lists->points);
  CheckSlices(m_Lists->endPoints);
  Path border;
  for (std::size_t i = 0; i < std::min(m_Lists->points.size(), m_Lists->endPoints.size()); ++i)
    Collect(border, m_Lists->points[i], m_Lists->endPoints[i], m_Neighborhood);
  ReplaceBorder(std::move(border));
}

void CBresenhamVolumeVisitor::ReplaceBorder(Path&& border) {
  m_Lists->borderPoints = std::move(border);
  EraseUselessBorderPoints();
}

void CBresenhamVolumeVisitor::EraseUselessBorderPoints() {
  SortAndMerge(m_Lists->borderPoints);
  if (!m_Border && !m_Lists->borderPoints.empty()) {
    int64 const first = m_Lists->borderPoints.front().x, last = m_Lists->borderPoints.back().x;
    std::erase_if(m_Lists->borderPoints,
                  [&](auto const& p) { return p.x == first || p.x == last; });
  }
  Enter(SliceFrom(m_Lists->borderPoints.size()), 0);
}

std::size_t CBresenhamVolumeVisitor::SliceEnd(std::size_t begin) const noexcept {
  std::size_t end = begin;
  while (end < m_Lists->borderPoints.size() &&
         m_Lists->borderPoints[end].x == m_Lists->borderPoints[begin].x)
    ++end;
  return end;
}

CBresenhamAreaVisitor CBresenhamVolumeVisitor::SliceArea(std::size_t begin, std::size_t end) const {
  Path border;
  border.reserve(end - begin);
  for (std::size_t i = begin; i < end; ++i)
    border.emplace_back(m_Lists->borderPoints[i].y, m_Lists->borderPoints[i].z, 0);
  return {ConvertListToPath(border), 2, m_SliceNeighborhood, m_Border};
}

void CBresenhamVolumeVisitor::CountSteps() {
  uint64 steps = 0;
  for (std::size_t begin = 0; begin < m_Lists->borderPoints.size();) {
    std::size_t const end = SliceEnd(begin);
    steps += SliceArea(begin, end).Steps();
    bool const isGap = end < m_Lists->borderPoints.size() &&
                       m_Lists->borderPoints[end].x != m_Lists->borderPoints[begin].x + 1;
    begin = isGap ? m_Lists->borderPoints.size() : end;
  }
  m_Steps = steps;
}

void CBresenhamVolumeVisitor::Reset() { Enter(SliceFrom(0), m_Steps); }

// What can fail comes before any change.
CTriple<int64> CBresenhamVolumeVisitor::LastOfSlice() {
  if (m_LeftInSlice == 0) return {};
  StSlice next = NextSlice();
  CTriple<int64> const p = m_Lists->area.NextPoint();
  CTriple<int64> const point(m_Slice, p.x, p.y);
  Enter(std::move(next), m_Later);
  return point;
}

StRun CBresenhamVolumeVisitor::NextRun() {
  if (!MorePoints()) return {};
  StRun const flat = m_Lists->area.NextRun();
  StRun const run{{m_Slice, flat.first.x, flat.first.y}, flat.axis + 1, flat.length};
  auto const length = static_cast<uint64>(flat.length);
  if (length < m_LeftInSlice) {
    m_LeftInSlice = m_LeftInSlice - length;
    return run;
  }
  try {
    Enter(NextSlice(), m_Later);
  } catch (...) {
    CBresenhamAreaVisitor& area = m_Lists->area;
    area.Rewind();
    while (area.Remaining() > m_LeftInSlice) area.NextPoint();
    throw;
  }
  return run;
}

CBresenhamVolumeVisitor::StSlice CBresenhamVolumeVisitor::NextSlice() const {
  bool const isLast = m_SliceEnd >= m_Lists->borderPoints.size() ||
                      m_Lists->borderPoints[m_SliceEnd].x != m_Slice + 1;
  return SliceFrom(isLast ? m_Lists->borderPoints.size() : m_SliceEnd);
}

// `left` points are to come, those of this slice included.
void CBresenhamVolumeVisitor::Enter(StSlice&& slice, uint64 left) {
  m_Lists->area = std::move(slice.area);
  m_Slice = slice.x;
  m_SliceEnd = slice.end;
  m_LeftInSlice = m_Lists->area.Steps();
  m_Later = left - m_LeftInSlice;
}

// The first slice from here on that has points of its own; slices too thin for any are passed over,
// and one without border points ends the walk.
CBresenhamVolumeVisitor::StSlice CBresenhamVolumeVisitor::SliceFrom(std::size_t begin) const {
  std::size_t const count = m_Lists->borderPoints.size();
  while (begin < count) {
    std::size_t const end = SliceEnd(begin);
    int64 const slice = m_Lists->borderPoints[begin].x;
    CBresenhamAreaVisitor area = SliceArea(begin, end);
    if (!area.empty()) return {std::move(area), slice, end};
    begin = end < count && m_Lists->borderPoints[end].x == slice + 1 ? end : count;
  }
  return {{}, 0, count};
}

Path CBresenhamVolumeVisitor::ConvertListToPath(std::span<CTriple<int64> const> border) {
  if (border.empty())
    Impl::Raise(ORVA_LOCATION(c_module, c_convertListToPath), "failure in program");
  Path points(border.begin(), border.end());
  for (auto& p : points) p.z = 0;
  SortAndMerge(points);
  auto const [low, high] = std::ranges::minmax(points, {}, &CTriple<int64>::y);
  if (!AreComparable(points.front().x, points.back().x) || !AreComparable(low.y, high.y))
    Impl::Raise(ORVA_LOCATION(c_module, c_convertListToPath), "not possible to determine");
  if (points.size() == 1) return points;
  Path hull;
  AppendSide(hull, points.begin(), points.end());
  AppendSide(hull, points.rbegin(), points.rend());
  return hull;
}

void CBresenhamVolumeVisitor::PrintBorder() const {
  for (std::size_t i = 0; i < m_Lists->borderPoints.size(); ++i) {
    auto const& p = m_Lists->borderPoints[i];
    if (i == 0 || p.x != m_Lists->borderPoints[i - 1].x) std::printf("Slice %" PRId64 ":\n", p.x);
    std::printf("(%" PRId64 ", %" PRId64 ")\n", p.y, p.z);
  }
}

} // namespace ORVA
