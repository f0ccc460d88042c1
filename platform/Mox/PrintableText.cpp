#include "Mox/PrintableText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Mox {
namespace {

struct Characters {
  std::uint32_t first;
  std::uint32_t last;
};

// In ascending order. The surrogates are not characters, but UTF-8 could spell them.
constexpr std::array<Characters, 8> unprintable{{{0x0, 0x1f},
                                                 {0x7f, 0x9f},
                                                 {0x61c, 0x61c},
                                                 {0x200e, 0x200f},
                                                 {0x2028, 0x202e},
                                                 {0x2066, 0x2069},
                                                 {0xd800, 0xdfff},
                                                 {0x110000, 0xffffffff}}};

bool isPrintable(std::uint32_t character) noexcept {
  return std::none_of(unprintable.begin(), unprintable.end(), [&](const Characters& range) {
    return character >= range.first && character <= range.last;
  });
}

// The length of a character by its first byte; 0 if no character begins with it.
std::size_t lengthBy(std::uint8_t first) noexcept {
  if (first < 0x80) return 1;
  if (first < 0xc0) return 0;
  if (first < 0xe0) return 2;
  if (first < 0xf0) return 3;
  return first < 0xf8 ? 4 : 0;
}

}  // namespace

std::size_t printableAtFront(std::string_view text) noexcept {
  if (text.empty()) return 0;
  const auto first = static_cast<std::uint8_t>(text.front());
  const std::size_t length = lengthBy(first);
  if (length == 0 || length > text.size()) return 0;
  std::uint32_t character = length == 1 ? first : first & (0x7fU >> length);
  for (const char byte : text.substr(1, length - 1)) {
    const auto bits = static_cast<std::uint8_t>(byte);
    if ((bits & 0xc0U) != 0x80) return 0;
    character = character << 6U | (bits & 0x3fU);
  }
  constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  return character >= smallest[length] && isPrintable(character) ? length : 0;
}

}  // namespace Mox
