#pragma once

#include <span>

#include "Mox/Type.h"

namespace ZelVrfSelectionPolicy {

/// The entries of the library's types. Each is defined in a source of this folder, with the table
/// of the type's operations by name and number. Only that table describes its attributes.
[[nodiscard]] std::span<const Mox::Type* const> typeTable() noexcept;

/// The value types of the platform that attributes of the library use.
[[nodiscard]] std::span<const Mox::Type* const> platformValueTypes() noexcept;

}  // namespace ZelVrfSelectionPolicy
