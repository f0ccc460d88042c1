#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Mox/ReflectiveAccess.h"
#include "Velo/Export.h"

namespace Mox {

/// An attribute read as text, or the code that tells why not.
struct TextAnswer {
  ReturnCode code;
  std::string text = {};
};

/// Reads an attribute as an operator sees it. `attribute` is its name or its number in decimal,
/// `key` the string form of the key of a collection. Without a key a collection is listed whole,
/// one line an entry: "KEY: VALUE", of a set "KEY". What is listed is read back: values have their
/// string forms, and an entity is shown by its type and name, or as "null".
///
/// Throws `RangeException` for a key that is none, and `ArgumentException` for a key where none is
/// taken.
///
///     Mox::attributeText(*vrfSm, "fallbackVrfInfo").text;           // "'red': 'blue'\n"
///     Mox::attributeText(*vrfSm, "fallbackVrfInfo", "'red'").text;  // "'blue'"
///     Mox::attributeText(*vrfSm, "136", "'red'").text;              // the same
[[nodiscard]] ZEL_EXPORT TextAnswer
attributeText(const Object& object, std::string_view attribute,
              std::optional<std::string_view> key = std::nullopt);

}  // namespace Mox
