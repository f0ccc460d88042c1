#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "agent/language/TimeText.h"

namespace ZelAgent {

/// The priorities of syslog that the daemon uses.
enum class LogPriority : std::uint8_t { error = 3, warning = 4, notice = 5, info = 6, debug = 7 };

/// What stands before each line of the log: its time, or for the journal of systemd its priority,
/// as "<4>". The journal has the time.
enum class LogForm : std::uint8_t { time, priority };

/// `priority` if `descriptor` is the journal: the variable JOURNAL_STREAM of the environment is
/// DEVICE:INODE of what it refers to. `journalStream` is that variable, null if it is not set.
[[nodiscard]] LogForm logFormOf(int descriptor, const char* journalStream);

/// The log of the daemon, a line for each event. The stream may be closed.
class DaemonLog final {
 public:
  DaemonLog(std::ostream& err, LogForm form, WallClock clock = systemTime)
      : err_(err), form_(form), clock_(std::move(clock)) {}
  DaemonLog(const DaemonLog&) = delete;
  DaemonLog& operator=(const DaemonLog&) = delete;
  ~DaemonLog() = default;

  void print(LogPriority priority, std::string_view line);
  /// The first word of the line is its priority: "error:", "warning:", or else `info`.
  void print(std::string_view line);

 private:
  std::ostream& err_;
  LogForm form_;
  WallClock clock_;
};

}  // namespace ZelAgent
