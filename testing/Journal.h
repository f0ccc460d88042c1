#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZelVrfSelectionPolicy::Testing {

/// One ordered record of everything that a test watches.
///
/// Hook calls, table changes and trace lines from the recorders of this folder go into one journal,
/// so that a test can pin their order across boundaries by comparing whole journals. Choose it
/// where the order matters, or where what must not happen does; to look at one outcome, read the
/// table.
///
/// Lines stand in the order in which they were written, and nothing is left out. A journal outlives
/// the recorders that write into it.
///
///     Journal journal;
///     const auto chip = Mox::makePtr<RecordingVrfHelper>(journal);
///     const TableJournal tables(journal, users, statuses);
///     ...
///     EXPECT_THAT(journal.take(), ElementsAre("vrfRefCount red = 1", "createVrf red",
///                                             "hwStatus red = ok"));
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
