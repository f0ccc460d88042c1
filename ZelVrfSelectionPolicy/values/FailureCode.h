#pragma once

#include <array>
#include <ostream>
#include <string_view>

#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/String.h"

namespace ZelVrfSelectionPolicy {

/// The reason why a hardware VRF resource could not be programmed.
enum class FailureCode : unsigned char {
  /// No failure.
  failureNone = 0,
  /// The allocation of the resource failed.
  failureVrfResourceAlloc = 1,
  /// No resource is free.
  failureVrfResourceExhausted = 2,
};

/// The names by code.
inline constexpr std::array<std::string_view, 3> failureCodeNames{
    "failureNone", "failureVrfResourceAlloc", "failureVrfResourceExhausted"};
/// Codes and names of the values.
inline constexpr Mox::EnumType<FailureCode> failureCodes("ZelVrfSelectionPolicy::FailureCode",
                                                         failureCodeNames);

/// The value with that code or name. Throws `Mox::RangeException` if there is none.
[[nodiscard]] inline FailureCode FailureCodeInstance(unsigned code) {
  return failureCodes.value(code);
}
[[nodiscard]] inline FailureCode FailureCodeInstance(const Velo::String& name) {
  return failureCodes.value(name.bytes());
}
/// The bare name.
[[nodiscard]] inline Velo::String stringValue(FailureCode value) {
  return failureCodes.name(value);
}
/// The string form, which is the name.
[[nodiscard]] inline Velo::String valueToStrep(const FailureCode& value) {
  return failureCodes.name(value);
}
/// Reads a name. Throws `Mox::RangeException` for any other text.
inline void sequenceToValue(Mox::CharRange& range, FailureCode* value) {
  *value = failureCodes.read(range);
}
/// Writes the name.
inline std::ostream& operator<<(std::ostream& stream, const FailureCode& value) {
  return stream << failureCodes.name(value);
}

}  // namespace ZelVrfSelectionPolicy
