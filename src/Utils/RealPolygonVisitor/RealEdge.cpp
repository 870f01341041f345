#include "Utils/RealPolygonVisitor/RealEdge.h"

#include "Utils/Exact.h"
#include "Utils/ExactReal.h"

#include <cmath>

namespace ORVA::Impl {

namespace {

constexpr double c_fixedScale = 0x1p30;

bool IsFixed(CTriple<double> const& p) {
  auto const isWhole = [](double value) { return std::trunc(value) == value; };
  return isWhole(p.x * c_fixedScale) && isWhole(p.y * c_fixedScale);
}

int128 Fixed(double value) { return static_cast<int64>(value * c_fixedScale); }

} // namespace

// Five operations, each of relative error 2^-53, on numbers no larger than the sum of the ends'.
// The second term is for results near the end of the exponent's range, where errors are absolute.
CRealEdge::CRealEdge(CTriple<double> const& a, CTriple<double> const& b) noexcept
    : m_A(a), m_B(b), m_Uncertainty((std::abs(a.x) + std::abs(b.x)) * 0x1p-48 + 0x1p-900),
      m_IsFixed(IsFixed(a) && IsFixed(b)) {}

StRealCrossing CRealEdge::At(int64 y) const {
  auto const row = static_cast<double>(y);
  double const x = m_A.x + (row - m_A.y) / (m_B.y - m_A.y) * (m_B.x - m_A.x);
  double const nearest = std::floor(x + 0.5);
  auto const place = static_cast<int64>(nearest);
  if (x - nearest > m_Uncertainty) return {place + 1, false};
  if (nearest - x > m_Uncertainty) return {place, false};
  int const side = Side(nearest, row);
  return {side > 0 ? place + 1 : place, side == 0};
}

// The sign of (a.x - x) (b.y - a.y) + (y - a.y) (b.x - a.x).
int CRealEdge::Side(double x, double y) const {
  if (m_IsFixed) {
    int128 const ax = Fixed(m_A.x), ay = Fixed(m_A.y);
    int128 const side =
        (ax - Fixed(x)) * (Fixed(m_B.y) - ay) + (Fixed(y) - ay) * (Fixed(m_B.x) - ax);
    return side > 0 ? 1 : side < 0 ? -1 : 0;
  }
  CExactReal const ax(m_A.x), ay(m_A.y);
  return ((ax - CExactReal(x)) * (CExactReal(m_B.y) - ay) +
          (CExactReal(y) - ay) * (CExactReal(m_B.x) - ax))
      .Sign();
}

} // namespace ORVA::Impl
