#include "agent/model/events/EventLine.h"

#include <algorithm>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "agent/config/Configuration.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"

namespace ZelAgent {
namespace {

static_assert(Limits::nameBytes == L3::VrfName::maxLength, "each name can be that of a VRF");

std::string shown(const std::optional<Word>& word) {
  if (!word) return "the end of the line";
  const std::string quoted =
      Mox::quoted(std::string_view(word->text).substr(0, Limits::shownValueBytes));
  return word->text.size() > Limits::shownValueBytes ? quoted + "..." : quoted;
}

}  // namespace

std::optional<Word> EventLine::next() {
  try {
    return takeWord(range_);
  } catch (const Mox::RangeException& badWord) {
    fail(badWord.what());
  }
}

std::string EventLine::needOneOf(const std::string& what,
                                 std::initializer_list<std::string_view> allowed) {
  const std::optional<Word> word = next();
  if (!word || std::find(allowed.begin(), allowed.end(), word->text) == allowed.end()) {
    fail(what + ' ' + alternatives(std::vector<std::string>(allowed.begin(), allowed.end())), word);
  }
  return word->text;
}

std::uint32_t EventLine::needNumber(const std::string& what, std::uint32_t most) {
  return numberOf(next(), what, most);
}

std::string EventLine::needVrf(const std::string& what) {
  return vrfOf(next(), what);
}

std::string EventLine::needInterface(const std::string& what) {
  const std::optional<Word> word = next();
  const std::size_t size = word ? word->text.size() : 0;
  if (size == 0 || size > Limits::nameBytes) {
    fail(
        what + " must be an interface name of 1 to " + std::to_string(Limits::nameBytes) + " bytes",
        word);
  }
  return word->text;
}

void EventLine::needEnd() {
  const std::optional<Word> word = next();
  if (word) fail("the line must end here", word);
}

std::uint32_t EventLine::numberOf(const std::optional<Word>& word, const std::string& what,
                                  std::uint32_t most, const std::string& otherwise) const {
  const auto number = word ? parseNumber(word->text) : std::nullopt;
  if (!number || *number > most) {
    fail(what + " must be a number from 0 to " + std::to_string(most) + otherwise, word);
  }
  return *number;
}

std::string EventLine::vrfOf(const std::optional<Word>& word, const std::string& what,
                             const std::string& otherwise) const {
  const std::size_t size = word ? word->text.size() : 0;
  if (size == 0 || size > Limits::nameBytes) {
    fail(what + " must be a VRF name of 1 to " + std::to_string(Limits::nameBytes) + " bytes" +
             otherwise,
         word);
  }
  return word->text == defaultInstanceName ? defaultVrfName : word->text;
}

void EventLine::fail(const std::string& what, const std::optional<Word>& found) const {
  fail(what + ", found " + shown(found));
}

void EventLine::fail(const std::string& what) const {
  throw EventError(form_.empty() ? what : form_ + ": " + what);
}

}  // namespace ZelAgent
