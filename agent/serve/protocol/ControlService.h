#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "agent/commands/served/CommandCall.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/AnswerParts.h"
#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

class ServedAgent;

struct Reply {
  std::string bytes;
  bool isLast = false;                // the connection must be closed after it
  std::unique_ptr<AnswerParts> rest;  // of an answer of several parts; null if `bytes` is the end
};

/// Answers request lines. Each line gets one answer, also a wrong one. A long answer has several
/// parts, of which the caller asks for one after the other. Parts are empty while a command waits
/// for a change in progress. No exception leaves `reply` and
/// `continued`: when memory runs out, they end the process by `Duolog::outOfMemory`, and nobody is
/// answered.
class ControlService final {
 public:
  static constexpr std::size_t anyRoom = std::numeric_limits<std::size_t>::max();

  /// The agent must outlive this.
  ControlService(ServedAgent& served, std::size_t longestReply)
      : served_(served), longestReply_(longestReply) {}

  /// A reply of more bytes than `longestReply`, or than `room` at the moment, is replaced by an
  /// error. The command has been run in both cases.
  [[nodiscard]] Reply reply(const RequestLine& line, std::size_t room = anyRoom) noexcept;
  /// The next part of an answer. A long answer for which a command waited is replaced like that of
  /// `reply`. If the part cannot be made, the reply is empty and the last one, so that
  /// the client sees an answer without an end.
  [[nodiscard]] Reply continued(std::unique_ptr<AnswerParts> rest,
                                std::size_t room = anyRoom) noexcept;

 private:
  [[nodiscard]] Reply replyTo(const RequestLine& line, std::size_t room);
  [[nodiscard]] Reply replyInParts(std::unique_ptr<AnswerParts> parts, std::size_t room);
  [[nodiscard]] std::string bounded(const Answer& answer, Framing framing, std::size_t room) const;
  [[nodiscard]] std::optional<std::string> awaited(const AwaitedOutput& output, Framing framing,
                                                   std::size_t room) const;
  [[nodiscard]] std::variant<Answer, std::unique_ptr<AnswerParts>> answerTo(
      const RequestLine& line);

  ServedAgent& served_;
  std::size_t longestReply_;
};

}  // namespace ZelAgent
