// A dense matrix of doubles, row by row in one block.
//
//   CMatrix<double> a(2, 3);                   // zeros
//   a(1, 2) = 4.0;
//   CMatrix<double> b = a;
//   b.Transpose();
//   CMatrix<double> const c = a * b;           // 2 x 2
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/MatrixInterface.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace ORVA {

namespace Impl {

/// A vector of doubles whose first nine stand in the object itself, so that rotations, by far the
/// most frequent matrices, never touch the heap.
class SELUUTILS_EXPORT CMatrixElements {
public:
  static constexpr std::size_t c_inside = 9;

  CMatrixElements() = default;
  CMatrixElements(CMatrixElements const&) = default;
  CMatrixElements(CMatrixElements&& other) noexcept
      : m_outside(std::move(other.m_outside)), m_inside(other.m_inside),
        m_size(std::exchange(other.m_size, 0)) {}
  CMatrixElements& operator=(CMatrixElements const&) = default;
  ~CMatrixElements() = default;

  [[nodiscard]] std::size_t Size() const noexcept { return m_size; }
  [[nodiscard]] double* Data() noexcept {
    return m_size <= c_inside ? m_inside.data() : m_outside.data();
  }
  [[nodiscard]] double const* Data() const noexcept {
    return m_size <= c_inside ? m_inside.data() : m_outside.data();
  }
  /// Elements up to the smaller size stay, new ones are 0.
  void Resize(std::size_t size);

private:
  // The vector comes first: memberwise assignment then fails, if at all, before anything changed.
  std::vector<double> m_outside; // empty up to nine elements, else all of them
  std::array<double, c_inside> m_inside{};
  std::size_t m_size = 0;
};

[[noreturn]] SELUUTILS_EXPORT void RaiseMatrixIndex(bool readOnly, uint64 row, uint64 col,
                                                    uint64 rows, uint64 cols);
[[noreturn]] SELUUTILS_EXPORT void RaiseMatrixProduct();

} // namespace Impl

/// The dense, row-major matrix: element (r, c) stands at index r * Cols() + c of Elements(). Up to
/// nine elements need no heap. A default matrix is 0 x 0. Copies are deep; a matrix that another
/// was constructed from by move is 0 x 0.
///
/// Element access is checked and inline: an index out of range throws CException that names index
/// and shape. More elements than memory can address are refused with CExBadParam.
template <class T>
class SELUUTILS_EXPORT CMatrix : public IMatrix<T> {
public:
  CMatrix() = default;
  CMatrix(uint64 rows, uint64 cols) { Resize(rows, cols); }
  CMatrix(CMatrix const&) = default;
  CMatrix(CMatrix&& other) noexcept
      : IMatrix<T>(other), m_nRows(std::exchange(other.m_nRows, 0)),
        m_nCols(std::exchange(other.m_nCols, 0)), m_vData(std::move(other.m_vData)) {}
  ~CMatrix() override = default;

  /// The same as the base's assignment, its treatment of unequal shapes included.
  CMatrix& operator=(CMatrix const& other) {
    if (m_nRows == other.m_nRows && m_nCols != other.m_nCols) {
      IMatrix<T>::operator=(other);
      return *this;
    }
    m_vData = other.m_vData;
    m_nRows = other.m_nRows;
    m_nCols = other.m_nCols;
    return *this;
  }
  using IMatrix<T>::operator=;

  [[nodiscard]] uint64 Rows() const final { return m_nRows; }
  [[nodiscard]] uint64 Cols() const final { return m_nCols; }

  [[nodiscard]] T& operator()(uint64 row, uint64 col) final {
    if (row >= m_nRows || col >= m_nCols) [[unlikely]]
      Impl::RaiseMatrixIndex(false, row, col, m_nRows, m_nCols);
    return m_vData.Data()[row * m_nCols + col];
  }
  [[nodiscard]] T operator()(uint64 row, uint64 col) const final {
    if (row >= m_nRows || col >= m_nCols) [[unlikely]]
      Impl::RaiseMatrixIndex(true, row, col, m_nRows, m_nCols);
    return m_vData.Data()[row * m_nCols + col];
  }

  void Resize(uint64 rows, uint64 cols) final;

  /// The product as a new matrix; throws CException unless Cols() == other.Rows().
  [[nodiscard]] CMatrix operator*(IMatrix<T> const& other) const {
    if (m_nCols != other.Rows()) Impl::RaiseMatrixProduct();
    CMatrix result(*this);
    result *= other;
    return result;
  }

  /// All elements, row by row, unchecked; valid until the next change of shape.
  [[nodiscard]] std::span<T> Elements() noexcept { return {m_vData.Data(), m_vData.Size()}; }
  [[nodiscard]] std::span<T const> Elements() const noexcept {
    return {m_vData.Data(), m_vData.Size()};
  }

private:
  uint64 m_nRows = 0;
  uint64 m_nCols = 0;
  Impl::CMatrixElements m_vData; // m_nRows * m_nCols elements
};

extern template class CMatrix<double>;

} // namespace ORVA
