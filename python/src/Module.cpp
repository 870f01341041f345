#include "Arrays.h"
#include "Errors.h"

PYBIND11_MODULE(_core, module) {
  using namespace selu_python;
  module.doc() = "What seluutils calls; its functions are the public ones.";
  module.attr("__version__") = SELU_VERSION;
  RegisterErrors();
  BindTexture(module);
  BindTextureMaps(module);
  BindWalk(module);
  auto random = module.def_submodule("random");
  BindRandom(random);
  BindValues(module);
  BindVolume(module);
}
