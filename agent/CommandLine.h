// Why: options and commands are described in one place, apart from what the commands do.
// Always: a wrong command line is one line on `err` that says what is wrong, and nothing is run.
#pragma once

#include <iosfwd>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

[[nodiscard]] ExitStatus runCommandLine(int argumentCount, const char* const* arguments,
                                        std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
