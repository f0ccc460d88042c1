#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ZelAgent {

/// What the last word of a line may become.
using Completer = std::function<std::vector<std::string>(const std::string& line)>;

/// Reads edited lines from the terminal, with the history of earlier ones.
///
/// There is at most one at a time, since there is one terminal. The history's file is readable by
/// its owner only. Without a file that can be written, the history ends with the process.
class LineEditor final {
 public:
  LineEditor(std::string prompt, std::string historyFile, Completer completer);
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  ~LineEditor();

  /// The next line without its end. Nothing at the end of input. A line that is not blank enters
  /// the history.
  [[nodiscard]] std::optional<std::string> readLine();

 private:
  void remember(const std::string& line);

  std::string prompt_;
  std::string historyFile_;  // empty for none
  std::string last_;
};

/// The file for the history: "zel-agent/history" below XDG_STATE_HOME, whose folder is made if it
/// does not exist. If that variable is not set: ".zel-agent_history" in the home folder. Empty if
/// neither is possible.
[[nodiscard]] std::string historyFile();

}  // namespace ZelAgent
