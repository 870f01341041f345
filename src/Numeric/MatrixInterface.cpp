#include <SeluUtils/MatrixInterface.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <string>
#include <vector>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Numeric/MatrixInterface";

CString Number(uint64 number) { return {std::to_string(number)}; }

template <class T>
[[noreturn]] void RaiseShapes(Impl::StExLocation const& where, char const* message,
                              IMatrix<T> const& a, IMatrix<T> const& b) {
  Impl::Raise(where, CString(message)
                         .Arg(Number(a.Rows()))
                         .Arg(Number(a.Cols()))
                         .Arg(Number(b.Rows()))
                         .Arg(Number(b.Cols())));
}

// Row by row; a matrix without columns takes no time, however many rows it claims.
template <class Visit>
void ForEachElement(uint64 rows, uint64 cols, Visit visit) {
  if (cols == 0) return;
  for (uint64 r = 0; r < rows; ++r)
    for (uint64 c = 0; c < cols; ++c) visit(r, c);
}

[[noreturn]] void RaiseTooLarge(Impl::StExLocation const& where, uint64 had, uint64 added,
                                char const* what) {
  CString message("A matrix of %1 and %2 more %3 is too large.");
  Impl::RaiseBadParam(where, message.Arg(Number(had)).Arg(Number(added)).Arg(what));
}

// The elements row by row, taken before an operation changes the matrix or its operand.
template <class T>
std::vector<T> Snapshot(IMatrix<T> const& matrix) {
  std::vector<T> elements;
  elements.reserve(matrix.Rows() * matrix.Cols());
  ForEachElement(matrix.Rows(), matrix.Cols(),
                 [&](uint64 r, uint64 c) { elements.push_back(matrix(r, c)); });
  return elements;
}

} // namespace

template <class T>
IMatrix<T>::~IMatrix() = default;

// NOLINTBEGIN(misc-unconventional-assign-operator)
template <class T>
IMatrix<T>& IMatrix<T>::operator=(IMatrix const& other) {
  // NOLINTEND(misc-unconventional-assign-operator)
  uint64 const rows = other.Rows();
  uint64 const cols = other.Cols();
  // Equal rows with unequal columns keep this matrix's shape: stored code relies on it.
  if (rows != Rows() || cols == Cols()) Resize(rows, cols);
  ForEachElement(rows, cols, [&](uint64 r, uint64 c) { (*this)(r, c) = other(r, c); });
  return *this;
}

template <class T>
bool IMatrix<T>::operator==(IMatrix const& other) const {
  if (this == &other) return true;
  if (Rows() != other.Rows() || Cols() != other.Cols()) return false;
  if (Cols() == 0) return true;
  for (uint64 r = 0; r < Rows(); ++r)
    for (uint64 c = 0; c < Cols(); ++c)
      if ((*this)(r, c) != other(r, c)) return false;
  return true;
}

template <class T>
IMatrix<T>& IMatrix<T>::operator*=(IMatrix const& other) {
  uint64 const rows = Rows();
  uint64 const inner = Cols();
  uint64 const cols = other.Cols();
  if (inner != other.Rows())
    RaiseShapes(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::operator *=").AtLine(85),
                "Tried to multiply %1-by-%2 *= %3-by-%4 matrices", *this, other);
  auto const left = Snapshot(*this);
  auto const right = Snapshot(other);
  Resize(rows, cols);
  ForEachElement(rows, cols, [&](uint64 r, uint64 c) {
    T sum = 0;
    for (uint64 k = 0; k < inner; ++k) sum += left[r * inner + k] * right[k * cols + c];
    (*this)(r, c) = sum;
  });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::operator*=(T factor) {
  ForEachElement(Rows(), Cols(), [&](uint64 r, uint64 c) { (*this)(r, c) *= factor; });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::operator+=(IMatrix const& other) {
  if (Rows() != other.Rows() || Cols() != other.Cols())
    RaiseShapes(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::operator +=").AtLine(130),
                "Tried to add %1-by-%2 and %3-by-%4 matrices", *this, other);
  ForEachElement(Rows(), Cols(), [&](uint64 r, uint64 c) { (*this)(r, c) += other(r, c); });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::operator+=(T summand) {
  ForEachElement(Rows(), Cols(), [&](uint64 r, uint64 c) { (*this)(r, c) += summand; });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::Transpose() {
  uint64 const rows = Rows();
  uint64 const cols = Cols();
  auto const old = Snapshot(*this);
  Resize(cols, rows);
  ForEachElement(cols, rows, [&](uint64 r, uint64 c) { (*this)(r, c) = old[c * cols + r]; });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::operator-=(IMatrix const& other) {
  if (Rows() != other.Rows() || Cols() != other.Cols())
    RaiseShapes(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::operator -=").AtLine(145),
                "Tried to subtract %1-by-%2 and %3-by-%4 matrices", *this, other);
  ForEachElement(Rows(), Cols(), [&](uint64 r, uint64 c) { (*this)(r, c) -= other(r, c); });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::AddRows(IMatrix const& other) {
  uint64 const rows = Rows();
  uint64 const cols = Cols();
  uint64 const added = other.Rows();
  if (other.Cols() != cols)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::AddRows").AtLine(176),
                CString("Tried to concatenate %1-dim rows to %2-dim rows")
                    .Arg(Number(other.Cols()))
                    .Arg(Number(cols)));
  if (rows + added < rows) // a matrix without columns may have any number of rows
    RaiseTooLarge(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::AddRows"), rows, added, "rows");
  auto const above = Snapshot(*this);
  auto const below = Snapshot(other);
  Resize(rows + added, cols);
  ForEachElement(rows, cols, [&](uint64 r, uint64 c) { (*this)(r, c) = above[r * cols + c]; });
  ForEachElement(added, cols,
                 [&](uint64 r, uint64 c) { (*this)(rows + r, c) = below[r * cols + c]; });
  return *this;
}

template <class T>
IMatrix<T>& IMatrix<T>::AddCols(IMatrix const& other) {
  uint64 const rows = Rows();
  uint64 const cols = Cols();
  uint64 const added = other.Cols();
  if (other.Rows() != rows)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::AddCols").AtLine(209),
                CString("Tried to concatenate %1-dim Cols to %2-dim Cols")
                    .Arg(Number(other.Rows()))
                    .Arg(Number(rows)));
  if (cols + added < cols)
    RaiseTooLarge(ORVA_LOCATION(c_module, "ORVA::IMatrix<double>::AddCols"), cols, added,
                  "columns");
  auto const left = Snapshot(*this);
  auto const right = Snapshot(other);
  Resize(rows, cols + added);
  ForEachElement(rows, cols, [&](uint64 r, uint64 c) { (*this)(r, c) = left[r * cols + c]; });
  ForEachElement(rows, added,
                 [&](uint64 r, uint64 c) { (*this)(r, cols + c) = right[r * added + c]; });
  return *this;
}

template class IMatrix<double>;

} // namespace ORVA
