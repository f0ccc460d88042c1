// Why: an operator who looks around asks one thing after the other.
// Always: a command that fails is told and does not end the console; Ctrl-D, "exit" and "quit" do.
#pragma once

#include "agent/language/ExitStatus.h"
#include "agent/serve/console/Asker.h"

namespace ZelAgent {

// Throws a SocketError where there is no daemon at the start.
[[nodiscard]] ExitStatus runConsole(Asker& asker);

}  // namespace ZelAgent
