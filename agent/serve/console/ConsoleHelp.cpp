#include "agent/serve/console/ConsoleHelp.h"

#include <algorithm>
#include <sstream>

#include "agent/language/DisplayWidth.h"
#include "agent/serve/console/OutputFilters.h"

namespace ZelAgent {
namespace {

struct OwnWord {
  std::string_view before;  // the words before it
  std::string_view word;
  std::string_view help;
};

constexpr OwnWord ownWords[] = {
    {"", "exit", "Leave the console"},
    {"", "quit", "Leave the console"},
    {"", "terminal", "Set the number of lines between pauses"},
    {"terminal ", "length", "Set the number of lines between pauses"},
    {"terminal length ", "N", "a number of lines; 0 for no pauses"},
};

bool isValue(const OwnWord& own) {
  return own.word == "N";
}

// The words of the console's own commands that the last word of the line may be.
std::vector<OwnWord> ownWordsIn(const std::string& line) {
  const std::size_t blank = line.rfind(' ');
  const std::size_t start = blank == std::string::npos ? 0 : blank + 1;
  const std::string_view before = std::string_view(line).substr(0, start);
  const std::string_view last = std::string_view(line).substr(start);
  std::vector<OwnWord> found;
  std::copy_if(std::begin(ownWords), std::end(ownWords), std::back_inserter(found),
               [&](const OwnWord& own) {
                 return own.before == before && (isValue(own) || own.word.starts_with(last));
               });
  return found;
}

// The filters that the last word of the line may be. None if it is a filter's text.
std::vector<FilterHelp> filtersIn(const LineParts& parts) {
  std::vector<FilterHelp> found;
  for (const FilterHelp& filter : filterHelp()) {
    if (std::string_view(filter.keyword).starts_with(parts.filters.back())) {
      found.push_back(filter);
    }
  }
  return found;
}

// Whether the line ends behind the keyword of a filter, or in no filter's keyword.
bool isInFilterText(const std::string& line, const LineParts& parts) {
  const std::string_view last = parts.filters.back();
  return last.find(' ') != std::string_view::npos || (!last.empty() && line.ends_with(' '));
}

std::string textOf(const std::vector<HelpLine>& lines) {
  std::size_t width = 0;
  for (const HelpLine& line : lines)
    width = std::max(width, displayWidth(line.choice));
  std::string text;
  for (const HelpLine& line : lines) {
    text +=
        line.choice + std::string(width - displayWidth(line.choice) + 2, ' ') + line.help + '\n';
  }
  return text;
}

}  // namespace

std::vector<std::string> completionsAtConsole(
    const std::string& line,
    const std::function<std::vector<std::string>(const std::string&)>& ofCommands) {
  const LineParts parts = partsOf(line);
  std::vector<std::string> completions;
  if (!parts.filters.empty()) {
    if (isInFilterText(line, parts)) return {};
    for (const FilterHelp& filter : filtersIn(parts))
      completions.emplace_back(filter.keyword);
    return completions;
  }
  for (const OwnWord& own : ownWordsIn(line)) {
    if (!isValue(own)) completions.emplace_back(own.word);
  }
  if (line.starts_with("terminal ")) return completions;
  const std::vector<std::string> others = ofCommands(line);
  completions.insert(completions.end(), others.begin(), others.end());
  return completions;
}

std::optional<std::string> choicesAtConsole(
    const std::string& line, const std::function<DaemonChoices(const std::string&)>& ofCommands) {
  const LineParts parts = partsOf(line);
  if (parts.isInQuotes) return std::nullopt;
  std::vector<HelpLine> own;
  if (!parts.filters.empty()) {
    if (isInFilterText(line, parts)) return std::nullopt;
    for (const FilterHelp& filter : filtersIn(parts))
      own.push_back({filter.keyword, filter.help});
    return textOf(own);
  }
  for (const OwnWord& word : ownWordsIn(line))
    own.push_back({std::string(word.word), std::string(word.help)});
  if (line.starts_with("terminal ") && !own.empty()) return textOf(own);
  DaemonChoices others = ofCommands(line);
  others.lines.insert(others.lines.end(), own.begin(), own.end());
  return others.lines.empty() ? "error: " + others.error + '\n' : textOf(others.lines);
}

std::vector<std::string> plainWordsOf(std::string_view line) {
  if (line.find_first_of("'#|") != std::string_view::npos) return {};
  std::vector<std::string> words;
  std::istringstream stream{std::string(line)};
  for (std::string word; stream >> word;)
    words.push_back(word);
  return words;
}

}  // namespace ZelAgent
