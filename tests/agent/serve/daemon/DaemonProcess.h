// Runs the real agent as a daemon. Tests wait for its output, never for time to pass.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace ZelAgent {

// A folder for a socket, with a short path. It is removed at the end.
class SocketFolder final {
 public:
  SocketFolder();
  SocketFolder(const SocketFolder&) = delete;
  SocketFolder& operator=(const SocketFolder&) = delete;
  ~SocketFolder();

  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + '/' + name; }

 private:
  std::string folder_;
};

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
  // Waits for its end and returns its exit status; -1 if a signal ended it.
  int exitStatus();
  // SIGTERM, and its exit status.
  int end();

  // The next line that it writes to standard output, or error; nothing at its end.
  std::optional<std::string> outLine();
  std::optional<std::string> errLine();
  // Everything that it writes to standard error until it ends.
  std::string restOfErr();
  // Closes the reading end of its standard error.
  void closeErr();

  [[nodiscard]] const std::string& socket() const { return socket_; }

 private:
  std::string socket_;
  pid_t process_ = -1;
  int out_ = -1;
  int err_ = -1;
};

}  // namespace ZelAgent
