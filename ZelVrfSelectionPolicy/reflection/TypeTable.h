#pragma once

#include <span>

#include "Mox/Type.h"

namespace ZelVrfSelectionPolicy {

/// The entries of the library's types. Each stands in a source of this folder, as a table of what
/// can be done with the type by name and number; nothing else describes its attributes.
[[nodiscard]] std::span<const Mox::Type* const> typeTable() noexcept;

/// The platform's value types that attributes of the library have.
[[nodiscard]] std::span<const Mox::Type* const> platformValueTypes() noexcept;

}  // namespace ZelVrfSelectionPolicy
