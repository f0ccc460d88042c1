#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <utility>

#include "agent/serve/protocol/Request.h"

namespace ZelAgent {

struct Answer;

/// Is called while a client waits for a connection or for an answer. Empty functions are not
/// called.
struct WaitObserver {
  /// Each second of a wait, with its length so far.
  std::function<void(std::chrono::seconds)> waits = {};
  /// The wait has ended: the connection is accepted, or bytes have arrived.
  std::function<void()> ends = {};
  /// Whether to give up. Asked each second and after each signal.
  std::function<bool()> givesUp = {};
};

/// Sends requests to the daemon at a socket. Each request has its own connection, so the daemon may
/// be restarted between two requests.
///
/// The process that listens at the socket need not be the daemon. An answer of more than
/// `Limits::answerBytes` bytes, or of more than `Limits::answerLevels` levels of JSON, is refused.
/// The output may have any characters.
class ControlClient final {
 public:
  /// `wait` limits each wait: for the connection, until the daemon reads more of the request, and
  /// for the next bytes of the answer. The daemon sends nothing while it runs the command, or those
  /// of other clients. 0 sets no limit.
  ControlClient(std::string path, std::chrono::milliseconds wait, WaitObserver observer = {})
      : path_(std::move(path)), wait_(wait), observer_(std::move(observer)) {}

  /// Sends the request and waits for the answer. Throws a `SocketError` if no daemon answers, or if
  /// the observer gives up.
  [[nodiscard]] Answer send(const Request& request) const;
  /// The same, and prints the output of a successful command on `out` while it arrives. The output
  /// of the answer that is returned is the error, or empty. The whole output may be longer than
  /// `Limits::answerBytes`; a line of text, or a name or value of JSON, may not.
  [[nodiscard]] Answer print(const Request& request, std::ostream& out) const;

 private:
  std::string path_;
  std::chrono::milliseconds wait_;
  WaitObserver observer_;
};

}  // namespace ZelAgent
