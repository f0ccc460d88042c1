#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace Mox {

/// String form of a string: quoted and escaped.
[[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const Velo::String& value);
/// Reads the string form of a string.
ZEL_EXPORT void sequenceToValue(CharRange& range, Velo::String* value);

/// Throws `error` again, with the name of the attribute in front of its text.
[[noreturn]] ZEL_EXPORT void rethrowFromDeserializeAttr(const RangeException& error,
                                                        std::string_view attribute);

/// Reads one value from the front of `range`: by the constructor of `T` from a range if there is
/// one, otherwise by `sequenceToValue(range, T*)` of the namespace of `T`.
template <class T>
[[nodiscard]] T sequenceTo(CharRange& range) {
  if constexpr (std::is_constructible_v<T, CharRange&>) {
    return T(range);
  } else {
    T value{};
    sequenceToValue(range, &value);
    return value;
  }
}

/// Reads the value of one attribute. A `RangeException` has the name of the attribute.
template <class T>
[[nodiscard]] T deserializeAttr(CharRange& range, std::string_view attribute) {
  try {
    return sequenceTo<T>(range);
  } catch (const RangeException& error) {
    rethrowFromDeserializeAttr(error, attribute);
  }
}

/// Parses the whole `text` as a `T`. Throws `RangeException` if that fails.
template <class T>
[[nodiscard]] T strepToValue(std::string_view text) {
  CharRange range(text);
  T value = sequenceTo<T>(range);
  range.needEnd();
  return value;
}

}  // namespace Mox
