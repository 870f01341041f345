#include <SeluUtils/Matrix.h>

#include <SeluUtils/Triple.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

using Matrix = CMatrix<double>;
using Interface = IMatrix<double>;
using test::ExpectError;

constexpr uint64 c_most = std::numeric_limits<uint64>::max();

Matrix Make(uint64 rows, uint64 cols, std::initializer_list<double> elements) {
  Matrix matrix(rows, cols);
  EXPECT_EQ(elements.size(), rows * cols);
  std::copy(elements.begin(), elements.end(), matrix.Elements().begin());
  return matrix;
}

// 1, 2, 3, ... row by row.
Matrix Counting(uint64 rows, uint64 cols) {
  Matrix matrix(rows, cols);
  double next = 1;
  for (double& element : matrix.Elements()) element = next++;
  return matrix;
}

// A matrix that owns nothing: the transposed view of another. It shows that the arithmetic of the
// base needs no more than the element access, and lets an operand share storage with the result.
class CTransposedView : public Interface {
public:
  explicit CTransposedView(Matrix& matrix) : m_Matrix(matrix) {}
  using Interface::operator=;
  uint64 Rows() const override { return m_Matrix.Cols(); }
  uint64 Cols() const override { return m_Matrix.Rows(); }
  double& operator()(uint64 row, uint64 col) override { return m_Matrix(col, row); }
  double operator()(uint64 row, uint64 col) const override {
    return std::as_const(m_Matrix)(col, row);
  }
  void Resize(uint64 rows, uint64 cols) override { m_Matrix.Resize(cols, rows); }

private:
  Matrix& m_Matrix;
};

std::string const c_interface = "src/Numeric/MatrixInterface";
std::string const c_matrix = "src/Numeric/Matrix";

} // namespace

TEST(Matrix, StartsEmptyOrZero) {
  EXPECT_EQ(Matrix().Rows(), 0u);
  EXPECT_EQ(Matrix().Cols(), 0u);
  Matrix const zeros(4, 5);
  EXPECT_EQ(zeros.Rows(), 4u);
  EXPECT_EQ(zeros.Cols(), 5u);
  EXPECT_EQ(zeros.Elements().size(), 20u);
  for (double const element : zeros.Elements()) EXPECT_EQ(element, 0);
}

TEST(Matrix, ElementsStandRowByRow) {
  Matrix const m = Counting(2, 3);
  EXPECT_EQ(m(0, 0), 1);
  EXPECT_EQ(m(0, 2), 3);
  EXPECT_EQ(m(1, 0), 4);
  EXPECT_EQ(m.Elements()[5], m(1, 2));
}

TEST(Matrix, AccessOutsideNamesIndexAndShape) {
  Matrix m(2, 3);
  Matrix const& readOnly = m;
  std::string const where = "ORVA::CMatrix<double>::operator ()";
  for (CTriple<uint64> const at :
       {CTriple<uint64>(2, 0, 0), {0, 3, 0}, {2, 3, 0}, {c_most, c_most, 0}}) {
    auto const tail = "Tried to access index (" + std::to_string(at.x) + "," +
                      std::to_string(at.y) + ") but Matrix size is 2-by-3";
    ExpectError([&] { (void)readOnly(at.x, at.y); }, "Index exceeds matrix bounds. " + tail, where,
                c_matrix);
    ExpectError([&] { m(at.x, at.y) = 1; }, "Index exceeds matrix bounds." + tail, where, c_matrix);
  }
  EXPECT_EQ(m, Matrix(2, 3));
}

TEST(Matrix, ResizeKeepsTheLinearOrder) {
  struct StCase {
    uint64 rows, cols;
    std::initializer_list<double> elements;
  };
  for (auto const& [rows, cols, elements] : {
           StCase{2, 2, {1, 2, 3, 4}},
           StCase{3, 2, {1, 2, 3, 4, 5, 6}},
           StCase{2, 4, {1, 2, 3, 4, 5, 6, 0, 0}},
           StCase{3, 4, {1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0}}, // beyond what stands in the object
           StCase{0, 7, {}},
       }) {
    Matrix m = Counting(2, 3);
    m.Resize(rows, cols);
    EXPECT_EQ(m, Make(rows, cols, elements)) << rows << ' ' << cols;
  }
}

TEST(Matrix, ElementsLostByShrinkingComeBackAsZero) {
  for (uint64 const rows : {3u, 10u}) {
    Matrix m = Counting(rows, 3);
    m.Resize(1, 2);
    m.Resize(rows, 3);
    Matrix expected(rows, 3);
    expected(0, 0) = 1;
    expected(0, 1) = 2;
    EXPECT_EQ(m, expected);
  }
  Matrix m = Counting(10, 3);
  m.Resize(5, 3);
  EXPECT_EQ(m, Counting(5, 3));
  m.Resize(3, 3);
  EXPECT_EQ(m, Counting(3, 3));
}

TEST(Matrix, TooManyElementsAreRefused) {
  Matrix m = Counting(2, 2);
  ExpectError<CExBadParam>([&] { m.Resize(c_most, 2); },
                           "A matrix of 18446744073709551615-by-2 elements is too large.",
                           "ORVA::CMatrix<double>::Resize", c_matrix);
  ExpectError<CExBadParam>([&] { (void)Matrix(uint64{1} << 32, uint64{1} << 32); },
                           "A matrix of 4294967296-by-4294967296 elements is too large.");
  EXPECT_EQ(m, Counting(2, 2));
  m.Resize(c_most, 0);
  EXPECT_EQ(m.Rows(), c_most);
  m *= 2.0; // a matrix without columns has nothing to touch
  m *= Matrix(0, 0);
  EXPECT_TRUE(m == Matrix(c_most, 0));
}

TEST(Matrix, CopiesAreDeep) {
  for (uint64 const rows : {2u, 20u}) {
    Matrix const original = Counting(rows, 2);
    Matrix copy(original);
    copy(0, 0) = 99;
    EXPECT_EQ(original, Counting(rows, 2));
    Matrix assigned;
    assigned = original;
    assigned(1, 1) = 99;
    EXPECT_EQ(original, Counting(rows, 2));
    Matrix& alias = assigned;
    assigned = alias;
    EXPECT_EQ(assigned(1, 1), 99);
  }
}

TEST(Matrix, MovedFromIsEmpty) {
  for (uint64 const rows : {2u, 20u}) {
    Matrix source = Counting(rows, 2);
    Matrix const target(std::move(source));
    EXPECT_EQ(target, Counting(rows, 2));
    EXPECT_EQ(source, Matrix()); // NOLINT(bugprone-use-after-move)
    EXPECT_THROW(source(0, 0) = 1, CException);
  }
}

TEST(Matrix, AssignmentTakesTheShapeWhereRowsDiffer) {
  Matrix m = Counting(3, 3);
  m = Counting(2, 5);
  EXPECT_EQ(m, Counting(2, 5));
  m = Counting(2, 5);
  EXPECT_EQ(m, Counting(2, 5));
  static_cast<Interface&>(m) = Counting(4, 3);
  EXPECT_EQ(m, Counting(4, 3));
}

TEST(Matrix, AssignmentOfEqualRowsKeepsTheColumns) {
  auto const check = [](auto assign) {
    Matrix narrow(3, 3);
    ExpectError([&] { assign(narrow, Counting(3, 4)); },
                "Index exceeds matrix bounds.Tried to access index (0,3) but Matrix size is 3-by-3",
                "ORVA::CMatrix<double>::operator ()", c_matrix);
    EXPECT_EQ(narrow, Make(3, 3, {1, 2, 3, 0, 0, 0, 0, 0, 0}));
    Matrix wide = Counting(2, 3);
    assign(wide, Make(2, 2, {10, 20, 30, 40}));
    EXPECT_EQ(wide, Make(2, 3, {10, 20, 3, 30, 40, 6}));
  };
  check([](Matrix& target, Matrix const& source) { target = source; });
  check([](Matrix& target, Matrix const& source) { target = Matrix(source); });
  check([](Interface& target, Interface const& source) { target = source; });
}

TEST(Matrix, EqualityIsExact) {
  Matrix a = Counting(2, 2);
  EXPECT_TRUE(a == Counting(2, 2));
  EXPECT_FALSE(a == Counting(2, 3));
  EXPECT_FALSE(Matrix(2, 3) == Matrix(3, 2));
  EXPECT_TRUE(Matrix(0, 3) == Matrix(0, 3));
  EXPECT_FALSE(Matrix(0, 3) == Matrix(0, 2));
  a(1, 1) += 1e-15;
  EXPECT_FALSE(a == Counting(2, 2));
  a(1, 1) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(a == a);
  EXPECT_FALSE(a == Matrix(a));
}

TEST(Matrix, EveryElementCountsInEquality) {
  for (uint64 r = 0; r < 3; ++r)
    for (uint64 c = 0; c < 4; ++c) {
      Matrix a = Counting(3, 4);
      a(r, c) = -1;
      EXPECT_FALSE(a == Counting(3, 4)) << r << ", " << c;
      EXPECT_FALSE(Counting(3, 4) == a) << r << ", " << c;
    }
}

TEST(Matrix, Product) {
  Matrix const a = Counting(2, 3);
  Matrix const b = Make(3, 1, {1, 10, 100});
  EXPECT_EQ(a * b, Make(2, 1, {321, 654}));
  Matrix inPlace = a;
  EXPECT_EQ(&(inPlace *= b), &inPlace);
  EXPECT_EQ(inPlace, a * b);
  EXPECT_EQ(Matrix(2, 0) * Matrix(0, 3), Matrix(2, 3));
}

TEST(Matrix, ProductSumsInTheOrderOfTheInnerIndex) {
  Matrix const a = Make(1, 3, {1e16, 1, -1e16});
  Matrix const ones = Make(3, 1, {1, 1, 1});
  EXPECT_EQ((a * ones)(0, 0), (1e16 + 1) - 1e16);
}

TEST(Matrix, ProductOfUnfittingShapesIsRefused) {
  Matrix a = Counting(2, 3);
  Matrix const b(4, 5);
  ExpectError([&] { a *= b; }, "Tried to multiply 2-by-3 *= 4-by-5 matrices",
              "ORVA::IMatrix<double>::operator *=", c_interface, 85);
  ExpectError([&] { (void)(a * b); }, "Trying to multiply non-conform matrices.",
              "ORVA::CMatrix<double>::operator *", c_matrix, 124);
  EXPECT_EQ(a, Counting(2, 3));
}

TEST(Matrix, SumsAndDifferences) {
  Matrix a = Counting(2, 2);
  a += Make(2, 2, {10, 20, 30, 40});
  EXPECT_EQ(a, Make(2, 2, {11, 22, 33, 44}));
  a -= Counting(2, 2);
  EXPECT_EQ(a, Make(2, 2, {10, 20, 30, 40}));
  a += 0.5;
  EXPECT_EQ(a, Make(2, 2, {10.5, 20.5, 30.5, 40.5}));
  a *= 2.0;
  EXPECT_EQ(a, Make(2, 2, {21, 41, 61, 81}));
}

TEST(Matrix, SumsOfUnfittingShapesAreRefused) {
  Matrix a = Counting(2, 3);
  ExpectError([&] { a += Matrix(2, 4); }, "Tried to add 2-by-3 and 2-by-4 matrices",
              "ORVA::IMatrix<double>::operator +=", c_interface, 130);
  ExpectError([&] { a -= Matrix(3, 3); }, "Tried to subtract 2-by-3 and 3-by-3 matrices",
              "ORVA::IMatrix<double>::operator -=", c_interface, 145);
  EXPECT_EQ(a, Counting(2, 3));
}

TEST(Matrix, Transpose) {
  Matrix m = Counting(2, 3);
  m.Transpose();
  EXPECT_EQ(m, Make(3, 2, {1, 4, 2, 5, 3, 6}));
  Matrix large = Counting(30, 2);
  large.Transpose().Transpose();
  EXPECT_EQ(large, Counting(30, 2));
}

TEST(Matrix, AddRowsAndCols) {
  Matrix m = Counting(2, 2);
  m.AddRows(Make(1, 2, {7, 8}));
  EXPECT_EQ(m, Make(3, 2, {1, 2, 3, 4, 7, 8}));
  m.AddCols(Make(3, 1, {10, 20, 30}));
  EXPECT_EQ(m, Make(3, 3, {1, 2, 10, 3, 4, 20, 7, 8, 30}));
  m.AddRows(Matrix(0, 3)).AddCols(Matrix(3, 0));
  EXPECT_EQ(m.Rows(), 3u);
  EXPECT_EQ(m.Cols(), 3u);
}

TEST(Matrix, ConcatenationOfUnfittingShapesIsRefused) {
  Matrix m = Counting(2, 3);
  ExpectError([&] { m.AddRows(Matrix(1, 4)); }, "Tried to concatenate 4-dim rows to 3-dim rows",
              "ORVA::IMatrix<double>::AddRows", c_interface, 176);
  ExpectError([&] { m.AddCols(Matrix(5, 1)); }, "Tried to concatenate 5-dim Cols to 2-dim Cols",
              "ORVA::IMatrix<double>::AddCols", c_interface, 209);
  EXPECT_EQ(m, Counting(2, 3));
}

TEST(Matrix, MoreRowsOrColumnsThanCanBeCountedAreRefused) {
  Matrix flat(c_most - 1, 0), thin(0, c_most - 1);
  ExpectError<CExBadParam>([&] { flat.AddRows(Matrix(2, 0)); },
                           "A matrix of 18446744073709551614 and 2 more rows is too large.",
                           "ORVA::IMatrix<double>::AddRows", c_interface);
  ExpectError<CExBadParam>([&] { thin.AddCols(Matrix(0, 2)); },
                           "A matrix of 18446744073709551614 and 2 more columns is too large.",
                           "ORVA::IMatrix<double>::AddCols", c_interface);
  EXPECT_EQ(flat.Rows(), c_most - 1);
  EXPECT_EQ(thin.Cols(), c_most - 1);
  flat.AddRows(Matrix(1, 0));
  EXPECT_EQ(flat.Rows(), c_most);
}

TEST(Matrix, OperandMayBeTheMatrixItself) {
  Matrix a = Counting(2, 2);
  a *= a;
  EXPECT_EQ(a, Make(2, 2, {7, 10, 15, 22}));
  a = Counting(2, 2);
  a.AddRows(a);
  EXPECT_EQ(a, Make(4, 2, {1, 2, 3, 4, 1, 2, 3, 4}));
  a = Counting(2, 2);
  a.AddCols(a);
  EXPECT_EQ(a, Make(2, 4, {1, 2, 1, 2, 3, 4, 3, 4}));
  Matrix const& itself = a;
  a -= itself;
  EXPECT_EQ(a, Matrix(2, 4));
  Matrix scaled = Counting(2, 2);
  scaled *= scaled(1, 1);
  EXPECT_EQ(scaled, Make(2, 2, {4, 8, 12, 16}));
}

TEST(Matrix, OperandMayShareTheStorage) {
  Matrix a = Counting(2, 3);
  a *= CTransposedView(a);
  EXPECT_EQ(a, Make(2, 2, {14, 32, 32, 77}));
}

TEST(Matrix, ArithmeticNeedsOnlyTheInterface) {
  Matrix storage = Counting(2, 3);
  CTransposedView view(storage);
  EXPECT_TRUE(view == Make(3, 2, {1, 4, 2, 5, 3, 6}));
  view += 1.0;
  view *= Make(2, 2, {0, 1, 1, 0}); // swaps the columns of the view, the rows of the storage
  EXPECT_EQ(storage, Make(2, 3, {5, 6, 7, 2, 3, 4}));
  view = Counting(1, 4);
  EXPECT_EQ(storage, Counting(4, 1));
  EXPECT_EQ(Counting(1, 1) * view, Counting(1, 4));
}

TEST(Matrix, AssignTakesTheOthersShapeWhereAssignmentKeepsStaleColumns) {
  CMatrix<double> a(2, 3), b(3, 2);
  for (uint64 r = 0; r < 2; ++r)
    for (uint64 c = 0; c < 3; ++c) a(r, c) = static_cast<double>(1 + r * 3 + c), b(c, r) = 1;
  CMatrix<double> stale = a, whole = a;
  stale = a * b;
  EXPECT_EQ(stale.Cols(), 3u);
  EXPECT_EQ(stale(1, 2), 6) << "the last column stays";
  whole.Assign(a * b);
  EXPECT_EQ(whole, a * b);
  EXPECT_EQ(whole.Cols(), 2u);

  CMatrix<double> wide(2, 4);
  IMatrix<double> const& source = wide;
  whole.Assign(source);
  EXPECT_EQ(whole, wide);
  whole.Assign(whole);
  EXPECT_EQ(whole, wide) << "of itself";
}

TEST(Matrix, SwapExchangesMatricesOfAnyShape) {
  CMatrix<double> small(2, 2), large(5, 5), none;
  small(1, 1) = 4;
  large(4, 4) = 25;
  CMatrix<double> const wasSmall = small, wasLarge = large;
  small.Swap(large);
  EXPECT_EQ(small, wasLarge);
  EXPECT_EQ(large, wasSmall);
  small.Swap(small);
  EXPECT_EQ(small, wasLarge);
  small.Swap(none);
  EXPECT_EQ(small.Rows(), 0u);
  EXPECT_EQ(none, wasLarge);
}
