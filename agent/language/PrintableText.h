// Why: messages quote what a configuration file holds, and a message is one line that does no harm
// to a terminal, whatever the file holds.
// Always: the result has no control characters, no invalid bytes and a bounded length.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZelAgent {

// The text with control characters and bytes that are not UTF-8 written as \xNN, cut after
// maxBytes bytes (then followed by "...").
[[nodiscard]] std::string printable(std::string_view text, std::size_t maxBytes = 100);

// The same between double quotes.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace ZelAgent
