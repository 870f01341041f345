#include <SeluUtils/AreaVisitor.h>

#include "Utils/BresenhamVisitorImpl/RunLimits.h"
#include "Utils/Exact.h"

#include <SeluBase/Neighborhood.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitor";
constexpr char c_constructor[] = "ORVA::CBresenhamAreaVisitor::CBresenhamAreaVisitor";

using Impl::int128;
using Path = std::vector<CTriple<int64>>;

// Twice the signed area of the triangle: positive where the turn from a to b is counter-clockwise.
int128 Turn(CTriple<int64> const& origin, CTriple<int64> const& a, CTriple<int64> const& b) {
  return int128{a.x - origin.x} * (b.y - origin.y) - int128{a.y - origin.y} * (b.x - origin.x);
}

int128 SignedArea(Path const& closedPath) {
  int128 area = 0;
  for (std::size_t i = 0; i + 1 < closedPath.size(); ++i)
    area += Turn(closedPath.front(), closedPath[i], closedPath[i + 1]);
  return area;
}

// Whether the path comes back to its smallest corner from above the side along which it leaves. The
// smallest corner is convex, so its own two sides decide; if they lie on one ray, all sides do.
bool ReturnsFromAbove(Path const& closedPath) {
  CTriple<int64> const& first = closedPath.front();
  auto const differs = [&](CTriple<int64> const& p) { return p != first; };
  auto const successor = std::ranges::find_if(closedPath, differs);
  if (successor == closedPath.end()) return false;
  auto const predecessor = std::find_if(closedPath.rbegin(), closedPath.rend(), differs);
  int128 const turn = Turn(first, *successor, *predecessor);
  return turn != 0 ? turn > 0 : SignedArea(closedPath) > 0;
}

bool Share(Path const& corners, int64 CTriple<int64>::*axis) {
  return std::ranges::all_of(corners,
                             [&](auto const& p) { return p.*axis == corners.front().*axis; });
}

} // namespace

void CBresenhamAreaVisitor::RaiseDimension(char const* function) {
  Impl::Raise(ORVA_LOCATION(c_module, function), "No valid m_Dimension!");
}

CBresenhamAreaVisitor::CBresenhamAreaVisitor(Path& corners, int64 dimension, int64 neighborhood,
                                             bool border)
    : m_Dimension(dimension) {
  Path reduced = corners;
  int64 const planeNeighborhood =
      dimension == 3 ? ReduceToPlane(reduced, neighborhood) : neighborhood;
  bool const isLine = border && corners.size() == 2;
  if (isLine) {
    Impl::CheckSpan(corners,
                    ORVA_LOCATION(c_module, c_constructor)); // a line would cut its lengths
    m_Dimension = 1;
    m_Walks->line = CBresenhamVisitor(corners[0], corners[1], dimension, neighborhood, true);
  } else if (corners.size() == 1 || (corners.size() < 3 && !border)) {
    m_Dimension = 0;
    m_HasPoint = border;
    m_More = border;
    if (border) m_Point = corners[0];
  } else {
    Build(reduced, planeNeighborhood, border);
  }
  Path().swap(corners);
}

// The first axis that all corners share is dropped.
int64 CBresenhamAreaVisitor::ReduceToPlane(Path& corners, int64 neighborhood) {
  if (corners.empty()) return neighborhood;
  CTriple<int64> const first = corners.front();
  m_SharesX = Share(corners, &CTriple<int64>::x);
  m_SharesY = !m_SharesX && Share(corners, &CTriple<int64>::y);
  m_SharesZ = !m_SharesX && !m_SharesY && Share(corners, &CTriple<int64>::z);
  if (!m_SharesX && !m_SharesY && !m_SharesZ) return neighborhood;
  m_Dimension = 2;
  if (m_SharesX) m_SharedX = first.x;
  if (m_SharesY) m_SharedY = first.y;
  if (m_SharesZ) m_SharedZ = first.z;
  for (CTriple<int64>& p : corners) p = {m_SharesX ? p.y : p.x, m_SharesZ ? p.y : p.z, 0};
  return ConvertNeighborhood(neighborhood);
}

void CBresenhamAreaVisitor::Build(Path& corners, int64 neighborhood, bool border) {
  Path path = corners.size() > 2 ? MakePathFitting(std::move(corners)) : std::move(corners);
  switch (path.empty() && m_Dimension == 1 ? 0 : static_cast<int64>(m_Dimension)) {
  case 1:
    m_Walks->line = CBresenhamVisitor(path[0], path[1], m_Dimension, neighborhood, true);
    break;
  case 2:
    m_Walks->flat = Impl::CBresenhamAreaVisitor2D(path, neighborhood, border);
    break;
  case 3:
    BuildOblique(path, neighborhood, border);
    break;
  default:
    Impl::Raise(ORVA_LOCATION(c_module, c_constructor), "No valid dimension!");
  }
}

// One of the two orientations never pairs. It may seem to: without border with pairs across
// columns, with border by leaving out parts of split sides. Such a pairing is taken only if the
// other orientation has no better one.
void CBresenhamAreaVisitor::BuildOblique(Path const& path, int64 neighborhood, bool border) {
  using Area = Impl::CBresenhamAreaVisitor3D;
  std::optional<CException> failure;
  try {
    m_Walks->oblique = Area(Path(path), neighborhood, border);
    if (m_Walks->oblique.IsPairedByColumn()) return;
  } catch (CExBadParam const&) {
    throw;
  } catch (CException const& error) {
    failure = error;
  }
  try {
    Area reversed(Path(path.rbegin(), path.rend()), neighborhood, border);
    if (failure || reversed.IsPairedByColumn()) m_Walks->oblique = std::move(reversed);
  } catch (CException const&) {
    if (failure) throw;
  }
}

Path CBresenhamAreaVisitor::MakePathFitting(Path corners) const {
  if (corners.empty()) return corners;
  Impl::CheckSpan(corners, ORVA_LOCATION(c_module, "ORVA::CBresenhamAreaVisitor::MakePathFitting"));
  std::rotate(corners.begin(), std::ranges::min_element(corners, Impl::LexicographicLess),
              corners.end());
  corners.push_back(corners.front());
  if (m_Dimension == 2 && ReturnsFromAbove(corners)) std::ranges::reverse(corners);
  return corners;
}

int64 CBresenhamAreaVisitor::ConvertNeighborhood(int64 neighborhood) const {
  switch (neighborhood) {
  case NEIGHBORHOOD_26:
    return NEIGHBORHOOD_8;
  case NEIGHBORHOOD_6:
    return NEIGHBORHOOD_4;
  default:
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CBresenhamAreaVisitor::ConvertNeighborhood"),
                "no supported neighborhood");
  }
}

std::uint64_t CBresenhamAreaVisitor::Steps() const {
  switch (static_cast<int64>(m_Dimension)) {
  case 0:
    return m_HasPoint ? 1 : 0;
  case 1:
    return static_cast<std::uint64_t>(m_Walks->line.LastStep()) + 1;
  case 2:
    return m_Walks->flat.Steps();
  case 3:
    return m_Walks->oblique.Steps();
  default:
    RaiseDimension("ORVA::CBresenhamAreaVisitor::Steps");
  }
}

std::uint64_t CBresenhamAreaVisitor::Remaining() const {
  switch (static_cast<int64>(m_Dimension)) {
  case 0:
    return m_More ? 1 : 0;
  case 1:
    return m_Walks->line.Remaining();
  case 2:
    return m_Walks->flat.Remaining();
  case 3:
    return m_Walks->oblique.Remaining();
  default:
    RaiseDimension("ORVA::CBresenhamAreaVisitor::Remaining");
  }
}

StRun CBresenhamAreaVisitor::NextRun() {
  switch (static_cast<int64>(m_Dimension)) {
  case 0:
    return m_More ? StRun{NextPoint(), 0, 1} : StRun();
  case 1:
    return m_Walks->line.NextRun();
  case 2:
    return InSpace(m_Walks->flat.NextRun());
  case 3:
    return m_Walks->oblique.NextRun();
  default:
    RaiseDimension("ORVA::CBresenhamAreaVisitor::NextRun");
  }
}

// A column of the plane lies along the last of the axes that are not shared.
StRun CBresenhamAreaVisitor::InSpace(StRun const& run) const noexcept {
  if (run.length == 0) return {};
  return {Convert(run.first), m_SharesX || m_SharesY ? 2 : 1, run.length};
}

void CBresenhamAreaVisitor::Reset() {
  switch (static_cast<int64>(m_Dimension)) {
  case 0:
    m_More = m_HasPoint;
    break;
  case 1:
    m_Walks->line.Reset();
    break;
  case 2:
    m_Walks->flat.Reset();
    break;
  case 3:
    m_Walks->oblique.Reset();
    break;
  default:
    RaiseDimension("ORVA::CBresenhamAreaVisitor::Reset");
  }
}

void CBresenhamAreaVisitor::PrintBorder() const {
  if (m_Dimension == 2) m_Walks->flat.PrintBorder();
  if (m_Dimension == 3) m_Walks->oblique.PrintBorder();
}

} // namespace ORVA
