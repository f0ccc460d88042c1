#include "agent/serve/daemon/DaemonLog.h"

#include <sys/stat.h>

#include <ostream>

namespace ZelAgent {
namespace {

LogPriority priorityOf(std::string_view line) {
  if (line.starts_with("error: ")) return LogPriority::error;
  if (line.starts_with("warning: ")) return LogPriority::warning;
  return LogPriority::info;
}

}  // namespace

LogForm logFormOf(int descriptor, const char* journalStream) {
  struct stat found {};
  if (journalStream == nullptr || fstat(descriptor, &found) != 0) return LogForm::time;
  const std::string stream = std::to_string(found.st_dev) + ':' + std::to_string(found.st_ino);
  return stream == journalStream ? LogForm::priority : LogForm::time;
}

void DaemonLog::print(LogPriority priority, std::string_view line) {
  if (form_ == LogForm::priority) {
    err_ << '<' << static_cast<unsigned>(priority) << '>';
  } else {
    err_ << timeText(clock_()) << ' ';
  }
  err_ << line << std::endl;
  err_.clear();
}

void DaemonLog::print(std::string_view line) {
  print(priorityOf(line), line);
}

}  // namespace ZelAgent
