// Why: `zel-agent serve` is the agent as a switch runs it: configured once, asked and changed while
// it runs.
// Always: it ends with `success` only when it was told to; whatever keeps it from serving is one
// line on `err`.
#pragma once

#include <iosfwd>

#include "agent/language/ExitStatus.h"
#include "agent/serve/daemon/Daemon.h"

namespace ZelAgent {

[[nodiscard]] ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
