#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace ZelAgent {

/// The known name that a mistyped name most likely stands for: the one that the fewest changes of a
/// byte make of it, where the exchange of two bytes beside each other is one change. None if that
/// takes more changes than a third of its bytes, and more than one.
[[nodiscard]] std::optional<std::string> nearestName(std::string_view name,
                                                     const std::set<std::string>& known);

/// "; did you mean 'Ethernet1'?", or nothing if no known name is near.
[[nodiscard]] std::string suggestion(std::string_view name, const std::set<std::string>& known);

}  // namespace ZelAgent
