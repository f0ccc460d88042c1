// Why: one command, many from a pipe, and a console show their answers alike.
// Always: output is on `out` and flushed before what is wrong is on `err`.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"
#include "agent/serve/console/ControlClient.h"

namespace ZelAgent {

class Asker final {
 public:
  Asker(ControlClient client, bool json, std::ostream& out, std::ostream& err)
      : client_(std::move(client)), json_(json), out_(out), err_(err) {}

  // Throws a SocketError where there is no daemon.
  void needDaemon() const;
  // Shows the answer to the command and gives its status. Throws a SocketError.
  ExitStatus ask(const std::string& command);
  // The same, where a daemon that is not there is shown, too, and is a failure.
  ExitStatus askAnyway(const std::string& command);

  // What the last word of the line may become; nothing where no daemon tells.
  [[nodiscard]] std::vector<std::string> completionsOf(const std::string& line) const;

 private:
  void showError(const std::string& what);

  ControlClient client_;
  bool json_;
  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace ZelAgent
