#include "agent/serve/protocol/ControlService.h"

#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "Duolog/OutOfMemory.h"
#include "agent/commands/served/CommandDispatch.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/protocol/AnswerPages.h"
#include "agent/serve/protocol/AwaitedAnswer.h"

namespace ZelAgent {
namespace {

Answer refusal(const std::string& what) {
  return {ExitStatus::badInput, what};
}

Answer failure(const std::string& what) {
  return {ExitStatus::failure, what};
}

Answer tooLong(std::size_t size, std::size_t limit) {
  return failure("the answer has " + std::to_string(size) + " bytes; the limit is " +
                 std::to_string(limit) + " bytes");
}

Answer withoutRoom(std::size_t size, std::size_t room) {
  return failure("the answer has " + std::to_string(size) +
                 " bytes, and other answers wait; the room for it is " + std::to_string(room) +
                 " bytes; try again later");
}

// The answer to a command that has thrown. Called while the exception is handled.
Answer answerToFailure() {
  try {
    throw;
  } catch (const RequestError& error) {
    return refusal(error.what());
  } catch (const EventError& error) {
    return refusal(error.what());
  } catch (const ConfigError& error) {
    return refusal(error.what());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return failure("the command failed: " + printable(error.what(), Limits::shownTextBytes));
  }
}

}  // namespace

Reply ControlService::reply(const RequestLine& line, std::size_t room) noexcept {
  try {
    return replyTo(line, room);
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  }
}

Reply ControlService::continued(std::unique_ptr<AnswerParts> rest, std::size_t room) noexcept {
  try {
    return replyInParts(std::move(rest), room);
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  } catch (const std::exception&) {
    return {"", true, nullptr};
  }
}

Reply ControlService::replyTo(const RequestLine& line, std::size_t room) {
  const Framing framing = framingOf(line.text);
  auto answer = answerTo(line);
  if (auto* const parts = std::get_if<std::unique_ptr<AnswerParts>>(&answer))
    return continued(std::move(*parts), room);
  return {bounded(std::get<Answer>(answer), framing, room), line.kind == RequestLine::Kind::tooLong,
          nullptr};
}

Reply ControlService::replyInParts(std::unique_ptr<AnswerParts> parts, std::size_t room) {
  Reply reply{parts->next(room), false, nullptr};
  if (parts->hasNext()) reply.rest = std::move(parts);
  return reply;
}

std::string ControlService::bounded(const Answer& answer, Framing framing, std::size_t room) const {
  std::string bytes = toBytes(answer, framing);
  if (bytes.size() > longestReply_) return toBytes(tooLong(bytes.size(), longestReply_), framing);
  if (bytes.size() > room) return toBytes(withoutRoom(bytes.size(), room), framing);
  return bytes;
}

std::optional<std::string> ControlService::awaited(const AwaitedOutput& output, Framing framing,
                                                   std::size_t room) const {
  try {
    auto complete = output();
    if (!complete) return std::nullopt;
    return bounded({ExitStatus::success, std::move(*complete)}, framing, room);
  } catch (const std::exception&) {
    return toBytes(answerToFailure(), framing);
  }
}

std::variant<Answer, std::unique_ptr<AnswerParts>> ControlService::answerTo(
    const RequestLine& line) {
  if (line.kind == RequestLine::Kind::tooLong) {
    return refusal("a request must be a line of at most " + std::to_string(RequestLines::longest) +
                   " bytes, found more; the connection is closed");
  }
  if (line.kind == RequestLine::Kind::unfinished) {
    return refusal("a request must end with a newline, found the end after " + inQuotes(line.text));
  }
  try {
    const Request request = readRequest(line.text);
    CommandResult result = startCommand(served_, request.command, request.asJson, request.columns);
    if (auto* const pages = std::get_if<ReportPagesPtr>(&result)) {
      return std::make_unique<AnswerPages>(std::move(*pages), framingOf(line.text), request.asJson);
    }
    if (auto* const output = std::get_if<AwaitedOutput>(&result)) {
      return std::make_unique<AwaitedAnswer>(
          [this, output = std::move(*output), framing = framingOf(line.text)](std::size_t room) {
            return awaited(output, framing, room);
          });
    }
    return Answer{ExitStatus::success, std::move(std::get<CommandOutput>(result))};
  } catch (const std::exception&) {
    return answerToFailure();
  }
}

}  // namespace ZelAgent
