#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>

namespace ZelAgent {

/// The size of a terminal. 0 if it is unknown.
struct Screen {
  std::size_t rows = 0;
  std::size_t columns = 0;
};

/// Prints lines a screen at a time. Before a line that would leave the screen it prints "--More--"
/// and reads a key: Space for the next screen, Enter for the next line, q or Ctrl-C for no more
/// lines. Without a number of rows it never waits.
class Pager final {
 public:
  /// Returns the next key; negative if there is none.
  using ReadKey = std::function<int()>;

  Pager(std::ostream& out, Screen screen, ReadKey readKey);

  /// Prints the line, which has no line end. Returns whether more lines are wanted.
  bool line(std::string_view line);

 private:
  // Waits for a key. `needed` rows are wanted.
  void wait(std::size_t needed);

  std::ostream& out_;
  Screen screen_;
  ReadKey readKey_;
  std::size_t free_;  // rows before the next wait
  bool isEnded_ = false;
};

}  // namespace ZelAgent
