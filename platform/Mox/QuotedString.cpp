#include "Mox/QuotedString.h"

#include <algorithm>
#include <array>

#include "Mox/CharRange.h"

namespace Mox {
namespace {

constexpr char quote = '\'';
constexpr char backslash = '\\';
constexpr std::string_view hexDigits = "0123456789abcdef";

constexpr std::array<bool, 256> plainBytes = [] {
  std::array<bool, 256> plain{};
  for (std::size_t byte = ' '; byte <= '~'; ++byte)
    plain[byte] = byte != quote && byte != backslash;
  return plain;
}();

bool isPlain(char byte) noexcept {
  return plainBytes[static_cast<unsigned char>(byte)];
}

// The number of bytes at the front of `bytes` that need no escape.
std::size_t plainBytesAtFront(std::string_view bytes) noexcept {
  return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), isPlain) -
                                  bytes.begin());
}

// The letter of the escape for `byte`; 0 if there is none.
char escapeLetter(char byte) noexcept {
  switch (byte) {
    case quote:
    case backslash:
      return byte;
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return 0;
  }
}

void appendEscaped(std::string& text, char byte) {
  text += backslash;
  if (const char letter = escapeLetter(byte); letter != 0) {
    text += letter;
    return;
  }
  const auto code = static_cast<unsigned char>(byte);
  text += 'x';
  text += hexDigits[code >> 4U];
  text += hexDigits[code & 15U];
}

char escapedByte(char letter) noexcept {
  switch (letter) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return letter;
  }
}

char readHexByte(CharRange& range) {
  const std::string_view digits = range.rest().substr(0, 2);
  const std::size_t high = digits.empty() ? std::string_view::npos : hexDigits.find(digits[0]);
  const std::size_t low = digits.size() < 2 ? std::string_view::npos : hexDigits.find(digits[1]);
  if (high == std::string_view::npos || low == std::string_view::npos) {
    range.fail("two lower-case hexadecimal digits");
  }
  const char byte = static_cast<char>(high << 4 | low);
  if (isPlain(byte) || escapeLetter(byte) != 0) range.fail("a byte that has no shorter form");
  range.advance(2);
  return byte;
}

char readEscapedByte(CharRange& range) {
  range.needString("\\");
  const char letter = range.atEnd() ? '\0' : range.rest().front();
  if (letter == 'x') {
    range.advance(1);
    return readHexByte(range);
  }
  const char byte = escapedByte(letter);
  if (escapeLetter(byte) != letter || letter == '\0') range.fail("one of \\ ' n r t x");
  range.advance(1);
  return byte;
}

}  // namespace

void appendQuoted(std::string& text, std::string_view bytes) {
  text += quote;
  while (true) {
    const std::size_t plain = plainBytesAtFront(bytes);
    text += bytes.substr(0, plain);
    if (plain == bytes.size()) break;
    appendEscaped(text, bytes[plain]);
    bytes.remove_prefix(plain + 1);
  }
  text += quote;
}

std::string quoted(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + 2);
  appendQuoted(text, bytes);
  return text;
}

std::string readQuoted(CharRange& range) {
  std::string escaped;
  return std::string(readQuoted(range, escaped));
}

std::string_view readQuoted(CharRange& range, std::string& escaped) {
  range.needString("'");
  std::string_view bytes;
  while (true) {
    const std::string_view rest = range.rest();
    const std::size_t plain = plainBytesAtFront(rest);
    range.advance(plain);
    if (range.atEnd()) range.fail("a closing quote");
    if (rest[plain] == quote && escaped.empty()) {
      bytes = rest.substr(0, plain);
      break;
    }
    escaped.append(rest.substr(0, plain));
    if (rest[plain] == quote) {
      bytes = escaped;
      break;
    }
    if (rest[plain] != backslash) range.fail("a printable character or an escape");
    escaped += readEscapedByte(range);
  }
  range.needString("'");
  return bytes;
}

}  // namespace Mox
