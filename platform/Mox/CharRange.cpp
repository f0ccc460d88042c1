#include "Mox/CharRange.h"

#include <algorithm>

#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"

namespace Mox {
namespace {

constexpr std::size_t shownOfRest = 24;

bool isWordByte(char byte) noexcept {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_';
}

}  // namespace

std::string_view CharRange::needWord() {
  const std::string_view left = rest();
  const auto end = std::find_if_not(left.begin(), left.end(), isWordByte);
  const std::string_view word = left.substr(0, static_cast<std::size_t>(end - left.begin()));
  if (word.empty()) fail("a name");
  next_ += word.size();
  return word;
}

void CharRange::failLiteral(std::string_view expected) const {
  fail("'" + std::string(expected) + "'");
}

void CharRange::fail(const std::string& expected) const {
  const std::string found = atEnd() ? "the end of the text" : quoted(rest().substr(0, shownOfRest));
  throw RangeException("expected " + expected + " at byte " + std::to_string(next_) + ", found " +
                       found);
}

}  // namespace Mox
