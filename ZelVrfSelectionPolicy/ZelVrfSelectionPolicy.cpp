#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"

#include <array>

#include "Mox/Type.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr const char* moduleName = "ZelVrfSelectionPolicy";

// Registers the library's types while it is loaded.
class ModuleStart {
 public:
  ModuleStart() : types_(typeTable()) { Mox::moxModuleIs({moduleName, types_}); }
  ModuleStart(const ModuleStart&) = delete;
  ModuleStart& operator=(const ModuleStart&) = delete;
  ~ModuleStart() { Mox::moxModuleDel(moduleName); }

 private:
  using TypeTable = std::array<const Mox::Type*, 12>;

  static TypeTable typeTable() {
    return {&ZelVrfSelectionPolicySm::moxType,
            &DependentVrfInfo::moxType,
            &enumTypeOf(FailureCode{}).type(),
            &HwStatus::moxType,
            &PolicySmMounts::moxType,
            &enumTypeOf(ProgrammingResult{}).type(),
            &VrfAction::moxType,
            &VrfHelper::moxType,
            &VrfHwConfig::moxType,
            &VrfHwStatus::moxType,
            &VrfSm::moxType,
            &VrfSm::VrfInstanceSm::moxType};
  }

  TypeTable types_;
};

const ModuleStart moduleStart;

}  // namespace
}  // namespace ZelVrfSelectionPolicy
