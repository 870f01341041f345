#include <SeluUtils/ImageWalker.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/LineVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ImageWalker";
constexpr char c_moduleOfDeclaration[] = "src/utils/ImageWalker";
constexpr char c_invalidUnitDirection[] = "Invalid Direction given to CDirectionalIterator";

// One entry face: along each axis it spans the box, less a margin, or is one of its two ends. A
// later face leaves out the edges that it shares with the faces before it.
enum class EnEnd { Span, Low, High };
enum class EnTrim : bool { No, Yes };
struct StFaceAxis {
  EnEnd end;
  EnTrim trimPlus;  // one less at the low end where the direction's component is +1
  EnTrim trimMinus; // one less at the high end where it is -1
};
using FaceAxes = std::array<StFaceAxis, 3>;

constexpr StFaceAxis c_low{EnEnd::Low, EnTrim::No, EnTrim::No};
constexpr StFaceAxis c_high{EnEnd::High, EnTrim::No, EnTrim::No};
constexpr StFaceAxis c_whole{EnEnd::Span, EnTrim::No, EnTrim::No};
constexpr StFaceAxis c_lessPlus{EnEnd::Span, EnTrim::Yes, EnTrim::No};
constexpr StFaceAxis c_lessBoth{EnEnd::Span, EnTrim::Yes, EnTrim::Yes};

// Rows: the entry face of direction +x, +y, +z, -x, -y, -z; columns: along x, y, z.
constexpr std::array<FaceAxes, 6> c_entryFaces = {{{{c_low, c_whole, c_whole}},
                                                   {{c_lessPlus, c_low, c_whole}},
                                                   {{c_lessPlus, c_lessPlus, c_low}},
                                                   {{c_high, c_lessPlus, c_lessPlus}},
                                                   {{c_lessBoth, c_high, c_lessPlus}},
                                                   {{c_lessBoth, c_lessBoth, c_high}}}};

std::pair<int64, int64> FaceRange(StFaceAxis const& axis, int64 low, int64 high, bool plus,
                                  bool minus) {
  switch (axis.end) {
  case EnEnd::Low:
    return {low, low};
  case EnEnd::High:
    return {high, high};
  case EnEnd::Span:
    break;
  }
  bool const trimLow = axis.trimPlus == EnTrim::Yes && plus;
  bool const trimHigh = axis.trimMinus == EnTrim::Yes && minus; // never both: one sign a direction
  if (trimLow || trimHigh) {
    if (low == high) return {1, 0}; // nothing is left
    (trimLow ? low : high) += trimLow ? 1 : -1;
  }
  return {low, high};
}

bool IsUnit(int64 component) { return component >= -1 && component <= 1; }

bool IsFinite(CTriple<double> const& a) {
  return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

// Axis of the largest component, the earlier one on a tie.
int64 LargestAxis(CTriple<double> const& a) {
  double const x = std::abs(a.x), y = std::abs(a.y), z = std::abs(a.z);
  if (x >= y && x >= z) return 0;
  return y >= z ? 1 : 2;
}

template <class T>
CTriple<T> MainAxisFirst(int64 axis, CTriple<T> const& a) {
  if (axis == 1) return {a.y, a.x, a.z};
  if (axis == 2) return {a.z, a.x, a.y};
  return a;
}

} // namespace

namespace Impl {

void RaisePointOutsideWindow() {
  Raise(ORVA_LOCATION(c_module, "ORVA::CWindowVisitor::NextPoint"),
        "Point outside Window in CWindowVisitor");
}
void RaiseNoMorePoints() {
  Raise(ORVA_LOCATION(c_module, "ORVA::CDeltaVisitor::NextPoint"), "No more Points");
}

} // namespace Impl

CDirectionalVisitor::CDirectionalVisitor(CTriple<int64> low, CTriple<int64> high,
                                         CTriple<int64> direction)
    : m_low(low), m_high(high), m_end(Impl::WrappedSum(high, {1, 1, 1})), m_direction(direction) {
  if (!CheckDir_And_DefineFaces(direction))
    Impl::Raise(
        ORVA_LOCATION(c_moduleOfDeclaration, "ORVA::CDirectionalVisitor::CDirectionalVisitor"),
        c_invalidUnitDirection);
}

void CDirectionalVisitor::SetDirection(CTriple<int64> direction) {
  if (!CheckDir_And_DefineFaces(direction))
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDirectionalVisitor::SetDirection"),
                c_invalidUnitDirection);
  m_direction = direction;
  Initialize();
}

void CDirectionalVisitor::SetImageSize(CTriple<int64> extents) {
  Impl::Clip(m_low, m_high, extents);
  Initialize();
}

bool CDirectionalVisitor::CheckDir_And_DefineFaces(CTriple<int64> direction) noexcept {
  auto const [x, y, z] = direction;
  if (!IsUnit(x) || !IsUnit(y) || !IsUnit(z)) return false;
  m_plus = {x == 1, y == 1, z == 1};
  m_minus = {x == -1, y == -1, z == -1};
  return true;
}

void CDirectionalVisitor::FillBorderContours() {
  m_faces.clear();
  for (std::size_t face = 0; face < c_entryFaces.size(); ++face) {
    std::size_t const axis = face % 3;
    if (!(face < 3 ? m_plus[axis] : m_minus[axis])) continue;
    FaceAxes const& axes = c_entryFaces[face];
    auto const [lowX, highX] = FaceRange(axes[0], m_low.x, m_high.x, m_plus[0], m_minus[0]);
    auto const [lowY, highY] = FaceRange(axes[1], m_low.y, m_high.y, m_plus[1], m_minus[1]);
    auto const [lowZ, highZ] = FaceRange(axes[2], m_low.z, m_high.z, m_plus[2], m_minus[2]);
    CTriple<int64> const low(lowX, lowY, lowZ), high(highX, highY, highZ);
    if (Impl::HasPoints(low, high)) m_faces.insert(m_faces.end(), {low, high});
  }
}

void CDirectionalVisitor::Initialize() {
  m_current = Impl::StMovingPoint(m_end);
  m_face = CWindowVisitor();
  if (!Impl::HasPoints(m_low, m_high)) return;
  FillBorderContours();
  TakeFace();
  m_current = Impl::StMovingPoint(m_face.NextPoint());
}

// The first face of the list becomes the one that is walked.
void CDirectionalVisitor::TakeFace() {
  m_face = CWindowVisitor(m_faces.at(0), m_faces.at(1));
  m_faces.erase(m_faces.begin(), m_faces.begin() + 2);
}

CTriple<int64> CDirectionalVisitor::NextBorderPoint() {
  CTriple<int64> const point = m_face.NextPoint();
  if (!MoreBorderPoints() && !m_faces.empty()) TakeFace();
  return point;
}

void CDirectionalVisitor::NextLine() {
  m_current = Impl::StMovingPoint(MoreBorderPoints() ? NextBorderPoint() : m_end);
}

void CDeltaVisitor::SetImageSize(CTriple<int64> extents) {
  m_imageSize = extents;
  if (m_imageSize.y == 0) m_imageSize.z = 1;
  Initialize();
}

void CDeltaVisitor::SetDirection(CTriple<double> direction) {
  m_direction = direction;
  Initialize();
}

uint64 CDeltaVisitor::Steps() const noexcept {
  return static_cast<uint64>(m_imageSize.x) * static_cast<uint64>(m_imageSize.y) *
         static_cast<uint64>(m_imageSize.z);
}

int64 CDeltaVisitor::MainAxis() const {
  if (!IsFinite(m_direction))
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDeltaVisitor::Initialize"),
                "Invalid Direction given to CDeltaVisitor");
  return LargestAxis(m_direction);
}

void CDeltaVisitor::Initialize() {
  m_start = m_offset = {};
  m_previous = m_index = 0;
  m_length = m_extent2 = m_extent3 = 0; // no points until the line stands
  m_isBorder = m_nextIsBorder = true;
  m_line.clear();
  m_axis = MainAxis();
  if (m_imageSize.x <= 0 || m_imageSize.y <= 0 || m_imageSize.z <= 0) return;
  BuildLine();
}

void CDeltaVisitor::BuildLine() {
  auto const direction = MainAxisFirst(m_axis, m_direction);
  auto const extents = MainAxisFirst(m_axis, m_imageSize);
  CTriple<int64> const start(direction.x < 0 ? extents.x - 1 : 0,
                             direction.y < 0 ? extents.y - 1 : 0,
                             direction.z < 0 ? extents.z - 1 : 0);
  auto const [nx, ny, nz] =
      CTriple<double>(static_cast<double>(extents.x), static_cast<double>(extents.y),
                      static_cast<double>(extents.z));
  bool const isFlat = m_imageSize.z == 1;
  CBresenhamVisitor line(start, direction, std::sqrt(nx * nx + ny * ny + nz * nz), isFlat ? 2 : 3,
                         isFlat ? NEIGHBORHOOD_8 : NEIGHBORHOOD_26, true);
  auto const raise = [] {
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDeltaVisitor::Initialize"),
                "Invalid Calculation of Line in CDeltaVisitor");
  };
  if (line.Steps() < extents.x - 1) raise();
  std::vector<CTriple<int64>> points;
  points.reserve(static_cast<std::size_t>(extents.x));
  for (int64 i = 0; i < extents.x; ++i) points.push_back(line.NextPoint() - start);
  // Of a length beyond 32 bits so little can be left that another axis drives the line.
  if (std::abs(points.back().x) != extents.x - 1) raise();
  m_line = std::move(points);
  m_start = m_offset = start;
  m_length = extents.x;
  m_extent2 = extents.y;
  m_extent3 = extents.z;
}

void CDeltaVisitor::NextLine() noexcept {
  m_index = 0;
  m_nextIsBorder = true;
  if (++m_start.y >= m_extent2) {
    m_start.y = 0;
    if (++m_start.z >= m_extent3) m_index = static_cast<uint64>(m_length);
  }
  m_offset = m_start;
}

CParallelLineVisitor::CParallelLineVisitor(CTriple<double> direction) { SetDirection(direction); }

void CParallelLineVisitor::SetImageSize(CTriple<int64> extents) {
  auto const lineExtents = MainAxisFirst(m_axis, extents);
  m_lines.SetImageSize(lineExtents);
  m_imageSize = extents;
  auto const last = [](int64 sign, int64 extent) {
    return sign < 0 && extent > 0 ? extent - 1 : 0;
  };
  m_origin = {last(m_signs.x, lineExtents.x), last(m_signs.y, lineExtents.y),
              last(m_signs.z, lineExtents.z)};
}

void CParallelLineVisitor::SetDirection(CTriple<double> direction) {
  if (!IsFinite(direction) || direction == CTriple<double>())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CParallelLineVisitor::SetDirection"),
                        CString("direction (%1, %2, %3) points nowhere")
                            .Arg(direction.x, 6)
                            .Arg(direction.y, 6)
                            .Arg(direction.z, 6));
  int64 const axis = LargestAxis(direction);
  auto const d = MainAxisFirst(axis, direction);
  // With a main component of 1 the line is never shorter than the image.
  CDeltaVisitor lines({1, std::abs(d.y / d.x), std::abs(d.z / d.x)});
  m_lines = std::move(lines);
  m_axis = axis;
  m_signs = {d.x < 0 ? -1 : 1, d.y < 0 ? -1 : 1, d.z < 0 ? -1 : 1};
  SetImageSize(m_imageSize);
}

} // namespace ORVA
