#pragma once

#include <iosfwd>
#include <string_view>
#include <utility>

#include "agent/language/LogLine.h"
#include "agent/language/TimeText.h"

namespace ZelAgent {

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
