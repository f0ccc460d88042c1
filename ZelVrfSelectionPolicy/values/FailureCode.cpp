#include "ZelVrfSelectionPolicy/values/FailureCode.h"

#include <array>
#include <ostream>

namespace ZelVrfSelectionPolicy {
namespace {

constexpr std::array<std::string_view, 3> names{"failureNone", "failureVrfResourceAlloc",
                                                "failureVrfResourceExhausted"};
constexpr Mox::EnumType<unsigned char> enumType("ZelVrfSelectionPolicy::FailureCode", names);

std::string_view nameOf(FailureCode value) {
  return enumType.name(static_cast<unsigned char>(value));
}

}  // namespace

const Mox::EnumType<unsigned char>& enumTypeOf(FailureCode) {
  return enumType;
}

FailureCode FailureCodeInstance(unsigned code) {
  return FailureCode{enumType.code(code)};
}

FailureCode FailureCodeInstance(const Velo::String& name) {
  return FailureCode{enumType.code(name.bytes())};
}

Velo::String stringValue(FailureCode value) {
  return nameOf(value);
}

Velo::String valueToStrep(const FailureCode& value) {
  return nameOf(value);
}

void sequenceToValue(Mox::CharRange& range, FailureCode* value) {
  *value = FailureCode{enumType.read(range)};
}

std::ostream& operator<<(std::ostream& stream, const FailureCode& value) {
  return stream << nameOf(value);
}

}  // namespace ZelVrfSelectionPolicy
