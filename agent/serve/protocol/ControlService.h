#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class ServedAgent;
struct Answer;

struct Reply {
  std::string bytes;
  bool isLast = false;  // the connection must be closed after it
};

/// Answers request lines. Each line gets one answer, also a wrong one. No exception leaves `reply`:
/// when memory runs out, it ends the process by `Duolog::outOfMemory`, and nobody is answered.
class ControlService final {
 public:
  /// The agent must outlive this.
  ControlService(ServedAgent& served, std::size_t longestReply)
      : served_(served), longestReply_(longestReply) {}

  /// A reply of more bytes than `longestReply`, or than `room` at the moment, is replaced by an
  /// error. The command has been run in both cases.
  [[nodiscard]] Reply reply(const RequestLine& line, std::size_t room = anyRoom) noexcept;

 private:
  static constexpr std::size_t anyRoom = std::numeric_limits<std::size_t>::max();

  [[nodiscard]] Reply replyTo(const RequestLine& line, std::size_t room);
  [[nodiscard]] Answer answerTo(const RequestLine& line);

  ServedAgent& served_;
  std::size_t longestReply_;
};

}  // namespace ZelAgent
