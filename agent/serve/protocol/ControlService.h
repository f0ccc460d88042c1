// Why: what a daemon answers does not depend on how the bytes reach it.
// Always: every request line has one answer, whatever is in it, and never an exception.
#pragma once

#include <cstddef>
#include <string>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/RequestLines.h"

namespace ZelAgent {

struct Reply {
  std::string bytes;
  bool isLast = false;  // the conversation cannot go on
};

class ControlService final {
 public:
  // The agent outlives this. An answer of more bytes is replaced by an error.
  ControlService(ServedAgent& served, std::size_t longestReply)
      : served_(served), longestReply_(longestReply) {}

  [[nodiscard]] Reply reply(const RequestLine& line);

 private:
  [[nodiscard]] Answer answerTo(const RequestLine& line);

  ServedAgent& served_;
  std::size_t longestReply_;
};

}  // namespace ZelAgent
