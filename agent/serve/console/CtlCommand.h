// Why: `zel-agent ctl` asks a daemon, for people and for scripts.
// Always: output goes to `out` as the daemon gives it, what is wrong to `err`, one line each; the
// exit status is that of the answer, and of several the highest.
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

[[nodiscard]] ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                                 std::ostream& err);

}  // namespace ZelAgent
