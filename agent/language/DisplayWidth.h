#pragma once

#include <cstddef>
#include <string_view>

namespace ZelAgent {

/// The columns of a terminal that printable UTF-8 takes. A wide character, such as a Chinese one,
/// takes two. A combining character takes none. Every other character takes one.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// The number of bytes of the longest beginning of the text that takes at most `columns` columns.
/// Characters stay whole, with the combining characters that follow them.
[[nodiscard]] std::size_t bytesWithin(std::string_view text, std::size_t columns);

}  // namespace ZelAgent
