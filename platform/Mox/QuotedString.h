#pragma once

#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

class CharRange;

/// The string form of a byte string, between single quotes. Printable ASCII is unchanged. A quote
/// and a backslash have a backslash in front. Newline, carriage return and tab are `\n`, `\r`,
/// `\t`. Any other byte is `\x` with two lower-case hexadecimal digits. Every byte string has
/// exactly one form.
[[nodiscard]] ZEL_EXPORT std::string quoted(std::string_view bytes);

/// Appends the string form of `bytes` to `text`.
ZEL_EXPORT void appendQuoted(std::string& text, std::string_view bytes);

/// Consumes a string form and returns its bytes. Throws `RangeException` for a form that `quoted`
/// does not produce.
[[nodiscard]] ZEL_EXPORT std::string readQuoted(CharRange& range);

/// The same without a copy if nothing is escaped: returns the bytes in the text of `range`.
/// Otherwise it writes them to `escaped`, which must be empty, and returns that.
[[nodiscard]] ZEL_EXPORT std::string_view readQuoted(CharRange& range, std::string& escaped);

}  // namespace Mox
