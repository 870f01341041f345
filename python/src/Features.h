// Texture features by their names.
#pragma once

#include <SeluUtils/Texture/Features.h>

#include <string>
#include <vector>

namespace selu_python {

/// BadParameter for a name that no feature has.
[[nodiscard]] std::vector<ORVA::EnTextureFeature> FeaturesOf(std::vector<std::string> const& names);

} // namespace selu_python
