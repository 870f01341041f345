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
      : m_Outside(std::move(other.m_Outside)), m_Inside(other.m_Inside),
        m_Size(std::exchange(other.m_Size, 0)) {}
  CMatrixElements& operator=(CMatrixElements const&) = default;
  void Swap(CMatrixElements& other) noexcept {
    m_Outside.swap(other.m_Outside);
    m_Inside.swap(other.m_Inside);
    std::swap(m_Size, other.m_Size);
  }
  ~CMatrixElements() = default;

  [[nodiscard]] std::size_t Size() const noexcept { return m_Size; }
  [[nodiscard]] double* Data() noexcept {
    return m_Size <= c_inside ? m_Inside.data() : m_Outside.data();
  }
  [[nodiscard]] double const* Data() const noexcept {
    return m_Size <= c_inside ? m_Inside.data() : m_Outside.data();
  }
  /// Elements up to the smaller size stay, new ones are 0.
  void Resize(std::size_t size);

private:
  // The vector comes first: memberwise assignment then fails, if at all, before anything changed.
  std::vector<double> m_Outside; // empty up to nine elements, else all of them
  std::array<double, c_inside> m_Inside{};
  std::size_t m_Size = 0;
};

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
      : IMatrix<T>(other), m_Rows(std::exchange(other.m_Rows, 0)),
        m_Cols(std::exchange(other.m_Cols, 0)), m_Data(std::move(other.m_Data)) {}
  ~CMatrix() override = default;

  /// The same as the base's assignment, its treatment of unequal shapes included: where the rows
  /// agree and the columns do not, a wider matrix keeps its last columns, as in a = a * b with a
  /// narrower product, and a narrower one throws. Assign takes the other's shape.
  CMatrix& operator=(CMatrix const& other) {
    if (m_Rows == other.m_Rows && m_Cols != other.m_Cols) {
      IMatrix<T>::operator=(other);
      return *this;
    }
    m_Data = other.m_Data;
    m_Rows = other.m_Rows;
    m_Cols = other.m_Cols;
    return *this;
  }
  using IMatrix<T>::operator=;
  /// Becomes the other matrix, shape and elements: a.Assign(a * b). Changes nothing where memory
  /// fails.
  void Assign(IMatrix<T> const& other) {
    CMatrix copy(other.Rows(), other.Cols());
    for (uint64 r = 0; r < copy.m_Rows; ++r)
      for (uint64 c = 0; c < copy.m_Cols; ++c) copy(r, c) = other(r, c);
    Swap(copy);
  }
  void Assign(CMatrix&& other) noexcept { Swap(other); }
  /// Exchanges shapes and elements, whatever the shapes.
  void Swap(CMatrix& other) noexcept {
    std::swap(m_Rows, other.m_Rows);
    std::swap(m_Cols, other.m_Cols);
    m_Data.Swap(other.m_Data);
  }

  [[nodiscard]] uint64 Rows() const final { return m_Rows; }
  [[nodiscard]] uint64 Cols() const final { return m_Cols; }

  [[nodiscard]] T& operator()(uint64 row, uint64 col) final {
    if (row >= m_Rows || col >= m_Cols) [[unlikely]]
      RaiseIndex(false, row, col);
    return m_Data.Data()[row * m_Cols + col];
  }
  [[nodiscard]] T operator()(uint64 row, uint64 col) const final {
    if (row >= m_Rows || col >= m_Cols) [[unlikely]]
      RaiseIndex(true, row, col);
    return m_Data.Data()[row * m_Cols + col];
  }

  void Resize(uint64 rows, uint64 cols) final;

  /// The product as a new matrix; throws CException unless Cols() == other.Rows().
  [[nodiscard]] CMatrix operator*(IMatrix<T> const& other) const {
    if (m_Cols != other.Rows()) RaiseProduct();
    CMatrix result(*this);
    result *= other;
    return result;
  }

  /// All elements, row by row, unchecked; valid until the next change of shape.
  [[nodiscard]] std::span<T> Elements() noexcept { return {m_Data.Data(), m_Data.Size()}; }
  [[nodiscard]] std::span<T const> Elements() const noexcept {
    return {m_Data.Data(), m_Data.Size()};
  }

private:
  [[noreturn]] void RaiseIndex(bool readOnly, uint64 row, uint64 col) const;
  [[noreturn]] static void RaiseProduct();

  uint64 m_Rows = 0;
  uint64 m_Cols = 0;
  Impl::CMatrixElements m_Data; // m_Rows * m_Cols elements
};

extern template class CMatrix<double>;

} // namespace ORVA
