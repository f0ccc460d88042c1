#pragma once

#include <cstdint>
#include <functional>
#include <string>

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
/// The same with the environment of this process.
[[nodiscard]] LogForm logFormOf(int descriptor);

/// What stands before a line that is logged at this time.
[[nodiscard]] std::string logLineStart(LogForm form, LogPriority priority, WallTime time);

/// Returns what stands before a line that is printed now. An empty one stands for nothing.
using LineStart = std::function<std::string()>;

/// The beginning of the warnings in a log on the descriptor.
[[nodiscard]] LineStart warningStart(int descriptor);

}  // namespace ZelAgent
