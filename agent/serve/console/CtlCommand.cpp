#include "agent/serve/console/CtlCommand.h"

#include <unistd.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <utility>

#include "Mox/QuotedString.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"
#include "agent/serve/console/ControlClient.h"
#include "agent/serve/console/LineEditor.h"
#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {
namespace {

// Prints answers alike for one command, for many from a pipe, and in a console. Output is on `out`
// and flushed before an error is printed on `err`.
class Asker final {
 public:
  Asker(ControlClient client, bool json, std::ostream& out, std::ostream& err)
      : client_(std::move(client)), json_(json), out_(out), err_(err) {}

  // Throws a SocketError if there is no daemon.
  void needDaemon() const;
  // Prints the answer to the command and returns its status. Throws a SocketError.
  ExitStatus ask(const std::string& command);
  // The same, but prints that there is no daemon, which is a failure.
  ExitStatus askAnyway(const std::string& command);

  // What the last word of the line may become. Nothing without a daemon.
  [[nodiscard]] std::vector<std::string> completionsOf(const std::string& line) const;

 private:
  void showError(const std::string& what);

  ControlClient client_;
  bool json_;
  std::ostream& out_;
  std::ostream& err_;
};

void Asker::needDaemon() const {
  static_cast<void>(client_.ask({"", false}));
}

ExitStatus Asker::ask(const std::string& command) {
  const Answer answer = client_.ask({command, json_});
  if (answer.status != ExitStatus::success) {
    showError(answer.output.get<std::string>());
  } else if (json_) {
    out_ << oneLine(answer.output) << '\n';
  } else {
    out_ << answer.output.get<std::string>();
  }
  out_.flush();
  return answer.status;
}

ExitStatus Asker::askAnyway(const std::string& command) {
  try {
    return ask(command);
  } catch (const SocketError& error) {
    showError(error.what());
    return ExitStatus::failure;
  }
}

std::vector<std::string> Asker::completionsOf(const std::string& line) const {
  try {
    const Answer answer = client_.ask({"complete " + Mox::quoted(line), true});
    if (answer.status == ExitStatus::success) return answer.output.get<std::vector<std::string>>();
  } catch (const SocketError&) {
    // Without a daemon there is nothing to offer; asking will say why.
  }
  return {};
}

void Asker::showError(const std::string& what) {
  out_.flush();
  err_ << "error: " << what << std::endl;
}

bool asksToLeave(const std::string& line) {
  return line == "exit" || line == "quit";
}

// A command that fails does not end the console. Ctrl-D, "exit" and "quit" do. Throws a SocketError
// if there is no daemon at the start.
ExitStatus runConsole(Asker& asker) {
  asker.needDaemon();
  LineEditor editor("zel-agent> ", historyFile(),
                    [&asker](const std::string& line) { return asker.completionsOf(line); });
  while (const auto line = editor.readLine()) {
    if (asksToLeave(*line)) break;
    if (!isBlankLine(*line)) asker.askAnyway(*line);
  }
  return ExitStatus::success;
}

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
