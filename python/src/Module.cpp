#include "Arrays.h"
#include "Errors.h"

PYBIND11_MODULE(_core, module) {
  using namespace selu_python;
  module.doc() = "What the modules of seluutils call.";
  module.attr("__version__") = SELU_VERSION;
  RegisterErrors();
  BindTexture(module);
  BindTextureMaps(module);
  BindWalk(module);
  BindRandom(module);
  BindValues(module);
  BindVolume(module);
}
