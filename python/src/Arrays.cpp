#include "Arrays.h"

#include <SeluUtils/Texture/Quantizer.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2image/Image.h>

#include <algorithm>
#include <array>
#include <string>

namespace selu_python {
namespace {

using ORVA::CImageView;
using ORVA::CPixelType;
using ORVA::CSize;
using ORVA::CString;
using ORVA::CTriple;
using ORVA::int64;

constexpr char c_module[] = "python/src/Arrays";

struct StDtype {
  char kind;
  py::ssize_t bytes;
  CPixelType type;
};

constexpr std::array<StDtype, 9> c_dtypes = {{{'b', 1, ORVA::IMAGE_BOOL},
                                              {'u', 1, ORVA::IMAGE_GREY_8},
                                              {'u', 2, ORVA::IMAGE_GREY_16},
                                              {'u', 4, ORVA::IMAGE_GREY_32},
                                              {'i', 1, ORVA::IMAGE_SIGNED_8},
                                              {'i', 2, ORVA::IMAGE_SIGNED_16},
                                              {'i', 4, ORVA::IMAGE_SIGNED_32},
                                              {'f', 4, ORVA::IMAGE_GREY_F},
                                              {'f', 8, ORVA::IMAGE_DOUBLE}}};

// Integers of 64 bits in the machine's byte order.
bool IsWide(py::array const& array) {
  char const kind = array.dtype().kind();
  return (kind == 'i' || kind == 'u') && array.itemsize() == 8 && array.dtype().byteorder() != '>';
}

[[noreturn]] void RaiseDtype(py::array const& array, char const* name) {
  std::string const dtype = py::str(array.dtype());
  std::string message =
      std::string(name) + " has the dtype " + dtype +
      ", but bool, integers of 8, 16 and 32 bits, float32 and float64 in this machine's byte order "
      "are taken";
  if (IsWide(array))
    message += std::string("; ") + name + ".astype(\"int32\") makes one where the values allow it";
  ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ViewOf"), CString(message));
}

CPixelType TypeOf(py::array const& array, char const* name) {
  char const order = array.dtype().byteorder();
  auto const* const found = std::ranges::find_if(
      c_dtypes, [kind = array.dtype().kind(), bytes = array.itemsize()](StDtype const& dtype) {
        return dtype.kind == kind && dtype.bytes == bytes;
      });
  if (found == c_dtypes.end() || order == '>') RaiseDtype(array, name);
  return found->type;
}

struct StLayout {
  CSize size;
  std::array<int64, 3> strides{};
};

StLayout LayoutOf(py::array const& array, char const* name) {
  if (array.ndim() != 2 && array.ndim() != 3)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ViewOf"),
                              CString("%1 has %2 axes, but arrays [y, x] and [z, y, x] are taken")
                                  .Arg(name)
                                  .Arg(static_cast<int64>(array.ndim())));
  StLayout layout;
  for (py::ssize_t axis = 0; axis < array.ndim(); ++axis)
    layout.strides[static_cast<std::size_t>(array.ndim() - 1 - axis)] = array.strides(axis);
  layout.size = array.ndim() == 3 ? CSize(array.shape(2), array.shape(1), array.shape(0))
                                  : CSize(array.shape(1), array.shape(0));
  return layout;
}

void CheckIsPlain(py::handle array, char const* name) {
  if (!py::isinstance<py::array>(array))
    throw py::type_error(std::string(name) + " must be a NumPy array, not " +
                         Py_TYPE(array.ptr())->tp_name);
  // A masked array's mask would be passed over without a word.
  if (Py_TYPE(array.ptr()) != py::detail::npy_api::get().PyArray_Type_ &&
      py::hasattr(array, "mask"))
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ViewOf"),
                              CString("%1 is a masked array: give its data, and where there is a "
                                      "parameter mask the inverse of its mask there")
                                  .Arg(name));
}

// The point of a row of integers, or the size.
CTriple<int64> Turned(int64 const* row, int dimension) {
  return dimension == 3 ? CTriple<int64>(row[2], row[1], row[0])
                        : CTriple<int64>(row[1], row[0], 0);
}

using CIntegers = py::array_t<int64, py::array::c_style | py::array::forcecast>;

CIntegers IntegersOf(py::handle object, char const* name) {
  auto const array = py::array::ensure(object);
  if (!array) throw py::error_already_set();
  char const kind = array.dtype().kind();
  if (kind != 'i' && kind != 'u' && array.size() > 0)
    throw py::type_error(std::string(name) + " must be integers, not " + TextOf(object));
  CIntegers integers = CIntegers::ensure(array);
  auto const isNegative = [](int64 number) { return number < 0; };
  if (kind == 'u' && std::any_of(integers.data(), integers.data() + integers.size(), isNegative))
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "IntegersOf"),
        CString("%1 has numbers above 2^63 - 1: %2").Arg(name).Arg(TextOf(object).c_str()));
  return integers;
}

[[noreturn]] void RaiseShape(py::handle object, int dimension, char const* name, char const* what) {
  ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "PointsOf"),
                            CString("%1 must be %2 of %3 integers each, in the order of the "
                                    "array's axes, not %4")
                                .Arg(name)
                                .Arg(what)
                                .Arg(dimension)
                                .Arg(TextOf(object).c_str()));
}

} // namespace

std::string TextOf(py::handle object) {
  std::string text = py::repr(object);
  std::ranges::replace(text, '\n', ' ');
  if (text.size() > 60) text = text.substr(0, 57) + "...";
  return text;
}

CImageView ViewOf(py::handle object, char const* name, bool write) {
  CheckIsPlain(object, name);
  auto const array = py::reinterpret_borrow<py::array>(object);
  CPixelType const type = TypeOf(array, name);
  StLayout const layout = LayoutOf(array, name);
  if (!write) return {type, layout.size, array.data(), layout.strides};
  if (!array.writeable())
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ViewOf"),
                              CString("%1 is read-only").Arg(name));
  return {type, layout.size, const_cast<void*>(array.data()), layout.strides};
}

CImageView LabelViewOf(py::handle object, char const* name) {
  CheckIsPlain(object, name);
  auto const array = py::reinterpret_borrow<py::array>(object);
  if (!IsWide(array)) return ViewOf(object, name);
  StLayout const layout = LayoutOf(array, name);
  auto const* const lower = static_cast<std::byte const*>(array.data());
  void const* const upper = lower + 4; // of a little-endian number
  CImageView const uppers(ORVA::IMAGE_GREY_32, layout.size, upper, layout.strides);
  if (ORVA::CQuantizer::FindRange(uppers).high > 0)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "LabelViewOf"),
                              CString("%1 must be from 0 to 2^32 - 1").Arg(name));
  return {ORVA::IMAGE_GREY_32, layout.size, static_cast<void const*>(lower), layout.strides};
}

CImageView GrayViewOf(py::handle array, char const* name) {
  CImageView view = ViewOf(array, name);
  if (view.Type() == ORVA::IMAGE_BOOL)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "GrayViewOf"),
                              CString("%1 is boolean and has no gray levels; %2.view(\"uint8\") "
                                      "has the levels 0 and 1")
                                  .Arg(name)
                                  .Arg(name));
  return view;
}

std::vector<py::ssize_t> ShapeOf(CSize const& size) {
  if (size.Dim() == 3) return {size.z, size.y, size.x};
  return {size.y, size.x};
}

std::vector<CTriple<int64>> PointsOf(py::handle points, int dimension, char const* name) {
  CIntegers const rows = IntegersOf(points, name);
  bool const isOne = rows.ndim() == 1 && rows.shape(0) == dimension;
  bool const isEmpty = rows.size() == 0 && rows.ndim() <= 2;
  if (!isOne && !isEmpty && (rows.ndim() != 2 || rows.shape(1) != dimension))
    RaiseShape(points, dimension, name, "one point, or a sequence of points,");
  std::vector<CTriple<int64>> result(static_cast<std::size_t>(rows.size() / dimension));
  for (std::size_t k = 0; k < result.size(); ++k)
    result[k] = Turned(rows.data() + k * static_cast<std::size_t>(dimension), dimension);
  return result;
}

std::vector<CTriple<double>> RealPointsOf(py::handle points, int dimension, char const* name) {
  using CReals = py::array_t<double, py::array::c_style | py::array::forcecast>;
  auto const array = py::array::ensure(points);
  if (!array) throw py::error_already_set();
  char const kind = array.dtype().kind();
  if (kind != 'i' && kind != 'u' && kind != 'f')
    throw py::type_error(std::string(name) + " must be real numbers, not " + TextOf(points));
  auto const rows = CReals::ensure(array);
  bool const isOne = rows.ndim() == 1 && rows.shape(0) == dimension;
  bool const isEmpty = rows.size() == 0 && rows.ndim() <= 2;
  if (!isOne && !isEmpty && (rows.ndim() != 2 || rows.shape(1) != dimension))
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "RealPointsOf"),
                              CString("%1 must be points of %2 numbers each, in the order of the "
                                      "array's axes, not %3")
                                  .Arg(name)
                                  .Arg(dimension)
                                  .Arg(TextOf(points).c_str()));
  std::vector<CTriple<double>> result(static_cast<std::size_t>(rows.size() / dimension));
  double const* in = rows.data();
  for (auto& [x, y, z] : result) {
    z = dimension == 3 ? *in++ : 0;
    y = *in++;
    x = *in++;
  }
  return result;
}

CTriple<int64> PointOf(py::handle point, int dimension, char const* name) {
  CIntegers const row = IntegersOf(point, name);
  if (row.ndim() != 1 || row.shape(0) != dimension) RaiseShape(point, dimension, name, "one point");
  return Turned(row.data(), dimension);
}

CSize SizeOf(py::handle size, int dimension, char const* name) {
  CIntegers const row = IntegersOf(size, name);
  if (row.ndim() == 0) {
    int64 const side = *row.data();
    return dimension == 3 ? CSize(side, side, side) : CSize(side, side);
  }
  if (row.ndim() != 1 || row.shape(0) != dimension)
    RaiseShape(size, dimension, name, "one integer, or a tuple");
  CTriple<int64> const turned = Turned(row.data(), dimension);
  return dimension == 3 ? CSize(turned.x, turned.y, turned.z) : CSize(turned.x, turned.y);
}

py::array ToArray(std::span<CTriple<int64> const> points, int dimension) {
  auto array = NewArray<int64>({static_cast<py::ssize_t>(points.size()), dimension});
  int64* out = array.mutable_data();
  for (auto const& [x, y, z] : points) {
    if (dimension == 3) *out++ = z;
    *out++ = y;
    *out++ = x;
  }
  return array;
}

} // namespace selu_python
