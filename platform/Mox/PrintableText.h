#pragma once

#include <cstddef>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// The number of bytes of the printable character at the front of `text`. 0 if there is none: the
/// text is empty, or its first byte must be escaped or replaced before it is printed.
///
/// A character is well-formed UTF-8 in its shortest form. These are not printable: control
/// characters (U+0000 to U+001F, U+007F to U+009F), the separators of lines and paragraphs (U+2028,
/// U+2029), and the controls of text direction (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to
/// U+2069).
[[nodiscard]] ZEL_EXPORT std::size_t printableAtFront(std::string_view text) noexcept;

}  // namespace Mox
