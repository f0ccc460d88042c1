#include "Mox/Strep.h"

#include "Mox/QuotedString.h"

namespace Mox {

Velo::String valueToStrep(const Velo::String& value) {
  return quoted(value.bytes());
}

void sequenceToValue(CharRange& range, Velo::String* value) {
  *value = readQuoted(range);
}

void rethrowFromDeserializeAttr(const RangeException& error, std::string_view attribute) {
  throw RangeException(std::string(attribute) + ": " + error.what());
}

}  // namespace Mox
