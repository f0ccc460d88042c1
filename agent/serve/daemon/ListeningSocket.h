// Why: whoever can write to the socket commands the agent, and only one agent can listen there.
// Always: the socket's file never exists with wider permissions than its owner's. A file is only
// replaced if it is a socket on which nobody listens, and only removed again while it is the one
// that was made here. Of several daemons that start at once, at most one gets the path.
#pragma once

#include <sys/stat.h>

#include <string>

#include "agent/serve/protocol/FileDescriptor.h"

namespace ZelAgent {

class ListeningSocket final {
 public:
  // Throws a SocketError.
  explicit ListeningSocket(std::string path);
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  // Gives the descriptor, which is non-blocking, away. The file stays with this.
  [[nodiscard]] int release() noexcept { return socket_.release(); }

 private:
  void claimPath();
  void bindPath();

  std::string path_;
  FileDescriptor socket_;
  struct stat file_ {};
};

}  // namespace ZelAgent
