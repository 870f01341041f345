#include "Utils/ExactReal.h"

#include <SeluUtils/EllipsoidVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/EllipsoidVisitor";
constexpr char c_constructor[] = "ORVA::CEllipsoidVisitor::CEllipsoidVisitor";

void CheckAxis(double center, double semiAxis) {
  if (!(std::abs(center) <= 0x1p30))
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, c_constructor),
        CString("center coordinate %1 is not from -1073741824 to 1073741824").Arg(center));
  if (!(semiAxis >= 0x1p-30 && semiAxis <= 0x1p30))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_constructor),
                        CString("semi-axis %1 is not from 2^-30 to 2^30").Arg(semiAxis));
}

double Square(double value) { return value * value; }

class CEllipsoid {
public:
  CEllipsoid(CTriple<double> const& center, CTriple<double> const& semiAxes, bool border)
      : m_Center(center), m_Axes(semiAxes),
        m_Inverse(1 / semiAxes.x, 1 / semiAxes.y, 1 / semiAxes.z), m_HasBorder(border) {}

  Impl::StRegion Fill() const {
    CTriple<int64> const middle(Nearest(m_Center.x), Nearest(m_Center.y), Nearest(m_Center.z));
    Impl::StRegion region{
        {Before(m_Center.x, m_Axes.x), Before(m_Center.y, m_Axes.y), Before(m_Center.z, m_Axes.z)},
        {}};
    if (!Has(middle)) return region;
    auto const [low, high] = Range(middle, &CTriple<int64>::z, m_Center.z, m_Axes.z);
    for (int64 z = low; z <= high; ++z) FillSlice({middle.x, middle.y, z}, region);
    return region;
  }

private:
  // Of all points along an axis the nearest to the center is in it, if any is.
  static int64 Nearest(double value) { return static_cast<int64>(std::round(value)); }
  static int64 Before(double center, double semiAxis) {
    return static_cast<int64>(std::floor(center - semiAxis)) - 1;
  }

  void FillSlice(CTriple<int64> const& middle, Impl::StRegion& region) const {
    auto const [low, high] = Range(middle, &CTriple<int64>::y, m_Center.y, m_Axes.y);
    for (int64 y = low; y <= high; ++y) {
      auto const [first, last] =
          Range({middle.x, y, middle.z}, &CTriple<int64>::x, m_Center.x, m_Axes.x);
      region.rows.push_back({Offset(middle.z, region.origin.z), Offset(y, region.origin.y),
                             Offset(first, region.origin.x), Offset(last, region.origin.x)});
    }
  }
  static std::uint32_t Offset(int64 place, int64 origin) {
    return static_cast<std::uint32_t>(place - origin);
  }

  struct StRange {
    int64 low, high;
  };
  // The points of a line along an axis; `inside` is one of them.
  [[nodiscard]] StRange Range(CTriple<int64> const& inside, int64 CTriple<int64>::*axis,
                              double center, double semiAxis) const {
    double const rest =
        1 - (Sum(inside) - Square(static_cast<double>(inside.*axis) - center) / Square(semiAxis));
    double const half = semiAxis * std::sqrt(std::max(rest, 0.0));
    return {End(inside, axis, static_cast<int64>(std::ceil(center - half)), -1),
            End(inside, axis, static_cast<int64>(std::floor(center + half)), 1)};
  }

  // The last point of a line in one direction, looked for from a guess on.
  [[nodiscard]] int64 End(CTriple<int64> const& inside, int64 CTriple<int64>::*axis, int64 guess,
                          int64 step) const {
    CTriple<int64> p = inside;
    if ((guess - p.*axis) * step > 0) p.*axis = guess;
    if (Has(p)) {
      do p.*axis += step;
      while (Has(p));
      return p.*axis - step;
    }
    do p.*axis -= step;
    while (!Has(p));
    return p.*axis;
  }

  [[nodiscard]] double Sum(CTriple<int64> const& p) const {
    return Square((static_cast<double>(p.x) - m_Center.x) * m_Inverse.x) +
           Square((static_cast<double>(p.y) - m_Center.y) * m_Inverse.y) +
           Square((static_cast<double>(p.z) - m_Center.z) * m_Inverse.z);
  }

  [[nodiscard]] bool Has(CTriple<int64> const& p) const {
    // Each term has a relative error of at most 7 * 2^-53, their sum 2 more.
    double const sum = Sum(p);
    if (std::abs(sum - 1) > (sum + 1) * 0x1p-48) [[likely]]
      return sum < 1;
    int const side = Side(p);
    return m_HasBorder ? side <= 0 : side < 0;
  }

  // The sign of the sum less 1, both times the square of all semi-axes.
  [[nodiscard]] int Side(CTriple<int64> const& p) const {
    using Impl::CExactReal;
    CExactReal const a(m_Axes.x), b(m_Axes.y), c(m_Axes.z);
    auto const square = [](CExactReal const& value) { return value * value; };
    auto const difference = [](int64 place, double center) {
      return CExactReal(static_cast<double>(place)) - CExactReal(center);
    };
    return (square(difference(p.x, m_Center.x) * b * c) +
            square(difference(p.y, m_Center.y) * a * c) +
            square(difference(p.z, m_Center.z) * a * b) - square(a * b * c))
        .Sign();
  }

  CTriple<double> m_Center, m_Axes, m_Inverse;
  bool m_HasBorder;
};

Impl::StRegion Fill(CTriple<double> const& center, CTriple<double> const& semiAxes, bool border) {
  CheckAxis(center.x, semiAxes.x);
  CheckAxis(center.y, semiAxes.y);
  CheckAxis(center.z, semiAxes.z);
  return CEllipsoid(center, semiAxes, border).Fill();
}

} // namespace

CEllipsoidVisitor::CEllipsoidVisitor(CTriple<double> center, CTriple<double> semiAxes, bool border)
    : CRunVisitor(Fill(center, semiAxes, border)) {}

} // namespace ORVA
