#pragma once

#include <iosfwd>

#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/String.h"

namespace ZelVrfSelectionPolicy {

/// Why a hardware VRF resource could not be programmed.
enum class FailureCode : unsigned char {
  /// It could.
  failureNone = 0,
  /// Its allocation failed.
  failureVrfResourceAlloc = 1,
  /// No resource is left.
  failureVrfResourceExhausted = 2,
};

/// The value with that code, or of that name; `Mox::RangeException` when there is none.
[[nodiscard, gnu::visibility("default")]] FailureCode FailureCodeInstance(unsigned code);
[[nodiscard, gnu::visibility("default")]] FailureCode FailureCodeInstance(const Velo::String& name);
/// The bare name.
[[nodiscard, gnu::visibility("default")]] Velo::String stringValue(FailureCode value);
/// The string form, which is the name.
[[nodiscard, gnu::visibility("default")]] Velo::String valueToStrep(const FailureCode& value);
/// Reads a name; `Mox::RangeException` when it is none of this enumeration.
[[gnu::visibility("default")]] void sequenceToValue(Mox::CharRange& range, FailureCode* value);
/// Writes the name.
[[gnu::visibility("default")]] std::ostream& operator<<(std::ostream& stream,
                                                        const FailureCode& value);

/// The enumeration's names.
[[nodiscard,
  gnu::visibility("default")]] const Mox::EnumType<unsigned char>& enumTypeOf(FailureCode);

}  // namespace ZelVrfSelectionPolicy
