// Random rotations and matrices beside Eigen's.
#include <SeluUtils/EulerRotation.h>

#include "support/Random.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace ORVA;

namespace {

constexpr double c_pi = std::numbers::pi;
constexpr int c_rounds = 500;

Eigen::MatrixXd ToEigen(CMatrix<double> const& m) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  return Eigen::Map<RowMajor const>(m.Elements().data(), static_cast<Eigen::Index>(m.Rows()),
                                    static_cast<Eigen::Index>(m.Cols()));
}
Eigen::Vector3d ToEigen(CTriple<double> const& v) { return {v.x, v.y, v.z}; }

Eigen::Matrix3d Turn(double angle, Eigen::Vector3d const& axis) {
  return Eigen::AngleAxisd(-angle, axis).toRotationMatrix(); // the frame turns, not the vector
}

class RotationBesideEigen : public testing::Test {
protected:
  double Angle() { return random.Real(-10, 10); }
  CTriple<double> Vector() { return {random.Real(-5, 5), random.Real(-5, 5), random.Real(-5, 5)}; }
  CMatrix<double> Matrix(uint64 rows, uint64 cols) {
    CMatrix<double> m(rows, cols);
    for (double& element : m.Elements()) element = random.Real(-3, 3);
    return m;
  }
  uint64 Extent() { return random.Between<uint64>(1, 7); }

  test::CRandomNumbers random;
};

} // namespace

TEST_F(RotationBesideEigen, EulerAnglesComposeThreeTurns) {
  for (int i = 0; i < c_rounds; ++i) {
    double const phi = Angle(), theta = Angle(), psi = Angle();
    Eigen::Matrix3d const expected = Turn(psi, Eigen::Vector3d::UnitZ()) *
                                     Turn(theta, Eigen::Vector3d::UnitX()) *
                                     Turn(phi, Eigen::Vector3d::UnitZ());
    CEulerRotation const r(phi, theta, psi);
    EXPECT_LT((ToEigen(r.getRotationMatrix()) - expected).norm(), 1e-14);
    EXPECT_TRUE(r.IsValid());
    EXPECT_NEAR(ToEigen(r.getRotationMatrix()).determinant(), 1, 1e-14);
  }
}

TEST_F(RotationBesideEigen, RotatesAndRotatesBack) {
  for (int i = 0; i < c_rounds; ++i) {
    CEulerRotation const r(Angle(), Angle(), Angle());
    auto const v = Vector();
    Eigen::Vector3d const expected = ToEigen(r.getRotationMatrix()) * ToEigen(v);
    EXPECT_LT((ToEigen(r.rotateVector(v)) - expected).norm(), 1e-14);
    EXPECT_LT((ToEigen(r.backRotateVector(r.rotateVector(v))) - ToEigen(v)).norm(), 1e-14);
  }
}

TEST_F(RotationBesideEigen, DirectionVectorIsTheDirectionWhateverTheSpin) {
  for (int i = 0; i < c_rounds; ++i) {
    CPolarCoordinates const d(random.Real(0, c_pi), random.Real(0, 2 * c_pi));
    CEulerRotation const r(d, Angle());
    EXPECT_LT((ToEigen(r.getDirectionVector()) - ToEigen(CTriple<double>(d))).norm(), 1e-15);
  }
}

TEST_F(RotationBesideEigen, FirstTwoAnglesAreRecovered) {
  for (int i = 0; i < c_rounds; ++i) {
    double const phi = random.Real(-c_pi, c_pi), theta = random.Real(0.01, c_pi - 0.01);
    auto const angles = CEulerRotation(phi, theta, Angle()).getEulerAngles();
    EXPECT_NEAR(angles.x, phi, 1e-12);
    EXPECT_NEAR(angles.y, theta, 1e-12);
  }
}

TEST_F(RotationBesideEigen, EveryOrthonormalMatrixIsARotation) {
  for (int i = 0; i < c_rounds; ++i) {
    Eigen::Matrix3d const q =
        Eigen::HouseholderQR<Eigen::Matrix3d>(Eigen::Matrix3d(ToEigen(Matrix(3, 3))))
            .householderQ();
    CMatrix<double> m(3, 3);
    for (uint64 r = 0; r < 3; ++r)
      for (uint64 c = 0; c < 3; ++c)
        m(r, c) = q(static_cast<Eigen::Index>(r), static_cast<Eigen::Index>(c));
    EXPECT_NO_THROW(CEulerRotation{m});
  }
}

TEST_F(RotationBesideEigen, MatrixArithmetic) {
  for (int i = 0; i < c_rounds; ++i) {
    uint64 const rows = Extent(), inner = Extent(), cols = Extent();
    auto const a = Matrix(rows, inner), b = Matrix(inner, cols), c = Matrix(rows, inner);
    EXPECT_LT((ToEigen(a * b) - ToEigen(a) * ToEigen(b)).norm(), 1e-12);
    auto sum = a;
    sum += c;
    EXPECT_EQ(ToEigen(sum), ToEigen(a) + ToEigen(c));
    auto difference = a;
    difference -= c;
    EXPECT_EQ(ToEigen(difference), ToEigen(a) - ToEigen(c));
    auto transposed = a;
    transposed.Transpose();
    EXPECT_EQ(ToEigen(transposed), ToEigen(a).transpose());
    auto joined = a;
    joined.AddCols(c);
    joined.AddRows(joined);
    EXPECT_EQ(joined.Rows(), 2 * rows);
    EXPECT_EQ(ToEigen(joined).bottomRightCorner(static_cast<Eigen::Index>(rows),
                                                static_cast<Eigen::Index>(inner)),
              ToEigen(c));
  }
}
