#include "agent/serve/protocol/ControlService.h"

#include <exception>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/language/Errors.h"
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

}  // namespace

Reply ControlService::reply(const RequestLine& line) {
  const Framing framing = framingOf(line.text);
  Reply reply{toBytes(answerTo(line), framing), line.kind == RequestLine::Kind::tooLong};
  if (reply.bytes.size() <= longestReply_) return reply;
  const Answer tooLong =
      failure("the answer has " + std::to_string(reply.bytes.size()) + " bytes; the limit is " +
              std::to_string(longestReply_) + " bytes");
  return {toBytes(tooLong, framing), reply.isLast};
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
  } catch (const std::exception& error) {
    return failure("the command failed: " + printable(error.what(), 1000));
  }
}

}  // namespace ZelAgent
