#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2image/Size.h>

namespace ORVA {

void CSize::SetDim(int dimension) {
  if (dimension < 1 || dimension > 3)
    Impl::RaiseBadParam(ORVA_LOCATION("framework/pxlib2image/Size", "ORVA::CSize::SetDim"),
                        CString("image dimension %1 is not 1, 2 or 3").Arg(dimension));
  m_Dim = dimension;
  if (dimension < 3) z = 1;
  if (dimension < 2) y = 1;
}

} // namespace ORVA
