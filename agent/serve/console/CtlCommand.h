#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct CtlOptions {
  std::string socket;
  std::vector<std::string> command;  // none: commands are read from `in`, or at a terminal
  bool json = false;
};

/// `zel-agent ctl`: sends commands to a daemon.
///
/// Prints the output of the answers on `out`, and errors on `err`, one line each. Returns the
/// status of the answer; of several answers the highest.
[[nodiscard]] ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                                 std::ostream& err);

}  // namespace ZelAgent
