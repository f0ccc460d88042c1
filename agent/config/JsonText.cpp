#include "agent/config/JsonText.h"

#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_set>
#include <utility>
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

// Receives the parser's events and makes the document from them.
class StrictListener final : public nlohmann::json_sax<json> {
 public:
  StrictListener(const std::string& text, const std::string& file, Progress& progress)
      : text_(text), file_(file), progress_(progress), reached_(text.data()) {}

  [[nodiscard]] JsonValue listen() {
    refuseOtherEncodings();
    // The parser takes a NUL byte for the end of the text.
    const std::size_t nul = text_.find('\0');
    if (nul != std::string::npos) failAt(nul, "malformed JSON: a NUL byte; expected text");
    const char* const begin = text_.data();
    json::sax_parse(TrackingIterator(begin, &reached_),
                    TrackingIterator(begin + text_.size(), &reached_), this);
    return std::move(document_);
  }

  bool null() override { return add(nullptr); }
  bool boolean(bool flag) override { return add(flag); }
  bool number_integer(number_integer_t number) override {
    return add(JsonOtherNumber{std::to_string(number)});
  }
  bool number_unsigned(number_unsigned_t number) override { return add(number); }
  bool number_float(number_float_t, const string_t& number) override {
    return add(JsonOtherNumber{number});
  }
  bool string(string_t& text) override { return add(std::move(text)); }
  bool binary(binary_t&) override { return true; }
  bool start_array(std::size_t) override { return open(JsonValue::Array{}); }
  bool end_array() override { return close(); }
  bool start_object(std::size_t) override {
    names_.emplace_back();
    return open(JsonValue::Object{});
  }
  bool end_object() override {
    names_.pop_back();
    return close();
  }

  bool key(string_t& name) override {
    if (!names_.back().insert(name).second) {
      failAt(offsetOfName(),
             "member " + inQuotes(name) + " is given twice in one object; give each member once");
    }
    open_.back()->as<JsonValue::Object>()->push_back({std::move(name), {}});
    return true;
  }

  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception& error) override {
    const std::size_t offset = position == 0 ? 0 : position - 1;
    failAt(offset, "malformed JSON: " + printable(reasonOf(error.what()), 300));
  }

 private:
  // Returns the new value, which stays in its place until its parent is closed.
  JsonValue* place(JsonValue::Content content) {
    progress_.look();
    JsonValue value(std::move(content), values_++);
    if (open_.empty()) return &(document_ = std::move(value));
    if (auto* const array = open_.back()->as<JsonValue::Array>()) {
      return &array->emplace_back(std::move(value));
    }
    JsonValue& member = open_.back()->as<JsonValue::Object>()->back().value;
    return &(member = std::move(value));
  }

  bool add(JsonValue::Content content) {
    place(std::move(content));
    return true;
  }

  bool open(JsonValue::Content content) {
    if (open_.size() == Limits::documentLevels) {
      failAt(static_cast<std::size_t>(reached_ - text_.data()) - 1,
             "nests deeper than " + std::to_string(Limits::documentLevels) + " levels");
    }
    open_.push_back(place(std::move(content)));
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  void refuseOtherEncodings() const {
    for (const std::string_view start : {"\xff\xfe", "\xfe\xff"}) {
      if (text_.starts_with(start)) failAt(0, "malformed JSON: UTF-16 text; expected UTF-8");
    }
  }

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
  Progress& progress_;
  const char* reached_;
  JsonValue document_;
  std::size_t values_ = 0;
  std::vector<JsonValue*> open_;
  std::vector<std::unordered_set<std::string>> names_;  // of the open objects
};

}  // namespace

json parseJson(const std::string& text, const std::string& file) {
  (void)parseDocument(text, file);
  return json::parse(text);
}

JsonValue parseDocument(const std::string& text, const std::string& file, Progress& progress) {
  return StrictListener(text, file, progress).listen();
}

JsonValue parseDocument(const std::string& text, const std::string& file) {
  Progress none({});
  return parseDocument(text, file, none);
}

JsonValue readDocumentFile(const std::string& file, Progress& progress) {
  return parseDocument(readTextFile(file, "a readable JSON file"), file, progress);
}

}  // namespace ZelAgent
