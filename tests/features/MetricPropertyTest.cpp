// Distances against the 27 images of a point, neighbor tables against a look at every cell.

#include <SeluUtils/Metric.h>

#include "support/Random.h"

#include <SeluBase/Neighborhood.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

using namespace ORVA;

namespace {

using Point = std::vector<double>;

// The nearest of b's images in the window and the ones around it.
double NearestImage(Point const& a, Point const& b, Point const& window) {
  double nearest = std::numeric_limits<double>::infinity();
  int const images = a.size() == 2 ? 9 : 27;
  for (int image = 0; image < images; ++image) {
    std::array<int, 3> const shift = {image % 3 - 1, image / 3 % 3 - 1, image / 9 - 1};
    double squared = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
      double const difference = a[i] - (b[i] + shift[i] * window[i]);
      squared += difference * difference;
    }
    nearest = std::min(nearest, squared);
  }
  return nearest;
}

struct StGrid {
  int64 n;
  int dimension;
  bool wrap;

  [[nodiscard]] int64 Planes() const { return dimension == 3 ? n : 1; }

  // The cell at a position, sought among all cells.
  [[nodiscard]] int64 Find(std::array<int64, 3> position) const {
    int64 cell = 0;
    for (int64 z = 0; z < Planes(); ++z)
      for (int64 y = 0; y < n; ++y)
        for (int64 x = 0; x < n; ++x, ++cell) {
          std::array<int64, 3> const here = {x, y, z};
          bool same = true;
          for (std::size_t axis = 0; axis < 3; ++axis) {
            int64 const apart = position[axis] - here[axis];
            same = same && (apart == 0 || (wrap && (apart == n || apart == -n)));
          }
          if (same) return cell;
        }
    return -1;
  }

  [[nodiscard]] std::vector<int64> Entry(std::array<int64, 3> cell) const {
    std::vector<int64> entry;
    if (dimension == 2) {
      for (std::size_t k = 0; k < 8; ++k)
        entry.push_back(Find({cell[0] + CNeighborhood2dDiffN8::dx[k],
                              cell[1] + CNeighborhood2dDiffN8::dy[k], cell[2]}));
    } else {
      for (std::size_t k = 0; k < 26; ++k)
        entry.push_back(
            Find({cell[0] + CNeighborhood3dDiffN26::dx[k], cell[1] + CNeighborhood3dDiffN26::dy[k],
                  cell[2] + CNeighborhood3dDiffN26::dz[k]}));
    }
    entry.push_back(Find(cell));
    return entry;
  }
};

} // namespace

TEST(DistanceProperty, PeriodicIsTheNearestOfTheImages) {
  test::CRandomNumbers random;
  for (int round = 0; round < 2000; ++round) {
    auto const dimension = random.Between<std::size_t>(2, 3);
    Point a, b, window;
    for (std::size_t i = 0; i < dimension; ++i) {
      window.push_back(random.Real(0.1, 100));
      a.push_back(random.Real(0, window.back()));
      b.push_back(random.Real(0, window.back()));
    }
    double const nearest = NearestImage(a, b, window);
    // The two round in another order: relative to the window, not to a distance that may vanish.
    double const scale = window[0] * window[0] + window[1] * window[1] + 1e4;
    EXPECT_NEAR(CMetric::SquaredEuclideanDistance(a, b, window, EEdgeTreatment::Periodic), nearest,
                1e-14 * scale);
  }
}

TEST(NeighborTableProperty, IsWhatALookAtEveryCellFinds) {
  for (int const dimension : {2, 3})
    for (int64 n = 1; n <= 6; ++n)
      for (auto const edge : {EEdgeTreatment::NoEdgeTreatment, EEdgeTreatment::PlusSampling,
                              EEdgeTreatment::Periodic}) {
        SCOPED_TRACE(testing::Message() << dimension << "D, n = " << n << ", edge " << edge);
        StGrid const grid{n, dimension, edge == EEdgeTreatment::Periodic};
        std::vector<std::vector<int64>> table;
        CMetric::CalculateNeighbourTable(&table, static_cast<unsigned char>(dimension), n, edge);
        ASSERT_EQ(table.size(), static_cast<std::size_t>(n * n * grid.Planes()));
        std::size_t cell = 0;
        for (int64 z = 0; z < grid.Planes(); ++z)
          for (int64 y = 0; y < n; ++y)
            for (int64 x = 0; x < n; ++x) EXPECT_EQ(table[cell++], grid.Entry({x, y, z}));
      }
}
