#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/language/ExitStatus.h"
#include "agent/serve/console/ConsoleHelp.h"
#include "agent/serve/console/CtlCommand.h"
#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {

class ControlClient;
class OutputFilters;

/// Prints on a terminal what a client waits for, and erases it.
class WaitNotice final {
 public:
  WaitNotice(std::ostream& err, std::string path) : err_(err), path_(std::move(path)) {}

  void show(const std::string& command, std::chrono::seconds waited);
  void erase();

 private:
  std::ostream& err_;
  std::string path_;
  std::size_t shown_ = 0;  // columns
};

/// Runs commands on the daemon and prints their output. Output is on `out` and flushed before an
/// error is printed on `err`.
class ControlSession final {
 public:
  ControlSession(const CtlOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), notice_(err, options.socket), out_(out), err_(err) {}

  /// Throws a SocketError if no daemon answers.
  void requireDaemon();
  /// Runs the command of the line, prints what its filters leave, and returns its status. Prints
  /// wrong filters. Throws a SocketError.
  ExitStatus runLine(const std::string& line);
  /// The same, but prints a SocketError and returns `failure`.
  ExitStatus runLineOrReport(const std::string& line);

  /// Whether answers are shown a screen at a time, and of how many rows if not of the terminal.
  void pagesAre(bool areOn) { pages_ = areOn; }
  void rowsAre(std::optional<std::size_t> rows) { rows_ = rows; }

  /// The completions of the last word of the line. None if no daemon answers.
  [[nodiscard]] std::vector<std::string> completionsOf(const std::string& line) const;
  /// What the last word of the line may be, with help.
  [[nodiscard]] DaemonChoices choicesFor(const std::string& line) const;

 private:
  // A client that shows what it waits for, and gives up on Ctrl-C.
  [[nodiscard]] ControlClient clientFor(const std::string& command);
  ExitStatus print(const Request& request, std::ostream& out);
  ExitStatus printFiltered(const Request& request, OutputFilters& filters);
  void printPages(const std::string& text);
  void printError(const std::string& what);
  [[nodiscard]] Answer helpFor(const Request& request) const;

  const CtlOptions& options_;
  WaitNotice notice_;
  bool pages_ = false;
  std::optional<std::size_t> rows_;
  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace ZelAgent
