// The cylinder's cross section, distances, and neighbor tables.

#include "Arrays.h"
#include "Watch.h"

#include <SeluBase/EdgeTreatment.h>
#include <SeluUtils/CylinderMask.h>
#include <SeluUtils/Metric.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Value.h>
#include <pxlib2image/HeaderTools.h>
#include <pxlib2image/Image.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CImage;
using ORVA::CSize;
using ORVA::EEdgeTreatment;
using ORVA::int64;

constexpr char c_module[] = "python/src/Volume";

// The section of a cylinder across the first of three axes, as [v, u].
py::array CylinderSection(py::object const& extents, double v, double u, double radius) {
  CSize const size = SizeOf(extents, 2, "shape");
  for (double const number : {v, u, radius})
    if (!std::isfinite(number))
      ORVA::Impl::RaiseBadParam(
          ORVA_LOCATION(c_module, "CylinderSection"),
          ORVA::CString("center and radius must be finite, not %1").Arg(number));
  CImage image(ORVA::IMAGE_BINARY_FG, CSize(size.x, size.y, 1));
  auto section = NewArray<bool>(ShapeOf(size));
  if (section.size() == 0) return section;
  {
    CUnlocked const unlocked;
    ORVA::CCylinderMask mask("cylinder", nullptr);
    mask.SetCylinderParameters(image, "Z", u, v, radius);
    std::ranges::fill_n(image.CreateAccess(true).WritableBase(),
                        static_cast<std::ptrdiff_t>(image.Bytes()), std::byte{1});
    mask.MaskImageWithMetaInfoCylinder(image, 0);
  }
  auto const access = image.CreateAccess(false);
  std::ranges::transform(access.Base(), access.Base() + image.Bytes(), section.mutable_data(),
                         [](std::byte pixel) { return pixel != std::byte{0}; });
  return section;
}

// The distance of each row of a to that row of b.
py::array Distances(py::array_t<double, py::array::c_style> const& a,
                    py::array_t<double, py::array::c_style> const& b,
                    std::optional<std::vector<double>> const& period) {
  auto const n = a.shape(0);
  auto const d = static_cast<std::size_t>(a.shape(1));
  auto distances = NewArray<double>({n});
  double const *first = a.data(), *second = b.data();
  double* out = distances.mutable_data();
  auto const edge = period ? EEdgeTreatment::Periodic : EEdgeTreatment::NoEdgeTreatment;
  std::vector<double> const window = period.value_or(std::vector<double>(d, 0.0));
  CWatch watch;
  CUnlocked const unlocked;
  std::vector<double> p(d), q(d);
  for (py::ssize_t k = 0; k < n; ++k, first += d, second += d) {
    p.assign(first, first + d);
    q.assign(second, second + d);
    *out++ = ORVA::CMetric::EuclideanDistance(p, q, window, edge);
    if (k % 65536 == 0) watch.Advance();
  }
  return distances;
}

py::array NeighborTable(int64 n, int dimension, bool isPeriodic) {
  std::vector<std::vector<int64>> table;
  if (dimension != 2 && dimension != 3)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "neighbor_table"),
                              ORVA::CString("ndim must be 2 or 3, not %1").Arg(dimension));
  {
    CUnlocked const unlocked;
    ORVA::CMetric::CalculateNeighbourTable(&table, static_cast<unsigned char>(dimension), n,
                                           isPeriodic ? EEdgeTreatment::Periodic
                                                      : EEdgeTreatment::NoEdgeTreatment);
  }
  py::ssize_t const width = dimension == 2 ? 9 : 27;
  auto cells = NewArray<int64>({static_cast<py::ssize_t>(table.size()), width});
  int64* out = cells.mutable_data();
  for (auto const& row : table) out = std::ranges::copy(row, out).out;
  return cells;
}

} // namespace

void BindVolume(py::module_& module) {
  module.def("cylinder_section", &CylinderSection);
  module.def("distances", &Distances);
  module.def("neighbor_table", &NeighborTable);
}

} // namespace selu_python
