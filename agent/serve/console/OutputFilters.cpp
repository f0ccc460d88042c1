#include "agent/serve/console/OutputFilters.h"

#include <algorithm>
#include <optional>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// The end of the quoted word that begins at `start`. `npos` if it has no end.
std::size_t endOfQuoted(std::string_view line, std::size_t start) {
  for (std::size_t i = start + 1; i < line.size(); ++i) {
    if (line[i] == '\\') {
      ++i;
    } else if (line[i] == '\'') {
      return i + 1;
    }
  }
  return std::string_view::npos;
}

[[noreturn]] void failOnKeyword(std::string_view found) {
  std::vector<std::string> keywords;
  for (const FilterHelp& filter : filterHelp())
    keywords.emplace_back(filter.keyword);
  throw EventError("| must be followed by " + alternatives(keywords) + ", found " +
                   (found.empty() ? "the end of the filter" : Mox::quoted(found)));
}

// The place in `filterHelp()`. None if the word is no beginning of a keyword.
std::optional<std::size_t> placeOf(std::string_view word) {
  const auto& all = filterHelp();
  const auto found = std::find_if(all.begin(), all.end(), [&](const FilterHelp& filter) {
    return std::string_view(filter.keyword).starts_with(word);
  });
  if (word.empty() || found == all.end()) return std::nullopt;
  return static_cast<std::size_t>(found - all.begin());
}

std::size_t keywordAt(std::string_view word) {
  const auto place = placeOf(word);
  if (!place) failOnKeyword(word);
  return *place;
}

std::string textOf(std::string_view text, const std::string& form) {
  if (text.empty()) throw EventError(form + ": TEXT is missing");
  if (text.front() != '\'') return std::string(text);
  try {
    Mox::CharRange range(text);
    std::string unquoted = Mox::readQuoted(range);
    range.needEnd();
    return unquoted;
  } catch (const Mox::RangeException& error) {
    throw EventError(form + ": " + error.what());
  }
}

bool isCapital(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '-';
}

bool isHeading(std::string_view line) {
  if (!line.starts_with("  ")) return false;
  std::size_t words = 0;
  for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
    const std::string_view word = line.substr(0, line.find(' '));
    if (word.front() < 'A' || word.front() > 'Z') return false;
    if (!std::all_of(word.begin(), word.end(), isCapital)) return false;
    line.remove_prefix(word.size());
    ++words;
  }
  return words > 1;
}

}  // namespace

LineParts partsOf(std::string_view line) {
  LineParts parts;
  std::size_t start = 0;  // of the part
  const auto endPart = [&](std::size_t end) {
    const std::string_view part = line.substr(start, end - start);
    if (start == 0) {
      parts.command = part;
    } else {
      parts.filters.push_back(trimmed(part));
    }
  };
  std::size_t place = line.find_first_not_of(blanks);
  while (place < line.size() && (line[place] != '#' || start > 0)) {
    const bool isQuoted = line[place] == '\'';
    const std::size_t end = std::min(
        isQuoted ? endOfQuoted(line, place) : line.find_first_of(blanks, place), line.size());
    parts.isInQuotes = isQuoted && endOfQuoted(line, place) == std::string_view::npos;
    if (line.substr(place, end - place) == "|") {
      endPart(place);
      start = end;
    }
    place = line.find_first_not_of(blanks, end);
  }
  endPart(line.size());
  return parts;
}

const std::vector<FilterHelp>& filterHelp() {
  static const std::vector<FilterHelp> filters{
      {"include", "| include TEXT", "Print the lines that contain TEXT"},
      {"exclude", "| exclude TEXT", "Print the lines that do not contain TEXT"},
      {"begin", "| begin TEXT", "Print from the first line that contains TEXT"},
      {"count", "| count", "Print the number of lines"},
  };
  return filters;
}

bool beginsAFilter(std::string_view word) {
  return placeOf(word).has_value();
}

OutputFilters::OutputFilters(const std::vector<std::string_view>& filters) {
  for (const std::string_view filter : filters) {
    if (!filters_.empty() && filters_.back().kind == Kind::count) {
      throw EventError("| count must be the last filter, found " + Mox::quoted(filter));
    }
    filters_.push_back(filterOf(filter));
  }
}

OutputFilters::Filter OutputFilters::filterOf(std::string_view filter) {
  const std::string_view word = filter.substr(0, filter.find_first_of(blanks));
  const std::string_view rest = trimmed(filter.substr(word.size()));
  const std::size_t place = keywordAt(word);
  const auto kind = static_cast<Kind>(place);
  if (kind != Kind::count) return {kind, textOf(rest, filterHelp()[place].form)};
  if (!rest.empty()) {
    throw EventError("| count: the filter must end here, found " + Mox::quoted(rest));
  }
  return {kind, ""};
}

bool OutputFilters::passes(Filter& filter, std::string_view line, bool isHeading) {
  const bool contains = line.find(filter.text) != std::string_view::npos;
  switch (filter.kind) {
    case Kind::include:
      return contains || isHeading;
    case Kind::exclude:
      return !contains || isHeading;
    case Kind::begin:
      filter.hasBegun = filter.hasBegun || contains;
      return filter.hasBegun;
    case Kind::count:
      break;
  }
  if (!isHeading) ++filter.counted;
  return false;
}

void OutputFilters::line(std::string_view line, const Print& print) {
  const bool heading = isHeading(line);
  for (Filter& filter : filters_) {
    if (!passes(filter, line, heading)) return;
  }
  print(line);
}

void OutputFilters::end(const Print& print) const {
  if (areNone() || filters_.back().kind != Kind::count) return;
  print(std::to_string(filters_.back().counted));
}

}  // namespace ZelAgent
