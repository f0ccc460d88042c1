#pragma once

#include <memory>
#include <string_view>
#include <tuple>

#include "Mox/EnumType.h"
#include "Mox/Hash.h"
#include "Mox/Reflection.h"
#include "Mox/Strep.h"

/// Functions that build the tables of operations on value types: `recordOperations` for a record,
/// `simpleOperations` for a type without fields. For an enumeration `enumerationReflection` is the
/// whole table.
///
///     constexpr Mox::ValueOperations operations =
///         Mox::recordOperations<VrfAction, L3::VrfName, PolicyMap::ActionType>();

namespace Mox {

/// The functions behind the rows of these tables.
namespace Values {

template <class T>
const T& as(const void* value) noexcept {
  return *static_cast<const T*>(value);
}

template <class T>
void* copied(const void* value) {
  return new T(as<T>(value));
}
template <class T>
void destroyed(void* value) noexcept {
  delete static_cast<T*>(value);
}
template <class T>
bool areEqual(const void* a, const void* b) {
  return as<T>(a) == as<T>(b);
}
template <class T>
bool isLess(const void* a, const void* b) {
  return as<T>(a) < as<T>(b);
}
template <class T>
bool isSet(const void* value) {
  return static_cast<bool>(as<T>(value));
}
template <class T>
Velo::String text(const void* value) {
  return valueToStrep(as<T>(value));
}
template <class T>
void* parsed(std::string_view text) {
  return new T(strepToValue<T>(text));
}

/// The hash of the type if it has one, otherwise the hash of the string form.
template <class T>
unsigned hash(const void* value) {
  if constexpr (requires { as<T>(value).hash(0U); }) {
    return as<T>(value).hash(0U);
  } else {
    return hashSingleAttr(0, valueToStrep(as<T>(value)).bytes());
  }
}

template <class T, class... Parameters>
void* constructed(const Arguments& arguments) {
  if (arguments.count() == 0) return new T();
  return std::apply([](const Parameters&... each) { return new T(each...); },
                    arguments.as<std::tuple<Parameters...>>());
}

template <class T, const EnumType<T>& enumeration>
T named(const Arguments& arguments) {
  arguments.needCount(1);
  return arguments.holds<unsigned>(0) ? enumeration.value(arguments.at<unsigned>(0))
                                      : enumeration.value(arguments.at<Velo::String>(0).bytes());
}
template <class T, const EnumType<T>& enumeration>
void* enumerator(const Arguments& arguments) {
  return arguments.count() == 0 ? new T() : new T(named<T, enumeration>(arguments));
}
template <class T, const EnumType<T>& enumeration>
void* parsedName(std::string_view text) {
  CharRange range(text);
  auto value = std::make_unique<T>(enumeration.read(range));
  range.needEnd();
  return value.release();
}
template <class T, const EnumType<T>& enumeration>
std::span<const std::string_view> allNames() {
  return enumeration.names();
}

/// The operations common to all value types, with functions that construct and parse a value.
template <class T>
constexpr ValueOperations operations(void* (*construct)(const Arguments&),
                                     void* (*parse)(std::string_view)) {
  return {
      .construct = construct,
      .copy = &copied<T>,
      .destroy = &destroyed<T>,
      .hash = &hash<T>,
      .text = &text<T>,
      .parse = parse,
      .isEqual = &areEqual<T>,
  };
}

}  // namespace Values

/// The operations on a type without fields, which has only a default constructor.
template <class T>
[[nodiscard]] constexpr ValueOperations simpleOperations() {
  return Values::operations<T>(&Values::constructed<T>, &Values::parsed<T>);
}

/// The operations on a record whose constructor takes `Parameters`. It is ordered if it has `<`.
template <class Record, class... Parameters>
[[nodiscard]] constexpr ValueOperations recordOperations() {
  ValueOperations operations = Values::operations<Record>(
      &Values::constructed<Record, Parameters...>, &Values::parsed<Record>);
  operations.isSet = &Values::isSet<Record>;
  if constexpr (requires(const Record& a) { a < a; }) operations.isLess = &Values::isLess<Record>;
  return operations;
}

/// The operations on the values of `enumeration`, which are constructed from a code or a name.
template <class T, const EnumType<T>& enumeration>
inline constexpr ValueOperations enumerationOperations =
    Values::operations<T>(&Values::enumerator<T, enumeration>, &Values::parsedName<T, enumeration>);

/// The operations on them by name and number.
template <class T, const EnumType<T>& enumeration>
inline constexpr Reflection enumerationReflection{
    .value = &enumerationOperations<T, enumeration>,
    .names = &Values::allNames<T, enumeration>,
};

}  // namespace Mox
