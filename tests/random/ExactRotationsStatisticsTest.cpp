// The exact distributions of rotations and points: the joint law of cosine, azimuth and spin
// against closed forms, 10^6 draws over 1000 equally likely cells.
#include <SeluUtils/Random/BallPoint.h>
#include <SeluUtils/Random/DiscPoint.h>
#include <SeluUtils/Random/ExactGirdleRotation.h>
#include <SeluUtils/Random/ExactIsotropicRotation.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/Random/SpherePoint.h>

#include "support/EqualCells.h"
#include "support/Random.h"
#include "support/Statistics.h"

#include <Eigen/Dense>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr std::size_t c_draws = 1'000'000;
constexpr double c_pi = std::numbers::pi;

CPolarCoordinates const c_means[] = {CPolarCoordinates(0.0, 0.0), CPolarCoordinates(1.0, 2.5),
                                     CPolarCoordinates(c_pi, 0.0)};

Eigen::Vector3d ToEigen(CTriple<double> const& v) { return {v.x, v.y, v.z}; }

// Angles as shares of the circle.
double ShareOfCircle(double sine, double cosine) {
  return std::atan2(sine, cosine) / (2 * c_pi) + 0.5;
}

// Where shares of cosine, azimuth and spin fall among 10 x 10 x 10 cells.
class CJointLaw {
public:
  void Add(double cosine, double azimuth, double spin) {
    auto const cell = [](double share) {
      EXPECT_TRUE(share >= -1e-9 && share <= 1 + 1e-9) << share;
      return static_cast<std::size_t>(std::clamp(share * 10, 0.0, 9.0));
    };
    ++m_Counts.at(cell(cosine) * 100 + cell(azimuth) * 10 + cell(spin));
    ++m_Total;
  }
  void ExpectEven(std::string const& what) const {
    std::vector<double> const expected(m_Counts.size(), m_Total / 1000);
    EXPECT_GT(test::ChiSquarePValue(m_Counts, expected), test::c_falseAlarm) << what;
  }

private:
  std::vector<double> m_Counts = std::vector<double>(1000);
  double m_Total = 0;
};

class ExactRotations : public testing::Test {
protected:
  // Directions alone and rotations with their spin, both about the mean; `share` is the probability
  // that 1 - cosine is smaller. About the poles a tenth of the draws is enough.
  template <class Distribution>
  void ExpectLaw(Distribution const& distribution, CPolarCoordinates const& mean,
                 std::function<double(double)> const& share, std::string const& what) {
    Eigen::Vector3d const m = ToEigen(mean), across = m.unitOrthogonal(), third = m.cross(across);
    auto const versine = [&](Eigen::Vector3d const& d) { return (d - m).squaredNorm() / 2; };
    auto const azimuth = [&](Eigen::Vector3d const& d) {
      return ShareOfCircle(d.dot(third), d.dot(across));
    };
    std::size_t const draws = std::fabs(m.z()) == 1 ? c_draws / 10 : c_draws;
    std::vector<CTriple<double>> directions(draws);
    distribution.Fill(directions, m_Source);
    test::CEqualCells cells(what + ", direction"), around(what + ", azimuth");
    for (auto const& direction : directions) {
      Eigen::Vector3d const d = ToEigen(direction);
      ASSERT_NEAR(d.norm(), 1, 1e-14);
      cells.Add(share(versine(d)));
      around.Add(azimuth(d));
    }
    cells.ExpectEven();
    around.ExpectEven();

    std::vector<std::array<double, 9>> matrices(draws);
    distribution.Fill(matrices, m_Source);
    CJointLaw law;
    for (auto const& a : matrices) {
      Eigen::Vector3d const d(a[2], a[5], a[8]);
      law.Add(share(versine(d)), azimuth(d), ShareOfCircle(a[6], -a[7])); // the first Euler angle
    }
    law.ExpectEven(what);
  }

  CRandomSource m_Source{test::Seed(), 14};

private:
  testing::ScopedTrace m_Trace{__FILE__, __LINE__,
                               "SELU_TEST_SEED=" + std::to_string(test::Seed())};
};

double Sphere(double versine) { return versine / 2; }

double Girdle(double beta, double t) {
  return (1 + beta * t / std::sqrt((1 - t) * (1 + t) + beta * beta * t * t)) / 2;
}

double Fisher(double kappa, double versine) {
  return std::expm1(-kappa * versine) / std::expm1(-2 * kappa);
}

// Clusters have no elementary distribution function: a table of integrals of exp(-kappa x (2 - x)),
// x = 1 - |t|, between narrow steps, and between them the cubic that has the density's slopes.
class CClusterLaw {
public:
  explicit CClusterLaw(double kappa) : m_Kappa(kappa) {
    m_Steps = {0};
    for (double x = 1e-4 / std::max(1.0, kappa); x < 1; x *= 1.02) m_Steps.push_back(x);
    m_Steps.push_back(1);
    auto const density = [this](double x) { return Density(x); };
    for (std::size_t i = 1; i < m_Steps.size(); ++i)
      m_Sums.push_back(m_Sums.back() +
                       boost::math::quadrature::gauss_kronrod<double, 15>::integrate(
                           density, m_Steps[i - 1], m_Steps[i], 0, 0));
  }
  // 0 at versine 0, 1 at versine 2; symmetric about 1.
  double operator()(double versine) const {
    bool const isUpper = versine <= 1;
    double const half = Upto(isUpper ? versine : 2 - versine) / m_Sums.back() / 2;
    return isUpper ? half : 1 - half;
  }

private:
  double Density(double x) const { return std::exp(-m_Kappa * x * (2 - x)); }
  double Upto(double x) const {
    auto const next = std::ranges::upper_bound(m_Steps, x);
    if (next == m_Steps.end()) return m_Sums.back();
    auto const i = static_cast<std::size_t>(next - m_Steps.begin()) - 1;
    double const width = m_Steps[i + 1] - m_Steps[i], u = (x - m_Steps[i]) / width, v = 1 - u;
    return m_Sums[i] * v * v * (1 + 2 * u) + m_Sums[i + 1] * u * u * (1 + 2 * v) +
           width * u * v * (Density(m_Steps[i]) * v - Density(m_Steps[i + 1]) * u);
  }

  double m_Kappa;
  std::vector<double> m_Steps, m_Sums{0};
};

std::function<double(double)> Watson(double kappa) {
  if (kappa > 0) return CClusterLaw(kappa);
  if (kappa == 0) return Sphere;
  double const root = std::sqrt(-kappa);
  return
      [root](double versine) { return (1 - std::erf(root * (1 - versine)) / std::erf(root)) / 2; };
}

} // namespace

TEST_F(ExactRotations, Isotropic) {
  for (auto const& mean : c_means) ExpectLaw(CExactIsotropicRotation(), mean, Sphere, "isotropic");
}

TEST_F(ExactRotations, Girdle) {
  for (double const beta : {0.1, 1.0, 10.0})
    for (auto const& axis : c_means)
      ExpectLaw(
          CExactGirdleRotation(beta, axis), axis,
          [&](double versine) { return 1 - Girdle(beta, 1 - versine); },
          "girdle " + std::to_string(beta));
}

TEST_F(ExactRotations, VonMisesFisher) {
  for (double const kappa : {0.01, 0.999, 1.0, 20.0, 1000.0})
    for (auto const& mean : c_means)
      ExpectLaw(
          CExactVonMisesFisher(kappa, mean), mean,
          [&](double versine) { return Fisher(kappa, versine); },
          "von Mises-Fisher " + std::to_string(kappa));
  for (double const kappa : {0.0, 1e-300, 1e-12})
    ExpectLaw(CExactVonMisesFisher(kappa, c_means[1]), c_means[1], Sphere, "next to isotropic");
}

// About the z axis the small components keep all their digits.
TEST_F(ExactRotations, VonMisesFisherOfHugeConcentrations) {
  for (double const kappa : {1e8, 1e15, 1e30, 1e300}) {
    std::vector<CTriple<double>> directions(c_draws);
    CExactVonMisesFisher(kappa, c_means[0]).Fill(directions, m_Source);
    test::CEqualCells cells("kappa " + std::to_string(kappa));
    for (auto const& d : directions) cells.Add(-std::expm1(-kappa * (d.x * d.x + d.y * d.y) / 2));
    cells.ExpectEven();
  }
}

TEST_F(ExactRotations, WatsonOnBothEndsOfTheAxis) {
  for (double const kappa : {-500.0, -5.0, -1.0, -0.5, 0.0, 0.5, 1.5, 1.6, 5.0, 50.0, 1e4})
    for (auto const& mean : c_means)
      ExpectLaw(CExactWatsonRotation(kappa, mean), mean, Watson(kappa),
                "Watson " + std::to_string(kappa));
}

TEST_F(ExactRotations, WatsonOfHugeConcentrations) {
  std::vector<CTriple<double>> directions(c_draws);
  for (double const kappa : {1e8, 1e15, 1e300}) {
    CExactWatsonRotation(kappa, c_means[0]).Fill(directions, m_Source);
    test::CEqualCells cells("clusters " + std::to_string(kappa));
    int upper = 0;
    for (auto const& d : directions) {
      cells.Add(-std::expm1(-kappa * (d.x * d.x + d.y * d.y)));
      upper += d.z > 0 ? 1 : 0;
    }
    cells.ExpectEven();
    EXPECT_NEAR(upper, c_draws / 2, test::c_deviations * std::sqrt(c_draws) / 2);

    CExactWatsonRotation(-kappa, c_means[0]).Fill(directions, m_Source);
    test::CEqualCells across("girdle " + std::to_string(kappa));
    for (auto const& d : directions) across.Add(std::erfc(-d.z * std::sqrt(kappa)) / 2);
    across.ExpectEven();
  }
}

TEST_F(ExactRotations, PointsOnASphere) {
  CTriple<double> const center(1, -2, 3);
  std::vector<CTriple<double>> points(c_draws);
  CSpherePoint(center, 2.5).Fill(points, m_Source);
  test::CEqualCells heights("height"), around("azimuth");
  for (auto const& point : points) {
    auto const d = point - center;
    ASSERT_NEAR(ToEigen(d).norm(), 2.5, 1e-14);
    heights.Add((d.z / 2.5 + 1) / 2);
    around.Add(ShareOfCircle(d.y, d.x));
  }
  heights.ExpectEven();
  around.ExpectEven();
}

TEST_F(ExactRotations, PointsInABall) {
  CTriple<double> const center(1, -2, 3);
  std::vector<CTriple<double>> points(c_draws);
  CBallPoint(center, 2.5).Fill(points, m_Source);
  test::CEqualCells radii("radius");
  CJointLaw law;
  for (auto const& point : points) {
    Eigen::Vector3d const d = ToEigen(point - center) / 2.5;
    double const r = d.norm();
    radii.Add(r * r * r);
    law.Add((d.z() / r + 1) / 2, ShareOfCircle(d.y(), d.x()), r * r * r);
  }
  radii.ExpectEven();
  law.ExpectEven("cosine, azimuth, radius");
}

TEST_F(ExactRotations, PointsInADisc) {
  for (auto const& axis : c_means) {
    CTriple<double> const center(1, -2, 3);
    Eigen::Vector3d const m = ToEigen(axis), across = m.unitOrthogonal(), third = m.cross(across);
    std::vector<CTriple<double>> points(c_draws);
    CDiscPoint(center, 2.5, axis).Fill(points, m_Source);
    test::CEqualCells radii("radius"), around("azimuth");
    for (auto const& point : points) {
      Eigen::Vector3d const d = ToEigen(point - center) / 2.5;
      ASSERT_NEAR(d.dot(m), 0, 1e-14);
      radii.Add(d.squaredNorm());
      around.Add(ShareOfCircle(d.dot(third), d.dot(across)));
    }
    radii.ExpectEven();
    around.ExpectEven();
  }
}
