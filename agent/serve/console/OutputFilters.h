#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ZelAgent {

/// The parts of a line "COMMAND | FILTER | FILTER ...". A "|" separates if it is a word without
/// quotes. A comment, which "#" begins, belongs to the command.
struct LineParts {
  std::string_view command;
  std::vector<std::string_view> filters;
  bool isInQuotes = false;  // the line ends in a quoted word
};

[[nodiscard]] LineParts partsOf(std::string_view line);

struct FilterHelp {
  const char* keyword;
  const char* form;
  const char* help;
};

/// The filters, for help and completion.
[[nodiscard]] const std::vector<FilterHelp>& filterHelp();
/// Whether the word is the keyword of a filter, or its beginning.
[[nodiscard]] bool beginsAFilter(std::string_view word);

/// The filters of a line, which choose what is printed of a text.
///
///     | include TEXT    the lines that contain TEXT
///     | exclude TEXT    the lines that do not contain TEXT
///     | begin TEXT      the lines from the first one that contains TEXT
///     | count           the number of lines; the last filter
///
/// A filter sees what the filters before it have left. A keyword may be shortened. TEXT is the rest
/// of the filter without blanks around it, or a quoted word. `include` and `exclude` keep the
/// headings of tables, and `count` does not count them. A heading is a line of several words in
/// capitals behind two blanks.
class OutputFilters final {
 public:
  using Print = std::function<void(std::string_view line)>;

  /// Throws an `EventError` for a wrong filter.
  explicit OutputFilters(const std::vector<std::string_view>& filters);

  [[nodiscard]] bool areNone() const noexcept { return filters_.empty(); }
  /// Takes the next line, without its end.
  void line(std::string_view line, const Print& print);
  /// There are no more lines.
  void end(const Print& print) const;

 private:
  enum class Kind : std::uint8_t { include, exclude, begin, count };
  struct Filter {
    Kind kind = Kind::include;
    std::string text;
    bool hasBegun = false;    // of begin
    std::size_t counted = 0;  // of count
  };

  static Filter filterOf(std::string_view filter);
  static bool passes(Filter& filter, std::string_view line, bool isHeading);

  std::vector<Filter> filters_;
};

}  // namespace ZelAgent
