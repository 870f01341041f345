// The walks: digital lines, polygons, areas, planes, solids, boxes, sweeps.

#include "Arrays.h"
#include "Walks.h"
#include "Watch.h"

#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>
#include <SeluUtils/StraightLineVisitor.h>
#include <SeluUtils/UnitLineVisitor.h>
#include <SeluUtils/WindowVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CSize;
using ORVA::CString;
using ORVA::CTriple;
using ORVA::EnBoundary;
using ORVA::int64;
using CCorners = std::vector<CTriple<int64>>;
using CRealCorners = std::vector<CTriple<double>>;
using CShape = std::optional<CSize>;

constexpr char c_module[] = "python/src/Walk";

// The size of an image of that shape; none for None.
CShape ShapeGiven(py::handle shape, int dimension) {
  if (shape.is_none()) return std::nullopt;
  CSize const size = SizeOf(shape, dimension, "shape");
  if (size.x < 0 || size.y < 0 || size.z < 0)
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ShapeGiven"),
        CString("shape must not be negative, as in %1").Arg(TextOf(shape).c_str()));
  return size;
}

// Walkers that leave out themselves what lies outside.
template <class W>
CWalk Within(W walker, CShape const& shape, int dimension) {
  if (shape) walker.SetImageSize(CTriple<int64>(shape->x, shape->y, shape->z));
  return CWalk(std::move(walker), dimension);
}

// The others.
template <class W>
CWalk Clipped(W walker, CShape const& shape, int dimension) {
  CWalk walk(std::move(walker), dimension);
  if (shape) walk.Clip(*shape);
  return walk;
}

EnBoundary BoundaryOf(std::string const& name) {
  if (name == "closed") return EnBoundary::Closed;
  if (name == "half_open") return EnBoundary::HalfOpen;
  if (name == "open") return EnBoundary::Open;
  ORVA::Impl::RaiseBadParam(
      ORVA_LOCATION(c_module, "BoundaryOf"),
      CString("boundary must be \"closed\", \"half_open\" or \"open\", not \"%1\"")
          .Arg(name.c_str()));
}

void CheckLength(int64 from, int64 to) {
  int64 difference = 0;
  if (__builtin_sub_overflow(to, from, &difference) ||
      difference > std::numeric_limits<std::int32_t>::max() ||
      difference < -std::numeric_limits<std::int32_t>::max())
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "line"),
        CString("a line from %1 to %2 is longer than 2^31 - 1").Arg(from).Arg(to));
}

CWalk Line(py::object const& start, py::object const& end, int dimension, int64 neighborhood,
           bool hasEnds, py::object const& shape) {
  auto const from = PointOf(start, dimension, "start"), to = PointOf(end, dimension, "end");
  CheckLength(from.x, to.x);
  CheckLength(from.y, to.y);
  CheckLength(from.z, to.z);
  return Clipped(ORVA::CBresenhamVisitor(from, to, dimension, neighborhood, hasEnds),
                 ShapeGiven(shape, dimension), dimension);
}

CWalk Polygon(py::object const& outline, std::vector<py::object> const& holes, int dimension,
              int64 neighborhood, bool hasBorder, py::object const& shape) {
  std::vector<CCorners> inner;
  for (auto const& hole : holes) inner.push_back(PointsOf(hole, dimension, "holes"));
  auto const corners = PointsOf(outline, dimension, "outline");
  auto polygon = Unlocked(
      [&] { return ORVA::CPolygonVisitor(corners, inner, dimension, neighborhood, hasBorder); });
  return Clipped(std::move(polygon), ShapeGiven(shape, dimension), dimension);
}

CWalk RealPolygon(std::vector<py::object> const& outlines, std::string const& boundary,
                  py::object const& shape) {
  std::vector<CRealCorners> corners;
  for (auto const& outline : outlines) corners.push_back(RealPointsOf(outline, 2, "outline"));
  EnBoundary const included = BoundaryOf(boundary);
  auto polygon = Unlocked([&] { return ORVA::CRealPolygonVisitor(corners, included); });
  return Within(std::move(polygon), ShapeGiven(shape, 2), 2);
}

CWalk Area(py::object const& corners, int dimension, int64 neighborhood, bool hasBorder,
           py::object const& shape) {
  auto outline = PointsOf(corners, dimension, "corners");
  auto area = Unlocked([&] {
    return ORVA::CBresenhamAreaVisitor(std::move(outline), dimension, neighborhood, hasBorder);
  });
  return Clipped(std::move(area), ShapeGiven(shape, dimension), dimension);
}

CWalk Plane(py::object const& shape, py::object const& normal, double distance) {
  auto const n = RealPointsOf(normal, 3, "normal");
  if (n.size() != 1)
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "plane"),
        CString("normal must be three numbers, not %1").Arg(TextOf(normal).c_str()));
  return Within(ORVA::CPlaneSection(n[0], distance), ShapeGiven(shape, 3), 3);
}

CWalk PlaneThrough(py::object const& shape, py::object const& points) {
  auto const p = PointsOf(points, 3, "through");
  if (p.size() != 3)
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "plane"),
        CString("a plane goes through 3 points, not %1").Arg(static_cast<int64>(p.size())));
  return Within(ORVA::CPlaneSection(p[0], p[1], p[2]), ShapeGiven(shape, 3), 3);
}

CWalk Solid(py::object const& corners, std::vector<ORVA::CSolidVisitor::Face> const& faces,
            int64 neighborhood, bool hasBorder, std::optional<std::string> const& boundary,
            py::object const& shape) {
  auto const points = PointsOf(corners, 3, "corners");
  auto const size = ShapeGiven(shape, 3);
  std::optional<EnBoundary> included;
  if (boundary) included = BoundaryOf(*boundary);
  auto solid = Unlocked([&] {
    return included ? ORVA::CSolidVisitor(points, faces, *included)
                    : ORVA::CSolidVisitor(points, faces, neighborhood, hasBorder);
  });
  return Within(std::move(solid), size, 3);
}

CWalk Ellipsoid(py::object const& center, py::object const& semiAxes, bool hasBorder,
                py::object const& shape) {
  auto const c = RealPointsOf(center, 3, "center"), a = RealPointsOf(semiAxes, 3, "semi_axes");
  if (c.size() != 1 || a.size() != 1)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ellipsoid"),
                              "center and semi_axes must be three numbers each");
  auto solid = Unlocked([&] { return ORVA::CEllipsoidVisitor(c[0], a[0], hasBorder); });
  return Within(std::move(solid), ShapeGiven(shape, 3), 3);
}

CWalk Window(py::object const& start, py::object const& stop, int dimension,
             py::object const& shape) {
  auto const low = PointOf(start, dimension, "start"), end = PointOf(stop, dimension, "stop");
  CTriple<int64> high = end;
  bool const isEmpty = __builtin_sub_overflow(end.x, 1, &high.x) ||
                       __builtin_sub_overflow(end.y, 1, &high.y) ||
                       (dimension == 3 && __builtin_sub_overflow(end.z, 1, &high.z));
  ORVA::CWindowVisitor window =
      isEmpty ? ORVA::CWindowVisitor({1, 1, 1}, {0, 0, 0}) : ORVA::CWindowVisitor(low, high);
  return Within(std::move(window), ShapeGiven(shape, dimension), dimension);
}

CWalk UnitSweep(py::object const& shape, py::object const& direction, int dimension) {
  auto const size = ShapeGiven(shape, dimension);
  ORVA::CUnitLineVisitor lines({0, 0, 0}, {size->x - 1, size->y - 1, size->z - 1},
                               PointOf(direction, dimension, "direction"));
  return CWalk(std::move(lines), dimension);
}

CWalk Sweep(py::object const& shape, py::object const& direction, int dimension) {
  auto const d = RealPointsOf(direction, dimension, "direction");
  if (d.size() != 1)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "sweep"), "direction must be one vector");
  return Within(ORVA::CStraightLineVisitor(d[0]), ShapeGiven(shape, dimension), dimension);
}

} // namespace

void BindWalk(py::module_& module) {
  py::class_<CWalk>(
      module, "Walk",
      "The points of a walk, one after the other, as tuples in the order of the array's axes.\n\n"
      "Its length is the number of points still to come. One thread at a time may use it.\n\n"
      "Examples\n--------\n"
      ">>> from seluutils import walk\n"
      ">>> points = walk.line((0, 0), (1, 3))\n"
      ">>> next(points), len(points)\n"
      "((0, 0), 3)\n"
      ">>> points.take(2).tolist(), points.remaining\n"
      "([[0, 1], [1, 2]], 1)")
      .def("take", &CWalk::Take, py::arg("n"),
           "The next points, n at most, as an (n, d) array of int64.")
      .def("points", &CWalk::All, "All points that are left, as an (n, d) array of int64.")
      .def("rewind", &CWalk::Rewind, "Goes back to the first point.")
      .def_property_readonly("remaining", &CWalk::Remaining, "Number of points still to come.")
      .def_property_readonly("ndim", &CWalk::Dimension, "Number of coordinates of a point.")
      .def("__len__", &CWalk::Remaining)
      .def("__iter__", [](py::object const& self) { return self; })
      .def("__next__", &CWalk::Next);
  module.def("line", &Line);
  module.def("polygon", &Polygon);
  module.def("real_polygon", &RealPolygon);
  module.def("area", &Area);
  module.def("plane", &Plane);
  module.def("plane_through", &PlaneThrough);
  module.def("solid", &Solid);
  module.def("ellipsoid", &Ellipsoid);
  module.def("window", &Window);
  module.def("unit_sweep", &UnitSweep);
  module.def("sweep", &Sweep);
}

} // namespace selu_python
