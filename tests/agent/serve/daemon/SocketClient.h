// A client that can also misbehave. A wait for a daemon that does not answer fails the test.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tests/waiting/Deadline.h"

namespace ZelAgent {

class SocketClient final {
 public:
  explicit SocketClient(const std::string& path);
  SocketClient(SocketClient&& other) noexcept;
  SocketClient& operator=(SocketClient&&) = delete;
  ~SocketClient();

  // Returns whether all bytes were sent. A daemon that has closed the connection accepts none, and
  // one that does not read accepts no more than the kernel buffers.
  bool send(std::string_view bytes) const;
  // Shuts down the sending side.
  void endSending() const;

  // The bytes up to and with the newline; without one where the daemon closes before.
  std::string receiveLine();
  // The lines of a text answer without the last one; or all lines before the daemon closed.
  std::string receiveText();
  // Everything up to the end.
  std::string receiveAll();
  // Waits, without reading, until there is something to read.
  void waitUntilReadable() const;
  // Waits, without reading, until the daemon has closed.
  void waitUntilClosed() const;

  // The answer to a request in either framing.
  std::string text(const std::string& command);
  nlohmann::json output(const std::string& command);

 private:
  bool receiveMore(const Waiting::Deadline& deadline);

  int socket_ = -1;
  std::string received_;  // and not yet returned
};

}  // namespace ZelAgent
