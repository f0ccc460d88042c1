// Runs the real agent in a pseudo-terminal, and types. The agent is killed if it has not ended at
// the end of the test.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/waiting/ChildProcess.h"

namespace ZelAgent {

class TerminalProcess final {
 public:
  // `environment` is NAME=VALUE, added to that of the test.
  TerminalProcess(std::vector<std::string> arguments, const std::vector<std::string>& environment);
  TerminalProcess(const TerminalProcess&) = delete;
  TerminalProcess& operator=(const TerminalProcess&) = delete;
  ~TerminalProcess();

  // Waits first until a line editor reads key by key: what shows its prompt may still have the
  // terminal in line mode, where a control key acts on the line and is lost.
  void type(std::string_view keys) const;
  // Types Ctrl-C while no line is edited.
  void interrupt() const;
  // Waits until the text is on the screen, behind what was waited for before; what comes up to it
  // is returned. A failure where it never comes.
  std::string waitFor(const std::string& text);
  // Waits for its end and returns its exit status; -1 if a signal ended it. A failure where it
  // does not end, and it is killed.
  int exitStatus();

 private:
  [[nodiscard]] bool isTakenByKey() const;
  bool readMore(const Waiting::Deadline& deadline);

  Waiting::ChildProcess process_;
  int terminal_ = -1;
  std::string screen_;  // and not yet waited for
  bool hasLeft_ = false;
};

}  // namespace ZelAgent
