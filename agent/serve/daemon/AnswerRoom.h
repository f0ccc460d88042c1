#pragma once

#include <algorithm>
#include <cstddef>

#include "agent/language/Limits.h"

namespace ZelAgent {

/// The room for the answers that wait for all clients together.
///
/// An answer of more than `shortAnswerBytes` bytes is sent only if all answers that wait, with it,
/// have at most `total` bytes. Shorter answers are always sent, so one client cannot keep another
/// from short commands. With N clients at most `total` + N * `shortAnswerBytes` bytes wait. Nobody
/// waits for room. A client that is alone has the whole room.
class AnswerRoom final {
 public:
  explicit AnswerRoom(std::size_t total) noexcept : total_(total) {}
  AnswerRoom(const AnswerRoom&) = delete;
  AnswerRoom& operator=(const AnswerRoom&) = delete;
  ~AnswerRoom() = default;

  /// The most bytes that the next answer may have.
  [[nodiscard]] std::size_t forNext() const noexcept {
    return std::max(total_ - std::min(total_, waiting_), Limits::shortAnswerBytes);
  }

 private:
  friend class WaitingAnswer;

  std::size_t total_;
  std::size_t waiting_ = 0;  // bytes
};

/// The answer of one client in the room. It leaves the room when it has been sent or the client is
/// gone.
class WaitingAnswer final {
 public:
  /// No answer waits yet. The room must outlive this.
  explicit WaitingAnswer(AnswerRoom& room) noexcept : room_(room) {}
  WaitingAnswer(const WaitingAnswer&) = delete;
  WaitingAnswer& operator=(const WaitingAnswer&) = delete;
  ~WaitingAnswer() { leave(); }

  /// An answer of so many bytes waits. Precondition: no other one waits.
  void enter(std::size_t bytes) noexcept {
    bytes_ = bytes;
    room_.waiting_ += bytes;
  }
  /// No answer waits.
  void leave() noexcept {
    room_.waiting_ -= bytes_;
    bytes_ = 0;
  }

 private:
  AnswerRoom& room_;
  std::size_t bytes_ = 0;
};

}  // namespace ZelAgent
