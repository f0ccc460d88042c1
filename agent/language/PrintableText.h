#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/language/Limits.h"

namespace ZelAgent {

/// Text from outside (names, messages of the system, bytes of a file) as a message or report shows
/// it. The result is valid UTF-8 on one line and has only printable characters.
///
/// Bytes that are not part of a printable character (`Mox::printableAtFront`) become \xNN. Text
/// beyond `maxBytes` bytes is cut off and replaced by "...".
[[nodiscard]] std::string printable(std::string_view text,
                                    std::size_t maxBytes = Limits::shownValueBytes);

/// The whole text with every line printable, and the ends of lines as they are.
[[nodiscard]] std::string printableLines(std::string_view text);

/// `printable(text)` between double quotes.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// Up to `Limits::shownTextBytes` bytes of the text, printable; "-" if it is empty. For cells of
/// tables.
[[nodiscard]] std::string orDash(std::string_view text);

}  // namespace ZelAgent
