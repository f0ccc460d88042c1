#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"
#include "agent/language/Limits.h"

namespace ZelAgent {

struct CtlOptions {
  std::string socket;
  std::vector<std::string> command;  // none: commands are read from `in` or from a terminal
  bool json = false;
  bool noPager = false;
  std::chrono::seconds timeout = Limits::ctlTimeout;  // of each wait for the daemon; 0 for none
};

/// `zel-agent ctl`: sends commands to a daemon.
///
/// A single argument with blanks is a whole line, which may have output filters
/// (OutputFilters.h). Several arguments are one word each; the words after a "|" and the keyword of
/// a filter are the text of that filter. At a terminal tables fit its width, and a console stops
/// after each screen.
///
/// Prints the output of the commands on `out`, with unprintable characters escaped, and each error
/// as one line on `err`. Returns the highest status of the commands.
[[nodiscard]] ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                                 std::ostream& err);

}  // namespace ZelAgent
