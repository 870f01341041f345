#include <SeluUtils/RealWindow.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>

namespace ORVA {

namespace {

int64 Whole(double rounded) {
  if (!(std::abs(rounded) <= 0x1p62))
    Impl::RaiseBadParam(ORVA_LOCATION("src/Utils/ImageWalker", "ORVA::RealWindow"),
                        CString("box coordinate %1 is not from -2^62 to 2^62").Arg(rounded));
  return static_cast<int64>(rounded);
}

int64 First(double low, EnBoundary boundary) {
  return boundary == EnBoundary::Open ? Whole(std::floor(low)) + 1 : Whole(std::ceil(low));
}

int64 Last(double high, EnBoundary boundary) {
  return boundary == EnBoundary::Closed ? Whole(std::floor(high)) : Whole(std::ceil(high)) - 1;
}

} // namespace

CWindowVisitor RealWindow(CTriple<double> low, CTriple<double> high, EnBoundary boundary) {
  CTriple<int64> const first(First(low.x, boundary), First(low.y, boundary),
                             First(low.z, boundary));
  CTriple<int64> const last(Last(high.x, boundary), Last(high.y, boundary), Last(high.z, boundary));
  bool const isEmpty = first.x > last.x || first.y > last.y || first.z > last.z;
  return isEmpty ? CWindowVisitor({0, 0, 0}, {-1, -1, -1}) : CWindowVisitor(first, last);
}

} // namespace ORVA
