#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

/// The exit status of every command. Where several apply, the highest is returned.
enum class ExitStatus : int {
  success = 0,
  /// With --strict: a rule or an action was not programmed on the chip. Also: the output could not
  /// be written, a socket could not be made, no daemon could be reached, or `diff` found a
  /// difference.
  failure = 1,
  /// A configuration, another input file or the command line is wrong. Nothing of the wrong input
  /// was applied.
  badInput = 2,
};

/// "error: LINE" for each line of `what`.
[[nodiscard]] std::vector<std::string> errorLines(std::string_view what);

/// Prints the lines of `errorLines` on `err` and returns `status`.
ExitStatus reportError(std::ostream& err, std::string_view what,
                       ExitStatus status = ExitStatus::badInput);

/// Prints a line "warning: WARNING" on `err` for each warning.
void reportWarnings(std::ostream& err, const std::vector<std::string>& warnings);

/// Flushes `out`. Returns `success`, or reports on `err` that `out` could not be written and
/// returns `failure`.
[[nodiscard]] ExitStatus finishOutput(std::ostream& out, std::ostream& err);

}  // namespace ZelAgent
