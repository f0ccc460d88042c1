#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Mox/AnyValue.h"
#include "Mox/Reflection.h"
#include "Mox/Type.h"

namespace ZelAgent {

/// The registered type of that name. A type with attributes is also found by the end of its name,
/// after "::". Null if there is none.
[[nodiscard]] const Mox::Type* typeNamed(std::string_view name);
/// The last parts of the names of the types with an attribute that can be read.
[[nodiscard]] std::vector<std::string> readableTypes();

[[nodiscard]] std::vector<std::string> attributesOf(const Mox::Type& type);
[[nodiscard]] std::vector<std::string> readableAttributesOf(const Mox::Type& type);
/// The attribute of that name or decimal number. Null if there is none.
[[nodiscard]] const Mox::Attribute* attributeNamed(const Mox::Type& type, std::string_view name);

/// The keys that select something of the attribute: those of the objects of the type, or those of
/// the entries if the type has a single object without a key.
[[nodiscard]] std::vector<Mox::AnyValue> keysOf(const Mox::PtrInterface& top, const Mox::Type& type,
                                                std::string_view attribute);

}  // namespace ZelAgent
