#include "agent/serve/console/Console.h"

#include "agent/serve/console/HistoryFile.h"
#include "agent/serve/console/LineEditor.h"

namespace ZelAgent {
namespace {

bool asksToLeave(const std::string& line) {
  return line == "exit" || line == "quit";
}

bool isBlank(const std::string& line) {
  return line.find_first_not_of(" \t") == std::string::npos;
}

}  // namespace

ExitStatus runConsole(Asker& asker) {
  asker.needDaemon();
  LineEditor editor("zel-agent> ", historyFile(),
                    [&asker](const std::string& line) { return asker.completionsOf(line); });
  while (const auto line = editor.readLine()) {
    if (asksToLeave(*line)) break;
    if (!isBlank(*line)) asker.askAnyway(*line);
  }
  return ExitStatus::success;
}

}  // namespace ZelAgent
