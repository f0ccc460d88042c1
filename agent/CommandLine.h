#pragma once

#include <iosfwd>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

/// Where a command prints.
struct Printing {
  std::ostream& out;
  std::ostream& err;
};

/// Reads the options, runs the command that they choose, and returns its status. A wrong command
/// line is one line on `err`, and no command is run.
///
/// The command `serve` prints on `daemon`, which must not wait for a reader. With this command,
/// SIGHUP is blocked from the beginning, and stays blocked. So one that arrives before the daemon
/// is ready does not end the process.
[[nodiscard]] ExitStatus runCommandLine(int argumentCount, const char* const* arguments,
                                        Printing commands, Printing daemon);

}  // namespace ZelAgent
