#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Mox/ReflectiveAccess.h"
#include "Velo/Export.h"

namespace Mox {

/// The text of an attribute, or the code of the failure.
struct TextAnswer {
  ReturnCode code;
  std::string text = {};
};

/// Reads an attribute as text for operators. `attribute` is its name or its number in decimal.
/// `key` is the string form of a key of a collection. Without a key the result lists all entries,
/// one per line: "KEY: VALUE", or "KEY" for a set. Values have their string forms. An entity is
/// shown by its type and name, or as "null".
///
/// Throws `RangeException` for a malformed key, and `ArgumentException` for a key of an attribute
/// that is not a collection.
///
///     Mox::attributeText(*vrfSm, "fallbackVrfInfo").text;           // "'red': 'blue'\n"
///     Mox::attributeText(*vrfSm, "fallbackVrfInfo", "'red'").text;  // "'blue'"
///     Mox::attributeText(*vrfSm, "136", "'red'").text;              // the same
[[nodiscard]] ZEL_EXPORT TextAnswer
attributeText(const Object& object, std::string_view attribute,
              std::optional<std::string_view> key = std::nullopt);

}  // namespace Mox
