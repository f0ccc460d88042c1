// A client that can do what a well-behaved one never does.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace ZelAgent {

class SocketClient final {
 public:
  explicit SocketClient(const std::string& path);
  SocketClient(SocketClient&& other) noexcept;
  SocketClient& operator=(SocketClient&&) = delete;
  ~SocketClient();

  // Whether all of it was taken; a daemon that has closed takes nothing.
  bool send(std::string_view bytes) const;
  // Says that nothing more will be sent.
  void endSending() const;

  // The bytes up to and with the newline; without one where the daemon closes before.
  std::string receiveLine();
  // The lines of a text answer without the last; or all there was before the daemon closed.
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
  bool receiveMore();

  int socket_ = -1;
  std::string received_;  // and not yet given
};

}  // namespace ZelAgent
