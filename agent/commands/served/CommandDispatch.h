#pragma once

#include <string_view>

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

/// Starts the command with the longest name that the line begins with.
///
/// The line may have the beginnings of keywords, as FormWalk.h describes.
///
/// Throws an `EventError` that lists the possible words if the line begins with no command name. A
/// blank line and a comment do nothing. `columns` is the width of the tables in a text; 0 for no
/// limit.
[[nodiscard]] CommandResult startCommand(ServedAgent& served, std::string_view text, bool asJson,
                                         std::size_t columns = 0);

/// The same for callers without a loop: it makes all pages of the output, and all slices of changes
/// that it waits for.
[[nodiscard]] CommandOutput runCommand(ServedAgent& served, std::string_view text, bool asJson,
                                       std::size_t columns = 0);

}  // namespace ZelAgent
