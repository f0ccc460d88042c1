#include "agent/config/JsonText.h"

#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <vector>

#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextFile.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

// Lines and columns count from 1; a column is a character, not a byte.
std::string lineAndColumn(std::string_view before) {
  std::size_t line = 1;
  std::size_t column = 1;
  for (const char byte : before) {
    const bool continuesCharacter = (static_cast<unsigned char>(byte) & 0xc0U) == 0x80;
    if (byte == '\n') {
      ++line;
      column = 1;
    } else if (!continuesCharacter) {
      ++column;
    }
  }
  return std::to_string(line) + ':' + std::to_string(column);
}

// The parser's message without its error number and position.
std::string reasonOf(const std::string& parserMessage) {
  constexpr std::string_view syntax = "syntax error ";
  const std::size_t start = parserMessage.find(syntax);
  if (start != std::string::npos) return parserMessage.substr(start + syntax.size());
  const std::size_t afterNumber = parserMessage.find("] ");
  return afterNumber == std::string::npos ? parserMessage : parserMessage.substr(afterNumber + 2);
}

// Iterates over the text and stores its position in `*reached`. The parser works on a copy of the
// iterator, so the position is kept outside of it.
class TrackingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TrackingIterator(const char* at, const char** reached) : at_(at), reached_(reached) {}

  reference operator*() const { return *at_; }
  TrackingIterator& operator++() {
    *reached_ = ++at_;
    return *this;
  }
  TrackingIterator operator++(int) {
    TrackingIterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const TrackingIterator& other) const { return at_ == other.at_; }
  bool operator!=(const TrackingIterator& other) const { return at_ != other.at_; }

 private:
  const char* at_;
  const char** reached_;
};

// Receives the parser's events. Keeps only the member names of the objects that are open.
class StrictListener final : public nlohmann::json_sax<json> {
 public:
  StrictListener(const std::string& text, const std::string& file)
      : text_(text), file_(file), reached_(text.data()) {}

  void listen() {
    // The parser takes a NUL byte for the end of the text.
    const std::size_t nul = text_.find('\0');
    if (nul != std::string::npos) failAt(nul, "malformed JSON: a NUL byte; expected text");
    const char* const begin = text_.data();
    json::sax_parse(TrackingIterator(begin, &reached_),
                    TrackingIterator(begin + text_.size(), &reached_), this);
  }

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }

  bool start_object(std::size_t) override {
    open_.emplace_back();
    return true;
  }

  bool end_object() override {
    open_.pop_back();
    return true;
  }

  bool key(string_t& name) override {
    if (open_.back().insert(name).second) return true;
    failAt(offsetOfName(),
           "member " + inQuotes(name) + " is given twice in one object; give each member once");
  }

  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception& error) override {
    const std::size_t offset = position == 0 ? 0 : position - 1;
    failAt(offset, "malformed JSON: " + printable(reasonOf(error.what()), 300));
  }

 private:
  // The name's closing quote is the last byte that was read.
  [[nodiscard]] std::size_t offsetOfName() const {
    std::size_t offset = static_cast<std::size_t>(reached_ - text_.data()) - 1;
    const auto isEscaped = [this](std::size_t quote) {
      std::size_t backslashes = 0;
      while (quote > backslashes && text_[quote - backslashes - 1] == '\\')
        ++backslashes;
      return backslashes % 2 == 1;
    };
    do {
      --offset;
    } while (text_[offset] != '"' || isEscaped(offset));
    return offset;
  }

  [[noreturn]] void failAt(std::size_t offset, const std::string& what) const {
    throw ConfigError(printable(file_, Limits::shownTextBytes) + ':' +
                      lineAndColumn(std::string_view(text_).substr(0, offset)) + ": " + what);
  }

  const std::string& text_;
  const std::string& file_;
  const char* reached_;
  std::vector<std::set<std::string>> open_;
};

}  // namespace

json parseJson(const std::string& text, const std::string& file) {
  StrictListener(text, file).listen();
  return json::parse(text);
}

json readJsonFile(const std::string& file) {
  return parseJson(readTextFile(file, "a readable JSON file"), file);
}

}  // namespace ZelAgent
