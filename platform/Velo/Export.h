#pragma once

/// The attributes for exported symbols. Both libraries are compiled with hidden visibility. The
/// place is after `class`, or in front of a declaration and after `[[nodiscard]]`:
///
///     class ZEL_EXPORT VrfName {
///       ZEL_HIDDEN void release() noexcept;
///     };
///     [[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const VrfName& name);
///
/// They are macros because clang-format reads `class [[...]] Name {` as a block of statements.

/// Exports a type with all its members, a function, or a variable.
#define ZEL_EXPORT __attribute__((visibility("default")))
/// Does not export a member of an exported type, since only the library itself calls it.
#define ZEL_HIDDEN __attribute__((visibility("hidden")))
