#include "Mox/Type.h"

#include <algorithm>

#include "Mox/AnyValue.h"

namespace Mox {
namespace {

// A registered module with its shared default values.
struct Registered : Module {
  explicit Registered(const Module& module) : Module(module) {
    for (const Type* type : shared)
      defaults.push_back(AnyValue::ofType(*type));
  }

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
  std::erase_if(modules(), [&](const Module& module) { return module.name == moduleName; });
}

const Type* moxType(std::string_view typeName) noexcept {
  for (const Module& module : modules()) {
    const auto type =
        std::find_if(module.types.begin(), module.types.end(),
                     [&](const Type* candidate) { return candidate->name == typeName; });
    if (type != module.types.end()) return *type;
  }
  return nullptr;
}

std::span<const Type* const> moxModuleTypes(std::string_view moduleName) noexcept {
  for (const Module& module : modules()) {
    if (module.name == moduleName) return module.types;
  }
  return {};
}

std::vector<std::string_view> moxModules() {
  std::vector<std::string_view> names;
  for (const Module& module : modules())
    names.push_back(module.name);
  return names;
}

const AnyValue* moxDefault(const Type& type) noexcept {
  for (const Registered& module : modules()) {
    for (const AnyValue& value : module.defaults) {
      if (value.type() == &type) return &value;
    }
  }
  return nullptr;
}

}  // namespace Mox
