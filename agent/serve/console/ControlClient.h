// Why: whoever asks a daemon wants an answer to one command, not a conversation.
// Always: each command has a connection of its own, so a daemon may be replaced between two of
// them.
#pragma once

#include <string>

#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class ControlClient final {
 public:
  explicit ControlClient(std::string path) : path_(std::move(path)) {}

  // Waits for the answer. Throws a SocketError where there is no daemon, or no answer.
  [[nodiscard]] Answer ask(const Request& request) const;

 private:
  std::string path_;
};

}  // namespace ZelAgent
