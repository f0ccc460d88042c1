#pragma once

#include <sys/stat.h>

#include <string>

#include "Blinklog/FileHandle.h"

namespace ZelAgent {

/// The Unix socket on which a daemon listens. Whoever can write to it commands the agent.
///
/// The socket's file never has wider permissions than its owner's. A file at the path is replaced
/// only if it is a socket on which nobody listens. At the end the file is removed only if it is the
/// one that was made here. Of several daemons that start at once, at most one gets the path.
class ListeningSocket final {
 public:
  /// Throws a `SocketError`.
  explicit ListeningSocket(std::string path);
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// Gives the non-blocking descriptor away. The file still belongs to this object.
  [[nodiscard]] int release() noexcept { return socket_.release(); }

 private:
  void claimPath();
  void bindPath();

  std::string path_;
  Blinklog::FileHandle socket_;
  struct stat file_ {};
};

}  // namespace ZelAgent
