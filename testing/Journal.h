#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZelVrfSelectionPolicy::Testing {

/// One ordered record of everything that a test watches: hook calls, table changes and trace lines
/// from the recorders of this folder go into one journal, so that a test can pin their order across
/// boundaries by comparing whole journals.
class Journal {
 public:
  void write(std::string_view line) { lines_.emplace_back(line); }

  [[nodiscard]] const std::vector<std::string>& lines() const noexcept { return lines_; }
  /// Gives the lines so far and begins anew.
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines_, {}); }

 private:
  std::vector<std::string> lines_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
