#include "testing/conformance/PrintableLine.h"

#include "Mox/PrintableText.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {
std::string faultOfLine(std::string_view text) {
  if (text.size() > longestDescription) {
    return "it has " + std::to_string(text.size()) + " bytes, more than " +
           std::to_string(longestDescription);
  }
  for (std::size_t place = 0; place < text.size();) {
    const std::size_t length = Mox::printableAtFront(text.substr(place));
    if (length == 0) return "byte " + std::to_string(place) + " is no printable UTF-8";
    place += length;
  }
  return {};
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
