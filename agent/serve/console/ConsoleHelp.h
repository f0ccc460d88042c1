#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

// Help of the console. The daemon knows its commands. The console adds its own commands and the
// output filters.

/// The completions of the last word of the line. `ofCommands` returns those of the daemon.
[[nodiscard]] std::vector<std::string> completionsAtConsole(
    const std::string& line,
    const std::function<std::vector<std::string>(const std::string&)>& ofCommands);

struct HelpLine {
  std::string choice;  // what may be typed
  std::string help;
};

/// What a daemon knows of the last word of a line. Without lines there is an error.
struct DaemonChoices {
  std::vector<HelpLine> lines;
  std::string error;
};

/// What the last word of the line may be, one line each, with help. Nothing in a quoted word and in
/// the text of a filter, where a "?" is part of the line. The error of `ofCommands` is
/// printed only if the console itself knows no choice.
[[nodiscard]] std::optional<std::string> choicesAtConsole(
    const std::string& line, const std::function<DaemonChoices(const std::string&)>& ofCommands);

/// The words of a line without quotes; none for any other line.
[[nodiscard]] std::vector<std::string> plainWordsOf(std::string_view line);

}  // namespace ZelAgent
