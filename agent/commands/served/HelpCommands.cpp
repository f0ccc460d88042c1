#include "agent/commands/served/ServedCommands.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <vector>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "agent/commands/served/CommandTable.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

struct TypedLine {
  std::vector<std::string> words;  // the complete ones
  std::string_view last;           // the beginning of the next word
};

// Throws a `Mox::RangeException` for a word that is quoted badly.
TypedLine typedLineOf(std::string_view line) {
  const std::size_t blank = line.find_last_of(" \t");
  const std::size_t start = blank == std::string_view::npos ? 0 : blank + 1;
  TypedLine typed{{}, line.substr(start)};
  Mox::CharRange range(line.substr(0, start));
  while (const auto word = takeWord(range))
    typed.words.push_back(word->text);
  return typed;
}

bool isVrfPlaceholder(const std::string& choice) {
  return choice == "NAME" || choice == "VRF";
}

std::set<std::string> candidatesAfter(const std::vector<std::string>& words,
                                      ForwardingAgent& agent) {
  std::set<std::string> candidates;
  for (const CommandForm& form : commandForms()) {
    for (const std::string& choice : form.choicesAfter(words)) {
      if (isVrfPlaceholder(choice)) {
        for (const L3::VrfName& vrf : knownVrfs(agent))
          candidates.insert(toWord(vrf.str()));
      } else if (!isPlaceholder(choice)) {
        candidates.insert(choice);
      }
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

void writeRows(std::ostream& out, const std::vector<CommandRow>& rows) {
  std::size_t width = 0;
  for (const CommandRow& row : rows)
    width = std::max(width, std::string_view(row.form).size());
  for (const CommandRow& row : rows) {
    out << row.form << std::string(width - std::string_view(row.form).size() + 2, ' ') << row.help
        << '\n';
  }
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

// The completions of the last word of the line. VRF names are those that the agent knows.
std::vector<std::string> completionsOf(std::string_view line, ForwardingAgent& agent) {
  std::vector<std::string> completions;
  try {
    const TypedLine typed = typedLineOf(line);
    for (const std::string& candidate : candidatesAfter(typed.words, agent)) {
      if (candidate.starts_with(typed.last)) completions.push_back(candidate);
    }
  } catch (const Mox::RangeException&) {
    // A quoted word is incomplete. It has no completions.
  }
  return completions;
}

}  // namespace

CommandOutput help(const CommandCall& call) {
  const std::string words = wordsOf(call.arguments);
  const std::vector<CommandRow> rows = rowsBeginningWith(words);
  if (rows.empty()) {
    call.arguments.fail("WORD... must be the beginning of a command", Word{words, false});
  }
  return outputOf(
      call, [&](std::ostream& out) { writeRows(out, rows); }, [&] { return rowsJson(rows); });
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

}  // namespace ZelAgent
