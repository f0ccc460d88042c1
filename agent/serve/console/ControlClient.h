#pragma once

#include <string>
#include <utility>

#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct Answer;

/// Sends requests to the daemon at a socket. Each request has its own connection, so the daemon may
/// be restarted between two requests.
class ControlClient final {
 public:
  explicit ControlClient(std::string path) : path_(std::move(path)) {}

  /// Sends the request and waits for the answer. Throws a `SocketError` if no daemon answers.
  [[nodiscard]] Answer send(const Request& request) const;

 private:
  std::string path_;
};

}  // namespace ZelAgent
