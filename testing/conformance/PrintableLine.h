#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// Maximum length of a description in reports, in bytes.
inline constexpr std::size_t longestDescription = 1000;

/// The reason why the text cannot be printed as one line of a report; empty if it can. The text
/// must be UTF-8 without control characters, of at most `longestDescription` bytes.
[[nodiscard]] std::string faultOfLine(std::string_view text);

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
