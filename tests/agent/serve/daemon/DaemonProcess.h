// Runs the real agent as a daemon. Tests wait for its output, never for time to pass. A wait for
// something that does not happen fails the test.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/files/TemporaryFolder.h"
#include "tests/waiting/ChildProcess.h"

namespace ZelAgent {

// A folder for a socket, with a short path. It is removed at the end.
using SocketFolder = TestFiles::TemporaryFolder;

// For a daemon that may fail to serve.
struct Unawaited {};

class DaemonProcess final {
 public:
  // Starts `zel-agent serve`, and waits for nothing.
  DaemonProcess(Unawaited unawaited, const std::string& configuration, const std::string& socket,
                const std::vector<std::string>& arguments = {},
                const std::vector<std::string>& environment = {});
  // The same, and waits until it serves. `environment` is NAME=VALUE, added to that
  // of the test.
  DaemonProcess(const std::string& configuration, const std::string& socket,
                const std::vector<std::string>& arguments = {},
                const std::vector<std::string>& environment = {});
  DaemonProcess(const DaemonProcess&) = delete;
  DaemonProcess& operator=(const DaemonProcess&) = delete;
  // Kills it if it has not ended.
  ~DaemonProcess();

  void signal(int number) const;
  // Waits for its end and returns its exit status; -1 if a signal ended it. It is killed if it does
  // not end.
  int exitStatus();
  // SIGTERM, and its exit status.
  int end();

  // The next line that it writes to standard output; nothing at its end.
  std::optional<std::string> outLine();
  // The same of its log, without the time, which each line must have.
  std::optional<std::string> errLine();
  // Everything that it writes to standard error until it ends, without the times.
  std::string restOfErr();
  // The same with the times of its lines.
  std::string restOfLog();
  // Closes the reading end of its standard error.
  void closeErr();

  [[nodiscard]] const std::string& socket() const { return socket_; }

 private:
  std::string socket_;
  Waiting::ChildProcess process_;
  int out_ = -1;
  int err_ = -1;
};

}  // namespace ZelAgent
