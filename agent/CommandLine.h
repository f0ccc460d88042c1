#pragma once

#include <iosfwd>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

/// Reads the options, runs the command that they choose, and returns its status. A wrong command
/// line is one line on `err`, and no command is run.
[[nodiscard]] ExitStatus runCommandLine(int argumentCount, const char* const* arguments,
                                        std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
