#pragma once

#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Mox/AnyValue.h"
#include "Velo/Export.h"

namespace Mox {

/// The arguments of one operation by name or number, on their way to the function that takes them.
///
/// It knows the name of what is called, so that a wrong argument is reported where it was given.
///
///     const auto [action, count] = arguments.as<std::tuple<VrfAction, unsigned>>();
///     table.vrfRefCountIs(action, count);
class ZEL_EXPORT Arguments {
 public:
  /// Both must outlive this.
  Arguments(std::string_view callee, std::span<const AnyValue> values) noexcept
      : callee_(callee), values_(values) {}

  /// What is called.
  [[nodiscard]] std::string_view callee() const noexcept { return callee_; }
  [[nodiscard]] std::size_t count() const noexcept { return values_.size(); }
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
  /// All arguments, as many and of such kinds as the tuple has elements. Throws
  /// `ArgumentException` for the first that is not.
  template <class Tuple>
  [[nodiscard]] Tuple as() const {
    constexpr std::size_t count = std::tuple_size_v<Tuple>;
    needCount(count);
    return inOrder<Tuple>(std::make_index_sequence<count>());
  }

 private:
  template <class Tuple, std::size_t... index>
  Tuple inOrder(std::index_sequence<index...> /*places*/) const {
    return Tuple{at<std::tuple_element_t<index, Tuple>>(index)...};
  }
  [[noreturn]] void refuse(std::size_t index, const std::string& expected) const;

  std::string_view callee_;
  std::span<const AnyValue> values_;
};

}  // namespace Mox
