#include "Mox/Strep.h"

#include "Mox/QuotedString.h"

namespace Mox {

Velo::String valueToStrep(const Velo::String& value) {
  return quoted(value.bytes());
}

void sequenceToValue(CharRange& range, Velo::String* value) {
  std::string escaped;
  *value = readQuoted(range, escaped);
}

void rethrowFromDeserializeAttr(const RangeException& error, std::string_view attribute) {
  throw RangeException(std::string(attribute) + ": " + error.what());
}

}  // namespace Mox
