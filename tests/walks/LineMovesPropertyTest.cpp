// What every digital line must hold, against a search over all walks that knows only the rules:
// the end point, the least number of permitted moves, and projections that are 2D lines.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitorImpl.h>

#include "support/Printers.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

using namespace ORVA;
using Impl::CBresenhamVisitor2D;
using Impl::CBresenhamVisitor3D;
using Triple = CTriple<int64>;

namespace {

Triple const c_x(1, 0, 0), c_y(0, 1, 0), c_z(0, 0, 1);
Triple const c_xy(1, 1, 0), c_xz(1, 0, 1), c_yz(0, 1, 1), c_xyz(1, 1, 1);

// The moves of each mask, in internal axes.
std::array<std::vector<Triple>, 8> const c_maskMoves = {{{c_x, c_y, c_z},
                                                         {c_x, c_y, c_z, c_xy},
                                                         {c_x, c_y, c_z, c_xyz},
                                                         {c_x, c_y, c_z, c_yz, c_xy},
                                                         {c_x, c_y, c_z, c_xyz, c_xy},
                                                         {c_x, c_y, c_z, c_xyz},
                                                         {c_x, c_y, c_z, c_xyz, c_yz, c_xy},
                                                         {c_x, c_y, c_z, c_xy, c_xz, c_yz, c_xyz}}};

// Which planes (1, 2), (1, 3), (2, 3) are 8-connected; mask 7 looks at two planes only.
constexpr bool c_diagonalPlanes[8][3] = {
    {false, false, false}, {true, false, false},  {false, false, false}, {true, false, true},
    {true, false, false},  {false, false, false}, {true, false, true},   {true, true, false}};

std::vector<Triple> MovesOfCode(int64 code) {
  std::vector<Triple> moves;
  for (std::size_t k = 0; k < 26; ++k) {
    Triple const m(CNeighborhood3dDiffN26::dx[k], CNeighborhood3dDiffN26::dy[k],
                   CNeighborhood3dDiffN26::dz[k]);
    bool const isAxis = std::abs(m.x) + std::abs(m.y) + std::abs(m.z) == 1;
    bool const hasBothSigns = std::min({m.x, m.y, m.z}) < 0 && std::max({m.x, m.y, m.z}) > 0;
    bool const in14_2 = m.y * m.z > 0 ? m.x == m.y : m.x == 0 || (m.y + m.z) == m.x;
    if (isAxis || code == NEIGHBORHOOD_26 || (code == NEIGHBORHOOD_14_1 && !hasBothSigns) ||
        (code == NEIGHBORHOOD_14_2 && in14_2))
      moves.push_back(m);
  }
  return moves;
}

// The points of a 2D line from the sides on which its pixels' midpoints lie.
class CIdealPlane {
public:
  CIdealPlane(int64 a, int64 b, bool diagonal)
      : m_On(static_cast<std::size_t>((a + 1) * (b + 1))), m_Width(a + 1) {
    int64 i = 0, j = 0;
    Set(i, j);
    while (i < a || j < b) {
      if (diagonal) {
        // The nearest pixel of the next column (or row); half-way between two, the farther one.
        if (a >= b) {
          ++i;
          j = (2 * b * i + a) / (2 * a);
        } else {
          ++j;
          i = (2 * a * j + b) / (2 * b);
        }
      } else {
        // Which pixel edge the line crosses next; through a corner, the minor axis goes first.
        int64 const sideX = b * (2 * i + 1), sideY = a * (2 * j + 1);
        bool const stepsY = a >= b ? sideX >= sideY : sideX > sideY;
        ++(stepsY ? j : i);
      }
      Set(i, j);
    }
  }
  [[nodiscard]] bool Has(int64 i, int64 j) const {
    return m_On[static_cast<std::size_t>(i + m_Width * j)];
  }

private:
  void Set(int64 i, int64 j) { m_On[static_cast<std::size_t>(i + m_Width * j)] = true; }
  std::vector<bool> m_On;
  int64 m_Width;
};

// The three planes of a 3D line; mask 7 has the first two.
class CIdealPlanes {
public:
  CIdealPlanes(int64 mask, Triple const& a)
      : m_Planes{CIdealPlane(a.x, a.y, c_diagonalPlanes[mask][0]),
                 CIdealPlane(a.x, a.z, c_diagonalPlanes[mask][1]),
                 CIdealPlane(a.y, a.z, c_diagonalPlanes[mask][2])},
        m_HasThird(mask != 7) {}
  [[nodiscard]] int64 PointsOff(Triple const& p) const {
    return !m_Planes[0].Has(p.x, p.y) + !m_Planes[1].Has(p.x, p.z) +
           (m_HasThird && !m_Planes[2].Has(p.y, p.z));
  }

private:
  std::array<CIdealPlane, 3> m_Planes;
  bool m_HasThird;
};

struct StCost {
  int64 moves = std::numeric_limits<int64>::max() / 2;
  int64 off = 0; // projected points off their lines
  friend auto operator<=>(StCost const&, StCost const&) = default;
};

// The best of all walks from the origin to a: fewest moves, then fewest points off. Every part of a
// shortest walk is a shortest one, so the best walk to a point extends the best to one before it.
StCost BestWalk(std::vector<Triple> const& moves, Triple const& a, CIdealPlanes const* planes) {
  std::vector<StCost> best(static_cast<std::size_t>((a.x + 1) * (a.y + 1) * (a.z + 1)));
  auto const index = [&](Triple const& p) {
    return static_cast<std::size_t>(p.x + (a.x + 1) * (p.y + (a.y + 1) * p.z));
  };
  best[0] = {0, 0};
  for (Triple p; p.z <= a.z; ++p.z)
    for (p.y = 0; p.y <= a.y; ++p.y)
      for (p.x = 0; p.x <= a.x; ++p.x) {
        int64 const off = planes != nullptr ? planes->PointsOff(p) : 0;
        for (Triple const& move : moves) {
          Triple const before = p - move;
          if (before.x < 0 || before.y < 0 || before.z < 0) continue;
          StCost const& reached = best[index(before)];
          best[index(p)] = std::min(best[index(p)], {reached.moves + 1, reached.off + off});
        }
      }
  return best.back();
}

Triple Absolute(Triple const& a) { return {std::abs(a.x), std::abs(a.y), std::abs(a.z)}; }

// How far a point lies from the segment to a, in the maximum norm, at its nearest fraction of it.
double DistanceToSegment(Triple const& p, Triple const& a) {
  auto const distance = [&](double t) {
    return std::max({std::abs(static_cast<double>(p.x) - t * static_cast<double>(a.x)),
                     std::abs(static_cast<double>(p.y) - t * static_cast<double>(a.y)),
                     std::abs(static_cast<double>(p.z) - t * static_cast<double>(a.z))});
  };
  double low = 0, high = 1; // convex in t
  for (int k = 0; k < 60; ++k) {
    double const third = (high - low) / 3;
    if (distance(low + third) < distance(high - third)) {
      high -= third;
    } else {
      low += third;
    }
  }
  return distance(low);
}

template <class Visit>
void ForAllTriples(int64 low, int64 high, Visit visit) {
  for (int64 z = low; z <= high; ++z)
    for (int64 y = low; y <= high; ++y)
      for (int64 x = low; x <= high; ++x) visit(Triple(x, y, z));
}

} // namespace

TEST(LineProperty, EveryMaskGivesAShortestWalkNearestToItsPlaneLines) {
  // Points off beyond the fewest possible that the merge may leave.
  constexpr std::array<int64, 8> allowance = {0, 0, 0, 2, 1, 0, 0, 0};
  for (int64 mask = 0; mask < 8; ++mask)
    ForAllTriples(0, 8, [&](Triple const& a) {
      CBresenhamVisitor3D const line(a, 0, mask);
      SCOPED_TRACE(testing::Message()
                   << "mask " << mask << ", lengths " << testing::PrintToString(a));
      Triple const order = line.AxisOrder();
      std::array<int64, 4> const byAxis = {0, a.x, a.y, a.z};
      auto const at = [&](int64 axis) { return byAxis[static_cast<std::size_t>(axis)]; };
      Triple const internal(at(order.x), at(order.y), at(order.z));
      auto const& moves = c_maskMoves[static_cast<std::size_t>(mask)];
      CIdealPlanes const planes(mask, internal);
      StCost walked{0, 0};
      Triple p;
      for (int64 i = 0; i < line.LastStep(); ++i) {
        Triple const real = line.Step(i);
        std::array<int64, 4> const component = {0, real.x, real.y, real.z};
        auto const part = [&](int64 axis) { return component[static_cast<std::size_t>(axis)]; };
        Triple const move(part(order.x), part(order.y), part(order.z));
        ASSERT_NE(std::ranges::find(moves, move), moves.end()) << i;
        p += move;
        ++walked.moves;
        walked.off += planes.PointsOff(p);
      }
      ASSERT_EQ(p, internal);
      StCost const best = BestWalk(moves, internal, &planes);
      ASSERT_EQ(walked.moves, best.moves);
      ASSERT_EQ(walked.off == 0, best.off == 0) << walked.off << " for " << best.off;
      ASSERT_LE(walked.off, best.off + allowance[static_cast<std::size_t>(mask)]);
    });
}

TEST(LineProperty, EveryCodeTakesTheFewestMovesOfItsNeighborhood) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26}) {
    auto const allowed = MovesOfCode(code);
    ForAllTriples(-6, 6, [&](Triple const& d) {
      SCOPED_TRACE(testing::Message() << "code " << code << ", " << testing::PrintToString(d));
      Triple const signs(Impl::Sign(d.x), Impl::Sign(d.y), Impl::Sign(d.z));
      std::vector<Triple> forward;
      for (Triple const& move : allowed) {
        Triple const turned = move * signs;
        if (turned.x >= 0 && turned.y >= 0 && turned.z >= 0) forward.push_back(turned);
      }
      CBresenhamVisitor3D const line(d, code);
      Triple end;
      for (Triple const& move : line.Moves()) {
        ASSERT_NE(std::ranges::find(allowed, move), allowed.end()) << testing::PrintToString(move);
        end += move;
      }
      ASSERT_EQ(end, d);
      ASSERT_EQ(line.LastStep(), BestWalk(forward, Absolute(d), nullptr).moves);
    });
  }
}

TEST(LineProperty, ACodeWalksTheLineOfItsMaskMirroredIntoItsOctant) {
  for (int64 const code : {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26})
    ForAllTriples(-6, 6, [&](Triple const& d) {
      SCOPED_TRACE(testing::Message() << "code " << code << ", " << testing::PrintToString(d));
      CBresenhamVisitor3D const line(d, code);
      auto const lengths = Absolute(d);
      std::array<int64, 4> const byAxis = {0, lengths.x, lengths.y, lengths.z};
      Triple const order = line.AxisOrder();
      auto const at = [&](int64 axis) { return byAxis[static_cast<std::size_t>(axis)]; };
      CBresenhamVisitor3D const positive(Triple(at(order.x), at(order.y), at(order.z)), 0,
                                         line.DiagonalMask());
      ASSERT_EQ(line.LastStep(), positive.LastStep());
      for (int64 i = 0; i < line.LastStep(); ++i)
        ASSERT_EQ(line.Step(i), line.ConvertFrom(positive.Step(i))) << i;
    });
}

TEST(LineProperty, PlaneLinesAreTheIdealOnesInEveryQuadrant) {
  for (int64 const code : {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8})
    for (int64 dy = -20; dy <= 20; ++dy)
      for (int64 dx = -20; dx <= 20; ++dx) {
        SCOPED_TRACE(testing::Message() << "code " << code << ", (" << dx << ", " << dy << ")");
        CBresenhamVisitor2D const line(dx, dy, code);
        int64 const signX = Impl::Sign(dx), signY = Impl::Sign(dy);
        bool const diagonal = code == NEIGHBORHOOD_8 ||
                              (code == NEIGHBORHOOD_6_1 && signX == signY) ||
                              (code == NEIGHBORHOOD_6_2 && signX != signY);
        CIdealPlane const ideal(std::abs(dx), std::abs(dy), diagonal);
        int64 i = 0, j = 0;
        for (int64 k = 0; k < line.LastStep(); ++k) {
          i += line.Step(k).x * signX;
          j += line.Step(k).y * signY;
          ASSERT_TRUE(ideal.Has(i, j)) << k;
        }
        ASSERT_EQ(Triple(i * signX, j * signY, 0), Triple(dx, dy, 0));
        ASSERT_EQ(line.LastStep(),
                  diagonal ? std::max(std::abs(dx), std::abs(dy)) : std::abs(dx) + std::abs(dy));
      }
}

TEST(LineProperty, LongLinesReachTheirEndAndStayNearTheSegment) {
  // Chebyshev distance from the ideal segment that a voxel may have, by mask.
  constexpr std::array<double, 8> bound = {1, 1, 1.5, 1, 1.5, 1.5, 1, 1};
  test::CRandomNumbers random;
  for (int round = 0; round < 200; ++round) {
    Triple const a(random.Between(0, 300), random.Between(0, 300), random.Between(0, 300));
    for (int64 mask = 0; mask < 8; ++mask) {
      SCOPED_TRACE(testing::Message()
                   << "mask " << mask << ", lengths " << testing::PrintToString(a));
      CBresenhamVisitor3D const line(a, 0, mask);
      Triple p;
      double farthest = 0;
      for (Triple const& move : line.Moves()) {
        p += move;
        farthest = std::max(farthest, DistanceToSegment(p, a));
      }
      ASSERT_EQ(p, a);
      ASSERT_LE(farthest, bound[static_cast<std::size_t>(mask)] + 1e-9);
    }
  }
}
