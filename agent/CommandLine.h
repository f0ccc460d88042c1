#pragma once

#include <iosfwd>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

/// Reads the options, runs the command that they choose, and returns its status. A wrong command
/// line is one line on `err`, and no command is run.
///
/// With the command `serve`, SIGHUP is blocked from the beginning, and stays blocked. So one that
/// arrives before the daemon is ready does not end the process.
[[nodiscard]] ExitStatus runCommandLine(int argumentCount, const char* const* arguments,
                                        std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
