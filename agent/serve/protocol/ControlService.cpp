#include "agent/serve/protocol/ControlService.h"

#include <exception>
#include <new>

#include "Duolog/OutOfMemory.h"
#include "agent/commands/served/CommandDispatch.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/protocol/Answer.h"

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

}  // namespace

Reply ControlService::reply(const RequestLine& line, std::size_t room) noexcept {
  try {
    return replyTo(line, room);
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  }
}

Reply ControlService::replyTo(const RequestLine& line, std::size_t room) {
  const Framing framing = framingOf(line.text);
  Reply reply{toBytes(answerTo(line), framing), line.kind == RequestLine::Kind::tooLong};
  const std::size_t size = reply.bytes.size();
  if (size > longestReply_) {
    reply.bytes = toBytes(tooLong(size, longestReply_), framing);
  } else if (size > room) {
    reply.bytes = toBytes(withoutRoom(size, room), framing);
  }
  return reply;
}

Answer ControlService::answerTo(const RequestLine& line) {
  if (line.kind == RequestLine::Kind::tooLong) {
    return refusal("a request must be a line of at most " + std::to_string(RequestLines::longest) +
                   " bytes, found more; the connection is closed");
  }
  if (line.kind == RequestLine::Kind::unfinished) {
    return refusal("a request must end with a newline, found the end after " + inQuotes(line.text));
  }
  try {
    const Request request = readRequest(line.text);
    return {ExitStatus::success, runCommand(served_, request.command, request.asJson)};
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

}  // namespace ZelAgent
