#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Blinklog {

/// One argument of a message. `kind` 's' is text, 'u' an unsigned number, 'b' a boolean.
struct Argument {
  char kind;
  std::uint32_t number = 0;
  std::string_view text = {};
};

/// Where and what a message is. `fragments` are its text in order; "%s", "%u" and "%b" stand for
/// an argument of that kind.
struct Site {
  std::string path;
  unsigned line = 0;
  std::string function;
  unsigned level = 0;
  std::vector<std::string> fragments;

  friend bool operator==(const Site&, const Site&) = default;
};

/// Names a registered site; small enough to be written with each message.
using SiteId = std::uint32_t;

/// Registers `site` process-wide and gives its id, the same one for an equal site. The site is
/// copied, so messages can be dumped after the library that wrote them was unloaded.
[[nodiscard, gnu::visibility("default")]] SiteId siteIs(const Site& site);

/// One message as it is dumped.
struct Record {
  std::uint64_t sequence;
  const Site* site;
  /// The fragments with the arguments in their places.
  std::string text;
};

/// The last messages, in a fixed number of slots of fixed size.
///
/// Choose it for what is worth knowing after the fact: writing is a bounded copy into the oldest
/// slot, never an allocation, and no text is formatted until somebody dumps. A message's texts
/// share a slot of `slotBytes`; what does not fit is cut and shown with "..." behind it. Two names
/// of 100 bytes always fit.
///
/// Invariant: message number n (from 0) is in slot n modulo the number of slots, and a slot holds
/// the number of its message only while that message is whole in it.
class [[gnu::visibility("default")]] Ring {
 public:
  static constexpr std::size_t slotBytes = 256;

  /// A ring of `slots` messages. Precondition: at least one.
  explicit Ring(std::size_t slots);
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;
  ~Ring();

  void write(SiteId site, std::span<const Argument> arguments) noexcept;

  /// The messages it holds, oldest first.
  [[nodiscard]] std::vector<Record> dump() const;
  /// Messages written so far.
  [[nodiscard]] std::uint64_t written() const noexcept {
    return written_;
  }
  [[nodiscard]] std::size_t slots() const noexcept {
    return slots_;
  }
  /// Forgets all messages; numbering goes on.
  void clear() noexcept;

 private:
  struct Slot;

  std::size_t slots_;
  std::unique_ptr<Slot[]> ring_;
  std::uint64_t written_ = 0;
};

/// The ring of this process.
[[nodiscard, gnu::visibility("default")]] Ring& ring();

}  // namespace Blinklog
