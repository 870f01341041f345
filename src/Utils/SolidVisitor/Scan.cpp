// A sweep over the slices of constant z. Inside is decided by the ray from a point to lower x, with
// every point taken a very little toward x, much less toward y and still less toward z: then no ray
// meets an edge and none runs within a face, and a point exactly on a face lies beyond it.
#include "Utils/SolidVisitor/Division.h"
#include "Utils/SolidVisitor/Mesh.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ORVA::Impl {

namespace {

// An edge of a face that crosses slices, its lower end first.
struct StSweepEdge {
  std::uint32_t face, firstSlice, endSlice;
  int winding; // what crossing it along y, and along x, adds
  CTriple<int64> low, high;
};

// Where an edge crosses a slice, in voxels rounded up.
struct StMark {
  int64 place;
  int winding;
};

// The distance x from row to row of a face, which is kept as a quotient and what that leaves over.
struct StClimb {
  int128 divisor = 0;
  StQuotient<int128> step{};
};

class CSolidScan {
public:
  CSolidScan(StMesh const& mesh, std::span<StFacePlane const> planes, EnWinding winding,
             Rows* surface)
      : m_Mesh(mesh), m_Planes(planes), m_Winding(winding), m_Surface(surface) {}

  Rows Scan() {
    CollectEdges();
    for (std::uint32_t slice = 0; !m_Active.empty() || m_Next != m_Edges.size(); ++slice) {
      if (m_Active.empty()) slice = m_Edges[m_Next].firstSlice;
      Enter(slice);
      ScanSlice(slice);
    }
    return std::move(m_Rows);
  }

private:
  // Faces along x have no crossings, but points.
  [[nodiscard]] bool IsScanned(CTriple<int64> const& normal) const {
    return normal.x != 0 || (m_Surface != nullptr && normal.y != 0);
  }

  void CollectEdges() {
    std::vector<StSweepEdge> edges;
    Rows order;
    m_Climbs.resize(m_Planes.size());
    for (std::size_t face = 0; face < m_Mesh.Faces(); ++face) {
      CTriple<int64> const& normal = m_Planes[face].normal;
      if (!IsScanned(normal)) continue;
      int128 const divisor = int128{normal.x} * m_Mesh.unit;
      if (divisor != 0)
        m_Climbs[face] = {divisor, Divide(-int128{normal.y} * m_Mesh.unit, divisor)};
      ForEachEdge(m_Mesh, face, [&](std::uint32_t a, std::uint32_t b) {
        AddEdge(edges, order, static_cast<std::uint32_t>(face), m_Mesh.corners[a],
                m_Mesh.corners[b]);
      });
    }
    SortRows(order);
    m_Edges.reserve(edges.size());
    for (StRow const& row : order) m_Edges.push_back(edges[row.low]);
  }

  void AddEdge(std::vector<StSweepEdge>& edges, Rows& order, std::uint32_t face, CTriple<int64> low,
               CTriple<int64> high) const {
    int const winding = low.z < high.z ? 1 : -1;
    if (winding < 0) std::swap(low, high);
    auto const first = static_cast<std::uint32_t>(CeilVoxel(low.z, m_Mesh.unit));
    auto const end = static_cast<std::uint32_t>(CeilVoxel(high.z, m_Mesh.unit));
    if (first >= end) return;
    order.push_back({first, face, static_cast<std::uint32_t>(edges.size()), 0});
    edges.push_back({face, first, end, winding, low, high});
  }

  // The active edges stay in the order of their faces.
  void Enter(std::uint32_t slice) {
    auto const begin = m_Edges.begin() + static_cast<std::ptrdiff_t>(m_Next);
    auto end = begin;
    while (end != m_Edges.end() && end->firstSlice == slice) ++end;
    m_Next = static_cast<std::size_t>(end - m_Edges.begin());
    std::erase_if(m_Active, [=](StSweepEdge const& edge) { return edge.endSlice <= slice; });
    if (begin == end) return;
    m_Merged.clear();
    std::merge(m_Active.begin(), m_Active.end(), begin, end, std::back_inserter(m_Merged),
               [](StSweepEdge const& a, StSweepEdge const& b) { return a.face < b.face; });
    m_Active.swap(m_Merged);
  }

  void ScanSlice(std::uint32_t slice) {
    m_Crossings.clear();
    for (std::size_t begin = 0, end = 0; begin < m_Active.size(); begin = end) {
      std::uint32_t const face = m_Active[begin].face;
      while (end < m_Active.size() && m_Active[end].face == face) ++end;
      std::span const edges(m_Active.data() + begin, end - begin);
      if (m_Planes[face].normal.x != 0) {
        ScanFace(face, edges, slice);
      } else {
        ScanUprightFace(m_Planes[face], edges, slice);
      }
    }
    AppendInside(m_Crossings, m_Winding, m_Rows);
  }

  void Mark(std::span<StSweepEdge const> edges, int64 CTriple<int64>::*axis, std::uint32_t slice) {
    m_Marks.clear();
    for (StSweepEdge const& edge : edges)
      m_Marks.push_back({CrossLine(edge.low, edge.high, &CTriple<int64>::z, axis,
                                   slice * m_Mesh.unit, m_Mesh.unit)
                             .Ceil(),
                         edge.winding});
    std::ranges::sort(m_Marks, {}, &StMark::place);
  }

  // Calls visit(first, end, winding) for what lies between the marks.
  template <class Visit>
  void BetweenMarks(Visit visit) const {
    int winding = 0;
    for (std::size_t k = 0; k + 1 < m_Marks.size(); ++k) {
      winding += m_Marks[k].winding;
      if (IsInside(winding, m_Winding) && m_Marks[k].place < m_Marks[k + 1].place)
        visit(m_Marks[k].place, m_Marks[k + 1].place, winding);
    }
  }

  void ScanFace(std::uint32_t face, std::span<StSweepEdge const> edges, std::uint32_t slice) {
    Mark(edges, &CTriple<int64>::y, slice);
    BetweenMarks([&](int64 first, int64 end, int winding) {
      StClimb const& climb = m_Climbs[face];
      auto [floor, rest] = Divide(CrossingAt(m_Planes[face], first, slice), climb.divisor);
      for (int64 y = first; y < end; ++y) {
        AddCrossing(slice, static_cast<std::uint32_t>(y), floor, rest == 0, winding);
        floor += climb.step.floor;
        rest += climb.step.rest;
        if (rest >= climb.divisor) {
          rest -= climb.divisor;
          ++floor;
        }
      }
    });
  }

  // x of the plane over a row, times its divisor.
  [[nodiscard]] int128 CrossingAt(StFacePlane const& plane, int64 y, int64 z) const {
    auto const& [normal, anchor] = plane;
    return int128{normal.x} * anchor.x - int128{normal.y} * (y * m_Mesh.unit - anchor.y) -
           int128{normal.z} * (z * m_Mesh.unit - anchor.z);
  }

  void AddCrossing(std::uint32_t z, std::uint32_t y, int128 floor, bool isOnFace, int winding) {
    auto const x = static_cast<std::uint32_t>(floor);
    m_Crossings.push_back(Crossing(z, y, isOnFace ? x : x + 1, winding));
    if (isOnFace && m_Surface != nullptr) m_Surface->push_back({z, y, x, x});
  }

  // Of a face along x: its points in the one row in which it meets the slice.
  void ScanUprightFace(StFacePlane const& plane, std::span<StSweepEdge const> edges,
                       std::uint32_t slice) {
    auto const& [normal, anchor] = plane;
    int128 const numerator =
        int128{normal.y} * anchor.y - int128{normal.z} * (slice * m_Mesh.unit - anchor.z);
    int128 const divisor = int128{normal.y} * m_Mesh.unit;
    if (numerator % divisor != 0) return;
    auto const y = static_cast<std::uint32_t>(numerator / divisor);
    Mark(edges, &CTriple<int64>::x, slice);
    BetweenMarks([&](int64 first, int64 end, int) {
      m_Surface->push_back(
          {slice, y, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end - 1)});
    });
  }

  StMesh const& m_Mesh;
  std::span<StFacePlane const> m_Planes;
  EnWinding m_Winding;
  Rows* m_Surface;
  std::vector<StClimb> m_Climbs;
  std::vector<StSweepEdge> m_Edges, m_Active, m_Merged;
  std::size_t m_Next = 0; // the first edge not yet entered
  std::vector<StMark> m_Marks;
  Rows m_Crossings, m_Rows;
};

} // namespace

Rows ScanSolid(StMesh const& mesh, std::span<StFacePlane const> planes, EnWinding winding,
               Rows* surface) {
  return CSolidScan(mesh, planes, winding, surface).Scan();
}

} // namespace ORVA::Impl
