#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Blinklog/Record.h"
#include "Blinklog/RingClock.h"
#include "Blinklog/RingFileError.h"
#include "Blinklog/Site.h"
#include "Blinklog/Slot.h"
#include "Velo/Export.h"

namespace Blinklog {

/// One argument of a message. `kind` is 's' for text, 'u' for an unsigned number, 'b' for a
/// boolean.
struct Argument {
  char kind;
  std::uint32_t number = 0;
  std::string_view text = {};
};

class RingFile;

/// The last messages, in a fixed number of slots of fixed size.
///
/// Use it for messages that are read after a failure. A write is a bounded copy into the oldest
/// slot. It does not allocate, and text is formatted only by a dump. The texts of a message share a
/// slot of `slotBytes`. A text that does not fit is cut, and a dump shows "..." after it. Two names
/// of 100 bytes always fit. Each message has the time of its beginning.
///
/// Invariant: message number n (from 0) is in slot n modulo the number of slots. A slot holds the
/// number of its message only while that message is complete.
class ZEL_EXPORT Ring {
 public:
  static constexpr std::size_t slotBytes = Slot::bytes;

  /// A ring of `slots` messages, which reads its clocks by `clock`. Precondition: at least one
  /// slot.
  explicit Ring(std::size_t slots, ClockReader clock = &::clock_gettime);
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;
  ~Ring();

  /// A message while it is written. It takes the arguments in order, as many as fit. Its destructor
  /// completes the message. No other message may be written during its lifetime.
  class Message;

  void write(SiteId site, std::span<const Argument> arguments) noexcept;

  /// The messages in the ring, oldest first.
  [[nodiscard]] std::vector<Record> dump() const;
  /// The number of messages written so far.
  [[nodiscard]] std::uint64_t written() const noexcept { return written_; }
  [[nodiscard]] std::size_t slots() const noexcept { return slots_; }
  /// Moves the ring and its messages into a file, which outlives this process and is read by
  /// `RingImage`. A file of that name is kept as FILE.previous. Writing costs the same as before.
  /// Throws `RingFileError`; the ring is then unchanged.
  void fileIs(const std::string& path);
  /// Continues in memory, without the messages so far, if `address` is in the memory into which the
  /// file is mapped. Otherwise returns false and changes nothing.
  ///
  /// For the handler of SIGBUS, which a store raises when its page of the file is gone. The store
  /// succeeds when it is repeated. A message that was partly written before is left out. This
  /// function only calls what such a handler may call.
  [[nodiscard]] bool leaveFile(const void* address) noexcept;
  /// Removes all messages. The numbering continues.
  void clear() noexcept;

 private:
  std::size_t slots_;
  std::unique_ptr<Slot[]> ownMemory_;  // null when the ring is in a file
  std::unique_ptr<RingFile> file_;
  Slot* ring_;  // in `ownMemory_` or in `file_`
  ClockReader clock_;
  ClockPair start_;
  std::uint64_t written_ = 0;
  std::size_t next_ = 0;  // the slot of the next message
};

/// See the declaration in `Ring`.
class Ring::Message {
 public:
  Message(Ring& ring, SiteId site) noexcept : ring_(ring), slot_(ring.ring_[ring.next_]) {
    slot_.sequence = Slot::noMessage;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    slot_.site = site;
    slot_.time = tickTime(ring.clock_);
    std::atomic_signal_fence(std::memory_order_seq_cst);
  }
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;
  ~Message() {
    slot_.size = static_cast<std::uint32_t>(used_);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    slot_.sequence = ring_.written_++;
    if (++ring_.next_ == ring_.slots_) ring_.next_ = 0;
  }

  void put(const Argument& argument) noexcept {
    if (argument.kind == 's') {
      putText(argument.text);
    } else if (left() >= sizeof argument.number) {
      putBytes(&argument.number, sizeof argument.number);
    }
  }

 private:
  [[nodiscard]] std::size_t left() const noexcept { return slot_.arguments.size() - used_; }
  void putText(std::string_view text) noexcept {
    if (left() < sizeof(TextHeader)) return;
    const std::size_t kept = std::min(text.size(), left() - sizeof(TextHeader));
    const TextHeader header{static_cast<std::uint16_t>(kept), kept != text.size()};
    putBytes(&header, sizeof header);
    std::copy_n(text.data(), kept, reinterpret_cast<char*>(slot_.arguments.data() + used_));
    used_ += kept;
  }
  void putBytes(const void* bytes, std::size_t size) noexcept {
    std::memcpy(slot_.arguments.data() + used_, bytes, size);
    used_ += size;
  }

  Ring& ring_;
  Slot& slot_;
  std::size_t used_ = 0;
};

/// The ring of this process.
ZEL_EXPORT extern Ring ringOfProcess;
[[nodiscard]] inline Ring& ring() noexcept {
  return ringOfProcess;
}

}  // namespace Blinklog
