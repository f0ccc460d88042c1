#include "agent/language/LogLine.h"

#include <sys/stat.h>

#include <cstdlib>

namespace ZelAgent {

LogForm logFormOf(int descriptor, const char* journalStream) {
  struct stat found {};
  if (journalStream == nullptr || fstat(descriptor, &found) != 0) return LogForm::time;
  const std::string stream = std::to_string(found.st_dev) + ':' + std::to_string(found.st_ino);
  return stream == journalStream ? LogForm::priority : LogForm::time;
}

LogForm logFormOf(int descriptor) {
  return logFormOf(descriptor, std::getenv("JOURNAL_STREAM"));
}

std::string logLineStart(LogForm form, LogPriority priority, WallTime time) {
  if (form == LogForm::time) return timeText(time) + ' ';
  return '<' + std::to_string(static_cast<unsigned>(priority)) + '>';
}

LineStart warningStart(int descriptor) {
  return [form = logFormOf(descriptor)] {
    return logLineStart(form, LogPriority::warning, systemTime());
  };
}

}  // namespace ZelAgent
