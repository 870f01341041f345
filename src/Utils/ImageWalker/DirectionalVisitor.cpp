#include <SeluUtils/DirectionalVisitor.h>

#include <SeluUtils/Impl/AxisMove.h>
#include <pxlib2core/Exception.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ImageWalker";
constexpr char c_moduleOfDeclaration[] = "src/utils/ImageWalker";
constexpr char c_invalidUnitDirection[] = "Invalid Direction given to CDirectionalIterator";

constexpr auto c_longestRun = static_cast<uint64>(std::numeric_limits<int64>::max());

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

} // namespace

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
  m_Faces->clear();
  for (std::size_t face = 0; face < c_entryFaces.size(); ++face) {
    std::size_t const axis = face % 3;
    if (!(face < 3 ? m_Plus[axis] : m_Minus[axis])) continue;
    FaceAxes const& axes = c_entryFaces[face];
    auto const [lowX, highX] = FaceRange(axes[0], m_Low.x, m_High.x, m_Plus[0], m_Minus[0]);
    auto const [lowY, highY] = FaceRange(axes[1], m_Low.y, m_High.y, m_Plus[1], m_Minus[1]);
    auto const [lowZ, highZ] = FaceRange(axes[2], m_Low.z, m_High.z, m_Plus[2], m_Minus[2]);
    CTriple<int64> const low(lowX, lowY, lowZ), high(highX, highY, highZ);
    if (Impl::HasPoints(low, high)) m_Faces->insert(m_Faces->end(), {low, high});
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
  m_Face = CWindowVisitor(m_Faces->at(0), m_Faces->at(1));
  m_Faces->erase(m_Faces->begin(), m_Faces->begin() + 2);
}

CTriple<int64> CDirectionalVisitor::NextBorderPoint() {
  CTriple<int64> const point = m_Face.NextPoint();
  if (!MoreBorderPoints() && !m_Faces->empty()) TakeFace();
  return point;
}

StRun CDirectionalVisitor::NextRun() {
  if (!MorePoints()) return {};
  CTriple<int64> const first = m_Current.Get();
  int64 const axis = Impl::AxisOfMove(m_Direction);
  uint64 const length = axis < 0 ? 1 : LengthFrom(first);
  if (length <= 1 || length > c_longestRun) return {NextPoint(), 0, 1};
  NextLine();
  return {first, axis, static_cast<int64>(length)};
}

// Lines can begin outside of the box, where nothing was prepared.
uint64 CDirectionalVisitor::LengthFrom(CTriple<int64> const& p) const noexcept {
  if (!IsInBox(Impl::WrappedSum(p, m_Direction))) return 1;
  uint64 beyond = std::numeric_limits<uint64>::max();
  auto const limit = [&](int64 step, int64 position, int64 low, int64 high) {
    if (step == 0) return;
    uint64 const left = step > 0 ? static_cast<uint64>(high) - static_cast<uint64>(position)
                                 : static_cast<uint64>(position) - static_cast<uint64>(low);
    beyond = std::min(beyond, left);
  };
  limit(m_Direction.x, p.x, m_Low.x, m_High.x);
  limit(m_Direction.y, p.y, m_Low.y, m_High.y);
  limit(m_Direction.z, p.z, m_Low.z, m_High.z);
  return beyond + 1;
}

uint64 CDirectionalVisitor::Remaining() const noexcept {
  if (!MorePoints()) return 0;
  uint64 count = LengthFrom(m_Current.Get());
  auto const addLines = [&](CWindowVisitor starts) {
    while (starts.MorePoints()) count += LengthFrom(starts.NextPoint());
  };
  if (!MoreBorderPoints()) return count; // the walk ends with a first face of one voxel
  addLines(m_Face);
  for (std::size_t k = 0; k + 1 < m_Faces->size(); k += 2)
    addLines(CWindowVisitor((*m_Faces)[k], (*m_Faces)[k + 1]));
  return count;
}

void CDirectionalVisitor::NextLine() {
  m_Current = Impl::StMovingPoint(MoreBorderPoints() ? NextBorderPoint() : m_End);
}

} // namespace ORVA
