#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"

namespace Mox {

/// An enumeration whose values have names; its codes are the places in its table of names.
///
/// A code beyond the table, which no value of the enumeration has but a bad cast may make, prints
/// as a decimal number and is refused everywhere else.
///
///     constexpr std::array<std::string_view, 2> names{"off", "on"};
///     constexpr Mox::EnumType<unsigned char> switchType("Lamp::Switch", names);
///     switchType.name(1);          // "on"
///     switchType.code("off");      // 0
template <class Code>
class EnumType;

template <>
class [[gnu::visibility("default")]] EnumType<unsigned char> {
 public:
  /// `names` are the names of the codes 0, 1, ... and must outlive this.
  constexpr EnumType(std::string_view typeName, std::span<const std::string_view> names) noexcept
      : typeName_(typeName), names_(names) {}

  [[nodiscard]] constexpr std::string_view typeName() const noexcept {
    return typeName_;
  }
  /// The names of the codes 0, 1, ...
  [[nodiscard]] constexpr std::span<const std::string_view> names() const noexcept {
    return names_;
  }

  /// The name of `code`.
  [[nodiscard]] std::string_view name(unsigned char code) const noexcept;

  /// `code` itself when it is one of the table; otherwise throws `RangeException`.
  [[nodiscard]] unsigned char code(unsigned code) const;
  /// The code of `name`; `RangeException` when there is none.
  [[nodiscard]] unsigned char code(std::string_view name) const;
  /// Consumes a name from `range` and gives its code; `RangeException` when it is none.
  [[nodiscard]] unsigned char read(CharRange & range) const;

 private:
  [[nodiscard]] std::string allNames() const;

  std::string_view typeName_;
  std::span<const std::string_view> names_;
};

}  // namespace Mox
