#pragma once

#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Mox/AnyValue.h"
#include "Velo/Export.h"

namespace Mox {

/// The arguments of one operation by name or number.
///
/// It knows the name of the called function, which exceptions for wrong arguments report.
///
///     const auto [action, count] = arguments.as<std::tuple<VrfAction, unsigned>>();
///     table.vrfRefCountIs(action, count);
class ZEL_EXPORT Arguments {
 public:
  /// `callee` and `values` must outlive this.
  Arguments(std::string_view callee, std::span<const AnyValue> values) noexcept
      : callee_(callee), values_(values) {}

  /// The name of the called function.
  [[nodiscard]] std::string_view callee() const noexcept { return callee_; }
  [[nodiscard]] std::size_t count() const noexcept { return values_.size(); }
  /// Throws `ArgumentException` unless there are `count` arguments.
  void needCount(std::size_t count) const;

  /// Whether argument `index`, counted from 0, is a `T`.
  template <class T>
  [[nodiscard]] bool holds(std::size_t index) const noexcept {
    return values_[index].holds<T>();
  }
  /// Argument `index`, counted from 0. Throws `ArgumentException` if it is not a `T`.
  template <class T>
  [[nodiscard]] T at(std::size_t index) const {
    if (!holds<T>(index)) refuse(index, Kind<T>::name());
    return values_[index].as<T>();
  }
  /// All arguments, as the elements of the tuple. Throws `ArgumentException` if the number of
  /// arguments or the type of one differs.
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
