#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ZelAgent {

/// Returns the completions of the last word of a line.
using Completer = std::function<std::vector<std::string>(const std::string& line)>;

/// Returns the text to print for a "?" after the line, with line ends. Nothing if the "?" is part
/// of the line.
using Explainer = std::function<std::optional<std::string>(const std::string& line)>;

/// Reads edited lines from the terminal, with the history of earlier ones. Tab completes a word.
/// "?" prints what may follow and keeps the line. Ctrl-C gives up the line.
///
/// A process has at most one editor at a time. Only the owner can read the history file. If the
/// file cannot be written, or is a link or no regular file, the history ends with the process.
class LineEditor final {
 public:
  LineEditor(std::string prompt, std::string historyFile, Completer completer,
             Explainer explainer = {});
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  ~LineEditor();

  /// The next line without its end. Nothing at the end of input. A line that was given up is empty.
  /// A line that is not blank enters the history.
  [[nodiscard]] std::optional<std::string> readLine();

 private:
  void remember(const std::string& line);

  std::string prompt_;
  std::string historyFile_;  // empty for none
  std::string last_;
};

/// The history file: "zel-agent/history" in XDG_STATE_HOME. Its folder is created if it does not
/// exist. If that variable is not set: ".zel-agent_history" in the home folder. Empty if
/// neither is possible.
[[nodiscard]] std::string historyFile();

}  // namespace ZelAgent
