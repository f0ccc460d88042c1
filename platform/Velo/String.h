#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Velo/Export.h"

namespace Velo {

/// An immutable byte string with the size of a pointer.
///
/// Use it for text that entities store and return. A copy shares the bytes and increments a
/// counter. Construction from bytes allocates once; the empty string does not allocate. Any byte is
/// allowed, also NUL. Use strings on the event-loop thread only: their counters are not atomic.
///
///     const Velo::String reason("no free entry");
///     const Velo::String copy = reason;        // shares the bytes
///     std::string_view bytes = copy.bytes();   // valid while `copy` or `reason` lives
class ZEL_EXPORT String {
 public:
  String() noexcept = default;
  String(std::string_view bytes);  // NOLINT(google-explicit-constructor): text is text
  String(const char* text) : String(std::string_view(text)) {}         // NOLINT: as above
  String(const std::string& text) : String(std::string_view(text)) {}  // NOLINT: as above

  String(const String& other) noexcept : shared_(other.shared_) {
    if (shared_ != nullptr) ++shared_->users;
  }
  String(String&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
  String& operator=(String other) noexcept {
    std::swap(shared_, other.shared_);
    return *this;
  }
  ~String() {
    if (shared_ != nullptr && --shared_->users == 0) release(shared_);
  }

  /// The bytes. They are valid while a string that shares them exists.
  [[nodiscard]] std::string_view bytes() const noexcept {
    return shared_ == nullptr ? std::string_view()
                              : std::string_view(shared_->bytes(), shared_->size);
  }
  [[nodiscard]] std::size_t size() const noexcept { return shared_ == nullptr ? 0 : shared_->size; }
  [[nodiscard]] bool empty() const noexcept { return shared_ == nullptr; }
  [[nodiscard]] std::string str() const { return std::string(bytes()); }

  /// Hash of the bytes under `seed`.
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;

  friend bool operator==(const String& a, const String& b) noexcept {
    return a.shared_ == b.shared_ || a.bytes() == b.bytes();
  }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.bytes() <=> b.bytes();
  }

 private:
  // Followed in memory by `size` bytes. Never shared with a size of 0.
  struct Shared {
    unsigned users;
    std::size_t size;
    [[nodiscard]] const char* bytes() const noexcept {
      return reinterpret_cast<const char*>(this + 1);
    }
  };
  static void release(Shared* shared) noexcept;

  Shared* shared_ = nullptr;
};

/// Writes the bytes.
ZEL_EXPORT std::ostream& operator<<(std::ostream& stream, const String& text);

}  // namespace Velo
