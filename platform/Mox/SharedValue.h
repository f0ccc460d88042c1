#pragma once

#include <memory>
#include <utility>

#include "Mox/Hash.h"

namespace Mox {

/// An immutable value that its copies share. A copy costs a counter, however large the value is.
///
/// Equal values are equal, whether they are shared or not. Values that are shared, and values with
/// different hashes, are compared without a look at their contents. `Value` has `hash(seed)`.
///
/// A moved-from object may only be destroyed or assigned to.
///
///     Mox::SharedValue<Timetable> timetable(read(file));
///     const Mox::SharedValue<Timetable> copy = timetable;     // shares
///     if (copy->departures.empty()) ...
template <class Value>
class SharedValue {
 public:
  SharedValue() : SharedValue(Value()) {}
  SharedValue(Value value)  // NOLINT(google-explicit-constructor): it is the value
      : shared_(std::make_shared<const Shared>(std::move(value))) {}

  [[nodiscard]] const Value& operator*() const noexcept { return shared_->value; }
  [[nodiscard]] const Value* operator->() const noexcept { return &shared_->value; }

  /// A hash of the value under the seed of the process, which is computed once.
  [[nodiscard]] unsigned hash() const noexcept { return shared_->hash; }

  friend bool operator==(const SharedValue& a, const SharedValue& b) noexcept {
    return a.shared_ == b.shared_ || (a.hash() == b.hash() && *a == *b);
  }

 private:
  struct Shared {
    explicit Shared(Value from)
        : value(std::move(from)), hash(value.hash(HashHelper::hashSeed32())) {}

    Value value;
    unsigned hash;
  };

  std::shared_ptr<const Shared> shared_;
};

}  // namespace Mox
