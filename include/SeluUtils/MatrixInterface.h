// Arithmetic of dense matrices over any storage: derive, give element access, and the rest is
// there.
//
//   #include <SeluUtils/Matrix.h>
//   auto const stack = [](IMatrix<double>& a, IMatrix<double> const& below) { a.AddRows(below); };
//   CMatrix<double> a(2, 3);
//   stack(a, a);                               // 4 x 3
//   a *= 2.0;
#pragma once

#include <SeluUtils/Export.h>
#include <pxlib2core/Types.h>

namespace ORVA {

/// Base of the dense matrices, instantiated for double. Every operation with a body is written in
/// terms of Rows, Cols, the element accessors and Resize alone; an operand may be the matrix itself
/// and is then read as it was. Operands of unfitting shape raise CException before anything
/// changes. Costs are linear in the elements, the product O(rows * inner * cols); operations that
/// change the shape copy the elements once.
template <class T>
class SELUUTILS_EXPORT IMatrix {
public:
  virtual ~IMatrix();

  /// Number of rows.
  [[nodiscard]] virtual uint64 Rows() const = 0;
  /// Number of columns.
  [[nodiscard]] virtual uint64 Cols() const = 0;

  /// Copies the elements one by one. The shape is taken over only where the numbers of rows differ
  /// (or all agrees): with equal rows, a source with more columns ends in the index error of the
  /// element access, and one with fewer leaves the last columns as they are.
  // NOLINTNEXTLINE(misc-unconventional-assign-operator): through the base, any storage into any
  virtual IMatrix& operator=(IMatrix const& other);

  /// Exact equality of shape and elements; a matrix equals itself even with NaN in it, and nothing
  /// else with NaN in it.
  [[nodiscard]] virtual bool operator==(IMatrix const& other) const;

  /// Element access; throws CException outside the matrix.
  [[nodiscard]] virtual T& operator()(uint64 row, uint64 col) = 0;
  [[nodiscard]] virtual T operator()(uint64 row, uint64 col) const = 0;

  /// Matrix product in place; each sum runs in the order of the inner index.
  virtual IMatrix& operator*=(IMatrix const& other);
  virtual IMatrix& operator*=(T factor);
  /// Adds the other matrix, element by element.
  virtual IMatrix& operator+=(IMatrix const& other);
  /// Adds the scalar to every element.
  virtual IMatrix& operator+=(T summand);
  /// Turns rows into columns.
  virtual IMatrix& Transpose();
  /// Subtracts the other matrix, element by element.
  virtual IMatrix& operator-=(IMatrix const& other);
  /// Appends the other's rows below. CExBadParam for more rows than 64 bits can count.
  virtual IMatrix& AddRows(IMatrix const& other);
  /// Appends the other's columns on the right. CExBadParam for more columns than 64 bits can count.
  virtual IMatrix& AddCols(IMatrix const& other);

  /// New shape; elements keep their place in row-major order, so another number of columns
  /// scrambles what stood in the matrix. New elements are 0.
  virtual void Resize(uint64 rows, uint64 cols) = 0;

protected:
  IMatrix() = default;
  IMatrix(IMatrix const&) = default;
};

extern template class IMatrix<double>;

} // namespace ORVA
