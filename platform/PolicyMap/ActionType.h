#pragma once

#include <array>
#include <ostream>
#include <string_view>

#include "Mox/AnyValue.h"
#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace PolicyMap {

/// The action of a policy rule on the traffic that it matches.
enum class ActionType : unsigned char {
  /// No action; the default.
  none = 0,
  /// Looks the packet up in a VRF.
  vrf = 1,
  /// Decapsulates by the routes of a VRF, with a fallback VRF and a post-decapsulation VRF.
  decapVrf = 2,
  /// Drops the packet.
  discard = 3,
};

/// The names by code.
inline constexpr std::array<std::string_view, 4> actionTypeNames{"actionNone", "actionVrf",
                                                                 "actionDecapVrf", "actionDiscard"};
/// Codes and names of the values.
inline constexpr Mox::EnumType<ActionType> actionTypes("PolicyMap::ActionType", actionTypeNames);
/// The entry of the type.
ZEL_EXPORT extern const Mox::Type actionTypeType;

/// The value with that code or name. Throws `Mox::RangeException` if there is none.
[[nodiscard]] inline ActionType ActionTypeInstance(unsigned code) {
  return actionTypes.value(code);
}
[[nodiscard]] inline ActionType ActionTypeInstance(const Velo::String& name) {
  return actionTypes.value(name.bytes());
}
/// The bare name.
[[nodiscard]] inline Velo::String stringValue(ActionType value) {
  return actionTypes.name(value);
}
/// The string form, which is the name.
[[nodiscard]] inline Velo::String valueToStrep(const ActionType& value) {
  return actionTypes.name(value);
}
/// Reads a name. Throws `Mox::RangeException` for any other text.
[[nodiscard]] inline ActionType sequenceToValue(Mox::CharRange& range) {
  return actionTypes.read(range);
}
/// Writes the name.
inline std::ostream& operator<<(std::ostream& stream, const ActionType& value) {
  return stream << actionTypes.name(value);
}

}  // namespace PolicyMap

template <>
struct Mox::TypeOf<PolicyMap::ActionType> {
  static constexpr const Type& entry = PolicyMap::actionTypeType;
};
