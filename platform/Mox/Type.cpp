#include "Mox/Type.h"

#include <algorithm>

namespace Mox {
namespace {

std::vector<Module>& modules() {
  static std::vector<Module> registered;
  return registered;
}

}  // namespace

void moxModuleIs(const Module& module) {
  modules().push_back(module);
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

}  // namespace Mox
