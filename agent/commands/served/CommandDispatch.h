// Why: a line is a command's name and its arguments, and names may begin alike ("show", "show
// vrfs").
// Always: the longest name that the line begins with is meant; a line that begins with none is an
// EventError that lists what could stand there. A blank line, or a comment, does nothing.
#pragma once

#include <string_view>

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

[[nodiscard]] CommandOutput runCommand(ServedAgent& served, std::string_view text, bool asJson);

}  // namespace ZelAgent
