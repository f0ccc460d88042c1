#include "agent/serve/console/CtlCommand.h"

#include <unistd.h>

#include <algorithm>
#include <istream>
#include <ostream>

#include "agent/language/Words.h"
#include "agent/serve/console/Asker.h"
#include "agent/serve/console/Console.h"
#include "agent/serve/protocol/SocketAddress.h"

namespace ZelAgent {
namespace {

std::string lineOf(const std::vector<std::string>& words) {
  std::vector<std::string> quoted(words.size());
  std::transform(words.begin(), words.end(), quoted.begin(), toWord);
  return joined(quoted, " ");
}

ExitStatus askEachLine(Asker& asker, std::istream& in) {
  ExitStatus worst = ExitStatus::success;
  for (std::string line; std::getline(in, line);)
    worst = std::max(worst, asker.ask(line));
  return worst;
}

ExitStatus askAll(Asker& asker, const CtlOptions& options, std::istream& in) {
  if (!options.command.empty()) return asker.ask(lineOf(options.command));
  if (isatty(STDIN_FILENO) == 1) return runConsole(asker);
  return askEachLine(asker, in);
}

}  // namespace

ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                   std::ostream& err) {
  Asker asker(ControlClient(options.socket), options.json, out, err);
  ExitStatus status = ExitStatus::success;
  try {
    status = askAll(asker, options, in);
  } catch (const SocketError& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
  return std::max(status, finishOutput(out, err));
}

}  // namespace ZelAgent
