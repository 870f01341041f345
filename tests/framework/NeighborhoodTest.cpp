#include <SeluBase/EdgeTreatment.h>
#include <SeluBase/Neighborhood.h>

#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

using N8 = CNeighborhood2dDiffN8;
using N26 = CNeighborhood3dDiffN26;

} // namespace

TEST(Neighborhood, CodesHaveTheirNumbers) {
  std::vector<std::pair<int64, int64>> const codes = {
      {NEIGHBORHOOD_4, 0},  {NEIGHBORHOOD_6_1, 3},   {NEIGHBORHOOD_6_2, 6},   {NEIGHBORHOOD_8, 9},
      {NEIGHBORHOOD_6, 12}, {NEIGHBORHOOD_14_1, 15}, {NEIGHBORHOOD_14_2, 18}, {NEIGHBORHOOD_26, 21},
  };
  for (auto const& [code, number] : codes) EXPECT_EQ(code, number);
}

TEST(Neighborhood, PlaneOffsetsInRasterOrder) {
  std::array<int64, 8> const dx = {-1, 0, 1, -1, 1, -1, 0, 1};
  std::array<int64, 8> const dy = {-1, -1, -1, 0, 0, 1, 1, 1};
  EXPECT_EQ(N8::dx, dx);
  EXPECT_EQ(N8::dy, dy);
}

TEST(Neighborhood, SpaceOffsetsInRasterOrder) {
  std::size_t k = 0;
  for (int64 z = -1; z <= 1; ++z)
    for (int64 y = -1; y <= 1; ++y)
      for (int64 x = -1; x <= 1; ++x) {
        if (x == 0 && y == 0 && z == 0) continue;
        EXPECT_EQ(N26::dx[k], x) << k;
        EXPECT_EQ(N26::dy[k], y) << k;
        EXPECT_EQ(N26::dz[k], z) << k;
        ++k;
      }
  EXPECT_EQ(k, N26::dx.size());
  EXPECT_EQ(N26::dy.size(), 26u);
  EXPECT_EQ(N26::dz.size(), 26u);
}

TEST(Neighborhood, OppositeOffsetsMirrorTheList) {
  for (std::size_t k = 0; k < 8; ++k) {
    EXPECT_EQ(N8::dx[k], -N8::dx[7 - k]);
    EXPECT_EQ(N8::dy[k], -N8::dy[7 - k]);
  }
  for (std::size_t k = 0; k < 26; ++k) {
    EXPECT_EQ(N26::dx[k], -N26::dx[25 - k]);
    EXPECT_EQ(N26::dy[k], -N26::dy[25 - k]);
    EXPECT_EQ(N26::dz[k], -N26::dz[25 - k]);
  }
}

TEST(Neighborhood, OffsetsAreConstantExpressions) {
  static_assert(N8::dx[0] == -1 && N8::dy[7] == 1);
  static_assert(N26::dx[0] == -1 && N26::dy[0] == -1 && N26::dz[25] == 1);
}

TEST(EdgeTreatment, HasItsNumbers) {
  EXPECT_EQ(EEdgeTreatment::NoEdgeTreatment, 0);
  EXPECT_EQ(EEdgeTreatment::MinusSampling, 1);
  EXPECT_EQ(EEdgeTreatment::Mirroring, 2);
  EXPECT_EQ(EEdgeTreatment::Periodic, 3);
  EXPECT_EQ(EEdgeTreatment::PlusSampling, 4);
}
