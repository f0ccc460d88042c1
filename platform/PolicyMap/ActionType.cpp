#include "PolicyMap/ActionType.h"

#include <array>
#include <ostream>

#include "Mox/ValueTable.h"

namespace PolicyMap {
namespace {

constexpr std::array<std::string_view, 4> names{"actionNone", "actionVrf", "actionDecapVrf",
                                                "actionDiscard"};
constexpr Mox::EnumType<unsigned char> enumType("PolicyMap::ActionType", names);

std::string_view nameOf(ActionType type) {
  return enumType.name(static_cast<unsigned char>(type));
}

constexpr Mox::ValueOperations operations =
    Mox::enumerationOperations<ActionType, &actionTypeNames>();
constexpr Mox::Reflection reflection{
    .value = &operations,
    .names = &Mox::Values::allNames<&actionTypeNames>,
};

}  // namespace

constinit const Mox::Type actionTypeType{"PolicyMap::ActionType", &reflection};

const Mox::EnumType<unsigned char>& actionTypeNames() {
  return enumType;
}

ActionType ActionTypeInstance(unsigned code) {
  return ActionType{enumType.code(code)};
}

ActionType ActionTypeInstance(const Velo::String& name) {
  return ActionType{enumType.code(name.bytes())};
}

Velo::String stringValue(ActionType type) {
  return nameOf(type);
}

Velo::String valueToStrep(const ActionType& type) {
  return nameOf(type);
}

ActionType sequenceToValue(Mox::CharRange& range) {
  return ActionType{enumType.read(range)};
}

std::ostream& operator<<(std::ostream& stream, const ActionType& type) {
  return stream << nameOf(type);
}

}  // namespace PolicyMap
