#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "Velo/Export.h"

namespace Mox {

class AnyValue;
struct Reflection;

/// One entry of a module's type table. Entries are constants of the module that defines the type
/// and live as long as that module is loaded; `fwkType()` of an entity answers with its entry.
struct Type {
  std::string_view name;
  /// What can be done with the type by name and number; null when it has no more than its name.
  const Reflection* reflection = nullptr;
};

/// The types that one loaded module brings, under the module's name.
struct Module {
  std::string_view name;
  std::span<const Type* const> types;
  /// The value types of other modules that attributes of this one use: while it is registered,
  /// each of them has a default value that all share.
  std::span<const Type* const> shared = {};
};

/// Registers `module` process-wide; its names resolve from now on. A module registers while it is
/// being loaded. Precondition: no module of that name is registered.
ZEL_EXPORT void moxModuleIs(const Module& module);

/// Takes the module of that name and its types out again, as it does when it is unloaded.
ZEL_EXPORT void moxModuleDel(std::string_view moduleName) noexcept;

/// The registered type of that name, null when there is none.
[[nodiscard]] ZEL_EXPORT const Type* moxType(std::string_view typeName) noexcept;

/// The types of the registered module of that name, in the order of its table; none when there is
/// no such module. Precondition of using them: the module is still registered.
[[nodiscard]] ZEL_EXPORT std::span<const Type* const> moxModuleTypes(
    std::string_view moduleName) noexcept;

/// Names of the registered modules, in the order of their registration.
[[nodiscard]] ZEL_EXPORT std::vector<std::string_view> moxModules();

/// The shared default value of `type`, null when no registered module shares one.
[[nodiscard]] ZEL_EXPORT const AnyValue* moxDefault(const Type& type) noexcept;

}  // namespace Mox
