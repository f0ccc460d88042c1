#pragma once

#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

class CharRange;

/// The string form of a byte string: between single quotes, printable ASCII as it is, quote and
/// backslash behind a backslash, newline, carriage return and tab as `\n`, `\r`, `\t`, and any
/// other byte as `\x` with two lower-case hexadecimal digits. Every byte string has exactly one
/// such form.
[[nodiscard]] ZEL_EXPORT std::string quoted(std::string_view bytes);

/// Appends the string form of `bytes` to `text`.
ZEL_EXPORT void appendQuoted(std::string& text, std::string_view bytes);

/// Consumes a string form and gives its bytes. A form that `quoted` would not have written is a
/// `RangeException`.
[[nodiscard]] ZEL_EXPORT std::string readQuoted(CharRange& range);

/// The same without a copy where nothing is escaped: gives the bytes as they stand in the text of
/// `range`, or `escaped`, which is empty before and into which they are put otherwise.
[[nodiscard]] ZEL_EXPORT std::string_view readQuoted(CharRange& range, std::string& escaped);

}  // namespace Mox
