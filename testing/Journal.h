#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZelVrfSelectionPolicy::Testing {

/// An ordered record of the events of a test.
///
/// The recorders of this folder write hook calls, table changes and trace lines into one journal,
/// so that a test can check their order by comparing journals. Use it where the order matters, or
/// where a test must show that nothing else happens. To check one outcome, read the table.
///
/// Lines are in the order in which they were written. A journal must outlive its recorders.
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
  /// Returns the lines and clears the journal.
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines_, {}); }

 private:
  std::vector<std::string> lines_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
