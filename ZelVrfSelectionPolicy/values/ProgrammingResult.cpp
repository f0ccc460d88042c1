#include "ZelVrfSelectionPolicy/values/ProgrammingResult.h"

#include <array>
#include <ostream>

namespace ZelVrfSelectionPolicy {
namespace {

constexpr std::array<std::string_view, 2> names{"programmedInHw", "programmingFailure"};
constexpr Mox::EnumType<unsigned char> enumType("ZelVrfSelectionPolicy::ProgrammingResult", names);

std::string_view nameOf(ProgrammingResult value) {
  return enumType.name(static_cast<unsigned char>(value));
}

}  // namespace

const Mox::EnumType<unsigned char>& enumTypeOf(ProgrammingResult) {
  return enumType;
}

ProgrammingResult ProgrammingResultInstance(unsigned code) {
  return ProgrammingResult{enumType.code(code)};
}

ProgrammingResult ProgrammingResultInstance(const Velo::String& name) {
  return ProgrammingResult{enumType.code(name.bytes())};
}

Velo::String stringValue(ProgrammingResult value) {
  return nameOf(value);
}

Velo::String valueToStrep(const ProgrammingResult& value) {
  return nameOf(value);
}

void sequenceToValue(Mox::CharRange& range, ProgrammingResult* value) {
  *value = ProgrammingResult{enumType.read(range)};
}

std::ostream& operator<<(std::ostream& stream, const ProgrammingResult& value) {
  return stream << nameOf(value);
}

}  // namespace ZelVrfSelectionPolicy
