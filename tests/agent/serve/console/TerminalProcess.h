// Runs the real agent in a pseudo-terminal, and types.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

class TerminalProcess final {
 public:
  // `environment` is NAME=VALUE, added to that of the test.
  TerminalProcess(std::vector<std::string> arguments, const std::vector<std::string>& environment);
  TerminalProcess(const TerminalProcess&) = delete;
  TerminalProcess& operator=(const TerminalProcess&) = delete;
  // Kills it if it has not ended.
  ~TerminalProcess();

  // Waits first until a line editor reads key by key: what shows its prompt may still have the
  // terminal in line mode, where a control key acts on the line and is lost.
  void type(std::string_view keys) const;
  // Waits until the text is on the screen, behind what was waited for before; what comes up to it
  // is returned. A failure where it never comes.
  std::string waitFor(const std::string& text);
  // Waits for its end and returns its exit status; -1 if a signal ended it. A failure where it
  // does not end.
  int exitStatus();

 private:
  [[nodiscard]] bool isTakenByKey() const;
  bool readMore();

  pid_t process_ = -1;
  int terminal_ = -1;
  std::string screen_;  // and not yet waited for
  bool hasLeft_ = false;
};

}  // namespace ZelAgent
