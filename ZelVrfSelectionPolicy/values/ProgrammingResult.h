#pragma once

#include <iosfwd>

#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/String.h"

namespace ZelVrfSelectionPolicy {

/// Whether a hardware VRF resource is programmed.
enum class ProgrammingResult : unsigned char {
  /// It is.
  programmedInHw = 0,
  /// It is not; the failure reason tells why.
  programmingFailure = 1,
};

/// The value with that code, or of that name; `Mox::RangeException` when there is none.
[[nodiscard, gnu::visibility("default")]] ProgrammingResult ProgrammingResultInstance(
    unsigned code);
[[nodiscard, gnu::visibility("default")]] ProgrammingResult ProgrammingResultInstance(
    const Velo::String& name);
/// The bare name.
[[nodiscard, gnu::visibility("default")]] Velo::String stringValue(ProgrammingResult value);
/// The string form, which is the name.
[[nodiscard, gnu::visibility("default")]] Velo::String valueToStrep(const ProgrammingResult& value);
/// Reads a name; `Mox::RangeException` when it is none of this enumeration.
[[gnu::visibility("default")]] void sequenceToValue(Mox::CharRange& range,
                                                    ProgrammingResult* value);
/// Writes the name.
[[gnu::visibility("default")]] std::ostream& operator<<(std::ostream& stream,
                                                        const ProgrammingResult& value);

/// The enumeration's names.
[[nodiscard,
  gnu::visibility("default")]] const Mox::EnumType<unsigned char>& enumTypeOf(ProgrammingResult);

}  // namespace ZelVrfSelectionPolicy
