#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"

#include "Mox/Type.h"
#include "ZelVrfSelectionPolicy/reflection/TypeTable.h"

namespace ZelVrfSelectionPolicy {

const Velo::String namespacePrefix("ns-");

namespace {

constexpr const char* moduleName = "ZelVrfSelectionPolicy";

// Registers the library's types, and creates their shared default values, while the library is
// loaded.
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
