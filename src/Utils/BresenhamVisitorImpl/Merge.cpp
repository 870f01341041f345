#include "Utils/BresenhamVisitorImpl/Merge.h"

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/Exception.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ORVA::Impl {

namespace {

// A move, or a set of axes: a sum of these.
constexpr unsigned c_first = 1, c_second = 2, c_third = 4;

template <int mask>
constexpr int64 Count(int64 a0, int64 a1, int64 a2) {
  if constexpr (mask == 0) return a0 + a1 + a2;
  if constexpr (mask == 1) return std::max(a0, a1) + a2;
  if constexpr (mask == 3) return std::max(a1, a0 + a2);
  if constexpr (mask == 4) return a2 - std::min({a0, a1, a2}) + std::max(a0, a1);
  if constexpr (mask == 6) return a0 > a1 && a2 > a1 ? a0 + a2 - a1 : std::max({a0, a1, a2});
  if constexpr (mask == 2 || mask == 5) return a0 + a1 + a2 - 2 * std::min({a0, a1, a2});
  if constexpr (mask == 7) return a0;
}

// The permitted moves in the order in which equally good ones are taken.
template <int mask>
constexpr auto PermittedMoves() {
  constexpr unsigned xyz = c_first | c_second | c_third;
  constexpr unsigned yz = c_second | c_third, xy = c_first | c_second;
  if constexpr (mask == 0) return std::array{c_third, c_second, c_first};
  if constexpr (mask == 1) return std::array{xy, c_third, c_second, c_first};
  if constexpr (mask == 3) return std::array{yz, xy, c_third, c_second, c_first};
  if constexpr (mask == 6) return std::array{xyz, yz, xy, c_third, c_second, c_first};
  if constexpr (mask == 4) return std::array{xyz, xy, c_third, c_second, c_first};
  if constexpr (mask == 2 || mask == 5) return std::array{xyz, c_third, c_second, c_first};
}

// One plane's 2D line, followed along with the growing 3D line. The deviation says how far the
// projected point lies from it: along the minor axis for an 8-connected line, and for a 4-connected
// one along the plane's first axis from the line's point after as many steps.
class CPlane {
public:
  CPlane(CBresenhamVisitor2D const& line, unsigned first, unsigned second)
      : m_Seconds(line.Seconds()), m_Left(line.LastStep()),
        m_IsDiagonal(line.Neighborhood() == NEIGHBORHOOD_8), m_FirstDrives(line.IsXMajor()),
        m_First(first), m_Second(second) {
    LookAhead();
  }

  [[nodiscard]] int64 Deviation(unsigned move) const { return m_After[Index(move)].deviation; }

  void Advance(unsigned move) {
    StAfter const after = m_After[Index(move)];
    if (after.steps == 0 && after.deviation == m_Deviation) return;
    m_Deviation = after.deviation;
    if (after.steps > m_Left)
      Raise(ORVA_LOCATION("src/Utils/BresenhamVisitorImpl",
                          "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves"),
            "invalid situation in add case special");
    for (int64 i = 0; i < after.steps; ++i) m_Seconds.Advance();
    m_Left -= after.steps;
    LookAhead();
  }

private:
  struct StAfter {
    int64 deviation;
    int64 steps; // of the 2D line
  };

  [[nodiscard]] std::size_t Index(unsigned move) const {
    return std::size_t{(move & m_First) != 0} + 2 * std::size_t{(move & m_Second) != 0};
  }

  // What the four ways to step in this plane would lead to.
  void LookAhead() {
    m_After[0] = {m_Deviation, 0};
    bool const side = IsSideStep(0);
    if (m_IsDiagonal) {
      std::size_t const driving = m_FirstDrives ? 1 : 2;
      m_After[driving] = {m_Deviation - side, 1};
      m_After[3 - driving] = {m_Deviation + 1, 0};
      m_After[3] = {m_Deviation + 1 - side, 1};
    } else {
      int64 const next = side != m_FirstDrives; // 1 where the line steps along the first axis
      int64 const afterNext = IsSideStep(1) != m_FirstDrives;
      m_After[1] = {m_Deviation + 1 - next, 1};
      m_After[2] = {m_Deviation - next, 1};
      m_After[3] = {m_Deviation + 1 - next - afterNext, 2};
    }
  }

  [[nodiscard]] bool IsSideStep(int64 ahead) const {
    return ahead < m_Left && m_Seconds.IsStep(ahead);
  }

  StStepPattern m_Seconds; // of the moves still ahead
  int64 m_Left;
  bool m_IsDiagonal, m_FirstDrives;
  unsigned m_First, m_Second;
  int64 m_Deviation = 0;
  std::array<StAfter, 4> m_After{};
};

using Planes = std::array<CPlane, 3>;

int64 Distance(Planes const& planes, unsigned move) {
  int64 sum = 0;
  for (CPlane const& plane : planes) sum += std::abs(plane.Deviation(move));
  return sum;
}

CTriple<int64> After(CTriple<int64> const& remaining, unsigned move) {
  return {remaining.x - ((move & c_first) != 0), remaining.y - ((move & c_second) != 0),
          remaining.z - ((move & c_third) != 0)};
}

// The best move that leaves lengths which `count` further moves can cover; 0 where there is none.
template <int mask>
unsigned BestMove(Planes const& planes, CTriple<int64> const& remaining, int64 count) {
  unsigned best = 0;
  int64 least = std::numeric_limits<int64>::max();
  for (unsigned const move : PermittedMoves<mask>()) {
    CTriple<int64> const rest = After(remaining, move);
    if (rest.x < 0 || rest.y < 0 || rest.z < 0) continue;
    if (Count<mask>(rest.x, rest.y, rest.z) != count) continue;
    int64 const distance = Distance(planes, move);
    if (distance < least) {
      least = distance;
      best = move;
    }
  }
  return best;
}

template <int mask>
void Merge(CTriple<int64> remaining, Planes planes, OctantMoves const& realMoves,
           std::vector<CTriple<int64>>& moves) {
  for (int64 count = Count<mask>(remaining.x, remaining.y, remaining.z); count > 0; --count) {
    unsigned const move = BestMove<mask>(planes, remaining, count - 1);
    if (move == 0)
      Raise(ORVA_LOCATION("src/Utils/BresenhamVisitorImpl",
                          "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves"),
            "no valid situation");
    for (CPlane& plane : planes) plane.Advance(move);
    remaining = After(remaining, move);
    moves.push_back(realMoves[move]);
  }
}

} // namespace

std::optional<int64> MoveCount(int64 mask, CTriple<int64> lengths) {
  auto const [a0, a1, a2] = lengths;
  switch (mask) {
  case 0:
    return Count<0>(a0, a1, a2);
  case 1:
    return Count<1>(a0, a1, a2);
  case 2:
    return Count<2>(a0, a1, a2);
  case 3:
    return Count<3>(a0, a1, a2);
  case 4:
    return Count<4>(a0, a1, a2);
  case 5:
    return Count<5>(a0, a1, a2);
  case 6:
    return Count<6>(a0, a1, a2);
  case 7:
    return Count<7>(a0, a1, a2);
  default:
    return std::nullopt;
  }
}

void MergeProjections(int64 mask, CTriple<int64> lengths,
                      std::array<CBresenhamVisitor2D, 3> const& projections,
                      OctantMoves const& realMoves, std::vector<CTriple<int64>>& moves) {
  Planes const planes = {CPlane(projections[0], c_first, c_second),
                         CPlane(projections[1], c_first, c_third),
                         CPlane(projections[2], c_second, c_third)};
  switch (mask) {
  case 0:
    return Merge<0>(lengths, planes, realMoves, moves);
  case 1:
    return Merge<1>(lengths, planes, realMoves, moves);
  case 3:
    return Merge<3>(lengths, planes, realMoves, moves);
  case 4:
    return Merge<4>(lengths, planes, realMoves, moves);
  case 6:
    return Merge<6>(lengths, planes, realMoves, moves);
  case 2:
  case 5:
    return Merge<2>(lengths, planes, realMoves, moves); // both have the same moves
  default:
    Raise(ORVA_LOCATION("src/Utils/BresenhamVisitorImpl",
                        "ORVA::Impl::CBresenhamVisitor3D::ComputeMoves"),
          "invalid situation");
  }
}

} // namespace ORVA::Impl
