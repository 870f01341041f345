// Value maps as dictionaries, and the features of objects as an image.

#include "Arrays.h"
#include "Watch.h"

#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueKey.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/Image.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace selu_python {
namespace {

using ORVA::CValue;
using ORVA::CValue_Key;
using ORVA::CValueMap;
using ORVA::CValueVector;
using ORVA::int64;

constexpr char c_module[] = "python/src/Values";

// A tree that is too deep for the interpreter, or holds itself, ends as its RecursionError.
class CDeeper {
public:
  CDeeper() {
    if (Py_EnterRecursiveCall(" in a value map") != 0) throw py::error_already_set();
  }
  CDeeper(CDeeper const&) = delete;
  CDeeper& operator=(CDeeper const&) = delete;
  ~CDeeper() { Py_LeaveRecursiveCall(); }
};

CValueMap MapOf(py::dict const& entries);

std::int32_t LongOf(py::handle number) {
  int overflow = 0;
  long long const value = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  if (value == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
  if (overflow != 0 || value != static_cast<std::int32_t>(value))
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "LongOf"),
        ORVA::CString("the integer %1 does not fit the 32 bits of a value map")
            .Arg(TextOf(number).c_str()));
  return static_cast<std::int32_t>(value);
}

CValue ValueOf(py::handle object) {
  CDeeper const deeper;
  if (PyBool_Check(object.ptr()) != 0) return ORVA::CValueBool(object.ptr() == Py_True);
  if (py::isinstance<py::dict>(object)) return MapOf(py::reinterpret_borrow<py::dict>(object));
  if (py::isinstance<py::str>(object)) return ORVA::CValueString(object.cast<std::string>());
  if (PyFloat_Check(object.ptr()) != 0) return ORVA::CValueDouble(object.cast<double>());
  if (py::isinstance<py::list>(object) || py::isinstance<py::tuple>(object)) {
    CValueVector values;
    for (auto const& entry : object) values.PushBack(ValueOf(entry));
    return values;
  }
  if (py::hasattr(object, "item") && !py::isinstance<py::array>(object)) // NumPy's numbers
    return ValueOf(object.attr("item")());
  if (auto const index = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr())))
    return ORVA::CValueLong(LongOf(index));
  PyErr_Clear();
  throw py::type_error("a value map holds bool, int, float, str, dict and list, not " +
                       TextOf(object));
}

CValue_Key KeyOf(py::handle key) {
  if (py::isinstance<py::str>(key)) return CValue_Key(key.cast<std::string>());
  if (PyIndex_Check(key.ptr()) != 0 && PyBool_Check(key.ptr()) == 0)
    return CValue_Key(key.cast<int64>());
  throw py::type_error("a key of a value map is an int or a str, not " + TextOf(key));
}

CValueMap MapOf(py::dict const& entries) {
  CValueMap map;
  for (auto const& [key, value] : entries) map.SetEntry(KeyOf(key), ValueOf(value));
  return map;
}

py::dict DictOf(CValueMap const& map);

py::object ObjectOf(CValue const& value) {
  CDeeper const deeper;
  switch (value.Type()) {
  case CValue::EnType::Bool:
    return py::bool_(value.Bool());
  case CValue::EnType::Long:
    return py::int_(value.Long());
  case CValue::EnType::Double:
    return py::float_(value.Double());
  case CValue::EnType::String:
    return py::str(value.String().Std());
  case CValue::EnType::Map:
    return DictOf(value.Map());
  case CValue::EnType::Vector: {
    py::list list;
    for (CValue const& entry : value.Vector()) list.append(ObjectOf(entry));
    return py::object(list);
  }
  default:
    return py::none();
  }
}

py::dict DictOf(CValueMap const& map) {
  py::dict entries;
  for (auto const& [key, value] : map) {
    py::object const name =
        key.IsText() ? py::object(py::str(key.Text())) : py::object(py::int_(key.Number()));
    entries[name] = ObjectOf(value);
  }
  return entries;
}

// The pixels, row by row, and what the image's attributes say of them.
py::tuple FeatureImage(py::dict const& entries, std::string const& idKey,
                       std::vector<std::string> const& excluded) {
  CValueMap features = MapOf(entries);
  ORVA::CImage image(ORVA::IMAGE_GREY_F, ORVA::CSize(1, 1));
  {
    CUnlocked const unlocked;
    ORVA::ConvertObjectBasedFeaturesIntoFeatureImage("features", std::move(features), idKey, image,
                                                     excluded);
  }
  auto pixels = NewArray<float>(ShapeOf(image.Size()));
  auto const rows = image.CreateAccess(false).As<float const>();
  float* out = pixels.mutable_data();
  for (int64 y = 0; y < image.Size().y; ++y) out = std::ranges::copy(rows.Row(y), out).out;
  auto const& attributes = std::as_const(image).Attributes();
  CValue const* const lookup = attributes.Find("Image/label-lookup");
  return py::make_tuple(pixels, ObjectOf(attributes.Entry("Image/y-keys")),
                        ObjectOf(attributes.Entry("Image/y-types")),
                        lookup == nullptr ? py::object(py::dict()) : ObjectOf(*lookup));
}

py::dict Mean(std::vector<py::dict> const& maps, std::vector<std::string> const& excluded) {
  if (maps.empty())
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "mean"), "there is no mean of no maps");
  ORVA::CValueMapWithOperators sum(MapOf(maps.front()), excluded);
  for (std::size_t k = 1; k < maps.size(); ++k) sum += MapOf(maps[k]);
  sum /= static_cast<double>(maps.size());
  return DictOf(sum);
}

std::vector<std::string> Paths(py::dict const& entries, int mode,
                               std::vector<std::string> const& excluded) {
  std::vector<std::string> keys;
  ORVA::ExtractKeys(MapOf(entries), keys, mode, excluded);
  return keys;
}

} // namespace

void BindValues(py::module_& module) {
  module.def("feature_image", &FeatureImage);
  module.def("mean", &Mean);
  module.def("paths", &Paths);
  module.def("is_object_map", [](py::dict const& entries, std::string const& prefix) {
    return ORVA::IsObjectBasedFeaturesMap(MapOf(entries), prefix);
  });
}

} // namespace selu_python
