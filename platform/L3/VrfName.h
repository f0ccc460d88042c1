#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Mox/CharRange.h"
#include "Mox/Hash.h"
#include "Mox/Type.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace L3 {

/// Name of a VRF: at most 100 bytes, any bytes. The empty name stands for no VRF; "default" is the
/// default VRF.
///
/// Names are compared, hashed and copied often, so equal names share one interned text. A name has
/// the size of a pointer. Equality and hash do not read the bytes, and a copy increments a counter.
/// Only the construction from bytes searches the table of names. Use names on the event-loop thread
/// only.
class ZEL_EXPORT VrfName {
 public:
  static const Mox::Type moxType;
  static constexpr std::size_t maxLength = 100;

  /// The empty name.
  VrfName() noexcept = default;
  /// Throws `Mox::RangeException` when `bytes` are more than `maxLength`.
  VrfName(std::string_view bytes);  // NOLINT(google-explicit-constructor): text names a VRF
  VrfName(const char* text) : VrfName(std::string_view(text)) {}         // NOLINT: as above
  VrfName(const std::string& text) : VrfName(std::string_view(text)) {}  // NOLINT: as above
  VrfName(const Velo::String& text) : VrfName(text.bytes()) {}           // NOLINT: as above

  VrfName(const VrfName& other) noexcept : interned_(other.interned_) {
    if (interned_ != nullptr) ++interned_->users;
  }
  VrfName(VrfName&& other) noexcept : interned_(std::exchange(other.interned_, nullptr)) {}
  VrfName& operator=(VrfName other) noexcept {
    std::swap(interned_, other.interned_);
    return *this;
  }
  ~VrfName() {
    if (interned_ != nullptr && --interned_->users == 0) release(interned_);
  }

  /// The bytes, valid as long as an equal name exists.
  [[nodiscard]] std::string_view bytes() const noexcept {
    return interned_ == nullptr ? std::string_view() : interned_->bytes();
  }
  [[nodiscard]] bool empty() const noexcept { return interned_ == nullptr; }
  [[nodiscard]] std::string str() const { return std::string(bytes()); }

  /// A hash of the bytes under the seed of the process, mixed with `seed`. Collections with names
  /// as keys use it. Names from outside the process cannot be chosen to collide.
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
    return scattered(hashes().seeded, seed);
  }
  /// `Mox::hashSingleAttr(0, bytes())`, the same in every process. Different names can be chosen to
  /// collide.
  [[nodiscard]] unsigned byteHash() const noexcept { return hashes().ofBytes; }

  /// A small number that no other name in use has; 0 for the empty name. Use it as an index into an
  /// array. It may be reused for another name when no copy of this name is left.
  [[nodiscard]] unsigned number() const noexcept {
    return interned_ == nullptr ? 0 : interned_->number;
  }

  /// The name "default".
  [[nodiscard]] static const VrfName& defaultVrf();
  [[nodiscard]] bool isDefaultVrf() const { return *this == defaultVrf(); }

  friend bool operator==(const VrfName& a, const VrfName& b) noexcept {
    return a.interned_ == b.interned_;
  }
  /// "default" is less than every other name. The others are compared byte by byte; a prefix is
  /// less.
  friend bool operator<(const VrfName& a, const VrfName& b) {
    if (b.isDefaultVrf()) return false;
    if (a.isDefaultVrf()) return true;
    return a.bytes() < b.bytes();
  }

 private:
  // Computed once for each distinct name.
  struct Hashes {
    unsigned seeded;  // by the seed of the process
    unsigned ofBytes;
  };
  // Shared by equal names.
  struct Interned {
    unsigned users;
    unsigned number;
    Hashes hashes;
    unsigned size;
    std::unique_ptr<const char[]> text;
    [[nodiscard]] std::string_view bytes() const noexcept { return {text.get(), size}; }
  };
  class Table;

  // Constructed while the platform is loaded, so that they outlive the statics of its users.
  static Table table_;
  static const VrfName default_;

  static unsigned scattered(unsigned hash, unsigned seed) noexcept {
    Mox::Hash running(seed, 0);
    running.hashMix(hash);
    return running.result();
  }
  static const Hashes& hashesOfEmpty() noexcept;
  static void release(Interned* interned) noexcept;

  [[nodiscard]] const Hashes& hashes() const noexcept {
    return interned_ == nullptr ? hashesOfEmpty() : interned_->hashes;
  }

  Interned* interned_ = nullptr;
};

/// String form: quoted and escaped.
[[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const VrfName& name);
/// Reads the string form. Throws `Mox::RangeException` for a name that is too long.
ZEL_EXPORT void sequenceToValue(Mox::CharRange& range, VrfName* name);
/// Writes the bare bytes.
ZEL_EXPORT std::ostream& operator<<(std::ostream& stream, const VrfName& name);

}  // namespace L3
