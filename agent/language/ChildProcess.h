#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ZelAgent {

/// How a program ended, and what it printed.
struct ChildOutcome {
  int status = 0;      // 128 and the number of the signal if a signal ended it, as in a shell
  std::string output;  // the beginning of standard output and standard error
};

/// Runs a program and waits for its end. The program is looked up in PATH and gets the arguments as
/// they are, without a shell. Its standard input is empty. At most `keptBytes` of its output are
/// kept; the rest is read, so that the program can end.
///
/// Returns nothing if there is no such program. Throws a `std::system_error` if it cannot be
/// started for another reason.
[[nodiscard]] std::optional<ChildOutcome> runProgram(const std::string& program,
                                                     const std::vector<std::string>& arguments,
                                                     std::size_t keptBytes);

}  // namespace ZelAgent
