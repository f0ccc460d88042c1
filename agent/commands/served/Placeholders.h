#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

class ForwardingAgent;

/// What a placeholder of the command table stands for, in a few words. Empty if it is unknown.
[[nodiscard]] std::string_view placeholderHelp(std::string_view placeholder) noexcept;

/// The values of the placeholder that the agent knows, as words to type. `words` are the words
/// before it. None for a placeholder whose values are not listed, such as a number.
[[nodiscard]] std::set<std::string> valuesOf(std::string_view placeholder,
                                             const std::vector<std::string>& words,
                                             ForwardingAgent& agent);

}  // namespace ZelAgent
