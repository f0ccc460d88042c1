#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "Velo/Export.h"

namespace Mox {

class AnyValue;
struct Reflection;

/// One entry of a module's type table. Entries are constants of the module that defines the type,
/// and are valid while that module is loaded. `fwkType()` of an entity returns its entry.
struct Type {
  std::string_view name;
  /// The operations of the type by name and number; null if there are none.
  const Reflection* reflection = nullptr;
};

/// The types of one loaded module, under the module's name.
struct Module {
  std::string_view name;
  std::span<const Type* const> types;
  /// The value types of other modules that attributes of this one use. While the module is
  /// registered, each of them has a shared default value.
  std::span<const Type* const> shared = {};
};

/// Registers `module` process-wide, so that its type names are found. A module calls it while it is
/// loaded. Precondition: no module of that name is registered.
ZEL_EXPORT void moxModuleIs(const Module& module);

/// Removes the module of that name and its types. A module calls it while it is unloaded.
ZEL_EXPORT void moxModuleDel(std::string_view moduleName) noexcept;

/// The registered type of that name, or null.
[[nodiscard]] ZEL_EXPORT const Type* moxType(std::string_view typeName) noexcept;

/// The types of the registered module of that name, in the order of its table; empty if there is no
/// such module. They are valid while the module is registered.
[[nodiscard]] ZEL_EXPORT std::span<const Type* const> moxModuleTypes(
    std::string_view moduleName) noexcept;

/// The names of the registered modules, in the order of their registration.
[[nodiscard]] ZEL_EXPORT std::vector<std::string_view> moxModules();

/// The shared default value of `type`; null if no registered module shares one.
[[nodiscard]] ZEL_EXPORT const AnyValue* moxDefault(const Type& type) noexcept;

}  // namespace Mox
