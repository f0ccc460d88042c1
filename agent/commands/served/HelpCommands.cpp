#include "agent/commands/served/ServedCommands.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "agent/commands/served/CommandTable.h"
#include "agent/commands/served/FormWalk.h"
#include "agent/commands/served/Placeholders.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

struct TypedLine {
  FormWalk walk;          // behind the complete words
  std::string_view last;  // the beginning of the next word
};

// Throws a `Mox::RangeException` for a word that is quoted badly.
TypedLine typedLineOf(std::string_view line) {
  const std::size_t blank = line.find_last_of(" \t");
  const std::size_t start = blank == std::string_view::npos ? 0 : blank + 1;
  TypedLine typed{{}, line.substr(start)};
  Mox::CharRange range(line.substr(0, start));
  while (const auto word = takeWord(range))
    typed.walk.take(typed.walk.wholeWord(*word));
  return typed;
}

std::set<std::string> candidatesAfter(const FormWalk& walk, ForwardingAgent& agent) {
  std::set<std::string> candidates;
  for (const FormWalk::Choice& choice : walk.choices()) {
    if (isPlaceholder(choice.text)) {
      candidates.merge(valuesOf(choice.text, walk.words(), agent));
    } else {
      candidates.insert(choice.text);
    }
  }
  return candidates;
}

std::string wordsOf(EventLine& line) {
  std::vector<std::string> words;
  while (const auto word = line.next())
    words.push_back(word->text);
  return joined(words, " ");
}

std::vector<CommandRow> rowsBeginningWith(const std::string& words) {
  std::vector<CommandRow> rows;
  for (const CommandRow& row : commandTable()) {
    if (std::string_view(row.form).starts_with(words)) rows.push_back(row);
  }
  return rows;
}

using Line = std::pair<std::string, std::string>;  // what may be typed, and its help

void writeLines(std::ostream& out, const std::vector<Line>& lines) {
  std::size_t width = 0;
  for (const auto& [typed, help] : lines)
    width = std::max(width, typed.size());
  for (const auto& [typed, help] : lines)
    out << typed << std::string(width - typed.size() + 2, ' ') << help << '\n';
}

std::vector<Line> linesOf(const std::vector<CommandRow>& rows) {
  std::vector<Line> lines;
  lines.reserve(rows.size());
  for (const CommandRow& row : rows)
    lines.emplace_back(row.form, row.help);
  return lines;
}

OrderedJson rowsJson(const std::vector<CommandRow>& rows) {
  OrderedJson json = OrderedJson::array();
  for (const CommandRow& row : rows)
    json.push_back({{"form", row.form}, {"help", row.help}});
  return json;
}

std::string neededLine(EventLine& arguments) {
  const std::optional<Word> line = arguments.next();
  if (!line) arguments.fail("LINE must be a line, quoted as one word", line);
  arguments.needEnd();
  return line->text;
}

// The first values and the last one. What all of them begin with is what all values begin with.
std::vector<std::string> bounded(std::vector<std::string> values) {
  if (values.size() > Limits::completions) {
    std::swap(values[Limits::completions - 1], values.back());
    values.resize(Limits::completions);
  }
  return values;
}

std::vector<std::string> beginningWith(std::string_view typed,
                                       const std::set<std::string>& values) {
  std::vector<std::string> beginning;
  std::copy_if(values.begin(), values.end(), std::back_inserter(beginning),
               [&](const std::string& value) { return value.starts_with(typed); });
  return beginning;
}

// The completions of the last word of the line.
std::vector<std::string> completionsOf(std::string_view line, ForwardingAgent& agent) {
  try {
    const TypedLine typed = typedLineOf(line);
    return bounded(beginningWith(typed.last, candidatesAfter(typed.walk, agent)));
  } catch (const Mox::RangeException&) {
    return {};  // a quoted word is incomplete
  } catch (const EventError&) {
    return {};  // a word is short for several keywords
  }
}

std::string helpOf(const FormWalk::Choice& keyword) {
  const std::string_view shared = keywordHelp(keyword.text);
  return std::string(keyword.rows.size() > 1 && !shared.empty() ? shared
                                                                : keyword.rows.front()->help);
}

// What the placeholder stands for, and some of its values.
std::string helpOf(const FormWalk::Choice& placeholder, const TypedLine& typed,
                   ForwardingAgent& agent) {
  constexpr std::size_t shown = 10;
  std::string help(placeholderHelp(placeholder.text));
  std::vector<std::string> values =
      beginningWith(typed.last, valuesOf(placeholder.text, typed.walk.words(), agent));
  if (values.empty()) return help;
  const std::size_t others = values.size() > shown ? values.size() - shown : 0;
  values.resize(values.size() - others);
  help += ": " + joined(values, ", ");
  return others == 0 ? help : help + " and " + std::to_string(others) + " more";
}

// What may be typed in place of the last word of the line. "<cr>" stands for the end of the line.
std::vector<Line> choicesIn(const TypedLine& typed, ForwardingAgent& agent) {
  std::vector<Line> lines;
  for (const FormWalk::Choice& choice : typed.walk.choices()) {
    if (isPlaceholder(choice.text)) {
      lines.emplace_back(choice.text, helpOf(choice, typed, agent));
    } else if (choice.text.starts_with(typed.last)) {
      lines.emplace_back(choice.text, helpOf(choice));
    }
  }
  std::sort(lines.begin(), lines.end());
  const CommandRow* const ending = typed.walk.ending();
  if (typed.last.empty() && ending != nullptr) lines.emplace_back("<cr>", ending->help);
  return lines;
}

std::vector<Line> neededChoices(const CommandCall& call) {
  const std::string line = neededLine(call.arguments);
  std::vector<Line> choices;
  try {
    choices = choicesIn(typedLineOf(line), call.served.agent());
  } catch (const Mox::RangeException&) {
    // A quoted word is incomplete. Nothing is known of what follows it.
  }
  if (choices.empty()) {
    call.arguments.fail("LINE must be the beginning of a command", Word{line, false});
  }
  return choices;
}

}  // namespace

CommandOutput help(const CommandCall& call) {
  const std::string words = wordsOf(call.arguments);
  const std::vector<CommandRow> rows = rowsBeginningWith(words);
  if (rows.empty()) {
    call.arguments.fail("WORD... must be the beginning of a command", Word{words, false});
  }
  return outputOf(
      call, [&](std::ostream& out) { writeLines(out, linesOf(rows)); },
      [&] { return rowsJson(rows); });
}

CommandOutput complete(const CommandCall& call) {
  const auto completions = completionsOf(neededLine(call.arguments), call.served.agent());
  return outputOf(
      call,
      [&](std::ostream& out) {
        for (const std::string& completion : completions)
          out << completion << '\n';
      },
      [&] { return OrderedJson(completions); });
}

CommandOutput choices(const CommandCall& call) {
  const std::vector<Line> lines = neededChoices(call);
  return outputOf(
      call, [&](std::ostream& out) { writeLines(out, lines); },
      [&] {
        OrderedJson json = OrderedJson::array();
        for (const auto& [choice, help] : lines)
          json.push_back({{"choice", choice}, {"help", help}});
        return json;
      });
}

}  // namespace ZelAgent
