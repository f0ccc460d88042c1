#pragma once

#include <string>
#include <string_view>

namespace ZelAgent {

/// JSON on one line in which each unprintable character is an escape, such as \u202e. It has the
/// same meaning as `json`. Precondition: `json` is valid UTF-8 without control characters below
/// U+0020, so that only strings have unprintable characters.
[[nodiscard]] std::string escapedJson(std::string_view json);

}  // namespace ZelAgent
