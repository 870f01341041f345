#include <SeluUtils/WindowVisitor.h>

#include <pxlib2core/Exception.h>

namespace ORVA {

void CWindowVisitor::RaisePointOutsideWindow() {
  Impl::Raise(ORVA_LOCATION("src/Utils/ImageWalker", "ORVA::CWindowVisitor::NextPoint"),
              "Point outside Window in CWindowVisitor");
}

} // namespace ORVA
