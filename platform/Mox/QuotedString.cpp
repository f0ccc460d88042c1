#include "Mox/QuotedString.h"

#include "Mox/CharRange.h"

namespace Mox {
namespace {

constexpr char quote = '\'';
constexpr char backslash = '\\';
constexpr std::string_view hexDigits = "0123456789abcdef";

bool isPlain(char byte) noexcept {
  return byte >= ' ' && byte <= '~' && byte != quote && byte != backslash;
}

// The letter that stands for `byte` behind a backslash, 0 when there is none.
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
  for (const char byte : bytes) {
    if (isPlain(byte)) {
      text += byte;
      continue;
    }
    text += backslash;
    if (const char letter = escapeLetter(byte); letter != 0) {
      text += letter;
    } else {
      const auto code = static_cast<unsigned char>(byte);
      text += 'x';
      text += hexDigits[code >> 4U];
      text += hexDigits[code & 15U];
    }
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
  range.needString("'");
  std::string bytes;
  while (true) {
    const std::string_view rest = range.rest();
    std::size_t plain = 0;
    while (plain < rest.size() && isPlain(rest[plain]))
      ++plain;
    bytes.append(rest.substr(0, plain));
    range.advance(plain);
    if (range.atEnd()) range.fail("a closing quote");
    if (rest[plain] == quote) break;
    if (rest[plain] != backslash) range.fail("a printable character or an escape");
    bytes += readEscapedByte(range);
  }
  range.needString("'");
  return bytes;
}

}  // namespace Mox
