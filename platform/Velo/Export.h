#pragma once

/// Both libraries are compiled with hidden visibility. These two say what is visible outside of
/// them. Each is an attribute, written after `class` or in front of a declaration, behind
/// `[[nodiscard]]`:
///
///     class ZEL_EXPORT VrfName {
///       ZEL_HIDDEN void release() noexcept;
///     };
///     [[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const VrfName& name);
///
/// They are macros because clang-format takes a class behind `class [[...]]` for a block of
/// statements.

/// Exported: a type with all its members, a function, or a variable.
#define ZEL_EXPORT __attribute__((visibility("default")))
/// Not exported, though the type is: a member that only the library itself calls.
#define ZEL_HIDDEN __attribute__((visibility("hidden")))
