#pragma once

#include <array>
#include <ostream>
#include <string_view>

#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/String.h"

namespace ZelVrfSelectionPolicy {

/// Whether a hardware VRF resource is programmed.
enum class ProgrammingResult : unsigned char {
  /// The resource is programmed.
  programmedInHw = 0,
  /// The resource is not programmed. The failure code has the reason.
  programmingFailure = 1,
};

/// The names by code.
inline constexpr std::array<std::string_view, 2> programmingResultNames{"programmedInHw",
                                                                        "programmingFailure"};
/// Codes and names of the values.
inline constexpr Mox::EnumType<ProgrammingResult> programmingResults(
    "ZelVrfSelectionPolicy::ProgrammingResult", programmingResultNames);

/// The value with that code or name. Throws `Mox::RangeException` if there is none.
[[nodiscard]] inline ProgrammingResult ProgrammingResultInstance(unsigned code) {
  return programmingResults.value(code);
}
[[nodiscard]] inline ProgrammingResult ProgrammingResultInstance(const Velo::String& name) {
  return programmingResults.value(name.bytes());
}
/// The bare name.
[[nodiscard]] inline Velo::String stringValue(ProgrammingResult value) {
  return programmingResults.name(value);
}
/// The string form, which is the name.
[[nodiscard]] inline Velo::String valueToStrep(const ProgrammingResult& value) {
  return programmingResults.name(value);
}
/// Reads a name. Throws `Mox::RangeException` for any other text.
inline void sequenceToValue(Mox::CharRange& range, ProgrammingResult* value) {
  *value = programmingResults.read(range);
}
/// Writes the name.
inline std::ostream& operator<<(std::ostream& stream, const ProgrammingResult& value) {
  return stream << programmingResults.name(value);
}

}  // namespace ZelVrfSelectionPolicy
