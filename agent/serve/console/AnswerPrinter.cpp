#include "agent/serve/console/AnswerPrinter.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <streambuf>
#include <utility>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

constexpr std::string_view answerEnd = "}\n";

[[noreturn]] void failAsOtherProgram(const AnswerSource& source, std::string_view bytes) {
  throw source.errorOf("the process that listens there is not zel-agent; it answered " +
                       inQuotes(bytes));
}

[[noreturn]] void failAsTooLong(const AnswerSource& source) {
  throw source.errorOf("a line or a value of the answer is longer than " +
                       std::to_string(Limits::answerBytes) + " bytes");
}

void readEnd(std::string bytes, AnswerSource& source) {
  while (bytes.size() < answerEnd.size())
    bytes += source.next();
  if (bytes != answerEnd) failAsOtherProgram(source, bytes);
}

// Finds the ends of lines, and the end, of a text inside quotation marks of JSON.
class QuotedLines final {
 public:
  explicit QuotedLines(std::string begun) : bytes_(std::move(begun)) { find(); }

  void append(std::string_view bytes) {
    bytes_ += bytes;
    find();
  }
  [[nodiscard]] bool isWhole() const { return isWhole_; }
  // The whole lines; without an end, the rest is kept. At the end, all of the text.
  [[nodiscard]] std::string takeLines() {
    const std::size_t size = isWhole_ ? found_ : lineEnd_;
    std::string lines = bytes_.substr(0, size);
    bytes_.erase(0, size);
    found_ -= size;
    lineEnd_ = 0;
    return lines;
  }
  [[nodiscard]] std::size_t keptBytes() const { return bytes_.size(); }
  // What follows the closing quotation mark. Precondition: the text is whole and taken.
  [[nodiscard]] std::string rest() const { return bytes_.substr(1); }

 private:
  void find() {
    for (; !isWhole_ && found_ < bytes_.size(); ++found_) {
      const char byte = bytes_[found_];
      if (std::exchange(isEscaped_, !isEscaped_ && byte == '\\')) {
        if (byte == 'n') lineEnd_ = found_ + 1;
      } else if (byte == '"') {
        isWhole_ = true;
        return;
      }
    }
  }

  std::string bytes_;
  std::size_t found_ = 0;    // bytes before it were searched
  std::size_t lineEnd_ = 0;  // after the last end of a line
  bool isEscaped_ = false;   // the byte at found_ follows a backslash
  bool isWhole_ = false;     // the closing quotation mark is at found_
};

// The characters of the answer for the parser of JSON.
class AnswerBuffer final : public std::streambuf {
 public:
  AnswerBuffer(std::string begun, AnswerSource& source)
      : source_(source), bytes_(std::move(begun)) {
    setg(bytes_.data(), bytes_.data(), bytes_.data() + bytes_.size());
  }

  // A name or value has been read.
  void readOne() noexcept { unparsed_ = 0; }
  [[nodiscard]] std::string rest() const { return {gptr(), egptr()}; }

 private:
  int_type underflow() override {
    unparsed_ += bytes_.size();
    if (unparsed_ > Limits::answerBytes) failAsTooLong(source_);
    bytes_ = source_.next();
    setg(bytes_.data(), bytes_.data(), bytes_.data() + bytes_.size());
    return traits_type::to_int_type(*gptr());
  }

  AnswerSource& source_;
  std::string bytes_;
  std::size_t unparsed_ = 0;  // since the last name or value
};

// Prints each part of a JSON document that the parser reads, without blanks.
class JsonPrinter final : public nlohmann::json_sax<OrderedJson> {
 public:
  JsonPrinter(AnswerBuffer& buffer, AnswerSource& source, std::ostream& out)
      : buffer_(buffer), source_(source), out_(out) {}

  bool null() override { return print("null"); }
  bool boolean(bool value) override { return print(value ? "true" : "false"); }
  bool number_integer(std::int64_t value) override { return print(std::to_string(value)); }
  bool number_unsigned(std::uint64_t value) override { return print(std::to_string(value)); }
  bool number_float(double /*value*/, const std::string& text) override { return print(text); }
  bool string(std::string& text) override { return print(oneLine(OrderedJson(text))); }
  bool binary(OrderedJson::binary_t& /*bytes*/) override { return false; }
  bool key(std::string& name) override {
    print(oneLine(OrderedJson(name)) + ':');
    needsComma_ = false;
    return true;
  }
  bool start_object(std::size_t /*members*/) override { return open('{'); }
  bool end_object() override { return close('}'); }
  bool start_array(std::size_t /*elements*/) override { return open('['); }
  bool end_array() override { return close(']'); }
  bool parse_error(std::size_t /*at*/, const std::string& token,
                   const nlohmann::detail::exception& /*error*/) override {
    failAsOtherProgram(source_, token);
  }

 private:
  bool print(const std::string& text) {
    buffer_.readOne();
    if (std::exchange(needsComma_, true)) out_ << ',';
    out_ << text;
    return static_cast<bool>(out_);
  }

  // The object that contains the output is a level too.
  bool open(char bracket) {
    if (++levels_ >= Limits::answerLevels) {
      throw source_.errorOf("the answer nests deeper than " + std::to_string(Limits::answerLevels) +
                            " levels");
    }
    print(std::string(1, bracket));
    needsComma_ = false;
    return true;
  }

  bool close(char bracket) {
    --levels_;
    needsComma_ = false;
    return print(std::string(1, bracket));
  }

  AnswerBuffer& buffer_;
  AnswerSource& source_;
  std::ostream& out_;
  int levels_ = 0;
  bool needsComma_ = false;
};

}  // namespace

void printTextAnswer(std::string begun, AnswerSource& source, std::ostream& out) {
  QuotedLines lines(begun.substr(1));
  while (true) {
    const std::string taken = lines.takeLines();
    const auto text = OrderedJson::parse('"' + taken + '"', nullptr, false);
    if (!text.is_string()) failAsOtherProgram(source, taken);
    out << printableLines(text.get_ref<const std::string&>()) << std::flush;
    if (lines.isWhole()) return readEnd(lines.rest(), source);
    if (!out) return;
    if (lines.keptBytes() > Limits::answerBytes) failAsTooLong(source);
    lines.append(source.next());
  }
}

void printJsonAnswer(std::string begun, AnswerSource& source, std::ostream& out) {
  AnswerBuffer buffer(std::move(begun), source);
  std::istream in(&buffer);
  JsonPrinter printer(buffer, source, out);
  if (!OrderedJson::sax_parse(in, &printer, OrderedJson::input_format_t::json, false)) return;
  out << '\n' << std::flush;
  readEnd(buffer.rest(), source);
}

}  // namespace ZelAgent
