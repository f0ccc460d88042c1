#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// More bytes than this of a description are cut off by reports.
inline constexpr std::size_t longestDescription = 1000;

/// Why the text cannot be printed as one line of a report; empty when it can. It must be UTF-8
/// without control characters, of at most `longestDescription` bytes.
[[nodiscard]] std::string faultOfLine(std::string_view text);

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
