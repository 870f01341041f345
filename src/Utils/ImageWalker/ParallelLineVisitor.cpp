#include <SeluUtils/ParallelLineVisitor.h>

#include "Utils/ImageWalker/Direction.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/ImageWalker";

} // namespace

CParallelLineVisitor::CParallelLineVisitor(CTriple<double> direction) { SetDirection(direction); }

void CParallelLineVisitor::SetImageSize(CTriple<int64> extents) {
  auto const lineExtents = Impl::MainAxisFirst(m_Axis, extents);
  m_ImageSize = extents; // for the next direction, whatever becomes of the lines
  m_Lines.SetImageSize(lineExtents);
  auto const last = [](int64 sign, int64 extent) {
    return sign < 0 && extent > 0 ? extent - 1 : 0;
  };
  m_Origin = {last(m_Signs.x, lineExtents.x), last(m_Signs.y, lineExtents.y),
              last(m_Signs.z, lineExtents.z)};
}

void CParallelLineVisitor::SetDirection(CTriple<double> direction) {
  if (!Impl::IsFinite(direction) || direction == CTriple<double>())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CParallelLineVisitor::SetDirection"),
                        CString("direction (%1, %2, %3) points nowhere")
                            .Arg(direction.x, 6)
                            .Arg(direction.y, 6)
                            .Arg(direction.z, 6));
  int64 const axis = Impl::LargestAxis(direction);
  auto const d = Impl::MainAxisFirst(axis, direction);
  // With a main component of 1 the line is never shorter than the image.
  CDeltaVisitor lines({1, std::abs(d.y / d.x), std::abs(d.z / d.x)});
  m_Lines = std::move(lines);
  m_Axis = axis;
  m_Signs = {d.x < 0 ? -1 : 1, d.y < 0 ? -1 : 1, d.z < 0 ? -1 : 1};
  SetImageSize(m_ImageSize);
}

} // namespace ORVA
