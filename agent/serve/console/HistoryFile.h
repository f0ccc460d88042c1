// Why: a console remembers across its ends what was entered, where the system keeps such things.
// Always: a path in a folder that exists, or none.
#pragma once

#include <string>

namespace ZelAgent {

// "zel-agent/history" below XDG_STATE_HOME, whose folder is made if need be; ".zel-agent_history"
// in the home folder where that variable is not set; empty where neither is.
[[nodiscard]] std::string historyFile();

}  // namespace ZelAgent
