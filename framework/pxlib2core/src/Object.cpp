#include <pxlib2core/Object.h>

namespace ORVA {

IObject::~IObject() = default;
IPluginObject::~IPluginObject() = default;

} // namespace ORVA
