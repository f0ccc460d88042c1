// Why: a terminal gives a line at a time to whoever edits it, with what was entered before at hand.
// Always: there is one at a time, as there is one terminal. The history's file is its owner's
// alone; without a file, or one that cannot be written, the history ends with the process.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ZelAgent {

// What the last word of a line may become.
using Completer = std::function<std::vector<std::string>(const std::string& line)>;

class LineEditor final {
 public:
  LineEditor(std::string prompt, std::string historyFile, Completer completer);
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  ~LineEditor();

  // The next line without its end; nothing when the terminal has no more. A line that is not blank
  // enters the history.
  [[nodiscard]] std::optional<std::string> readLine();

 private:
  void remember(const std::string& line);

  std::string prompt_;
  std::string historyFile_;  // empty for none
  std::string last_;
};

}  // namespace ZelAgent
