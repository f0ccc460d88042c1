#pragma once

#include <cstddef>
#include <string>

#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class ServedAgent;
struct Answer;

struct Reply {
  std::string bytes;
  bool isLast = false;  // the connection must be closed after it
};

/// Answers request lines. Each line gets one answer, also a wrong one. No exception leaves `reply`.
class ControlService final {
 public:
  /// The agent must outlive this. A reply of more bytes than `longestReply` is replaced by an
  /// error.
  ControlService(ServedAgent& served, std::size_t longestReply)
      : served_(served), longestReply_(longestReply) {}

  [[nodiscard]] Reply reply(const RequestLine& line);

 private:
  [[nodiscard]] Answer answerTo(const RequestLine& line);

  ServedAgent& served_;
  std::size_t longestReply_;
};

}  // namespace ZelAgent
