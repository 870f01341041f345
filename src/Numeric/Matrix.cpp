#include <SeluUtils/Matrix.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <limits>
#include <string>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Numeric/Matrix";
constexpr uint64 c_mostElements = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double);

CString Number(uint64 number) { return {std::to_string(number)}; }

} // namespace

namespace Impl {

void CMatrixElements::Resize(std::size_t size) {
  std::size_t const kept = std::min(size, m_Size);
  if (size > c_inside) {
    if (m_Size <= c_inside) {
      std::vector<double> moved(size);
      std::copy_n(m_Inside.begin(), kept, moved.begin());
      m_Outside = std::move(moved);
    } else {
      m_Outside.resize(size);
    }
  } else {
    if (m_Size > c_inside) {
      std::copy_n(m_Outside.begin(), kept, m_Inside.begin());
      m_Outside = {};
    }
    std::fill(m_Inside.begin() + static_cast<std::ptrdiff_t>(kept), m_Inside.end(), 0.0);
  }
  m_Size = size;
}

} // namespace Impl

template <class T>
void CMatrix<T>::Resize(uint64 rows, uint64 cols) {
  if (cols != 0 && rows > c_mostElements / cols)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CMatrix<double>::Resize"),
        CString("A matrix of %1-by-%2 elements is too large.").Arg(Number(rows)).Arg(Number(cols)));
  m_Data.Resize(rows * cols);
  m_Rows = rows;
  m_Cols = cols;
}

template <class T>
void CMatrix<T>::RaiseIndex(bool readOnly, uint64 row, uint64 col) const {
  // The two accessors differ by a blank; callers compare the texts.
  CString message(readOnly ? "Index exceeds matrix bounds. Tried to access index (%1,%2) but "
                             "Matrix size is %3-by-%4"
                           : "Index exceeds matrix bounds.Tried to access index (%1,%2) but "
                             "Matrix size is %3-by-%4");
  message.Arg(Number(row)).Arg(Number(col)).Arg(Number(m_Rows)).Arg(Number(m_Cols));
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CMatrix<double>::operator ()"), message);
}

template <class T>
void CMatrix<T>::RaiseProduct() {
  Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CMatrix<double>::operator *").AtLine(124),
              "Trying to multiply non-conform matrices.");
}

template class CMatrix<double>;

} // namespace ORVA
