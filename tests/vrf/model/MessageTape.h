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

/// Compares the messages in the ring of the process with those expected. Reading the ring is slow,
/// so it lets many events pass before it looks.
class MessageTape {
 public:
  /// Messages written before are passed over.
  MessageTape();

  /// `event` is over and should have brought about `expected`.
  void eventIs(std::size_t event, const Steps<Message>& expected);
  /// Whether the ring must be looked at before the next event, because it is getting full, or
  /// because there are more or fewer messages than expected.
  [[nodiscard]] bool isDue() const noexcept { return isDue_; }
  /// Looks at the ring: the first difference since it last did.
  [[nodiscard]] std::optional<Difference> settle();

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
