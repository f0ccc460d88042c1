#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Expected.h"

namespace VrfModel {

/// A difference, and the index of the event after which it was seen.
struct Difference {
  std::size_t event = 0;
  std::string text;
};

/// Compares the messages in the ring of the process with the expected ones. A dump of the ring is
/// slow, so one dump serves many events.
class MessageTape {
 public:
  /// Ignores the messages that are in the ring already.
  MessageTape();

  /// Records that `event` has happened and must have written `expected`.
  void eventIs(std::size_t event, const Steps<Message>& expected);
  /// Whether `compare` must be called before the next event: the ring is half full, or the number
  /// of messages is wrong.
  [[nodiscard]] bool isDue() const noexcept { return isDue_; }
  /// Dumps the ring. Returns the first difference since the last call.
  [[nodiscard]] std::optional<Difference> compare();

 private:
  struct Entry {
    std::size_t event;
    std::uint64_t begin;
    std::uint64_t end;
    Steps<Message> expected;
  };

  std::vector<Entry> entries_;
  std::uint64_t begin_;
  std::uint64_t end_;
  bool isDue_ = false;
};

}  // namespace VrfModel
