#pragma once

#include <sys/stat.h>

#include <chrono>
#include <string>

#include "Blinklog/FileHandle.h"

namespace ZelAgent {

/// The Unix socket on which a daemon listens. A process that can write to it controls the agent.
///
/// Only the owner can ever access the socket's file. A file at the path is replaced only if it is a
/// socket on which no process listens. At the end the file is removed only if it is still the one
/// that was created here. Of several daemons that start at the same time, at most one gets the
/// path: each locks the file PATH.lock for a moment. Only the owner can open that file. It is not
/// removed.
class ListeningSocket final {
 public:
  /// Waits up to `lockWait` while another process holds the lock. Throws a `SocketError`.
  explicit ListeningSocket(std::string path,
                           std::chrono::milliseconds lockWait = std::chrono::seconds(1));
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// Returns the non-blocking descriptor and gives up its ownership. The file still belongs to
  /// this.
  [[nodiscard]] int release() noexcept { return socket_.release(); }

 private:
  void claimPath(std::chrono::milliseconds lockWait);
  void bindPath();

  std::string path_;
  Blinklog::FileHandle socket_;
  struct stat file_ {};
};

}  // namespace ZelAgent
