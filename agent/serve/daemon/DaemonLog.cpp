#include "agent/serve/daemon/DaemonLog.h"

#include <ostream>

namespace ZelAgent {
namespace {

LogPriority priorityOf(std::string_view line) {
  if (line.starts_with("error: ")) return LogPriority::error;
  if (line.starts_with("warning: ")) return LogPriority::warning;
  return LogPriority::info;
}

}  // namespace

void DaemonLog::print(LogPriority priority, std::string_view line) {
  err_ << logLineStart(form_, priority, clock_()) << line << std::endl;
  err_.clear();
}

void DaemonLog::print(std::string_view line) {
  print(priorityOf(line), line);
}

}  // namespace ZelAgent
