#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Velo/Export.h"

namespace Mox {

/// The names of an enumeration; see the definitions below.
template <class Value>
class EnumType;

/// The codes of an enumeration whose values have names. A code is an index into the table of names.
///
/// A code beyond the table, which only a bad cast produces, is printed as a decimal number and
/// rejected everywhere else.
///
///     constexpr std::array<std::string_view, 2> names{"off", "on"};
///     constexpr Mox::EnumType<unsigned char> switchCodes("Lamp::Switch", names);
///     switchCodes.name(1);          // "on"
///     switchCodes.code("off");      // 0
template <>
class ZEL_EXPORT EnumType<unsigned char> {
 public:
  /// `names` are the names of the codes 0, 1, ... and must outlive this.
  constexpr EnumType(std::string_view typeName, std::span<const std::string_view> names) noexcept
      : typeName_(typeName), names_(names) {}

  [[nodiscard]] constexpr std::string_view typeName() const noexcept { return typeName_; }
  /// The names of the codes 0, 1, ...
  [[nodiscard]] constexpr std::span<const std::string_view> names() const noexcept {
    return names_;
  }

  /// The name of `code`.
  [[nodiscard]] std::string_view name(unsigned char code) const noexcept;

  /// Returns `code`. Throws `RangeException` if it is not in the table.
  [[nodiscard]] unsigned char code(unsigned code) const;
  /// The code of `name`. Throws `RangeException` if there is none.
  [[nodiscard]] unsigned char code(std::string_view name) const;
  /// Consumes a name from `range` and returns its code. Throws `RangeException` if there is none.
  [[nodiscard]] unsigned char read(CharRange& range) const;

 private:
  [[nodiscard]] ZEL_HIDDEN std::string allNames() const;

  std::string_view typeName_;
  std::span<const std::string_view> names_;
};

/// The names of the values of an enumeration of one byte.
///
///     constexpr Mox::EnumType<Lamp::Switch> switches("Lamp::Switch", names);
///     switches.name(Lamp::Switch::on);      // "on"
///     switches.value("off");                // Lamp::Switch::off
template <class Value>
class EnumType : private EnumType<unsigned char> {
  using Codes = EnumType<unsigned char>;
  static_assert(std::same_as<std::underlying_type_t<Value>, unsigned char>);

 public:
  using Codes::Codes;
  using Codes::names;
  using Codes::typeName;

  /// The name of `value`.
  [[nodiscard]] std::string_view name(Value value) const noexcept {
    return Codes::name(static_cast<unsigned char>(value));
  }
  /// The value with that code or name. Throws `RangeException` if there is none.
  [[nodiscard]] Value value(unsigned code) const { return Value{Codes::code(code)}; }
  [[nodiscard]] Value value(std::string_view name) const { return Value{Codes::code(name)}; }
  /// Consumes a name from `range` and returns its value. Throws `RangeException` if there is none.
  [[nodiscard]] Value read(CharRange& range) const { return Value{Codes::read(range)}; }
};

}  // namespace Mox
