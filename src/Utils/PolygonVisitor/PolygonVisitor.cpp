#include "Utils/PolygonVisitor/Polygon.h"

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <utility>

namespace ORVA {

namespace {

using Impl::Ring;

constexpr int64 c_farthest = int64{1} << 62;

// A corner list may be closed by its first corner: the edge of length 0 does no harm. Empty holes
// are left out.
std::vector<Ring> Rings(Ring const& outline, std::vector<Ring> const& holes) {
  std::vector<Ring> rings{outline};
  for (Ring const& hole : holes)
    if (!hole.empty()) rings.push_back(hole);
  return rings;
}

// The outline's box holds all corners; its sides are no longer than a digital line can be.
void CheckAxis(std::vector<Ring> const& rings, int64 CTriple<int64>::*axis) {
  auto const [lowest, highest] = std::ranges::minmax(rings.front(), {}, axis);
  int64 const low = lowest.*axis, high = highest.*axis;
  if (low < -c_farthest || high > c_farthest)
    Impl::RaiseBadParam(
        ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
        CString("corner coordinate %1 lies beyond 2^62").Arg(low < -c_farthest ? low : high));
  if (high - low > INT32_MAX)
    Impl::RaiseBadParam(ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
                        CString("corner coordinates from %1 to %2 lie more than "
                                "2147483647 apart")
                            .Arg(low)
                            .Arg(high));
  for (Ring const& ring : rings)
    for (CTriple<int64> const& corner : ring)
      if (corner.*axis < low || corner.*axis > high)
        Impl::RaiseBadParam(ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
                            CString("hole corner coordinate %1 lies outside the outline's %2 to %3")
                                .Arg(corner.*axis)
                                .Arg(low)
                                .Arg(high));
}

// The 2D neighborhood of a 3D neighborhood's moves in a coordinate plane.
int64 InPlane(int64 neighborhood, Impl::StPolygonPlane const& plane) {
  switch (neighborhood) {
  case NEIGHBORHOOD_6:
    return NEIGHBORHOOD_4;
  case NEIGHBORHOOD_14_1:
    return NEIGHBORHOOD_6_1;
  case NEIGHBORHOOD_14_2: // has (0, 1, -1) in the yz-plane
    return plane.dominantAxis == 0 ? NEIGHBORHOOD_6_2 : NEIGHBORHOOD_6_1;
  case NEIGHBORHOOD_26:
    return NEIGHBORHOOD_8;
  default:
    Impl::RaiseBadParam(ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
                        CString("neighborhood %1 is none of 6, 14.1, 14.2 and 26 (12, 15, 18, 21)")
                            .Arg(neighborhood));
  }
}

void CheckArguments(int64 dimension, int64 neighborhood) {
  if (dimension != 2 && dimension != 3)
    Impl::RaiseBadParam(ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
                        CString("dimension %1 is neither 2 nor 3").Arg(dimension));
  if (dimension == 3) {
    static_cast<void>(InPlane(neighborhood, {}));
    return;
  }
  constexpr std::array flat{NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8};
  if (std::ranges::find(flat, neighborhood) == flat.end())
    Impl::RaiseBadParam(
        ORVA_LOCATION(Impl::c_polygonModule, Impl::c_polygonConstructor),
        CString("neighborhood %1 is none of 4, 6.1, 6.2 and 8 (0, 3, 6, 9)").Arg(neighborhood));
}

void LookAlongDominantAxis(std::vector<Ring>& rings, Impl::StPolygonPlane const& plane) {
  for (Ring& ring : rings)
    for (CTriple<int64>& corner : ring) {
      CTriple<int64> const seen = Impl::SeenAlong(plane.dominantAxis, corner - plane.origin);
      corner = {seen.x, seen.y, 0};
    }
}

} // namespace

CPolygonVisitor::CPolygonVisitor(std::vector<CTriple<int64>> const& outline, int64 dimension,
                                 int64 neighborhood, bool border)
    : CPolygonVisitor(outline, {}, dimension, neighborhood, border) {}

CPolygonVisitor::CPolygonVisitor(std::vector<CTriple<int64>> const& outline,
                                 std::vector<std::vector<CTriple<int64>>> const& holes,
                                 int64 dimension, int64 neighborhood, bool border) {
  CheckArguments(dimension, neighborhood);
  if (outline.empty()) return;
  std::vector<Ring> rings = Rings(outline, holes);
  CheckAxis(rings, &CTriple<int64>::x);
  CheckAxis(rings, &CTriple<int64>::y);
  CheckAxis(rings, &CTriple<int64>::z);
  m_Plane = dimension == 2 ? Impl::FlatPlane(rings) : Impl::ObliquePlane(rings);
  LookAlongDominantAxis(rings, m_Plane);
  m_Runs = Impl::FillPolygon(rings, dimension == 2 ? neighborhood : InPlane(neighborhood, m_Plane),
                             border);
  m_Runs->shrink_to_fit();
  for (Impl::StPolygonRun const& run : *m_Runs)
    m_Steps += static_cast<std::uint64_t>(run.high - run.low) + 1;
  Reset();
}

void CPolygonVisitor::Reset() noexcept {
  m_Run = 0;
  m_Later = m_Steps;
  BeginColumn();
}

void CPolygonVisitor::NextColumn() noexcept {
  if (m_LeftInRun == 0) return;
  ++m_Run;
  BeginColumn();
}

int64 CPolygonVisitor::LevelLength() noexcept {
  int64 const height = m_W;
  int64 length = 0;
  for (int64 left = m_LeftInRun; left > 0 && m_W == height; --left) {
    NextPoint();
    ++length;
    if (left == 1) break; // what comes next lies in another column
  }
  return length;
}

// The voxel of the run's first column: floor(w + 1/2), and what that leaves over.
void CPolygonVisitor::BeginColumn() noexcept {
  if (m_Run >= m_Runs->size()) {
    m_LeftInRun = 0;
    m_U = m_V = m_W = 0;
    return;
  }
  using Impl::int128;
  Impl::StPolygonRun const& run = (*m_Runs)[m_Run];
  int128 const norm = m_Plane.norm;
  int128 const height =
      int128{m_Plane.slopeU} * run.column + int128{m_Plane.slopeV} * run.low + norm / 2;
  auto const w = static_cast<int64>(Impl::FloorDivided(height, norm));
  m_Residual = static_cast<int64>(height - w * norm);
  CTriple<int64> const origin = Impl::SeenAlong(m_Plane.dominantAxis, m_Plane.origin);
  m_U = origin.x + run.column;
  m_V = origin.y + run.low;
  m_W = origin.z + w;
  m_LeftInRun = run.high - run.low + 1;
  m_Later = m_Later - static_cast<std::uint64_t>(static_cast<int64>(m_LeftInRun));
}

} // namespace ORVA
