#include "Utils/RealPolygonVisitor/RealEdge.h"
#include "Utils/RunVisitor/Rows.h"

#include <SeluUtils/RealPolygonVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORVA {

namespace {

using Impl::Rows;
using Outline = CRealPolygonVisitor::Outline;
using Corner = CTriple<double>;

constexpr char c_module[] = "src/Utils/RealPolygonVisitor";
constexpr char c_constructor[] = "ORVA::CRealPolygonVisitor::CRealPolygonVisitor";

void CheckCoordinate(double value) {
  if (!(std::abs(value) <= 0x1p30))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, c_constructor),
        CString("corner coordinate %1 is not from -1073741824 to 1073741824").Arg(value));
}

// The slice of all corners; 0 without any.
int64 CheckedSlice(std::vector<Outline> const& outlines) {
  Corner const* first = nullptr;
  for (Outline const& outline : outlines)
    for (Corner const& corner : outline) {
      CheckCoordinate(corner.x);
      CheckCoordinate(corner.y);
      if (!(std::abs(corner.z) <= 0x1p53 && std::trunc(corner.z) == corner.z))
        Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                            CString("corner coordinate z %1 is no slice").Arg(corner.z));
      if (first == nullptr) first = &corner;
      if (corner.z != first->z)
        Impl::RaiseBadParam(
            ORVA_LOCATION(c_module, c_constructor),
            CString("corners lie in slices %1 and %2 at once").Arg(first->z).Arg(corner.z));
    }
  return first == nullptr ? 0 : static_cast<int64>(first->z);
}

int64 Floor(double value) { return static_cast<int64>(std::floor(value)); }
int64 Ceil(double value) { return static_cast<int64>(std::ceil(value)); }

// The least whole coordinates that a row can have.
CTriple<int64> Origin(std::vector<Outline> const& outlines, int64 slice) {
  CTriple<int64> origin(0, 0, slice);
  for (Outline const& outline : outlines)
    for (Corner const& corner : outline) {
      origin.x = std::min(origin.x, Floor(corner.x));
      origin.y = std::min(origin.y, Floor(corner.y));
    }
  return origin;
}

// Crossings with the edges, and the lattice points on them.
class CEdgeRows {
public:
  explicit CEdgeRows(CTriple<int64> const& origin) : m_Origin(origin) {}

  void Add(Corner const& a, Corner const& b) {
    if (a.y == b.y) {
      AddLevel(a, b);
    } else if (a.y < b.y) {
      AddRising(a, b, 1);
    } else {
      AddRising(b, a, -1);
    }
  }

  Rows crossings, outline;

private:
  void AddLevel(Corner const& a, Corner const& b) {
    if (std::trunc(a.y) != a.y) return;
    int64 const low = Ceil(std::min(a.x, b.x)), high = Floor(std::max(a.x, b.x));
    if (low <= high) outline.push_back(Row(Floor(a.y), low, high));
  }

  void AddRising(Corner const& a, Corner const& b, int winding) {
    Impl::CRealEdge const edge(a, b);
    int64 const first = Ceil(a.y), last = Floor(b.y), end = Ceil(b.y);
    for (int64 y = first; y <= last; ++y) {
      auto const [x, isLatticePoint] = edge.At(y);
      Impl::StRow const row = Row(y, x, x);
      if (y < end) crossings.push_back(Impl::Crossing(row.z, row.y, row.low, winding));
      if (isLatticePoint) outline.push_back(row);
    }
  }

  [[nodiscard]] Impl::StRow Row(int64 y, int64 low, int64 high) const {
    return {0, static_cast<std::uint32_t>(y - m_Origin.y),
            static_cast<std::uint32_t>(low - m_Origin.x),
            static_cast<std::uint32_t>(high - m_Origin.x)};
  }

  CTriple<int64> m_Origin;
};

Impl::StRegion Fill(std::vector<Outline> const& outlines, EnBoundary boundary, EnWinding winding) {
  CTriple<int64> const origin = Origin(outlines, CheckedSlice(outlines));
  CEdgeRows edges(origin);
  for (Outline const& outline : outlines)
    for (std::size_t i = 0; i < outline.size(); ++i)
      edges.Add(outline[i], outline[i + 1 < outline.size() ? i + 1 : 0]);
  Rows rows;
  Impl::AppendInside(edges.crossings, winding, rows);
  return {origin, Impl::WithBoundary(std::move(rows), std::move(edges.outline), boundary)};
}

} // namespace

CRealPolygonVisitor::CRealPolygonVisitor(Outline const& outline, EnBoundary boundary,
                                         EnWinding winding)
    : CRealPolygonVisitor(std::vector<Outline>{outline}, boundary, winding) {}

CRealPolygonVisitor::CRealPolygonVisitor(std::vector<Outline> const& outlines, EnBoundary boundary,
                                         EnWinding winding)
    : CRunVisitor(Fill(outlines, boundary, winding)) {}

} // namespace ORVA
