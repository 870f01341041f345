// The library's errors as Python's: SeluError and BadParameter, with message and location.
#pragma once

#include <pybind11/pybind11.h>

namespace selu_python {

/// From here on every CException that leaves a function of the module is raised as a SeluError, a
/// CExBadParam as a BadParameter, both of seluutils._errors.
void RegisterErrors();

} // namespace selu_python
