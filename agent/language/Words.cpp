#include "agent/language/Words.h"

#include <algorithm>
#include <charconv>

#include "Mox/QuotedString.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

constexpr char quote = '\'';
constexpr char comment = '#';

bool isBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r';
}

std::size_t lengthUntilBlank(std::string_view text) {
  return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), isBlank) - text.begin());
}

bool standsWithoutQuotes(std::string_view text) {
  return !text.empty() && text.front() != comment &&
         text.find_first_of(" '\\") == std::string_view::npos &&
         printable(text, std::string_view::npos) == text;
}

Word takeQuotedWord(Mox::CharRange& line) {
  Word word{Mox::readQuoted(line), true};
  if (!line.atEnd() && !isBlank(line.rest().front())) line.fail("a blank after the closing quote");
  return word;
}

}  // namespace

std::string toWord(std::string_view text) {
  return standsWithoutQuotes(text) ? std::string(text) : Mox::quoted(text);
}

std::optional<Word> takeWord(Mox::CharRange& line) {
  while (!line.atEnd() && isBlank(line.rest().front()))
    line.advance(1);
  if (line.atEnd() || line.rest().front() == comment) return std::nullopt;
  if (line.rest().front() == quote) return takeQuotedWord(line);
  const std::string_view text = line.rest().substr(0, lengthUntilBlank(line.rest()));
  if (!standsWithoutQuotes(text)) line.fail("the word in quotes, as " + Mox::quoted(text));
  line.advance(text.size());
  return Word{std::string(text), false};
}

bool isBlankLine(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

std::optional<std::uint32_t> parseNumber(std::string_view text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stopped != end) return std::nullopt;
  return number;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

std::string alternatives(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
    text += words[i];
  }
  return text;
}

}  // namespace ZelAgent
