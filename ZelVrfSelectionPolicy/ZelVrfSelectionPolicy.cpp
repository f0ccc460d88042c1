#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"

#include "Mox/Type.h"
#include "ZelVrfSelectionPolicy/reflection/TypeTable.h"

namespace ZelVrfSelectionPolicy {

const Velo::String namespacePrefix("ns-");

namespace {

constexpr const char* moduleName = "ZelVrfSelectionPolicy";

// Registers the library's types, and has the defaults that they share made, while it is loaded.
class ModuleStart {
 public:
  ModuleStart() { Mox::moxModuleIs({moduleName, typeTable(), platformValueTypes()}); }
  ModuleStart(const ModuleStart&) = delete;
  ModuleStart& operator=(const ModuleStart&) = delete;
  ~ModuleStart() { Mox::moxModuleDel(moduleName); }
};

const ModuleStart moduleStart;

}  // namespace
}  // namespace ZelVrfSelectionPolicy
