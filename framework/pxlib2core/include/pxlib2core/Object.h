// Base interfaces of the framework's objects.
//
//   #include <pxlib2core/ValueMap.h>
//   struct CNothing : IPluginObject {
//     void SetInstance(char const*) override {}
//     void Init(CValueMap const*) override {}
//     void GetPluginSetup(CValueMap& map) const override { map.SetEntry("depth", CValueLong(0)); }
//   };
//   CValueMap setup;
//   CNothing().GetPluginSetup(setup);           // what Init would have to be given
#pragma once

#include <pxlib2core/Export.h>

namespace ORVA {

class CValueMap;

/// An object with an instance name.
class PXLIB2CORE_EXPORT IObject {
public:
  virtual ~IObject();
  /// Names this instance; throws CExBadParam for a null pointer.
  virtual void SetInstance(char const* name) = 0;
};

/// An object that is set up from, and describes itself by, a value map.
class PXLIB2CORE_EXPORT IPluginObject : public IObject {
public:
  ~IPluginObject() override;
  /// Takes the setup; null means the defaults.
  virtual void Init(CValueMap const* setup) = 0;
  /// Adds to the map what Init would have to be given to set up an object like this one.
  virtual void GetPluginSetup(CValueMap& setup) const = 0;
};

} // namespace ORVA
