#include <SeluUtils/Metric.h>

#include "support/AllocationLimit.h"
#include "support/Errors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace ORVA;
using test::ExpectError;

namespace {

using Point = std::vector<double>;
using Table = std::vector<std::vector<int64>>;
using Edge = EEdgeTreatment;

char const c_source[] = "src/Utils/Metric";
char const c_distance[] = "ORVA::CMetric::SquaredEuclideanDistance";
char const c_table[] = "ORVA::CMetric::CalculateNeighbourTable";
char const c_edgeMessage[] =
    "Only edge treatments usable are NoEdgeTreatment, Periodic and PlusSampling!";

constexpr double c_infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(Distance, IsTheSumOfSquaresWithOrWithoutAWrap) {
  struct StCase {
    char const* what;
    Point a, b, window;
    Edge::EnEdgeTreatmentId edge;
    double squared;
  };
  std::vector<StCase> const cases = {
      {"empty points", {}, {}, {}, Edge::NoEdgeTreatment, 0},
      {"one coordinate", {2}, {-1}, {}, Edge::NoEdgeTreatment, 9},
      {"five coordinates", {1, 2, 3, 4, 5}, {0, 0, 0, 0, 0}, {}, Edge::PlusSampling, 55},
      {"the window is not looked at", {0, 0}, {3, 4}, {1}, Edge::NoEdgeTreatment, 25},
      {"both differences wrap", {1, 1}, {9, 9}, {10, 10}, Edge::Periodic, 8},
      {"neither wraps", {1, 1}, {4, 5}, {10, 10}, Edge::Periodic, 25},
      {"half the window is the same either way", {0, 0}, {5, 0}, {10, 10}, Edge::Periodic, 25},
      {"one axis wraps", {0, 0, 0}, {9, 2, 3}, {10, 10, 10}, Edge::Periodic, 14},
      {"periods differ", {0, 0, 0}, {3, 3, 3}, {4, 5, 6}, Edge::Periodic, 1 + 4 + 9},
      {"beyond the window", {0, 0}, {13, 0}, {10, 10}, Edge::Periodic, 9},
      {"an endless window", {0, 0}, {3, 4}, {c_infinity, c_infinity}, Edge::Periodic, 25},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(CMetric::SquaredEuclideanDistance(c.a, c.b, c.window, c.edge), c.squared);
    EXPECT_EQ(CMetric::SquaredEuclideanDistance(c.b, c.a, c.window, c.edge), c.squared);
    EXPECT_EQ(CMetric::EuclideanDistance(c.a, c.b, c.window, c.edge), std::sqrt(c.squared));
  }
}

TEST(Distance, RefusesWhatItCannotMeasure) {
  struct StCase {
    Point a, b, window;
    Edge::EnEdgeTreatmentId edge;
    char const* message;
  };
  char const* const dimension =
      "EuclideanDistance Periodic boundary only implemented for dimension 2 and 3!";
  char const* const window = "EuclideanDistance Window size of wrong dimension!";
  char const* const size = "EuclideanDistance Points of different size!";
  std::vector<StCase> const cases = {
      {{1}, {1, 2}, {}, Edge::NoEdgeTreatment, size},
      {{1}, {}, {}, Edge::Mirroring, size}, // the points are looked at first
      {{1, 2}, {1, 2}, {3, 3}, Edge::MinusSampling, c_edgeMessage},
      {{1, 2}, {1, 2}, {3, 3}, Edge::Mirroring, c_edgeMessage},
      {{}, {}, {}, Edge::Periodic, dimension},
      {{1}, {1}, {1}, Edge::Periodic, dimension},
      {{1, 2, 3, 4}, {1, 2, 3, 4}, {9, 9, 9, 9}, Edge::Periodic, dimension},
      {{1, 2, 3, 4}, {1, 2, 3, 4}, {9, 9}, Edge::Periodic, dimension}, // before the window
      {{1, 2}, {1, 2}, {9, 9, 9}, Edge::Periodic, window},
      {{1, 2, 3}, {1, 2, 3}, {9, 9}, Edge::Periodic, window},
  };
  for (auto const& c : cases) {
    ExpectError([&] { (void)CMetric::SquaredEuclideanDistance(c.a, c.b, c.window, c.edge); },
                c.message, c_distance, c_source);
    ExpectError([&] { (void)CMetric::EuclideanDistance(c.a, c.b, c.window, c.edge); }, c.message,
                c_distance, c_source);
  }
}

TEST(NeighborTable, ListsNeighborsInRasterOrderThenTheCellItself) {
  Table table;
  CMetric::CalculateNeighbourTable(&table, 2, 3, Edge::NoEdgeTreatment);
  ASSERT_EQ(table.size(), 9u);
  EXPECT_EQ(table[4], (std::vector<int64>{0, 1, 2, 3, 5, 6, 7, 8, 4}));
  EXPECT_EQ(table[0], (std::vector<int64>{-1, -1, -1, -1, 1, -1, 3, 4, 0}));
  CMetric::CalculateNeighbourTable(&table, 2, 3, Edge::Periodic);
  EXPECT_EQ(table[0], (std::vector<int64>{8, 6, 7, 2, 1, 5, 3, 4, 0}));
}

TEST(NeighborTable, OfASingleCellKnowsOnlyTheCell) {
  Table table;
  CMetric::CalculateNeighbourTable(&table, 3, 1, Edge::Periodic);
  EXPECT_EQ(table, Table{std::vector<int64>(27, 0)});
  CMetric::CalculateNeighbourTable(&table, 2, 1, Edge::PlusSampling);
  EXPECT_EQ(table, (Table{{-1, -1, -1, -1, -1, -1, -1, -1, 0}}));
}

TEST(NeighborTable, OfNoCellIsEmpty) {
  Table table(5);
  CMetric::CalculateNeighbourTable(&table, 3, 0, Edge::NoEdgeTreatment);
  EXPECT_TRUE(table.empty());
}

TEST(NeighborTable, ReplacesWhatTheTableHeld) {
  Table fresh, used(40, std::vector<int64>(100, 7));
  CMetric::CalculateNeighbourTable(&fresh, 2, 4, Edge::NoEdgeTreatment);
  CMetric::CalculateNeighbourTable(&used, 2, 4, Edge::NoEdgeTreatment);
  EXPECT_EQ(used, fresh);
}

TEST(NeighborTable, HasItsSizeWhenDimensionOrEdgeTreatmentIsRefused) {
  char const* const dimensionMessage =
      " CMetric::CalculateNeighbourTable Only implemented for dimension 2 and 3";
  struct StCase {
    unsigned char dimension;
    int64 n;
    Edge::EnEdgeTreatmentId edge;
    char const* message;
    std::size_t entries;
  };
  std::vector<StCase> const cases = {
      {0, 3, Edge::NoEdgeTreatment, dimensionMessage, 1},
      {0, 0, Edge::NoEdgeTreatment, dimensionMessage, 1},
      {1, 3, Edge::Periodic, dimensionMessage, 3},
      {4, 3, Edge::Mirroring, dimensionMessage, 81}, // before the edge treatment
      {255, 1, Edge::NoEdgeTreatment, dimensionMessage, 1},
      {2, 3, Edge::MinusSampling, c_edgeMessage, 9},
      {3, 3, Edge::Mirroring, c_edgeMessage, 27},
  };
  for (auto const& c : cases) {
    Table table(2, {5});
    ExpectError([&] { CMetric::CalculateNeighbourTable(&table, c.dimension, c.n, c.edge); },
                c.message, c_table, c_source);
    EXPECT_EQ(table.size(), c.entries);
  }
}

TEST(NeighborTable, LeavesTheTableWhereTheGridIsImpossible) {
  constexpr int64 most = std::numeric_limits<int64>::max();
  struct StCase {
    int dimension;
    int64 n;
    char const* message;
  };
  std::vector<StCase> const cases = {
      {2, -1, "side -1 of the grid is negative"},
      {3, -most - 1, "side -9223372036854775808 of the grid is negative"},
      {2, most,
       "no memory for the neighbour table of a grid of side 9223372036854775807 and "
       "dimension 2"},
      {3, 2000000, "no memory for the neighbour table of a grid of side 2000000 and dimension 3"},
      {255, 10, "no memory for the neighbour table of a grid of side 10 and dimension 255"},
      {2, 1000000, "no memory for the neighbour table of a grid of side 1000000 and dimension 2"},
  };
  // A system that promises any memory would only find out while the table is filled.
  test::CAllocationLimit const limit(std::size_t{1} << 24);
  for (auto const& c : cases) {
    Table table(2, {5});
    ExpectError<CExBadParam>(
        [&] {
          CMetric::CalculateNeighbourTable(&table, static_cast<unsigned char>(c.dimension), c.n,
                                           Edge::NoEdgeTreatment);
        },
        c.message, c_table, c_source);
    EXPECT_EQ(table, Table(2, {5}));
  }
  ExpectError<CExBadParam>(
      [] { CMetric::CalculateNeighbourTable(nullptr, 2, 3, Edge::NoEdgeTreatment); },
      "neighbour table is null", c_table, c_source);
}

TEST(Statistics, AreTwoZerosAtFirst) {
  CStatistics const none;
  EXPECT_EQ(none.first, 0);
  EXPECT_EQ(none.second, 0);
  CStatistics const pair(2, 3);
  EXPECT_EQ(pair.first, 2);
  EXPECT_EQ(pair.second, 3);
}

TEST(Statistics, AreEqualWithinTheMachineEpsilonOfEach) {
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  struct StCase {
    CStatistics a, b;
    bool equal;
  };
  std::vector<StCase> const cases = {
      {{0, 0}, {1e-17, 0}, true},
      {{0, 0}, {1e-15, 0}, false},
      {{0, 0}, {0, 1e-17}, true},
      {{0, 0}, {0, -1e-15}, false},
      {{0, 1}, {epsilon, 1 + epsilon}, true}, // the tolerance itself still counts as equal
      {{0, 0}, {2 * epsilon, 0}, false},
      {{1e10, 0}, {std::nextafter(1e10, 2e10), 0}, false}, // not a relative tolerance
      {{1, 2}, {2, 1}, false},
      {{nan, 0}, {nan, 0}, false},
      {{c_infinity, 0}, {c_infinity, 0}, false},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(testing::Message() << '(' << c.a.first << ", " << c.a.second << ") and ("
                                    << c.b.first << ", " << c.b.second << ')');
    EXPECT_EQ(c.a == c.b, c.equal);
    EXPECT_EQ(c.b == c.a, c.equal);
    EXPECT_EQ(c.a != c.b, !c.equal);
  }
}
