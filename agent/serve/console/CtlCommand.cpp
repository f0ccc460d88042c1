#include "agent/serve/console/CtlCommand.h"

#include <unistd.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <utility>

#include "Mox/QuotedString.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/serve/console/ControlClient.h"
#include "agent/serve/console/LineEditor.h"
#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {
namespace {

// Runs commands on the daemon and prints their output. Output is on `out` and flushed before an
// error is printed on `err`.
class ControlSession final {
 public:
  ControlSession(ControlClient client, bool json, std::ostream& out, std::ostream& err)
      : client_(std::move(client)), json_(json), out_(out), err_(err) {}

  // Throws a SocketError if no daemon answers.
  void requireDaemon() const;
  // Prints the output of the command and returns its status. Throws a SocketError.
  ExitStatus run(const std::string& command);
  // The same, but prints a SocketError and returns `failure`.
  ExitStatus runOrReport(const std::string& command);

  // The completions of the last word of the line. None if no daemon answers.
  [[nodiscard]] std::vector<std::string> completionsOf(const std::string& line) const;

 private:
  void printError(const std::string& what);

  ControlClient client_;
  bool json_;
  std::ostream& out_;
  std::ostream& err_;
};

void ControlSession::requireDaemon() const {
  static_cast<void>(client_.send({"", false}));
}

ExitStatus ControlSession::run(const std::string& command) {
  const Answer answer = client_.print({command, json_}, out_);
  if (answer.status != ExitStatus::success)
    printError(printable(answer.output.get<std::string>(), std::string_view::npos));
  out_.flush();
  return answer.status;
}

ExitStatus ControlSession::runOrReport(const std::string& command) {
  try {
    return run(command);
  } catch (const SocketError& error) {
    printError(error.what());
    return ExitStatus::failure;
  }
}

// The elements that are printable texts.
std::vector<std::string> printableTexts(const OrderedJson& list) {
  std::vector<std::string> texts;
  for (const OrderedJson& element : list) {
    if (!element.is_string()) continue;
    const auto& text = element.get_ref<const std::string&>();
    if (printable(text, std::string_view::npos) == text) texts.push_back(text);
  }
  return texts;
}

std::vector<std::string> ControlSession::completionsOf(const std::string& line) const {
  try {
    const Answer answer = client_.send({"complete " + Mox::quoted(line), true});
    if (answer.status == ExitStatus::success) return printableTexts(answer.output);
  } catch (const SocketError&) {
    // The next command prints the error.
  }
  return {};
}

void ControlSession::printError(const std::string& what) {
  out_.flush();
  err_ << "error: " << what << std::endl;
}

bool isExitCommand(const std::string& line) {
  return line == "exit" || line == "quit";
}

// A command that fails does not end the console. Ctrl-D, "exit" and "quit" end it. Throws a
// SocketError if no daemon answers at the start.
ExitStatus runConsole(ControlSession& session) {
  session.requireDaemon();
  LineEditor editor("zel-agent> ", historyFile(),
                    [&session](const std::string& line) { return session.completionsOf(line); });
  while (const auto line = editor.readLine()) {
    if (isExitCommand(*line)) break;
    if (!isBlankLine(*line)) session.runOrReport(*line);
  }
  return ExitStatus::success;
}

std::string lineOf(const std::vector<std::string>& words) {
  std::vector<std::string> quoted(words.size());
  std::transform(words.begin(), words.end(), quoted.begin(), toWord);
  return joined(quoted, " ");
}

ExitStatus runEachLine(ControlSession& session, std::istream& in) {
  ExitStatus highest = ExitStatus::success;
  for (std::string line; std::getline(in, line);)
    highest = std::max(highest, session.run(line));
  return highest;
}

ExitStatus runSession(ControlSession& session, const CtlOptions& options, std::istream& in) {
  if (!options.command.empty()) return session.run(lineOf(options.command));
  if (isatty(STDIN_FILENO) == 1) return runConsole(session);
  return runEachLine(session, in);
}

}  // namespace

ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                   std::ostream& err) {
  ControlSession session(ControlClient(options.socket, options.timeout), options.json, out, err);
  ExitStatus status = ExitStatus::success;
  try {
    status = runSession(session, options, in);
  } catch (const SocketError& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
  return std::max(status, finishOutput(out, err));
}

}  // namespace ZelAgent
