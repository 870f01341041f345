#include "Errors.h"

#include <pxlib2core/Exception.h>

#include <exception>

namespace selu_python {
namespace {

namespace py = pybind11;

void SetError(char const* kind, ORVA::CException const& error) {
  auto const errors = py::module_::import("seluutils._errors");
  auto const& place = error.Location();
  py::object const raised =
      errors.attr(kind)(error.what(), errors.attr("Location")(place.timestamp, place.source,
                                                              place.function, place.line));
  PyErr_SetObject(errors.attr(kind).ptr(), raised.ptr());
}

} // namespace

void RegisterErrors() {
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (ORVA::CExBadParam const& error) {
      SetError("BadParameter", error);
    } catch (ORVA::CException const& error) {
      SetError("SeluError", error);
    }
  });
}

} // namespace selu_python
