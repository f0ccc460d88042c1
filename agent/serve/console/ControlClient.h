#pragma once

#include <string>
#include <utility>

#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct Answer;

/// Asks the daemon at a socket. Each request has its own connection, so the daemon may be replaced
/// between two of them.
class ControlClient final {
 public:
  explicit ControlClient(std::string path) : path_(std::move(path)) {}

  /// Waits for the answer. Throws a `SocketError` if there is no daemon or no answer.
  [[nodiscard]] Answer ask(const Request& request) const;

 private:
  std::string path_;
};

}  // namespace ZelAgent
