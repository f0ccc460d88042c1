#pragma once

#include <iosfwd>

#include "Mox/AnyValue.h"
#include "Mox/CharRange.h"
#include "Mox/EnumType.h"
#include "Velo/String.h"

namespace PolicyMap {

/// What a policy rule does with the traffic that it matches.
enum class ActionType : unsigned char {
  /// Nothing; the default.
  none = 0,
  /// Looks the packet up in a VRF.
  vrf = 1,
  /// Decapsulates by the routes of a VRF, with a fallback and a post-decapsulation VRF.
  decapVrf = 2,
  /// Drops it.
  discard = 3,
};

[[gnu::visibility("default")]] extern const Mox::Type actionTypeType;

/// The names of the action types.
[[nodiscard, gnu::visibility("default")]] const Mox::EnumType<unsigned char>& actionTypeNames();

/// The action type with that code, or of that name; `Mox::RangeException` when there is none.
[[nodiscard, gnu::visibility("default")]] ActionType ActionTypeInstance(unsigned code);
[[nodiscard, gnu::visibility("default")]] ActionType ActionTypeInstance(const Velo::String& name);
[[nodiscard, gnu::visibility("default")]] Velo::String stringValue(ActionType type);
[[nodiscard, gnu::visibility("default")]] Velo::String valueToStrep(const ActionType& type);
/// Reads a name; `Mox::RangeException` when it is none of an action type.
[[nodiscard, gnu::visibility("default")]] ActionType sequenceToValue(Mox::CharRange& range);
[[gnu::visibility("default")]] std::ostream& operator<<(std::ostream& stream,
                                                        const ActionType& type);

}  // namespace PolicyMap

template <>
struct Mox::TypeOf<PolicyMap::ActionType> {
  static constexpr const Type& entry = PolicyMap::actionTypeType;
};
