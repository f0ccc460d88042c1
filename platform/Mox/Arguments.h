#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Mox/AnyValue.h"

namespace Mox {

/// The arguments of one operation by name or number, on their way to the function that takes them.
///
/// It knows the name of what is called, so that a wrong argument is reported where it was given.
///
///     arguments.needCount(2);
///     table.vrfRefCountIs(arguments.at<VrfAction>(0), arguments.at<unsigned>(1));
class [[gnu::visibility("default")]] Arguments {
 public:
  /// Both must outlive this.
  Arguments(std::string_view callee, std::span<const AnyValue> values) noexcept
      : callee_(callee), values_(values) {}

  /// What is called.
  [[nodiscard]] std::string_view callee() const noexcept {
    return callee_;
  }
  [[nodiscard]] std::size_t count() const noexcept {
    return values_.size();
  }
  /// Throws `ArgumentException` when there are not so many.
  void needCount(std::size_t count) const;

  /// Whether argument `index`, counted from 0, is a `T`.
  template <class T>
  [[nodiscard]] bool holds(std::size_t index) const noexcept {
    return values_[index].holds<T>();
  }
  /// Argument `index`, counted from 0. Throws `ArgumentException` when it is no `T`.
  template <class T>
  [[nodiscard]] T at(std::size_t index) const {
    if (!holds<T>(index)) refuse(index, Kind<T>::name());
    return values_[index].as<T>();
  }

 private:
  [[noreturn]] void refuse(std::size_t index, const std::string& expected) const;

  std::string_view callee_;
  std::span<const AnyValue> values_;
};

}  // namespace Mox
