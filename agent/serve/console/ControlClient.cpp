#include "agent/serve/console/ControlClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <utility>

#include "Blinklog/FileHandle.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/serve/console/AnswerPrinter.h"
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

// What the client waits for, for messages.
std::string awaited(const Request& request) {
  if (isBlankLine(request.command)) return "the command";
  return "the command " + inQuotes(request.command);
}

// What messages say when the daemon does not do what a client waits for.
struct WaitTexts {
  std::string lacking;  // "the daemon has LACKING for 3 s"
  std::string consequence;
};

// The waits for the daemon, one after the other.
class DaemonWait final {
 public:
  DaemonWait(const std::string& path, std::chrono::milliseconds limit, const WaitObserver& observer)
      : path_(path), limit_(limit), observer_(observer) {}

  // Calls `isReady` with the time until the next look at the clock, until it is true. It may return
  // early. Throws a SocketError if the daemon is not ready in time.
  template <class IsReady>
  void until(IsReady isReady, const WaitTexts& texts) const {
    const auto start = std::chrono::steady_clock::now();
    while (!isReady(sliceAfter(elapsedSince(start))))
      notify(elapsedSince(start), texts);
    if (observer_.ends) observer_.ends();
  }

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  [[nodiscard]] std::chrono::milliseconds limit() const noexcept { return limit_; }

 private:
  using Milliseconds = std::chrono::milliseconds;

  static Milliseconds elapsedSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::floor<Milliseconds>(std::chrono::steady_clock::now() - start);
  }

  [[nodiscard]] Milliseconds sliceAfter(Milliseconds waited) const {
    const Milliseconds toSecond = std::chrono::seconds(1) - waited % std::chrono::seconds(1);
    return limit_.count() == 0 ? toSecond : std::clamp(limit_ - waited, Milliseconds(0), toSecond);
  }

  void notify(Milliseconds waited, const WaitTexts& texts) const {
    if (observer_.givesUp && observer_.givesUp()) {
      failAt(path_, "interrupted; " + texts.consequence);
    }
    const auto seconds = std::chrono::floor<std::chrono::seconds>(waited);
    if (limit_.count() > 0 && waited >= limit_) {
      failAt(path_, "the daemon has " + texts.lacking + " for " + std::to_string(seconds.count()) +
                        " s; " + texts.consequence + "; see --timeout");
    }
    if (observer_.waits && seconds.count() > 0) observer_.waits(seconds);
  }

  const std::string& path_;
  Milliseconds limit_;
  const WaitObserver& observer_;
};

// A Unix socket that does not block cannot be waited for while it connects. So each call waits for
// a part of the time.
FileHandle connectTo(const DaemonWait& wait) {
  const sockaddr_un address = socketAddressOf(wait.path());
  FileHandle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) throw socketErrorOf(wait.path(), "a socket cannot be created", errno);
  const auto isConnected = [&](std::chrono::milliseconds slice) {
    constexpr std::chrono::milliseconds shortest(1);
    waitIs(socket, std::max(slice, shortest));
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    if (connect(socket.get(), generic, sizeof address) == 0) return true;
    if (errno == EINTR || errno == EAGAIN) return false;
    throw SocketError(socketErrorOf(wait.path(), "no daemon can be reached", errno).what() +
                      std::string("; start one with: zel-agent serve CONFIG --socket ") +
                      printable(wait.path(), Limits::shownTextBytes));
  };
  wait.until(isConnected, {"accepted no connection", "the command was not sent"});
  waitIs(socket, wait.limit());
  return socket;
}

// The bytes that the daemon sends after the request.
class ReceivedBytes final : public AnswerSource {
 public:
  ReceivedBytes(const FileHandle& socket, const DaemonWait& wait, const Request& request)
      : socket_(socket),
        path_(wait.path()),
        wait_(wait),
        texts_{"sent nothing", "the daemon may still run " + awaited(request)} {}

  [[nodiscard]] std::string_view next() override {
    awaitBytes();
    const auto got = uninterrupted([&] { return read(socket_.get(), block_, sizeof block_); });
    if (got < 0) throw socketErrorOf(path_, "the daemon does not answer", errno);
    if (got == 0) throw errorOf(std::string("the daemon closed the connection ") + whenClosed_);
    return {block_, static_cast<std::size_t>(got)};
  }
  [[nodiscard]] SocketError errorOf(const std::string& what) const override {
    return SocketError(printable(path_, Limits::shownTextBytes) + ": " + what);
  }

  // The output begins.
  void noteOutput() noexcept { whenClosed_ = "before the end of the answer"; }

 private:
  void awaitBytes() const {
    const auto hasBytes = [this](std::chrono::milliseconds slice) {
      pollfd events{socket_.get(), POLLIN, 0};
      const int ready = poll(&events, 1, static_cast<int>(slice.count()));
      if (ready < 0 && errno != EINTR) {
        throw socketErrorOf(path_, "the daemon does not answer", errno);
      }
      return ready > 0;
    };
    wait_.until(hasBytes, texts_);
  }

  const FileHandle& socket_;
  const std::string& path_;
  const DaemonWait& wait_;
  WaitTexts texts_;
  const char* whenClosed_ = "without an answer";
  char block_[65536] = {};
};

std::string lineFrom(ReceivedBytes& source, std::string line) {
  while (!line.ends_with('\n')) {
    line += source.next();
    if (line.size() > Limits::answerBytes) {
      throw source.errorOf("the answer is longer than " + std::to_string(Limits::answerBytes) +
                           " bytes");
    }
  }
  return line;
}

// The first bytes. They are as many as decide whether they begin with `answerBeginning`, and with
// which character the output begins.
std::string beginningFrom(ReceivedBytes& source) {
  std::string begun;
  while (begun.size() <= answerBeginning.size() && !begun.ends_with('\n') &&
         answerBeginning.starts_with(begun))
    begun += source.next();
  return begun;
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

char firstOfOutput(std::string_view begun) {
  if (!begun.starts_with(answerBeginning) || begun.size() == answerBeginning.size()) return '\0';
  return begun[answerBeginning.size()];
}

bool isLongText(std::string_view begun, bool asJson) {
  return !asJson && firstOfOutput(begun) == '"';
}

bool isLongJson(std::string_view begun, bool asJson) {
  const char first = firstOfOutput(begun);
  return asJson && (first == '[' || first == '{');
}

// Prints the output of a short answer, and returns the rest of it.
Answer printed(Answer answer, bool asJson, std::ostream& out) {
  if (answer.status != ExitStatus::success) return answer;
  if (asJson) {
    out << oneLine(answer.output) << '\n';
  } else {
    out << printableLines(answer.output.get_ref<const std::string&>());
  }
  return {};
}

}  // namespace

Answer ControlClient::send(const Request& request) const {
  const DaemonWait wait(path_, wait_, observer_);
  const FileHandle socket = connectTo(wait);
  sendBytes(socket, toLine(request));
  ReceivedBytes received(socket, wait, request);
  return answerIn(lineFrom(received, {}), path_, request.asJson);
}

Answer ControlClient::print(const Request& request, std::ostream& out) const {
  const DaemonWait wait(path_, wait_, observer_);
  const FileHandle socket = connectTo(wait);
  sendBytes(socket, toLine(request));
  ReceivedBytes received(socket, wait, request);
  std::string begun = beginningFrom(received);
  if (isLongText(begun, request.asJson)) {
    received.noteOutput();
    printTextAnswer(begun.substr(answerBeginning.size()), received, out);
  } else if (isLongJson(begun, request.asJson)) {
    received.noteOutput();
    printJsonAnswer(begun.substr(answerBeginning.size()), received, out);
  } else {
    return printed(answerIn(lineFrom(received, std::move(begun)), path_, request.asJson),
                   request.asJson, out);
  }
  return {};
}

}  // namespace ZelAgent
