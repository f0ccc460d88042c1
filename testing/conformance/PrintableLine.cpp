#include "testing/conformance/PrintableLine.h"

#include <cstdint>

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

constexpr std::uint32_t noCharacter = 0xffffffff;

std::uint8_t byteAt(std::string_view text, std::size_t place) {
  return static_cast<std::uint8_t>(text[place]);
}

// The length of a sequence by its first byte; 0 for an invalid first byte.
std::size_t announcedLength(std::uint8_t first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first < 0xe0) return 2;
  if (first >= 0xe0 && first < 0xf0) return 3;
  if (first >= 0xf0 && first < 0xf5) return 4;
  return 0;
}

std::uint32_t decoded(std::string_view sequence) {
  constexpr std::uint32_t leadBits[] = {0, 0x7f, 0x1f, 0x0f, 0x07};
  std::uint32_t character = byteAt(sequence, 0) & leadBits[sequence.size()];
  for (std::size_t place = 1; place < sequence.size(); ++place) {
    const std::uint8_t byte = byteAt(sequence, place);
    if ((byte & 0xc0U) != 0x80) return noCharacter;
    character = character << 6U | (byte & 0x3fU);
  }
  constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xd800 && character < 0xe000;
  const bool isOne = character >= smallest[sequence.size()] && character <= 0x10ffff;
  return isOne && !isSurrogate ? character : noCharacter;
}

bool isControl(std::uint32_t character) {
  return character < 0x20 || (character >= 0x7f && character < 0xa0) || character == 0x2028 ||
         character == 0x2029;  // separators of lines and paragraphs
}

}  // namespace

std::string faultOfLine(std::string_view text) {
  if (text.size() > longestDescription) {
    return "it has " + std::to_string(text.size()) + " bytes, more than " +
           std::to_string(longestDescription);
  }
  for (std::size_t place = 0; place < text.size();) {
    const std::size_t length = announcedLength(byteAt(text, place));
    const bool isWhole = length != 0 && length <= text.size() - place;
    const std::uint32_t character = isWhole ? decoded(text.substr(place, length)) : noCharacter;
    if (character == noCharacter) return "byte " + std::to_string(place) + " is no UTF-8";
    if (isControl(character)) return "byte " + std::to_string(place) + " is a control character";
    place += length;
  }
  return {};
}

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
