#include <SeluUtils/Impl/LineMoves.h>

#include "Utils/BresenhamVisitorImpl/Merge.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <utility>

namespace ORVA::Impl {

namespace {

constexpr char c_module[] = "src/Utils/BresenhamVisitorImpl";
constexpr char c_stepOutOfRange[] = "Step i out of range";
constexpr char c_invalidNeighborhood2D[] =
    "invalid neighborhood behavior, only 4, 6.1, 6.2 and 8 valid";
constexpr char c_wrongConvert[] = "wrong value of m_Convert in CBresenhamVisitor3D";

constexpr int64 c_longest = int64{1} << 31; // longest length that 32-bit components have
constexpr int64 c_byLength = 7;             // mask whose axes are ordered by length

bool IsNeighborhood2D(int64 code) {
  return code == NEIGHBORHOOD_4 || code == NEIGHBORHOOD_6_1 || code == NEIGHBORHOOD_6_2 ||
         code == NEIGHBORHOOD_8;
}

bool IsNeighborhood3D(int64 code) {
  return code == NEIGHBORHOOD_6 || code == NEIGHBORHOOD_14_1 || code == NEIGHBORHOOD_14_2 ||
         code == NEIGHBORHOOD_26;
}

constexpr CTriple<int64> c_noOrder(0, 0, 0);

// Axis order by decreasing length, indexed by 4 (lx >= ly) + 2 (lz <= lx) + (ly >= lz).
constexpr std::array<CTriple<int64>, 8> c_orderByLength = {
    {{3, 2, 1}, {2, 3, 1}, c_noOrder, {2, 1, 3}, {3, 1, 2}, c_noOrder, {1, 3, 2}, {1, 2, 3}}};

struct StOctant {
  int64 mask;
  CTriple<int64> order;
};

// Mask and axis order by octant 4 (dx >= 0) + 2 (dy >= 0) + (dz >= 0): which of the
// neighborhood's diagonals point into the octant decides the mask.
constexpr std::array<StOctant, 8> c_octants14_1 = {{{c_byLength, {1, 2, 3}},
                                                    {1, {1, 2, 3}},
                                                    {1, {1, 3, 2}},
                                                    {1, {3, 2, 1}},
                                                    {1, {3, 2, 1}},
                                                    {1, {1, 3, 2}},
                                                    {1, {1, 2, 3}},
                                                    {c_byLength, {1, 2, 3}}}};
constexpr std::array<StOctant, 8> c_octants14_2 = {{{6, {2, 1, 3}},
                                                    {3, {1, 2, 3}},
                                                    {3, {1, 3, 2}},
                                                    {0, {1, 2, 3}},
                                                    {0, {1, 2, 3}},
                                                    {3, {1, 3, 2}},
                                                    {3, {1, 2, 3}},
                                                    {6, {2, 1, 3}}}};

struct StProjectionSet {
  int64 plane12, plane13; // 2D neighborhoods
  bool hasPlane23;
  int64 plane23;
};

// By mask. A plane is 8-connected where the mask has its diagonal as a move of its own.
constexpr std::array<StProjectionSet, 8> c_projectionSets = {{
    {NEIGHBORHOOD_4, NEIGHBORHOOD_4, true, NEIGHBORHOOD_4},
    {NEIGHBORHOOD_8, NEIGHBORHOOD_4, true, NEIGHBORHOOD_4},
    {NEIGHBORHOOD_4, NEIGHBORHOOD_4, true, NEIGHBORHOOD_4},
    {NEIGHBORHOOD_8, NEIGHBORHOOD_4, true, NEIGHBORHOOD_8},
    {NEIGHBORHOOD_8, NEIGHBORHOOD_4, true, NEIGHBORHOOD_4},
    {NEIGHBORHOOD_4, NEIGHBORHOOD_4, true, NEIGHBORHOOD_4},
    {NEIGHBORHOOD_8, NEIGHBORHOOD_4, true, NEIGHBORHOOD_8},
    {NEIGHBORHOOD_8, NEIGHBORHOOD_8, false, 0},
}};

int64 Component(CTriple<int64> const& triple, int64 axis) {
  return axis == 1 ? triple.x : axis == 2 ? triple.y : triple.z;
}

void SetComponent(CTriple<int64>& triple, int64 axis, int64 value) {
  (axis == 1 ? triple.x : axis == 2 ? triple.y : triple.z) = value;
}

int64 WithSign(int64 value, int64 sign) {
  return sign >= 0 ? value : static_cast<int64>(-static_cast<uint64>(value));
}

bool IsAxis(int64 axis) { return axis >= 1 && axis <= 3; }

void PrintMove(CTriple<int64> const& move) {
  std::printf("(%" PRId64 ", %" PRId64 ", %" PRId64 ")\n", move.x, move.y, move.z);
}

} // namespace

void CBresenhamVisitor1D::RaiseStepOutOfRange() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor1D::Step"), c_stepOutOfRange);
}
void CBresenhamVisitor2D::RaiseStepOutOfRange() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::Step"), c_stepOutOfRange);
}
void CBresenhamVisitor3D::RaiseStepOutOfRange() {
  Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Step"), c_stepOutOfRange);
}

CBresenhamVisitor2D::CBresenhamVisitor2D(int64 dx, int64 dy, int64 neighborhood)
    : m_Neighborhood(neighborhood) {
  Init(dx, dy);
}

CBresenhamVisitor2D::CBresenhamVisitor2D(CTriple<int64> d, int64 neighborhood)
    : m_Neighborhood(neighborhood) {
  if (d.z != 0)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::CBresenhamVisitor2D"),
          "invalid Dimension");
  Init(d.x, d.y);
}

void CBresenhamVisitor2D::Init(int64 dx, int64 dy) {
  if (!IsNeighborhood2D(m_Neighborhood))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::Init"),
          c_invalidNeighborhood2D);
  CBresenhamVisitor2D line;
  line.m_Neighborhood = m_Neighborhood;
  line.Build({Sign(dx), Sign(dy), 0}, ClampedLength(dx), ClampedLength(dy));
  *this = std::move(line);
}

CBresenhamVisitor2D CBresenhamVisitor2D::Projection(int64 a, int64 b, int64 neighborhood) {
  CBresenhamVisitor2D line;
  line.m_Neighborhood = neighborhood;
  line.Build({1, 1, 0}, a, b);
  return line;
}

void CBresenhamVisitor2D::Build(CTriple<int64> signs, int64 lengthX, int64 lengthY) {
  m_SignX = signs.x;
  m_SignY = signs.y;
  m_XMajor = lengthX >= lengthY;
  CTriple<int64> const alongX(m_SignX, 0, 0), alongY(0, m_SignY, 0);
  m_Moves[0] = m_XMajor ? alongX : alongY;
  m_Moves[1] = DiagonalIn() ? alongX + alongY : m_XMajor ? alongY : alongX;
  if (m_XMajor) {
    FillNabla(lengthX, lengthY);
  } else {
    FillNabla(lengthY, lengthX);
  }
}

bool CBresenhamVisitor2D::DiagonalIn() const {
  switch (m_Neighborhood) {
  case NEIGHBORHOOD_4:
    return false;
  case NEIGHBORHOOD_6_1:
    return m_SignX * m_SignY == 1;
  case NEIGHBORHOOD_6_2:
    return m_SignX * m_SignY == -1;
  case NEIGHBORHOOD_8:
    return true;
  default:
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::DiagonalIn"),
          c_invalidNeighborhood2D);
  }
}

void CBresenhamVisitor2D::FillNabla(int64 a, int64 b) {
  if (!IsNeighborhood2D(m_Neighborhood))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::FillNabla"),
          c_invalidNeighborhood2D);
  for (int64 const length : {a, b})
    if (length < 0 || length > c_longest)
      RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor2D::FillNabla"),
                    CString("length %1 is not in the range 0 to 2147483648").Arg(length));
  m_Steps = DiagonalIn() ? a : a + b;
  m_Other = b;
  m_Seconds = StStepPattern::Even(static_cast<uint64>(std::min<int64>(b, m_Steps)),
                                  static_cast<uint64>(m_Steps));
}

// Every move adds 2b to the value and a second one takes 2 * moves off it, so that it is negative
// until the other axis is due: from 2b - moves on, which is b - a without diagonals.
std::vector<int64> CBresenhamVisitor2D::Decisions() const {
  std::vector<int64> values(static_cast<std::size_t>(LastStep()));
  StStepPattern seconds = m_Seconds;
  int64 value = 2 * m_Other - m_Steps;
  for (int64& entry : values) {
    entry = value;
    value += 2 * m_Other - (seconds.Advance() ? 2 * m_Steps : 0);
  }
  return values;
}

void CBresenhamVisitor2D::PrintSteps() const {
  for (int64 i = 0; i < LastStep(); ++i) PrintMove(Step(i));
}

CBresenhamVisitor3D::CBresenhamVisitor3D(int64 dx, int64 dy, int64 dz, int64 neighborhood)
    : m_Neighborhood(neighborhood) {
  Init(dx, dy, dz);
}

CBresenhamVisitor3D::CBresenhamVisitor3D(CTriple<int64> d, int64 neighborhood)
    : CBresenhamVisitor3D(d.x, d.y, d.z, neighborhood) {}

CBresenhamVisitor3D::CBresenhamVisitor3D(CTriple<int64> d, int64 neighborhood, int64 diagonal)
    : m_Neighborhood(neighborhood), m_DiagonalIn(diagonal) {
  Init(d.x, d.y, d.z, diagonal);
}

void CBresenhamVisitor3D::Init(int64 dx, int64 dy, int64 dz) {
  if (!IsNeighborhood3D(m_Neighborhood))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Init"),
          "invalid neighborhood behavior, only 6, 14.1, 14.2 and 26 valid");
  CBresenhamVisitor3D line;
  line.m_Neighborhood = m_Neighborhood;
  line.SetDifference({dx, dy, dz});
  line.ChooseMask(static_cast<std::size_t>(4 * (dx >= 0) + 2 * (dy >= 0) + (dz >= 0)));
  if (line.m_DiagonalIn == c_byLength) line.OrderByLength();
  line.BuildProjections("invalid case, for m_DiagonalIn only 0,1,3,6,7 valid yet");
  line.ComputeMoves();
  *this = std::move(line);
}

void CBresenhamVisitor3D::Init(int64 dx, int64 dy, int64 dz, int64 diagonal) {
  if (diagonal >= 8)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Init"),
          "invalid diagonal, only 0 till 7 valid");
  CBresenhamVisitor3D line;
  line.m_Neighborhood = m_Neighborhood;
  line.m_DiagonalIn = diagonal;
  line.SetDifference({dx, dy, dz});
  if (diagonal == c_byLength || diagonal == 2 || diagonal == 5) line.OrderByLength();
  line.BuildProjections("invalid case, for m_DiagonalIn only 0 till 7 valid");
  line.ComputeMoves();
  *this = std::move(line);
}

void CBresenhamVisitor3D::SetDifference(CTriple<int64> d) noexcept {
  m_Signs = {Sign(d.x), Sign(d.y), Sign(d.z)};
  m_Lengths = CTriple<int64>(TruncatedLength(d.x), TruncatedLength(d.y), TruncatedLength(d.z));
  m_Convert = {1, 2, 3};
}

void CBresenhamVisitor3D::SetOrder(CTriple<int64> order) noexcept {
  m_Lengths = CTriple<int64>(Component(m_Lengths, order.x), Component(m_Lengths, order.y),
                             Component(m_Lengths, order.z));
  m_Convert = order;
}

void CBresenhamVisitor3D::OrderByLength() {
  CTriple<int64> const lengths = m_Lengths;
  auto const [lx, ly, lz] = lengths;
  CTriple<int64> const order =
      c_orderByLength[static_cast<std::size_t>(4 * (lx >= ly) + 2 * (lz <= lx) + (ly >= lz))];
  if (order == c_noOrder)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Init"), "invalid order");
  SetOrder(order);
}

void CBresenhamVisitor3D::ChooseMask(std::size_t octant) {
  if (octant > 7)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Init"), "invalid blocknr");
  StOctant choice{0, {1, 2, 3}}; // of the neighborhood of 6
  if (m_Neighborhood == NEIGHBORHOOD_26) choice.mask = c_byLength;
  if (m_Neighborhood == NEIGHBORHOOD_14_1) choice = c_octants14_1[octant];
  if (m_Neighborhood == NEIGHBORHOOD_14_2) choice = c_octants14_2[octant];
  m_DiagonalIn = choice.mask;
  SetOrder(choice.order);
}

void CBresenhamVisitor3D::BuildProjections(char const* messageWithoutSet) {
  auto const mask = static_cast<std::size_t>(m_DiagonalIn); // a negative one becomes huge
  if (mask >= c_projectionSets.size())
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::Init"), messageWithoutSet);
  StProjectionSet const& set = c_projectionSets[mask];
  CTriple<int64> const lengths = m_Lengths;
  auto const [a0, a1, a2] = lengths;
  m_Lists->projections[0] = CBresenhamVisitor2D::Projection(a0, a1, set.plane12);
  m_Lists->projections[1] = CBresenhamVisitor2D::Projection(a0, a2, set.plane13);
  if (set.hasPlane23)
    m_Lists->projections[2] = CBresenhamVisitor2D::Projection(a1, a2, set.plane23);
}

void CBresenhamVisitor3D::ComputeMoves() {
  auto const count = MoveCount(m_DiagonalIn, m_Lengths);
  if (!count)
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves"),
          "invalid box case");
  if (!IsAxis(m_Convert.x))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves"), c_wrongConvert);
  std::vector<CTriple<int64>> moves;
  moves.reserve(static_cast<std::size_t>(*count));
  OctantMoves octantMoves;
  for (unsigned code = 0; code < octantMoves.size(); ++code)
    octantMoves[code] = ConvertFrom({code & 1, code >> 1 & 1, code >> 2});
  if (m_DiagonalIn == c_byLength) {
    FillFromDrivingAxis(moves, *count);
  } else {
    MergeProjections(m_DiagonalIn, m_Lengths, m_Lists->projections, octantMoves, moves);
  }
  m_Lists->moves = std::move(moves);
}

// Both projections share the driving axis, so step i of each belongs together.
void CBresenhamVisitor3D::FillFromDrivingAxis(std::vector<CTriple<int64>>& moves,
                                              int64 count) const {
  StStepPattern second = m_Lists->projections[0].Seconds(),
                third = m_Lists->projections[1].Seconds();
  std::array<CTriple<int64>, 4> const real = {ConvertFrom({1, 0, 0}), ConvertFrom({1, 1, 0}),
                                              ConvertFrom({1, 0, 1}), ConvertFrom({1, 1, 1})};
  moves.resize(static_cast<std::size_t>(count));
  for (CTriple<int64>& move : moves)
    move = real[std::size_t{second.Advance()} + 2 * std::size_t{third.Advance()}];
}

CTriple<int64> CBresenhamVisitor3D::ConvertFrom(CTriple<int64> m) const {
  if (!IsAxis(m_Convert.x))
    Raise(ORVA_LOCATION(c_module, "ORVA::Impl::CBresenhamVisitor3D::ConvertFrom"), c_wrongConvert);
  CTriple<int64> real;
  SetComponent(real, m_Convert.x, WithSign(m.x, Component(m_Signs, m_Convert.x)));
  SetComponent(real, m_Convert.y, WithSign(m.y, Component(m_Signs, m_Convert.y)));
  SetComponent(real, m_Convert.z, WithSign(m.z, Component(m_Signs, m_Convert.z)));
  return real;
}

void CBresenhamVisitor3D::PrintMoves() const {
  std::printf("Moves:\n");
  for (CTriple<int64> const& move : m_Lists->moves) PrintMove(move);
}

void CBresenhamVisitor3D::PrintProjMoves() const {
  constexpr std::array<char const*, 3> headers = {
      "Moves in XY-plane:", "Moves in XZ-plane:", "Moves in YZ-plane:"};
  for (std::size_t plane = 0; plane < headers.size(); ++plane) {
    std::printf("%s\n", headers[plane]);
    m_Lists->projections[plane].PrintSteps();
  }
}

} // namespace ORVA::Impl
