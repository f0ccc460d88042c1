#include "agent/serve/console/CtlCommand.h"

#include <unistd.h>

#include <algorithm>
#include <istream>
#include <iterator>
#include <ostream>

#include "Mox/QuotedString.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"
#include "agent/serve/console/ConsoleHelp.h"
#include "agent/serve/console/ControlSession.h"
#include "agent/serve/console/LineEditor.h"
#include "agent/serve/console/OutputFilters.h"
#include "agent/serve/console/Terminal.h"

namespace ZelAgent {
namespace {

// The console at a terminal.
class Console final {
 public:
  Console(ControlSession& session, std::ostream& err) : session_(session), err_(err) {}

  // A command that fails does not end the console. Ctrl-D, "exit" and "quit" end it. Throws a
  // SocketError if no daemon answers at the start.
  ExitStatus run();

 private:
  // Runs a command of the console itself. Returns whether the line is one.
  bool runOwnCommand(const std::vector<std::string>& words);

  ControlSession& session_;
  std::ostream& err_;
  bool isLeft_ = false;
};

ExitStatus Console::run() {
  const InterruptWatch watch;
  session_.requireDaemon();
  const auto complete = [this](const std::string& line) {
    return completionsAtConsole(
        line, [this](const auto& typed) { return session_.completionsOf(typed); });
  };
  const auto explain = [this](const std::string& line) {
    return choicesAtConsole(line, [this](const auto& typed) { return session_.choicesFor(typed); });
  };
  LineEditor editor("zel-agent> ", historyFile(), complete, explain);
  while (!isLeft_) {
    const auto line = editor.readLine();
    if (!line) break;
    if (!runOwnCommand(plainWordsOf(*line)) && !isBlankLine(*line)) session_.runLineOrReport(*line);
  }
  return ExitStatus::success;
}

bool Console::runOwnCommand(const std::vector<std::string>& words) {
  isLeft_ = words == std::vector<std::string>{"exit"} || words == std::vector<std::string>{"quit"};
  if (isLeft_) return true;
  if (words.empty() || words.front() != "terminal") return false;
  const auto rows =
      words.size() == 3 && words[1] == "length" ? parseNumber(words[2]) : std::nullopt;
  if (rows) {
    session_.rowsAre(*rows);
  } else {
    err_ << "error: terminal length N: N must be a number of lines; 0 for no pauses" << std::endl;
  }
  return true;
}

using WordIterator = std::vector<std::string>::const_iterator;

constexpr const char* separator = "|";

// The separator before the next filter, or the end. One that no filter follows is a name.
WordIterator endOfPart(WordIterator begin, WordIterator end) {
  for (auto word = begin; word != end; ++word) {
    if (*word == separator && word + 1 != end && beginsAFilter(*(word + 1))) return word;
  }
  return end;
}

// The keyword, and the other words as the text of the filter.
std::string filterOf(WordIterator begin, WordIterator end) {
  if (end - begin < 2) return *begin;
  return *begin + ' ' + Mox::quoted(joined({begin + 1, end}, " "));
}

std::string wordInLine(const std::string& word) {
  return word == separator ? Mox::quoted(word) : toWord(word);
}

// The line of a command, and of the filters after it.
std::string lineOf(const std::vector<std::string>& words) {
  auto end = endOfPart(words.begin(), words.end());
  std::vector<std::string> quoted;
  std::transform(words.begin(), end, std::back_inserter(quoted), wordInLine);
  std::string line = joined(quoted, " ");
  while (end != words.end()) {
    const auto begin = end + 1;
    end = endOfPart(begin, words.end());
    line += " | " + filterOf(begin, end);
  }
  return line;
}

// No word of a command needs blanks if it is the only one.
bool isWholeLine(const std::vector<std::string>& arguments) {
  return arguments.size() == 1 && arguments.front().find(' ') != std::string::npos;
}

ExitStatus runEachLine(ControlSession& session, std::istream& in) {
  ExitStatus highest = ExitStatus::success;
  for (std::string line; std::getline(in, line);)
    highest = std::max(highest, session.runLine(line));
  return highest;
}

ExitStatus runSession(ControlSession& session, const CtlOptions& options, std::istream& in,
                      std::ostream& err) {
  if (isWholeLine(options.command)) return session.runLine(options.command.front());
  if (!options.command.empty()) return session.runLine(lineOf(options.command));
  if (isatty(STDIN_FILENO) != 1) return runEachLine(session, in);
  session.pagesAre(!options.noPager && isatty(STDOUT_FILENO) == 1);
  return Console(session, err).run();
}

}  // namespace

ExitStatus control(const CtlOptions& options, std::istream& in, std::ostream& out,
                   std::ostream& err) {
  ControlSession session(options, out, err);
  ExitStatus status = ExitStatus::success;
  try {
    status = runSession(session, options, in, err);
  } catch (const SocketError& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
  return std::max(status, finishOutput(out, err));
}

}  // namespace ZelAgent
