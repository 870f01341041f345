// Balls, ellipsoids and boxes by their inequalities.
#include "support/Random.h"
#include "support/WalkTest.h"

#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/RealWindow.h>
#include <SeluUtils/Walker.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace ORVA;
using namespace test;
using Real = CTriple<double>;

static_assert(RewindableWalker<CEllipsoidVisitor>);

// The numbers of lattice points in balls of radius 0, 1, ... around one of them (Gauss's sphere
// problem, OEIS A000605).
TEST(EllipsoidVisitor, CountsThePointsOfWholeBalls) {
  constexpr uint64 c_counts[] = {1,    7,    33,   123,  257,  515,  925,  1419,
                                 2109, 3071, 4169, 5575, 7153, 9171, 11513};
  for (std::size_t radius = 1; radius < std::size(c_counts); ++radius)
    EXPECT_EQ(CEllipsoidVisitor({-3, 5, 1e9}, static_cast<double>(radius)).Steps(),
              c_counts[radius])
        << radius;
}

TEST(EllipsoidVisitor, HandsOutPointsInRasterOrder) {
  struct {
    char const* name;
    Real center, semiAxes;
    bool border;
    PointList expected;
  } const cases[] = {
      {"no points", {0.5, 0.5, 0.5}, {0.5, 0.5, 0.5}, true, {}},
      {"one point", {3, 4, 5}, {0.5, 0.25, 0.125}, false, {{3, 4, 5}}},
      {"only the surface has points", {0, 0, 0.5}, {0.1, 0.1, 0.5}, true, {{0, 0, 0}, {0, 0, 1}}},
      {"and they are left out", {0, 0, 0.5}, {0.1, 0.1, 0.5}, false, {}},
      {"a lens",
       {0, 0, 0},
       {2, 1, 0.5},
       true,
       {{0, -1, 0}, {-2, 0, 0}, {-1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}}}};
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    CEllipsoidVisitor walk(c.center, c.semiAxes, c.border);
    EXPECT_EQ(walk.Steps(), c.expected.size());
    EXPECT_EQ(Walk(walk), c.expected);
  }
}

// The inequality in whole numbers of any length.
class CInequality {
public:
  /// All numbers are multiples of 2^-bits.
  CInequality(Real const& center, Real const& semiAxes, int bits)
      : m_Center(center), m_Axes(semiAxes), m_Bits(bits) {}

  // The sign of the sum of squares less 1.
  [[nodiscard]] int Side(Point const& p) const {
    Integer const a = Whole(m_Axes.x), b = Whole(m_Axes.y), c = Whole(m_Axes.z);
    Integer const x = (Whole(static_cast<double>(p.x)) - Whole(m_Center.x)) * b * c;
    Integer const y = (Whole(static_cast<double>(p.y)) - Whole(m_Center.y)) * a * c;
    Integer const z = (Whole(static_cast<double>(p.z)) - Whole(m_Center.z)) * a * b;
    Integer const one = a * b * c, side = x * x + y * y + z * z - one * one;
    return side.sign();
  }

private:
  using Integer = boost::multiprecision::cpp_int;

  [[nodiscard]] Integer Whole(double value) const {
    int exponent = 0;
    double const fraction = std::frexp(value, &exponent);
    return Integer(static_cast<int64>(std::ldexp(fraction, 53))) << (m_Bits - 53 + exponent);
  }

  Real m_Center, m_Axes;
  int m_Bits;
};

void ExpectExact(Real const& center, Real const& semiAxes, int bits = 100) {
  SCOPED_TRACE(testing::Message() << std::hexfloat << center.x << ' ' << center.y << ' ' << center.z
                                  << ", " << semiAxes.x << ' ' << semiAxes.y << ' ' << semiAxes.z);
  CInequality const inequality(center, semiAxes, bits);
  PointList closed, open;
  for (Point const& p : BoxPoints({-7, -7, -7}, {7, 7, 7})) {
    int const side = inequality.Side(p);
    if (side <= 0) closed.push_back(p);
    if (side < 0) open.push_back(p);
  }
  EXPECT_EQ(Walk(CEllipsoidVisitor(center, semiAxes)), closed);
  EXPECT_EQ(Walk(CEllipsoidVisitor(center, semiAxes, false)), open);
}

TEST(EllipsoidVisitorProperty, EveryPointIsDecidedExactly) {
  test::CRandomNumbers random;
  auto const eighths = [&](int low, int high) { return random.Between(low, high) / 8.0; };
  for (int k = 0; k < 20 && !HasFailure(); ++k) {
    Real const center(eighths(-16, 16), eighths(-16, 16), eighths(-16, 16));
    double const radius = eighths(1, 40);
    ExpectExact(center, {radius, radius, radius});
    ExpectExact(center, {eighths(1, 40), eighths(1, 40), eighths(1, 40)});
    ExpectExact({random.Real(-2, 2), random.Real(-2, 2), random.Real(-2, 2)},
                {random.Real(0.1, 5), random.Real(0.1, 5), random.Real(0.1, 5)});
  }
}

// A ball through points of the grid, and one bit smaller or larger, or its center one bit aside.
TEST(EllipsoidVisitorProperty, OneBitDecides) {
  for (double const radius : {3.0, 5.0, std::sqrt(14.0)})
    for (double const toward : {0.0, 10.0}) {
      double const next = std::nextafter(radius, toward);
      ExpectExact({0, 0, 0}, {radius, radius, radius});
      ExpectExact({0, 0, 0}, {next, radius, next});
      ExpectExact({std::nextafter(1.0, toward), 0, 0}, {radius, radius, radius});
      ExpectExact({5e-324, 0, -5e-324}, {radius, radius, radius}, 1200);
    }
}

TEST(EllipsoidVisitor, LargeOnesAreExactAtTheirEnds) {
  constexpr double far = 0x1p30;
  constexpr auto last = static_cast<int64>(far);
  CEllipsoidVisitor needle({0, 0, 0}, {far, 0.5, 0.5});
  EXPECT_EQ(needle.Steps(), (uint64{1} << 31) + 1);
  EXPECT_EQ(needle.NextPoint(), Point(-last, 0, 0));
  EXPECT_EQ(CEllipsoidVisitor({0, 0, 0}, {far, 0.5, 0.5}, false).Steps(), (uint64{1} << 31) - 1);
  CEllipsoidVisitor const beside({far, far, -far}, {0.75, 1, 1});
  EXPECT_EQ(beside.Steps(), 5U);
}

TEST(EllipsoidVisitor, BadParametersAreRefusedByName) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  struct {
    Real center, semiAxes;
    char const* message;
  } const cases[] = {
      {{0, inf, 0}, {1, 1, 1}, "center coordinate inf is not from -1073741824 to 1073741824"},
      {{std::nan(""), 0, 0},
       {1, 1, 1},
       "center coordinate nan is not from -1073741824 to 1073741824"},
      {{0, 0, 0}, {1, 1, 0}, "semi-axis 0 is not from 2^-30 to 2^30"},
      {{0, 0, 0}, {1, -1, 1}, "semi-axis -1 is not from 2^-30 to 2^30"},
      {{0, 0, 0}, {std::nan(""), 1, 1}, "semi-axis nan is not from 2^-30 to 2^30"}};
  for (auto const& c : cases)
    ExpectError<CExBadParam>([&] { CEllipsoidVisitor walk(c.center, c.semiAxes); }, c.message,
                             "ORVA::CEllipsoidVisitor::CEllipsoidVisitor",
                             "src/Utils/EllipsoidVisitor");
}

TEST(EllipsoidVisitor, CopiesWalkIndependentlyAndResetRewindsAnywhere) {
  test::ExpectRewindsAndCopiesAnywhere(CEllipsoidVisitor({0.5, 1, 2.25}, 2.5));
}

TEST(RealWindow, HasThePointsBetweenItsSides) {
  struct {
    char const* name;
    Real low, high;
    EnBoundary boundary;
    Point first, last;
  } const cases[] = {
      {"between", {0.5, -0.5, 0}, {2.25, 1.5, 0}, EnBoundary::Closed, {1, 0, 0}, {2, 1, 0}},
      {"with its sides", {-1, 2, 3}, {1, 2, 4}, EnBoundary::Closed, {-1, 2, 3}, {1, 2, 4}},
      {"half open", {-1, 2, 3.5}, {1, 3, 5.5}, EnBoundary::HalfOpen, {-1, 2, 4}, {0, 2, 5}},
      {"open", {-1, 2, 3.5}, {1, 4, 5}, EnBoundary::Open, {0, 3, 4}, {0, 3, 4}}};
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Walk(RealWindow(c.low, c.high, c.boundary)), BoxPoints(c.first, c.last));
  }
  for (EnBoundary const boundary : {EnBoundary::Open, EnBoundary::HalfOpen, EnBoundary::Closed}) {
    CWindowVisitor const none = RealWindow({0.25, 0, 0}, {0.75, 9, 9}, boundary);
    EXPECT_FALSE(none.MorePoints());
    EXPECT_EQ(none.Steps(), 0U);
  }
}

TEST(RealWindow, RefusesWhatIsNoNumberByName) {
  ExpectError<CExBadParam>(
      [] {
        static_cast<void>(RealWindow({0, 0, 0}, {1, 1e30, 1}));
      },
      "box coordinate 1e+30 is not from -2^62 to 2^62", "ORVA::RealWindow",
      "src/Utils/ImageWalker");
  ExpectError<CExBadParam>(
      [] {
        static_cast<void>(RealWindow({0, std::nan(""), 0}, {1, 1, 1}));
      },
      "box coordinate nan is not from -2^62 to 2^62");
}

} // namespace
