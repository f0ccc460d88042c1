#include "agent/serve/console/ControlClient.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <utility>

#include "Blinklog/FileHandle.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/SocketAddress.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;

// Repeats a call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR)
    result = call();
  return result;
}

// Limits each wait of the socket. 0 sets no limit.
void waitIs(const FileHandle& socket, std::chrono::milliseconds wait) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
  const timeval limit{seconds.count(), std::chrono::microseconds(wait - seconds).count()};
  for (const int direction : {SO_SNDTIMEO, SO_RCVTIMEO})
    setsockopt(socket.get(), SOL_SOCKET, direction, &limit, sizeof limit);
}

FileHandle connectTo(const std::string& path, std::chrono::milliseconds wait) {
  const sockaddr_un address = socketAddressOf(path);
  FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) throw socketErrorOf(path, "a socket cannot be created", errno);
  waitIs(socket, wait);
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  if (uninterrupted([&] { return connect(socket.get(), generic, sizeof address); }) != 0) {
    throw SocketError(socketErrorOf(path, "no daemon can be reached", errno).what() +
                      std::string("; start one with: zel-agent serve CONFIG --socket ") +
                      printable(path, Limits::shownTextBytes));
  }
  return socket;
}

// A daemon that refuses a client answers without reading the request. A failed write is therefore
// no error: the answer is read in any case.
void sendBytes(const FileHandle& socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto sent = uninterrupted(
        [&] { return ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); });
    if (sent < 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

[[noreturn]] void failAt(const std::string& path, const std::string& what) {
  throw SocketError(printable(path, Limits::shownTextBytes) + ": " + what);
}

[[noreturn]] void failOnRead(const std::string& path, std::chrono::milliseconds wait) {
  if (errno != EAGAIN) throw socketErrorOf(path, "the daemon does not answer", errno);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait).count();
  failAt(path, "the daemon has sent nothing for " + std::to_string(seconds) +
                   " s; it may still run the command; see --timeout");
}

std::string receiveLine(const FileHandle& socket, const std::string& path,
                        std::chrono::milliseconds wait) {
  std::string line;
  char block[65536];
  while (!line.ends_with('\n')) {
    const auto got = uninterrupted([&] { return read(socket.get(), block, sizeof block); });
    if (got < 0) failOnRead(path, wait);
    if (got == 0) failAt(path, "the daemon closed the connection without an answer");
    line.append(block, static_cast<std::size_t>(got));
    if (line.size() > Limits::answerBytes) {
      failAt(path, "the answer is longer than " + std::to_string(Limits::answerBytes) + " bytes");
    }
  }
  return line;
}

bool isAnswer(const OrderedJson& document, bool asJson) {
  if (!document.is_object() || !document.contains("output")) return false;
  const OrderedJson status = document.value("status", OrderedJson());
  return status.is_number_unsigned() && status <= static_cast<int>(ExitStatus::badInput) &&
         (document["output"].is_string() || (asJson && status == 0));
}

// The document; discarded if it is no JSON. What is nested too deeply is not kept, since functions
// that read a document call themselves for each level.
OrderedJson parseAnswer(const std::string& line, const std::string& path) {
  bool isTooDeep = false;
  const auto keep = [&](int depth, OrderedJson::parse_event_t event, OrderedJson& /*value*/) {
    const bool opens = event == OrderedJson::parse_event_t::object_start ||
                       event == OrderedJson::parse_event_t::array_start;
    isTooDeep = isTooDeep || (opens && depth >= Limits::answerLevels);
    return !isTooDeep;
  };
  auto document = OrderedJson::parse(line, keep, false);
  if (isTooDeep) {
    failAt(path,
           "the answer nests deeper than " + std::to_string(Limits::answerLevels) + " levels");
  }
  return document;
}

Answer answerIn(const std::string& line, const std::string& path, bool asJson) {
  auto document = parseAnswer(line, path);
  if (!isAnswer(document, asJson)) {
    failAt(path, "the process that listens there is not zel-agent; it answered " + inQuotes(line));
  }
  return {static_cast<ExitStatus>(document["status"].get<int>()), std::move(document["output"])};
}

}  // namespace

Answer ControlClient::send(const Request& request) const {
  const FileHandle socket = connectTo(path_, wait_);
  sendBytes(socket, toLine(request));
  return answerIn(receiveLine(socket, path_, wait_), path_, request.asJson);
}

}  // namespace ZelAgent
