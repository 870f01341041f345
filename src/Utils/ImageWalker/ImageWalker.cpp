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
    : m_Low(low), m_High(high), m_End(Impl::WrappedSum(high, {1, 1, 1})), m_Direction(direction) {
  if (!CheckDir_And_DefineFaces(direction))
    Impl::Raise(
        ORVA_LOCATION(c_moduleOfDeclaration, "ORVA::CDirectionalVisitor::CDirectionalVisitor"),
        c_invalidUnitDirection);
}

void CDirectionalVisitor::SetDirection(CTriple<int64> direction) {
  if (!CheckDir_And_DefineFaces(direction))
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDirectionalVisitor::SetDirection"),
                c_invalidUnitDirection);
  m_Direction = direction;
  Initialize();
}

void CDirectionalVisitor::SetImageSize(CTriple<int64> extents) {
  Impl::Clip(m_Low, m_High, extents);
  Initialize();
}

bool CDirectionalVisitor::CheckDir_And_DefineFaces(CTriple<int64> direction) noexcept {
  auto const [x, y, z] = direction;
  if (!IsUnit(x) || !IsUnit(y) || !IsUnit(z)) return false;
  m_Plus = {x == 1, y == 1, z == 1};
  m_Minus = {x == -1, y == -1, z == -1};
  return true;
}

void CDirectionalVisitor::FillBorderContours() {
  m_Faces.clear();
  for (std::size_t face = 0; face < c_entryFaces.size(); ++face) {
    std::size_t const axis = face % 3;
    if (!(face < 3 ? m_Plus[axis] : m_Minus[axis])) continue;
    FaceAxes const& axes = c_entryFaces[face];
    auto const [lowX, highX] = FaceRange(axes[0], m_Low.x, m_High.x, m_Plus[0], m_Minus[0]);
    auto const [lowY, highY] = FaceRange(axes[1], m_Low.y, m_High.y, m_Plus[1], m_Minus[1]);
    auto const [lowZ, highZ] = FaceRange(axes[2], m_Low.z, m_High.z, m_Plus[2], m_Minus[2]);
    CTriple<int64> const low(lowX, lowY, lowZ), high(highX, highY, highZ);
    if (Impl::HasPoints(low, high)) m_Faces.insert(m_Faces.end(), {low, high});
  }
}

void CDirectionalVisitor::Initialize() {
  m_Current = Impl::StMovingPoint(m_End);
  m_Face = CWindowVisitor();
  if (!Impl::HasPoints(m_Low, m_High)) return;
  FillBorderContours();
  TakeFace();
  m_Current = Impl::StMovingPoint(m_Face.NextPoint());
}

// The first face of the list becomes the one that is walked.
void CDirectionalVisitor::TakeFace() {
  m_Face = CWindowVisitor(m_Faces.at(0), m_Faces.at(1));
  m_Faces.erase(m_Faces.begin(), m_Faces.begin() + 2);
}

CTriple<int64> CDirectionalVisitor::NextBorderPoint() {
  CTriple<int64> const point = m_Face.NextPoint();
  if (!MoreBorderPoints() && !m_Faces.empty()) TakeFace();
  return point;
}

void CDirectionalVisitor::NextLine() {
  m_Current = Impl::StMovingPoint(MoreBorderPoints() ? NextBorderPoint() : m_End);
}

void CDeltaVisitor::SetImageSize(CTriple<int64> extents) {
  m_ImageSize = extents;
  if (m_ImageSize.y == 0) m_ImageSize.z = 1;
  Initialize();
}

void CDeltaVisitor::SetDirection(CTriple<double> direction) {
  m_Direction = direction;
  Initialize();
}

uint64 CDeltaVisitor::Steps() const noexcept {
  return static_cast<uint64>(m_ImageSize.x) * static_cast<uint64>(m_ImageSize.y) *
         static_cast<uint64>(m_ImageSize.z);
}

int64 CDeltaVisitor::MainAxis() const {
  if (!IsFinite(m_Direction))
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CDeltaVisitor::Initialize"),
                "Invalid Direction given to CDeltaVisitor");
  return LargestAxis(m_Direction);
}

void CDeltaVisitor::Initialize() {
  m_Start = m_Offset = {};
  m_Previous = m_Index = 0;
  m_Length = m_Extent2 = m_Extent3 = 0; // no points until the line stands
  m_IsBorder = m_NextIsBorder = true;
  m_Line.clear();
  m_Axis = MainAxis();
  if (m_ImageSize.x <= 0 || m_ImageSize.y <= 0 || m_ImageSize.z <= 0) return;
  BuildLine();
}

void CDeltaVisitor::BuildLine() {
  auto const direction = MainAxisFirst(m_Axis, m_Direction);
  auto const extents = MainAxisFirst(m_Axis, m_ImageSize);
  CTriple<int64> const start(direction.x < 0 ? extents.x - 1 : 0,
                             direction.y < 0 ? extents.y - 1 : 0,
                             direction.z < 0 ? extents.z - 1 : 0);
  auto const [nx, ny, nz] =
      CTriple<double>(static_cast<double>(extents.x), static_cast<double>(extents.y),
                      static_cast<double>(extents.z));
  bool const isFlat = m_ImageSize.z == 1;
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
  m_Line = std::move(points);
  m_Start = m_Offset = start;
  m_Length = extents.x;
  m_Extent2 = extents.y;
  m_Extent3 = extents.z;
}

void CDeltaVisitor::NextLine() noexcept {
  m_Index = 0;
  m_NextIsBorder = true;
  if (++m_Start.y >= m_Extent2) {
    m_Start.y = 0;
    if (++m_Start.z >= m_Extent3) m_Index = static_cast<uint64>(m_Length);
  }
  m_Offset = m_Start;
}

CParallelLineVisitor::CParallelLineVisitor(CTriple<double> direction) { SetDirection(direction); }

void CParallelLineVisitor::SetImageSize(CTriple<int64> extents) {
  auto const lineExtents = MainAxisFirst(m_Axis, extents);
  m_Lines.SetImageSize(lineExtents);
  m_ImageSize = extents;
  auto const last = [](int64 sign, int64 extent) {
    return sign < 0 && extent > 0 ? extent - 1 : 0;
  };
  m_Origin = {last(m_Signs.x, lineExtents.x), last(m_Signs.y, lineExtents.y),
              last(m_Signs.z, lineExtents.z)};
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
  m_Lines = std::move(lines);
  m_Axis = axis;
  m_Signs = {d.x < 0 ? -1 : 1, d.y < 0 ? -1 : 1, d.z < 0 ? -1 : 1};
  SetImageSize(m_ImageSize);
}

} // namespace ORVA
