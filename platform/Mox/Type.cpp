#include "Mox/Type.h"

#include <algorithm>

#include "Mox/AnyValue.h"

namespace Mox {
namespace {

struct Registered {
  explicit Registered(const Module& registered) : module(registered) {
    for (const Type* type : module.shared)
      defaults.push_back(AnyValue::ofType(*type));
  }

  Module module;
  std::vector<AnyValue> defaults;
};

std::vector<Registered>& modules() {
  static std::vector<Registered> registered;
  return registered;
}

}  // namespace

void moxModuleIs(const Module& module) {
  modules().emplace_back(module);
}

void moxModuleDel(std::string_view moduleName) noexcept {
  std::erase_if(modules(), [&](const Registered& each) { return each.module.name == moduleName; });
}

const Type* moxType(std::string_view typeName) noexcept {
  for (const auto& [module, defaults] : modules()) {
    const auto type =
        std::find_if(module.types.begin(), module.types.end(),
                     [&](const Type* candidate) { return candidate->name == typeName; });
    if (type != module.types.end()) return *type;
  }
  return nullptr;
}

std::vector<std::string_view> moxModules() {
  std::vector<std::string_view> names;
  for (const Registered& each : modules())
    names.push_back(each.module.name);
  return names;
}

const AnyValue* moxDefault(const Type& type) noexcept {
  for (const auto& [module, defaults] : modules()) {
    const auto shared =
        std::find_if(defaults.begin(), defaults.end(),
                     [&](const AnyValue& candidate) { return candidate.type() == &type; });
    if (shared != defaults.end()) return &*shared;
  }
  return nullptr;
}

}  // namespace Mox
